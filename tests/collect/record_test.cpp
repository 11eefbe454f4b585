// A recorded machine is collected as the machine itself is; a sanitized one but for what identifies it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "collect/collector_fixture.h"
#include "collect/machines.h"
#include "collect/record/record_machine.h"
#include "collect/record/replacements.h"
#include "collect/record/sanitizer.h"
#include "collect/sources/pci/pci_vpd.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Of every collection another one.
const std::set<std::string> kOfTheCollection = {"CollectedAt", "CollectedFrom", "SampledAt"};
// What tells machines apart.
const std::set<std::string> kIdentifying = {"SerialNo",
                                            "UUID",
                                            "AssetTag",
                                            "BoardSerialNo",
                                            "PermanentAddress",
                                            "NetworkAddresses",
                                            "FCoEPermanentAddress",
                                            "FCoENetworkAddressess",
                                            "InterfaceName"};

class Recordings : public CollectorTest {
 protected:
  Recordings() {
    output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + files_.file("machine/sys") + "'");
    files_.write("machine/proc/sys/kernel/hostname", "node17\n");
    look_at(files_.file("machine/sys"));
  }

  void look_at(const std::string& tree) { sources_ = {.sysfs = tree, .pci_ids = sources_.pci_ids}; }

  size_t record(const std::string& folder, bool is_sanitized = false) {
    notices_.clear();
    return record_machine(
        {.folder = files_.file(folder), .sysfs = sources_.sysfs, .is_sanitized = is_sanitized},
        {.notice = [this](auto line) { notices_.emplace_back(line); }, .progress = {}});
  }

  std::string refusal(const std::string& folder) {
    try {
      record(folder);
    } catch (const SourceError& problem) {
      return problem.what();
    }
    return "recorded";
  }

  // Every table as text, without some columns.
  static std::map<std::string, std::string> inventory(const std::set<std::string>& without) {
    std::map<std::string, std::string> tables;
    std::string table;
    for (const auto& line : lines_of(read_file(ZYMDB_EXAMPLE_SERVER "/../../schema/inventory.sql"))) {
      if (line.starts_with("CREATE TABLE \"")) table = line.substr(14, line.find('"', 14) - 14);
      if (!line.starts_with("  \"") || line.starts_with("  \"_id\"")) continue;
      const std::string column = line.substr(3, line.find('"', 3) - 3);
      // What happened to the inventory is no part of the machine.
      if (table == "Journal") continue;
      if (!without.contains(column) && !kOfTheCollection.contains(column))
        tables[table] += column + ":" + rows(table.c_str(), {column.c_str()});
    }
    return tables;
  }

  // The folder's files and links as one text, with their names.
  std::string bytes_of(const std::string& folder) const {
    std::string all;
    for (const auto& entry : fs::recursive_directory_iterator(files_.file(folder))) {
      all += entry.path().string().substr(files_.path().string().size()) + "\n";
      if (entry.is_symlink())
        all += fs::read_symlink(entry.path()).string() + "\n";
      else if (entry.is_regular_file())
        all += read_file(entry.path().string()) + "\n";
    }
    return all;
  }

  static std::vector<std::string> words(const char* table, const char* column) {
    auto lines = lines_of(rows(table, {column}));
    std::erase_if(lines, [](const std::string& line) { return line.empty() || line == "NULL"; });
    return lines;
  }
};

TEST_F(Recordings, OfAMachineAreCollectedAsTheMachineItself) {
  ASSERT_TRUE(collect().ok());
  const auto before = inventory({});
  EXPECT_GT(record("copy"), 400U);
  EXPECT_THAT(notices_, IsEmpty());
  fs::remove_all(files_.file("machine"));
  look_at(files_.file("copy/sys"));
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(inventory({}), before);
  EXPECT_EQ(rows("System", {"HostName"}), "node17\n");
}

TEST_F(Recordings, OfARecordingAreTheSame) {
  record("copy");
  look_at(files_.file("copy/sys"));
  record("again");
  EXPECT_EQ(
      output_of("diff -r --no-dereference '" + files_.file("copy") + "' '" + files_.file("again") + "'"), "");
}

TEST_F(Recordings, HaveLinksThatStayWithin) {
  record("copy");
  size_t links = 0;
  for (const auto& entry : fs::recursive_directory_iterator(files_.file("copy"))) {
    if (!entry.is_symlink()) continue;
    ++links;
    EXPECT_TRUE(fs::read_symlink(entry.path()).is_relative()) << entry.path();
    EXPECT_THAT(fs::weakly_canonical(entry.path()).string(), testing::StartsWith(files_.file("copy")))
        << entry.path();
  }
  EXPECT_GT(links, 50U);
}

TEST_F(Recordings, OfTheRunningMachineAreCollectedAsTheMachineItself) {
  look_at("");
  ASSERT_TRUE(collect().ok());
  record("copy");
  look_at(files_.file("copy/sys"));
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : summary.tables) {
    // Counters go on.
    if (table.table.find("Port") == std::string::npos) {
      EXPECT_EQ(table.changed(), 0U) << table.table;
    }
  }
}

TEST_F(Recordings, HaveWhatDriversTold) {
  fs::create_directories(files_.file("machine/driver-answers/link"));
  files_.write("machine/driver-answers/link/eno1",
               "permanent_address B4:96:91:00:10:00\nmax_speed 10000\nconnector 5\n");
  files_.write("machine/driver-answers/firmware/eno1", "version 1.67, 0x80000d38\n");
  files_.write("machine/driver-answers/health/nvme0",
               "critical_warning 1\ntemperature 41\nremaining_life 97\ncapacity 1920383410176\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCILogicalPort", {"MaxSpeed"}, "PCIFuncKey=262144"), "10000000000\n");
  EXPECT_THAT(rows("Firmwares", {"VersionString"}, "SoftwareID=\"OS:NIC\""), HasSubstr("1.67, 0x80000d38"));
  EXPECT_THAT(rows("AimDisks", {"Temperature"}), HasSubstr("41"));
  const auto before = inventory({});
  record("copy");
  look_at(files_.file("copy/sys"));
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(inventory({}), before);
}

// ---- Sanitized

TEST_F(Recordings, SanitizedAreTheSameMachineWithOtherNumbers) {
  ASSERT_TRUE(collect().ok());
  const auto before = inventory(kIdentifying);
  const std::string serials = rows("AimDisks", {"SerialNo"}) + rows("Memory", {"SerialNo"});
  record("copy", true);
  look_at(files_.file("copy/sys"));
  sources_.replace = true;
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_EQ(inventory(kIdentifying), before);
  const std::string other = rows("AimDisks", {"SerialNo"}) + rows("Memory", {"SerialNo"});
  EXPECT_NE(other, serials);
  EXPECT_EQ(other.size(), serials.size()) << "lengths stay";
}

TEST_F(Recordings, SanitizedHoldNoNumberOfTheMachine) {
  // An interface that is named after its address, as systemd does without a better name.
  const std::string folder = files_.file("machine/sys/class/net/");
  const fs::path target = fs::read_symlink(folder + "eno1");
  fs::rename(fs::path(folder) / target, (fs::path(folder) / target).parent_path() / "enxb49691001000");
  fs::remove(folder + "eno1");
  fs::create_symlink(target.parent_path() / "enxb49691001000", folder + "enxb49691001000");
  ASSERT_TRUE(collect().ok());
  std::set<std::string> secrets = {
      "b4:96:91:00:10:00",
      "b49691001000",
      "B4:96:91:00:10:00",
      std::string("\xb4\x96\x91\x00\x10\x00", 6),
      "500a07512c000007",
      "00112233-4455-6677-8899-aabbccddeeff",
      std::string("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16)};
  for (const auto& [table, column] : {std::pair{"System", "SerialNo"},
                                      {"System", "BoardSerialNo"},
                                      {"Memory", "SerialNo"},
                                      {"Memory", "AssetTag"},
                                      {"Processor", "SerialNo"},
                                      {"Processor", "AssetTag"},
                                      {"VPDs", "SerialNo"},
                                      {"AimDisks", "SerialNo"}}) {
    for (const auto& word : words(table, column)) secrets.insert(word);
  }
  ASSERT_GT(secrets.size(), 40U);
  record("plain");
  record("copy", true);
  const std::string plain = bytes_of("plain");
  const std::string sanitized = bytes_of("copy");
  for (const auto& secret : secrets) {
    if (secret.size() < 5) continue;
    EXPECT_EQ(sanitized.find(secret), std::string::npos) << secret;
  }
  EXPECT_NE(plain.find("enxb49691001000"), std::string::npos);
  EXPECT_NE(plain.find("ES2240-000017"), std::string::npos);
}

TEST_F(Recordings, SanitizedKeepWhatBelongsTogether) {
  ASSERT_TRUE(collect().ok());
  record("copy", true);
  for (const auto& entry : fs::recursive_directory_iterator(files_.file("copy"))) {
    if (entry.path().filename() != "vpd" || entry.file_size() == 0) continue;
    EXPECT_TRUE(parse_pci_vpd(as_bytes(read_file(entry.path().string()))))
        << "the checksum is right: " << entry.path();
  }
  look_at(files_.file("copy/sys"));
  sources_.replace = true;
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("VPDs", {"SerialNo"}, "HardwareId=1507328"),
            rows("VPDs", {"SerialNo"}, "HardwareId=1507329"))
      << "two functions of one card";
  EXPECT_EQ(rows("System", {"UUID"}).size(), 37U);
}

// A file with something that identifies the machine, and what of it has to go.
TEST(Sanitized, IsWhateverIdentifiesAMachine) {
  std::string config(512, '\0');
  config.replace(0x100, 4, std::string("\x01\x00\x01\x15", 4));  // another capability, the next at 0x150
  config.replace(0x150, 4, std::string("\x03\x00\x01\x00", 4));
  const std::string device_serial("\x01\x30\x00\xff\xff\xfe\xfd\x3c", 8);
  config.replace(0x154, 8, device_serial);
  const struct {
    const char* path;
    std::string content;
    std::string secret;
  } kCases[] = {
      {"sys/devices/pci0000:00/0000:00:01.0/config", config, device_serial},
      {"sys/class/infiniband/mlx5_0/ports/1/gids/0", "fe80:0000:0000:0000:0002:c903:00fa:1234\n",
       "00fa:1234"},
      {"sys/class/fc_host/host1/port_name", "0x21000024ff005000\n", "24ff005000"},
      {"sys/devices/x/net/eth0/address", "3c:fd:fe:00:30:01\n", "00:30:01"},
      {"sys/devices/x/net/eth0/bonding_slave/perm_hwaddr", "3c:fd:fe:00:30:01\n", "00:30:01"},
      {"sys/devices/x/wwid", "naa.5000c500c2000008\n", "c2000008"},
      {"sys/devices/x/wwid", "t10.ATA     A_MODEL                 WS200008\n", "WS200008"},
      {"sys/devices/x/vpd_pg80", std::string("\0\x80\0\x08WS200008", 12), "WS200008"},
      {"sys/class/dmi/id/product_uuid", "00112233-4455-6677-8899-AABBCCDDEEFF\n", "8899-AABBCCDDEEFF"},
      {"sys/class/dmi/id/chassis_asset_tag", "RACK-4711\n", "4711"},
      {"sys/firmware/devicetree/base/serial-number", std::string("10000000abcdef01\0", 17), "abcdef01"},
      {"proc/cpuinfo", "processor : 0\nSerial\t\t: 10000000abcdef01\n", "abcdef01"},
      {"driver-answers/link/eth0", "permanent_address 3C:FD:FE:00:30:01\nmax_speed 25000\n", "00:30:01"},
  };
  for (const auto& [path, content, secret] : kCases) {
    MachineCopy copy;
    copy.files[path] = content;
    const auto result = sanitized(copy);
    const auto& changed = result.files.at(path);
    EXPECT_EQ(changed.size(), content.size()) << path;
    EXPECT_EQ(changed.find(secret), std::string::npos) << path;
    EXPECT_NE(changed, content) << path;
  }
}

TEST(Sanitized, IsNothingElse) {
  MachineCopy copy;
  copy.files = {{"sys/bus/pci/slots/4/address", "0000:3b:00\n"},
                {"sys/class/net/lo/address", "00:00:00:00:00:00\n"},
                {"sys/class/dmi/id/product_serial", "Default string\n"},
                {"sys/class/dmi/id/product_name", "ES-2240 Two-Socket Server\n"},
                {"proc/cpuinfo", "model name : Serial processor\n"}};
  copy.links = {{"sys/class/net/eth0", "../../devices/eth0"}};
  const auto result = sanitized(copy);
  EXPECT_EQ(result.files, copy.files);
  EXPECT_EQ(result.links, copy.links);
}

TEST(Replacements, AreTheSameForEverySpelling) {
  Replacements replacements;
  replacements.add_address("3c:fd:fe:00:30:01\n");
  const std::string other = replacements.applied("3c:fd:fe:00:30:01");
  EXPECT_NE(other, "3c:fd:fe:00:30:01");
  EXPECT_EQ(other.substr(0, 9), "3c:fd:fe:") << "the maker's part stays";
  std::string digits = other;
  std::erase(digits, ':');
  EXPECT_EQ(replacements.applied("enx3cfdfe003001"), "enx" + digits);
  EXPECT_EQ(lower_case(replacements.applied("3C:FD:FE:00:30:01")), other);
  EXPECT_EQ(replacements.applied("3c-fd-fe-00-30-01").size(), 17U);
  EXPECT_EQ(replacements.applied("00:00:00:00:00:00"), "00:00:00:00:00:00");
}

TEST(Replacements, AreOfTheSameKindAndNoTwoTheSame) {
  Replacements replacements;
  std::set<std::string> others;
  for (int i = 100; i < 300; ++i) {
    const std::string serial = "SN-" + std::to_string(i) + "x";
    replacements.add_text(serial);
    const std::string other = replacements.applied(serial);
    EXPECT_TRUE(others.insert(other).second);
    EXPECT_EQ(other.size(), serial.size());
    EXPECT_EQ(other[2], '-');
    EXPECT_TRUE(isdigit(other[3]) && islower(other[6]));
  }
  replacements.add_text("none");
  replacements.add_text("A1");
  EXPECT_EQ(replacements.applied("none A1"), "none A1");
}

// ---- What may go wrong

TEST_F(Recordings, AreWrittenIntoNewOrEmptyFoldersOnly) {
  fs::create_directories(files_.file("empty"));
  EXPECT_EQ(refusal("empty"), "recorded");
  files_.write("full/file", "");
  EXPECT_THAT(refusal("full"), HasSubstr("/full: is not an empty folder"));
  EXPECT_THAT(refusal("machine/proc/sys/kernel/hostname"), HasSubstr("hostname: is not an empty folder"));
  EXPECT_THAT(refusal("no/such/parent"), HasSubstr("No such file or directory"));
  sources_.sysfs = "/nowhere";
  EXPECT_THAT(refusal("other"), HasSubstr("/nowhere: No such file or directory"));
  std::set<std::string> left;
  for (const auto& entry : fs::directory_iterator(files_.path())) left.insert(entry.path().filename());
  EXPECT_EQ(left, (std::set<std::string>{"empty", "full", "machine", "pci.ids"}));
}

}  // namespace
}  // namespace zymdb::collect
