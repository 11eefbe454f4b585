// Snapshots: an inventory as one moment had it, in one compressed file.
//
// A snapshot is one line of JSON, which says what it is of and how many bytes follow, and the inventory's
// database, compressed with zlib.
#ifndef ZYMDB_DOCUMENTS_SNAPSHOT_H
#define ZYMDB_DOCUMENTS_SNAPSHOT_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace zymdb::documents {

struct SnapshotHeader {
  std::string system;  // what it is of: model and serial number; empty where nobody knows
  std::string time;    // UTC, "2026-01-31T12:00:00Z"
  uint64_t generation = 0;
  std::string zymdb_version = {};  // of the program that made it
};

struct Snapshot {
  SnapshotHeader header;
  std::string database;  // the bytes of its file
};

// A folder of its own for copies of inventories, which vanishes with the object.
class ScratchFolder {
 public:
  // Throws SourceError when there is no room for one.
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string file(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// The open inventory. Throws DatabaseError when it cannot be read or copied.
Snapshot take_snapshot();

bool is_snapshot(std::string_view content);
bool is_database(std::string_view content);
// By how the file begins; false for one that cannot be read, which whoever opens it will tell. An export is told from
// the other two alone.
bool is_snapshot_file(const std::string& path);
bool is_database_file(const std::string& path);
bool is_export_file(const std::string& path);

std::string pack(const Snapshot& snapshot);

// Throws SourceError, with `name` for the source, for one that is cut short, damaged or of a newer version.
Snapshot unpack(std::string_view content, const std::string& name);

}  // namespace zymdb::documents

#endif
