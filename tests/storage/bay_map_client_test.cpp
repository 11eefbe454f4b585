// The backplanes' bays: a process reads them once, when the first drive in a bay asks.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_storage.h"

using scripted::client;
using scripted::Row;

namespace {

class BayMap : public scripted::ClientTest {
 protected:
  unsigned form_factor(int kind) {
    answer(std::vector<Row>{});
    answer({Row(0, 0, 0, 4, kind, "place", "1", "1")});
    _ZYMDB_AimDisk_List list{};
    EXPECT_EQ(zymdb_get_disk_list_with_filter(&list, "1"), ZYM_DB_STATUS_OK);
    const unsigned found = list.count == 1 ? list.disks[0].FormFactor : 0;
    std::free(list.disks);
    return found;
  }
  static std::vector<std::string> reads() {
    std::vector<std::string> reads;
    for (const std::string& call : client().calls)
      if (call.starts_with("propdb_")) reads.push_back(call);
    return reads;
  }
};

TEST_F(BayMap, IsReadOnceByTheFirstDriveInABay) {
  const std::string root = "/dc/votc/dm/planar/0/bp/";
  client().properties[root + "2/bay_no_e"] = 7;
  client().properties[root + "2/type"] = 1;
  client().properties[root + "3/bay_no_e"] = 15;
  EXPECT_EQ(form_factor(1), 0x20u);
  EXPECT_TRUE(reads().empty());

  EXPECT_EQ(form_factor(2), 0x10u);
  std::vector<std::string> expected;
  for (int backplane = 1; backplane <= 8; ++backplane) {
    expected.push_back("propdb_get_dword " + root + std::to_string(backplane) + "/bay_no_e");
    if (backplane == 2 || backplane == 3)
      expected.push_back("propdb_get_byte " + root + std::to_string(backplane) + "/type");
  }
  EXPECT_EQ(reads(), expected);

  EXPECT_EQ(form_factor(2), 0x10u);
  EXPECT_EQ(reads(), expected);
}

}  // namespace
