// `show functions --tree`: the bus as people know it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Tree : public testing::Test {
 protected:
  void function(unsigned bus, unsigned device, std::optional<unsigned> bridge) const {
    std::vector<ColumnValue> row{{"FunKey", bus << 16 | device << 8},
                                 {"SegNo", 0u},
                                 {"BusNo", bus},
                                 {"DeviceNo", device},
                                 {"FunctionNo", 0u}};
    if (bridge) row.emplace_back("BridgeId", *bridge);
    insert_row(workplace_, "PCIs", row);
  }
  Words shown(Words options) const {
    Words command{"show", "functions", "--tree", "--no-headings"};
    command.insert(command.end(), options.begin(), options.end());
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
    Words lines = lines_of(outcome.out);
    for (auto& line : lines) line.erase(line.find_last_not_of(' ') + 1);
    return lines;
  }

  Workplace workplace_;
};

TEST_F(Tree, HasEachFunctionBelowItsBridge) {
  function(2, 0, 0x010100);
  function(1, 1, 0);
  function(1, 0, 0);
  function(0, 0, {});
  function(0, 0x1f, {});
  EXPECT_THAT(shown({"--columns", "ADDRESS"}), ElementsAre("0000:00:00.0", "├─0000:01:00.0", "└─0000:01:01.0",
                                                           "  └─0000:02:00.0", "0000:00:1f.0"));
}

TEST_F(Tree, TellsClassLinkAndName) {
  workplace_.collect_example();
  const auto outcome = workplace_.tool({"show", "functions", "--tree"});
  EXPECT_THAT(lines_of(outcome.out).at(0), testing::MatchesRegex("ADDRESS +LINK +CLASS +NAME *"));
  EXPECT_THAT(outcome.out, HasSubstr("├─0000:17:00.0 "));
  EXPECT_EQ(lines_of(outcome.out).size(), records(workplace_, listing("functions")).size() + 1);
}

TEST_F(Tree, OfBridgesThatAreNotThereOrLeadInCirclesIsFlat) {
  function(1, 0, 0x020000);
  function(2, 0, 0x010000);
  function(3, 0, 0x030000);
  function(4, 0, 0x7f0000);
  EXPECT_THAT(shown({"--columns", "ADDRESS"}),
              ElementsAre("0000:01:00.0", "└─0000:02:00.0", "0000:03:00.0", "0000:04:00.0"));
}

TEST_F(Tree, EndsWhereBridgesStandOnBridgesForEver) {
  function(0, 0, {});
  for (unsigned bus = 1; bus < 256; ++bus) function(bus, 0, (bus - 1) << 16);
  EXPECT_EQ(shown({"--columns", "ADDRESS"}).size(), 256u);
}

TEST_F(Tree, OfNothingIsEmpty) {
  workplace_.create_inventory();
  EXPECT_THAT(shown({}), IsEmpty());
  EXPECT_EQ(workplace_.tool({"show", "functions", "--tree", "--json"}).status, 2);
  EXPECT_EQ(workplace_.tool({"show", "ports", "--tree"}).status, 2);
}

TEST(VitalProductData, IsToldInFullByFunctionAndAdapter) {
  const Workplace workplace;
  const auto function = [&](unsigned number) {
    insert_row(workplace, "PCIs",
               {{"FunKey", 0x170000u + number},
                {"HardwareId", 0x170000u + number},
                {"HardwareTypeId", 3u},
                {"DevKey", 0x10001u},
                {"SegNo", 0u},
                {"BusNo", 0x17u},
                {"DeviceNo", 0u},
                {"FunctionNo", number}});
  };
  function(0);
  function(1);
  insert_row(workplace, "PCIAdapter",
             {{"PCIKey", 0x10001u},
              {"PCIFuncKey", 0x170000u},
              {"Location", 1u},
              {"SlotNo", 1u},
              {"NodeNo", 0u},
              {"AIMSupported", 0u},
              {"HealthStatus", 0u},
              {"CardName", "a card"}});
  insert_row(workplace, "VPDs", {{"HardwareId", 7u}, {"HardwareTypeId", 5u}, {"SerialNo", "no function's"}});
  insert_row(workplace, "VPDs",
             {{"HardwareId", 0x170001u},
              {"HardwareTypeId", 3u},
              {"SerialNo", "MT2135X00017-of-20-bytes"},
              {"PartNo", "MCX623106AN-CDAT-A1"}});
  EXPECT_THAT(column(workplace, listing("vpd"), "FUNCTION"), ElementsAre("0000:17:00.1", ""));
  EXPECT_THAT(column(workplace, listing("vpd"), "SERIAL"),
              ElementsAre("MT2135X00017-of-20-bytes", "no function's"));
  EXPECT_THAT(column(workplace, listing("adapters"), "SERIAL"), ElementsAre("MT2135X00017-of-20-bytes"));
  EXPECT_THAT(column(workplace, listing("adapters"), "PART"), ElementsAre("MCX623106AN-CDAT-A1"));
}

TEST(FunctionDrivers, AreToldWithTheirIommuGroup) {
  const Workplace workplace;
  const auto row = [](unsigned number) {
    return std::vector<ColumnValue>{
        {"FunKey", number}, {"SegNo", 0u}, {"BusNo", 0u}, {"DeviceNo", 0u}, {"FunctionNo", number}};
  };
  auto bound = row(0);
  bound.insert(bound.end(), {{"Driver", "mlx5_core"}, {"IOMMUGroup", 0u}, {"NUMANode", 1u}});
  insert_row(workplace, "PCIs", bound);
  insert_row(workplace, "PCIs", row(1));
  EXPECT_THAT(column(workplace, listing("functions"), "DRIVER"), ElementsAre("mlx5_core", ""));
  EXPECT_THAT(column(workplace, listing("functions"), "IOMMUGROUP"), ElementsAre("0", ""));
  EXPECT_THAT(column(workplace, listing("functions"), "NUMA"), ElementsAre("1", ""));
}

}  // namespace
}  // namespace zymdb::test
