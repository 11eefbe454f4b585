// Graphics cards on the embedded database.
#include "support/inventory.h"
#include "zymdb_pci.h"

namespace {

class Gpus : public InventoryTest {};

TEST_F(Gpus, VideoMemoryAndChipsAreReadByFunction) {
  given("PCIGPU", {{"PCIFuncKey", 7},
                   {"VideoMemoryType", "268"},
                   {"VideoMemorySize", "40960"},
                   {"TotalGPUChipNumber", 1}});
  given("PCIGPUChip",
        {{"PCIFuncKey", 7}, {"GPUChipName", "GA100"}, {"GPUChipFormFactor", "6"}, {"GPUChipIndex", 0}});
  given("PCIGPUChip", {{"PCIFuncKey", 8}, {"GPUChipName", "another's"}});
  _ZYMDB_GPU_Device device{};
  EXPECT_EQ(zymdb_get_gpu_device_info(7, &device), ZYM_DB_STATUS_OK);
  EXPECT_EQ(device.VideoMemoryType, 12);
  EXPECT_STREQ(device.VideoMemoryTypeName, "SDRAM");
  EXPECT_STREQ(device.VideoMemorySize, "40960");
  _ZYMDB_GPU_Chip_List chips{};
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &chips), ZYM_DB_STATUS_OK);
  ASSERT_EQ(chips.count, 1u);
  EXPECT_STREQ(chips.items[0].GPUChipName, "GA100");
  EXPECT_STREQ(chips.items[0].GPUChipFormFactorName, "Proprietaty");
  std::free(chips.items);
}

TEST_F(Gpus, AFunctionWithoutGraphicsHasNeither) {
  _ZYMDB_GPU_Device device{};
  device.TotalGPUChipNumber = 9;
  EXPECT_EQ(zymdb_get_gpu_device_info(7, &device), ZYM_DB_STATUS_OK);
  EXPECT_EQ(device.TotalGPUChipNumber, 9);
  _ZYMDB_GPU_Chip_List chips{};
  EXPECT_EQ(zymdb_get_gpu_chip_list(7, &chips), ZYM_DB_STATUS_OK);
  EXPECT_EQ(chips.count, 0u);
  std::free(chips.items);
}

TEST_F(Gpus, WriteBacksReachOnlyTheRowsOfTheirMaker) {
  given("PCIs", {{"BusNo", 59}, {"HardwareId", 7}});
  for (const char* maker : {"NVIDIA", "NVIDIA Corporation", "Column"}) {
    given("Firmwares",
          {{"HardwareId", 7}, {"Manufacture", maker}, {"VersionString", "1"}, {"ReleaseDate", "d"}});
    given("VPDs", {{"HardwareId", 7}, {"Manufacture", maker}, {"SerialNo", "s"}});
  }
  EXPECT_EQ(zymdb_update_nvidia_gpu_fw_version("92.00.19.00.08", 59), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_update_nvidia_gpu_fw_release_date("2021-01-02", 59), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_update_nvidia_gpu_serial_number("it's \"quoted\"", 59), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("Firmwares", {"VersionString", "ReleaseDate"}), "92.00.19.00.08|2021-01-02\n1|d\n1|d\n");
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "it's \"quoted\"\ns\ns\n");
}

TEST_F(Gpus, AnUnknownBusOrOneWithoutHardwareIsNotFound) {
  given("PCIs", {{"BusNo", 60}, {"HardwareId", 0}});
  given("PCIs", {{"BusNo", 61}, {"HardwareId", nullptr}});
  for (int bus : {59, 60, 61})
    EXPECT_EQ(zymdb_update_nvidia_gpu_serial_number("s", bus), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(zymdb_update_nvidia_gpu_serial_number(nullptr, 59), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
