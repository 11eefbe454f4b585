#include "show/functions.h"

#include <algorithm>

#include "show/inventory.h"

namespace zymdb::tool {

uint32_t key_of(const _ZYMDB_PCI_Generic& function) {
  return uint32_t{function.SegNo} << 24 | uint32_t{function.BusNo} << 16 | uint32_t{function.DeviceNo} << 8 |
         function.FunctionNo;
}

std::vector<_ZYMDB_PCI_Generic> all_functions(const std::string& action) {
  _ZYMDB_PCI_Generic_List list{};
  const int status = zymdb_get_pci_generic_info_list(&list, nullptr);
  auto functions = take_array(list.items, list.count);
  require_status(status, action);
  std::ranges::sort(functions, {}, key_of);
  return functions;
}

}  // namespace zymdb::tool
