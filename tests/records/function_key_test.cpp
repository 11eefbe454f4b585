// How people write functions: one spelling of addresses and keys for every command.
#include <gtest/gtest.h>

#include "common/pci_address.h"

namespace zymdb {
namespace {

struct Spelling {
  const char* text;
  uint32_t key;
};

const Spelling kAccepted[] = {
    {"0000:3b:00.0", 0x003b0000}, {"3b:00.0", 0x003b0000},
    {"3B:1F.7", 0x003b1f07},      {"0:3b:0.1", 0x003b0001},
    {"ff:1f.7", 0x00ff1f07},      {"00ff:00:00.0", 0xff000000},
    {"0080:01:02.3", 0x80010203}, {"0", 0},
    {"3866624", 0x003b0000},      {"0x3b0000", 0x003b0000},
    {"0X3B0000", 0x003b0000},     {"0x003b0000", 0x003b0000},
    {"2147483648", 0x80000000},   {"4278190080", 0xff000000},
    {"0x80000000", 0x80000000},   {"4294967295", 0xffffffff},
    {"0xffffffff", 0xffffffff},
};

const char* const kRefused[] = {
    "",
    " ",
    "4b0000",
    "3b",
    "3b:00",
    "0000:3b:00",
    "3b-00.0",
    "3b:00.8",
    "3b:20.0",
    "100:00.0",
    "0100:3b:00.0",
    "10000:3b:00.0",
    ":00.0",
    "3b:.0",
    "3b:00.",
    ".",
    ":",
    "a:b:c:d.0",
    "zz:00.0",
    "3b:00.0 ",
    " 3b:00.0",
    "3b:00.0\n",
    "3b:00.-0",
    "0x3b:00.0",
    "0x",
    "0X",
    "x3b",
    "0x0x1",
    "0x-1",
    "0x 1",
    "0x100000000",
    "4294967296",
    "-1",
    "+1",
    " 1",
    "1 ",
    "1,2",
    "1e3",
    "99999999999999999999",
    "eth0",
    "0b1",
};

TEST(FunctionKey, IsReadFromAnAddressOrFromItself) {
  for (const auto& [text, key] : kAccepted) {
    const auto parsed = FunctionKey::parse(text);
    ASSERT_TRUE(parsed.has_value()) << text;
    EXPECT_EQ(parsed->value, key) << text;
  }
}

TEST(FunctionKey, IsNotReadFromAnythingElse) {
  for (const char* text : kRefused) EXPECT_FALSE(FunctionKey::parse(text).has_value()) << "'" << text << "'";
}

TEST(FunctionKey, IsWrittenAsItsAddressAndReadBack) {
  const std::pair<uint32_t, const char*> keys[] = {{0, "0000:00:00.0"},
                                                   {0x003b1f07, "0000:3b:1f.7"},
                                                   {0x80010203, "0080:01:02.3"},
                                                   {0xff000000, "00ff:00:00.0"}};
  for (const auto& [key, text] : keys) {
    EXPECT_EQ(FunctionKey(key).text(), text);
    EXPECT_EQ(FunctionKey::parse(text), FunctionKey(key));
  }
}

TEST(FunctionKey, HasEightBitsForEachPart) {
  struct Parts {
    uint8_t SegNo = 0x81, BusNo = 0x3b, DeviceNo = 0x1f, FunctionNo = 7;
  };
  EXPECT_EQ(FunctionKey::of(Parts()).value, 0x813b1f07u);
}

}  // namespace
}  // namespace zymdb
