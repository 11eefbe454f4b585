// The usual alternative on a controller: a daemon that keeps the inventory in its memory and offers it on the
// message bus. Called with the bus's address and the number of adapters; ends with the bus.
#include <systemd/sd-bus.h>

#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "bus.h"
#include "inventory.h"

using namespace bench::bus;

namespace {

int get_text(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* text,
             sd_bus_error*) {
  return sd_bus_message_append_basic(reply, 's', text);
}

// Numbers are read where they stand.
std::vector<sd_bus_vtable> table_of(std::span<const Property> properties) {
  const sd_bus_vtable start = SD_BUS_VTABLE_START(0);
  const sd_bus_vtable end = SD_BUS_VTABLE_END;
  std::vector<sd_bus_vtable> table = {start};
  for (const Property& property : properties) {
    const sd_bus_vtable entry = SD_BUS_PROPERTY(
        property.name, property.type, property.type[0] == 's' ? get_text : nullptr, property.offset, 0);
    table.push_back(entry);
  }
  table.push_back(end);
  return table;
}

bool serve(sd_bus* bus, _ZYMDB_PCI_Adapter_List& adapters, std::vector<_ZYMDB_PCI_Generic>& functions) {
  static const std::vector<sd_bus_vtable> adapter_table = table_of(kAdapterProperties);
  static const std::vector<sd_bus_vtable> function_table = table_of(kFunctionProperties);
  for (uint32_t i = 0; i < adapters.count; ++i) {
    const int adapter = static_cast<int>(i);
    if (sd_bus_add_object_vtable(bus, nullptr, adapter_path(adapter).c_str(), kAdapter, adapter_table.data(),
                                 &adapters.adapters[i]) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, function_path(adapter).c_str(), kFunction,
                                 function_table.data(), &functions[i]) < 0)
      return false;
  }
  return sd_bus_add_object_manager(bus, nullptr, kRoot) >= 0 && sd_bus_request_name(bus, kName, 0) >= 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const unsigned count = static_cast<unsigned>(std::atoi(argv[2]));
  _ZYMDB_PCI_Adapter_List adapters{};
  if (zymdb_get_pci_adapter_list(&adapters) != 0 || adapters.count != count) return 1;
  std::vector<_ZYMDB_PCI_Generic> functions(count);
  for (unsigned i = 0; i < count; ++i)
    zymdb_get_pci_generic_info(bench::function_key(static_cast<int>(i)), &functions[i]);

  sd_bus* bus = nullptr;
  if (sd_bus_new(&bus) < 0 || sd_bus_set_address(bus, argv[1]) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
      sd_bus_start(bus) < 0 || !serve(bus, adapters, functions)) {
    std::fprintf(stderr, "bus_peer: cannot serve on %s\n", argv[1]);
    return 1;
  }
  int status = 0;
  while ((status = sd_bus_process(bus, nullptr)) >= 0)
    if (status == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) break;
  sd_bus_unref(bus);
  std::free(adapters.adapters);
  return 0;
}
