// NVMe drives in U.2 bays and on add-in cards: what is asked, and how two accounts become one list.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "support/system_log.h"
#include "zymdb_storage.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;
constexpr int kSlot = 1;
constexpr int kBay = 2;
constexpr char kTableWithoutBays[] = "CtrlType=0 AND DriveTypeId=3 AND ((LocationId=1) OR (LocationId=2))";

Row bay(int number, int type) {
  return Row("/dc/votc/dm/drive/hdd/" + std::to_string(number) + "/type",
             std::string{'\4', static_cast<char>(type)});
}

class U2Drives : public scripted::ClientTest {
 protected:
  U2Drives() { system_log().clear(); }
  ~U2Drives() override { std::free(list_.disks); }

  static Row stored(int kind, int number) { return Row(100, 0, 0, number, kind, "place", "1", "1"); }
  static Row reported(int kind, int number) { return Row(kind, number, 0, 0); }

  void sources(Answer bays, Answer table, Answer interface) {
    answer(std::move(bays));
    answer(std::vector<Row>{});
    answer(std::move(table));
    answer(std::vector<Row>{});
    answer(std::move(interface));
  }
  void functions(size_t count) {
    for (size_t i = 0; i < count; ++i) answer(std::vector<Row>{});
  }
  int list() {
    std::free(list_.disks);
    list_ = {5, nullptr};
    return zymdb_get_u2_aic_nvme_disk_list(&list_);
  }
  // "Slot 4" for a drive that the management interface reports, "place 4" for one of the table.
  std::vector<std::string> drives() const {
    std::vector<std::string> drives;
    for (uint32_t i = 0; i < list_.count; ++i) {
      const _ZYMDB_AimDisk& drive = list_.disks[i];
      drives.push_back(drive.Presence != 0 ? drive.Location : "stored " + std::to_string(drive.BayNo));
    }
    return drives;
  }
  static std::string filter_of(const char* table) {
    for (const std::string& statement : client().statements)
      if (statement.starts_with(std::string("query ") + table))
        return statement.substr(statement.find("] where ") + 8);
    return "none";
  }

  _ZYMDB_AimDisk_List list_{};
};

TEST_F(U2Drives, AreLookedForInNvmeBaysAndSlots) {
  sources(Answer::of({bay(3, 8), bay(4, 3), bay(5, 2), bay(12, 3), bay(65, 3)}), {}, {});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filter_of("propertiesDCTbl"), "propName like \"%hdd%type\"");
  EXPECT_EQ(filter_of("AimDisks"),
            "CtrlType=0 AND DriveTypeId=3 AND ((LocationId=1) OR (LocationId=2 AND BayNo IN (2,3,11)))");
  EXPECT_EQ(filter_of("NVMeDrives"), "CtrlType=0 AND (Location=1 OR Location=2)");
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.disks, nullptr);
}

TEST_F(U2Drives, InAllBaysFitTheFilter) {
  std::vector<Row> bays;
  std::string numbers;
  for (int number = 1; number <= 64; ++number) {
    bays.push_back(bay(number, 3));
    numbers += (number == 1 ? "" : ",") + std::to_string(number - 1);
  }
  sources(Answer::of(bays), {}, {});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(
      filter_of("AimDisks"),
      "CtrlType=0 AND DriveTypeId=3 AND ((LocationId=1) OR (LocationId=2 AND BayNo IN (" + numbers + ")))");
}

TEST_F(U2Drives, WithoutKnownBaysAreLookedForInAll) {
  for (const Answer& bays :
       {Answer{}, Answer::failing(kFailure), Answer{.rows = {bay(3, 3)}, .end = kFailure}}) {
    client().statements.clear();
    sources(bays, {}, {});
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(filter_of("AimDisks"), kTableWithoutBays);
  }
  EXPECT_THAT(system_log(),
              ElementsAre("14: zymdb_get_u2_aic_nvme_disk_list: get_u2_nvme_drive_bays() failed, "
                          "ret = 77\n\n",
                          "14: zymdb_get_u2_aic_nvme_disk_list: get_u2_nvme_drive_bays() failed, "
                          "ret = 77\n\n"));
}

TEST_F(U2Drives, OnACardThatBothKnowAreListedOnce) {
  sources({}, Answer::of({stored(kSlot, 4), stored(kBay, 4), stored(kSlot, 6)}),
          Answer::of({reported(kBay, 6), reported(kSlot, 4), reported(kSlot, 5)}));
  functions(5);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(drives(), ElementsAre("Bay 6", "Slot 4", "Slot 5", "stored 4", "stored 6"));
  EXPECT_EQ(list_.disks[3].LocationId, kBay);
  EXPECT_TRUE(client().answers.empty());
}

TEST_F(U2Drives, InABayThatBothKnowAreListedTwice) {
  sources({}, Answer::of({stored(kBay, 4)}), Answer::of({reported(kBay, 4)}));
  functions(2);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(drives(), ElementsAre("Bay 4", "stored 4"));
}

TEST_F(U2Drives, OnCardsAreComparedInEightBits) {
  sources({}, Answer::of({stored(kSlot, 4)}), Answer::of({reported(kSlot, 260)}));
  functions(1);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(drives(), ElementsAre("Slot 260"));
}

TEST_F(U2Drives, TakeTheKeyOfTheirControllerWhereThereIsOne) {
  sources({}, Answer::of({stored(kBay, 4), stored(kSlot, 9)}), Answer::of({reported(kSlot, 5)}));
  answer({Row(0, 3, 0, 1)});
  answer(std::vector<Row>{});
  answer({Row(0, 4, 0, 0)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 3u);
  EXPECT_EQ(list_.disks[0].PCIFuncKey, 0x00030001u);
  EXPECT_EQ(list_.disks[1].PCIFuncKey, 100u);
  EXPECT_EQ(list_.disks[2].PCIFuncKey, 0x00040000u);
  std::vector<std::string> lookups;
  for (const std::string& statement : client().statements)
    if (statement.starts_with("query PCIs"))
      lookups.push_back(statement.substr(statement.find("] where ") + 8));
  EXPECT_THAT(lookups, ElementsAre("Location=2 AND SlotNo=5 AND ClsCode=67586",
                                   "Location=2 AND SlotNo=4 AND ClsCode=67586",
                                   "Location=2 AND SlotNo=9 AND ClsCode=67586"));
}

TEST_F(U2Drives, OfOneSourceAreListedWhenTheOtherFails) {
  sources({}, Answer::failing(kFailure), Answer::of({reported(kSlot, 5)}));
  functions(1);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(drives(), ElementsAre("Slot 5"));
  sources({}, Answer::of({stored(kSlot, 6)}), Answer::failing(kFailure));
  functions(1);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(drives(), ElementsAre("stored 6"));
  const std::string name = "14: zymdb_get_u2_aic_nvme_disk_list: ";
  EXPECT_THAT(system_log(), testing::IsSupersetOf(
                                {name + "zymdb_get_disk_list_with_filter() failed, ret = 77\n\n",
                                 name + "zymdb_get_nvme_disk_list_from_mi_filter() failed, ret = 6\n\n"}));
}

TEST_F(U2Drives, WithoutADatabaseAreNone) {
  client().has_database = false;
  client().has_properties = false;
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.disks, nullptr);
  EXPECT_EQ(zymdb_get_u2_aic_nvme_disk_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

}  // namespace
