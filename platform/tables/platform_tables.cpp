#include "controller/platform_tables.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "client/guarded.h"
#include "common/client_objects.h"
#include "controller/ruvo_log.h"
#include "zymdb_db.h"

namespace {

constexpr uint32_t kAmd = 1U << 15;
constexpr size_t kWords = std::size(ptables_platform_t{}.word);
constexpr size_t kTableSize = kWords * sizeof(uint32_t);

// As processors name their maker.
constexpr const char* kAmdNames[] = {"AMD", "Advanced Micro Devices"};
constexpr size_t kTextSize = 256;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// The recorded entry of another machine: seven 32-bit words, least significant byte first.
bool read_recorded(const char* path, ptables_platform_t& platform) {
  const File file(std::fopen(path, "rbe"));
  unsigned char bytes[kTableSize + 1];
  const size_t size = file != nullptr ? std::fread(bytes, 1, sizeof bytes, file.get()) : 0;
  if (file == nullptr || std::ferror(file.get()) != 0) {
    ruvo_log::logErr("%s: %s", path, std::strerror(errno));
    return false;
  }
  if (size != kTableSize) {
    ruvo_log::logErr("%s: no platform table of %zu bytes", path, kTableSize);
    return false;
  }
  for (size_t i = 0; i < kWords; ++i) {
    const unsigned char* word = bytes + i * sizeof(uint32_t);
    platform.word[i] = static_cast<uint32_t>(word[0]) | static_cast<uint32_t>(word[1]) << 8 |
                       static_cast<uint32_t>(word[2]) << 16 | static_cast<uint32_t>(word[3]) << 24;
  }
  return true;
}

enum class Make { kUnknown, kIsAmd, kIsOther };

bool names_amd(zym_db_result_t* rows) {
  for (const int column : {0, 1}) {
    char text[kTextSize];
    zym_db_result_column_text(rows, column, text, sizeof text);
    for (const char* name : kAmdNames)
      if (std::strstr(text, name) != nullptr) return true;
  }
  return false;
}

// The host's processors, which a service processor may know from its inventory alone: it need not be of their
// make itself.
int read_inventory(Make& make) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return 0;
  constexpr const char* kColumns[] = {"Manufacturer", "Version"};
  zym_db_result_t* found = nullptr;
  const int status = zym_db_query(handle, "Processor", kColumns, 2, nullptr, nullptr, 0, 0, &found);
  if (status != 0) return status;
  const zymdb::ResultPtr rows(found);
  while (zym_db_result_step(found) == ZYM_DB_STATUS_ROW && make != Make::kIsAmd)
    make = names_amd(found) ? Make::kIsAmd : Make::kIsOther;
  return 0;
}

bool is_amd_machine() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("vendor_id")) return line.ends_with("AuthenticAMD");
  }
  return false;
}

// The first that knows tells: the inventory, a recorded entry, this machine.
bool read_platform(ptables_platform_t& platform) {
  Make make = Make::kUnknown;
  if (read_inventory(make) != 0) return false;
  if (make == Make::kIsAmd) platform.word[2] |= kAmd;
  if (make != Make::kUnknown) return true;
  const char* recorded = std::getenv("ZYMDB_PLATFORM_TABLES");
  if (recorded != nullptr && recorded[0] != 0) return read_recorded(recorded, platform);
  if (is_amd_machine()) platform.word[2] |= kAmd;
  return true;
}

}  // namespace

int ptables_from_ram(ptables_t* tables) {
  if (tables == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  *tables = {};
  return zymdb::client::guarded([&]() -> int {
    ptables_platform_t platform{};
    if (!read_platform(platform)) return ZYM_DB_STATUS_ERROR;
    tables->data = std::malloc(sizeof platform);
    if (tables->data == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
    std::memcpy(tables->data, &platform, sizeof platform);
    tables->size = sizeof platform;
    return 0;
  });
}

int ptables_lookup_platform_direct(const ptables_t* tables, ptables_platform_t* platform) {
  if (tables == nullptr || platform == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  if (tables->data == nullptr || tables->size != sizeof *platform) return ZYM_DB_STATUS_NOT_FOUND;
  std::memcpy(platform, tables->data, sizeof *platform);
  return 0;
}

void ptables_free(ptables_t* tables) {
  if (tables == nullptr) return;
  std::free(tables->data);
  *tables = {};
}
