// Whatever bytes a drive's vital product data are: exactly they are read, and every text that comes out ends
// in its field.
#include <cstdint>
#include <cstring>
#include <memory>

#include "checks.h"
#include "support/system_log.h"
#include "zymdb_storage.h"

using namespace zymdb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  system_log().clear();
  // A copy of its own size, so that a read beyond it is noticed.
  const auto bytes = std::make_unique<unsigned char[]>(size);
  if (size > 0) std::memcpy(bytes.get(), data, size);
  _ZYMDB_AimDisk drive{};
  const int status = parse_nvme_drive_vpd(bytes.get(), static_cast<unsigned>(size), &drive);
  require(status == 0 || status == -1, "answers no known status");
  require(status == -1 || size >= 256, "reads data that is too short");
  require_ended(drive.FruNo, drive.PartNo, drive.SerialNo, drive.Model, drive.Manufacture, drive.Capacity);
  return 0;
}
