#include "python/inventory_access.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "documents/inventory_types.h"
#include "documents/snapshot.h"
#include "records/firmware.h"
#include "records/json.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "records/storage.h"
#include "records/vpds.h"

namespace {

using zymdb::DatabaseError;
using zymdb::records::FieldInfo;
using zymdb::records::RecordType;

using Json = nlohmann::ordered_json;

struct Listing {
  RecordType type;
  bool is_stored = true;  // in the inventory; else it is read without one
  bool takes_slot = false;
};

thread_local int slot_asked_for = 0;

std::vector<Listing> make_listings() {
  using namespace zymdb::records;
  std::vector<Listing> listings;
  for (auto& type : zymdb::documents::inventory_types(kPciIdsFile)) listings.push_back({std::move(type)});
  listings.push_back({vital_product_data()});
  listings.push_back({backplanes()});
  listings.push_back({pending_settings()});
  listings.push_back({.type = dpu_events([] { return slot_asked_for; }), .takes_slot = true});
  listings.push_back({.type = cards(), .is_stored = false});
  return listings;
}

// Shared by all threads: names of PCI devices are read once.
const std::vector<Listing>& listings() {
  static const std::vector<Listing> all = make_listings();
  return all;
}

const Listing& find_listing(const std::string& name) {
  const auto found =
      std::ranges::find_if(listings(), [&](const Listing& each) { return each.type.name == name; });
  if (found == listings().end()) throw std::out_of_range("there is no listing " + name);
  return *found;
}

const char* type_of(const FieldInfo& field) {
  const bool is_number = field.kind == zymdb::records::Kind::kNumber && !field.is_wide_identifier();
  return is_number ? "int" : "str";
}

Json description_of(const Listing& listing) {
  auto fields = Json::array();
  for (const auto& field : listing.type.fields)
    fields.push_back(
        {{"key", field.key}, {"meaning", field.meaning}, {"unit", field.unit}, {"type", type_of(field)}});
  return {{"name", listing.type.name},
          {"description", listing.type.description},
          {"takes_slot", listing.takes_slot},
          {"fields", std::move(fields)}};
}

// Asking the client for its handle opens it: only what was opened here is closed here.
std::atomic<bool> is_open = false;

void open_inventory() {
  zymdb::allow_creation(false);
  zymdb::clear_client_error();
  if (get_dmdb_handle() != nullptr) {
    is_open = true;
    return;
  }
  const std::string reason = zymdb::last_client_error();
  if (reason.empty()) throw DatabaseError("cannot open the inventory", ZYM_DB_STATUS_NO_DB);
  throw DatabaseError(reason, zymdb::last_client_status());
}

// Null where there is no memory.
char* told(int* status, int code, const char* text) {
  *status = code;
  char* const copy = strdup(text);
  if (copy == nullptr) *status = ZYM_DB_STATUS_NO_MEMORY;
  return copy;
}

// No exception leaves.
template <class Question>
char* answer(int* status, Question question) {
  try {
    return told(status, ZYM_DB_STATUS_OK, std::string(question()).c_str());
  } catch (const DatabaseError& failure) {
    return told(status, failure.status(), failure.what());
  } catch (const std::bad_alloc&) {
    return told(status, ZYM_DB_STATUS_NO_MEMORY, "out of memory");
  } catch (const std::exception& failure) {
    return told(status, ZYM_DB_STATUS_ERROR, failure.what());
  }
}

}  // namespace

char* access_describe(int* status) {
  return answer(status, [] {
    auto all = Json::array();
    for (const auto& listing : listings()) all.push_back(description_of(listing));
    return Json{{"listings", std::move(all)}}.dump();
  });
}

char* access_list(const char* listing, int slot, int* status) {
  return answer(status, [&] {
    const auto& [type, is_stored, takes_slot] = find_listing(listing);
    if (is_stored) open_inventory();
    slot_asked_for = slot;
    return zymdb::records::to_json(type.name, type.list(zymdb::records::all_fields(type)));
  });
}

char* access_open(int* status) {
  return answer(status, [] {
    open_inventory();
    return "";
  });
}

void access_close(void) {
  if (is_open.exchange(false)) zym_db_close(get_dmdb_handle());
}

int access_is_open(void) {
  return is_open ? 1 : 0;
}

char* access_generation(int* status) {
  return answer(status, [] {
    open_inventory();
    if (const auto generation = zymdb::inventory_generation()) return std::to_string(*generation);
    const int failure = zymdb::last_client_status();
    // An inventory without a generation is no failure.
    if (failure != 0 && failure != ZYM_DB_STATUS_ERROR)
      throw DatabaseError(zymdb::last_client_error(), failure);
    return std::string();
  });
}

int access_is_snapshot(const char* path) {
  try {
    return zymdb::documents::is_snapshot_file(path) ? 1 : 0;
  } catch (const std::exception&) {
    return 0;
  }
}

char* access_unpack(const char* snapshot, const char* database, int* status) {
  return answer(status, [&] {
    using namespace zymdb::documents;
    zymdb::write_new_file(database, unpack(zymdb::read_source(snapshot), snapshot).database);
    return "";
  });
}

void access_release(char* text) {
  std::free(text);
}
