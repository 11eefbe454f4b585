#include "client/engine/data_source.h"

#include <algorithm>
#include <cstdlib>

#include "client/engine/engines.h"

namespace zymdb::client {
namespace {

constexpr const char* kVariable = "ZYMDB_INVENTORY";
constexpr std::string_view kProperties = "propertiesdb";

// What stands before ":"; a path may hold one after its first "/".
std::string_view scheme_of(std::string_view address) {
  const size_t colon = address.find(':');
  const bool has_one = colon != address.npos && address.substr(0, colon).find('/') == address.npos;
  return has_one ? address.substr(0, colon) : std::string_view();
}

// What stands behind the first "?", which a path without a scheme may hold.
std::string_view split_off_choices(std::string_view& address) {
  const size_t mark = std::min(address.find('?'), address.size());
  std::string_view choices = address.substr(mark);
  address = address.substr(0, mark);
  choices.remove_prefix(choices.empty() ? 0 : 1);
  return choices;
}

bool locate(const Schema& schema, DataSource& source, std::string& error) {
  const char* variable = std::getenv(kVariable);
  std::string_view address = variable != nullptr && variable[0] != 0 ? variable : kDefaultInventory;
  const std::string_view scheme = scheme_of(address);
  const Engine* const engine = address.starts_with(':') ? nullptr : engine_for(scheme, error);
  if (engine == nullptr) {
    if (error.empty()) error = std::string("names a database that no engine opens: ") += address;
    error = std::string(kVariable) + ' ' + error;
    return false;
  }
  source = {{}, &schema, engine};
  std::string_view choices;
  if (!scheme.empty()) {
    address.remove_prefix(scheme.size() + 1);
    choices = split_off_choices(address);
  }
  if (engine->locate(address, schema, source, error) && engine->choose(choices, source, error)) return true;
  error = std::string(kVariable) + ' ' + error;
  if (!error.ends_with('.')) error.append(": ").append(variable);
  return false;
}

}  // namespace

bool locate_inventory(DataSource& source, std::string& error) {
  return locate(kInventorySchema, source, error);
}

bool locate_database(std::string_view name, DataSource& source, std::string& error) {
  if (name == kProperties) return locate(kPropertiesSchema, source, error);
  error = "unknown database " + std::string(name);
  return false;
}

}  // namespace zymdb::client
