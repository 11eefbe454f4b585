// The settings queries' exact calls, and what they answer to every failure of the client.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <span>

#include "pci_settings/setting.h"
#include "support/named_pipe.h"
#include "support/parsing_marker.h"
#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;
constexpr uint16_t kUntouched = 0xABCD;

class SettingQueries : public scripted::ClientTest {
 protected:
  ParsingMarker marker_;
};

TEST_F(SettingQueries, RefuseToReadWhileSettingsAreBeingParsed) {
  marker_.set();
  char ids[16] = "as it was";
  uint16_t number = kUntouched;
  EXPECT_EQ(zymdb_get_pci_configID(1, ids), ZYMDB_PCI_SETTING_PARSING);
  EXPECT_EQ(zymdb_get_pci_configSet_count(1, nullptr, &number), ZYMDB_PCI_SETTING_PARSING);
  EXPECT_EQ(zymdb_get_pci_configSet_list(1, nullptr, 0, nullptr, 0, &number), ZYMDB_PCI_SETTING_PARSING);
  EXPECT_THAT(client().calls, IsEmpty());
  EXPECT_STREQ(ids, "as it was");
  EXPECT_EQ(number, kUntouched);
}

TEST_F(SettingQueries, LookForTheDatabaseBeforeTheMarker) {
  marker_.set();
  client().has_database = false;
  char ids[16] = "";
  uint16_t number = 0;
  EXPECT_EQ(zymdb_get_pci_configID(1, ids), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_configSet_count(1, nullptr, &number), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_configSet_list(1, nullptr, 0, nullptr, 0, &number), ZYM_DB_STATUS_NO_DB);
}

TEST_F(SettingQueries, TakeANamedPipeForTheMarkerAndDoNotWaitForIt) {
  const NamedPipe pipe(ParsingMarker::kPath);
  uint16_t number = kUntouched;
  EXPECT_EQ(pipe.answer_of([&] { return zymdb_get_pci_configSet_count(1, nullptr, &number); }),
            ZYMDB_PCI_SETTING_PARSING);
}

TEST(FileExists, WhenItCanBeOpenedForReading) {
  const std::string folder = testing::TempDir() + "zymdb-fileexist-" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  const std::string file = folder + "/file";
  EXPECT_FALSE(fileexist(file));
  EXPECT_FALSE(fileexist(""));
  EXPECT_FALSE(fileexist(folder + "/missing/file"));
  std::ofstream(file).close();
  EXPECT_TRUE(fileexist(file));
  EXPECT_TRUE(fileexist(folder));
  chmod(file.c_str(), 0);
  EXPECT_EQ(fileexist(file), access(file.c_str(), R_OK) == 0) << "may be read by root alone";
  std::filesystem::remove_all(folder);
}

class SettingCount : public SettingQueries {
 protected:
  // The row of the function: all of its columns with this vendor.
  void given_function_of_vendor(int vendor) { answer({Row(1, 0, 0, 0, 0, 0, vendor)}); }

  int count(const char* prefix = nullptr) { return zymdb_get_pci_configSet_count(7, prefix, &count_); }

  uint16_t count_ = kUntouched;
};

TEST_F(SettingCount, FiltersByFunctionAndPrefix) {
  const std::pair<const char*, const char*> cases[] = {
      {nullptr, "PfaKey=7"},
      {"", "PfaKey=7 AND SettingID like '%'"},
      {"A.", "PfaKey=7 AND SettingID like 'A.%'"},
      {"%d'", "PfaKey=7 AND SettingID like '%d'%'"},
  };
  for (const auto& [prefix, filter] : cases) {
    given_function_of_vendor(0x8086);
    answer({Row(1), Row(2), Row(3)});
    EXPECT_EQ(count(prefix), ZYM_DB_STATUS_OK);
    EXPECT_EQ(count_, 3u);
    EXPECT_EQ(client().statements.back(), std::string("query PCISetting [_id] where ") + filter);
  }
}

TEST_F(SettingCount, PrintsTheKeyAsASignedNumber) {
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_configSet_count(0x80000000, nullptr, &count_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(), "query PCISetting [_id] where PfaKey=-2147483648");
}

TEST_F(SettingCount, CutsTheFilterAt127Characters) {
  given_function_of_vendor(1);
  answer(Answer::failing(kFailure));
  EXPECT_EQ(count(std::string(200, 'p').c_str()), kFailure);
  EXPECT_EQ(client().statements.back(),
            "query PCISetting [_id] where PfaKey=7 AND SettingID like '" + std::string(98, 'p'));
}

TEST_F(SettingCount, OfTheVendorWithoutSettingsIsZeroUnasked) {
  given_function_of_vendor(0x1000);
  EXPECT_EQ(count(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(count_, 0u);
  EXPECT_THAT(client().statements, ElementsAre(testing::EndsWith("where FunKey=? with 3/0/1:7")));
}

TEST_F(SettingCount, OfAnUnknownFunctionIsTaken) {
  answer(std::vector<Row>{});
  answer({Row(1)});
  EXPECT_EQ(count(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(count_, 1u);
}

TEST_F(SettingCount, KeepsSixteenBits) {
  given_function_of_vendor(1);
  answer(Answer{.row_count = 65538});
  EXPECT_EQ(count(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(count_, 2u);
}

TEST_F(SettingCount, IsUntouchedWhenAQueryFailsOrHasNoResult) {
  answer(Answer::failing(kFailure));
  EXPECT_EQ(count(), kFailure);
  for (const auto& [failing, status] :
       {std::pair{Answer::failing(78), 78}, std::pair{Answer::failing(79, true), 79},
        std::pair{Answer::without_result(), int{ZYM_DB_STATUS_OK}}}) {
    given_function_of_vendor(1);
    answer(failing);
    EXPECT_EQ(count(), status);
  }
  EXPECT_EQ(count_, kUntouched);
}

class SettingList : public SettingQueries {
 protected:
  // A row of all columns, as filled_setting() stores it.
  static Row row(int64_t flags) {
    Setting setting = filled_setting();
    Row row;
    for (const zymdb::Column& column : zymdb::kSettingColumns) {
      const char* const field = field_of(setting, column);
      uint32_t number;
      std::memcpy(&number, field, sizeof number);
      row.push_back(column.reading == zymdb::Reading::kText ? Row::cell(field) : Row::cell(number));
    }
    row[0] = flags;
    return row;
  }

  int list(uint16_t flagged_only, unsigned expected) {
    return zymdb_get_pci_configSet_list(7, "A.", expected, records_.data(), flagged_only, &filled_);
  }

  // By value: the record is packed.
  uint32_t flags(size_t slot) const { return records_[slot].Flags; }

  std::vector<Setting> records_{5};
  uint16_t filled_ = kUntouched;
};

TEST_F(SettingList, AsksForThirtyColumns) {
  answer(std::vector<Row>{});
  EXPECT_EQ(list(0, 0), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 0u);
  EXPECT_THAT(
      client().statements,
      ElementsAre("query PCISetting [Flags,GroupName,SettingID,PfaKey,CurrentValue,PendingValue,SuppressIf,"
                  "GrayIf,GroupID,GroupSuppressIf,GroupGrayIf,Mriname,ShortDesc,FullDesc,Type,SettingName,"
                  "Mininstances,Maxinstances,Defvalue,Mfg_default,Defaultaction,RecordId,Minim,Maxim,Step,"
                  "Mins,Maxs,Pattern,Numchoices,Choices] where PfaKey=7 AND SettingID like 'A.%'"));
}

TEST_F(SettingList, ReadsEachFieldWithItsOwnSize) {
  answer({row(2)});
  EXPECT_EQ(list(0, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 1u);
  const Setting expected = filled_setting();
  EXPECT_EQ(std::memcmp(&records_[0], &expected, sizeof expected), 0);
  EXPECT_THAT(
      client().calls,
      ElementsAre(testing::StartsWith("query"), "row_count", "step", "uint 0", "text 1 size 257",
                  "text 2 size 129", "uint 3", "text 4 size 257", "text 5 size 257", "text 6 size 1025",
                  "text 7 size 1025", "text 8 size 257", "text 9 size 1025", "text 10 size 1025",
                  "text 11 size 65", "text 12 size 129", "text 13 size 257", "uint 14", "text 15 size 65",
                  "uint 16", "uint 17", "text 18 size 65", "text 19 size 65", "text 20 size 65",
                  "text 21 size 65", "uint 22", "uint 23", "uint 24", "uint 25", "uint 26",
                  "text 27 size 129", "uint 28", "text 29 size 1025", "step", "free_result"));
}

TEST_F(SettingList, AnUnreadableFieldIsZeroOrEmpty) {
  std::memset(records_.data(), 0x55, sizeof(Setting));
  Row unreadable = row(2);
  for (size_t column = 1; column < unreadable.size(); ++column) unreadable[column] = nullptr;
  answer({unreadable});
  EXPECT_EQ(list(0, 1), ZYM_DB_STATUS_OK);
  for (const zymdb::Column& column : std::span(zymdb::kSettingColumns).subspan(1)) {
    const char* const field = field_of(records_[0], column);
    const size_t size = column.reading == zymdb::Reading::kNumber ? column.size : 1;
    EXPECT_EQ(std::string(field, size), std::string(size, '\0')) << column.name;
  }
}

TEST_F(SettingList, ARowWithoutFlagsIsLeftOutAndItsSlotReused) {
  records_[1].Flags = 0x99;
  Row unreadable = row(2);
  unreadable[0] = nullptr;
  answer({unreadable, row(4), unreadable});
  EXPECT_EQ(list(0, 3), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 1u);
  EXPECT_EQ(flags(0), 4u);
  EXPECT_EQ(flags(1), 0x99u) << "a read that fails leaves it";
}

TEST_F(SettingList, FlaggedOnlyKeepsTheRowsWithBitOne) {
  const std::vector<Row> rows = {row(1), row(2), row(0), row(7), row(0xFFFFFFFD)};
  answer(rows);
  EXPECT_EQ(list(1, 5), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 2u);
  EXPECT_EQ(flags(0), 2u);
  EXPECT_EQ(flags(1), 7u);
  EXPECT_EQ(flags(2), 0xFFFFFFFDu) << "the flags of a row left out stand in the next free slot";
  EXPECT_STREQ(records_[2].SettingID, "");
}

TEST_F(SettingList, OfAnotherCountThanExpectedFillsNothing) {
  for (const unsigned expected : {0u, 2u, 4u, 0xFFFFFFFFu}) {
    answer({row(2), row(2), row(2)});
    EXPECT_EQ(list(0, expected), ZYMDB_PCI_SETTING_COUNT_MISMATCH) << expected;
  }
  EXPECT_EQ(filled_, kUntouched);
  EXPECT_STREQ(records_[0].SettingID, "");
}

TEST_F(SettingList, NeverFillsMoreThanExpected) {
  answer(Answer{.rows = {row(2), row(3), row(4)}, .row_count = 2});
  EXPECT_EQ(list(0, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 2u);
  EXPECT_STREQ(records_[2].SettingID, "");
}

TEST_F(SettingList, StandsAsReadWhenAStepFails) {
  answer(Answer{.rows = {row(2)}, .end = kFailure, .row_count = 3});
  EXPECT_EQ(list(0, 3), ZYM_DB_STATUS_OK);
  EXPECT_EQ(filled_, 1u);
}

TEST_F(SettingList, IsUntouchedWhenTheQueryFailsOrHasNoResult) {
  for (const auto& [failing, status] :
       {std::pair{Answer::failing(kFailure), kFailure}, std::pair{Answer::failing(kFailure, true), kFailure},
        std::pair{Answer::without_result(), int{ZYM_DB_STATUS_OK}}}) {
    answer(failing);
    EXPECT_EQ(list(0, 5), status);
    EXPECT_EQ(filled_, kUntouched);
  }
}

}  // namespace
