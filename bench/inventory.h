// The inventories that the benchmarks run on: machines of a given size, in folders that vanish with the
// program.
#ifndef ZYMDB_BENCH_INVENTORY_H
#define ZYMDB_BENCH_INVENTORY_H

#include <cstdint>
#include <string>

#include "support/temporary_folder.h"

namespace bench {

// Functions, adapters, modules and components count from 0; theirs are these keys.
constexpr uint32_t function_key(int function) {
  return static_cast<uint32_t>(function) << 8;
}
constexpr uint32_t adapter_key(int adapter) {
  return 1u << 16 | static_cast<uint32_t>(adapter);
}

// The function that has as many ports, components and settings as the inventory has rows.
constexpr uint32_t kBusyFunction = 0x7F000000;

class Inventory {
 public:
  // `rows` of everything that is listed: adapters (of four functions each), PCI functions, ports, components,
  // drives, settings. A quarter of the functions are NVMe drives, reported in bays and on M.2 carriers.
  explicit Inventory(int rows);

  std::string path() const { return folder_.file("inventory.db"); }

  // Makes it the one that the library reads and writes from here on.
  void open() const;

  // Whether a byte of the database's files was written since `mark`.
  void mark();
  bool is_written_since_mark() const;

 private:
  std::string contents() const;

  TemporaryFolder folder_;
  std::string marked_;
};

// The inventory of this size, opened. Each is made once.
Inventory& inventory(int rows);

}  // namespace bench

#endif
