// Vital product data of drives: both layouts, what is wrong with them, and texts that need cleaning.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/drive_image.h"
#include "support/system_log.h"
#include "zymdb_storage.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Bytes whose first outside byte, at either end, cannot be read.
class GuardedBytes {
 public:
  explicit GuardedBytes(const std::vector<unsigned char>& bytes) : page_(sysconf(_SC_PAGESIZE)) {
    mapping_ = static_cast<unsigned char*>(
        mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(mapping_ + page_, page_, PROT_NONE);
    start_ = mapping_ + page_ - bytes.size();
    std::memcpy(start_, bytes.data(), bytes.size());
  }
  ~GuardedBytes() { munmap(mapping_, 2 * page_); }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  const unsigned char* data() const { return start_; }

 private:
  size_t page_;
  unsigned char* mapping_;
  unsigned char* start_;
};

using namespace drive_image;

class DriveVpd : public testing::Test {
 protected:
  DriveVpd() { system_log().clear(); }

  int parse(const Image& image) {
    const GuardedBytes bytes(image);
    drive_ = {};
    drive_.BayNo = 7;
    return parse_nvme_drive_vpd(bytes.data(), static_cast<unsigned>(image.size()), &drive_);
  }

  _ZYMDB_AimDisk drive_{};
};

TEST_F(DriveVpd, ShorterThan256BytesIsRefusedInSilence) {
  Image image = standard_image({});
  image.pop_back();
  EXPECT_EQ(parse(image), -1);
  EXPECT_EQ(parse_nvme_drive_vpd(nullptr, 0, &drive_), -1);
  EXPECT_THAT(system_log(), IsEmpty());
  EXPECT_EQ(parse(standard_image({})), 0);
}

TEST_F(DriveVpd, OfAnUnknownFormatIsRefusedAndLogged) {
  for (const unsigned char first : {uint8_t{0}, uint8_t{3}, uint8_t{0xFF}}) {
    Image image = standard_image({});
    image[0] = first;
    EXPECT_EQ(parse(image), -1);
  }
  EXPECT_THAT(system_log(),
              ElementsAre("14: parse_nvme_drive_vpd: Unknown VPD format. data [00 00 00 00]\n\n",
                          "14: parse_nvme_drive_vpd: Unknown VPD format. data [03 00 00 00]\n\n",
                          "14: parse_nvme_drive_vpd: Unknown VPD format. data [FF 00 00 00]\n\n"));
}

TEST_F(DriveVpd, WithoutAProductAreaIsRefusedAndLogged) {
  Image image = standard_image({});
  image[4] = 0;
  image[7] = 0xAB;
  EXPECT_EQ(parse(image), -1);
  EXPECT_THAT(system_log(),
              ElementsAre("14: parse_nvme_drive_standard_vpd: NVMe drive 7. Invalid product info "
                          "offset 0. [01 00 00 00 00 18 00 AB]\n\n"));
}

TEST_F(DriveVpd, InAnFruImageFillsTheRecord) {
  Image image = standard_image({});
  put_nvme_record(image, 192, 1'920'383'410'176);
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Manufacture, "Maker");
  EXPECT_STREQ(drive_.Model, "Vendor ABC_123");
  EXPECT_STREQ(drive_.PartNo, "ABC_123");
  EXPECT_STREQ(drive_.SerialNo, "SN0001");
  EXPECT_STREQ(drive_.FruNo, "FRU77");
  EXPECT_STREQ(drive_.Capacity, "1.92TB");
  EXPECT_THAT(system_log(),
              ElementsAre("14: parse_nvme_drive_standard_vpd: NVMe drive 7. [Model] Vendor ABC_123; [MFG] "
                          "Maker; [SN] SN0001; [Capacity] 1.92TB\n\n"));
}

TEST_F(DriveVpd, MayCallTheFruFormatVersionTwo) {
  Image image = standard_image({});
  image[0] = 2;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.SerialNo, "SN0001");
  // Only all three bytes make it the vendor layout.
  image[1] = 8;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.SerialNo, "SN0001");
}

TEST_F(DriveVpd, LosesTheLastCharacterOfAllTextsButTheModel) {
  EXPECT_EQ(parse(standard_image({.manufacturer = "Samsung", .model = "M", .serial = "S", .file_id = "F"})),
            0);
  EXPECT_STREQ(drive_.Manufacture, "Samsun");
  EXPECT_STREQ(drive_.Model, "M");
  EXPECT_STREQ(drive_.SerialNo, "");
  EXPECT_STREQ(drive_.FruNo, "");
}

TEST_F(DriveVpd, LongTextsAreCut) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+";
  ASSERT_EQ(letters.size(), 63u);
  EXPECT_EQ(parse(standard_image({.manufacturer = letters, .model = ""})), 0);
  EXPECT_EQ(drive_.Manufacture, letters.substr(0, 16));
  EXPECT_EQ(parse(standard_image({.model = letters})), 0);
  EXPECT_EQ(drive_.Model, letters);
  EXPECT_EQ(drive_.PartNo, letters.substr(0, 32));
  for (const size_t length : {32u, 33u, 34u, 63u}) {
    const std::string text = letters.substr(0, length);
    EXPECT_EQ(parse(standard_image({.serial = text, .file_id = text})), 0);
    EXPECT_EQ(drive_.SerialNo, letters.substr(0, std::min<size_t>(length - 1, 32)));
    EXPECT_STREQ(drive_.FruNo, drive_.SerialNo);
  }
}

TEST_F(DriveVpd, EmptyFieldsLeaveTheRecord) {
  EXPECT_EQ(parse(standard_image({"", "", "", "", "", "", ""})), 0);
  EXPECT_STREQ(drive_.Manufacture, "");
  EXPECT_STREQ(drive_.Model, "");
  EXPECT_STREQ(drive_.PartNo, "");
  EXPECT_STREQ(drive_.FruNo, "");
  EXPECT_STREQ(drive_.Capacity, "");
}

TEST_F(DriveVpd, WithoutAFileIdTakesTheSerialNumber) {
  EXPECT_EQ(parse(standard_image({.serial = "abcdefghijklmnopqrstuvwxyz012345+", .file_id = ""})), 0);
  EXPECT_STREQ(drive_.FruNo, "abcdefghijklmnopqrstuvwxyz012345");
}

TEST_F(DriveVpd, ThePartNumberIsTheModelWithoutItsVendorWord) {
  const std::pair<const char*, const char*> cases[] = {
      {"Vendor ABC_123", "ABC_123"},
      {"ABC_123", "123"},
      {"ABC_", "ABC_"},
      {"ABC ", "ABC"},
      {"A B C", "B C"},
      {"A_B_C", "C"},
      {" ABC", "ABC"},
      {"_", "_"},
      {"A_B_", "A_B_"},
      {"A_B C_D", "C_D"},
      {"A_B ", "B"},
      {"plain", "plain"},
  };
  for (const auto& [model, part] : cases) {
    EXPECT_EQ(parse(standard_image({.model = model})), 0);
    EXPECT_STREQ(drive_.PartNo, part) << model;
    EXPECT_EQ(parse(vendor_image("serial", model)), 0);
    EXPECT_STREQ(drive_.PartNo, part) << model;
  }
}

TEST_F(DriveVpd, WrapsWithinTheFirst256Bytes) {
  // The area begins at 248: its first length byte is at 251, and the model's field is at the beginning.
  Image image(256, 0);
  image[4] = 31;
  image[251] = kTextType | 2;  // manufacturer, at 252
  put_text(image, 252, "XY");
  image[254] = kTextType | 1;  // product name, at 255
  put_text(image, 255, "P");
  image[0] = 1;  // and this is the length of the model, which is the one byte that follows
  image[1] = 'M';
  image[2] = 0;  // product version
  image[3] = 2;  // serial number, at 4
  image[6] = image[7] = 0;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Manufacture, "X");
  EXPECT_STREQ(drive_.Model, "M");
  // The serial number's first byte is the area's offset: a control character.
  EXPECT_STREQ(drive_.SerialNo, "");
}

TEST_F(DriveVpd, AFieldsBytesDoNotWrap) {
  Image image(256, 0);
  image[0] = 1;
  image[4] = 31;
  image[251] = 10;  // 252 to 261
  put_text(image, 252, "ABCD");
  put_text(image, 8, "EFGHIJ");
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Manufacture, "ABCD");
  // Where there are more bytes they are read.
  image.resize(300, 'z');
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Manufacture, "ABCDzzzzz");
}

TEST_F(DriveVpd, AnAreaPast256BeginsFromZero) {
  EXPECT_EQ(parse(standard_image({}, 32 + 1)), 0);  // 264 - 256 = 8
  EXPECT_STREQ(drive_.SerialNo, "SN0001");
}

TEST_F(DriveVpd, TheTypeBitsOfALengthAreIgnored) {
  Image image = standard_image({});
  image[11] = static_cast<unsigned char>(image[11] & 0x3F);
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Manufacture, "Maker");
}

// 'B' is a capacity record of so many terabytes, 'C' a port record, '.' something else.
Image with_records(const std::string& records) {
  Image image = standard_image({}, 1, 1024);
  image[5] = 16;
  size_t at = 128;
  uint64_t terabytes = 1;
  for (const char record : records) {
    if (record == 'B') put_nvme_record(image, at, terabytes++ * 1'000'000'000'000);
    if (record == 'C') image[at] = 0x0C;
    at += record == 'B' ? 64 : 16;
  }
  return image;
}

TEST_F(DriveVpd, TheCapacityIsThatOfTheLastNvmeRecordAmongThree) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},           {"B", "1.00TB"},    {"C", ""},         {".", ""},         {".B", ""},
      {"CB", "1.00TB"},   {"BC", "1.00TB"},   {"BB", "2.00TB"},  {"CC", ""},        {"B.B", "1.00TB"},
      {"BBB", "3.00TB"},  {"BBC", "2.00TB"},  {"BCB", "2.00TB"}, {"BCC", "1.00TB"}, {"CBB", "2.00TB"},
      {"CBC", "1.00TB"},  {"CCB", "1.00TB"},  {"CCC", ""},       {"CCCB", ""},      {"BBBB", "3.00TB"},
      {"CCBB", "1.00TB"}, {"BBCB", "2.00TB"}, {"C.B", ""},
  };
  for (const auto& [records, capacity] : cases) {
    EXPECT_EQ(parse(with_records(records)), 0);
    EXPECT_STREQ(drive_.Capacity, capacity) << records;
  }
}

TEST_F(DriveVpd, TheCapacityIsRounded) {
  const std::pair<uint64_t, const char*> cases[] = {
      {0, "0.00TB"},
      {4'999'999'999, "0.00TB"},
      {480'103'981'056, "0.48TB"},
      {3'840'755'982'336, "3.84TB"},
      {UINT64_MAX, "18446744.07TB"},
  };
  for (const auto& [bytes, text] : cases) {
    Image image = standard_image({});
    put_nvme_record(image, 192, bytes);
    EXPECT_EQ(parse(image), 0);
    EXPECT_STREQ(drive_.Capacity, text);
  }
}

TEST_F(DriveVpd, RecordsBeyondTheInputReadAsZero) {
  // The record at 248 has its capacity at 272: not there.
  Image image = standard_image({});
  image[5] = 31;
  image[248] = 0x0B;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Capacity, "0.00TB");
  image.resize(272 + 8, 0xFF);
  image.back() = 0;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Capacity, "72057.59TB");
}

TEST_F(DriveVpd, RecordsMayBeginInTheCommonHeader) {
  // The area is at 256, which is 0: the format version is no record.
  Image image = standard_image({});
  image[5] = 32;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.Capacity, "");
}

TEST_F(DriveVpd, InTheVendorLayoutFillsTheRecord) {
  Image image = vendor_image("S4YNNE0M800123      ", "SAMSUNG MZQL21T9HCJR-00A07              ");
  image[3] = 0x4D;
  image[4] = 0x14;
  EXPECT_EQ(parse(image), 0);
  EXPECT_STREQ(drive_.SerialNo, "S4YNNE0M800123");
  EXPECT_STREQ(drive_.FruNo, "S4YNNE0M800123");
  EXPECT_STREQ(drive_.Model, "SAMSUNG MZQL21T9HCJR-00A07");
  EXPECT_STREQ(drive_.PartNo, "MZQL21T9HCJR-00A07");
  EXPECT_STREQ(drive_.Manufacture, "Samsung");
  EXPECT_STREQ(drive_.Capacity, "");
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DriveVpd, InTheVendorLayoutTextsMayFillTheirFields) {
  Image image = vendor_image(std::string(20, 's'), std::string(40, 'm'));
  image[65] = 'x';
  EXPECT_EQ(parse(image), 0);
  EXPECT_EQ(drive_.SerialNo, std::string(20, 's'));
  EXPECT_EQ(drive_.FruNo, std::string(20, 's'));
  EXPECT_EQ(drive_.Model, std::string(40, 'm'));
  EXPECT_EQ(drive_.PartNo, std::string(32, 'm'));
}

TEST_F(DriveVpd, TheVendorLayoutNamesItsMakerByVendorId) {
  const std::tuple<int, int, const char*> cases[] = {
      {0x5F, 0x1C, "Memblaze"}, {0x4D, 0x14, "Samsung"}, {0x86, 0x80, "Intel"},   {0x3B, 0x1E, "Dapu"},
      {0x1C, 0x5F, "Unknown"},  {0x4D, 0x80, "Unknown"}, {0x00, 0x00, "Unknown"},
  };
  for (const auto& [low, high, maker] : cases) {
    Image image = vendor_image("s", "m");
    image[3] = static_cast<unsigned char>(low);
    image[4] = static_cast<unsigned char>(high);
    EXPECT_EQ(parse(image), 0);
    EXPECT_STREQ(drive_.Manufacture, maker);
  }
}

TEST_F(DriveVpd, TouchesOnlyItsFields) {
  for (const Image& image : {standard_image({}), vendor_image("s", "m")}) {
    EXPECT_EQ(parse(image), 0);
    _ZYMDB_AimDisk rest = drive_;
    for (auto [field, size] : {std::pair{rest.FruNo, sizeof rest.FruNo},
                               {rest.PartNo, sizeof rest.PartNo},
                               {rest.SerialNo, sizeof rest.SerialNo},
                               {rest.Model, sizeof rest.Model},
                               {rest.Manufacture, sizeof rest.Manufacture},
                               {rest.Capacity, sizeof rest.Capacity}})
      std::memset(field, 0, size);
    _ZYMDB_AimDisk empty{};
    empty.BayNo = 7;
    EXPECT_EQ(std::memcmp(&rest, &empty, sizeof rest), 0);
  }
}

TEST_F(DriveVpd, OfAnyBytesIsReadWithinItself) {
  // Every byte of the header and every length, with areas at the beginning and at the end.
  for (const unsigned char area : {uint8_t{1}, uint8_t{31}})
    for (const size_t size : {256u, 257u, 300u})
      for (int value = 0; value <= 0xFF; ++value)
        for (const size_t at : {0u, 4u, 5u, 8u, 11u, 251u, 255u}) {
          Image image(size, 0x55);
          image[0] = 1;
          image[4] = area;
          image[at] = static_cast<unsigned char>(value);
          const bool is_known = image[0] == 1 || image[0] == 2;
          EXPECT_EQ(parse(image), is_known && image[4] != 0 ? 0 : -1);
          EXPECT_LT(strnlen(drive_.Model, 65), 65u);
          EXPECT_LT(strnlen(drive_.PartNo, 33), 33u);
          EXPECT_LT(strnlen(drive_.FruNo, 33), 33u);
        }
}

TEST(RmInvalidChars, EndsATextAtWhatIsNotPartOfIt) {
  const std::pair<std::string, std::string> cases[] = {
      {"AB  C", "AB"},
      {" AB", " AB"},
      {"AB ", "AB"},
      {"A B", "A B"},
      {"AB \x7F", "AB"},
      {"AB \tC", "AB"},
      {"A\nB", "A"},
      {"A\x7F"
       "B",
       "A"},
      {" ", " "},
      {"  ", " "},
      {"\x1F", ""},
      {"A B C ", "A B C"},
      {"\x80\xFF", "\x80\xFF"},
      {"A \x80", "A \x80"},
      {std::string("A\0B", 3), "A"},
  };
  for (const auto& [text, cleaned] : cases) {
    std::string field = text;
    rm_invalid_chars(field.data(), static_cast<unsigned>(field.size()));
    EXPECT_STREQ(field.c_str(), cleaned.c_str()) << testing::PrintToString(text);
  }
}

TEST(RmInvalidChars, LooksAtTheFieldAlone) {
  char text[] = "AB C";
  rm_invalid_chars(text, 3);  // the space is the last byte
  EXPECT_STREQ(text, "AB");
  char full[] = "ABC\x01";
  rm_invalid_chars(full, 3);
  EXPECT_STREQ(full, "ABC\x01");
  rm_invalid_chars(full, 0);
  rm_invalid_chars(nullptr, 0);
  EXPECT_STREQ(full, "ABC\x01");
}

}  // namespace
