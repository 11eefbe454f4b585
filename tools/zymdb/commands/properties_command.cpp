#include <memory>

#include "commands/commands.h"
#include "common/client_objects.h"
#include "common/source_file.h"
#include "common/transaction.h"
#include "files/properties_file.h"
#include "platform/zymdb_platform.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "FILE has one property a line: its path, its kind (byte or dword) and its value, decimal or with 0x.\n"
    "Lines that begin with # are comments. Properties that are not in the file stay as they are. All of it "
    "is\n"
    "stored at once, or nothing when anything is wrong with it.\n"
    "\n"
    "Examples:\n"
    "  zymdb properties import backplanes.properties";

void store(_zym_db_handle_t* database, const Property& property) {
  const ValuesPtr values(zym_db_get_content_values(database));
  if (values == nullptr) throw std::bad_alloc();
  const std::string action = "store the property '" + property.path + "'";
  require_status(zym_db_content_put_text(values.get(), "propName", property.path.c_str()), action);
  require_status(zym_db_content_put_blob(values.get(), "propValue", property.value.data(),
                                         static_cast<int>(property.value.size())),
                 action);
  const std::string where = "propName=\"" + property.path + "\"";
  if (insert_or_update_db_record(database, "propertiesDCTbl", where.c_str(), values.get(), nullptr) >= 1)
    return;
  require_no_client_error(action);
  throw Failure("cannot " + action);
}

void import_file(const std::string& path) {
  const auto properties = parse_properties(read_source(path), path);
  open_inventory(Opening::kCreating);
  const HandlePtr database = open_properties();
  if (database == nullptr) require_no_client_error("open the property database");
  repeat_overtaken([&] {
    Transaction transaction(database.get());
    for (const auto& property : properties) store(database.get(), property);
    transaction.commit();
  });
  write_output(std::to_string(properties.size()) + " properties stored\n");
}

}  // namespace

void add_properties(CommandTree& tree) {
  auto& properties = *tree.app.add_subcommand("properties", "Platform properties: what a server is built of");
  properties.require_subcommand(1);
  auto& command = *properties.add_subcommand("import", "Store the properties of a file");
  command.footer(kFooter);
  const auto path = std::make_shared<std::string>();
  command.add_option("FILE", *path, "The properties")->required()->type_name("");
  command.callback([path] { import_file(*path); });
}

}  // namespace zymdb::tool
