// Allocations of the libraries are counted by standing in for the C library's own and for operator new; those
// that SQLite makes are its own affair.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "controller/database_client.h"
#include "support/inventory.h"
#include "zymdb_pci.h"
#include "zymdb_platform.h"

namespace {

std::atomic<bool> is_counting{false};
std::atomic<int> allocations{0};

void count_for(void* caller) {
  Dl_info object;
  if (!is_counting || dladdr(caller, &object) == 0) return;
  if (std::strstr(object.dli_fname, "libzymdb_") != nullptr) ++allocations;
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);

void* malloc(size_t size) {
  count_for(__builtin_return_address(0));
  return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  count_for(__builtin_return_address(0));
  return __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) {
  count_for(__builtin_return_address(0));
  return __libc_realloc(memory, size);
}

}  // extern "C"

void* operator new(size_t size) {
  count_for(__builtin_return_address(0));
  void* const memory = __libc_malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

class AllocationsTest : public InventoryTest {
 protected:
  static void given_adapters(int first, int end) {
    zym_db_begin(get_dmdb_handle());
    for (int adapter = first; adapter < end; ++adapter)
      given("PCIAdapter", {{"PCIKey", 65536 + adapter},
                           {"PCIFuncKey", adapter << 8},
                           {"NodeNo", 0},
                           {"SlotNo", adapter},
                           {"Location", 1},
                           {"CardName", "a dual-port network adapter with a name of usual length"},
                           {"ConnectorType", "0xB6"},
                           {"AIMSupported", 0},
                           {"HealthStatus", 1}});
    zym_db_commit(get_dmdb_handle());
  }

  // Of one call that lists so many adapters.
  static int allocations_of_list(uint32_t adapters) {
    _ZYMDB_PCI_Adapter_List list{};
    allocations = 0;
    is_counting = true;
    const int status = zymdb_get_pci_adapter_list(&list);
    is_counting = false;
    EXPECT_EQ(status, ZYM_DB_STATUS_OK);
    EXPECT_EQ(list.count, adapters);
    std::free(list.adapters);
    return allocations;
  }
};

// The list's array and that of the package identifiers, which it reads for itself: the client has kept the
// memory of the queries before.
TEST_F(AllocationsTest, AListCostsOneAllocationAndNoRowOfItAny) {
  for (const int adapters : {100, 1100}) {
    given_adapters(adapters == 100 ? 0 : 100, adapters);
    for (int i = 0; i < 4; ++i) allocations_of_list(static_cast<uint32_t>(adapters));
    EXPECT_EQ(allocations_of_list(static_cast<uint32_t>(adapters)), 2) << adapters;
  }
}

}  // namespace
