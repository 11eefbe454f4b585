// The record helpers on the embedded database.
#include "support/inventory.h"

namespace {

class RecordHelpers : public InventoryTest {
 protected:
  RecordHelpers() : handle_(get_dmdb_handle()), values_(zym_db_get_content_values(handle_)) {}
  ~RecordHelpers() override { zym_db_free_content_values(values_); }

  static std::string slots() { return rows("NCSIPackageID", {"SlotNo", "PackageID1"}); }

  _zym_db_handle_t* handle_;
  zym_db_content_values_t* values_;
};

TEST_F(RecordHelpers, FindTellsTheFirstMatchingRow) {
  given("NCSIPackageID", {{"SlotNo", 1}});
  const int64_t id = given("NCSIPackageID", {{"SlotNo", 2}});
  EXPECT_EQ(find_db_record(handle_, "NCSIPackageID", "SlotNo=2"), id);
  EXPECT_EQ(find_db_record(handle_, "NCSIPackageID", "SlotNo=3"), 0);
  EXPECT_EQ(find_db_record(handle_, "NCSIPackageID", nullptr), -1);
  EXPECT_EQ(find_db_record(handle_, "NoSuchTable", "SlotNo=3"), -1);
}

TEST_F(RecordHelpers, UpdateWithNoMatchingRowWritesNothing) {
  given("NCSIPackageID", {{"SlotNo", 1}, {"PackageID1", 5}});
  zym_db_content_put_uint(values_, "PackageID1", 6);
  EXPECT_EQ(update_db_record(handle_, "NCSIPackageID", "SlotNo=2", values_, nullptr), 0);
  EXPECT_EQ(slots(), "1|5\n");
}

TEST_F(RecordHelpers, UpdateWritesTheLocatedRowAlone) {
  const int64_t id = given("NCSIPackageID", {{"SlotNo", 1}, {"PackageID1", 5}});
  given("NCSIPackageID", {{"SlotNo", 1}, {"PackageID1", 7}});
  zym_db_content_put_uint(values_, "PackageID1", 6);
  EXPECT_EQ(update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_, nullptr), id);
  EXPECT_EQ(slots(), "1|6\n1|7\n");
}

TEST_F(RecordHelpers, AnExcludingFilterWritesNothingAndStillAnswersTheId) {
  const int64_t id = given("NCSIPackageID", {{"SlotNo", 1}, {"PackageID1", 5}});
  zym_db_content_put_uint(values_, "PackageID1", 6);
  EXPECT_EQ(update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_, "PackageID1!=5"), id);
  EXPECT_EQ(slots(), "1|5\n");
  EXPECT_EQ(update_db_record(handle_, "NCSIPackageID", "SlotNo=1", values_, "PackageID1!=6"), id);
  EXPECT_EQ(slots(), "1|6\n");
}

TEST_F(RecordHelpers, InsertOrUpdateInsertsOnceAndUpdatesThen) {
  zym_db_content_put_uint(values_, "SlotNo", 4);
  zym_db_content_put_uint(values_, "PackageID1", 1);
  const int64_t id = insert_or_update_db_record(handle_, "NCSIPackageID", "SlotNo=4", values_, nullptr);
  EXPECT_GE(id, 1);
  zym_db_content_put_uint(values_, "PackageID1", 2);
  EXPECT_EQ(insert_or_update_db_record(handle_, "NCSIPackageID", "SlotNo=4", values_, nullptr), id);
  EXPECT_EQ(slots(), "4|2\n");
}

TEST_F(RecordHelpers, InsertOrUpdateWhoseLookupFailsInsertsNothing) {
  zym_db_content_put_uint(values_, "SlotNo", 4);
  EXPECT_EQ(insert_or_update_db_record(handle_, "NCSIPackageID", "SlotNo=(", values_, nullptr), -1);
  EXPECT_EQ(slots(), "");
}

TEST_F(RecordHelpers, DeleteRemovesWhatMatchesAndWithoutAFilterEverything) {
  for (int slot : {1, 2, 3}) given("NCSIPackageID", {{"SlotNo", slot}, {"PackageID1", 0}});
  const _zym_db_param_t two{3, 0, 1, 2};
  EXPECT_EQ(delete_db_record(handle_, "NCSIPackageID", "SlotNo=?", &two, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(slots(), "1|0\n3|0\n");
  EXPECT_EQ(delete_db_record(handle_, "NCSIPackageID", nullptr, nullptr, 0), ZYM_DB_STATUS_OK);
  EXPECT_EQ(slots(), "");
}

TEST_F(RecordHelpers, AnEmptyTextIsStoredAsNull) {
  unsigned char empty[] = "";
  unsigned char name[] = "a \"quoted\" 'name'";
  put_text_value(values_, "CardName", name);
  put_text_value(values_, "ConnectorType", empty);
  ASSERT_GE(insert_db_record(handle_, "PCIAdapter", values_), 1);
  EXPECT_EQ(rows("PCIAdapter", {"CardName", "ConnectorType"}), "a \"quoted\" 'name'|NULL\n");
}

TEST_F(RecordHelpers, ANullAwareTermFindsWhatDiffers) {
  unsigned char x[] = "x";
  unsigned char empty[] = "";
  given("PCIAdapter", {{"CardName", nullptr}});
  given("PCIAdapter", {{"CardName", "x"}});
  given("PCIAdapter", {{"CardName", "y"}});
  EXPECT_EQ(rows("PCIAdapter", {"_id"}, get_sql_str("CardName", x).c_str()), "1\n3\n");
  EXPECT_EQ(rows("PCIAdapter", {"_id"}, get_sql_str("CardName", empty).c_str()), "2\n3\n");
}

}  // namespace
