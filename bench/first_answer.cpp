// Lists the adapters of the inventory through the library, and prints the most memory that was ever resident,
// in KiB. Called with the number of adapters that there are; fails when it found another.
#include <cstdlib>

#include "peak_memory.h"
#include "zymdb_pci.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  _ZYMDB_PCI_Adapter_List list;
  const bool is_right = zymdb_get_pci_adapter_list(&list) == 0 && list.count == strtoul(argv[1], nullptr, 10);
  print_peak_memory();
  std::free(list.adapters);
  return is_right ? 0 : 1;
}
