// Memory devices out of their tables, and as rows of the inventory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "collect/collector.h"
#include "collect/machines.h"
#include "collect/sources/smbios/smbios_memory.h"
#include "support/inventory.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::collect {
namespace {

constexpr size_t kWholeDevice = 0x5C;
constexpr uint64_t kUnknownSize = ~uint64_t{0};

// A memory device (type 17): 64 GiB at 3200 MT/s of DDR4 until a test says otherwise.
class Device {
 public:
  explicit Device(size_t length = kWholeDevice) : bytes_(length, '\0') {
    set<uint8_t>(0x00, 17).set(0x01, static_cast<uint8_t>(length));
    set<uint16_t>(0x02, 0x1100).set<uint16_t>(0x04, 0x1000);
    set<uint16_t>(0x08, 72).set<uint16_t>(0x0A, 64);
    set<uint16_t>(0x0C, 0x7FFF).set<uint32_t>(0x1C, 64 << 10);
    set<uint8_t>(0x0E, 9).set<uint8_t>(0x12, 0x1A).set<uint16_t>(0x13, 0x2080);
    set<uint16_t>(0x15, 3200).set<uint16_t>(0x20, 2933);
  }

  // A field that the structure is long enough for.
  template <typename T>
  Device& set(size_t offset, T value) {
    if (offset + sizeof value <= bytes_.size()) std::memcpy(&bytes_[offset], &value, sizeof value);
    return *this;
  }

  Device& text(size_t offset, const std::string& text) {
    texts_ += text + '\0';
    return set(offset, ++text_count_);
  }

  std::string bytes() const { return bytes_ + (texts_.empty() ? std::string(2, '\0') : texts_ + '\0'); }

 private:
  std::string bytes_;
  std::string texts_;
  uint8_t text_count_ = 0;
};

Device persistent_device(uint8_t technology = 7) {
  return Device()
      .set<uint16_t>(0x13, 0x1080)
      .set<uint8_t>(0x28, technology)
      .set<uint64_t>(0x34, 48ULL << 30)
      .set<uint64_t>(0x3C, 16ULL << 30)
      .text(0x2B, "2.2.0.1553");
}

// A dump of these devices in an array with the handle 0x1000.
std::string dump_of(const std::vector<Device>& devices) {
  std::string table = std::string("\x10\x0F\x00\x10", 4) + std::string(11, '\0') + std::string(2, '\0');
  for (const auto& device : devices) table += device.bytes();
  table += std::string("\x7f\x04\xff\xff\0\0", 6);
  std::string entry("_SM3_\0\x18\x03\x03\0\1\0", 12);
  const auto size = static_cast<uint32_t>(table.size());
  const uint64_t offset = 32;
  entry.append(reinterpret_cast<const char*>(&size), sizeof size);
  entry.append(reinterpret_cast<const char*>(&offset), sizeof offset);
  entry[5] = static_cast<char>(-checksum(as_bytes(entry)));
  entry.resize(32);
  return entry + table;
}

SmbiosMemoryDevice decoded(const Device& device) {
  const auto devices = decode_memory(SmbiosTables::parse_dump(dump_of({device}), "tables"));
  EXPECT_EQ(devices.size(), 1U);
  return devices.front();
}

TEST(MemoryDevice, HasItsSizeInMebibytes) {
  const auto size_of = [](uint16_t first, uint32_t second) {
    return decoded(Device().set(0x0C, first).set(0x1C, second)).size;
  };
  EXPECT_EQ(size_of(4096, 0), 4096U);
  EXPECT_EQ(size_of(0x7FFF, 129408), 129408U);
  EXPECT_EQ(size_of(0x7FFF, 0x80000001U), 1U) << "the top bit of the second field is reserved";
  EXPECT_EQ(size_of(0x7FFF, 0), std::nullopt) << "neither field tells it";
  EXPECT_EQ(size_of(0x8000 | 0x4000, 0), 16U) << "kilobytes";
  EXPECT_EQ(size_of(0x8000 | 512, 0), std::nullopt) << "less than one";
  EXPECT_EQ(size_of(0xFFFF, 0), std::nullopt) << "not known";
  EXPECT_EQ(size_of(0, 0), 0U) << "no module";
}

TEST(MemoryDevice, TakesASpeedOutOfItsSecondFieldWhereTheFirstOverflows) {
  const auto device = decoded(Device()
                                  .set<uint16_t>(0x15, 0xFFFF)
                                  .set<uint32_t>(0x54, 70000)
                                  .set<uint16_t>(0x20, 0xFFFF)
                                  .set<uint32_t>(0x58, 66000));
  EXPECT_EQ(device.max_speed, 70000U);
  EXPECT_EQ(device.configured_speed, 66000U);
}

TEST(MemoryDevice, DoesNotKnowWhatFirmwareLeavesOpen) {
  const auto device = decoded(Device()
                                  .set<uint16_t>(0x04, 0x2000)
                                  .set<uint16_t>(0x08, 0xFFFF)
                                  .set<uint16_t>(0x0A, 0)
                                  .set<uint16_t>(0x15, 0)
                                  .set<uint16_t>(0x20, 0));
  EXPECT_EQ(device.array, std::nullopt) << "no array has that handle";
  EXPECT_EQ(device.total_width, std::nullopt);
  EXPECT_EQ(device.data_width, std::nullopt);
  EXPECT_EQ(device.max_speed, std::nullopt);
  EXPECT_EQ(device.configured_speed, std::nullopt);
  EXPECT_EQ(device.attributes, std::nullopt);
}

TEST(MemoryDevice, OfAnOldTableHasTheFieldsThatItsLengthAllows) {
  const auto device = decoded(Device(0x1B).set<uint16_t>(0x0C, 2048));
  EXPECT_EQ(device.size, 2048U);
  EXPECT_EQ(device.max_speed, 3200U);
  EXPECT_EQ(device.configured_speed, std::nullopt);
  EXPECT_EQ(decoded(Device(0x1B)).size, 0x7FFFU) << "without a second field it is a size like any other";
}

TEST(MemoryDevice, IsNothingButAPositionWhenItIsEmpty) {
  const auto device = decoded(persistent_device().set<uint16_t>(0x0C, 0).text(0x10, "DIMM_A1"));
  EXPECT_FALSE(device.populated());
  EXPECT_EQ(device.locator, "DIMM_A1");
  EXPECT_EQ(device.form_factor, 9);
  EXPECT_EQ(device.type, std::nullopt);
  EXPECT_EQ(device.max_speed, std::nullopt);
  EXPECT_EQ(device.persistent.capacity, std::nullopt);
}

TEST(PersistentMemory, HasItsCapacitiesInBytes) {
  const auto memory = decoded(persistent_device()).persistent;
  EXPECT_EQ(memory.capacity, 64ULL << 30);
  EXPECT_EQ(memory.non_volatile, 48ULL << 30);
  EXPECT_EQ(memory.volatile_part, 16ULL << 30);
  EXPECT_EQ(memory.firmware_version, "2.2.0.1553");
}

TEST(PersistentMemory, HasTheSizeOfALogicalDeviceWhereThatIsStated) {
  EXPECT_EQ(decoded(persistent_device().set<uint64_t>(0x4C, 1ULL << 40)).persistent.capacity, 1ULL << 40);
  EXPECT_EQ(decoded(persistent_device().set(0x4C, kUnknownSize)).persistent.capacity, 64ULL << 30);
}

TEST(PersistentMemory, DoesNotKnowPartsThatTheTableDoesNotKnow) {
  const auto memory = decoded(persistent_device().set(0x34, kUnknownSize).set(0x3C, kUnknownSize)).persistent;
  EXPECT_EQ(memory.non_volatile, std::nullopt);
  EXPECT_EQ(memory.volatile_part, std::nullopt);
}

TEST(PersistentMemory, IsToldByItsTechnologyAndElseByItsTypeDetail) {
  for (uint8_t technology = 4; technology <= 7; ++technology) {
    EXPECT_TRUE(decoded(persistent_device(technology)).persistent.capacity) << unsigned{technology};
  }
  EXPECT_TRUE(decoded(persistent_device(2)).persistent.capacity) << "not known: the type detail tells";
  EXPECT_FALSE(decoded(persistent_device(2).set<uint16_t>(0x13, 0x0080)).persistent.capacity);
  EXPECT_FALSE(decoded(persistent_device(3)).persistent.capacity) << "DRAM";
}

class MemoryCollection : public InventoryTest {
 protected:
  void collect(const std::vector<Device>& devices) const {
    collect_file(files_.write("server.smbios", dump_of(devices)));
  }

  static void collect_file(const std::string& smbios) {
    Sources sources;
    sources.smbios = smbios;
    const auto summary = collect_inventory(sources);
    EXPECT_TRUE(summary.ok()) << summary.error;
  }

  static _ZYMDB_Memory module_in(unsigned short slot) {
    _ZYMDB_Memory module{};
    EXPECT_EQ(zymdb_get_memory_by_slot(&module, slot), ZYM_DB_STATUS_OK);
    return module;
  }

  TemporaryFolder files_;
};

TEST_F(MemoryCollection, NumbersThePositionsInTheOrderOfTheTable) {
  collect({Device().text(0x10, "CPU1_DIMM_A1"), Device().set<uint16_t>(0x0C, 0).text(0x10, "CPU1_DIMM_B1")});
  EXPECT_STREQ(module_in(1).DevLocator, "CPU1_DIMM_A1");
  EXPECT_EQ(module_in(1).ArrayId, 0x1000U);
  EXPECT_STREQ(module_in(2).DevLocator, "CPU1_DIMM_B1");
  EXPECT_EQ(module_in(2).ChannelNum, 1U);
  _ZYMDB_Memory none{};
  EXPECT_EQ(zymdb_get_memory_by_slot(&none, 3), ZYM_DB_STATUS_ERROR);
}

TEST_F(MemoryCollection, StoresNothingThatTheTableDoesNotTell) {
  collect({Device()});
  EXPECT_EQ(rows("Memory", {"SlotNo", "SerialNo", "Capacity", "MemCapacity", "AppDirCap", "FirmwareVersion",
                            "CPUIndex", "iMCNum", "ChannelNum", "DimmNum", "HealthStatus"}),
            "1|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL\n");
}

TEST_F(MemoryCollection, KeepsWhatAModuleReportedOfItself) {
  const auto device = persistent_device().text(0x17, "Intel").text(0x18, "0001");
  collect({device});
  auto module = module_in(1);
  module.HealthStatus = 2;
  ASSERT_EQ(zymdb_update_dcpmm_smart_info(&module, 8), ZYM_DB_STATUS_OK);
  collect({Device(device).set<uint16_t>(0x20, 2666)});
  EXPECT_EQ(module_in(1).ClockSpeed, 2666);
  EXPECT_EQ(module_in(1).HealthStatus, 2);
}

TEST_F(MemoryCollection, AnotherModuleDoesNotInheritTheHealthOfTheOneBefore) {
  collect({persistent_device().text(0x18, "0001")});
  auto module = module_in(1);
  module.HealthStatus = 2;
  ASSERT_EQ(zymdb_update_dcpmm_smart_info(&module, 8), ZYM_DB_STATUS_OK);
  collect({persistent_device().text(0x18, "0002")});
  EXPECT_EQ(rows("Memory", {"SlotNo", "SerialNo", "HealthStatus"}), "1|0002|NULL\n");
}

TEST_F(MemoryCollection, ListsThePersistentModulesOfTheExampleServer) {
  collect_file(ZYMDB_EXAMPLE_SERVER "/server.smbios");
  _ZYMDB_Memory_List modules{};
  ASSERT_EQ(zymdb_get_memory_list(&modules), ZYM_DB_STATUS_OK);
  EXPECT_EQ(modules.count, 32U);
  free(modules.ids);
  _ZYMDB_Memory_List persistent{};
  ASSERT_EQ(zymdb_get_AEP_memory_list(&persistent), ZYM_DB_STATUS_OK);
  ASSERT_EQ(persistent.count, 8U);
  _ZYMDB_Memory first{};
  ASSERT_EQ(zymdb_get_memory_by_id(&first, persistent.ids[0]), ZYM_DB_STATUS_OK);
  free(persistent.ids);
  EXPECT_STREQ(first.DevLocator, "CPU1_DIMM_B2");
  EXPECT_EQ(first.Capacity, 129408ULL << 20);
  EXPECT_EQ(first.AppDirCap, 129408ULL << 20);
  EXPECT_EQ(first.MemCapacity, 0U);
  EXPECT_STREQ(first.FirmwareVersion, "2.2.0.1553");
}

}  // namespace
}  // namespace zymdb::collect
