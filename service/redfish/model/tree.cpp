#include "service/redfish/model/tree.h"

#include <utility>

#include "service/redfish/model/paths.h"

namespace zymdb::service::redfish {
namespace {

std::string last_segment(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

Json resource(const std::string& path, const Schema& schema, Json properties) {
  Json json{{"@odata.type", type_of(schema)},
            {"@odata.id", path},
            {"Id", last_segment(path)},
            {"Name", std::string(schema.name)}};
  json.update(properties);
  return json;
}

Json collection(const std::string& path, const Schema& schema, const std::vector<std::string>& members) {
  Json links = Json::array();
  for (const std::string& member : members) links.push_back(link(member));
  return {{"@odata.type", type_of(schema)},
          {"@odata.id", path},
          {"Name", std::string(schema.name)},
          {"Members@odata.count", members.size()},
          {"Members", std::move(links)}};
}

Tree::Tree(DocumentPtr document) : document_(std::move(document)), machine_(*document_) {}

const Node* Tree::find(std::string_view path) const {
  const auto found = nodes_.find(path);
  return found != nodes_.end() ? &found->second : nullptr;
}

Json Tree::make(const std::string& path, const Node& node) const {
  if (node.is_collection()) return collection(path, *node.schema, node.members);
  Json json = resource(path, *node.schema, node.make());
  // The root alone is told with a slash at its end.
  if (path == kRoot) json["@odata.id"] = kRoot + "/";
  return json;
}

std::string Tree::path_of(std::string_view part_class, const documents::Part& part) const {
  const documents::PartClass* const of = document_->find(part_class);
  for (size_t index = 0; of != nullptr && index < of->parts.size(); ++index) {
    if (of->parts[index] != part) continue;
    const auto found = origins_.find({of, index});
    if (found != origins_.end()) return found->second;
  }
  return "";
}

void Tree::add_collection(const std::string& path, const Schema* schema) {
  nodes_.insert_or_assign(path, Node{.schema = schema});
}

void Tree::add(const std::string& path, const Schema* schema, std::function<Json()> make) {
  const auto above = nodes_.find(std::string_view(path).substr(0, path.rfind('/')));
  if (above != nodes_.end() && above->second.is_collection()) above->second.members.push_back(path);
  nodes_.insert_or_assign(path, Node{.schema = schema, .make = std::move(make)});
}

void Tree::add_origin(const Row& row, const std::string& path) {
  origins_.try_emplace({&row.of(), row.index()}, path);
}

}  // namespace zymdb::service::redfish
