// A block device with a file system of its own, as a controller's flash has one, and what is written to it.
#ifndef ZYMDB_BENCH_FLASH_DEVICE_H
#define ZYMDB_BENCH_FLASH_DEVICE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/temporary_folder.h"

namespace bench {

// This machine, or this user, can have none.
class NoDevice : public std::runtime_error {
  using runtime_error::runtime_error;
};

// A loop device with ext4 of 4 KiB blocks, mounted where this process and its children alone see it. The
// kernel takes all of it back when they end, however they do.
class FlashDevice {
 public:
  FlashDevice();
  ~FlashDevice();
  FlashDevice(const FlashDevice&) = delete;
  FlashDevice& operator=(const FlashDevice&) = delete;

  const std::filesystem::path& folder() const { return mounted_; }

  // Bytes since the device was made, with what the file system still holds back.
  uint64_t written() const;

 private:
  TemporaryFolder place_;
  std::filesystem::path mounted_;
  std::string statistics_;
};

}  // namespace bench

#endif
