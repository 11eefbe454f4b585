// The SMBIOS tables of a machine with as many memory modules as wanted, as `dmidecode --dump-bin` writes
// them.
#ifndef ZYMDB_TESTS_SUPPORT_LARGE_TABLES_H
#define ZYMDB_TESTS_SUPPORT_LARGE_TABLES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

class LargeTables {
 public:
  explicit LargeTables(unsigned modules) {
    for (unsigned module = 0; module < modules; ++module) add_module(module);
    tables_.append({127, 4, '\xff', '\xfe', 0, 0});
  }

  // Behind an entry point of version 3.3.
  std::string dump() const {
    std::string entry(kEntrySize, '\0');
    std::memcpy(entry.data(), "_SM3_", 5);
    entry[0x06] = 0x18;
    entry[0x07] = 3;
    entry[0x08] = 3;
    entry[0x0A] = 1;
    put(entry, 0x0C, static_cast<uint32_t>(tables_.size()));
    put(entry, 0x10, uint64_t{kEntrySize});
    uint8_t sum = 0;
    for (size_t i = 0; i < 0x18; ++i) sum = static_cast<uint8_t>(sum + static_cast<uint8_t>(entry[i]));
    entry[0x05] = static_cast<char>(-sum);
    return entry + tables_;
  }

 private:
  static constexpr size_t kEntrySize = 0x20;
  static constexpr size_t kDeviceSize = 0x5C;

  template <class Number>
  static void put(std::string& bytes, size_t offset, Number number) {
    std::memcpy(&bytes[offset], &number, sizeof number);
  }

  // 64 GiB of DDR4 at 3200 MT/s.
  void add_module(unsigned number) {
    std::string device(kDeviceSize, '\0');
    put(device, 0x00, uint8_t{17});
    put(device, 0x01, static_cast<uint8_t>(kDeviceSize));
    put(device, 0x02, static_cast<uint16_t>(0x1100 + number));
    put(device, 0x08, uint16_t{72});
    put(device, 0x0A, uint16_t{64});
    put(device, 0x0C, uint16_t{0x7FFF});
    put(device, 0x0E, uint8_t{9});
    put(device, 0x10, uint8_t{1});
    put(device, 0x12, uint8_t{0x1A});
    put(device, 0x15, uint16_t{3200});
    put(device, 0x18, uint8_t{2});
    put(device, 0x1C, uint32_t{64 << 10});
    const std::string locator = "P" + std::to_string(number / 96) + "-Channel" +
                                std::to_string(number % 96 / 2) + "-DIMM" + std::to_string(number % 2);
    tables_ += device + locator + '\0' + "SN" + std::to_string(100'000 + number) + '\0' + '\0';
  }

  std::string tables_;
};

#endif
