// Many random changes: their history, change by change, is what became of the inventory.
#include <gmock/gmock.h>

#include <map>
#include <random>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "documents/applied.h"
#include "documents/history.h"
#include "platform/zymdb_platform.h"
#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "support/inventory.h"
#include "support/sample.h"

namespace zymdb::documents {
namespace {

constexpr int kTransactions = 1000 / kSample;

class HistoryModel : public InventoryTest {
 protected:
  struct Target {
    const char* table;
    std::vector<const char*> texts;
    std::vector<const char*> numbers;
  };

  int number(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

  ValuesPtr some_values(const Target& target) {
    static constexpr const char* kTexts[] = {"a", "b", "c", "\xC3\xA9", "\xFF", ""};
    ValuesPtr values(zym_db_get_content_values(get_dmdb_handle()));
    for (const char* column : target.texts) {
      if (number(2) == 0) zym_db_content_put_text(values.get(), column, kTexts[number(std::size(kTexts))]);
    }
    for (const char* column : target.numbers) {
      if (number(2) == 0) zym_db_content_put_int(values.get(), column, number(4));
    }
    return values;
  }

  void change_something() {
    static const Target kTargets[] = {
        {"Processor", {"Socket", "Version", "SerialNo"}, {"Status", "CoreCount"}},
        {"EmbeddedDeviceFirmware",
         {"DeviceName", "SoftwareID", "VersionString"},
         {"DeviceIndex", "Checksum"}},
    };
    const Target& target = kTargets[number(std::size(kTargets))];
    const std::string row = "_id=" + std::to_string(1 + number(8));
    const auto values = some_values(target);
    auto* const handle = get_dmdb_handle();
    switch (number(4)) {
      case 0:
        EXPECT_EQ(zym_db_insert(handle, target.table, values.get(), 0, nullptr), 0);
        break;
      case 1:
        EXPECT_EQ(zym_db_delete(handle, target.table, row.c_str(), nullptr, 0, nullptr), 0);
        break;
      default:
        EXPECT_EQ(zym_db_update(handle, target.table, values.get(), row.c_str(), nullptr, 0, nullptr), 0);
    }
  }

  void run_transaction() {
    auto* const handle = get_dmdb_handle();
    ASSERT_EQ(zym_db_begin(handle), 0);
    for (int i = number(4); i >= 0; --i) change_something();
    ASSERT_EQ(number(8) == 0 ? zym_db_rollback(handle) : zym_db_commit(handle), 0);
  }

  std::mt19937 random_{20260101};
};

TEST_F(HistoryModel, LeadsFromEachMomentToTheNext) {
  const std::vector<RecordType> types{records::processors(), records::embedded_devices()};
  std::map<uint64_t, Document> moments;
  Document now = read_document(types);
  for (int i = 0; i < kTransactions; ++i) {
    run_transaction();
    const Document& moment = moments[inventory_generation().value()] = read_document(types);
    ASSERT_EQ(moment.classes.size(), 2u);
  }
  const auto events = read_history(types, 0);
  EXPECT_GE(events.size(), kTransactions / 3u);
  auto moment = moments.upper_bound(0);
  for (const Event& event : events) {
    // What is told of by no event is as it was.
    for (; moment->first < event.generation; ++moment) {
      const auto rest = difference(now, moment->second);
      ASSERT_TRUE(rest.empty()) << "generation " << moment->first << ": " << text_of(rest.front());
    }
    ASSERT_EQ(moment->first, event.generation);
    now = applied(now, event.changes);
    const auto rest = difference(now, moment->second);
    ASSERT_TRUE(rest.empty()) << "generation " << event.generation << ": " << text_of(rest.front());
    ++moment;
  }
}

}  // namespace
}  // namespace zymdb::documents
