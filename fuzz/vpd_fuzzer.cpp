// Whatever bytes a drive's vital product data are: exactly they are read, and every text that comes out ends
// in its field.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "zymdb_storage.h"

namespace {

template <std::size_t N>
void require_ended(const char (&text)[N]) {
  if (strnlen(text, N) == N) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of its own size, so that a read beyond it is noticed.
  const auto bytes = std::make_unique<unsigned char[]>(size);
  if (size > 0) std::memcpy(bytes.get(), data, size);
  _ZYMDB_AimDisk drive{};
  const int status = parse_nvme_drive_vpd(bytes.get(), static_cast<unsigned>(size), &drive);
  if (status != 0 && status != -1) std::abort();
  if (status == 0 && size < 256) std::abort();
  require_ended(drive.FruNo);
  require_ended(drive.PartNo);
  require_ended(drive.SerialNo);
  require_ended(drive.Model);
  require_ended(drive.Manufacture);
  require_ended(drive.Capacity);

  if (driveModel2Manufacture(drive.Model) == nullptr) std::abort();
  const char* const model = trim_drive_model(drive.Model);
  if (model < drive.Model || model > drive.Model + std::strlen(drive.Model)) std::abort();
  char date[16];
  vpd_manuf_date_to_ymd(drive.SerialNo, date, sizeof date);
  require_ended(date);
  return 0;
}
