// A device that is full or fails.
#include <sys/resource.h>

#include <csignal>

#include "platform/child_process.h"
#include "platform/media_fixture.h"
#include "zymdb_firmware.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

std::string device_fault_name(const testing::TestParamInfo<DeviceFault>& info) {
  return std::string(info.param.call) + "_" + std::to_string(info.param.error);
}

class WritingTest : public MediaTest, public testing::WithParamInterface<DeviceFault> {};

INSTANTIATE_TEST_SUITE_P(Device, WritingTest,
                         testing::Values(DeviceFault{"pwrite64", ENOSPC, kFull, "database or disk is full"},
                                         DeviceFault{"pwrite64", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"pwrite64", EDQUOT, kFull, "Disk quota exceeded"},
                                         DeviceFault{"pwrite64", EROFS, kInputOutput,
                                                     "Read-only file system"},
                                         DeviceFault{"fdatasync", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"fdatasync", ENOSPC, kFull, "No space left"}),
                         device_fault_name);

TEST_P(WritingTest, FailsWithAStatusAndWorksAgain) {
  ASSERT_EQ(save(1), 0);
  const std::string log = log_of([] {
    const FailingCall fault(GetParam().call, GetParam().error);
    EXPECT_EQ(save(2), GetParam().status);
  });
  EXPECT_THAT(log, HasSubstr(file() + ": "));
  EXPECT_THAT(log, HasSubstr(GetParam().cause));
  EXPECT_EQ(save(3), 0);
  EXPECT_EQ(value(), 3);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_P(WritingTest, InATransactionLeavesNothingOfIt) {
  ASSERT_EQ(save(1), 0);
  given("PCIs", {{"BusNo", 1}});
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(save(2), 0);
  given("PCIs", {{"BusNo", 2}});
  {
    const FailingCall fault(GetParam().call, GetParam().error);
    EXPECT_EQ(zym_db_commit(handle()), GetParam().status);
  }
  EXPECT_EQ(value(), 1);
  EXPECT_EQ(rows("PCIs", {"BusNo"}), "1\n");
  EXPECT_EQ(save(3), 0);
}

// With a full device a database can still be read, and rows that are there already can be reported.
TEST_F(MediaTest, AFullDeviceIsReadFrom) {
  ASSERT_EQ(save(1), 0);
  const FailingCall fault("pwrite64", ENOSPC);
  EXPECT_EQ(save(2), kFull);
  EXPECT_EQ(value(), 1);
}

class ReadingTest : public MediaTest, public testing::WithParamInterface<DeviceFault> {};

INSTANTIATE_TEST_SUITE_P(Device, ReadingTest,
                         testing::Values(DeviceFault{"pread64", EIO, kInputOutput, "Input/output error"}),
                         device_fault_name);

TEST_P(ReadingTest, FailsWithAStatusAndWorksAgain) {
  ASSERT_EQ(save(1), 0);
  // Another process's write makes what this one has read stale.
  ASSERT_EQ(ChildProcess([] { return save(2); }).wait(), 0);
  const std::string log = log_of([] {
    const FailingCall fault(GetParam().call, GetParam().error);
    EXPECT_EQ(read(), GetParam().status);
  });
  EXPECT_THAT(log, HasSubstr(file() + ": "));
  EXPECT_THAT(log, HasSubstr(GetParam().cause));
  EXPECT_EQ(value(), 2);
}

class OpeningOnFaultTest : public MediaTest, public testing::WithParamInterface<DeviceFault> {};

INSTANTIATE_TEST_SUITE_P(Device, OpeningOnFaultTest,
                         testing::Values(DeviceFault{"open", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"open", EMFILE, kInputOutput, "Too many open files"},
                                         DeviceFault{"pread64", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"pwrite64", ENOSPC, kFull, "database or disk is full"},
                                         DeviceFault{"pwrite64", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"ftruncate", EIO, kInputOutput, "Input/output error"},
                                         DeviceFault{"mmap", EACCES, kInputOutput, "Permission denied"}),
                         device_fault_name);

// Both of a database that exists and of one that does not: the operation finds no database.
TEST_P(OpeningOnFaultTest, FailsWithAStatusAndWorksAgain) {
  for (const bool exists : {true, false}) {
    if (exists) {
      ASSERT_EQ(save(1), 0);
    }
    close_all();
    if (!exists) remove({"inventory.db"});
    const std::string log = log_of([] {
      const FailingCall fault(GetParam().call, GetParam().error);
      EXPECT_EQ(save(2), ZYM_DB_STATUS_NO_DB);
    });
    EXPECT_THAT(log, HasSubstr("cannot open the inventory database " + file() + ": "));
    EXPECT_THAT(log, HasSubstr(GetParam().cause));
    EXPECT_EQ(save(3), 0);
    EXPECT_EQ(value(), 3);
    EXPECT_EQ(integrity_of(file()), "ok");
  }
}

// ---- The limit of a file's size, as a small device has it ----------------------------------------------

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*signal_)(int);
};

TEST_F(MediaTest, WritesThatFillTheDeviceFailAndTheOthersStay) {
  const auto insert = [] {
    _ZYMDB_DPU_Event event{};
    std::fill_n(event.Message, sizeof event.Message, 'm');
    return dpu_insert_log(1, &event, nullptr);
  };
  int written = 0;
  const std::string log = log_of([&] {
    const FileSizeLimit limit(fs::file_size(file("inventory.db-wal")) + 100000);
    int status = 0;
    while (written < 1000 && (status = insert()) == 0) ++written;
    EXPECT_EQ(status, kFull);
    EXPECT_EQ(count("DPUEvents", "1"), written);
  });
  EXPECT_THAT(log, HasSubstr(file() + ": database or disk is full: File too large"));
  EXPECT_GT(written, 0);
  EXPECT_EQ(insert(), 0);
  EXPECT_EQ(count("DPUEvents", "1"), written + 1);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_F(MediaTest, ADatabaseThatFindsNoRoomIsCreatedLater) {
  for (const rlim_t size : {rlim_t{4096}, rlim_t{5000}, rlim_t{40000}}) {
    close_all();
    remove({"inventory.db"});
    const std::string log = log_of([&] {
      const FileSizeLimit limit(size);
      EXPECT_EQ(save(1), ZYM_DB_STATUS_NO_DB) << size;
    });
    EXPECT_THAT(log, HasSubstr("cannot open the inventory database " + file() + ": ")) << size;
    EXPECT_EQ(save(2), 0) << size;
    EXPECT_EQ(value(), 2) << size;
  }
}

}  // namespace
