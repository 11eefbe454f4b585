// The merge of configuration data: exact statements, log lines, and what each failure ends it with.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::Cell;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class Merge : public scripted::ClientTest {
 protected:
  // The functions with settings, and then what the lookups of each are answered.
  void given_settings(std::vector<Row> keys) { answer(std::move(keys)); }
  void given_not_recorded() { answer(std::vector<Row>{}); }
  void given_recorded(int oob_type) { answer({Row(oob_type)}); }
  void given_function(uint32_t funkey) { answer({Row(1, 3, 0, 0x3B, 0, 1, 1, 0x10003, funkey)}); }
  void given_adapter(const char* name, const char* connector = "0xB6") { answer({Row(name, connector)}); }

  // The statements of the merge proper, after the two that retire rows.
  std::vector<std::string> merging() const {
    return {client().statements.begin() + 2, client().statements.end()};
  }
};

TEST_F(Merge, RetiresRowsWhoseSettingsHaveDisappearedFirst) {
  given_settings({});
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre("update PCIAdapter {AIMSupported=uchar:0} where AIMSupported=3 AND PCIFuncKey NOT IN ( "
                  "SELECT PfaKey FROM PCISetting) AND PCIFuncKey IN (SELECT FunKey FROM PCIs)",
                  "delete PCIAdapter where AIMSupported=3 AND PCIFuncKey NOT IN ( SELECT PfaKey FROM "
                  "PCISetting)",
                  "query PCISetting [PfaKey] where 1 GROUP BY PfaKey"));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(Merge, GoesOnWhenRetiringFails) {
  client().failures[{"update", 0}] = kFailure;
  client().failures[{"delete", 0}] = kFailure;
  given_settings({});
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.size(), 3u);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(Merge, InsertsARowForAFunctionThatHasNone) {
  given_settings({Row(0x3B0001)});
  given_not_recorded();
  given_function(0x3B0001);
  given_adapter("a card");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      merging(),
      ElementsAre(
          "query PCISetting [PfaKey] where 1 GROUP BY PfaKey",
          "query PCIAdapter [AIMSupported] where PCIFuncKey=? with 3/0/1:3866625",
          "query PCIs [NodeIndex,SlotNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,DevKey,FunKey] where "
          "FunKey=3866625",
          "query PCIAdapter [CardName,ConnectorType] where PCIKey=65539",
          "insert PCIAdapter {SegNo=uint:0, BusNo=uint:59, DeviceNo=uint:0, FunctionNo=uint:1, "
          "NodeNo=uint:1, SlotNo=uint:3, CardName=text:a card, ConnectorType=text:0xB6, "
          "AIMSupported=uint:3, PCIKey=uint:65539, PCIFuncKey=uint:3866625, Location=uint:1}"));
  EXPECT_THAT(client().log,
              ElementsAre("info: Merge: funkey 3866625 in UCM is not recorded in PCIAdapter.\n",
                          "info: Merge: insert/update funkey 3866625 to PCIAdapter successfully\n"));
}

TEST_F(Merge, UpdatesTheRowOfAnUnmanagedFunctionUnderTheSettingsKey) {
  given_settings({Row(0x3B0001)});
  given_recorded(0);
  given_function(99);
  given_adapter("a card");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.back(), testing::StartsWith("update PCIAdapter {SegNo=uint:0, "));
  EXPECT_THAT(client().statements.back(), testing::HasSubstr("PCIFuncKey=uint:99, "));
  EXPECT_THAT(client().statements.back(), testing::EndsWith("} where PCIFuncKey=3866625"));
  EXPECT_THAT(
      client().log,
      ElementsAre("info: Merge: funkey 3866625 in UCM already recorded in PCIAdapter, will update oobType\n",
                  "info: Merge: insert/update funkey 3866625 to PCIAdapter successfully\n"));
}

TEST_F(Merge, LeavesCollectedAndMergedRowsAlone) {
  given_settings({Row(1), Row(2), Row(3)});
  for (int oob_type : {1, 2, 3}) given_recorded(oob_type);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(merging().size(), 4u);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(Merge, TakesAFailedLookupOfTheManagementForAFunctionWithoutARow) {
  for (const Answer& lookup :
       {Answer::failing(kFailure), Answer{.end = kFailure}, Answer::of({Row(nullptr)})}) {
    given_settings({Row(5)});
    answer(lookup);
    given_function(5);
    given_adapter("a card");
    EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
    EXPECT_THAT(client().statements.back(), testing::StartsWith("insert"));
  }
}

TEST_F(Merge, MakesAGenericNameTheFunctionsOwn) {
  const std::pair<const char*, const char*> names[] = {{"Adapter", "Adapter 3B:00:01"},
                                                       {"Adapter 01:02:03", "Adapter 3B:00:01"},
                                                       {"Adapters", "Adapter 3B:00:01"},
                                                       {"An Adapter", "An Adapter"},
                                                       {"adapter", "adapter"}};
  for (const auto& [stored, shown] : names) {
    given_settings({Row(5)});
    given_not_recorded();
    given_function(5);
    given_adapter(stored);
    zymdb_merge_aim_ucm_pfa();
    EXPECT_THAT(client().statements.back(), testing::HasSubstr("CardName=text:" + std::string(shown) + ","));
  }
}

TEST_F(Merge, UnreadableColumnsAreZeroAndEmpty) {
  given_settings({Row(5)});
  given_not_recorded();
  answer({Row()});
  answer({Row()});
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(
      client().statements.back(),
      "insert PCIAdapter {SegNo=uint:0, BusNo=uint:0, DeviceNo=uint:0, FunctionNo=uint:0, NodeNo=uint:0, "
      "SlotNo=uint:0, CardName=text:, ConnectorType=text:, AIMSupported=uint:3, PCIKey=uint:0, "
      "PCIFuncKey=uint:0, Location=uint:0}");
}

TEST_F(Merge, AnUnreadableSettingsKeyIsZero) {
  given_settings({Row(nullptr)});
  given_recorded(1);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(), "query PCIAdapter [AIMSupported] where PCIFuncKey=? with 3/0/1:0");
}

TEST_F(Merge, TextsAreTakenOverUpToTheirBound) {
  given_settings({Row(5)});
  given_not_recorded();
  given_function(5);
  given_adapter(std::string(200, 'n').c_str(), "0x12345678");
  zymdb_merge_aim_ucm_pfa();
  EXPECT_THAT(client().calls, testing::Contains("text 0 size 129"));
  EXPECT_THAT(client().calls, testing::Contains("text 1 size 8"));
  EXPECT_THAT(client().statements.back(), testing::HasSubstr("ConnectorType=text:0x12345,"));
}

// What ends the merge, the status it answers and its last line.
struct Ending {
  std::vector<Answer> answers;  // after the settings' and the lookup of the management
  int status;
  const char* line;
};

TEST_F(Merge, TheFirstFailureEndsItAndIsLogged) {
  const Answer function = Answer::of({Row(1, 3, 0, 0x3B, 0, 1, 1, 0x10003, 5)});
  const Ending endings[] = {
      {{Answer::failing(kFailure, true)},
       kFailure,
       "error: Merge: Can not find funkey 5 in PCIs table, rc = 77\n"},
      {{Answer::without_result()}, 0, "error: Merge: Can not find funkey 5 in PCIs table, rc = 0\n"},
      {{Answer{}}, 0, "error: Merge: Can not step query result for funkey 5, rc = 10\n"},
      {{Answer{.end = kFailure}},
       kFailure,
       "error: Merge: Can not step query result for funkey 5, rc = 77\n"},
      {{function, Answer::failing(kFailure)},
       kFailure,
       "error: Merge: Can not find pcikey 65539 in PCIAdapter table, rc = 77\n"},
      {{function, Answer::without_result()},
       0,
       "error: Merge: Can not find pcikey 65539 in PCIAdapter table, rc = 0\n"},
      {{function, Answer{}}, 0, "error: Merge: Can not step query result for pcikey 65539, rc = 10\n"},
      {{function, Answer{.end = kFailure}},
       kFailure,
       "error: Merge: Can not step query result for pcikey 65539, rc = 77\n"},
  };
  for (const Ending& ending : endings) {
    given_settings({Row(5), Row(6)});
    given_not_recorded();
    for (const Answer& each : ending.answers) answer(each);
    EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ending.status);
    EXPECT_EQ(client().log.back(), ending.line);
    EXPECT_THAT(client().answers, IsEmpty());
  }
}

TEST_F(Merge, AFailedWriteEndsItWithAWarning) {
  client().failures[{"insert", 0}] = kFailure;
  client().failures[{"update", 2}] = kFailure;
  given_settings({Row(5), Row(6)});
  given_not_recorded();
  given_function(5);
  given_adapter("a card");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), kFailure);
  EXPECT_EQ(client().log.back(), "warning: Merge: failed to insert/update funkey 5 to PCIAdapter, rc=77\n");
  given_settings({Row(5), Row(6)});
  given_recorded(0);
  given_function(5);
  given_adapter("a card");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), kFailure);
  EXPECT_EQ(client().log.back(), "warning: Merge: failed to insert/update funkey 5 to PCIAdapter, rc=77\n");
}

TEST_F(Merge, AFailureOfTheSettingsQueryIsLogged) {
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), kFailure);
  answer(Answer::without_result());
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().log,
              ElementsAre("error: Merge: Can not query all function key from PCISettings, rc = 77\n",
                          "error: Merge: Can not query all function key from PCISettings, rc = 0\n"));
}

TEST_F(Merge, AFailedStepOfTheSettingsIsItsStatus) {
  answer(Answer{.rows = {Row(5)}, .end = kFailure, .row_count = 3});
  given_recorded(1);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), kFailure);
}

TEST_F(Merge, NeverMoreThanTheRowCountIsHandled) {
  answer(Answer{.rows = {Row(5), Row(6)}, .row_count = 1});
  given_recorded(1);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
}

TEST_F(Merge, WithoutMemoryOrDatabaseNothingIsSaidOrDone) {
  client().has_values = false;
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_NO_MEMORY);
  client().has_database = false;
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_THAT(client().log, IsEmpty());
}

}  // namespace
