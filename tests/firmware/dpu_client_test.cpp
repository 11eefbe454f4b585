// Data processing units: exact statements, log lines, and the answers to every failure.
#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "support/scripted_client.h"
#include "support/system_log.h"
#include "zymdb_firmware.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

// The rows of the card in the table of PLDM components.
Row pldm_row(unsigned type, const char* software_id = "SOFTWARE") {
  return Row("card", type, 1, 2, 1, 3, "maker", software_id, "1", "2", "3", "2024-01-01", "2024-02-02", 1, 1,
             1, 1, 1, "broke", 2);
}

class DpuUefiVersion : public scripted::ClientTest {
 protected:
  DpuUefiVersion() { system_log().clear(); }

  void given_functions(std::vector<unsigned> keys) {
    std::vector<Row> rows;
    for (const unsigned key : keys) rows.emplace_back(Row(key));
    answer(rows);
  }
  void given_no_component() { answer(std::vector<Row>{}); }
  std::vector<std::string> writes() const {
    std::vector<std::string> writes;
    for (const std::string& statement : client().statements)
      if (!statement.starts_with("query")) writes.push_back(statement);
    return writes;
  }

  std::string component(const char* version, unsigned funkey) const {
    return "insert Firmwares {FirmwareName=text:BlueField UEFI, VersionString=text:" + std::string(version) +
           ", Description=text:UEFI on BlueField ARM Cores, ReleaseDate=text:, Classification=uint:32774, "
           "Manufacture=text:Mellanox Technologies, SoftwareID=text:15B3A2D4, HardwareId=uint:" +
           std::to_string(funkey) + ", HardwareTypeId=uint:3}";
  }
  std::string pldm(const char* operation, const char* version, const char* software_id = "15B3A2D4",
                   const char* rest = "ReleaseDate=text:, UpdateSupport=uint:0") const {
    return std::string(operation) +
           " PldmDeviceFirmware {DeviceName=text:card, DeviceType=uint:15, PCIKey=uint:65539, "
           "VendorId=uint:5555, SubVendorId=uint:5555, DeviceId=uint:41686, SubDeviceId=uint:41684, "
           "Location=uint:1, SlotNo=uint:3, Manufacture=text:maker, SoftwareID=text:" +
           software_id + ", VersionString=text:" + version + ", " + rest + "}";
  }
};

TEST_F(DpuUefiVersion, IsWrittenToEveryFunctionAndToTheOnlyPldmRow) {
  given_functions({768, 769});
  given_no_component();
  given_no_component();
  answer({pldm_row(7)});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements[0], "query PCIs [FunKey] where Location=1 and SlotNo=3 and DeviceId=41686");
  EXPECT_EQ(client().statements[1], "query Firmwares [_id] where HardwareId=768 and Classification=32774");
  EXPECT_TRUE(client().statements[5].ends_with("where Location=1 and SlotNo=3 and DeviceId=41686"));
  EXPECT_EQ(client().statements[6],
            "query PldmDeviceFirmware [_id] where DeviceType=15 AND SlotNo=3 AND Location=1");
  EXPECT_THAT(writes(), ElementsAre(component("4.2", 768), component("4.2", 769), pldm("insert", "4.2")));
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DpuUefiVersion, OfSeveralPldmRowsGoesToTheFirstOfItsTypeAndChangesNothingElse) {
  given_functions({768});
  given_no_component();
  answer({pldm_row(7, "A"), pldm_row(15, "B"), pldm_row(15, "C")});
  answer({Row(41)});
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(writes().back(), pldm("update", "4.2", "B", "ReleaseDate=text:2024-01-01, UpdateSupport=uint:1") +
                                 " where _id=41 AND (PCIKey!=65539 OR SoftwareID!=B)");
}

TEST_F(DpuUefiVersion, WithSeveralPldmRowsOfOtherTypesIsAWrongArgumentAfterTheFunctionsWereWritten) {
  given_functions({768});
  given_no_component();
  answer({pldm_row(7), pldm_row(8)});
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(writes(), ElementsAre(component("4.2", 768)));
}

TEST_F(DpuUefiVersion, WithoutAPldmRowIsDone) {
  given_functions({768});
  given_no_component();
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(writes(), ElementsAre(component("4.2", 768)));
}

TEST_F(DpuUefiVersion, IsCutTo31CharactersAndMayBeMissing) {
  const std::pair<const char*, const char*> cases[] = {
      {"0123456789012345678901234567890123456789", "0123456789012345678901234567890"},
      {"0123456789012345678901234567890", "0123456789012345678901234567890"},
      {"", ""},
      {nullptr, ""}};
  for (const auto& [version, stored] : cases) {
    client() = {};
    given_functions({768});
    given_no_component();
    answer({pldm_row(7)});
    answer(std::vector<Row>{});
    EXPECT_EQ(zymdb_update_dpu_uefi_version(3, version), ZYM_DB_STATUS_OK);
    EXPECT_THAT(writes(), ElementsAre(component(stored, 768), pldm("insert", stored)));
  }
}

TEST_F(DpuUefiVersion, OfASlotWithoutADpuIsNotFound) {
  for (const Answer& each : {Answer{}, Answer::failing(kFailure), Answer::without_result(),
                             Answer{.rows = {Row(768)}, .end = kFailure, .row_count = 2}}) {
    answer(each);
    EXPECT_EQ(zymdb_update_dpu_uefi_version(0xFFFFFFFF, "4.2"), ZYM_DB_STATUS_NOT_FOUND);
    EXPECT_EQ(client().statements.back(),
              "query PCIs [FunKey] where Location=1 and SlotNo=4294967295 and DeviceId=41686");
  }
  client().has_database = false;
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DpuUefiVersion, AFunctionThatCannotBeWrittenEndsTheirWritingAndIsToldToTheSystemLogAlone) {
  given_functions({768, 769, 770});
  given_no_component();
  given_no_component();
  answer({pldm_row(7)});
  answer(std::vector<Row>{});
  client().failures = {{{"insert", 1}, kFailure}};
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(system_log().size(), 2u);  // the first is the component's own
  EXPECT_EQ(system_log().back(),
            "11: zymdb_update_dpu_uefi_version: zymdb_insert_or_update_firmware_info failed, slot 3, funkey "
            "0x301, rc 1\n\n");
  EXPECT_THAT(writes(), ElementsAre(component("4.2", 768), component("4.2", 769), pldm("insert", "4.2")));
}

TEST_F(DpuUefiVersion, AFailureToReadThePldmRowsIsAnswered) {
  given_functions({768});
  given_no_component();
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_update_dpu_uefi_version(3, "4.2"), kFailure);
}

constexpr char kHardwareStatement[] =
    "select HardwareId from PCIs where Location=1 and SlotNo=3 and DeviceId=41686 and HardwareId&0xFF=0;";
constexpr char kVersionStatement[] =
    "select VersionString from Firmwares where SoftwareID=\"15B3A2D4\" and HardwareId=768;";

TEST_F(DpuUefiVersion, IsReadFromTheComponentOfTheCardsFirstFunction) {
  answer({Row(768)});
  answer({Row("4.2")});
  char version[32];
  EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, sizeof version), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(version, "4.2");
  EXPECT_THAT(client().statements, ElementsAre("raw_query " + std::string(kHardwareStatement) + " size 128",
                                               "raw_query " + std::string(kVersionStatement) + " size 128"));
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DpuUefiVersion, IsReadIntoOneByteLessThanTheBufferHas) {
  const std::pair<unsigned, const char*> cases[] = {{33, "text 0 size 32"},
                                                    {2, "text 0 size 1"},
                                                    {1, "text 0 size 0"},
                                                    {0, "text 0 size 0"},
                                                    {0xFFFFFFFF, "text 0 size 2147483646"}};
  for (const auto& [size, read] : cases) {
    client() = {};
    answer({Row(768)});
    answer({Row(nullptr)});
    char version[40] = "before";
    EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, size), ZYM_DB_STATUS_ERROR);
    EXPECT_EQ(client().calls.end()[-2], read);
  }
}

TEST_F(DpuUefiVersion, AnswersWhatTheReadSays) {
  answer({Row(768)});
  answer({Row("4.2")});
  client().failures = {{{"text", 0}, kFailure}};
  char version[32] = "before";
  EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, sizeof version), kFailure);
  EXPECT_STREQ(version, "before");
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(DpuUefiVersion, WithoutHardwareOrAComponentIsNotFoundAndToldToTheSystemLog) {
  const std::pair<Answer, int> failures[] = {{Answer::failing(kFailure, true), kFailure},
                                             {Answer::without_result(), ZYM_DB_STATUS_OK},
                                             {Answer{}, ZYM_DB_STATUS_DONE},
                                             {Answer{.end = kFailure}, kFailure}};
  const std::pair<Answer, int> unusable[] = {{Answer::of({Row(nullptr)}), ZYM_DB_STATUS_ERROR},
                                             {Answer::of({Row(0)}), ZYM_DB_STATUS_OK}};
  char version[32] = "before";
  const auto expect_not_found = [&](int status, const char* statement) {
    EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, sizeof version), ZYM_DB_STATUS_NOT_FOUND);
    EXPECT_EQ(system_log().back(), "11: zymdb_get_dpu_uefi_version: rc = " + std::to_string(status) +
                                       ", sql failed. " + statement + "\n\n");
  };
  for (const auto& [each, status] : failures) {
    answer(each);
    expect_not_found(status, kHardwareStatement);
    answer({Row(768)});
    answer(each);
    expect_not_found(status, kVersionStatement);
  }
  for (const auto& [each, status] : unusable) {
    answer(each);
    expect_not_found(status, kHardwareStatement);
  }
  EXPECT_EQ(system_log().size(), 10u);
  EXPECT_STREQ(version, "before");
}

TEST_F(DpuUefiVersion, AMissingBufferCountsAsAMissingDatabase) {
  EXPECT_EQ(zymdb_get_dpu_uefi_version(3, nullptr, 32), ZYM_DB_STATUS_NO_DB);
  client().has_database = false;
  char version[32];
  EXPECT_EQ(zymdb_get_dpu_uefi_version(3, version, sizeof version), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

class DpuLog : public scripted::ClientTest {
 protected:
  // The log holds so many events, of ids up to 500.
  void given_log(int64_t count) { answer({Row(count, 5, 500)}); }
  int append() { return dpu_insert_log(3, &event_, &next_id_); }

  _ZYMDB_DPU_Event event_{9, 0xFFFFFFFF, "generator", "message"};
  uint32_t next_id_ = 1;
};

constexpr char kMeasure[] = "query DPUEvents [COUNT(*),MIN(_id),MAX(_id)] where Slot=3";
constexpr char kAppend[] =
    "insert DPUEvents {Slot=uint:3, GenID=text:generator, Message=text:message, Timestamp=uint:4294967295}";

TEST_F(DpuLog, TakesAnEventUpTo256) {
  for (const int count : {0, 1, 255}) {
    client().statements.clear();
    given_log(count);
    EXPECT_EQ(append(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(next_id_, 501u);
    EXPECT_THAT(client().statements, ElementsAre(kMeasure, kAppend));
  }
}

TEST_F(DpuLog, From256OnTheOldestMakesRoom) {
  for (const int64_t count : {int64_t{256}, int64_t{300}, int64_t{0xFFFFFFFF}}) {
    client().statements.clear();
    given_log(count);
    EXPECT_EQ(append(), ZYM_DB_STATUS_OK);
    EXPECT_THAT(client().statements, ElementsAre(kMeasure, "delete DPUEvents where _id=5", kAppend));
  }
}

TEST_F(DpuLog, TextsThatFillTheirFieldsEndThere) {
  std::memset(event_.GenID, 'g', sizeof event_.GenID);
  std::memset(event_.Message, 'm', sizeof event_.Message);
  given_log(0);
  EXPECT_EQ(append(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(), "insert DPUEvents {Slot=uint:3, GenID=text:" + std::string(32, 'g') +
                                            ", Message=text:" + std::string(256, 'm') +
                                            ", Timestamp=uint:4294967295}");
}

TEST_F(DpuLog, TheNextIdNeedNotBeAskedFor) {
  given_log(0);
  EXPECT_EQ(dpu_insert_log(3, &event_, nullptr), ZYM_DB_STATUS_OK);
}

TEST_F(DpuLog, ThatCannotBeMeasuredTakesNoEvent) {
  const std::pair<Answer, int> cases[] = {{Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), ZYM_DB_STATUS_DONE},
                                          {Answer{}, ZYM_DB_STATUS_DONE},
                                          {Answer{.end = kFailure}, kFailure},
                                          {Answer::of({Row(nullptr, 5, 500)}), ZYM_DB_STATUS_ERROR},
                                          {Answer::of({Row(1, nullptr, 500)}), ZYM_DB_STATUS_ERROR},
                                          {Answer::of({Row(1, 5, nullptr)}), ZYM_DB_STATUS_ERROR}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(append(), status);
    EXPECT_EQ(client().statements.back(), kMeasure);
  }
  EXPECT_EQ(next_id_, 1u);
}

TEST_F(DpuLog, WhoseOldestEventCannotBeDeletedTakesNone) {
  given_log(256);
  client().failures = {{{"delete", 0}, kFailure}};
  EXPECT_EQ(append(), kFailure);
  EXPECT_THAT(client().log, ElementsAre("error: zym_db_delete(_id=5)"));
  EXPECT_THAT(client().statements, ElementsAre(kMeasure, "delete DPUEvents where _id=5"));
  EXPECT_EQ(next_id_, 1u);
}

TEST_F(DpuLog, AnswersWhatTheInsertSays) {
  given_log(1);
  client().failures = {{{"insert", 0}, kFailure}};
  EXPECT_EQ(append(), kFailure);
  given_log(256);
  client().has_values = false;
  EXPECT_EQ(append(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(client().statements.back(), "delete DPUEvents where _id=5");
  EXPECT_EQ(next_id_, 1u);
}

TEST_F(DpuLog, ArgumentsAreJudgedBeforeTheDatabaseIsLookedFor) {
  _ZYMDB_DPU_Event_List list{};
  for (const bool has_database : {true, false}) {
    client().has_database = has_database;
    for (const int slot : {0, -1, INT_MIN}) {
      EXPECT_EQ(dpu_insert_log(slot, &event_, &next_id_), ZYM_DB_STATUS_INVALID_PARAM);
      EXPECT_EQ(dpu_get_log_by_slot(slot, &list), ZYM_DB_STATUS_INVALID_PARAM);
      EXPECT_EQ(dpu_clear_logs_by_slot(slot), ZYM_DB_STATUS_INVALID_PARAM);
    }
    EXPECT_EQ(dpu_insert_log(1, nullptr, &next_id_), ZYM_DB_STATUS_INVALID_PARAM);
    EXPECT_EQ(dpu_get_log_by_slot(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  }
  EXPECT_EQ(append(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(dpu_get_log_by_slot(1, &list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(dpu_clear_logs_by_slot(1), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

TEST_F(DpuLog, IsClearedBySlot) {
  EXPECT_EQ(dpu_clear_logs_by_slot(INT_MAX), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("delete DPUEvents where Slot=2147483647"));
  client().failures = {{{"delete", 1}, kFailure}};
  EXPECT_EQ(dpu_clear_logs_by_slot(1), kFailure);
}

class DpuEvents : public scripted::ClientTest {
 protected:
  ~DpuEvents() override { std::free(list_.Events); }
  int list() { return dpu_get_log_by_slot(INT_MAX, &list_); }
  _ZYMDB_DPU_Event_List list_{};
};

TEST_F(DpuEvents, AreTheRowsOfTheSlot) {
  answer({Row(7, std::string(40, 'g'), std::string(300, 'm'), 0xFFFFFFFF), Row(8, "", "second", 2)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query DPUEvents [_id,GenID,Message,Timestamp] where Slot=2147483647"));
  ASSERT_EQ(list_.Count, 2u);
  EXPECT_EQ(list_.Events[0].Id, 7u);
  EXPECT_EQ(list_.Events[0].Timestamp, 0xFFFFFFFFu);
  EXPECT_EQ(list_.Events[0].GenID, std::string(31, 'g'));
  EXPECT_EQ(list_.Events[0].Message, std::string(255, 'm'));
  EXPECT_STREQ(list_.Events[1].Message, "second");
}

TEST_F(DpuEvents, ThatCannotBeReadWholeLeaveZeroedEntriesAtTheEnd) {
  answer({Row(1, "g", "first", 10), Row(nullptr, "g", "m", 1), Row(3, nullptr, "m", 1),
          Row(4, "g", nullptr, 1), Row(5, "g", "m", nullptr), Row(6, "g", "last", 60)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 6u);
  EXPECT_STREQ(list_.Events[0].Message, "first");
  EXPECT_STREQ(list_.Events[1].Message, "last");
  const _ZYMDB_DPU_Event zero{};
  for (int i = 2; i < 6; ++i) EXPECT_EQ(std::memcmp(&list_.Events[i], &zero, sizeof zero), 0) << i;
}

TEST_F(DpuEvents, CountTheRowCountWhateverTheRows) {
  answer(Answer{.rows = {Row(1, "", "a", 1), Row(2, "", "b", 2)}, .row_count = 1});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 1u);
  std::free(list_.Events);
  answer(Answer{.rows = {Row(1, "", "a", 1)}, .row_count = 3});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 3u);
  EXPECT_EQ(list_.Events[2].Id, 0u);
}

TEST_F(DpuEvents, OfAnEmptyLogAreNone) {
  answer(std::vector<Row>{});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_F(DpuEvents, ReadBeforeAFailedStepAreKept) {
  answer(Answer{.rows = {Row(1, "g", "read", 1)}, .end = kFailure, .row_count = 2});
  EXPECT_EQ(list(), kFailure);
  ASSERT_EQ(list_.Count, 2u);
  EXPECT_STREQ(list_.Events[0].Message, "read");
  EXPECT_STREQ(list_.Events[1].Message, "");
}

TEST_F(DpuEvents, AFailedQueryAndOneWithoutAResultEmptyTheList) {
  const std::pair<Answer, int> cases[] = {{Answer::without_result(), ZYM_DB_STATUS_OK},
                                          {Answer::failing(kFailure, true), kFailure}};
  for (const auto& [each, status] : cases) {
    _ZYMDB_DPU_Event own{};
    _ZYMDB_DPU_Event_List list{5, &own};
    answer(each);
    EXPECT_EQ(dpu_get_log_by_slot(3, &list), status);
    EXPECT_EQ(list.Count, 0u);
    EXPECT_EQ(list.Events, nullptr);
  }
}

TEST_F(DpuEvents, WithoutMemoryAreNone) {
  answer(Answer{.row_count = 0xFFFFFFFF});
  EXPECT_EQ(list(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(list_.Events, nullptr);
}

}  // namespace
