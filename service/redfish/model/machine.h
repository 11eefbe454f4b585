// A document as the machine that it is of: which parts belong together, and what each is called in paths.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_MACHINE_H
#define ZYMDB_SERVICE_REDFISH_MODEL_MACHINE_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/redfish/model/row.h"

namespace zymdb::service::redfish {

struct Part {
  std::string id;
  Row row;
};

struct Function {
  std::string id;
  std::string address;  // empty where the row has none
  Row row;
};

// What has an address on the PCI bus, with its functions; or an adapter that no function belongs to.
struct Device {
  std::string id;
  std::optional<Row> adapter = {};
  std::vector<Function> functions = {};

  // Of its first function, at least: a name for people. Empty where nobody knows.
  std::string name() const;
  bool is_in_slot() const;
  const Function* function(std::string_view address) const;
  bool has_class(uint64_t first, uint64_t last) const;  // of the 16 upper bits of a function's class code
};

// A part of a PCI function.
struct FunctionPart {
  std::string id;
  Row row;
  const Device* device = nullptr;      // null where the function is not known
  const Function* function = nullptr;  // the same
};

// A setting of an adapter, by its attribute's name.
struct Setting {
  std::string attribute;
  Row row;
};

class Machine {
 public:
  explicit Machine(const documents::Document& document);
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  std::optional<Row> system;
  std::vector<Part> processors;
  std::vector<Part> memory;
  std::vector<Device> devices;
  std::vector<FunctionPart> gpus;
  std::vector<FunctionPart> drives;
  std::vector<FunctionPart> ports;
  std::vector<FunctionPart> logical_ports;
  std::vector<FunctionPart> firmware;
  std::vector<Part> pldm;
  std::vector<Part> embedded;
  std::vector<Setting> settings;

 private:
  void add_functions(const documents::Document& document);
  void add_adapters(const documents::Document& document);
  void name_devices();
  void index_functions();
  // The parts of a class with their functions, yet without ids.
  std::vector<FunctionPart> parts_of(const documents::Document& document, std::string_view part_class) const;
  void name_function_parts();
  void add_settings(const documents::Document& document);

  std::map<std::string, std::pair<const Device*, const Function*>, std::less<>> by_address_;
};

}  // namespace zymdb::service::redfish

#endif
