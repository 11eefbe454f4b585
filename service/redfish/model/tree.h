// Every resource that one document has, by its path.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_TREE_H
#define ZYMDB_SERVICE_REDFISH_MODEL_TREE_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "documents/document.h"
#include "service/redfish/model/json.h"
#include "service/redfish/model/machine.h"
#include "service/redfish/model/schemas.h"

namespace zymdb::service::redfish {

struct Node {
  const Schema* schema = nullptr;
  // Its properties, but for those that every resource has; with a "Name".
  std::function<Json()> make = {};
  // Of a collection: the paths of its members, and nothing to make.
  std::vector<std::string> members = {};

  bool is_collection() const { return make == nullptr; }
};

// A whole resource: what every one has, and then its own.
Json resource(const std::string& path, const Schema& schema, Json properties);
Json collection(const std::string& path, const Schema& schema, const std::vector<std::string>& members);

class Tree {
 public:
  using DocumentPtr = std::shared_ptr<const documents::Document>;

  // Of that document, with nothing in it yet.
  explicit Tree(DocumentPtr document);
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  const documents::Document& document() const { return *document_; }
  const Machine& machine() const { return machine_; }

  // Null where nothing is.
  const Node* find(std::string_view path) const;
  Json make(const std::string& path, const Node& node) const;

  // Which resource tells of a part; empty where none does.
  std::string path_of(std::string_view part_class, const documents::Part& part) const;

  // For those who fill the tree. A resource below a collection is a member of it.
  void add_collection(const std::string& path, const Schema* schema);
  void add(const std::string& path, const Schema* schema, std::function<Json()> make);
  void add_origin(const Row& row, const std::string& path);

 private:
  DocumentPtr document_;
  Machine machine_;
  std::map<std::string, Node, std::less<>> nodes_;
  std::map<std::pair<const documents::PartClass*, size_t>, std::string> origins_;
};

}  // namespace zymdb::service::redfish

#endif
