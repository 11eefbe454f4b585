// Firmware as users see it: `show firmware|pldm|embedded`, `dpu` and `retimer`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/turn.h"
#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const ListingCase& kEmbedded = listing("embedded");
const ListingCase& kPldm = listing("pldm");

class Firmware : public testing::Test {
 protected:
  // What a command prints; it must succeed.
  std::string output(const Words& command) const {
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
    return outcome.out;
  }
  Words cells(Words command, const std::string& columns) const {
    command.insert(command.end(), {"--no-headings", "--columns", columns});
    Words lines = lines_of(output(command));
    for (auto& line : lines) line = stripped(line);
    return lines;
  }
  // How a command fails.
  std::string complaint(const Words& command, int status = 1) const {
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, status) << outcome;
    EXPECT_THAT(outcome.out, IsEmpty());
    return outcome.err;
  }

  Workplace workplace_;
};

TEST_F(Firmware, OfTheSystemIsAnEmbeddedDevice) {
  workplace_.collect_example();
  EXPECT_THAT(cells({"show", "embedded"}, "DEVICE"),
              ElementsAre("System firmware 1.20, 03/14/2024, Example Firmware"));
  EXPECT_THAT(cells({"show", "embedded"}, "VERSION,VERSIONNO"), ElementsAre("1.20            1"));
}

// The record's number has no room for letters and for a second number.
TEST_F(Firmware, OfEmbeddedDevicesHasTheVersionThatWasReported) {
  const auto given = [&](const char* name, std::vector<ColumnValue> row) {
    row.emplace_back("SoftwareID", name);
    insert_row(workplace_, "EmbeddedDeviceFirmware", row);
  };
  given("BIOS", {{"DeviceIndex", 0u}, {"Version", 3u}, {"VersionString", "3.0c"}});
  given("BIOS", {{"DeviceIndex", 1u}, {"Version", 3u}, {"VersionString", "3.1"}});
  given("TPM", {{"DeviceIndex", 0u}, {"Version", 7u}});
  given("FPGA", {{"DeviceIndex", 0u}});
  EXPECT_THAT(cells({"show", "embedded"}, "SOFTWARE,INDEX,VERSION"),
              ElementsAre("BIOS         0 3.0c", "BIOS         1 3.1", "TPM          0 7", "FPGA         0"));
  const auto devices = records(workplace_, kEmbedded);
  EXPECT_EQ(devices.at(0).at("VersionString"), "3.0c");
  EXPECT_EQ(devices.at(0).at("Version"), 3);
  EXPECT_TRUE(devices.at(3).at("VersionString").is_null());
}

TEST_F(Firmware, OfFunctionsIsListedWithItsFunction) {
  workplace_.collect_example();
  insert_row(workplace_, "Firmwares",
             {{"HardwareId", 0x170000u},
              {"HardwareTypeId", 3u},
              {"FirmwareName", "Boot code"},
              {"VersionString", "1.2"},
              {"Classification", 0x8101u}});
  EXPECT_THAT(cells({"show", "firmware"}, "FUNCTION,NAME,VERSION,CLASS"),
              ElementsAre("0000:17:00.0 Boot code 1.2     Bootcode"));
}

TEST_F(Firmware, OfPldmDevicesIsListedByWhatBecameOfItsUpdate) {
  const auto given = [&](const char* name, unsigned updated, unsigned error, unsigned status) {
    insert_row(workplace_, "PldmDeviceFirmware",
               {{"DeviceName", name}, {"Updated", updated}, {"UpdateErrCode", error}, {"Status", status}});
  };
  given("idle", 0, 0, 0);
  given("staged", 0, 0, 2);
  given("good", 1, 0, 0);
  given("bad", 1, 9, 2);
  EXPECT_THAT(cells({"show", "pldm"}, "DEVICE,UPDATE"),
              ElementsAre("idle", "staged pending", "good   succeeded", "bad    failed, pending"));
  EXPECT_THAT(cells({"show", "pldm", "--pending"}, "DEVICE"), ElementsAre("staged", "bad"));
  EXPECT_THAT(cells({"show", "pldm", "--updated"}, "DEVICE"), ElementsAre("good", "bad"));
  EXPECT_THAT(cells({"show", "pldm", "--failed"}, "DEVICE"), ElementsAre("bad"));
  EXPECT_THAT(cells({"show", "pldm", "--succeeded"}, "DEVICE"), ElementsAre("good"));
  EXPECT_THAT(complaint({"show", "pldm", "--failed", "--pending"}, 2),
              HasSubstr("--pending and --failed do not go together"));
  for (const auto& field : declared_fields(kPldm))
    EXPECT_TRUE(records(workplace_, kPldm).at(0).contains(field)) << field;
}

TEST_F(Firmware, EventsOfADpuAreAppendedListedAndCleared) {
  output({"dpu", "append", "3", "--message", "boot done", "--generator", "UEFI", "--time", "1700000000"});
  output({"dpu", "append", "4", "--message", "another slot's"});
  EXPECT_THAT(cells({"dpu", "log", "3"}, "TIME,GENERATOR,MESSAGE"),
              ElementsAre("2023-11-14 22:13:20 UEFI      boot done"));
  output({"dpu", "clear", "3"});
  EXPECT_THAT(cells({"dpu", "log", "3"}, "MESSAGE"), IsEmpty());
  EXPECT_THAT(cells({"dpu", "log", "4"}, "MESSAGE"), ElementsAre("another slot's"));
  complaint({"dpu", "log", "0"}, 2);
  complaint({"dpu", "append", "3"}, 2);
  complaint({"dpu", "append", "3", "--message", std::string(257, 'm')}, 2);
}

TEST_F(Firmware, TheUefiVersionOfADpuIsRecordedAndPrinted) {
  insert_row(
      workplace_, "PCIs",
      {{"Location", 1u}, {"SlotNo", 3u}, {"DeviceId", 0xA2D6u}, {"FunKey", 768u}, {"HardwareId", 768u}});
  EXPECT_THAT(complaint({"dpu", "uefi", "3"}), HasSubstr("no UEFI version of a DPU in slot 3 is known"));
  EXPECT_THAT(complaint({"dpu", "uefi", "4", "4.2"}), HasSubstr("there is no DPU in slot 4"));
  EXPECT_THAT(output({"dpu", "uefi", "3", "4.2"}), IsEmpty());
  EXPECT_EQ(output({"dpu", "uefi", "3"}), "4.2\n");
}

class RetimerCommand : public Firmware {
 protected:
  static constexpr char kProgressPath[] = "/tmp/.rt_upd_state";
  ~RetimerCommand() override { std::filesystem::remove(kProgressPath); }

  std::string request(size_t size) const {
    write_file(workplace_.path("request"), std::string(size, 'r'));
    return workplace_.path("request").string();
  }

 private:
  Turn turn_{"/tmp/zymdb-test-retimer.lock"};
};

TEST_F(RetimerCommand, AnUpdateIsAskedOfTheService) {
  FILE* service = popen(RETIMER_SERVICE " --connections 2 --result 0", "re");
  char line[512];
  ASSERT_NE(std::fgets(line, sizeof line, service), nullptr);
  EXPECT_THAT(output({"retimer", "update", request(139)}), IsEmpty());
  output({"retimer", "update", request(139)});
  ASSERT_NE(std::fgets(line, sizeof line, service), nullptr);
  EXPECT_THAT(std::string(line), HasSubstr("72727272"
                                           "00\n"));
  while (std::fgets(line, sizeof line, service) != nullptr) continue;
  EXPECT_EQ(pclose(service), 0);
}

TEST_F(RetimerCommand, AnUpdateThatFailsIsTold) {
  EXPECT_THAT(complaint({"retimer", "update", request(139)}), HasSubstr("-3 (the retimer service cannot be"));
  EXPECT_THAT(complaint({"retimer", "update", request(138)}), HasSubstr("a request has 139 bytes"));
}

TEST_F(RetimerCommand, ProgressIsFollowedToItsEnd) {
  EXPECT_THAT(complaint({"retimer", "progress", "3"}), HasSubstr("no update of the retimer in slot 3"));
  write_file(kProgressPath, "\x03\x01\x2a");
  EXPECT_EQ(output({"retimer", "progress", "3", "--once"}), "stage 1, 42%\n");
  complaint({"retimer", "progress", "4"});
  write_file(kProgressPath, "\x03\x02\x64");
  EXPECT_EQ(output({"retimer", "progress", "3"}), "stage 2, 100%\n");
}

}  // namespace
}  // namespace zymdb::test
