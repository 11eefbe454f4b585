// Lists of drives: which builder is asked, in which order and with which filter.
#include <gmock/gmock.h>
#include <malloc.h>

#include <cstring>

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

class DiskLists : public scripted::ClientTest {
 protected:
  DiskLists() { system_log().clear(); }
  ~DiskLists() override { std::free(list_.disks); }

  // What a builder's query finds; its sensors come before.
  void builder(std::vector<Row> rows) { builder(Answer::of(std::move(rows))); }
  void builder(Answer drives) {
    answer(std::vector<Row>{});
    answer(std::move(drives));
  }
  // A SATA drive of the drive table, and an NVMe drive as the management interface reports it, in a slot.
  static Row stored(int bay, int key = 0) { return Row(key, 0, 0, bay, 1, "place", "1", "1"); }
  static Row reported(int bay) { return Row(1, bay, 0, 0); }
  void controller_type(int type) { answer({Row("n", std::string{'\4', static_cast<char>(type)})}); }

  template <class Operation>
  int list(Operation operation) {
    std::free(list_.disks);
    list_ = {};
    return operation(&list_);
  }
  // "AimDisks where …" and "NVMeDrives where …".
  static std::vector<std::string> builders() {
    std::vector<std::string> queries;
    for (const std::string& statement : client().statements)
      for (const std::string table : {"AimDisks", "NVMeDrives"})
        if (statement.starts_with("query " + table))
          queries.push_back(table + statement.substr(statement.find("] where ") + 1));
    client().statements.clear();
    return queries;
  }
  std::vector<int> bays() const {
    std::vector<int> bays;
    for (uint32_t i = 0; i < list_.count; ++i) bays.push_back(list_.disks[i].BayNo);
    return bays;
  }

  // Answers for the merged list, with these drives in its four parts.
  void merged(const std::vector<Row>& m2, const std::vector<Row>& in_7mm_bays, const std::vector<Row>& u2,
              const std::vector<Row>& sata) {
    builder(std::vector<Row>{});
    builder(m2);
    controller_type(0);
    builder(in_7mm_bays);
    answer(std::vector<Row>{});  // bays
    builder(u2);
    builder(std::vector<Row>{});
    for (size_t i = 0; i < u2.size(); ++i) answer(std::vector<Row>{});  // functions
    builder(sata);
  }

  _ZYMDB_AimDisk_List list_{};
};

TEST_F(DiskLists, OfPresentDrivesComeFromTheTable) {
  builder({stored(1), stored(2)});
  EXPECT_EQ(list(zymdb_get_disk_list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(bays(), ElementsAre(1, 2));
  builder({stored(3)});
  EXPECT_EQ(list(zymdb_get_onboard_sata_disk_list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(bays(), ElementsAre(3));
  EXPECT_THAT(builders(),
              ElementsAre("AimDisks where Presence=1", "AimDisks where Presence=1 AND DriveTypeId=1"));
}

TEST_F(DiskLists, OfM2DrivesAskTheManagementInterfaceFirst) {
  builder({reported(1)});
  EXPECT_EQ(list(zymdb_get_m2_disk_list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(bays(), ElementsAre(1));
  EXPECT_THAT(builders(), ElementsAre("NVMeDrives where Location=3"));
}

TEST_F(DiskLists, OfM2DrivesFallBackToTheTable) {
  for (const Answer& each : {Answer{}, Answer::failing(kFailure)}) {
    builder(each);
    builder({stored(2)});
    EXPECT_EQ(list(zymdb_get_m2_disk_list), ZYM_DB_STATUS_OK);
    EXPECT_THAT(bays(), ElementsAre(2));
    EXPECT_THAT(builders(),
                ElementsAre("NVMeDrives where Location=3", "AimDisks where DriveTypeId=5 OR DriveTypeId=4"));
  }
  builder(Answer::failing(kFailure));
  builder(Answer::failing(78));
  EXPECT_EQ(list(zymdb_get_m2_disk_list), 78);
}

TEST_F(DiskLists, Of7mmDrivesOnANvmeControllerAskTheManagementInterfaceFirst) {
  controller_type(4);
  builder({reported(1)});
  EXPECT_EQ(list(zymdb_get_7mm_disk_list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.front(), testing::EndsWith("propName like \"%mv/1/type\""));
  EXPECT_THAT(builders(), ElementsAre("NVMeDrives where Location=4"));
  for (const Answer& each : {Answer{}, Answer::failing(kFailure)}) {
    controller_type(4);
    builder(each);
    builder({stored(2)});
    EXPECT_EQ(list(zymdb_get_7mm_disk_list), ZYM_DB_STATUS_OK);
    EXPECT_THAT(bays(), ElementsAre(2));
    EXPECT_THAT(builders(),
                ElementsAre("NVMeDrives where Location=4", "AimDisks where DriveTypeId=7 AND Presence=1"));
  }
  EXPECT_THAT(system_log(), testing::Contains("14: zymdb_get_7mm_disk_list: "
                                              "zymdb_get_nvme_disk_list_from_mi_filter() failed, ret = 6\n\n")
                                .Times(1));
}

TEST_F(DiskLists, Of7mmDrivesOnOtherControllersComeFromTheTable) {
  const std::pair<int, const char*> cases[] = {
      {2, "AimDisks where DriveTypeId=6 AND Presence=1"},
      {0, "AimDisks where LocationId=4"},
      {1, "AimDisks where LocationId=4"},
      {3, "AimDisks where LocationId=4"},
      {255, "AimDisks where LocationId=4"},
  };
  for (const auto& [type, query] : cases) {
    controller_type(type);
    builder({stored(1)});
    EXPECT_EQ(list(zymdb_get_7mm_disk_list), ZYM_DB_STATUS_OK);
    EXPECT_THAT(builders(), ElementsAre(query));
  }
}

TEST_F(DiskLists, Of7mmDrivesNeedTheControllersType) {
  answer(Answer::failing(kFailure));
  EXPECT_EQ(list(zymdb_get_7mm_disk_list), kFailure);
  client().has_properties = false;
  EXPECT_EQ(list(zymdb_get_7mm_disk_list), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(builders(), IsEmpty());
}

TEST_F(DiskLists, OfAControllerAskTheManagementInterfaceFirst) {
  const auto of_controller = [](int kind) {
    return [kind](_ZYMDB_AimDisk_List* out) { return zymdb_get_ctrl_aim_disk_list(12, out, kind); };
  };
  builder({reported(1)});
  EXPECT_EQ(list(of_controller(3)), ZYM_DB_STATUS_OK);
  EXPECT_THAT(builders(), ElementsAre("NVMeDrives where CtrlSlot=12"));
  const std::pair<int, const char*> cases[] = {
      {3, "AimDisks where SlotNo=12 and ( LocationId=3 )"},
      {4, "AimDisks where SlotNo=12 and ( LocationId=4 )"},
      {5, "AimDisks where SlotNo=12 and ( LocationId=3 or LocationId=4 )"},
      {9, "AimDisks where SlotNo=12 and ( LocationId=3 or LocationId=4 )"},
      {-1, "AimDisks where SlotNo=12 and ( LocationId=-1 )"},
  };
  for (const auto& [kind, query] : cases) {
    builder(std::vector<Row>{});
    builder({stored(2)});
    EXPECT_EQ(list(of_controller(kind)), ZYM_DB_STATUS_OK);
    EXPECT_THAT(bays(), ElementsAre(2));
    EXPECT_THAT(builders(), ElementsAre("NVMeDrives where CtrlSlot=12", query));
  }
}

// Of arrays so large that each is mapped on its own.
size_t mapped_memory() {
  return mallinfo2().hblkhd;
}

TEST_F(DiskLists, ThatFallBackReleaseTheArrayOfAFirstListWhoseRowsNeverCame) {
  constexpr unsigned kCounted = 200'000;
  const auto of_controller = [](_ZYMDB_AimDisk_List* out) { return zymdb_get_ctrl_aim_disk_list(1, out, 3); };
  const std::function<int(_ZYMDB_AimDisk_List*)> operations[] = {zymdb_get_m2_disk_list,
                                                                 zymdb_get_7mm_disk_list, of_controller};
  const size_t before = mapped_memory();
  for (size_t i = 0; i < std::size(operations); ++i) {
    if (i == 1) controller_type(4);
    builder(Answer{.row_count = kCounted});
    builder({stored(2)});
    EXPECT_EQ(list(operations[i]), ZYM_DB_STATUS_OK);
    EXPECT_THAT(bays(), ElementsAre(2));
    EXPECT_EQ(mapped_memory(), before) << i;
  }
}

TEST_F(DiskLists, ThatFallBackWithoutADatabaseAreEmpty) {
  answer(std::vector<Row>{});
  answer(Answer{.row_count = 3});
  client().failures = {{{"handle", 1}, 1}};
  EXPECT_EQ(list(zymdb_get_m2_disk_list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.disks, nullptr);
}

TEST_F(DiskLists, WithoutAListOrADatabaseThereIsNone) {
  controller_type(4);
  EXPECT_EQ(zymdb_get_disk_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_onboard_sata_disk_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_m2_disk_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_7mm_disk_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_ctrl_aim_disk_list(1, nullptr, 3), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_disk_list_funkey(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  zymdb_get_merged_disk_list(nullptr);
  client().has_database = false;
  EXPECT_EQ(list(zymdb_get_disk_list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(list(zymdb_get_onboard_sata_disk_list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(list(zymdb_get_m2_disk_list), ZYM_DB_STATUS_NO_DB);
}

TEST_F(DiskLists, MergedHoldEachPartInItsOrder) {
  merged({stored(1), stored(2)}, {stored(3)}, {stored(4)}, {stored(5), stored(1)});
  zymdb_get_merged_disk_list(&list_);
  EXPECT_THAT(bays(), ElementsAre(1, 2, 3, 4, 5, 1));
  EXPECT_TRUE(client().answers.empty());
}

TEST_F(DiskLists, MergedWithOnlySataDrivesHoldThemAll) {
  merged({}, {}, {}, {stored(7), stored(6), stored(5)});
  zymdb_get_merged_disk_list(&list_);
  EXPECT_THAT(bays(), ElementsAre(7, 6, 5));
}

TEST_F(DiskLists, MergedWithoutDrivesAreEmpty) {
  merged({}, {}, {}, {});
  list_ = {5, nullptr};
  zymdb_get_merged_disk_list(&list_);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.disks, nullptr);
}

TEST_F(DiskLists, MergedDoWithoutThePartsThatFail) {
  builder(std::vector<Row>{});
  builder(Answer::failing(71));
  answer(Answer::failing(72));  // the controller's type
  answer(std::vector<Row>{});
  builder(std::vector<Row>{});
  builder(std::vector<Row>{});
  builder({stored(5)});
  zymdb_get_merged_disk_list(&list_);
  EXPECT_THAT(bays(), ElementsAre(5));
  const std::string name = "14: zymdb_get_merged_disk_list: ";
  EXPECT_THAT(system_log(), testing::IsSupersetOf({name + "zymdb_get_m2_disk_list failed, rc = 71\n\n",
                                                   name + "zymdb_get_7mm_disk_list failed, rc = 72\n\n"}));

  client().has_database = false;
  client().has_properties = false;
  system_log().clear();
  std::free(std::exchange(list_.disks, nullptr));
  zymdb_get_merged_disk_list(&list_);
  EXPECT_EQ(list_.count, 0u);
  const std::string u2 = "14: zymdb_get_u2_aic_nvme_disk_list: ";
  EXPECT_THAT(system_log(), ElementsAre(name + "zymdb_get_m2_disk_list failed, rc = 6\n\n",
                                        name + "zymdb_get_7mm_disk_list failed, rc = 6\n\n",
                                        u2 + "get_u2_nvme_drive_bays() failed, ret = 6\n\n",
                                        u2 + "zymdb_get_disk_list_with_filter() failed, ret = 6\n\n",
                                        u2 + "zymdb_get_nvme_disk_list_from_mi_filter() failed, ret = 6\n\n",
                                        name + "zymdb_get_onboard_sata_disk_list failed, rc = 6\n\n"));
}

TEST_F(DiskLists, OfAFunctionKeepTheMergedOrder) {
  merged({stored(1, 100), stored(2, 200)}, {stored(3, 100)}, {}, {stored(4, 100), stored(5, 300)});
  EXPECT_EQ(zymdb_get_disk_list_funkey(100, &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(bays(), ElementsAre(1, 3, 4));
}

TEST_F(DiskLists, OfAFunctionWithoutDrivesAreNotFound) {
  merged({stored(1, 100)}, {}, {}, {});
  list_ = {5, nullptr};
  EXPECT_EQ(zymdb_get_disk_list_funkey(101, &list_), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(list_.count, 0u);
  client().has_database = false;
  client().has_properties = false;
  EXPECT_EQ(zymdb_get_disk_list_funkey(100, &list_), ZYM_DB_STATUS_NOT_FOUND);
}

TEST_F(DiskLists, OfAFunctionHoldTheFirst64) {
  std::vector<Row> drives;
  for (int bay = 0; bay < 70; ++bay) drives.push_back(stored(bay, bay == 3 ? 200 : 100));
  merged({}, {}, {}, drives);
  EXPECT_EQ(zymdb_get_disk_list_funkey(100, &list_), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 64u);
  EXPECT_EQ(list_.disks[2].BayNo, 2);
  EXPECT_EQ(list_.disks[3].BayNo, 4);
  EXPECT_EQ(list_.disks[63].BayNo, 64);
}

TEST_F(DiskLists, TheOnlyNvmeDriveOfAPlaceIsRead) {
  const std::pair<int, const char*> cases[] = {{1, "Slot 4"}, {2, "Bay 4"}};
  for (const auto& [kind, text] : cases) {
    _ZYMDB_AimDisk drive{};
    builder({stored(4, 99)});
    EXPECT_EQ(zymdb_get_nvme_aim_disk(kind, 4, &drive), ZYM_DB_STATUS_OK);
    EXPECT_EQ(drive.PCIFuncKey, 99u);
    EXPECT_THAT(builders(),
                ElementsAre(std::string("AimDisks where Location=\"") + text + "\" AND DriveTypeId=3"));
  }
}

TEST_F(DiskLists, APlaceWithTwoNvmeDrivesOrNoneIsNotRead) {
  const std::pair<Answer, int> cases[] = {
      {Answer::of({stored(4, 98), stored(4, 99)}), ZYM_DB_STATUS_NO_DB},
      {Answer{}, ZYM_DB_STATUS_INVALID_PARAM},
      {Answer::failing(kFailure), ZYM_DB_STATUS_INVALID_PARAM},
  };
  _ZYMDB_AimDisk drive{};
  drive.PCIFuncKey = 5;
  for (const auto& [each, status] : cases) {
    builder(each);
    EXPECT_EQ(zymdb_get_nvme_aim_disk(2, 4, &drive), status);
    EXPECT_EQ(drive.PCIFuncKey, 5u);
  }
  EXPECT_THAT(
      system_log(),
      testing::Contains("14: zymdb_get_nvme_aim_disk, Find 2 NVMe drives at location 2 Slot 4\n\n").Times(1));
}

TEST_F(DiskLists, AnNvmeDriveNeedsAPlaceAndARecord) {
  _ZYMDB_AimDisk drive{};
  EXPECT_EQ(zymdb_get_nvme_aim_disk(1, 4, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  for (const int kind : {0, 3, 4, -1})
    EXPECT_EQ(zymdb_get_nvme_aim_disk(kind, 4, &drive), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_nvme_aim_disk(1, 4, &drive), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().statements, IsEmpty());
}

}  // namespace
