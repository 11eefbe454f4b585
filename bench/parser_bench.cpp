// The decoder of drives' vital product data, beside copies of the same fields from where they are known to
// lie.
#include <benchmark/benchmark.h>
#include <syslog.h>

#include <cstdio>
#include <cstring>

#include "comparison.h"
#include "support/drive_image.h"
#include "zymdb_storage.h"

using namespace drive_image;

namespace {

constexpr uint64_t kCapacity = 3'840'755'982'336;

template <size_t N>
void copy(const Image& image, size_t at, size_t length, char (&field)[N]) {
  std::memcpy(field, &image[at], length);
  field[length] = '\0';
}

bool is_standard(const _ZYMDB_AimDisk& drive) {
  return std::strcmp(drive.Manufacture, "Maker") == 0 && std::strcmp(drive.Model, "Vendor ABC_123") == 0 &&
         std::strcmp(drive.PartNo, "ABC_123") == 0 && std::strcmp(drive.SerialNo, "SN0001") == 0 &&
         std::strcmp(drive.FruNo, "FRU77") == 0 && std::strcmp(drive.Capacity, "3.84TB") == 0;
}

void copy_standard(const Image& image, _ZYMDB_AimDisk& drive) {
  copy(image, 12, 5, drive.Manufacture);
  copy(image, 27, 14, drive.Model);
  copy(image, 34, 7, drive.PartNo);
  copy(image, 44, 6, drive.SerialNo);
  copy(image, 56, 5, drive.FruNo);
  uint64_t capacity = 0;
  std::memcpy(&capacity, &image[192 + 24], sizeof capacity);
  std::snprintf(drive.Capacity, sizeof drive.Capacity, "%.2lfTB", static_cast<double>(capacity) / 1e12);
}

bool is_vendor(const _ZYMDB_AimDisk& drive) {
  return std::strcmp(drive.SerialNo, "S0123456789012345678") == 0 &&
         std::strcmp(drive.Model, "Model X9") == 0 && std::strcmp(drive.PartNo, "X9") == 0 &&
         std::strcmp(drive.Manufacture, "Intel") == 0;
}

void copy_vendor(const Image& image, _ZYMDB_AimDisk& drive) {
  copy(image, 5, 20, drive.SerialNo);
  copy(image, 25, 8, drive.Model);
  copy(image, 31, 2, drive.PartNo);
  copy(image, 5, sizeof drive.FruNo - 1, drive.FruNo);
  std::strcpy(drive.Manufacture, "Intel");
}

void add(const std::string& name, const Image& image, bool (*is_right)(const _ZYMDB_AimDisk&),
         void (*copy_fields)(const Image&, _ZYMDB_AimDisk&)) {
  bench::add(name, static_cast<int>(image.size()),
             {{bench::kLibrary,
               [=](int) {
                 _ZYMDB_AimDisk drive{};
                 parse_nvme_drive_vpd(image.data(), static_cast<unsigned>(image.size()), &drive);
                 return is_right(drive);
               }},
              {bench::kLimit, [=](int) {
                 _ZYMDB_AimDisk drive{};
                 copy_fields(image, drive);
                 return is_right(drive);
               }}});
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  // A decoded FRU image is logged, as information.
  setlogmask(LOG_UPTO(LOG_NOTICE));
  Image standard = standard_image({});
  put_nvme_record(standard, 192, kCapacity);
  Image vendor = vendor_image("S0123456789012345678", "Model X9");
  vendor[3] = 0x86;
  vendor[4] = 0x80;
  add("FRU image", standard, is_standard, copy_standard);
  add("vendor layout", vendor, is_vendor, copy_vendor);
  benchmark::RunSpecifiedBenchmarks();
}
