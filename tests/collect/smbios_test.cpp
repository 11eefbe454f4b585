#include "collect/sources/smbios/smbios.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "collect/machines.h"
#include "collect/record/sanitizer.h"
#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/smbios/smbios_memory.h"
#include "collect/sources/smbios/smbios_system.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

using testing::HasSubstr;

template <typename T>
std::string le(T value) {
  std::string bytes;
  for (size_t i = 0; i < sizeof(T); ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

// A structure: its formatted area after the header, and its texts with their NULs.
std::string structure(uint8_t type, const std::string& formatted, const std::string& texts = "") {
  std::string bytes;
  bytes += static_cast<char>(type);
  bytes += static_cast<char>(formatted.size() + 4);
  bytes += le(uint16_t{0x0100});
  return bytes + formatted + (texts.empty() ? std::string(2, '\0') : texts + '\0');
}

std::string end_structure() {
  return structure(127, "");
}

void set_checksum(std::string& bytes, size_t at, size_t first, size_t size) {
  bytes[at] = 0;
  bytes[at] = static_cast<char>(-checksum(as_bytes(bytes).subspan(first, size)));
}

std::string dump64(const std::string& table) {
  std::string entry = std::string("_SM3_") + '\0' + "\x18\x03\x03" + '\0' + '\1' + '\0' +
                      le(static_cast<uint32_t>(table.size())) + le(uint64_t{32});
  set_checksum(entry, 5, 0, 24);
  entry.resize(32);
  return entry + table;
}

std::string dump32(const std::string& table) {
  std::string entry = std::string("_SM_") + '\0' + "\x1F\x02\x08" + le(uint16_t{64}) + std::string(6, '\0');
  entry += std::string("_DMI_") + '\0' + le(static_cast<uint16_t>(table.size())) + le(uint32_t{32}) +
           le(uint16_t{1}) + '\x28';
  set_checksum(entry, 0x15, 0x10, 15);
  set_checksum(entry, 4, 0, 31);
  entry.resize(32);
  return entry + table;
}

// The same with another version, 0x0205 for 2.5.
std::string with_version(std::string dump32, unsigned version) {
  dump32[6] = static_cast<char>(version >> 8);
  dump32[7] = static_cast<char>(version);
  set_checksum(dump32, 4, 0, 31);
  return dump32;
}

std::string refusal(const std::string& bytes) {
  try {
    SmbiosTables::parse_dump(bytes, "tables");
  } catch (const SourceError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(SmbiosTables, FindsStructuresOfBothEntryPointForms) {
  const std::string table = structure(11, "\x02", std::string("one\0two\0", 8)) + end_structure();
  for (const auto& dump : {dump64(table), dump32(table)}) {
    const auto tables = SmbiosTables::parse_dump(dump, "tables");
    ASSERT_EQ(tables.structures().size(), 2U);
    const auto& first = tables.structures().front();
    EXPECT_EQ(first.type(), 11);
    EXPECT_EQ(first.handle(), 0x0100);
    EXPECT_EQ(first.length(), 5U);
    EXPECT_EQ(first.text(4), "two");
  }
}

TEST(SmbiosTables, ReadsNothingWhereAStructureIsTooShort) {
  const auto tables = SmbiosTables::parse_dump(dump64(structure(11, "\x01") + end_structure()), "tables");
  const auto& first = tables.structures().front();
  EXPECT_EQ(first.field<uint8_t>(4), 1);
  EXPECT_FALSE(first.field<uint16_t>(4));
  EXPECT_FALSE(first.field<uint8_t>(5));
  EXPECT_FALSE(first.text(4)) << "there are no texts";
  EXPECT_FALSE(first.text(200));
}

TEST(SmbiosTables, TakesA32BitTableWithoutItsEndStructure) {
  EXPECT_EQ(refusal(dump32(structure(11, "\x01"))), "accepted");
}

TEST(SmbiosTables, RefusesWhatIsNoTableWithOffsetAndReason) {
  const std::string table = structure(11, "\x01", std::string("one\0", 4)) + end_structure();
  std::string wrong_sum64 = dump64(table);
  wrong_sum64[8] ^= 1;
  std::string wrong_sum32 = dump32(table);
  wrong_sum32[7] ^= 1;
  std::string wrong_intermediate = dump32(table);
  wrong_intermediate[0x1E] ^= 1;
  set_checksum(wrong_intermediate, 4, 0, 31);
  const struct {
    std::string bytes;
    const char* message;
  } kCases[] = {
      {"", "tables, offset 0x0: no SMBIOS entry point"},
      {"\x7f"
       "ELF",
       "no SMBIOS entry point"},
      {"_SM3_", "a damaged SMBIOS 3 entry point"},
      {"_SM_", "a damaged SMBIOS 2 entry point"},
      {wrong_sum64, "a damaged SMBIOS 3 entry point"},
      {wrong_sum32, "a damaged SMBIOS 2 entry point"},
      {wrong_intermediate, "a damaged SMBIOS 2 entry point"},
      {dump64(""), "the file ends before its table"},
      {dump64(std::string("\x0b\x03\x00\x00\x00\x00", 6)),
       "offset 0x20: a structure shorter than its header"},
      {dump64(std::string("\x0b\x40\x00\x01", 4)), "ends inside a structure"},
      {dump64(std::string("\x0b\x04\x00\x01"
                          "abc",
                          7)),
       "ends inside a structure"},
      {dump32(table).substr(0, 40), "offset 0x20: the table ends inside a structure"},
  };
  for (const auto& test : kCases) EXPECT_THAT(refusal(test.bytes), HasSubstr(test.message));
}

std::vector<std::string> notices_of(const std::string& bytes, size_t structures, bool is_whole) {
  const auto tables = SmbiosTables::parse_dump(bytes, "tables");
  EXPECT_EQ(tables.structures().size(), structures);
  EXPECT_EQ(tables.is_whole(), is_whole);
  return tables.notices();
}

TEST(SmbiosTables, AreReadUpToWhereTheyBreakOff) {
  const std::string first = structure(11, "\x01");  // 7 bytes
  const std::string end = ": what comes before it is read";
  const struct {
    std::string bytes;
    const char* notice;
  } kCases[] = {
      {dump64(first + std::string("\x0b\x03\0\0\0\0", 6)), "0x27: a structure shorter than its header"},
      {dump64(first + std::string("\x0b\x40\0\1", 4)), "0x27: the table ends inside a structure"},
      {dump64(first + std::string(64, 'x')).substr(0, 32 + 7),
       "0x27: the table ends without its end structure"},
      {dump64(first + first + end_structure()).substr(0, 32 + 12), "0x27: the table ends inside a structure"},
      {dump32(first + first).substr(0, 32 + 12), "0x27: the table ends inside a structure"},
      {dump32(first + first).substr(0, 32 + 7), "0x27: the file ends inside its table"},
  };
  for (const auto& [bytes, notice] : kCases) {
    EXPECT_EQ(notices_of(bytes, 1, false),
              std::vector{"tables, offset " + std::string(notice) + " (cut short?)" + end});
  }
  EXPECT_THAT(notices_of(dump64(first + end_structure()), 2, true), testing::IsEmpty());
}

TEST(SmbiosTables, WithFewerStructuresThanAnnouncedSaySo) {
  std::string dump = dump32(structure(11, "\x01") + end_structure());
  dump[0x1C] = 3;
  set_checksum(dump, 0x15, 0x10, 15);
  set_checksum(dump, 4, 0, 31);
  EXPECT_EQ(notices_of(dump, 2, true),
            std::vector<std::string>{"tables: 2 structures, where the entry point announces 3"});
}

class RecordedSmbios : public testing::TestWithParam<RecordedFile> {};
INSTANTIATE_TEST_SUITE_P(Machines, RecordedSmbios, testing::ValuesIn(recorded_smbios_dumps()),
                         [](const auto& instance) { return name_of(instance.param); });

// Refused, or else the structures that are whole.
TEST_P(RecordedSmbios, HaveTheStructuresThatEveryPrefixHoldsWhole) {
  const std::string whole = read_file(GetParam().path);
  const auto tables = SmbiosTables::parse_dump(whole, "tables");
  EXPECT_THAT(tables.notices(), testing::IsEmpty());
  ASSERT_EQ(tables.structures().back().type(), 127);
  const std::string end("\x7f\x04", 2);
  const size_t needed = whole.rfind(end) + 6;
  size_t before = 0;
  for (size_t size = 0; size <= whole.size(); ++size) {
    if (refusal(whole.substr(0, size)) != "accepted") {
      ASSERT_EQ(before, 0U) << size;
      continue;
    }
    const auto part = SmbiosTables::parse_dump(whole.substr(0, size), "tables");
    ASSERT_GE(part.structures().size(), std::max<size_t>(before, 1)) << size;
    before = part.structures().size();
    ASSERT_EQ(part.structures().back().type(), tables.structures()[before - 1].type());
    ASSERT_EQ(part.is_whole(), size >= needed) << size;
    ASSERT_EQ(part.notices().size(), size >= needed ? 0U : 1U) << size;
  }
  EXPECT_EQ(before, tables.structures().size());
}

// The table of a dump as a sanitized recording has it.
std::string without_numbers(const std::string& dump) {
  MachineCopy copy;
  copy.files["sys/firmware/dmi/tables/smbios_entry_point"] = dump.substr(0, 32);
  copy.files["sys/firmware/dmi/tables/DMI"] = dump.substr(32);
  const auto result = sanitized(copy);
  return result.files.at("sys/firmware/dmi/tables/smbios_entry_point") +
         result.files.at("sys/firmware/dmi/tables/DMI");
}

TEST_P(RecordedSmbios, AreTheSameTablesWhenSanitized) {
  const std::string whole = read_file(GetParam().path);
  const auto before = SmbiosTables::parse_dump(whole, "tables");
  const auto after = SmbiosTables::parse_dump(without_numbers(whole), "tables");
  EXPECT_THAT(after.notices(), testing::IsEmpty());
  ASSERT_EQ(after.structures().size(), before.structures().size());
  for (size_t i = 0; i < before.structures().size(); ++i) {
    EXPECT_EQ(after.structures()[i].type(), before.structures()[i].type());
    EXPECT_EQ(after.structures()[i].length(), before.structures()[i].length());
  }
  const auto memory = decode_memory(before);
  const auto other = decode_memory(after);
  for (size_t i = 0; i < memory.size(); ++i) {
    EXPECT_EQ(other[i].size, memory[i].size);
    EXPECT_EQ(other[i].part_number, memory[i].part_number);
    if (memory[i].serial_number.value_or("").size() >= 5) {
      EXPECT_NE(other[i].serial_number, memory[i].serial_number);
    }
  }
}

TEST_P(RecordedSmbios, ReadsOrRefusesFlippedBytes) {
  const std::string whole = read_file(GetParam().path);
  unsigned refused = 0;
  for (size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(~damaged[at]);
    try {
      const auto tables = SmbiosTables::parse_dump(damaged, "tables");
      const size_t read = decode_processors(tables).size() + decode_slots(tables).size() +
                          decode_memory(tables).size() + decode_firmware(tables).size() +
                          decode_onboard_devices(tables).size();
      EXPECT_LE(read, tables.structures().size());
      EXPECT_LE(decode_system(tables).size(), 1U);
      EXPECT_TRUE(tables.is_whole() || !tables.notices().empty()) << "a break is told of";
      if (at % 16 == 0) {
        EXPECT_EQ(without_numbers(damaged).size(), damaged.size());
      }
    } catch (const SourceError& error) {
      ++refused;
      EXPECT_THAT(error.what(), HasSubstr("tables, offset 0x"));
    }
  }
  EXPECT_GT(refused, 20U) << "at least a flipped entry point is refused";
}

// ---- Decoding

std::string processor_structure(const std::string& formatted_from_handle) {
  return structure(4, formatted_from_handle, std::string("CPU1\0Default string\0", 20)) + end_structure();
}

// A type 4 structure of 48 bytes with these fields set.
std::string processor_bytes(uint8_t status, uint8_t family, uint8_t cores) {
  std::string bytes(44, '\0');
  const auto set = [&bytes](size_t offset, uint8_t value) { bytes[offset - 4] = static_cast<char>(value); };
  set(0x04, 1);
  set(0x05, 3);
  set(0x06, family);
  set(0x07, 2);
  set(0x18, status);
  set(0x19, 0x3D);
  set(0x1A, 0xFF), set(0x1B, 0xFF);
  set(0x23, cores);
  set(0x28, 0x18), set(0x29, 0x01);
  set(0x2A, 0x2C), set(0x2B, 0x01);
  return bytes;
}

SmbiosProcessor only_processor(const std::string& bytes) {
  const auto processors =
      decode_processors(SmbiosTables::parse_dump(dump64(processor_structure(bytes)), "tables"));
  EXPECT_EQ(processors.size(), 1U);
  return processors.front();
}

TEST(SmbiosProcessor, TakesFamilyAndCoreCountFromTheirSecondFieldsWhereTheFirstOverflow) {
  const auto processor = only_processor(processor_bytes(0x41, 0xFE, 0xFF));
  EXPECT_EQ(processor.family, 0x0118);
  EXPECT_EQ(processor.core_count, 300);
  EXPECT_FALSE(processor.thread_count) << "0 means that nobody knows";
}

TEST(SmbiosProcessor, KeepsACountOf255WhereTheTableIsTooOldForASecondField) {
  const auto processor = only_processor(processor_bytes(0x41, 0xB3, 0xFF).substr(0, 36));
  EXPECT_EQ(processor.core_count, 255);
  EXPECT_EQ(processor.family, 0xB3);
}

TEST(SmbiosProcessor, TakesPlaceholdersForUnknown) {
  EXPECT_FALSE(only_processor(processor_bytes(0x41, 0xB3, 8)).manufacturer);
}

TEST(SmbiosProcessor, InventsNothingForAnEmptySocket) {
  const auto processor = only_processor(processor_bytes(0x00, 0xB3, 8));
  EXPECT_EQ(processor.socket, "CPU1");
  EXPECT_EQ(processor.status, 0);
  EXPECT_EQ(processor.upgrade, 0x3D);
  EXPECT_FALSE(processor.populated());
  EXPECT_FALSE(processor.id);
  EXPECT_FALSE(processor.family);
  EXPECT_FALSE(processor.core_count);
  EXPECT_FALSE(processor.caches[0].installed);
}

std::optional<PciAddress> address_in_slot(uint16_t segment, uint8_t bus, uint8_t position) {
  std::string bytes = std::string("\x01\xb6\x0d\x04\x04", 5) + le(uint16_t{7}) + std::string(2, '\0');
  bytes += le(segment) + static_cast<char>(bus) + static_cast<char>(position);
  const std::string table = structure(9, bytes, std::string("SLOT7\0", 6)) + end_structure();
  return decode_slots(SmbiosTables::parse_dump(dump64(table), "tables")).front().address;
}

TEST(SmbiosSlot, TakesOnesAndZerosForNoAddress) {
  EXPECT_EQ(address_in_slot(1, 0x3b, 0x11), (PciAddress{1, 0x3b, 2, 1}));
  EXPECT_EQ(address_in_slot(0, 0, 0x10), (PciAddress{0, 0, 2, 0}));
  EXPECT_FALSE(address_in_slot(0xFFFF, 0xFF, 0xFF));
  EXPECT_FALSE(address_in_slot(0, 0xFF, 0));
  EXPECT_FALSE(address_in_slot(0, 0, 0));
}

TEST(SmbiosSystem, HasItsUuidInTheOrderOfItsVersion) {
  const std::string uuid("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16);
  const std::string dump = dump32(
      structure(1, std::string("\1\2\0\0", 4) + uuid, std::string("Maker\0Model\0", 12)) + end_structure());
  const struct {
    unsigned version;
    const char* uuid;
  } kCases[] = {{0x0205, "33221100-5544-7766-8899-aabbccddeeff"},
                {0x0206, "00112233-4455-6677-8899-aabbccddeeff"},
                {0x0306, "00112233-4455-6677-8899-aabbccddeeff"}};
  for (const auto& [version, expected] : kCases) {
    const auto systems = decode_system(SmbiosTables::parse_dump(with_version(dump, version), "tables"));
    ASSERT_EQ(systems.size(), 1U);
    EXPECT_EQ(systems[0].uuid, expected);
    EXPECT_EQ(systems[0].model, "Model");
  }
}

TEST(SmbiosSystem, HasNoUuidWhereFirmwareHasNone) {
  for (const char filler : {'\0', '\xff'}) {
    const auto tables = SmbiosTables::parse_dump(
        dump64(structure(1, std::string(4, '\0') + std::string(16, filler)) + end_structure()), "tables");
    EXPECT_EQ(decode_system(tables).at(0).uuid, std::nullopt);
  }
  const auto short_one =
      SmbiosTables::parse_dump(dump64(structure(1, std::string(12, '\1')) + end_structure()), "t");
  EXPECT_EQ(decode_system(short_one).at(0).uuid, std::nullopt);
}

TEST(SmbiosSystem, IsNothingWhereNoStructureTellsOfIt) {
  const auto tables = SmbiosTables::parse_dump(dump64(structure(11, "\x01") + end_structure()), "tables");
  EXPECT_TRUE(decode_system(tables).empty());
}

}  // namespace
}  // namespace zymdb::collect
