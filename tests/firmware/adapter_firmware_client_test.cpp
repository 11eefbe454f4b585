// Components of adapters: exact statements and log lines, every classification, and the answers to every
// failure.
#include <gmock/gmock.h>

#include <cstring>
#include <map>
#include <utility>

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
constexpr char kHardwareQuery[] = "query PCIs [HardwareId,HardwareTypeId] where FunKey=12";

class ComponentList : public scripted::ClientTest {
 protected:
  ~ComponentList() override { std::free(list_.Firmwares); }

  // Lists function 12, whose hardware is 700 of type 3.
  int list() {
    client().answers.push_front(Answer::of({Row(700, 3)}));
    return zymdb_get_pci_firmware_list(12, &list_);
  }

  _ZYMDB_PCI_Firmware_List list_{};
};

TEST_F(ComponentList, IsThatOfTheFunctionsHardware) {
  answer({Row("name", "1.2", "description", "2024-05-01", "maker", "0x8005", "0123456789ABCDEFGH"),
          Row("second", "2", "", "", "", "1", "")});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre(kHardwareQuery,
                          "query Firmwares [FirmwareName,VersionString,Description,ReleaseDate,Manufacture,"
                          "Classification,SoftwareID] where HardwareTypeId=3 AND HardwareId=700"));
  ASSERT_EQ(list_.Count, 2u);
  const _ZYMDB_PCI_Firmware& first = list_.Firmwares[0];
  EXPECT_STREQ(first.FirmwareName, "name");
  EXPECT_STREQ(first.VersionString, "1.2");
  EXPECT_STREQ(first.Description, "description");
  EXPECT_STREQ(first.ReleaseDate, "2024-05-01");
  EXPECT_STREQ(first.Manufacture, "maker");
  EXPECT_STREQ(first.SoftwareID, "0123456789ABCDEF");
  EXPECT_EQ(first.Classification, 0x8005);
  EXPECT_STREQ(first.ClassificationString, "Boot ROM");
  EXPECT_STREQ(list_.Firmwares[1].FirmwareName, "second");
  EXPECT_STREQ(list_.Firmwares[1].ClassificationString, "Other");
}

TEST_F(ComponentList, ReadsItsColumnsInOrderAndNoFurtherThanTheirFields) {
  answer({Row("", "", "", "", "", "", "")});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  std::vector<std::string> reads;
  for (const std::string& call : client().calls)
    if (call.starts_with("text ")) reads.push_back(call);
  EXPECT_THAT(reads, ElementsAre("text 0 size 33", "text 1 size 33", "text 2 size 129", "text 3 size 17",
                                 "text 4 size 33", "text 5 size 6", "text 6 size 17"));
}

TEST_F(ComponentList, KeysFrom2To31OnAreSignedNumbersInTheFilter) {
  answer({Row(0xFFFFFFFE, 255)});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_firmware_list(0xFFFFFFFF, &list_), ZYM_DB_STATUS_OK);
  EXPECT_TRUE(client().statements[0].ends_with("where FunKey=-1"));
  EXPECT_TRUE(client().statements[1].ends_with("where HardwareTypeId=255 AND HardwareId=-2"));
}

TEST_F(ComponentList, EveryClassificationHasItsText) {
  const std::map<unsigned, std::string> texts = {
      {1, "Other"},
      {2, "Driver"},
      {3, "Configuration Software"},
      {4, "Application Software"},
      {5, "Instrumentation"},
      {6, "Firmware/BIOS"},
      {7, "Diagnostic Software"},
      {8, "Operating System"},
      {9, "Middleware"},
      {10, "Firmware"},
      {11, "BIOS/Fcode"},
      {12, "Support/Service Pack"},
      {13, "Software Bundle"},
      {0x8000, "Driver Firmware"},
      {0x8001, "EFI"},
      {0x8002, "BIOS"},
      {0x8003, "FCODE"},
      {0x8004, "PXE"},
      {0x8005, "Boot ROM"},
      {0x8006, "UEFI"},
      {0x8007, "CIM Provider"},
      {0x8008, "Bundled Driver and Firmware"},
      {0x8100, "VPD-V0"},
      {0x8101, "Bootcode"},
      {0x8102, "ASF firmware"},
      {0x8103, "Extended VPD"},
      {0x8104, "FCoE firmware"},
      {0x8105, "FCoE boot driver"},
      {0x8106, "IPMI firmware"},
      {0x8107, "iSCSI boot driver"},
      {0x8108, "iSCSI boot driver to support IPv6"},
      {0x8109, "iSCSI boot driver to support IPv4 and IPv6"},
      {0x810A, "L2 firmware"},
      {0x810B, "Management firmware"},
      {0x810C, "MBA firmware. Including PXE, UEFI, FCode combinations"},
      {0x810D, "MFW modular firmware"},
      {0x810E, "NCSI firmware"},
      {0x810F, "UMP firmware"},
      {0x8110, "User block"}};
  std::vector<Row> rows;
  for (unsigned code = 0; code <= 0xFFFF; ++code)
    rows.emplace_back(Row("", "", "", "", "", std::to_string(code), ""));
  answer(rows);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 0x10000u);
  for (unsigned code = 0; code <= 0xFFFF; ++code) {
    const auto text = texts.find(code);
    ASSERT_EQ(list_.Firmwares[code].Classification, code);
    ASSERT_EQ(list_.Firmwares[code].ClassificationString, text != texts.end() ? text->second : "Unknown")
        << code;
  }
}

TEST_F(ComponentList, AClassificationIsReadInTheBaseThatItIsWrittenIn) {
  const std::pair<const char*, unsigned> cases[] = {
      {"13", 13}, {"0xd", 13},    {"015", 13},  {"0x8110", 0x8110}, {"junk", 0},
      {"", 0},    {"-1", 0xFFFF}, {"65537", 1}, {"99999", 0x869F},  {"655379", 1}};
  for (const auto& [text, code] : cases) {
    // A text of more than five digits is cut to five: of "655379" 65537 is read.
    answer({Row("", "", "", "", "", text, "")});
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.Count, 1u);
    EXPECT_EQ(list_.Firmwares[0].Classification, code) << text;
    std::free(std::exchange(list_.Firmwares, nullptr));
  }
}

TEST_F(ComponentList, UnreadableColumnsAreEmptyAndOfUnknownClass) {
  answer({Row()});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 1u);
  const _ZYMDB_PCI_Firmware& component = list_.Firmwares[0];
  for (const char* text : {component.FirmwareName, component.VersionString, component.Description,
                           component.ReleaseDate, component.Manufacture, component.SoftwareID})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(component.Classification, 0);
  EXPECT_STREQ(component.ClassificationString, "Unknown");
}

TEST_F(ComponentList, OfAFunctionWithoutComponentsIsEmpty) {
  answer(std::vector<Row>{});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_F(ComponentList, HoldsNoMoreThanTheRowCount) {
  answer(Answer{.rows = {Row("first"), Row("second")}, .row_count = 1});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 1u);
  EXPECT_STREQ(list_.Firmwares[0].FirmwareName, "first");
}

TEST_F(ComponentList, OfAFunctionWhoseHardwareIsUnknownIsAWrongArgument) {
  _ZYMDB_PCI_Firmware own{};
  for (const Answer& each :
       {Answer::failing(kFailure, true), Answer::without_result(), Answer{}, Answer{.end = kFailure}}) {
    _ZYMDB_PCI_Firmware_List list{5, &own};
    answer(each);
    EXPECT_EQ(zymdb_get_pci_firmware_list(12, &list), ZYM_DB_STATUS_INVALID_PARAM);
    EXPECT_EQ(list.Count, 0u);
    EXPECT_EQ(list.Firmwares, nullptr);
  }
  EXPECT_EQ(client().statements, std::vector<std::string>(4, kHardwareQuery));
}

TEST_F(ComponentList, IsEmptyAfterAFailure) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure, true), kFailure},
      {Answer::failing(kFailure), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
      {Answer{.rows = {Row("read")}, .end = kFailure, .row_count = 2}, kFailure}};
  _ZYMDB_PCI_Firmware own{};
  for (const auto& [each, status] : cases) {
    list_ = {5, &own};
    answer(each);
    EXPECT_EQ(list(), status);
    EXPECT_EQ(list_.Count, 0u);
    EXPECT_EQ(list_.Firmwares, nullptr);
  }
}

TEST_F(ComponentList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_firmware_list(12, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_firmware_list(12, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_adapter_firmware_list(12, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(12, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

_ZYMDB_PCI_Firmware component(const char* software_id, uint16_t classification) {
  _ZYMDB_PCI_Firmware component{};
  std::strcpy(component.FirmwareName, "name");
  std::strcpy(component.VersionString, "1.2");
  std::strcpy(component.Description, "description");
  std::strcpy(component.ReleaseDate, "2024-05-01");
  std::strcpy(component.Manufacture, "maker");
  std::strcpy(component.SoftwareID, software_id);
  component.Classification = classification;
  return component;
}

constexpr char kFind[] =
    "query Firmwares [_id] where HardwareTypeId=3 AND HardwareId=700 AND SoftwareID=\"8086\" AND "
    "Classification=32773";
constexpr char kUpdate[] =
    "update Firmwares {ReleaseDate=text:2024-05-01, VersionString=text:1.2} where HardwareTypeId=3 AND "
    "HardwareId=700 AND SoftwareID=\"8086\" AND Classification=32773";
constexpr char kInsert[] =
    "insert Firmwares {FirmwareName=text:name, Manufacture=text:maker, ReleaseDate=text:2024-05-01, "
    "Description=text:description, Classification=int:32773, VersionString=text:1.2, SoftwareID=text:8086, "
    "HardwareTypeId=int:3, HardwareId=int:700}";

class AdapterComponents : public scripted::ClientTest {
 protected:
  // The adapter's functions: those that the adapter's rows tell, as out-of-band managed ones do.
  void given_functions(std::vector<unsigned> keys) {
    std::vector<Row> rows;
    for (const unsigned key : keys) rows.emplace_back(Row(key, 1));
    answer(rows);
  }
  void given_hardware(unsigned id = 700) { answer({Row(id, 3)}); }
  void given_row(int64_t id) { answer({Row(id)}); }
  void given_no_row() { answer(std::vector<Row>{}); }

  int write() { return zymdb_update_adapter_firmware_list(5, &list_); }
  // What was written to or looked for in the table of components.
  std::vector<std::string> component_statements() const {
    std::vector<std::string> statements;
    for (const std::string& statement : client().statements)
      if (statement.find(" Firmwares ") != std::string::npos) statements.push_back(statement);
    return statements;
  }

  std::vector<_ZYMDB_PCI_Firmware> records_{component("8086", 0x8005)};
  _ZYMDB_PCI_Firmware_List list_{1, records_.data()};
};

TEST_F(AdapterComponents, ThatAreNewAreInsertedWholeAndTold) {
  given_functions({12});
  given_hardware();
  given_no_row();
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIAdapter [DISTINCT PCIFuncKey,AIMSupported] where PCIKey=5",
                          kHardwareQuery, kFind, kInsert));
  EXPECT_THAT(client().log,
              ElementsAre("info: zymdb_update_adapter_firmware_list: insert new firmware row, softerwareID "
                          "8086 classfication 8005 hwtype 3 hwid 2bc"));
}

TEST_F(AdapterComponents, ThatAreThereGetTheirDateAndVersionAnew) {
  given_functions({12});
  given_hardware();
  given_row(41);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(component_statements(), ElementsAre(kFind, kUpdate));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(AdapterComponents, TheValueSetIsHadFirstAndClearedForEveryRecord) {
  given_functions({12});
  given_hardware();
  given_no_row();
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().calls.front(), "get_content_values");
  EXPECT_EQ(std::count(client().calls.begin(), client().calls.end(), "clear"), 2);  // anew for the insert
  EXPECT_EQ(client().calls.back(), "free_content_values");
}

TEST_F(AdapterComponents, AreWrittenForEveryFunctionInOrder) {
  records_ = {component("a", 1), component("b", 2)};
  list_ = {2, records_.data()};
  given_functions({12, 13});
  for (const unsigned hardware : {700u, 701u}) {
    given_hardware(hardware);
    given_row(1);
    given_row(2);
  }
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  std::vector<std::string> updates;
  for (const std::string& statement : component_statements())
    if (statement.starts_with("update")) updates.push_back(statement.substr(statement.find("HardwareId")));
  EXPECT_THAT(updates, ElementsAre("HardwareId=700 AND SoftwareID=\"a\" AND Classification=1",
                                   "HardwareId=700 AND SoftwareID=\"b\" AND Classification=2",
                                   "HardwareId=701 AND SoftwareID=\"a\" AND Classification=1",
                                   "HardwareId=701 AND SoftwareID=\"b\" AND Classification=2"));
}

TEST_F(AdapterComponents, TextsAreCutWhereTheirFieldsEnd) {
  std::memset(static_cast<void*>(records_.data()), 'x', sizeof records_[0]);
  records_[0].Classification = 1;
  given_functions({12});
  given_hardware();
  given_no_row();
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  const auto x = [](size_t count) { return std::string(count, 'x'); };
  EXPECT_THAT(
      component_statements(),
      ElementsAre("query Firmwares [_id] where HardwareTypeId=3 AND HardwareId=700 AND SoftwareID=\"" +
                      x(16) + "\" AND Classification=1",
                  "insert Firmwares {FirmwareName=text:" + x(32) + ", Manufacture=text:" + x(32) +
                      ", ReleaseDate=text:" + x(16) + ", Description=text:" + x(128) +
                      ", Classification=int:1, VersionString=text:" + x(32) + ", SoftwareID=text:" + x(16) +
                      ", HardwareTypeId=int:3, HardwareId=int:700}"));
  EXPECT_EQ(records_[0].SoftwareID[16], '\0');
  // What the list operation fills is not looked at.
  EXPECT_EQ(std::string(records_[0].ClassificationString, 65), x(65));
}

TEST_F(AdapterComponents, AFunctionWhoseHardwareIsUnknownIsLeftOut) {
  given_functions({12, 13});
  answer(Answer::failing(kFailure));
  given_hardware();
  given_row(41);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(component_statements(), ElementsAre(kFind, kUpdate));
}

TEST_F(AdapterComponents, TheStatusIsThatOfTheLastFunctionsHardware) {
  given_functions({12, 13});
  given_hardware();
  given_row(41);
  answer(Answer{.end = kFailure});
  EXPECT_EQ(write(), kFailure);
  EXPECT_THAT(component_statements(), ElementsAre(kFind, kUpdate));
}

TEST_F(AdapterComponents, WithoutRecordsOnlyTheHardwareIsLookedUp) {
  list_ = {};
  given_functions({12});
  answer(std::vector<Row>{});
  EXPECT_EQ(write(), ZYM_DB_STATUS_DONE);
  EXPECT_THAT(component_statements(), IsEmpty());
}

TEST_F(AdapterComponents, OfAnAdapterWithoutFunctionsAreNotWritten) {
  answer(Answer::without_result());
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  answer(std::vector<Row>{});
  EXPECT_EQ(write(), ZYM_DB_STATUS_DONE);
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(write(), kFailure);
  EXPECT_THAT(component_statements(), IsEmpty());
}

TEST_F(AdapterComponents, OneThatCannotBeLookedUpIsToldAndLeftOut) {
  records_ = {component("a", 0x8110), component("8086", 0x8005)};
  list_ = {2, records_.data()};
  given_functions({12});
  given_hardware();
  answer(Answer::failing(kFailure));
  given_row(41);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(component_statements().back(), kUpdate);
  EXPECT_EQ(client().log.back(),
            "error: zymdb_update_adapter_firmware_list: query firmwares table failed, softerwareID a "
            "classfication 8110 hwtype 3 hwid 2bc");
}

TEST_F(AdapterComponents, AFailedWriteEndsTheOperation) {
  for (const bool is_new : {false, true}) {
    client().failures = {{{"update", 0}, kFailure}, {{"insert", 0}, kFailure}};
    given_functions({12, 13});
    given_hardware();
    is_new ? given_no_row() : given_row(41);
    EXPECT_EQ(write(), kFailure);
    EXPECT_EQ(component_statements().back(), is_new ? kInsert : kUpdate);
  }
}

TEST_F(AdapterComponents, AValueThatCannotBePutKeepsTheRowFromBeingWritten) {
  client().failures = {{{"put", 1}, kFailure}};
  given_functions({12, 13});
  given_hardware();
  given_row(41);
  EXPECT_EQ(write(), kFailure);
  EXPECT_THAT(component_statements(), ElementsAre(kFind));
}

TEST_F(AdapterComponents, WithoutAValueSetNothingIsLookedUp) {
  client().has_values = false;
  EXPECT_EQ(write(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().statements, IsEmpty());
}

class OneComponent : public scripted::ClientTest {
 protected:
  OneComponent() { system_log().clear(); }
  int write(unsigned hardware = 700) { return zymdb_insert_or_update_firmware_info(hardware, &component_); }

  _ZYMDB_PCI_Firmware component_ = component("15B3A2D4", 0x8006);
};

TEST_F(OneComponent, IsAddressedByItsHardwareAndClassAlone) {
  answer({Row(41)});
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre("query Firmwares [_id] where HardwareId=700 and Classification=32774",
                  "update Firmwares {FirmwareName=text:name, VersionString=text:1.2, "
                  "Description=text:description, ReleaseDate=text:2024-05-01, Classification=uint:32774, "
                  "Manufacture=text:maker, SoftwareID=text:15B3A2D4, HardwareId=uint:700, "
                  "HardwareTypeId=uint:3} where _id=41"));
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(OneComponent, ThatIsNewIsInserted) {
  answer(std::vector<Row>{});
  EXPECT_EQ(write(0xFFFFFFFF), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.front(),
            "query Firmwares [_id] where HardwareId=4294967295 and Classification=32774");
  EXPECT_TRUE(client().statements.back().ends_with("HardwareId=uint:4294967295, HardwareTypeId=uint:3}"));
}

TEST_F(OneComponent, ThatCannotBeWrittenIsToldToTheSystemLog) {
  const std::map<std::pair<std::string, int>, int> failures[] = {
      {{{"query", 0}, kFailure}}, {{{"insert", 0}, kFailure}}, {{{"put", 3}, kFailure}}};
  for (const auto& each : failures) {
    scripted::client() = {};
    client().failures = each;
    answer(std::vector<Row>{});
    EXPECT_EQ(write(), ZYM_DB_STATUS_ERROR);
    EXPECT_EQ(system_log().back(),
              "14: zymdb_insert_or_update_firmware_info: Failed to insert/update PCI FW info, "
              "where:HardwareId=700 and Classification=32774\n\n");
  }
  EXPECT_EQ(system_log().size(), 3u);
}

TEST_F(OneComponent, NeedsARecordAndThenAValueSet) {
  client().has_values = false;
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().calls, IsEmpty());
  EXPECT_EQ(write(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(system_log(), IsEmpty());
}

}  // namespace
