// Graphics functions out of sysfs and dumps, and as rows of the inventory.
#include <gtest/gtest.h>

#include <string>

#include "collect/collector.h"
#include "collect/machines.h"
#include "collect/sources/pci/pci_ids.h"
#include "collect/sources/sysfs/sysfs_gpu.h"
#include "support/inventory.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr char kNames[] =
    "10de  NVIDIA Corporation\n\t20b5  GA100 [A100 PCIe 80GB]\n"
    "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n\t74a1  Aqua Vanjaram [Instinct MI300X]\n"
    "1a03  ASPEED Technology, Inc.\n\t2000  ASPEED Graphics Family\n";

// Start, end and flags of six regions and the ROM: a 16 MiB control region, an 80 GiB prefetchable one in two
// lines of 64 bits, a 32 MiB prefetchable one.
constexpr char kRegions[] =
    "0x00000000d2000000 0x00000000d2ffffff 0x0000000000040200\n"
    "0x0000380000000000 0x00003813ffffffff 0x000000000014220c\n"
    "0x0000000000000000 0x0000000000000000 0x0000000000000000\n"
    "0x0000382000000000 0x0000382001ffffff 0x000000000014220c\n"
    "0x0000000000000000 0x0000000000000000 0x0000000000000000\n"
    "0x0000000000000000 0x0000000000000000 0x0000000000000000\n"
    "0x0000400000000000 0x0000ffffffffffff 0x000000000014220c\n";

TEST(VideoMemory, IsTheLargestPrefetchableRegionOfTheFunctionItself) {
  const TemporaryFolder folder;
  folder.write("resource", kRegions);
  EXPECT_EQ(read_video_memory(folder.path().string()), 80ULL << 30);
}

TEST(VideoMemory, IsRatherWhatTheDriverTells) {
  const TemporaryFolder folder;
  folder.write("resource", kRegions);
  folder.write("mem_info_vram_total", "206141652992\n");
  EXPECT_EQ(read_video_memory(folder.path().string()), 206141652992ULL);
}

TEST(VideoMemory, IsNotKnownWithoutAPrefetchableMemoryRegion) {
  const char* const kOthers[] = {
      "0x00000000d2000000 0x00000000d2ffffff 0x0000000000040200\n",  // memory, not prefetchable
      "0x0000000000006000 0x000000000000607f 0x0000000000042101\n",  // ports
      "0x0000000000000000 0x0000000000000000 0x000000000014220c\n",  // of no size
      "0x00000000d2ffffff 0x00000000d2000000 0x000000000014220c\n",  // ends before it starts
      "not numbers at all\n",
      "0x0 ",
      "",
  };
  for (const char* resource : kOthers) {
    const TemporaryFolder folder;
    folder.write("resource", resource);
    EXPECT_EQ(read_video_memory(folder.path().string()), std::nullopt) << resource;
  }
  EXPECT_EQ(read_video_memory("/nonexistent"), std::nullopt);
}

TEST(VendorName, IsTheShortOneInBracketsOrTheNameWithoutItsLegalForm) {
  const PciIds names{std::string(kNames)};
  EXPECT_EQ(vendor_name(names, 0x10de), "NVIDIA");
  EXPECT_EQ(vendor_name(names, 0x1002), "AMD/ATI");
  EXPECT_EQ(vendor_name(names, 0x1a03), "ASPEED");
  EXPECT_EQ(vendor_name(names, 0x1234), "");
}

class GpuCollection : public InventoryTest {
 protected:
  GpuCollection() { sources_.pci_ids = files_.write("pci.ids", kNames); }

  void collect() const {
    const auto summary = collect_inventory(sources_);
    EXPECT_TRUE(summary.ok()) << summary.error;
  }

  // A function of a sysfs tree.
  void given_function(const std::string& address, const std::string& vendor, const std::string& device,
                      const std::string& class_code, const std::string& resource) {
    const std::string folder = "sys/bus/pci/devices/" + address + "/";
    files_.write(folder + "vendor", vendor);
    files_.write(folder + "device", device);
    files_.write(folder + "class", class_code);
    files_.write(folder + "resource", resource);
    sources_.sysfs = (files_.path() / "sys").string();
  }

  static std::string devices() {
    return rows("PCIGPU", {"PCIFuncKey", "VideoMemoryType", "VideoMemorySize", "TotalGPUChipNumber"});
  }
  static std::string chips() {
    return rows("PCIGPUChip",
                {"PCIFuncKey", "GPUChipIndex", "GPUChipName", "GPUChipManufacturer", "GPUChipModel"});
  }

  TemporaryFolder files_;
  Sources sources_;
};

TEST_F(GpuCollection, StoresDisplayControllersAndAcceleratorsAndNothingElse) {
  given_function("0000:01:00.0", "0x10de", "0x20b5", "0x030200", kRegions);
  given_function("0000:02:00.0", "0x1002", "0x74a1", "0x120000", kRegions);
  given_function("0000:03:00.0", "0x1a03", "0x2000", "0x030000", "");
  given_function("0000:04:00.0", "0x8086", "0x1572", "0x020000", kRegions);
  collect();
  EXPECT_EQ(devices(), "65536|NULL|81920|1\n131072|NULL|81920|1\n196608|NULL|NULL|1\n");
  EXPECT_EQ(chips(),
            "65536|0|GA100 [A100 PCIe 80GB]|NVIDIA|GA100\n"
            "131072|0|Aqua Vanjaram [Instinct MI300X]|AMD/ATI|Aqua Vanjaram\n"
            "196608|0|ASPEED Graphics Family|ASPEED|NULL\n");
}

TEST_F(GpuCollection, KnowsNoNameThatTheListDoesNotHave) {
  given_function("0000:01:00.0", "0x10de", "0x0001", "0x030200", "");
  given_function("0000:02:00.0", "0x1234", "0x1111", "0x030000", "");
  collect();
  EXPECT_EQ(chips(), "65536|0|NULL|NVIDIA|NULL\n131072|0|NULL|NULL|NULL\n");
}

TEST_F(GpuCollection, TellsNoMemorySizeOutOfADump) {
  sources_.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci";
  collect();
  const std::string graphics = std::to_string(0x020000);
  const std::string accelerator = std::to_string(0x310000);
  EXPECT_NE(devices().find(graphics + "|NULL|NULL|1\n"), std::string::npos) << devices();
  EXPECT_NE(devices().find(accelerator + "|NULL|NULL|1\n"), std::string::npos) << devices();
}

TEST_F(GpuCollection, TakesTheMemorySizeOfADumpFromTheSysfsBesideIt) {
  given_function("0000:31:00.0", "0x10de", "0x20b5", "0x030200", kRegions);
  sources_.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci";
  collect();
  _ZYMDB_GPU_Device device{};
  ASSERT_EQ(zymdb_get_gpu_device_info(0x310000, &device), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(device.VideoMemorySize, "81920");
  EXPECT_STREQ(device.VideoMemoryTypeName, "Unknown");
  EXPECT_EQ(device.TotalGPUChipNumber, 1);
}

TEST_F(GpuCollection, LeavesRowsOfThoseWhoKnowMore) {
  given("PCIGPU", {{"PCIFuncKey", 0x010000}, {"VideoMemoryType", "12"}, {"VideoMemorySize", "80000"}});
  given("PCIGPUChip", {{"PCIFuncKey", 0x010000}, {"GPUChipIndex", 0}, {"GPUChipFormFactor", "21"}});
  given_function("0000:01:00.0", "0x10de", "0x20b5", "0x030200", kRegions);
  collect();
  EXPECT_EQ(devices(), "65536|12|80000|NULL\n");
  EXPECT_EQ(chips(), "65536|0|NULL|NULL|NULL\n");
}

TEST_F(GpuCollection, RemovesTheRowsOfAFunctionThatIsGone) {
  given_function("0000:01:00.0", "0x10de", "0x20b5", "0x030200", kRegions);
  given_function("0000:02:00.0", "0x1002", "0x74a1", "0x120000", kRegions);
  collect();
  fs::remove_all(files_.path() / "sys/bus/pci/devices/0000:01:00.0");
  collect();
  EXPECT_EQ(devices(), "131072|NULL|81920|1\n");
}

}  // namespace
}  // namespace zymdb::collect
