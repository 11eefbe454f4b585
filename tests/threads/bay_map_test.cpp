// The backplanes' bays, which a process reads once: eight threads are the first to ask, at once.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>

#include "controller/property_database.h"
#include "support/inventory.h"
#include "threads/in_threads.h"
#include "zymdb_storage.h"

namespace {

constexpr int kBackplanes = 8;

std::atomic<int> last_bays_read{0};
std::atomic<int> types_read{0};

// Slow enough for the other threads to come before the map is complete.
void take_a_while() {
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace

extern "C" {

// In place of the controller's.
__attribute__((visibility("default"))) int propdb_get_dword(const char*, unsigned int* value) {
  take_a_while();
  *value = static_cast<unsigned>(8 * ++last_bays_read);
  return ZYM_DB_STATUS_OK;
}
__attribute__((visibility("default"))) int propdb_get_byte(const char*, unsigned char* value) {
  take_a_while();
  *value = 1;
  ++types_read;
  return ZYM_DB_STATUS_OK;
}

}  // extern "C"

namespace {

class BayMapInThreads : public InventoryTest {};

TEST_F(BayMapInThreads, IsReadOnceHoweverManyAskForItFirst) {
  constexpr int kDrives = 4;
  for (int bay = 0; bay < kDrives; ++bay)
    given("AimDisks", {{"LocationId", 2}, {"BayNo", 8 * bay}, {"Presence", 1}, {"DriveTypeId", 3}});
  std::atomic<int> drives{0};
  in_threads([&](int) {
    _ZYMDB_AimDisk_List list{};
    EXPECT_EQ(zymdb_get_disk_list_with_filter(&list, nullptr), ZYM_DB_STATUS_OK);
    for (uint32_t i = 0; i < list.count; ++i)
      if (list.disks[i].FormFactor == ZYMDB_FORM_FACTOR_DRIVE_BAY) ++drives;
    std::free(list.disks);
  });
  EXPECT_EQ(drives, kThreads * kDrives);
  EXPECT_EQ(last_bays_read, kBackplanes);
  EXPECT_EQ(types_read, kBackplanes);
}

}  // namespace
