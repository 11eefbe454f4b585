/* Fills the client's tables and asks the library about them. */
#include <controller/database_client.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <zymdb_cpu_mem.h>
#include <zymdb_network.h>
#include <zymdb_pci.h>

static void add_processor(const char* socket, unsigned cores) {
  _zym_db_handle_t* const database = get_dmdb_handle();
  zym_db_content_values_t* const values = zym_db_get_content_values(database);
  zym_db_content_put_text(values, "Socket", socket);
  zym_db_content_put_uint(values, "CoreCount", cores);
  zym_db_insert(database, "Processor", values, 0, NULL);
  zym_db_free_content_values(values);
}

static void add_ports(unsigned function, unsigned ports) {
  _zym_db_handle_t* const database = get_dmdb_handle();
  zym_db_content_values_t* const values = zym_db_get_content_values(database);
  zym_db_content_put_uint(values, "PCIFuncKey", function);
  zym_db_content_put_uint(values, "NumberofPhysicalPorts", ports);
  zym_db_insert(database, "PCINetwork", values, 0, NULL);
  zym_db_content_clear(values);
  zym_db_content_put_uint(values, "PCIFuncKey", function);
  zym_db_content_put_uint(values, "Idx", 0);
  zym_db_content_put_uint(values, "LinkStatus", ZYMDB_LINK_UNKNOWN);
  zym_db_insert(database, "PCIPhysicalPortStat", values, 0, NULL);
  zym_db_free_content_values(values);
}

static void print_processors(void) {
  _ZYMDB_Processor_List list = {0};
  const int status = zymdb_get_processor_list(&list);
  printf("processors: status %d, count %" PRIu32 "\n", status, list.count);
  for (uint32_t i = 0; i < list.count; ++i) {
    _ZYMDB_Processor processor = {._id = list.ids[i]};
    if (zymdb_get_processor(&processor) == ZYM_DB_STATUS_OK)
      printf("  %s: %u cores\n", processor.Socket, (unsigned)processor.CoreCount);
  }
  free(list.ids);
}

static void print_link(unsigned function) {
  _ZYMDB_PCI_PortLinkState state = {0};
  const int status = zymdb_get_network_physical_port_link_state(function, &state, 0);
  printf("link: status %d, state %u, speed %" PRIu64 "\n", status, (unsigned)state.LinkStatus,
         (uint64_t)state.LinkSpeed);
}

int main(void) {
  enum { FUNCTION = 0x4b0000 };
  print_processors();
  add_processor("CPU 0", 32);
  add_processor("CPU 1", 28);
  print_processors();

  add_ports(FUNCTION, 2);
  _ZYMDB_PCI_Network_Info info = {0};
  int status = zymdb_get_network_info(FUNCTION, &info);
  printf("ports: status %d, count %u\n", status, (unsigned)info.NumberofPhysicalPorts);

  print_link(FUNCTION);
  const _ZYMDB_PCI_PortLinkState up = {.LinkStatus = ZYMDB_LINK_UP, .LinkSpeed = 25000};
  status = zymdb_set_network_physical_port_link_state(FUNCTION, &up, 0);
  printf("set link: status %d\n", status);
  print_link(FUNCTION);

  _ZYMDB_PCI_Key_List keys = {0};
  printf("keys: status %d\n", zymdb_get_pci_keys(&keys, NULL));
  printf("AMD: %d\n", zymdb_is_amd());
  return 0;
}
