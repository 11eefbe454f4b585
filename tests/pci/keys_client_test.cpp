// The key operations' exact calls, and what they answer to every failure of the client.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;
constexpr uint32_t kBillions = 0xFFFFFFFF;  // of rows: more than there is memory for

template <class List>
class KeyListTest : public scripted::ClientTest {
 protected:
  ~KeyListTest() override { std::free(list_.keys); }
  std::vector<uint32_t> keys() const { return {list_.keys, list_.keys + list_.count}; }
  bool is_empty() const { return list_.count == 0 && list_.keys == nullptr; }

  List list_{0, nullptr};
};

class PciKeys : public KeyListTest<_ZYMDB_PCI_Key_List> {};

TEST_F(PciKeys, AreAskedForWithOneWholeStatement) {
  answer({Row(1), Row(2)});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_keys(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_THAT(keys(), ElementsAre(1, 2));
  EXPECT_EQ(zymdb_get_pci_keys(&list_, "Location=1"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("raw_query select DevKey from PCIs group by DevKey; size 160",
                          "raw_query select DevKey from PCIs where Location=1 group by DevKey; size 160"));
}

TEST_F(PciKeys, OfDpusAreThoseOfOneVendorAndDevice) {
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_dpu_keys(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("raw_query select DevKey from PCIs where VendorId=5555 and DeviceId=41686 group by "
                          "DevKey; size 160"));
}

TEST_F(PciKeys, ALongFilterIsCutWithTheStatement) {
  answer(Answer::failing(kFailure));
  zymdb_get_pci_keys(&list_, std::string(300, 'x').c_str());
  EXPECT_EQ(client().statements.front(),
            "raw_query select DevKey from PCIs where " + std::string(129, 'x') + " size 160");
}

TEST_F(PciKeys, TheArgumentIsJudgedBeforeTheDatabaseIsLookedFor) {
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_keys(nullptr, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_dpu_keys(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_pci_keys(&list_, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_dpu_keys(&list_), ZYM_DB_STATUS_NO_DB);
}

TEST_F(PciKeys, WithoutKeysTheArrayIsAsTheCallerLeftIt) {
  uint32_t own = 0;
  const Answer answers[] = {Answer{}, Answer::without_result(), Answer::failing(kFailure, true),
                            Answer{.row_count = kBillions}};
  const int statuses[] = {ZYM_DB_STATUS_OK, ZYM_DB_STATUS_OK, kFailure, ZYM_DB_STATUS_OK};
  for (int i = 0; i < 4; ++i) {
    _ZYMDB_PCI_Key_List list{5, &own};
    answer(answers[i]);
    EXPECT_EQ(zymdb_get_pci_keys(&list, nullptr), statuses[i]);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.keys, &own);
  }
}

TEST_F(PciKeys, AnUnreadableKeyIsListedAsZero) {
  answer({Row(1), Row(nullptr), Row(3)});
  EXPECT_EQ(zymdb_get_pci_keys(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_THAT(keys(), ElementsAre(1, 0, 3));
}

TEST_F(PciKeys, EveryRowIsListedEvenBeyondTheRowCount) {
  answer(Answer{.rows = {Row(1), Row(2), Row(3), Row(4)}, .row_count = 2});
  EXPECT_EQ(zymdb_get_pci_keys(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_THAT(keys(), ElementsAre(1, 2, 3, 4));
}

TEST_F(PciKeys, AFailedStepEndsTheListWithoutAWord) {
  answer(Answer{.rows = {Row(1)}, .end = kFailure, .row_count = 5});
  EXPECT_EQ(zymdb_get_pci_keys(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_THAT(keys(), ElementsAre(1));
}

class FunctionKeys : public KeyListTest<_ZYMDB_PCI_FunKey_List> {
 protected:
  int list_by_filter(const char* filter, _ZYMDB_PCI_FunKey_List* list) {
    std::string text(filter);
    return zymdb_get_pci_funkey_list_by_filter(text.data(), list);
  }
};

TEST_F(FunctionKeys, AreAskedForWithTheCallersFilter) {
  answer({Row(5), Row(6)});
  EXPECT_EQ(list_by_filter("BusNo=3", &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("query PCIs [FunKey] where BusNo=3"));
  EXPECT_THAT(keys(), ElementsAre(5, 6));
}

TEST_F(FunctionKeys, OfASlotAreFilteredByItsAddress) {
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(1, 3, &list_), ZYM_DB_STATUS_OK);
  std::free(list_.keys);
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(-2147483647, -2147483647, &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [FunKey] where Location=1 AND SlotNo=3",
                          "query PCIs [FunKey] where Location=-2147483647 AND SlotNo=-2147483647"));
}

TEST_F(FunctionKeys, AMissingFilterCountsAsAMissingDatabase) {
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_filter(nullptr, &list_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_filter(nullptr, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(list_by_filter("1", nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(1, 1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(list_by_filter("1", nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(1, 1, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(FunctionKeys, AreEmptyAfterEveryFailure) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{.rows = {Row(1)}, .end = kFailure, .row_count = 3}, kFailure},
      {Answer{.row_count = kBillions}, ZYM_DB_STATUS_NO_MEMORY},
  };
  for (const auto& [failing, status] : cases) {
    uint32_t own = 0;
    _ZYMDB_PCI_FunKey_List list{5, &own};
    answer(failing);
    EXPECT_EQ(list_by_filter("1", &list), status);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.keys, nullptr);
  }
}

TEST_F(FunctionKeys, UnreadableKeysAreLeftOutAndTheRowCountIsTheLimit) {
  answer(Answer{.rows = {Row(1), Row(nullptr), Row(3), Row(4)}, .row_count = 2});
  EXPECT_EQ(list_by_filter("1", &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(keys(), ElementsAre(1, 3));
}

class DeviceFunctionKeys : public FunctionKeys {};

TEST_F(DeviceFunctionKeys, OfAManagedAdapterAreItsOwnRows) {
  for (int type : {1, 2, 3}) {
    client().statements.clear();
    answer({Row(5, type), Row(6, 0), Row(nullptr, 1)});
    EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), ZYM_DB_STATUS_OK);
    EXPECT_THAT(keys(), ElementsAre(5, 6));
    EXPECT_THAT(client().statements,
                ElementsAre("query PCIAdapter [DISTINCT PCIFuncKey,AIMSupported] where PCIKey=7"));
    std::free(list_.keys);
    list_ = {};
  }
}

TEST_F(DeviceFunctionKeys, OfAnyOtherAdapterAreTheFirstAloneWhenTheDeviceHasIt) {
  for (int type : {0, 4, 255}) {
    client().statements.clear();
    answer({Row(5, type), Row(6, type)});
    answer({Row(5)});
    EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), ZYM_DB_STATUS_OK);
    EXPECT_THAT(keys(), ElementsAre(5));
    EXPECT_EQ(client().statements.back(), "query PCIs [FunKey] where DevKey=7 and FunKey=5");
    std::free(list_.keys);
    list_ = {};
  }
}

TEST_F(DeviceFunctionKeys, TheAdaptersResultIsFreedBeforeTheFunctionIsAskedFor) {
  answer({Row(5, 0)});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().calls,
      ElementsAre("query PCIAdapter [DISTINCT PCIFuncKey,AIMSupported] where PCIKey=7", "step", "int 0",
                  "uchar 1", "free_result", "query PCIs [FunKey] where DevKey=7 and FunKey=5", "row_count",
                  "step", "free_result"));
}

TEST_F(DeviceFunctionKeys, AnswerTheStepsCodeWithoutAnAdapterRow) {
  answer(std::vector<Row>{});
  answer(Answer{.end = kFailure});
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), kFailure);
}

TEST_F(DeviceFunctionKeys, AnswerBothReadStatusesJoined) {
  client().failures[{"int", 0}] = 4;
  client().failures[{"uchar", 0}] = 3;
  answer({Row(5, 1)});
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), 7);
  answer({Row(5, nullptr)});
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), ZYM_DB_STATUS_ERROR);
  EXPECT_TRUE(is_empty());
}

TEST_F(DeviceFunctionKeys, AreEmptyAfterEveryFailure) {
  const Answer adapter = Answer::of({Row(5, 0)});
  const Answer managed = {.rows = {Row(5, 1)}, .end = kFailure, .row_count = 3};
  const Answer too_many = {.rows = {Row(5, 1)}, .row_count = kBillions};
  struct Case {
    std::vector<Answer> answers;
    int status;
  } const cases[] = {
      {{Answer::failing(kFailure)}, kFailure},
      {{Answer::failing(kFailure, true)}, kFailure},
      {{Answer::without_result()}, ZYM_DB_STATUS_OK},
      {{managed}, kFailure},
      {{too_many}, ZYM_DB_STATUS_NO_MEMORY},
      {{adapter, Answer::failing(kFailure)}, kFailure},
      {{adapter, Answer::without_result()}, ZYM_DB_STATUS_OK},
      {{adapter, Answer{.end = kFailure}}, kFailure},
      {{adapter, Answer{.row_count = kBillions}}, ZYM_DB_STATUS_NO_MEMORY},
  };
  for (const Case& failing : cases) {
    uint32_t own = 0;
    list_ = {5, &own};
    for (const Answer& each : failing.answers) answer(each);
    EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), failing.status);
    EXPECT_TRUE(is_empty());
  }
}

TEST_F(DeviceFunctionKeys, AFailedResetIsPassedOn) {
  client().failures[{"reset", 0}] = kFailure;
  answer({Row(5, 1)});
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, &list_), kFailure);
  EXPECT_TRUE(is_empty());
}

TEST_F(DeviceFunctionKeys, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_funkey_list(7, nullptr), ZYM_DB_STATUS_NO_DB);
}

class FunctionLookups : public scripted::ClientTest {
 protected:
  unsigned value_ = 99;
  unsigned other_ = 99;
  unsigned char byte_ = 99;
  char name_[8] = "before";
};

TEST_F(FunctionLookups, BindTheFunctionKey) {
  for (int i = 0; i < 3; ++i) answer(std::vector<Row>{});
  zymdb_get_pci_function_type(0xFFFFFFFF, &value_);
  zymdb_get_pci_function_oob_type(8, &value_);
  zymdb_get_pci_cardname_by_funkey(9, name_, sizeof name_);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [FunType] where FunKey=? with 3/0/1:4294967295",
                          "query PCIAdapter [AIMSupported] where PCIFuncKey=? with 3/0/1:8",
                          "query PCIAdapter [CardName] where PCIFuncKey=? with 3/0/1:9"));
}

TEST_F(FunctionLookups, OfAnUnknownFunctionAnswerTheStepsCodeAndThePreset) {
  for (int i = 0; i < 3; ++i) answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_function_type(1, &value_), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(value_, 23u);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(1, &value_), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(value_, 0u);
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, sizeof name_), ZYM_DB_STATUS_DONE);
  EXPECT_STREQ(name_, "before");
}

TEST_F(FunctionLookups, AnswerTheReadsStatus) {
  for (int i = 0; i < 3; ++i) answer({Row(nullptr)});
  EXPECT_EQ(zymdb_get_pci_function_type(1, &value_), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(value_, 23u);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(1, &value_), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(value_, 0u);
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, sizeof name_), ZYM_DB_STATUS_ERROR);
  EXPECT_STREQ(name_, "");
}

TEST_F(FunctionLookups, PassFailuresOnAndAnswerZeroWithoutAResult) {
  for (int i = 0; i < 3; ++i) answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_pci_function_type(1, &value_), kFailure);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(1, &value_), kFailure);
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, sizeof name_), kFailure);
  for (int i = 0; i < 3; ++i) answer(Answer::without_result());
  EXPECT_EQ(zymdb_get_pci_function_type(1, &value_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(1, &value_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, sizeof name_), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(name_, "before");
}

TEST_F(FunctionLookups, RefuseMissingOutputsOnceThereIsADatabase) {
  for (int expected : {ZYM_DB_STATUS_INVALID_PARAM, ZYM_DB_STATUS_NO_DB}) {
    EXPECT_EQ(zymdb_get_pci_function_type(1, nullptr), expected);
    EXPECT_EQ(zymdb_get_pci_function_oob_type(1, nullptr), expected);
    EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, nullptr, 8), expected);
    EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, 0), expected);
    EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(1, name_, -1), expected);
    EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(1, nullptr, &byte_), expected);
    EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(1, &value_, nullptr), expected);
    client().has_database = false;
  }
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(FunctionLookups, HardwareIdAndTypeAreReadAsOneRow) {
  answer({Row(77, 0x103)});
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(5, &value_, &byte_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value_, 77u);
  EXPECT_EQ(byte_, 3);
  EXPECT_THAT(client().statements, ElementsAre("query PCIs [HardwareId,HardwareTypeId] where FunKey=5"));
}

TEST_F(FunctionLookups, UnreadableHardwareIdAndTypeAreZero) {
  answer({Row(nullptr, nullptr)});
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(5, &value_, &byte_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value_, 0u);
  EXPECT_EQ(byte_, 0);
}

TEST_F(FunctionLookups, HardwareIdOfAnUnknownFunctionAnswersTheStepsCode) {
  answer(std::vector<Row>{});
  answer(Answer{.end = kFailure});
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(5, &value_, &byte_), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(5, &value_, &byte_), kFailure);
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(5, &value_, &byte_), kFailure);
  EXPECT_EQ(value_, 99u);
  EXPECT_EQ(byte_, 99);
}

TEST_F(FunctionLookups, AHardwareFilterPrintsTheKeyAsASignedNumber) {
  answer(std::vector<Row>{});
  zymdb_get_pci_hardwareidtype_by_funkey(0x80000000, &value_, &byte_);
  EXPECT_EQ(client().statements.front(), "query PCIs [HardwareId,HardwareTypeId] where FunKey=-2147483648");
}

class Identifiers : public scripted::ClientTest {
 protected:
  int read() { return zymdb_get_pci_id_by_funkey(5, &ids_[0], &ids_[1], &ids_[2], &ids_[3]); }
  unsigned short ids_[4] = {1, 2, 3, 4};
};

TEST_F(Identifiers, AreReadSixteenBitsWide) {
  answer({Row(0x15B3, 0xA2D6, 0x115B3, 0xA2D4)});
  EXPECT_EQ(read(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids_, ElementsAre(0x15B3, 0xA2D6, 0x15B3, 0xA2D4));
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [VendorId,DeviceId,SubVendorId,SubDeviceId] where FunKey=5"));
}

TEST_F(Identifiers, ThatCannotBeReadLeaveTheirOutputs) {
  answer({Row(7, nullptr, 8, nullptr)});
  EXPECT_EQ(read(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids_, ElementsAre(7, 2, 8, 4));
}

TEST_F(Identifiers, OfAnUnknownFunctionAreUntouchedAndNoFailure) {
  answer(std::vector<Row>{});
  answer(Answer::without_result());
  EXPECT_EQ(read(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(read(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids_, ElementsAre(1, 2, 3, 4));
}

TEST_F(Identifiers, PassAFailedQueryOn) {
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(read(), kFailure);
  EXPECT_THAT(ids_, ElementsAre(1, 2, 3, 4));
}

TEST_F(Identifiers, RefuseEveryMissingOutputOnceThereIsADatabase) {
  unsigned short id;
  for (int expected : {ZYM_DB_STATUS_INVALID_PARAM, ZYM_DB_STATUS_NO_DB}) {
    EXPECT_EQ(zymdb_get_pci_id_by_funkey(5, nullptr, &id, &id, &id), expected);
    EXPECT_EQ(zymdb_get_pci_id_by_funkey(5, &id, nullptr, &id, &id), expected);
    EXPECT_EQ(zymdb_get_pci_id_by_funkey(5, &id, &id, nullptr, &id), expected);
    EXPECT_EQ(zymdb_get_pci_id_by_funkey(5, &id, &id, &id, nullptr), expected);
    client().has_database = false;
  }
}

}  // namespace
