// What hostile texts can and cannot do through the record helpers, in every place that takes a text.
#include <gmock/gmock.h>

#include <filesystem>

#include "support/hostile_texts.h"
#include "support/inventory.h"

namespace {

constexpr const char* kColumns[] = {"SlotNo", "PackageID1"};

class HostileText : public InventoryTest {
 protected:
  HostileText() : handle_(get_dmdb_handle()), values_(zym_db_get_content_values(handle_)) {
    for (int slot : {1, 2}) given("NCSIPackageID", {{"SlotNo", slot}, {"PackageID1", 5}});
    given("PCIAdapter", {{"PCIKey", 7}, {"CardName", "a card"}});
    others_ = others();
  }
  ~HostileText() override {
    // Whatever happened to the named table: nothing else changed, and no file appeared.
    EXPECT_EQ(others(), others_);
    EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile"));
    zym_db_free_content_values(values_);
  }

  static std::string slots() { return rows("NCSIPackageID", {kColumns[0], kColumns[1]}); }
  static std::string others() { return rows("PCIAdapter", {"PCIKey", "CardName"}); }

  _zym_db_handle_t* handle_;
  zym_db_content_values_t* values_;
  std::string others_;
};

TEST_F(HostileText, AsATableNamesNoTable) {
  zym_db_content_put_uint(values_, "SlotNo", 9);
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    for (const std::string& table : {text, "NCSIPackageID" + text, "\"" + text + "\""}) {
      EXPECT_EQ(find_db_record(handle_, table.c_str(), "1"), -1);
      EXPECT_EQ(insert_db_record(handle_, table.c_str(), values_), -1);
      EXPECT_EQ(update_db_record(handle_, table.c_str(), "1", values_, nullptr), -1);
      EXPECT_NE(delete_db_record(handle_, table.c_str(), nullptr, nullptr, 0), ZYM_DB_STATUS_OK);
    }
  }
  EXPECT_EQ(slots(), "1|5\n2|5\n");
}

TEST_F(HostileText, AsAFilterOfALookupSelectsARowOrFails) {
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    for (const std::string& where :
         {text, "SlotNo=" + text, "SlotNo='" + text + "'", "SlotNo=\"" + text + "\""}) {
      const int64_t id = find_db_record(handle_, "NCSIPackageID", where.c_str());
      EXPECT_GE(id, -1);
      EXPECT_LE(id, 2);
    }
  }
  EXPECT_EQ(slots(), "1|5\n2|5\n");
}

// A filter that closes its parenthesis reaches other rows of the table: filters are not escaped, and their
// author may write the table anyway.
TEST_F(HostileText, AsAChangeFilterWritesTheGivenValuesToTheNamedTableAlone) {
  zym_db_content_put_uint(values_, "PackageID1", 6);
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_, text.c_str());
    insert_or_update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_,
                               ("PackageID1!=" + text).c_str());
    EXPECT_THAT(slots(), testing::MatchesRegex("1\\|[56]\n2\\|[56]\n"));
    EXPECT_EQ(others(), others_);
  }
}

TEST_F(HostileText, AsAFilterOfADeleteReachesTheNamedTableAlone) {
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    delete_db_record(handle_, "NCSIPackageID", text.c_str(), nullptr, 0);
    delete_db_record(handle_, "NCSIPackageID", ("SlotNo='" + text + "'").c_str(), nullptr, 0);
    EXPECT_EQ(others(), others_);
  }
}

TEST_F(HostileText, AsAColumnNamesNoColumn) {
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    zym_db_content_clear(values_);
    zym_db_content_put_uint(values_, text.c_str(), 9);
    EXPECT_EQ(insert_db_record(handle_, "NCSIPackageID", values_), -1);
    EXPECT_EQ(update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_, nullptr), -1);
  }
  EXPECT_EQ(slots(), "1|5\n2|5\n");
}

TEST_F(HostileText, AsAValueIsStoredByteForByte) {
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    std::string value = text;
    zym_db_content_clear(values_);
    ASSERT_EQ(put_text_value(values_, "FirmwareName", reinterpret_cast<unsigned char*>(value.data())), 0);
    const int64_t id = insert_db_record(handle_, "Firmwares", values_);
    ASSERT_GE(id, 1);
    zym_db_result_t* result = nullptr;
    const char* const columns[] = {"FirmwareName"};
    ASSERT_EQ(zym_db_query(handle_, "Firmwares", columns, 1, ("_id=" + std::to_string(id)).c_str(), nullptr,
                           0, 0, &result),
              ZYM_DB_STATUS_OK);
    ASSERT_EQ(zym_db_result_step(result), ZYM_DB_STATUS_ROW);
    std::string stored(text.size() + 1, '\0');
    EXPECT_EQ(zym_db_result_column_text(result, 0, stored.data(), static_cast<int>(stored.size())), 0);
    EXPECT_TRUE(stored.c_str() == text);
    zym_db_free_result(result);
  }
}

TEST_F(HostileText, InANullAwareTermSelectsRowsOrFails) {
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    std::string value = text;
    const std::string term = get_sql_str("CardName", reinterpret_cast<unsigned char*>(value.data()));
    const int64_t id = find_db_record(handle_, "PCIAdapter", term.c_str());
    EXPECT_GE(id, -1);
    EXPECT_LE(id, 1);
  }
}

}  // namespace
