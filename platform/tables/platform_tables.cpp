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
#include "controller/ruvo_log.h"
#include "zymdb_db.h"

namespace {

constexpr uint32_t kAmd = 1U << 15;
constexpr size_t kWords = std::size(ptables_platform_t{}.word);
constexpr size_t kTableSize = kWords * sizeof(uint32_t);

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

bool is_amd_machine() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("vendor_id")) return line.ends_with("AuthenticAMD");
  }
  return false;
}

bool read_platform(ptables_platform_t& platform) {
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
