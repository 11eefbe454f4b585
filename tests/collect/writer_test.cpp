#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "collect/write/inventory_writer.h"
#include "common/transaction.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

class WriterTest : public InventoryTest {
 protected:
  // Rows of VPDs: a hardware id and a serial number.
  static TableContent vpds(std::initializer_list<std::pair<uint32_t, const char*>> rows) {
    TableContent content;
    content.table = "VPDs";
    content.columns = {{"HardwareId", Role::kKey},
                       {"SerialNo", Role::kValue, Kind::kText},
                       {"UUID", Role::kInitial, Kind::kText},
                       {"Model", Role::kPlace, Kind::kText}};
    for (const auto& [id, serial] : rows) {
      content.rows.push_back({{Value::number(id), serial ? Value::text(serial) : Value(),
                               Value::text("first"), Value::text("place")},
                              true});
    }
    return content;
  }

  static TableSummary write(const TableContent& content) {
    return write_inventory(get_dmdb_handle(), {content}, {}).front();
  }
};

TEST_F(WriterTest, WritesTextsThatCannotBeQuotedAndSeesThatTheyAreThere) {
  for (const char* text : {"a\"b", "a'b", "a\\", "a?", "\"; DELETE FROM VPDs; --", "`x`", "100%", "Model"}) {
    write(vpds({{1, "plain"}}));
    EXPECT_EQ(write(vpds({{1, text}})).updated, 1U) << text;
    EXPECT_EQ(rows("VPDs", {"SerialNo"}), std::string(text) + "\n");
    EXPECT_EQ(write(vpds({{1, text}})).unchanged, 1U) << text;
    EXPECT_EQ(write(vpds({{1, nullptr}})).updated, 1U) << text;
    EXPECT_EQ(rows("VPDs", {"SerialNo"}), "NULL\n");
  }
}

TEST_F(WriterTest, TellsAnEmptyTextFromNull) {
  given("VPDs", {{"HardwareId", 1}, {"SerialNo", ""}, {"Model", "place"}});
  EXPECT_EQ(write(vpds({{1, nullptr}})).updated, 1U);
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "NULL\n");
}

TEST_F(WriterTest, WritesInitialColumnsOfNewRowsOnly) {
  given("VPDs", {{"HardwareId", 1}, {"UUID", "theirs"}});
  write(vpds({{1, "a"}, {2, "b"}}));
  EXPECT_EQ(rows("VPDs", {"HardwareId", "SerialNo", "UUID"}), "1|a|theirs\n2|b|first\n");
}

TEST_F(WriterTest, LeavesPlacesAsTheyAreWhereNoneIsKnown) {
  given("VPDs", {{"HardwareId", 1}, {"Model", "old place"}});
  auto content = vpds({{1, "a"}, {2, "b"}});
  for (auto& row : content.rows) row.place_known = false;
  write(content);
  EXPECT_EQ(rows("VPDs", {"HardwareId", "SerialNo", "Model"}), "1|a|old place\n2|b|place\n");
}

TEST_F(WriterTest, PairsRowsOfOneKeyInTheirOrder) {
  write(vpds({{1, "a"}, {1, "b"}}));
  const auto summary = write(vpds({{1, "a"}, {1, "c"}}));
  EXPECT_EQ(summary.unchanged, 1U);
  EXPECT_EQ(summary.updated, 1U);
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "a\nc\n");
}

TEST_F(WriterTest, KeepsRowsOfKeptKeys) {
  write(vpds({{1, "a"}, {2, "b"}}));
  auto content = vpds({});
  content.function_column = "HardwareId";
  content.kept.add(FunctionKey(2));
  EXPECT_EQ(write(content).removed, 1U);
  EXPECT_EQ(rows("VPDs", {"HardwareId"}), "2\n");
}

TEST_F(WriterTest, LeavesRowsOfOtherWritersAsTheyAre) {
  given("VPDs", {{"HardwareId", 1}, {"HardwareTypeId", 5}, {"SerialNo", "theirs"}});
  given("VPDs", {{"HardwareId", 2}, {"HardwareTypeId", 5}});
  auto content = vpds({{1, "a"}, {3, "c"}});
  content.columns.push_back({"HardwareTypeId", Role::kOthers});
  for (auto& row : content.rows) row.values.emplace_back();
  content.is_foreign = where("HardwareTypeId", [](const Value& type) { return type == Value::number(5); });
  const auto summary = write(content);
  EXPECT_EQ(summary.unchanged, 1U);
  EXPECT_EQ(summary.removed, 0U);
  EXPECT_EQ(rows("VPDs", {"HardwareId", "HardwareTypeId", "SerialNo"}), "1|5|theirs\n2|5|NULL\n3|NULL|c\n");
}

TEST_F(WriterTest, ComparesNumbersAsNumbersAndTextsAsTexts) {
  given("VPDs", {{"HardwareId", 1}, {"SerialNo", "007"}, {"Model", "place"}});
  auto content = vpds({{1, "7"}});
  EXPECT_EQ(write(content).updated, 1U);
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "7\n");
  content.rows[0].values[1] = Value::text("007");
  EXPECT_EQ(write(content).updated, 1U);
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "007\n");
  EXPECT_EQ(write(content).unchanged, 1U);
}

TEST_F(WriterTest, WritesNumbersOf64Bits) {
  TableContent content{.table = "Processor",
                       .columns = {{"Socket", Role::kKey, Kind::kText}, {"ProcId", Role::kValue}},
                       .rows = {},
                       .is_foreign = {},
                       .keeps = {},
                       .write_further = {}};
  for (const uint64_t id : {uint64_t{0}, uint64_t{UINT32_MAX}, uint64_t{UINT32_MAX} + 1, UINT64_MAX >> 1,
                            uint64_t{0xBFEBFBFF000606A6}, UINT64_MAX}) {
    content.rows = {{{Value::text("CPU1"), Value::number(id)}, true}};
    EXPECT_EQ(write(content).unchanged, 0U) << id;
    EXPECT_EQ(rows("Processor", {"ProcId"}), std::to_string(static_cast<int64_t>(id)) + "\n");
    EXPECT_EQ(write(content).unchanged, 1U) << id;
  }
}

TEST_F(WriterTest, PutsANumberWhereATextStands) {
  given("Processor", {{"Socket", "CPU1"}, {"CoreCount", "many"}});
  const TableContent content{.table = "Processor",
                             .columns = {{"Socket", Role::kKey, Kind::kText}, {"CoreCount", Role::kValue}},
                             .rows = {{{Value::text("CPU1"), Value::number(8)}, true}},
                             .is_foreign = {},
                             .keeps = {},
                             .write_further = {}};
  EXPECT_EQ(write(content).updated, 1U);
  EXPECT_EQ(rows("Processor", {"CoreCount"}), "8\n");
}

TEST_F(WriterTest, AFailingWriteRollsEverythingBack) {
  write(vpds({{1, "a"}, {2, "b"}}));
  auto broken = vpds({{1, "a"}});
  broken.table = "PCIs";
  broken.columns = {{"FunKey", Role::kKey},
                    {"NoSuchColumn", Role::kInitial},
                    {"SegNo", Role::kValue},
                    {"BusNo", Role::kValue}};
  const auto write_both = [&] {
    Transaction transaction(get_dmdb_handle());
    write_inventory(get_dmdb_handle(), {vpds({{3, "c"}}), broken}, {});
    transaction.commit();
  };
  EXPECT_THROW(write_both(), DatabaseError);
  EXPECT_EQ(rows("VPDs", {"HardwareId"}), "1\n2\n");
  EXPECT_EQ(write(vpds({{1, "a"}, {2, "b"}})).unchanged, 2U) << "the transaction is not left open";
}

TEST_F(WriterTest, SaysWhichTableCannotBeRead) {
  auto content = vpds({});
  content.table = "NoSuchTable";
  try {
    write(content);
    FAIL() << "a table that is not there was read";
  } catch (const DatabaseError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("cannot read table NoSuchTable: "));
  }
}

}  // namespace
}  // namespace zymdb::collect
