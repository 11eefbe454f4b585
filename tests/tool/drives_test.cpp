// Drives as users see them: `properties import`, `show drives`, `show backplanes`, `vpd` and `drive-date`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const ListingCase& kDrives = listing("drives");
constexpr char kProperties[] = ZYMDB_SOURCE_DIR "/tests/data/properties/two-backplanes.properties";

std::string vpd_file(const std::string& name) {
  return ZYMDB_SOURCE_DIR "/tests/data/vpd/" + name;
}

class Drives : public testing::Test {
 protected:
  void function(unsigned bus) const {
    insert_row(workplace_, "PCIs",
               {{"FunKey", bus << 16}, {"SegNo", 0u}, {"BusNo", bus}, {"DeviceNo", 0u}, {"FunctionNo", 0u}});
  }
  void drive(unsigned kind, unsigned bay, unsigned type, const std::string& location) const {
    insert_row(workplace_, "AimDisks",
               {{"LocationId", kind},
                {"BayNo", bay},
                {"DriveTypeId", type},
                {"Location", location},
                {"Presence", 1u},
                {"CtrlType", 0u},
                {"SlotNo", 12u},
                {"PCIFuncKey", 0x3b0000u},
                {"Model", "a model"}});
  }
  Words shown(const Words& options) const {
    Words command{"show", "drives", "--no-headings", "--columns", "LOCATION,TYPE"};
    command.insert(command.end(), options.begin(), options.end());
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    Words lines = lines_of(outcome.out);
    for (auto& line : lines) line = stripped(line);
    return lines;
  }
  Outcome import(const std::string& text) const {
    write_file(workplace_.path("file"), text);
    return workplace_.tool({"properties", "import", workplace_.path("file").string()});
  }

  Workplace workplace_;
};

TEST_F(Drives, AreListedByTheirKind) {
  function(0x3b);
  function(0x3c);
  drive(3, 1, 5, "M.2 Bay1");
  drive(4, 1, 7, "7MM Bay1");
  drive(2, 5, 1, "Bay 5");
  EXPECT_THAT(shown({}), ElementsAre("Bay 5    SATA", "M.2 Bay1 M.2 NVMe", "7MM Bay1 7MM NVMe"));
  EXPECT_THAT(shown({"--m2"}), ElementsAre("M.2 Bay1 M.2 NVMe"));
  EXPECT_THAT(shown({"--7mm"}), ElementsAre("7MM Bay1 7MM NVMe"));
  EXPECT_THAT(shown({"--sata"}), ElementsAre("Bay 5    SATA"));
  EXPECT_THAT(shown({"--merged"}), ElementsAre("Bay 5    SATA", "M.2 Bay1 M.2 NVMe", "7MM Bay1 7MM NVMe"));
  EXPECT_THAT(shown({"--controller", "12"}), ElementsAre("M.2 Bay1 M.2 NVMe", "7MM Bay1 7MM NVMe"));
  EXPECT_THAT(shown({"--controller", "13"}), IsEmpty());
  EXPECT_THAT(shown({"--function", "3b:00.0"}), SizeIs(3));
  EXPECT_THAT(shown({"--function", "3c:00.0"}), IsEmpty());
}

TEST_F(Drives, StandInTheOrderOfTheirPlaces) {
  drive(2, 11, 1, "Bay 11");
  drive(1, 8, 3, "Slot 8");
  drive(3, 1, 5, "M.2 Bay1");
  drive(2, 2, 3, "Bay 2");
  drive(2, 10, 1, "Bay 10");
  insert_row(workplace_, "AimDisks", {{"LocationId", 0u}, {"Location", "Board 03:00.0"}, {"Presence", 1u}});
  EXPECT_THAT(column(workplace_, kDrives, "LOCATION"),
              ElementsAre("Board 03:00.0", "Slot 8", "Bay 2", "Bay 10", "Bay 11", "M.2 Bay1"));
  EXPECT_THAT(column(workplace_, kDrives, "NUMBER"), ElementsAre("", "8", "2", "10", "11", "1"));
}

TEST_F(Drives, OfAFunctionThatIsNotThereAreAFailure) {
  function(0x3b);
  const auto outcome = workplace_.tool({"show", "drives", "--function", "3c:00.0"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "zymdb: there is no function 0000:3c:00.0 in the inventory\n");
}

// A zero would be a drive that is cold and worn out.
TEST_F(Drives, WithoutHealthDataHaveNoTemperatureAndNoLife) {
  drive(2, 5, 1, "Bay 5");
  insert_row(workplace_, "AimDisks",
             {{"LocationId", 2u},
              {"BayNo", 6u},
              {"DriveTypeId", 1u},
              {"Location", "Bay 6"},
              {"Presence", 1u},
              {"InfoMask", 15u},
              {"Temperature", 0u},
              {"RemainLife", 0u},
              {"SFlags", 0u},
              {"Warning", 0u}});
  const auto rows = records(workplace_, kDrives);
  ASSERT_THAT(rows, SizeIs(2));
  EXPECT_EQ(rows[0].at("Model"), "a model");
  for (const char* value : {"Temperature", "RemainLife", "SFlags", "Warning"}) {
    EXPECT_TRUE(rows[0].at(value).is_null()) << value;
    EXPECT_EQ(rows[1].at(value), 0) << value;
    EXPECT_THAT(column(workplace_, kDrives, value), testing::Not(Contains("0").Times(2))) << value;
  }
}

TEST_F(Drives, OfTwoKindsAtOnceAreWrongUsage) {
  for (const Words& options : {Words{"--m2", "--sata"}, {"--controller", "x"}, {"--function", "nowhere"}}) {
    Words command{"show", "drives"};
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(workplace_.tool(command).status, 2);
  }
}

TEST_F(Drives, HaveBackplanesWhenTheirPropertiesAreKnown) {
  const auto imported = workplace_.tool({"properties", "import", kProperties});
  EXPECT_EQ(imported.status, 0) << imported;
  EXPECT_EQ(imported.out, "21 properties stored\n");
  const auto shown = workplace_.tool({"show", "backplanes", "--no-headings"});
  EXPECT_EQ(shown.status, 0) << shown;
  EXPECT_THAT(lines_of(shown.out), ElementsAre("  16      5        2        4"));
}

TEST_F(Drives, InEdsffBaysAreSuchDrives) {
  ASSERT_EQ(workplace_.tool({"properties", "import", kProperties}).status, 0);
  drive(2, 8, 3, "Bay 8");
  drive(2, 3, 3, "Bay 3");
  EXPECT_THAT(shown({"--merged"}), ElementsAre("Bay 3    NVMe", "Bay 8    EDSFF NVMe"));
}

TEST_F(Drives, PropertiesThatAreImportedAgainAreReplaced) {
  EXPECT_EQ(import("/x/mv/1/type byte 4\n").status, 0);
  EXPECT_EQ(import("# again\n\n/x/mv/1/type byte 2\r\n").out, "1 properties stored\n");
  EXPECT_THAT(workplace_.tool({"show", "backplanes", "--columns", "MARVELL1", "--no-headings"}).out,
              HasSubstr("2"));
}

TEST_F(Drives, PropertiesFilesAreStoredWholeOrNotAtAll) {
  const std::pair<const char*, const char*> cases[] = {
      {"/a", "not a path, a kind and a value"},
      {"/a byte", "not a path, a kind and a value"},
      {"/a byte 1 2", "not a path, a kind and a value"},
      {"/a word 1", "the kind is neither byte nor dword"},
      {"/a byte 256", "the value does not fit its kind"},
      {"/a dword 0x100000000", "the value does not fit its kind"},
      {"/a byte -1", "the value is not a number"},
      {"/a byte one", "the value is not a number"},
      {"/a byte 99999999999999999999", "the value is not a number"},
      {"/\"a byte 1", "a path has no quotes"},
      {"/x/mv/1/type byte 1", "the path comes twice"},
  };
  for (const auto& [line, problem] : cases) {
    const auto outcome = import(std::string("/x/mv/1/type byte 4\n") + line + "\n");
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_THAT(outcome.err, HasSubstr(problem)) << line;
    EXPECT_THAT(outcome.err, HasSubstr("line 2")) << line;
  }
  EXPECT_FALSE(exists(workplace_.inventory())) << "not even an empty one is made";
}

TEST_F(Drives, DataAreDecodedFromBytesAndDigits) {
  const auto decoded = workplace_.tool({"vpd", vpd_file("standard"), "--json"});
  EXPECT_EQ(decoded.status, 0) << decoded;
  const auto drive = Json::parse(decoded.out).at("vpd").at(0);
  EXPECT_EQ(drive.at("SerialNo"), "EX0000000001");
  EXPECT_EQ(drive.at("PartNo"), "EX-1920A_U2");
  EXPECT_EQ(drive.at("Capacity"), "1.92TB");

  std::string digits;
  for (const char c : read_file(vpd_file("standard"))) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X%s", static_cast<unsigned char>(c),
                  digits.size() % 48 == 0 ? "\n" : " ");
    digits += pair;
  }
  write_file(workplace_.path("digits"), digits);
  EXPECT_EQ(workplace_.tool({"vpd", workplace_.path("digits").string(), "--json"}).out, decoded.out);
  EXPECT_THAT(workplace_.tool({"vpd", vpd_file("vendor")}).out, HasSubstr("Samsung"));
}

TEST_F(Drives, DataThatAreNoneFail) {
  const std::pair<std::string, const char*> cases[] = {
      {vpd_file("too-short"), "a drive's data have 256 bytes at least, this has 255"},
      {vpd_file("unknown-format"), "not a drive's vital product data"},
      {vpd_file("no-product-area"), "not a drive's vital product data"},
      {vpd_file("not-there"), "No such file"},
  };
  for (const auto& [file, problem] : cases) {
    const auto outcome = workplace_.tool({"vpd", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr(problem));
  }
}

TEST_F(Drives, DateCodesAreDates) {
  EXPECT_EQ(workplace_.tool({"drive-date", "0116"}).out, "2016-01-04\n");
  for (const char* code : {"116", "01166", "week", "", "-116"})
    EXPECT_EQ(workplace_.tool({"drive-date", code}).status, 2) << code;
}

}  // namespace
}  // namespace zymdb::test
