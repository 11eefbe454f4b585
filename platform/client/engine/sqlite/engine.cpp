#include "client/engine/sqlite/engine.h"

#include <algorithm>
#include <filesystem>

#include "client/engine/sqlite/connections.h"
#include "client/engine/sqlite/gathering.h"
#include "client/engine/sqlite/session.h"

namespace zymdb::client::sqlite {
namespace {

constexpr std::string_view kSuffix = ".db";
constexpr std::string_view kFormerProperties = "propertiesdb.db";

std::string properties_of(std::string inventory) {
  if (inventory.ends_with(kSuffix)) inventory.resize(inventory.size() - kSuffix.size());
  return inventory + "-properties.db";
}

// The properties lie beside the inventory, NAME-properties.db beside NAME.db. All inventories of a folder
// used to share one, which is the default inventory's.
bool locate(std::string_view address, const Schema& schema, DataSource& source, std::string& error) {
  if (address.starts_with("//")) address.remove_prefix(2);
  if (address.empty() || address.ends_with('/')) {
    error = "names no file";
    return false;
  }
  const std::filesystem::path inventory = std::filesystem::absolute(address);
  source.address = inventory;
  if (&schema != &kPropertiesSchema) return true;
  if (source.address == kDefaultInventory)
    source.predecessor = std::filesystem::path(inventory).replace_filename(kFormerProperties);
  source.address = properties_of(source.address);
  return true;
}

constexpr std::string_view kSynchronous = "synchronous=";

// "synchronous=full" or "synchronous=normal", joined by "&"; the last one counts.
bool choose(std::string_view choices, DataSource& source, std::string& error) {
  while (!choices.empty()) {
    const std::string_view choice = choices.substr(0, choices.find('&'));
    choices.remove_prefix(std::min(choices.size(), choice.size() + 1));
    const bool is_known = choice.starts_with(kSynchronous);
    const std::string_view value = is_known ? choice.substr(kSynchronous.size()) : std::string_view();
    if (value != "full" && value != "normal") {
      error = "says " + std::string(choice) + ", and may say synchronous=full or synchronous=normal";
      return false;
    }
    source.flushes_commits = value == "full";
  }
  return true;
}

std::unique_ptr<Session> make_session(const DataSource& source, WriterQueue& writers, const Limits& limits) {
  return std::make_unique<SqliteSession>(source, writers, limits);
}

void stand_still() {
  Connections::instance().stand_still();
}
void go_on() {
  Connections::instance().go_on();
}
void abandon_inherited() {
  Connections::instance().abandon_inherited();
}

}  // namespace

constinit const Engine kEngine = {"sqlite", locate,      choose, make_session,
                                  kFlavour, stand_still, go_on,  abandon_inherited};

}  // namespace zymdb::client::sqlite
