// Data processing units on the embedded database.
#include <cstring>

#include "support/inventory.h"
#include "zymdb_firmware.h"

namespace {

class Dpu : public InventoryTest {
 protected:
  // The card in slot 3: two functions, the first of them with the card's hardware id.
  static void given_card() {
    for (const int function : {0x300, 0x301})
      given("PCIs", {{"Location", 1},
                     {"SlotNo", 3},
                     {"DeviceId", 0xA2D6},
                     {"FunKey", function},
                     {"HardwareId", function},
                     {"HardwareTypeId", 3}});
  }
  static void given_pldm_row(int type, const char* software_id) {
    given("PldmDeviceFirmware", {{"DeviceName", "card"},
                                 {"DeviceType", type},
                                 {"Location", 1},
                                 {"SlotNo", 3},
                                 {"DeviceId", 0xA2D6},
                                 {"SoftwareID", software_id},
                                 {"VersionString", "before"}});
  }
  static std::string pldm_rows() {
    return rows("PldmDeviceFirmware", {"DeviceType", "SoftwareID", "VersionString"});
  }
  static std::string version_of_slot(unsigned slot) {
    char version[33] = "";
    const int status = zymdb_get_dpu_uefi_version(slot, version, sizeof version);
    return status == ZYM_DB_STATUS_OK ? version : "status " + std::to_string(status);
  }
  static uint32_t append(int slot, const char* message) {
    _ZYMDB_DPU_Event event{0, 1700000000, "UEFI", ""};
    std::strcpy(event.Message, message);
    uint32_t next_id = 0;
    EXPECT_EQ(dpu_insert_log(slot, &event, &next_id), ZYM_DB_STATUS_OK);
    return next_id;
  }
  static std::vector<std::string> messages(int slot) {
    _ZYMDB_DPU_Event_List list{};
    EXPECT_EQ(dpu_get_log_by_slot(slot, &list), ZYM_DB_STATUS_OK);
    std::vector<std::string> messages;
    for (uint32_t i = 0; i < list.Count; ++i) messages.emplace_back(list.Events[i].Message);
    std::free(list.Events);
    return messages;
  }
};

TEST_F(Dpu, AVersionThatWasRecordedIsReadBack) {
  given_card();
  EXPECT_EQ(version_of_slot(3), "status 11");
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(version_of_slot(3), "4.2");
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.3"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(version_of_slot(3), "4.3");
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "HardwareTypeId", "FirmwareName", "Manufacture",
                               "Classification", "SoftwareID", "VersionString"}),
            "768|3|BlueField UEFI|Mellanox Technologies|32774|15B3A2D4|4.3\n"
            "769|3|BlueField UEFI|Mellanox Technologies|32774|15B3A2D4|4.3\n");
  EXPECT_EQ(pldm_rows(), "");
}

TEST_F(Dpu, AVersionOf40CharactersIsCutTo31) {
  given_card();
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "0123456789012345678901234567890123456789"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(version_of_slot(3), "0123456789012345678901234567890");
}

TEST_F(Dpu, ASmallBufferCutsTheVersion) {
  given_card();
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2.1"), ZYM_DB_STATUS_OK);
  char version[6] = "xxxxx";
  EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, 5), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(version, "4.2");
  for (const unsigned size : {1u, 0u}) EXPECT_NE(zymdb_get_dpu_uefi_version(3, version, size), 0);
  EXPECT_STREQ(version, "4.2");
}

TEST_F(Dpu, ASlotWithoutADpuHasNoVersion) {
  given("PCIs", {{"Location", 1}, {"SlotNo", 4}, {"DeviceId", 0x1019}, {"FunKey", 5}, {"HardwareId", 1024}});
  for (const unsigned slot : {4u, 5u}) {
    EXPECT_EQ(zymdb_update_dpu_uefi_version(slot, "4.2"), ZYM_DB_STATUS_NOT_FOUND);
    EXPECT_EQ(version_of_slot(slot), "status 11");
  }
  EXPECT_EQ(rows("Firmwares", {"_id"}), "");
}

TEST_F(Dpu, TheVersionReachesItsPldmRow) {
  given_card();
  given_pldm_row(15, "OLDSOFT");
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(pldm_rows(), "15|15B3A2D4|4.2\n");
}

TEST_F(Dpu, AnOnlyPldmRowOfAnotherTypeIsJoinedByTheUefiRow) {
  given_card();
  given_pldm_row(7, "OLDSOFT");
  for (const char* version : {"4.2", "4.3"}) {
    EXPECT_EQ(zymdb_update_dpu_uefi_version(3, version), ZYM_DB_STATUS_OK);
    // The row's key and software id are what they were: its version is left as it is.
    EXPECT_EQ(pldm_rows(), "7|OLDSOFT|before\n15|15B3A2D4|4.2\n");
  }
}

TEST_F(Dpu, SeveralPldmRowsOfOtherTypesAreAWrongArgumentAfterTheComponentsWereWritten) {
  given_card();
  given_pldm_row(7, "A");
  given_pldm_row(8, "B");
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(pldm_rows(), "7|A|before\n8|B|before\n");
  EXPECT_EQ(version_of_slot(3), "4.2");
}

TEST_F(Dpu, ItsLogTakesItsFirstEvent) {
  EXPECT_EQ(messages(3).size(), 0u);
  EXPECT_EQ(append(3, "first"), 1u);
  EXPECT_EQ(messages(3), std::vector<std::string>{"first"});
  EXPECT_EQ(append(3, "second"), 2u);
  _ZYMDB_DPU_Event_List list{};
  EXPECT_EQ(dpu_get_log_by_slot(3, &list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.Count, 2u);
  EXPECT_EQ(list.Events[1].Id, 2u);
  EXPECT_EQ(list.Events[1].Timestamp, 1700000000u);
  EXPECT_STREQ(list.Events[1].GenID, "UEFI");
  EXPECT_STREQ(list.Events[1].Message, "second");
  std::free(list.Events);
}

TEST_F(Dpu, The257thEventTakesThePlaceOfTheOldest) {
  for (int i = 1; i <= 256; ++i) append(3, std::to_string(i).c_str());
  EXPECT_EQ(messages(3).size(), 256u);
  EXPECT_EQ(messages(3).front(), "1");
  EXPECT_EQ(append(3, "257"), 257u);
  EXPECT_EQ(messages(3).size(), 256u);
  EXPECT_EQ(messages(3).front(), "2");
  EXPECT_EQ(messages(3).back(), "257");
  append(3, "258");
  EXPECT_EQ(messages(3).front(), "3");
  EXPECT_EQ(rows("DPUEvents", {"_id"}, "_id<4"), "3\n");
}

TEST_F(Dpu, TheLogsOfTwoSlotsAreTheirOwn) {
  for (int i = 1; i <= 256; ++i) {
    append(3, "three");
    append(4, "four");
  }
  append(3, "new");
  EXPECT_EQ(messages(3).size(), 256u);
  EXPECT_EQ(messages(3).back(), "new");
  EXPECT_EQ(messages(4), std::vector<std::string>(256, "four"));
  EXPECT_EQ(rows("DPUEvents", {"_id", "Slot"}, "_id<3"), "2|4\n");
}

TEST_F(Dpu, ClearingALogLeavesTheOthersAndIdsDoNotComeBack) {
  append(3, "three");
  append(4, "four");
  EXPECT_EQ(dpu_clear_logs_by_slot(3), ZYM_DB_STATUS_OK);
  EXPECT_EQ(messages(3).size(), 0u);
  EXPECT_EQ(messages(4).size(), 1u);
  EXPECT_EQ(append(3, "again"), 1u);  // as the empty log counts
  EXPECT_EQ(rows("DPUEvents", {"_id"}, "Slot=3"), "3\n");
  EXPECT_EQ(dpu_clear_logs_by_slot(99), ZYM_DB_STATUS_OK);
}

TEST_F(Dpu, AnEventWithANullColumnLeavesAZeroedEntryAtTheEnd) {
  given("DPUEvents", {{"Slot", 3}, {"GenID", nullptr}, {"Message", "broken"}, {"Timestamp", 1}});
  append(3, "whole");
  EXPECT_EQ(messages(3), (std::vector<std::string>{"whole", ""}));
}

TEST_F(Dpu, NeedsADatabase) {
  lose_database();
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(version_of_slot(3), "status 6");
  const _ZYMDB_DPU_Event event{};
  EXPECT_EQ(dpu_insert_log(3, &event, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(dpu_clear_logs_by_slot(3), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
