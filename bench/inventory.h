// The inventory that the benchmarks run on: a machine of a given size, in a folder that vanishes with them.
#ifndef ZYMDB_BENCH_INVENTORY_H
#define ZYMDB_BENCH_INVENTORY_H

#include <cstdint>
#include <filesystem>
#include <string>

namespace bench {

constexpr int kFunctionsPerAdapter = 4;

class Inventory {
 public:
  // `adapters` adapters of four functions each, in PCIs and PCIAdapter.
  explicit Inventory(int adapters);
  ~Inventory();
  Inventory(const Inventory&) = delete;
  Inventory& operator=(const Inventory&) = delete;

  std::string path() const { return (folder_ / "inventory.db").string(); }

  // Whether a byte of the database's files was written since `mark`.
  void mark();
  bool is_written_since_mark() const;

  static uint32_t function_key(int adapter, int function) {
    return static_cast<uint32_t>(adapter) << 8 | static_cast<uint32_t>(function);
  }

 private:
  std::string contents() const;

  std::filesystem::path folder_;
  std::string marked_;
};

}  // namespace bench

#endif
