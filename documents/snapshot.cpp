#include "documents/snapshot.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <system_error>

#include "common/client_extensions.h"
#include "common/source_file.h"
#include "common/text.h"
#include "documents/document.h"
#include "documents/json_value.h"
#include "records/system.h"

namespace zymdb::documents {
namespace {

constexpr std::string_view kMagic = R"({"format":"zymdb-snapshot",)";
constexpr std::string_view kDatabaseMagic = "SQLite format 3";
constexpr uint64_t kFormatVersion = 1;
constexpr uint64_t kLargestDatabase = uint64_t{1} << 30;

std::string system_text() {
  const PartClass systems = read_class(records::system());
  return systems.parts.empty() ? std::string() : systems.description(systems.parts.front());
}

std::string compressed(std::string_view bytes) {
  uLongf size = compressBound(bytes.size());
  std::string packed(size, '\0');
  const int code = compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                             reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), Z_DEFAULT_COMPRESSION);
  if (code != Z_OK) throw std::bad_alloc();
  packed.resize(size);
  return packed;
}

template <class Content>
Content member(const Json& json, const char* key, const std::string& name) {
  const auto found = json.find(key);
  if (found == json.end() || found->is_number() != std::is_integral_v<Content>)
    throw SourceError(name, std::string("the snapshot's first line has no ") + key);
  return found->get<Content>();
}

void check_version(const Json& json, const std::string& name) {
  const auto version = member<uint64_t>(json, "format_version", name);
  if (version > kFormatVersion)
    throw SourceError(name, "a snapshot of version " + std::to_string(version) + "; this program knows " +
                                std::to_string(kFormatVersion));
}

std::string uncompressed(std::string_view packed, uint64_t size, const std::string& name) {
  if (size > kLargestDatabase) throw SourceError(name, "the snapshot's database is larger than 1 GiB");
  std::string bytes(static_cast<size_t>(size), '\0');
  uLongf length = bytes.size();
  const int code = uncompress(reinterpret_cast<Bytef*>(bytes.data()), &length,
                              reinterpret_cast<const Bytef*>(packed.data()), packed.size());
  if (code == Z_MEM_ERROR) throw std::bad_alloc();
  if (code != Z_OK || length != size || !is_database(bytes)) throw SourceError(name, "the snapshot is damaged");
  return bytes;
}

// As much of a file as tells what it is; nothing of one that cannot be read.
std::string beginning_of(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return {};
  std::string text(64, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(file.gcount()));
  return text;
}

}  // namespace

ScratchFolder::ScratchFolder() {
  const char* const place = std::getenv("TMPDIR");
  std::string name = std::string(place != nullptr && *place != '\0' ? place : "/tmp") + "/zymdb-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw SourceError(name, std::generic_category().message(errno));
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Snapshot take_snapshot() {
  const ScratchFolder scratch;
  const std::string copy = scratch.file("inventory.db");
  const uint64_t generation = copy_inventory(copy);
  return {{system_text(), iso_text(std::time(nullptr)), generation, ZYMDB_VERSION}, read_source(copy)};
}

bool is_snapshot(std::string_view content) {
  return content.starts_with(kMagic);
}

bool is_database(std::string_view content) {
  return content.starts_with(kDatabaseMagic);
}

bool is_snapshot_file(const std::string& path) {
  return is_snapshot(beginning_of(path));
}

bool is_database_file(const std::string& path) {
  return is_database(beginning_of(path));
}

bool is_export_file(const std::string& path) {
  const std::string content = beginning_of(path);
  return trimmed(content).starts_with('{') && !is_snapshot(content);
}

std::string pack(const Snapshot& snapshot) {
  const std::string packed = compressed(snapshot.database);
  const Json header{{"format", "zymdb-snapshot"},
                    {"format_version", kFormatVersion},
                    {"system", snapshot.header.system},
                    {"time", snapshot.header.time},
                    {"generation", snapshot.header.generation},
                    {"zymdb_version", snapshot.header.zymdb_version},
                    {"database_bytes", snapshot.database.size()},
                    {"bytes", packed.size()}};
  return header.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n" + packed;
}

Snapshot unpack(std::string_view content, const std::string& name) {
  const size_t end = std::min(content.find('\n'), content.size());
  const Json json = Json::parse(content.substr(0, end), nullptr, false);
  if (json.is_discarded() || end == content.size()) throw SourceError(name, "the snapshot is cut short");
  check_version(json, name);
  const std::string_view packed = content.substr(end + 1);
  const auto bytes = member<uint64_t>(json, "bytes", name);
  if (packed.size() < bytes) throw SourceError(name, "the snapshot is cut short");
  if (packed.size() > bytes) throw SourceError(name, "the snapshot is damaged");
  return {{member<std::string>(json, "system", name), member<std::string>(json, "time", name),
           member<uint64_t>(json, "generation", name), member<std::string>(json, "zymdb_version", name)},
          uncompressed(packed, member<uint64_t>(json, "database_bytes", name), name)};
}

}  // namespace zymdb::documents
