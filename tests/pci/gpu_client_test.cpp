// Graphics cards: exact statements, code texts, system log lines, and the answers to every failure.
#include <gmock/gmock.h>

#include <cstring>
#include <map>

#include "support/scripted_client.h"
#include "support/system_log.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class GpuTest : public scripted::ClientTest {
 protected:
  GpuTest() { system_log().clear(); }
};

class GpuDevice : public GpuTest {
 protected:
  GpuDevice() { std::memset(static_cast<void*>(&device_), 0x5A, sizeof device_); }
  _ZYMDB_GPU_Device device_;
};

TEST_F(GpuDevice, IsReadFromTheRowOfItsFunction) {
  answer({Row("0x0C", "16384", 0x102)});
  EXPECT_EQ(zymdb_get_gpu_device_info(-1, &device_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre("query PCIGPU [VideoMemoryType,VideoMemorySize,TotalGPUChipNumber] where PCIFuncKey=-1"));
  EXPECT_EQ(device_.VideoMemoryType, 12);
  EXPECT_STREQ(device_.VideoMemoryTypeName, "SDRAM");
  EXPECT_STREQ(device_.VideoMemorySize, "16384");
  EXPECT_EQ(device_.TotalGPUChipNumber, 2);
}

TEST_F(GpuDevice, EveryMemoryTypeHasItsTextAndIsCutToEightBits) {
  const std::map<int, std::string> texts = {{1, "Reserved"},
                                            {2, "Reserved"},
                                            {3, "VRAM"},
                                            {4, "DRAM"},
                                            {5, "SRAM"},
                                            {6, "WRAM"},
                                            {7, "EDO RAM"},
                                            {8, "Burst Synchronous"},
                                            {9, "Pipelined Burst SRAM"},
                                            {10, "CDRAM"},
                                            {11, "3DRAM"},
                                            {12, "SDRAM"},
                                            {13, "SGRAM"}};
  for (int stored = 0; stored < 600; ++stored) {
    answer({Row(std::to_string(stored), "", 1)});
    EXPECT_EQ(zymdb_get_gpu_device_info(1, &device_), ZYM_DB_STATUS_OK);
    const auto text = texts.find(stored % 256);
    EXPECT_EQ(device_.VideoMemoryType, stored % 256);
    EXPECT_EQ(device_.VideoMemoryTypeName, text != texts.end() ? text->second : "Unknown") << stored;
  }
}

TEST_F(GpuDevice, UnreadableColumnsAreUnknown) {
  answer({Row(nullptr, nullptr, nullptr)});
  EXPECT_EQ(zymdb_get_gpu_device_info(1, &device_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(device_.VideoMemoryType, 0);
  EXPECT_STREQ(device_.VideoMemoryTypeName, "Unknown");
  EXPECT_STREQ(device_.VideoMemorySize, "");
  EXPECT_EQ(device_.TotalGPUChipNumber, 0);
}

TEST_F(GpuDevice, WithoutARowIsUntouchedAndNoFailure) {
  const _ZYMDB_GPU_Device before = device_;
  const std::pair<Answer, int> cases[] = {{Answer{}, ZYM_DB_STATUS_OK},
                                          {Answer{.end = kFailure}, ZYM_DB_STATUS_OK},
                                          {Answer::without_result(), ZYM_DB_STATUS_OK},
                                          {Answer::failing(kFailure, true), kFailure}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_gpu_device_info(1, &device_), status);
    EXPECT_EQ(std::memcmp(&device_, &before, sizeof device_), 0);
  }
}

TEST_F(GpuDevice, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_gpu_device_info(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_gpu_chip_list(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_gpu_device_info(1, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_gpu_chip_list(1, nullptr), ZYM_DB_STATUS_NO_DB);
}

class GpuChips : public GpuTest {
 protected:
  ~GpuChips() override { std::free(list_.items); }
  _ZYMDB_GPU_Chip_List list_{0, nullptr};
};

TEST_F(GpuChips, EachColumnFillsTheFieldOfItsName) {
  answer({Row("name", "maker", "model", "part", "sku", "serial", "family", "unique", "21", 0x101, 2, 0x10003,
              4, 0x10005, 6)});
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre(
          "query PCIGPUChip [GPUChipName,GPUChipManufacturer,GPUChipModel,GPUChipPartNumber,GPUChipSKU,"
          "GPUChipSerialNumber,GPUChipFamily,GPUChipUniqueID,GPUChipFormFactor,GPUChipIndex,"
          "GPUChipNumberOfEnabledCores,ExternalBusClockSpeed,GPUChipMaxClockSpeed,GPUChipAddressWidth,"
          "GPUChipDataWidth] where PCIFuncKey=7"));
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_GPU_Chip& chip = list_.items[0];
  EXPECT_THAT(
      (std::vector<std::string>{chip.GPUChipName, chip.GPUChipManufacturer, chip.GPUChipModel,
                                chip.GPUChipPartNumber, chip.GPUChipSKU, chip.GPUChipSerialNumber,
                                chip.GPUChipFamily, chip.GPUChipUniqueID, chip.GPUChipFormFactorName}),
      ElementsAre("name", "maker", "model", "part", "sku", "serial", "family", "unique", "BGA"));
  EXPECT_THAT(
      (std::vector<unsigned>{chip.GPUChipFormFactor, chip.GPUChipIndex, chip.GPUChipNumberOfEnabledCores,
                             chip.ExternalBusClockSpeed, chip.GPUChipMaxClockSpeed, chip.GPUChipAddressWidth,
                             chip.GPUChipDataWidth}),
      ElementsAre(21, 1, 2, 0x10003, 4, 5, 6));
}

TEST_F(GpuChips, EveryFormFactorHasItsText) {
  const std::map<int, std::string> texts = {
      {2, "SIP"},   {3, "DIP"},   {4, "ZIP"},    {5, "SOJ"},   {6, "Proprietaty"}, {7, "SIMM"},
      {8, "DIMM"},  {9, "TSOP"},  {10, "PGA"},   {11, "RIMM"}, {12, "SODIMM"},     {13, "SRIMM"},
      {14, "SMD"},  {15, "SSMP"}, {16, "QFP"},   {17, "TQFP"}, {18, "SOIC"},       {19, "LCC"},
      {20, "PLCC"}, {21, "BGA"},  {22, "FPBGA"}, {23, "LGA"}};
  std::vector<Row> rows;
  for (int code = 0; code < 512; ++code) {
    Row row("", "", "", "", "", "", "", "", std::to_string(code));
    rows.push_back(row);
  }
  answer(rows);
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list_), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 512u);
  for (int code = 0; code < 512; ++code) {
    const auto text = texts.find(code % 256);
    EXPECT_EQ(list_.items[code].GPUChipFormFactor, code % 256);
    EXPECT_EQ(list_.items[code].GPUChipFormFactorName, text != texts.end() ? text->second : "Unknown")
        << code;
  }
}

TEST_F(GpuChips, UnreadableColumnsAreEmptyAndZero) {
  answer({Row()});
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list_), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  EXPECT_STREQ(list_.items[0].GPUChipName, "");
  EXPECT_STREQ(list_.items[0].GPUChipUniqueID, "");
  EXPECT_EQ(list_.items[0].GPUChipFormFactor, 0);
  EXPECT_STREQ(list_.items[0].GPUChipFormFactorName, "Unknown");
  EXPECT_EQ(list_.items[0].GPUChipDataWidth, 0);
}

TEST_F(GpuChips, AFailedQueryOrALackOfMemoryEmptiesTheListAndAFailedStepLeavesIt) {
  struct Case {
    Answer answer;
    int status;
    bool is_emptied;
  } const cases[] = {{Answer::failing(kFailure, true), kFailure, true},
                     {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY, true},
                     {Answer::without_result(), ZYM_DB_STATUS_OK, false},
                     {Answer{.rows = {Row()}, .end = kFailure, .row_count = 2}, kFailure, false},
                     // A client that ran out of memory while it stepped.
                     {Answer{.rows = {Row()}, .end = ZYM_DB_STATUS_NO_MEMORY, .row_count = 2},
                      ZYM_DB_STATUS_NO_MEMORY, false}};
  for (const Case& each : cases) {
    _ZYMDB_GPU_Chip own{};
    _ZYMDB_GPU_Chip_List list{5, &own};
    answer(each.answer);
    EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list), each.status);
    EXPECT_EQ(list.count, each.is_emptied ? 0u : 5u);
    EXPECT_EQ(list.items, each.is_emptied ? nullptr : &own);
  }
}

TEST_F(GpuChips, NeverMoreThanTheRowCountIsStoredAndNoneIsAnEmptyArray) {
  answer(Answer{.rows = {Row(), Row()}, .row_count = 1});
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1u);
  std::free(list_.items);
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
}

struct WriteBack {
  const char* name;
  int (*write)(const char*, int);
  const char* table;
  const char* column;
};

constexpr WriteBack kWriteBacks[] = {
    {"zymdb_update_nvidia_gpu_fw_version", zymdb_update_nvidia_gpu_fw_version, "Firmwares", "VersionString"},
    {"zymdb_update_nvidia_gpu_fw_release_date", zymdb_update_nvidia_gpu_fw_release_date, "Firmwares",
     "ReleaseDate"},
    {"zymdb_update_nvidia_gpu_serial_number", zymdb_update_nvidia_gpu_serial_number, "VPDs", "SerialNo"},
};

class NvidiaCard : public GpuTest {};

TEST_F(NvidiaCard, IsFoundByItsBusAndWrittenByItsHardware) {
  for (const WriteBack& each : kWriteBacks) {
    client().statements.clear();
    answer({Row(0xFFFFFFFF)});
    EXPECT_EQ(each.write("a text", 59), ZYM_DB_STATUS_OK);
    EXPECT_THAT(client().statements,
                ElementsAre("raw_query select HardwareId from PCIs where BusNo=59; size 256",
                            "update " + std::string(each.table) + " {" + each.column +
                                "=text:a text} where HardwareId=4294967295 AND Manufacture=\"NVIDIA\""));
  }
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(NvidiaCard, ThatCannotBeFoundIsToldToTheSystemLogUnderTheOperationsName) {
  const std::pair<Answer, int> cases[] = {{Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), 0},
                                          {Answer{}, 10},
                                          {Answer{.end = kFailure}, kFailure},
                                          {Answer::of({Row(nullptr)}), 1},
                                          {Answer::of({Row(0)}), 0}};
  for (const WriteBack& each : kWriteBacks) {
    for (const auto& [failing, status] : cases) {
      answer(failing);
      EXPECT_EQ(each.write("a text", 59), ZYM_DB_STATUS_NOT_FOUND);
      EXPECT_EQ(system_log().back(), "11: " + std::string(each.name) + ": rc = " + std::to_string(status) +
                                         ", sql failed. select HardwareId from PCIs where BusNo=59;\n\n");
    }
  }
}

TEST_F(NvidiaCard, AMissingTextCountsAsAMissingDatabase) {
  for (const WriteBack& each : kWriteBacks) {
    client().has_database = true;
    EXPECT_EQ(each.write(nullptr, 59), ZYM_DB_STATUS_NO_DB);
    client().has_database = false;
    EXPECT_EQ(each.write("a text", 59), ZYM_DB_STATUS_NO_DB);
  }
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(NvidiaCard, FailuresOfTheWriteAreAnswered) {
  for (const WriteBack& each : kWriteBacks) {
    answer({Row(7)});
    client().has_values = false;
    EXPECT_EQ(each.write("a text", 59), ZYM_DB_STATUS_NO_MEMORY);
    answer({Row(7)});
    client().has_values = true;
    client().failures[{"update", static_cast<int>(&each - kWriteBacks)}] = kFailure;
    EXPECT_EQ(each.write("a text", 59), kFailure);
  }
}

TEST_F(GpuTest, TheCardTableNeedsNoDatabase) {
  client().has_database = false;
  EXPECT_EQ(zymdb_get_hc_card_count(), 37);
  std::map<unsigned, int> vendors;
  int unknown_powers = 0;
  for (const _ZYMDB_HC_Card& card : hc_card_table) {
    ++vendors[card.VendorId];
    EXPECT_STREQ(card.Info, "N/A");
    EXPECT_STRNE(card.CardName, "");
    EXPECT_STRNE(card.Manufacture, "");
    EXPECT_TRUE(card.BoardPower == 0 || (card.BoardPower >= 40 && card.BoardPower <= 500)) << card.CardName;
    if (card.BoardPower == 0) ++unknown_powers;
  }
  EXPECT_EQ(vendors,
            (std::map<unsigned, int>{{0x10DE, 27}, {0x1002, 3}, {0x10EE, 3}, {0x1000, 2}, {0xCABC, 2}}));
  EXPECT_EQ(unknown_powers, 5);
}

}  // namespace
