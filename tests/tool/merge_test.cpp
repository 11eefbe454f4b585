// `zymdb merge`: settings appear, are merged, vanish.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned kFirst = 0x010000;
constexpr unsigned kSecond = 0x010001;

// A card with two functions, of which the first has an adapter's row.
class Merge : public testing::Test {
 protected:
  Merge() {
    for (const unsigned key : {kFirst, kSecond})
      insert_row(workplace_, "PCIs",
                 {{"FunKey", key},
                  {"DevKey", 0x10003u},
                  {"SegNo", 0u},
                  {"BusNo", 1u},
                  {"DeviceNo", 0u},
                  {"FunctionNo", key & 7},
                  {"Location", 1u},
                  {"SlotNo", 3u},
                  {"NodeIndex", 0u}});
    insert_row(workplace_, "PCIAdapter",
               {{"PCIFuncKey", kFirst},
                {"PCIKey", 0x10003u},
                {"CardName", "a card"},
                {"AIMSupported", 0u},
                {"HealthStatus", 0u}});
  }

  void set(unsigned function) const {
    insert_row(workplace_, "PCISetting",
               {{"SettingID", "Mode." + std::to_string(function)}, {"PfaKey", function}});
  }

  std::string merge() const {
    const auto outcome = workplace_.tool({"merge"});
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    return outcome.out;
  }

  Workplace workplace_;
};

TEST_F(Merge, MakesAdaptersOfFunctionsWithSettingsOnce) {
  EXPECT_EQ(merge(), "0 functions merged, 0 of them new; 0 no longer\n");
  set(kFirst);
  EXPECT_EQ(merge(), "1 functions merged, 1 of them new; 0 no longer\n");
  set(kSecond);
  EXPECT_EQ(merge(), "2 functions merged, 1 of them new; 0 no longer\n");
  EXPECT_EQ(merge(), "2 functions merged, 0 of them new; 0 no longer\n");
}

TEST_F(Merge, LetsGoOfAFunctionWhoseSettingsAreGone) {
  insert_row(workplace_, "PCIAdapter",
             {{"PCIFuncKey", kSecond}, {"PCIKey", 0x10003u}, {"CardName", "a card"}, {"AIMSupported", 3u}});
  EXPECT_EQ(merge(), "0 functions merged, 0 of them new; 1 no longer\n");
}

TEST_F(Merge, FailsAtAFunctionWhoseDeviceHasNoAdapter) {
  insert_row(workplace_, "PCIs",
             {{"FunKey", 0x020000u},
              {"DevKey", 0x20000u},
              {"SegNo", 0u},
              {"BusNo", 2u},
              {"DeviceNo", 0u},
              {"FunctionNo", 0u},
              {"NodeIndex", 0u}});
  set(0x020000);
  const auto outcome = workplace_.tool({"merge"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(lines_of(outcome.err),
              ElementsAre(testing::HasSubstr("function 0000:02:00.0 has settings, but")));
}

TEST_F(Merge, FailsAtAFunctionThatIsNotThereAndKeepsWhatItMerged) {
  set(kFirst);
  set(0x7f0000);
  const auto outcome = workplace_.tool({"merge"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(lines_of(outcome.err), ElementsAre("zymdb: cannot merge the settings into the adapters: "
                                                 "function 0000:7f:00.0 has settings, but is not "
                                                 "on the bus, or its device has no adapter"));
  EXPECT_THAT(column(workplace_, listing("adapters"), "AIMSupported"), ElementsAre("3"));
}

}  // namespace
}  // namespace zymdb::test
