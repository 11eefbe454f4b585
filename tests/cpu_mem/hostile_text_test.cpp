// What a caller's filter can and cannot do to the memory modules.
#include <filesystem>
#include <string>

#include "support/hostile_texts.h"
#include "support/inventory.h"
#include "zymdb_cpu_mem.h"

namespace {

class HostileMemoryFilter : public InventoryTest {
 protected:
  HostileMemoryFilter() {
    for (int slot = 1; slot <= 3; ++slot)
      given("Memory", {{"SlotNo", slot}, {"Manufacturer", "Intel"}, {"TypeDetail", 0x1080}});
    given("PCIs", {{"FunKey", 1}});
  }

  static std::string everything() {
    return rows("Memory", {"SlotNo", "Manufacturer", "TypeDetail"}) + rows("PCIs", {"FunKey"});
  }
};

// The filter may select a module, and nothing else: no row changes, no file appears.
TEST_F(HostileMemoryFilter, ReadsAModuleOrFails) {
  const std::string before = everything();
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(text.substr(0, 100));
    for (const std::string& filter :
         {text, "SlotNo=" + text, "Manufacturer='" + text + "'", "Manufacturer=\"" + text + "\"",
          "SlotNo=? AND Manufacturer='" + text + "'"}) {
      const _zym_db_param_t slot{2, 0, 0, 1};
      _ZYMDB_Memory module{};
      const int status = zymdb_get_memory_with_filter(&module, filter.c_str(), &slot);
      if (status == ZYM_DB_STATUS_OK) {
        EXPECT_GE(module.SlotNo, 1) << filter.substr(0, 100);
        EXPECT_LE(module.SlotNo, 3) << filter.substr(0, 100);
      } else {
        EXPECT_EQ(module.SlotNo, 0) << filter.substr(0, 100);
      }
    }
  }
  EXPECT_EQ(everything(), before);
  EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile"));
}

}  // namespace
