// Snapshots in their file.
#include "documents/snapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "common/source_file.h"
#include "support/temporary_folder.h"

namespace zymdb::documents {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

Snapshot snapshot() {
  return {{"a server (S1)", "2026-01-31T12:00:00Z", 12, "0.1.0"},
          "SQLite format 3" + std::string(5000, '\0') + "content"};
}

std::string error_of(const std::string& packed) {
  try {
    unpack(packed, "a.snapshot");
  } catch (const SourceError& error) {
    return error.what();
  }
  return "unpacked";
}

std::string with(std::string packed, const std::string& from, const std::string& to) {
  packed.replace(packed.find(from), from.size(), to);
  return packed;
}

TEST(Snapshot, IsKnownByHowItsFileBegins) {
  const TemporaryFolder folder;
  const std::string packed = pack(snapshot());
  EXPECT_TRUE(is_snapshot_file(folder.write("whole", packed)));
  EXPECT_FALSE(is_snapshot_file(folder.write("cut", packed.substr(0, 10))));
  EXPECT_FALSE(is_snapshot_file(folder.write("empty", "")));
  EXPECT_FALSE(is_snapshot_file(folder.write("database", "SQLite format 3, and what follows it")));
  EXPECT_TRUE(is_database_file(folder.file("database")));
  EXPECT_TRUE(is_export_file(folder.write("export", "\n {}")));
  for (const char* const other : {"whole", "database", "empty", "missing"})
    EXPECT_FALSE(is_export_file(folder.file(other)));
  for (const char* const other : {"whole", "export", "empty", "missing"})
    EXPECT_FALSE(is_database_file(folder.file(other)));
  EXPECT_FALSE(is_snapshot_file(folder.file("missing")));
  EXPECT_FALSE(is_snapshot_file(folder.path()));
}

TEST(Snapshot, UnpacksToWhatWasPacked) {
  const std::string packed = pack(snapshot());
  EXPECT_TRUE(is_snapshot(packed));
  EXPECT_FALSE(is_database(packed));
  EXPECT_LT(packed.size(), 500u);
  const Snapshot again = unpack(packed, "a.snapshot");
  EXPECT_EQ(again.database, snapshot().database);
  EXPECT_EQ(again.header.system, "a server (S1)");
  EXPECT_EQ(again.header.time, "2026-01-31T12:00:00Z");
  EXPECT_EQ(again.header.generation, 12u);
  EXPECT_EQ(again.header.zymdb_version, "0.1.0");
}

TEST(Snapshot, ThatIsCutAnywhereIsRefused) {
  const std::string packed = pack(snapshot());
  for (size_t size = 0; size < packed.size(); ++size)
    EXPECT_EQ(error_of(packed.substr(0, size)), "a.snapshot: the snapshot is cut short") << size;
}

TEST(Snapshot, WithAWrongByteIsRefused) {
  const std::string packed = pack(snapshot());
  for (size_t at = packed.find('\n') + 1; at < packed.size(); ++at) {
    std::string damaged = packed;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    EXPECT_EQ(error_of(damaged), "a.snapshot: the snapshot is damaged") << at;
  }
  EXPECT_EQ(error_of(packed + "x"), "a.snapshot: the snapshot is damaged");
}

TEST(Snapshot, WithAnotherFirstLineIsRefused) {
  const std::string packed = pack(snapshot());
  EXPECT_EQ(error_of(with(packed, "\"format_version\":1", "\"format_version\":2")),
            "a.snapshot: a snapshot of version 2; this program knows 1");
  EXPECT_EQ(error_of(with(packed, "\"database_bytes\":5022", "\"database_bytes\":5021")),
            "a.snapshot: the snapshot is damaged");
  EXPECT_EQ(error_of(with(packed, "\"database_bytes\":5022", "\"database_bytes\":5023")),
            "a.snapshot: the snapshot is damaged");
  EXPECT_EQ(error_of(with(packed, "\"database_bytes\":5022", "\"database_bytes\":9999999999999")),
            "a.snapshot: the snapshot's database is larger than 1 GiB");
  EXPECT_EQ(error_of(with(packed, "\"time\":", "\"tide\":")),
            "a.snapshot: the snapshot's first line has no time");
  EXPECT_EQ(error_of(with(packed, "\"generation\":12", "\"generation\":\"\"")),
            "a.snapshot: the snapshot's first line has no generation");
}

TEST(Snapshot, OfWhatIsNoDatabaseIsRefused) {
  Snapshot other = snapshot();
  other.database = "a letter";
  EXPECT_EQ(error_of(pack(other)), "a.snapshot: the snapshot is damaged");
}

}  // namespace
}  // namespace zymdb::documents
