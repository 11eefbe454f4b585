// Processes that write, tell what was written, and die; then a look at what is there.
#ifndef ZYMDB_TESTS_CRASH_CRASH_FIXTURE_H
#define ZYMDB_TESTS_CRASH_CRASH_FIXTURE_H

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "crash/writers.h"
#include "platform/child_process.h"
#include "support/integrity.h"
#include "support/inventory.h"
#include "support/sample.h"
#include "support/sql.h"
#include "support/system_call_faults.h"
#include "zymdb_platform.h"

// What a process tells: a write that returned, or a status that it should not have got. Small enough for a
// pipe to carry whole.
struct Message {
  uint32_t writer;
  uint32_t number;
  int status;
};

class Pipe {
 public:
  Pipe() {
    if (pipe(ends_) != 0) throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    for (const int end : ends_)
      if (end >= 0) close(end);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool tell(const Message& message) const {
    return ::write(ends_[1], &message, sizeof message) == sizeof message;
  }

  // For the one who listens, when all others have their end: so many messages, or fewer when nobody is left
  // to tell any.
  const std::vector<Message>& listen(size_t count) {
    if (ends_[1] >= 0) close(std::exchange(ends_[1], -1));
    Message message{};
    while (count-- > 0 && ::read(ends_[0], &message, sizeof message) == sizeof message)
      told_.push_back(message);
    return told_;
  }

 private:
  int ends_[2];
  std::vector<Message> told_;
};

class CrashFixture : public InventoryTest {
 protected:
  // The system keeps what a killed process has written, flushed or not. Under load a device takes seconds for
  // a flush, and writers would wait for one another in vain.
  CrashFixture() {
    skip_syncs();
    // Accounts of all rounds are kept.
    setenv("ZYMDB_HISTORY", "256M", 1);
  }
  ~CrashFixture() override { unsetenv("ZYMDB_HISTORY"); }

  static void close_database() { ASSERT_EQ(zym_db_close(get_dmdb_handle()), 0); }

  // What a writer's process does for as long as it lives, or for so many writes.
  int write_on(uint32_t writer, const Pipe& pipe, uint32_t writes = UINT32_MAX) const {
    const uint32_t first = last_[writer] + 1;
    for (uint32_t number = first; number - first < writes; ++number) {
      const int status = writers()[writer].write(number);
      if (!pipe.tell({writer, number, status}) || status != 0) return 1;
    }
    return 0;
  }

  bool takes_part(const Writer& writer) const { return prepared_ || writer.needs_nothing; }

  // Opens the database and compares it with what was told.
  void check(Pipe& pipe) {
    std::array<uint32_t, 8> told = last_;
    for (const Message& message : pipe.listen(SIZE_MAX)) {
      EXPECT_EQ(message.status, 0) << name_of(message.writer);
      if (message.writer == kReader || message.status != 0) continue;
      told[message.writer] = message.number;
      ++told_;
    }
    for (uint32_t i = 0; i < writers().size(); ++i) {
      if (!takes_part(writers()[i])) continue;
      const uint32_t found = writers()[i].last();
      EXPECT_GE(found, told[i]) << name_of(i);
      // At most the one write that was killed before it could be told.
      EXPECT_LE(found, told[i] + 1) << name_of(i);
      last_[i] = found;
    }
    close_database();
    for (const auto& path : {path_, path_.parent_path() / "inventory-properties.db"}) {
      if (std::filesystem::exists(path)) {
        EXPECT_EQ(integrity_of(path), "ok") << path;
      }
    }
  }

  // The accounts lead back to what the round before left: none is missing, and none tells of what was undone.
  void check_history() {
    const std::string copy = path_.parent_path() / "copy.db";
    std::filesystem::remove(copy);
    uint64_t now = 0;
    ASSERT_EQ(zym_db_snapshot(get_dmdb_handle(), copy.c_str(), &now), 0) << zym_db_last_error(nullptr);
    EXPECT_GE(now, generation_);
    const std::string present = accounted(copy);
    const uint64_t back = std::max(generation_, first_without_account(copy));
    close_database();
    setenv("ZYMDB_INVENTORY", copy.c_str(), 1);
    EXPECT_EQ(zym_db_rewind(get_dmdb_handle(), back), 0) << zym_db_last_error(nullptr);
    close_database();
    setenv("ZYMDB_INVENTORY", path_.c_str(), 1);
    EXPECT_EQ(accounted(copy), content_) << "generation " << generation_;
    generation_ = now;
    content_ = present;
  }

  // Where the journal begins with changes of volatile columns alone, of those only the last one has a row.
  static uint64_t first_without_account(const std::string& file) {
    const std::string found = run_sql_on(
        file, "SELECT _id FROM Journal WHERE Changes IS NULL AND _id=(SELECT min(_id) FROM Journal)");
    return found.empty() ? 0 : std::stoull(found);
  }

  // What the writers write but volatile columns, of which there are no accounts.
  static std::string accounted(const std::string& file) {
    return run_sql_on(
        file,
        "SELECT * FROM Firmwares; SELECT * FROM PCISetting; SELECT * FROM PCIs; SELECT * FROM PCIAdapter;"
        "SELECT _id, LinkStatus, LinkSpeed FROM PCIPhysicalPortStat;"
        "SELECT _id, BayNo, SerialNo, Model FROM AimDisks");
  }

  static const char* name_of(uint32_t writer) {
    return writer == kReader ? "the reader" : writers()[writer].name;
  }

  void prepare() {
    for (const Writer& writer : writers())
      if (writer.prepare != nullptr) writer.prepare();
    prepared_ = true;
    close_database();
  }

  // From here on there is another database, in a folder where nobody has created one yet.
  void begin_anew(int round) {
    path_ = folder() / std::to_string(round) / "inventory.db";
    std::filesystem::create_directory(path_.parent_path());
    setenv("ZYMDB_INVENTORY", path_.c_str(), 1);
    last_ = {};
    generation_ = 0;
    content_.clear();
  }

  static constexpr uint32_t kReader = 99;

  std::filesystem::path path_ = folder() / "inventory.db";
  std::array<uint32_t, 8> last_{};
  bool prepared_ = false;
  uint64_t told_ = 0;
  uint64_t generation_ = 0;  // at the end of the last round
  std::string content_;      // and what was accounted for
};

#endif
