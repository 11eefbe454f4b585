#include "client/engine/data_source.h"

#include <cstdlib>
#include <filesystem>

namespace zymdb::client {
namespace {

constexpr const char* kVariable = "ZYMDB_INVENTORY";
constexpr std::string_view kScheme = "sqlite:";
constexpr std::string_view kProperties = "propertiesdb";
constexpr std::string_view kSharedProperties = "propertiesdb.db";
constexpr std::string_view kSuffix = ".db";

// A scheme is letters before ":"; a path may hold a ":" after its first "/".
bool has_foreign_scheme(std::string_view text) {
  const size_t colon = text.find(':');
  return colon != text.npos && text.substr(0, colon).find('/') == text.npos && !text.starts_with(kScheme);
}

std::string properties_of(std::string inventory) {
  if (inventory.ends_with(kSuffix)) inventory.resize(inventory.size() - kSuffix.size());
  return inventory + "-properties.db";
}

}  // namespace

bool locate_inventory(DataSource& source, std::string& error) {
  const char* variable = std::getenv(kVariable);
  std::string_view path = variable != nullptr && variable[0] != 0 ? variable : kDefaultInventory;
  if (has_foreign_scheme(path)) {
    error = std::string(kVariable) + " names a database that no engine opens: " + std::string(path);
    return false;
  }
  if (path.starts_with(kScheme)) path.remove_prefix(kScheme.size());
  if (path.starts_with("//")) path.remove_prefix(2);
  if (path.empty() || path.ends_with('/')) {
    error = std::string(kVariable) + " names no file: " + variable;
    return false;
  }
  source.path = std::filesystem::absolute(path);
  source.schema = &kInventorySchema;
  source.predecessor.clear();
  return true;
}

bool locate_database(std::string_view name, DataSource& source, std::string& error) {
  if (name != kProperties) {
    error = "unknown database " + std::string(name);
    return false;
  }
  if (!locate_inventory(source, error)) return false;
  if (source.path == kDefaultInventory)
    source.predecessor = std::filesystem::path(source.path).replace_filename(kSharedProperties);
  source.path = properties_of(source.path);
  source.schema = &kPropertiesSchema;
  return true;
}

}  // namespace zymdb::client
