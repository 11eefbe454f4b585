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
