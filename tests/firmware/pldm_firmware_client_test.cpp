// PLDM components: exact statements and log lines, and the answers to every failure.
#include <gmock/gmock.h>

#include <climits>
#include <cstring>
#include <map>

#include "support/scripted_client.h"
#include "support/system_log.h"
#include "zymdb_firmware.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr int kFailure = 77;
const std::string kQuery =
    "query PldmDeviceFirmware [DeviceName,DeviceType,PCIKey,PCIFuncKey,Location,SlotNo,Manufacture,"
    "SoftwareID,VersionString,PendingVersionString,PkgVersionString,ReleaseDate,PendingReleaseDate,"
    "UpdateSupport,UpdateMethod,UpdateAuxInfo,Updated,UpdateErrCode,UpdateErrString,Status] where ";

// A row of a device; what tells rows apart in these tests is the name and whether it can be updated.
Row row(const char* name, int update_support = 0) {
  return Row(name, 7, 0x10002, 0x20003, 0x101, 0x10003, "maker", "123456789", "1", "2", "3", "2024-01-01",
             "2024-02-02", update_support, 0x10004, 0x105, 0x106, 0x107, "no error", 2);
}

struct List {
  const char* name;
  int (*list)(_ZYMDB_PLDM_Firmware_List*);
  std::string filter;
};

const List kLists[] = {
    {"all", zymdb_get_pldm_firmware_list, "NULL"},
    {"pending", zymdb_get_pldm_firmware_pending_list, "Status=2"},
    {"updated", zymdb_get_pldm_firmware_updated_list, "Updated!=0"},
    {"failed", zymdb_get_pldm_firmware_update_failure_list, "Updated!=0 AND UpdateErrCode!=0"},
    {"succeeded", zymdb_get_pldm_firmware_update_success_list, "Updated!=0 AND UpdateErrCode=0"},
    {"marvell", zymdb_get_pldm_firmware_marvell_ctrl_list,
     "VendorId=6987 AND SubVendorId=" + std::to_string(BOARD_SUBSYSTEM_VENDOR_ID) +
         " AND (DeviceId=37424 OR DeviceId=8769)"},
};

class PldmList : public scripted::ClientTest, public testing::WithParamInterface<List> {
 protected:
  ~PldmList() override { std::free(list_.Firmwares); }
  int list() { return GetParam().list(&list_); }

  _ZYMDB_PLDM_Firmware_List list_{};
};

INSTANTIATE_TEST_SUITE_P(Pldm, PldmList, testing::ValuesIn(kLists),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(PldmList, ReadsTheRowsOfItsFilter) {
  answer({row("first"), row("second")});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(kQuery + GetParam().filter));
  ASSERT_EQ(list_.Count, 2u);
  EXPECT_STREQ(list_.Firmwares[0].DeviceName, "first");
  EXPECT_STREQ(list_.Firmwares[1].DeviceName, "second");
}

TEST_P(PldmList, OfAnEmptyTableIsEmpty) {
  answer(std::vector<Row>{});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_P(PldmList, HoldsNoMoreThanTheRowCount) {
  answer(Answer{.rows = {row("first"), row("second")}, .row_count = 1});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 1u);
  EXPECT_STREQ(list_.Firmwares[0].DeviceName, "first");
}

TEST_P(PldmList, IsEmptyAfterAFailure) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure, true), kFailure},
      {Answer::failing(kFailure), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
      {Answer{.rows = {row("read")}, .end = kFailure, .row_count = 2}, kFailure}};
  _ZYMDB_PLDM_Firmware own{};
  for (const auto& [each, status] : cases) {
    list_ = {5, &own};
    answer(each);
    EXPECT_EQ(list(), status);
    EXPECT_EQ(list_.Count, 0u);
    EXPECT_EQ(list_.Firmwares, nullptr);
  }
}

TEST_P(PldmList, LooksForTheDatabaseBeforeTheArgument) {
  EXPECT_EQ(GetParam().list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(GetParam().list(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

class PldmRecord : public scripted::ClientTest {
 protected:
  _ZYMDB_PLDM_Firmware read(Row columns) {
    answer({std::move(columns)});
    _ZYMDB_PLDM_Firmware_List list{};
    EXPECT_EQ(zymdb_get_pldm_firmware_list(&list), ZYM_DB_STATUS_OK);
    const _ZYMDB_PLDM_Firmware record = list.Firmwares[0];
    std::free(list.Firmwares);
    return record;
  }
};

TEST_F(PldmRecord, EachColumnFillsTheFieldOfItsNameCutToItsWidth) {
  const _ZYMDB_PLDM_Firmware record = read(row("device", 0x103));
  EXPECT_STREQ(record.DeviceName, "device");
  EXPECT_EQ(record.DeviceType, 7u);
  EXPECT_EQ(record.PCIKey, 0x10002u);
  EXPECT_EQ(record.PCIFuncKey, 0x20003u);
  EXPECT_EQ(record.Location, 1);
  EXPECT_EQ(record.SlotNo, 3);
  EXPECT_STREQ(record.Manufacture, "maker");
  EXPECT_STREQ(record.SoftwareID, "12345678");
  EXPECT_STREQ(record.VersionString, "1");
  EXPECT_STREQ(record.PendingVersionString, "2");
  EXPECT_STREQ(record.PkgVersionString, "3");
  EXPECT_STREQ(record.ReleaseDate, "2024-01-01");
  EXPECT_STREQ(record.PendingReleaseDate, "2024-02-02");
  EXPECT_EQ(record.UpdateSupport, 3);
  EXPECT_EQ(record.UpdateMethod, 4);
  EXPECT_EQ(record.UpdateAuxInfo, 5);
  EXPECT_EQ(record.Updated, 6);
  EXPECT_EQ(record.UpdateErrCode, 7);
  EXPECT_STREQ(record.UpdateErrString, "no error");
  EXPECT_EQ(record.Status, 2u);
}

TEST_F(PldmRecord, UnreadableColumnsAreEmptyAndZeroAndOfTheUnknownType) {
  const _ZYMDB_PLDM_Firmware record = read(Row());
  for (const char* text : {record.DeviceName, record.Manufacture, record.SoftwareID, record.VersionString,
                           record.PendingVersionString, record.PkgVersionString, record.ReleaseDate,
                           record.PendingReleaseDate, record.UpdateErrString})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(record.DeviceType, 23u);
  EXPECT_EQ(record.PCIKey | record.PCIFuncKey | record.Location | record.SlotNo | record.UpdateSupport |
                record.UpdateMethod | record.UpdateAuxInfo | record.Updated | record.UpdateErrCode |
                record.Status,
            0u);
}

TEST_F(PldmRecord, IsReadColumnByColumnAndNoFurtherThanItsFields) {
  read(row("device"));
  std::vector<std::string> reads;
  for (const std::string& call : client().calls)
    if (call.starts_with("text ") || call.starts_with("uint ")) reads.push_back(call);
  EXPECT_THAT(reads, ElementsAre("text 0 size 129", "uint 1", "uint 2", "uint 3", "uint 4", "uint 5",
                                 "text 6 size 33", "text 7 size 9", "text 8 size 33", "text 9 size 33",
                                 "text 10 size 33", "text 11 size 17", "text 12 size 17", "uint 13",
                                 "uint 14", "uint 15", "uint 16", "uint 17", "text 18 size 129", "uint 19"));
}

class PldmOfASlot : public scripted::ClientTest {
 protected:
  PldmOfASlot() { std::strcpy(record_.DeviceName, "before"); }
  int get(int bus = -1, int device = -1) { return zymdb_get_pldm_firmware(1, 3, &record_, bus, device); }

  _ZYMDB_PLDM_Firmware record_{};
};

TEST_F(PldmOfASlot, IsItsOnlyRow) {
  answer({row("only")});
  EXPECT_EQ(get(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(kQuery + "Location=1 AND SlotNo=3"));
  EXPECT_STREQ(record_.DeviceName, "only");
}

TEST_F(PldmOfASlot, IsNarrowedToABusAndDeviceUnlessOneOfThemIsNegative) {
  const std::string narrowed = " AND PCIFuncKey IN (select FunKey from PCIs where BusNo=59 and DeviceNo=0)";
  const std::tuple<int, int, std::string> cases[] = {
      {59, 0, narrowed}, {-1, 0, ""}, {59, -1, ""}, {-1, -1, ""}, {INT_MIN, INT_MIN, ""}};
  for (const auto& [bus, device, condition] : cases) {
    answer({row("only")});
    EXPECT_EQ(get(bus, device), ZYM_DB_STATUS_OK);
    EXPECT_EQ(client().statements.back(), kQuery + "Location=1 AND SlotNo=3" + condition);
  }
}

TEST_F(PldmOfASlot, OfTwoIsTheSecondWhenItAloneCanBeUpdated) {
  const std::tuple<int, int, const char*> cases[] = {
      {0, 0, "first"}, {0, 1, "second"}, {1, 0, "first"}, {1, 1, "first"}};
  for (const auto& [first, second, chosen] : cases) {
    answer({row("first", first), row("second", second)});
    EXPECT_EQ(get(), ZYM_DB_STATUS_OK);
    EXPECT_STREQ(record_.DeviceName, chosen) << first << second;
  }
}

TEST_F(PldmOfASlot, OfNoneOrMoreThanTwoIsNotFound) {
  for (const std::vector<Row>& rows :
       {std::vector<Row>{}, {row("1"), row("2"), row("3")}, {row("1"), row("2"), row("3"), row("4")}}) {
    answer(rows);
    EXPECT_EQ(get(), ZYM_DB_STATUS_NOT_FOUND);
  }
  answer(Answer::without_result());
  EXPECT_EQ(get(), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_STREQ(record_.DeviceName, "before");
}

TEST_F(PldmOfASlot, IsUntouchedAfterAFailure) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure, true), kFailure},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
      {Answer{.rows = {row("read")}, .end = kFailure, .row_count = 2}, kFailure}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(get(), status);
  }
  client().has_database = false;
  EXPECT_EQ(get(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, nullptr, -1, -1), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_STREQ(record_.DeviceName, "before");
}

_ZYMDB_PLDM_Firmware a_record() {
  _ZYMDB_PLDM_Firmware record{};
  std::strcpy(record.DeviceName, "device");
  record.DeviceType = 15;
  record.PCIKey = 99;
  record.Location = 1;
  record.SlotNo = 3;
  std::strcpy(record.Manufacture, "maker");
  std::strcpy(record.SoftwareID, "15B3A2D4");
  std::strcpy(record.VersionString, "1.0");
  std::strcpy(record.PendingVersionString, "2.0");
  std::strcpy(record.PkgVersionString, "3.0");
  std::strcpy(record.ReleaseDate, "2024-01-01");
  std::strcpy(record.PendingReleaseDate, "2024-02-02");
  record.UpdateSupport = 255;
  record.Updated = 1;
  record.UpdateMethod = 65535;
  record.UpdateAuxInfo = 16;
  record.UpdateErrCode = 17;
  std::strcpy(record.UpdateErrString, "it broke");
  record.Status = 0xFFFFFFFF;
  return record;
}

class PldmUpdateState : public scripted::ClientTest {
 protected:
  int write() { return zymdb_update_pldm_firmware(1, 3, &record_); }
  _ZYMDB_PLDM_Firmware record_ = a_record();
};

TEST_F(PldmUpdateState, IsWrittenToTheSlotsComponentOfThatSoftwareId) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("update PldmDeviceFirmware {VersionString=text:1.0, PendingVersionString=text:2.0, "
                          "PkgVersionString=text:3.0, ReleaseDate=text:2024-01-01, "
                          "PendingReleaseDate=text:2024-02-02, UpdateErrString=text:it broke, "
                          "UpdateSupport=uint:255, UpdateMethod=uint:65535, UpdateAuxInfo=uint:16, "
                          "Updated=uint:1, UpdateErrCode=uint:17, Status=uint:4294967295} where Location=1 "
                          "AND SlotNo=3 AND SoftwareID=\"15B3A2D4\""));
  EXPECT_EQ(client().calls[1], "clear");
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(PldmUpdateState, TextsAreCutWhereTheirFieldsEnd) {
  const auto fill = [](auto& field) { std::memset(field, 'x', sizeof field); };
  fill(record_.VersionString);
  fill(record_.PendingVersionString);
  fill(record_.PkgVersionString);
  fill(record_.ReleaseDate);
  fill(record_.PendingReleaseDate);
  fill(record_.UpdateErrString);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  const auto x = [](size_t count) { return std::string(count, 'x'); };
  EXPECT_THAT(client().statements.front(),
              StartsWith("update PldmDeviceFirmware {VersionString=text:" + x(32) +
                         ", PendingVersionString=text:" + x(32) + ", PkgVersionString=text:" + x(32) +
                         ", ReleaseDate=text:" + x(16) + ", PendingReleaseDate=text:" + x(16) +
                         ", UpdateErrString=text:" + x(128) + ", UpdateSupport="));
  EXPECT_EQ(record_.UpdateErrString[128], '\0');
}

TEST_F(PldmUpdateState, OfAnotherSlotIsRefused) {
  const std::pair<unsigned, unsigned> others[] = {{2, 3}, {1, 4}, {0x101, 3}, {1, 0x10003}};
  for (const auto& [location, slot] : others)
    EXPECT_EQ(zymdb_update_pldm_firmware(location, slot, &record_), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().calls, IsEmpty());
  client().has_database = false;
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, nullptr), ZYM_DB_STATUS_NO_DB);
}

TEST_F(PldmUpdateState, WithoutAValueSetIsNotWritten) {
  client().has_values = false;
  EXPECT_EQ(write(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(PldmUpdateState, AFailureIsLoggedWithEveryValue) {
  const std::string line =
      "error: zymdb_update_pldm_firmware failed, filter: Location=1 AND SlotNo=3 AND "
      "SoftwareID=\"15B3A2D4\", value: VersionString(0x1.0) PendingVersionString(0x2.0) "
      "PkgVersionString(0x3.0) ReleaseDate(0x2024-01-01) PendingReleaseDate(0x2024-02-02) "
      "UpdateErrString(0xit broke) UpdateSupport(0xff) UpdateMethod(0xffff) UpdateAuxInfo(0x10) "
      "Updated(0x1) UpdateErrCode(0x11) Status(0xffffffff), ret: 77\n";
  client().failures = {{{"update", 0}, kFailure}};
  EXPECT_EQ(write(), kFailure);
  EXPECT_THAT(client().log, ElementsAre(line));
  client() = {};
  client().failures = {{{"put", 11}, kFailure}};
  EXPECT_EQ(write(), kFailure);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_THAT(client().log, ElementsAre(line));
}

TEST_F(PldmUpdateState, AFailureTellsThatItsFilterWasCut) {
  // Without an end of its own the id goes on with the version.
  std::memset(record_.SoftwareID, 'A', sizeof record_.SoftwareID);
  std::memset(record_.VersionString, 'B', sizeof record_.VersionString);
  client().failures = {{{"update", 0}, kFailure}};
  EXPECT_EQ(write(), kFailure);
  ASSERT_EQ(client().log.size(), 2u);
  EXPECT_EQ(client().log[1], "error: the filter was cut at 63 bytes");
}

class PldmClearing : public scripted::ClientTest {};

TEST_F(PldmClearing, EndsEveryPendingState) {
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("update PldmDeviceFirmware {Status=int:0} where Status=2"));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(PldmClearing, OfPendingStatesThatFailsIsLogged) {
  client().failures = {{{"update", 0}, kFailure}};
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), kFailure);
  EXPECT_THAT(client().log,
              ElementsAre("error: clear all pending pldm firmware failed, filter: Status=2, ret: 77\n"));
  client() = {};
  client().has_values = false;
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), ZYM_DB_STATUS_NO_MEMORY);
  client().has_database = false;
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), ZYM_DB_STATUS_NO_DB);
}

TEST_F(PldmClearing, OfATypeDeletesItsRows) {
  for (const int type : {0, 15, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(type), ZYM_DB_STATUS_OK);
    EXPECT_EQ(client().statements.back(),
              "delete PldmDeviceFirmware where DeviceType=" + std::to_string(type));
  }
}

TEST_F(PldmClearing, OfATypeAnswersWhatTheDeleteSays) {
  client().failures = {{{"delete", 0}, kFailure}};
  EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(15), kFailure);
  client().has_database = false;
  EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(15), ZYM_DB_STATUS_INVALID_PARAM);
}

constexpr char kFind[] = "query PldmDeviceFirmware [_id] where DeviceType=15 AND SlotNo=3 AND Location=1";
const std::string kValues =
    "{DeviceName=text:device, DeviceType=uint:15, PCIKey=uint:65539, VendorId=uint:5555, "
    "SubVendorId=uint:5557, DeviceId=uint:5556, SubDeviceId=uint:4294967295, Location=uint:1, "
    "SlotNo=uint:3, Manufacture=text:maker, SoftwareID=text:15B3A2D4, VersionString=text:1.0, "
    "ReleaseDate=text:2024-01-01, UpdateSupport=uint:255}";

class PldmDiscovery : public scripted::ClientTest {
 protected:
  PldmDiscovery() { system_log().clear(); }
  int record() { return zymdb_insert_or_update_pldm_firmware(5555, 5556, 5557, 0xFFFFFFFF, &record_); }
  _ZYMDB_PLDM_Firmware record_ = a_record();
};

TEST_F(PldmDiscovery, InsertsTheRowOfItsTypeAndSlot) {
  answer(std::vector<Row>{});
  EXPECT_EQ(record(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(kFind, "insert PldmDeviceFirmware " + kValues));
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(PldmDiscovery, RefreshesTheRowWhereKeyOrSoftwareIdChangedWithTheIdBare) {
  answer({Row(41)});
  EXPECT_EQ(record(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre(kFind, "update PldmDeviceFirmware " + kValues +
                                     " where _id=41 AND (PCIKey!=65539 OR SoftwareID!=15B3A2D4)"));
}

TEST_F(PldmDiscovery, TheKeyIsMadeOfPlaceAndSlot) {
  record_.Location = 255;
  record_.SlotNo = 65535;
  record_.DeviceType = 0xFFFFFFFF;
  answer({Row(41)});
  EXPECT_EQ(record(), ZYM_DB_STATUS_OK);
  EXPECT_TRUE(client().statements[0].ends_with("DeviceType=4294967295 AND SlotNo=65535 AND Location=255"));
  EXPECT_NE(client().statements[1].find("PCIKey=uint:16777215,"), std::string::npos);
  EXPECT_TRUE(client().statements[1].ends_with("(PCIKey!=16777215 OR SoftwareID!=15B3A2D4)"));
}

TEST_F(PldmDiscovery, ADeviceCannotForgeALineOfTheSystemLog) {
  std::strcpy(record_.SoftwareID, "1\nroot:");
  answer(Answer::failing(kFailure));
  EXPECT_EQ(record(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(
      system_log().back(),
      "14: zymdb_insert_or_update_pldm_firmware: Failed to insert/update PLDM FW info, "
      "where:DeviceType=15 AND SlotNo=3 AND Location=1, filter:PCIKey!=65539 OR SoftwareID!=1 root:\n\n");
}

TEST_F(PldmDiscovery, AFailureIsToldToTheSystemLogAlone) {
  const std::map<std::pair<std::string, int>, int> failures[] = {
      {{{"query", 0}, kFailure}}, {{{"insert", 0}, kFailure}}, {{{"put", 13}, kFailure}}};
  for (const auto& each : failures) {
    client() = {};
    client().failures = each;
    answer(std::vector<Row>{});
    EXPECT_EQ(record(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(system_log().back(),
              "14: zymdb_insert_or_update_pldm_firmware: Failed to insert/update PLDM FW info, "
              "where:DeviceType=15 AND SlotNo=3 AND Location=1, filter:PCIKey!=65539 OR "
              "SoftwareID!=15B3A2D4\n\n");
  }
  EXPECT_EQ(system_log().size(), 3u);
}

TEST_F(PldmDiscovery, ChecksTheDatabaseThenTheRecordThenTheValueSet) {
  client().has_values = false;
  EXPECT_EQ(record(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(zymdb_insert_or_update_pldm_firmware(1, 2, 3, 4, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_insert_or_update_pldm_firmware(1, 2, 3, 4, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().statements, IsEmpty());
}

}  // namespace
