// Firmware of embedded devices: exact statements, and the answers to every failure.
#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "support/scripted_client.h"
#include "zymdb_firmware.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class EmbeddedList : public scripted::ClientTest {
 protected:
  ~EmbeddedList() override { std::free(list_.Firmwares); }
  _ZYMDB_Embedded_Firmware_List list_{};
};

TEST_F(EmbeddedList, EachColumnFillsTheFieldOfItsNameCutToItsWidth) {
  answer({Row("device", 0x101, 0x102, 0x103, "0123456789ABCDEFG", 0x10004, 0x105, 0x106, 0x107), Row("b")});
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query EmbeddedDeviceFirmware [DeviceName,DeviceIndex,StructRev,Version,SoftwareID,"
                          "Class,Category,SubCategory,Checksum] where NULL"));
  ASSERT_EQ(list_.Count, 2u);
  const _ZYMDB_Embedded_Firmware& device = list_.Firmwares[0];
  EXPECT_STREQ(device.DeviceName, "device");
  EXPECT_EQ(device.DeviceIndex, 1);
  EXPECT_EQ(device.StructRev, 2);
  EXPECT_EQ(device.Version, 3);
  EXPECT_STREQ(device.SoftwareID, "0123456789ABCDEF");
  EXPECT_EQ(device.Class, 4);
  EXPECT_EQ(device.Category, 5);
  EXPECT_EQ(device.SubCategory, 6);
  EXPECT_EQ(device.Checksum, 7);
  EXPECT_STREQ(list_.Firmwares[1].DeviceName, "b");
}

TEST_F(EmbeddedList, UnreadableColumnsAreEmptyAndZero) {
  answer({Row()});
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list_), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 1u);
  const _ZYMDB_Embedded_Firmware& device = list_.Firmwares[0];
  EXPECT_STREQ(device.DeviceName, "");
  EXPECT_STREQ(device.SoftwareID, "");
  EXPECT_EQ(device.DeviceIndex | device.StructRev | device.Version | device.Class | device.Category |
                device.SubCategory | device.Checksum,
            0);
}

TEST_F(EmbeddedList, HoldsNoMoreThanTheRowCountAndMayBeEmpty) {
  answer(Answer{.rows = {Row("a"), Row("b")}, .row_count = 1});
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 1u);
  std::free(list_.Firmwares);
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_F(EmbeddedList, IsEmptyAfterAFailure) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
      {Answer{.rows = {Row("read")}, .end = kFailure, .row_count = 2}, kFailure}};
  _ZYMDB_Embedded_Firmware own{};
  for (const auto& [each, status] : cases) {
    list_ = {5, &own};
    answer(each);
    EXPECT_EQ(zymdb_get_embedded_firmware_list(&list_), status);
    EXPECT_EQ(list_.Count, 0u);
    EXPECT_EQ(list_.Firmwares, nullptr);
  }
}

TEST_F(EmbeddedList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_embedded_firmware_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_insert_or_update_embedded_firmware_info(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_embedded_firmware_list(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_insert_or_update_embedded_firmware_info(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

constexpr char kFind[] = "query EmbeddedDeviceFirmware [_id] where SoftwareID='BIOS0001' AND DeviceIndex=255";
const std::string kValues =
    "{DeviceName=text:device, DeviceIndex=uint:255, StructRev=uint:1, Version=uint:2, "
    "SoftwareID=text:BIOS0001, Class=uint:65535, Category=uint:4, SubCategory=uint:5, Checksum=uint:6}";

class EmbeddedDevice : public scripted::ClientTest {
 protected:
  int write() { return zymdb_insert_or_update_embedded_firmware_info(&device_); }
  _ZYMDB_Embedded_Firmware device_{"device", 255, 1, 2, "BIOS0001", 65535, 4, 5, 6};
};

TEST_F(EmbeddedDevice, ThatIsNewIsInserted) {
  answer(std::vector<Row>{});
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(kFind, "insert EmbeddedDeviceFirmware " + kValues));
}

TEST_F(EmbeddedDevice, ThatIsThereIsWrittenWhereAColumnDiffers) {
  answer({Row(41)});
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre(kFind, "update EmbeddedDeviceFirmware " + kValues +
                             " where _id=41 AND ((DeviceName!='device') OR (SoftwareID!='BIOS0001') "
                             "OR (DeviceIndex!=255) OR (StructRev!=1) OR (Version!=2) OR "
                             "(Class!=65535) OR (Category!=4) OR (SubCategory!=5) OR (Checksum!=6))"));
}

TEST_F(EmbeddedDevice, EmptyTextsAreStoredAsNull) {
  device_.DeviceName[0] = device_.SoftwareID[0] = '\0';
  answer(std::vector<Row>{});
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements[0],
            "query EmbeddedDeviceFirmware [_id] where SoftwareID='' AND DeviceIndex=255");
  EXPECT_EQ(client().statements[1],
            "insert EmbeddedDeviceFirmware {DeviceName=null:, DeviceIndex=uint:255, StructRev=uint:1, "
            "Version=uint:2, SoftwareID=null:, Class=uint:65535, Category=uint:4, SubCategory=uint:5, "
            "Checksum=uint:6}");
}

TEST_F(EmbeddedDevice, TextsOfFullLengthFitTheFilters) {
  std::memset(device_.DeviceName, 'n', 128);
  std::memset(device_.SoftwareID, 's', 16);
  answer({Row(INT_MAX)});
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_TRUE(client().statements[0].ends_with("AND DeviceIndex=255"));
  EXPECT_TRUE(client().statements[1].ends_with("(Checksum!=6))"));
}

TEST_F(EmbeddedDevice, ThatCannotBeLookedUpCountsAsNew) {
  answer(Answer::failing(kFailure));
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(), "insert EmbeddedDeviceFirmware " + kValues);
}

TEST_F(EmbeddedDevice, AnswersWhatTheWriteSays) {
  answer(std::vector<Row>{});
  client().failures = {{{"insert", 0}, kFailure}, {{"update", 0}, kFailure + 1}};
  EXPECT_EQ(write(), kFailure);
  answer({Row(41)});
  EXPECT_EQ(write(), kFailure + 1);
}

TEST_F(EmbeddedDevice, WithoutAValueSetNothingIsLookedUp) {
  client().has_values = false;
  EXPECT_EQ(write(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(EmbeddedDevice, ClearingDeletesEveryRow) {
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("delete EmbeddedDeviceFirmware where NULL"));
  client().failures = {{{"delete", 1}, kFailure}};
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), kFailure);
}

}  // namespace
