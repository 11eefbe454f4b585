// What dmidecode itself makes of tables is what the reader must make of them.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>

#include "collect/machines.h"
#include "collect/model/slots.h"
#include "collect/sources/smbios/memory_position.h"
#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/smbios/smbios_memory.h"
#include "collect/sources/smbios/smbios_system.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

using Fields = std::map<std::string, std::string>;

// The "Name: value" lines of every structure of a type that dmidecode prints; "Handle" is the handle.
std::vector<Fields> structures(const std::string& path, unsigned type) {
  std::vector<Fields> result;
  const std::string prefix = ", DMI type " + std::to_string(type) + ",";
  for (const auto& line : lines_of(output_of("dmidecode --from-dump '" + path + "'"))) {
    const size_t colon = line.find(": ");
    if (line.starts_with("Handle 0x")) {
      result.emplace_back();
      if (line.find(prefix) != std::string::npos) result.back()["Handle"] = line.substr(7, 6);
    } else if (!result.empty() && line.starts_with('\t') && !line.starts_with("\t\t") &&
               colon != std::string::npos) {
      result.back()[line.substr(1, colon - 1)] = line.substr(colon + 2);
    }
  }
  std::erase_if(result, [](const Fields& fields) { return !fields.contains("Handle"); });
  return result;
}

class RecordedTables : public testing::TestWithParam<RecordedFile> {
 protected:
  SmbiosTables tables() const {
    return SmbiosTables::parse_dump(read_file(GetParam().path), GetParam().path);
  }
  std::vector<Fields> expected(unsigned type) const { return structures(GetParam().path, type); }
};

INSTANTIATE_TEST_SUITE_P(Machines, RecordedTables, testing::ValuesIn(recorded_smbios_dumps()),
                         [](const auto& instance) { return name_of(instance.param); });

std::optional<std::string> text(const Fields& fields, const char* name) {
  const auto field = fields.find(name);
  return field == fields.end() ? std::nullopt : known_text(field->second);
}

// Whether dmidecode says so or leaves it open.
template <typename T>
void expect_number(const Fields& fields, const char* name, const std::optional<T>& read) {
  const auto field = fields.find(name);
  const auto number = field == fields.end() ? std::nullopt : leading_number(field->second);
  EXPECT_EQ(read ? std::optional<uint64_t>(*read) : std::nullopt, number) << name;
}

std::string id_text(const SmbiosProcessor& processor) {
  std::string result;
  char byte[8];
  for (unsigned i = 0; i < 8; ++i) {
    std::snprintf(byte, sizeof byte, "%s%02X", i == 0 ? "" : " ",
                  static_cast<unsigned>(processor.id.value() >> (8 * i) & 0xFF));
    result += byte;
  }
  return result;
}

// "40 MB" and "2560 kB" in KB.
std::optional<uint32_t> size_in_kb(const Fields& fields, const char* name) {
  const std::string size = fields.at(name);
  const auto number = static_cast<uint32_t>(leading_number(size).value());
  return size.ends_with(" MB") ? number << 10 : size.ends_with(" GB") ? number << 20 : number;
}

TEST_P(RecordedTables, HaveTheSameProcessors) {
  const auto read = decode_processors(tables());
  const auto all = expected(4);
  ASSERT_EQ(read.size(), all.size());
  ASSERT_FALSE(read.empty());
  for (size_t i = 0; i < read.size(); ++i) {
    const auto& processor = read[i];
    const auto& fields = all[i];
    EXPECT_EQ(processor.socket, text(fields, "Socket Designation"));
    EXPECT_EQ(processor.populated(), fields.at("Status").starts_with("Populated"));
    if (!processor.populated()) continue;
    EXPECT_EQ(id_text(processor), fields.at("ID"));
    EXPECT_EQ(processor.manufacturer, text(fields, "Manufacturer"));
    EXPECT_EQ(processor.version, text(fields, "Version"));
    EXPECT_EQ(processor.serial_number, text(fields, "Serial Number"));
    EXPECT_EQ(processor.asset_tag, text(fields, "Asset Tag"));
    EXPECT_EQ(processor.part_number, text(fields, "Part Number"));
    expect_number(fields, "External Clock", processor.external_clock);
    expect_number(fields, "Max Speed", processor.max_speed);
    expect_number(fields, "Current Speed", processor.current_speed);
    expect_number(fields, "Core Count", processor.core_count);
    expect_number(fields, "Core Enabled", processor.cores_enabled);
    expect_number(fields, "Thread Count", processor.thread_count);
  }
}

TEST_P(RecordedTables, HaveTheSameCaches) {
  std::map<std::string, Fields> caches;
  for (const auto& cache : expected(7)) caches[cache.at("Handle")] = cache;
  const auto read = decode_processors(tables());
  const auto processors = expected(4);
  for (size_t i = 0; i < read.size(); ++i) {
    for (const size_t level : {0U, 1U, 2U}) {
      const auto handle = processors[i].find("L" + std::to_string(level + 1) + " Cache Handle");
      const auto cache = handle == processors[i].end() ? caches.end() : caches.find(handle->second);
      ASSERT_EQ(read[i].caches[level].installed.has_value(), cache != caches.end());
      if (cache == caches.end()) continue;
      EXPECT_EQ(read[i].caches[level].installed, size_in_kb(cache->second, "Installed Size"));
      EXPECT_EQ(read[i].caches[level].max_size, size_in_kb(cache->second, "Maximum Size"));
    }
  }
}

TEST_P(RecordedTables, HaveTheSameSlots) {
  const auto read = decode_slots(tables());
  const auto all = expected(9);
  ASSERT_EQ(read.size(), all.size());
  for (size_t i = 0; i < read.size(); ++i) {
    const auto& fields = all[i];
    EXPECT_EQ(read[i].designation, text(fields, "Designation"));
    if (fields.contains("ID")) {
      EXPECT_EQ(std::to_string(read[i].id), fields.at("ID"));
    }
    if (read[i].address) {
      EXPECT_EQ(to_string(*read[i].address), fields.at("Bus Address"));
    }
  }
}

TEST_P(RecordedTables, HaveTheSameDevicesOnTheBoard) {
  const auto read = decode_onboard_devices(tables());
  const auto all = expected(41);
  ASSERT_EQ(read.size(), all.size());
  for (size_t i = 0; i < read.size(); ++i) {
    EXPECT_EQ(read[i].designation, text(all[i], "Reference Designation"));
    if (read[i].address) {
      EXPECT_EQ(to_string(*read[i].address), all[i].at("Bus Address"));
    }
  }
}

// "64 GB" and "512 kB" in megabytes; 0 without a module, nothing when the size is not known.
std::optional<uint32_t> size_in_mb(const Fields& fields) {
  const std::string size = fields.at("Size");
  if (size == "No Module Installed") return 0;
  if (size == "Unknown") return std::nullopt;
  return *size_in_kb(fields, "Size") >> 10;
}

// "126 GB" in bytes; 0 for "None", nothing when it is not known or the table has no such field.
std::optional<uint64_t> size_in_bytes(const Fields& fields, const char* name) {
  const auto field = fields.find(name);
  if (field == fields.end() || field->second == "Unknown") return std::nullopt;
  if (field->second == "None") return 0;
  return uint64_t{*size_in_kb(fields, name)} << 10;
}

TEST_P(RecordedTables, HaveTheSameMemory) {
  const auto read = decode_memory(tables());
  const auto all = expected(17);
  ASSERT_EQ(read.size(), all.size());
  ASSERT_FALSE(read.empty());
  for (size_t i = 0; i < read.size(); ++i) {
    SCOPED_TRACE(all[i].at("Handle"));
    const auto& module = read[i];
    const auto& fields = all[i];
    EXPECT_EQ(module.locator, text(fields, "Locator"));
    EXPECT_EQ(module.bank, text(fields, "Bank Locator"));
    EXPECT_EQ(module.size, size_in_mb(fields));
    if (!module.populated()) continue;
    expect_number(fields, "Total Width", module.total_width);
    expect_number(fields, "Data Width", module.data_width);
    expect_number(fields, "Speed", module.max_speed);
    expect_number(fields, "Configured Memory Speed", module.configured_speed);
    EXPECT_EQ(module.manufacturer, text(fields, "Manufacturer"));
    EXPECT_EQ(module.serial_number, text(fields, "Serial Number"));
    EXPECT_EQ(module.asset_tag, text(fields, "Asset Tag"));
    EXPECT_EQ(module.part_number, text(fields, "Part Number"));
  }
}

TEST_P(RecordedTables, HaveTheSamePersistentMemory) {
  const auto read = decode_memory(tables());
  const auto all = expected(17);
  ASSERT_EQ(read.size(), all.size());
  for (size_t i = 0; i < read.size(); ++i) {
    SCOPED_TRACE(all[i].at("Handle"));
    const auto technology = all[i].find("Memory Technology");
    const bool is_persistent =
        technology != all[i].end() &&
        (technology->second.starts_with("NVDIMM") || technology->second.ends_with("persistent memory"));
    const auto& memory = read[i].persistent;
    if (is_persistent) {
      EXPECT_EQ(memory.non_volatile, size_in_bytes(all[i], "Non-Volatile Size"));
      EXPECT_EQ(memory.volatile_part, size_in_bytes(all[i], "Volatile Size"));
      EXPECT_EQ(memory.firmware_version, text(all[i], "Firmware Version"));
      EXPECT_TRUE(memory.capacity);
    } else if (technology != all[i].end() && technology->second == "DRAM") {
      EXPECT_FALSE(memory.capacity);
    }
  }
}

std::optional<std::string> text_of_first(const std::vector<Fields>& all, const char* name) {
  return all.empty() ? std::nullopt : text(all.front(), name);
}

TEST_P(RecordedTables, HaveTheSameSystemBoardAndFirmware) {
  const auto systems = decode_system(tables());
  ASSERT_EQ(systems.size(), 1U);
  const auto& read = systems.front();
  const auto system = expected(1);
  EXPECT_EQ(read.manufacturer, text_of_first(system, "Manufacturer"));
  EXPECT_EQ(read.model, text_of_first(system, "Product Name"));
  EXPECT_EQ(read.version, text_of_first(system, "Version"));
  EXPECT_EQ(read.serial_number, text_of_first(system, "Serial Number"));
  EXPECT_EQ(read.sku, text_of_first(system, "SKU Number"));
  EXPECT_EQ(read.family, text_of_first(system, "Family"));
  EXPECT_EQ(read.uuid, known_uuid(text_of_first(system, "UUID").value_or("")));
  const auto board = expected(2);
  EXPECT_EQ(read.board_manufacturer, text_of_first(board, "Manufacturer"));
  EXPECT_EQ(read.board_model, text_of_first(board, "Product Name"));
  EXPECT_EQ(read.board_version, text_of_first(board, "Version"));
  EXPECT_EQ(read.board_serial_number, text_of_first(board, "Serial Number"));
  const auto firmware = expected(0);
  EXPECT_EQ(read.firmware_vendor, text_of_first(firmware, "Vendor"));
  EXPECT_EQ(read.firmware_version, text_of_first(firmware, "Version"));
  EXPECT_EQ(read.firmware_date, text_of_first(firmware, "Release Date"));
}

// What dmidecode finds in a file that is cut, less the structure that it calls truncated.
TEST_P(RecordedTables, HaveTheSameStructuresWhereTheyBreakOff) {
  const TemporaryFolder folder;
  const std::string whole = read_file(GetParam().path);
  for (size_t part = 2; part < 12; ++part) {
    const std::string cut = whole.substr(0, whole.size() * part / 12);
    const std::string path = folder.write("cut", cut);
    size_t found = 0;
    for (const auto& line : lines_of(output_of("dmidecode --from-dump '" + path + "' 2>/dev/null"))) {
      if (line.starts_with("Handle 0x")) ++found;
      if (line.find("<TRUNCATED>") != std::string::npos) --found;
    }
    const auto tables = SmbiosTables::parse_dump(cut, path);
    EXPECT_EQ(tables.structures().size(), found) << part;
    EXPECT_FALSE(tables.is_whole()) << part;
  }
}

TEST_P(RecordedTables, GiveNoTwoModulesOnePlace) {
  std::vector<MemoryPosition> positions;
  for (const auto& module : decode_memory(tables()))
    positions.push_back(memory_position(module.locator.value_or(""), module.bank.value_or("")));
  const auto told = positions;
  forget_shared_numbers(positions);
  EXPECT_EQ(positions, told) << "these boards name every position";
  std::erase_if(positions, [](const MemoryPosition& position) { return !position.module; });
  EXPECT_EQ(std::set(positions.begin(), positions.end()).size(), positions.size());
}

// The bays' type codes are those that dmidecode calls by a drive connector's name.
TEST(SlotTypes, AreBaysWhereDmidecodeNamesADriveConnector) {
  const TemporaryFolder folder;
  for (unsigned type = 0; type <= 0xFF; ++type) {
    std::string bytes =
        std::string("_SM3_\0\x18\x03\x06\0\1\0\x19\0\0\0\x20\0\0\0\0\0\0\0", 24) + std::string(8, '\0');
    bytes += std::string("\x09\x11\0\0\0", 5) + static_cast<char>(type) +
             std::string("\x05\3\3\0\0\0\0\0\0\0\0", 11);
    bytes += std::string("\0\0\x7f\x04\xff\xff\0\0", 8);
    bytes[5] = static_cast<char>(-checksum(as_bytes(bytes).first(24)));
    const auto printed = structures(folder.write("slot", bytes), 9);
    ASSERT_EQ(printed.size(), 1U);
    const std::string name = printed.front().at("Type");
    const bool drive = name.find("SFF-8639") != std::string::npos || name.find("EDSFF") != std::string::npos;
    EXPECT_EQ(is_drive_bay(static_cast<uint8_t>(type), ""), drive) << name;
  }
}

}  // namespace
}  // namespace zymdb::collect
