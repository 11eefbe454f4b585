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

// An address may be refused because it holds a password, which no log shall hold.
std::string without_password(std::string_view address) {
  std::string shown(address);
  const size_t at = shown.find('@');
  const size_t user = shown.find("//");
  if (user != shown.npos && at != shown.npos) {
    const size_t colon = shown.find(':', user);
    if (colon < at) shown.replace(colon, at - colon, ":...");
  }
  constexpr std::string_view kChoice = "password=";
  if (const size_t choice = shown.find(kChoice); choice != shown.npos) {
    const size_t value = choice + kChoice.size();
    shown.replace(value, std::min(shown.size(), shown.find('&', value)) - value, "...");
  }
  return shown;
}

bool locate(const Schema& schema, DataSource& source, std::string& error) {
  const char* variable = std::getenv(kVariable);
  std::string_view address = variable != nullptr && variable[0] != 0 ? variable : kDefaultInventory;
  const std::string_view scheme = scheme_of(address);
  const Engine* const engine = address.starts_with(':') ? nullptr : engine_for(scheme, error);
  if (engine == nullptr) {
    if (error.empty()) error = "names a database that no engine opens";
    error = std::string(kVariable) + ' ' + error + ": " + without_password(address);
    return false;
  }
  source = {{}, &schema, engine};
  std::string_view choices;
  if (!scheme.empty()) {
    address.remove_prefix(scheme.size() + 1);
    choices = split_off_choices(address);
  }
  if (engine->locate(address, schema, source, error) && engine->choose(choices, source, error)) return true;
  error = std::string(kVariable) + ' ' + error + ": " + without_password(variable);
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
