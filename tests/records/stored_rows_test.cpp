// Columns as they are stored: a NULL is no 0, and a large number not its low bits.
#include "records/stored_rows.h"

#include <gtest/gtest.h>

#include "records/cpu_mem.h"
#include "support/inventory.h"

namespace zymdb::records {
namespace {

class StoredRows : public InventoryTest {
 protected:
  // The value of a field of the only processor.
  static Value value(const char* field) {
    const auto type = processors();
    const auto sheet = type.list({find_field(type, field).value()});
    EXPECT_EQ(sheet.rows.size(), 1u);
    return sheet.rows.at(0).at(0).value;
  }
};

TEST_F(StoredRows, TellNullFromZero) {
  given("Processor", {{"ProcType", 0}, {"Family", nullptr}, {"L1CacheInstalled", 0}});
  EXPECT_EQ(value("ProcType"), Value(uint64_t{0}));
  EXPECT_EQ(value("Family"), Value());
  EXPECT_EQ(value("L1CacheInstalled"), Value(uint64_t{0}));
  EXPECT_EQ(value("L2CacheInstalled"), Value());
}

TEST_F(StoredRows, HaveNumbersThatTheirFieldsHaveNoRoomFor) {
  given("Processor", {{"Status", 0x41}, {"ThreadCount", 384}, {"CoreCount", 256}, {"CoreEnabled", 192}});
  EXPECT_EQ(value("ThreadCount"), Value(uint64_t{384}));
  EXPECT_EQ(value("CoreCount"), Value(uint64_t{256})) << "its low bits are 0, which is unknown";
  EXPECT_EQ(value("CoreEnabled"), Value(uint64_t{192}));
}

TEST_F(StoredRows, OfAProcessorHaveItsWholeNumbers) {
  given("Processor", {{"Status", 0x41},
                      {"L1CacheInstalled", 786432},
                      {"L2CacheMaxSize", 1 << 20},
                      {"L3CacheInstalled", 786432},
                      {"L3CacheMaxSize", 3 << 18},
                      {"MaxSpeed", 70000},
                      {"CurSpeed", 66000},
                      {"ExtClock", 65536},
                      {"NodeIndex", 256},
                      {"Family", 0x10001}});
  EXPECT_EQ(value("L1CacheInstalled"), Value(uint64_t{786432}));
  EXPECT_EQ(value("L2CacheMaxSize"), Value(uint64_t{1048576}));
  EXPECT_EQ(value("L3CacheInstalled"), Value(uint64_t{786432})) << "768 MiB";
  EXPECT_EQ(value("L3CacheMaxSize"), Value(uint64_t{786432}));
  EXPECT_EQ(value("MaxSpeed"), Value(uint64_t{70000}));
  EXPECT_EQ(value("CurSpeed"), Value(uint64_t{66000}));
  EXPECT_EQ(value("ExtClock"), Value(uint64_t{65536}));
  EXPECT_EQ(value("NodeIndex"), Value(uint64_t{256}));
  EXPECT_EQ(value("Family"), Value(uint64_t{0x10001}));
}

TEST_F(StoredRows, OfAModuleHaveItsWholeNumbers) {
  given("Memory", {{"SlotNo", 1},
                   {"MemSize", "8589934592"},
                   {"MaxSpeed", 70000},
                   {"ClockSpeed", 66000},
                   {"TotalWidth", 65536},
                   {"MemType", 256}});
  given("Memory", {{"SlotNo", 2}, {"MemSize", nullptr}, {"MemType", nullptr}});
  given("Memory", {{"SlotNo", 3}, {"MemSize", 0}, {"MemType", nullptr}});
  const auto column = [](const char* field) {
    const auto type = memory_modules();
    std::vector<Value> values;
    for (const auto& row : type.list({find_field(type, field).value()}).rows)
      values.push_back(row.at(0).value);
    return values;
  };
  EXPECT_EQ(column("MemSize"), (std::vector<Value>{uint64_t{1} << 33, {}, uint64_t{0}}));
  EXPECT_EQ(column("MaxSpeed").front(), Value(uint64_t{70000}));
  EXPECT_EQ(column("ClockSpeed").front(), Value(uint64_t{66000}));
  EXPECT_EQ(column("TotalWidth").front(), Value(uint64_t{65536}));
  EXPECT_EQ(column("Size"), (std::vector<Value>{"8388608 GiB", {}, "empty"}));
  EXPECT_EQ(column("MemTypeName").front(), Value()) << "no type has that code";
}

TEST_F(StoredRows, HaveAllBitsOfIdentifiers) {
  given("Processor", {{"ProcId", "-4616189618054758400"}});
  EXPECT_EQ(value("ProcId"), Value(uint64_t{0xbff0000000000000}));
}

TEST_F(StoredRows, AreFoundByTheNumberInTheirKeyColumn) {
  given("PCIs", {{"FunKey", 0x010000}, {"DevKey", 7}});
  given("PCIs", {{"FunKey", 0xff000000}, {"DevKey", nullptr}});
  given("PCIs", {{"FunKey", nullptr}, {"DevKey", 9}});
  const auto rows = read_stored_rows(Reading("functions"), "PCIs", "FunKey", {"DevKey"});
  ASSERT_EQ(rows.size(), 2u) << "a row without a key is left out";
  EXPECT_EQ(rows.at(0x010000).at("DevKey"), Value(uint64_t{7}));
  EXPECT_EQ(rows.at(0xff000000).at("DevKey"), Value());
}

TEST_F(StoredRows, OfATableThatIsNotThereAreAnError) {
  const Reading reading("parts");
  EXPECT_THROW(read_stored_rows(reading, "Parts", "_id", {}), DatabaseError);
  lose_database();
  EXPECT_THROW(read_stored_rows(reading, "PCIs", "_id", {"FunKey"}), DatabaseError);
}

}  // namespace
}  // namespace zymdb::records
