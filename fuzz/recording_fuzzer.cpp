// Whatever bytes stand in the files of a recording: sanitized they keep their lengths, and what is known to
// identify the machine is gone. The kernel's list of processors is read of the same bytes.
#include <cstdint>
#include <string>

#include "checks.h"
#include "collect/record/sanitizer.h"
#include "collect/sources/sysfs/proc_cpuinfo.h"
#include "common/bytes.h"

namespace {

using namespace zymdb;
using namespace zymdb::collect;
using zymdb::fuzz::require;

constexpr char kSerial[] = "PHKS00000005375AGN";
constexpr char kAddress[] = "3c:fd:fe:00:30:01";

// Every kind of file that is looked into.
constexpr const char* kFiles[] = {
    "sys/devices/a/config",
    "sys/devices/a/vpd",
    "sys/devices/a/wwid",
    "sys/devices/a/vpd_pg80",
    "sys/class/net/e/address",
    "sys/class/infiniband/m/ports/1/gids/0",
    "proc/cpuinfo",
    "driver-answers/link/e",
    "sys/class/dmi/id/product_uuid",
    "sys/class/dmi/id/product_serial",
};
constexpr char kTables[] = "sys/firmware/dmi/tables/DMI";
constexpr char kEntry[] = "sys/firmware/dmi/tables/smbios_entry_point";

void check_sanitized(const MachineCopy& copy) {
  const auto result = sanitized(copy);
  require(result.files.size() == copy.files.size() && result.links.size() == copy.links.size(),
          "a file is gone");
  for (const auto& [path, content] : copy.files) {
    const auto same = result.files.find(path);
    if (same != result.files.end()) require(same->second.size() == content.size(), "another length", path);
  }
  for (const auto& [path, content] : result.files) {
    require(content.find(kSerial) == content.npos, "the serial number is still there", path);
    require(content.find(kAddress) == content.npos, "the address is still there", path);
  }
}

void check_cpuinfo(const std::string& text) {
  for (const auto& [number, block] : parse_cpuinfo(text)) {
    const auto name = cpu_name(block);
    require(!name || !name->empty(), "an empty name");
    cpu_manufacturer(block);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  const std::string data(reinterpret_cast<const char*>(bytes), size);
  constexpr size_t kEntrySize = 32;
  MachineCopy copy;
  for (const char* file : kFiles) copy.files[file] = data;
  copy.files[kEntry] = data.substr(0, kEntrySize);
  copy.files[kTables] = data.size() > kEntrySize ? data.substr(kEntrySize) : "";
  copy.files["sys/class/nvme/nvme0/serial"] = kSerial + std::string("\n");
  copy.files["sys/class/net/eth0/address"] = kAddress + std::string("\n");
  copy.links["sys/class/net/eth0"] = data;
  check_sanitized(copy);
  check_cpuinfo(data);
  return 0;
}
