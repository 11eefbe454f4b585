// The inventory on files that fail, vanish or change: each of it is a status and a line in the log that names
// the file and the cause, and the operations work again once the cause is gone.
#ifndef ZYMDB_TESTS_PLATFORM_MEDIA_FIXTURE_H
#define ZYMDB_TESTS_PLATFORM_MEDIA_FIXTURE_H

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <thread>

#include "platform/client_fixture.h"
#include "support/integrity.h"
#include "support/system_call_faults.h"
#include "zymdb_pci.h"

inline constexpr int kReadOnly = 41;
inline constexpr int kDamaged = 42;
inline constexpr int kFull = 43;
inline constexpr int kInputOutput = 44;

// After a replacement readers may use what they have open for a quarter of a second.
inline constexpr std::chrono::milliseconds kNoticed{400};

class MediaTest : public ClientTest {
 protected:
  std::string file(const char* name = "inventory.db") const { return folder() / name; }

  // Writes and reads through operations: the two NC-SI package identifiers of one slot.
  static int save(int value) { return zymdb_set_ncsi_id_by_slotNo(1, 7, 0, static_cast<uint8_t>(value), 0); }
  static int saved(int& value) {
    _ZYMDB_NCSIPackageID_List list{};
    const int status = zymdb_get_ncsi_id_list(&list);
    value = status == 0 && list.count == 1 ? list.entries[0].PackageID1 : -1;
    free(list.entries);
    return status;
  }
  static int read() {
    int ignored = 0;
    return saved(ignored);
  }
  static int value() {
    int found = -1;
    EXPECT_EQ(saved(found), 0);
    return found;
  }

  // What has been read is read from the files again.
  static void close_all() { ASSERT_EQ(zym_db_close(handle()), 0); }

  void write_file(const std::string& content, const char* name = "inventory.db") const {
    std::ofstream(file(name), std::ios::binary) << content;
  }

  void remove(std::initializer_list<const char*> names) const {
    for (const char* name : names) std::filesystem::remove(file(name));
  }

  // A database as an administrator would keep it: one file, whose slot has `number`.
  void make_backup(int number) {
    ASSERT_EQ(save(number), 0);
    copy_database("backup.db");
  }
  // Nothing of the former database's log may reach it.
  void put_backup_back() const {
    std::filesystem::rename(file("backup.db"), file());
    for (const char* name : {"inventory.db-wal", "inventory.db-shm"}) std::filesystem::remove(file(name));
  }
  void copy_database(const char* name) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file().c_str(), &database), SQLITE_OK);
    const std::string sql = "VACUUM INTO '" + file(name) + "'";
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
  }
};

// A system call of the engine that answers an error.
struct DeviceFault {
  const char* call;
  int error;
  int status;
  const char* cause;  // in the log line
};

inline std::ostream& operator<<(std::ostream& stream, const DeviceFault& fault) {
  return stream << fault.call << " answers " << strerror(fault.error);
}

// A way to spoil a database file.
struct Damage {
  const char* name;
  std::function<void(const std::string& path)> inflict;
  const char* cause;
};

inline std::ostream& operator<<(std::ostream& stream, const Damage& damage) {
  return stream << damage.name;
}

const std::vector<Damage>& damages();

#endif
