// Random changes, beside a model that remembers every moment.
#include <map>
#include <random>

#include "platform/journal_fixture.h"

namespace {

constexpr int kTransactions = 1000;

class JournalModelTest : public JournalTest {
 protected:
  struct Target {
    const char* table;
    std::initializer_list<const char*> columns;
  };
  static constexpr const char* kTexts[] = {"", "a", "\xC3\xA9", "\xFF", "\"\\", "12", "0x1F"};

  int number(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

  Set some_values(const Target& target) {
    Set values = set_of({});
    for (const char* column : target.columns) {
      switch (number(4)) {
        case 0:
          zym_db_content_put_null(values.get(), column);
          break;
        case 1:
          zym_db_content_put_int(values.get(), column, number(5));
          break;
        case 2:
          zym_db_content_put_text(values.get(), column, kTexts[number(std::size(kTexts))]);
          break;
        default:
          break;
      }
    }
    return values;
  }

  void change_something() {
    static const Target kTargets[] = {
        {"PCIs", {"FunKey", "BusNo", "SlotDesignation"}},
        {"AimDisks", {"SerialNo", "Temperature", "Presence"}},
        {"PCIPhysicalPortCounter", {"TxBytes"}},
        {"DPUEvents", {"Message"}},
    };
    const Target& target = kTargets[number(std::size(kTargets))];
    const std::string row = "_id=" + std::to_string(1 + number(12));
    const Set values = some_values(target);
    const int action = number(3);
    if (action == 0) {
      EXPECT_EQ(zym_db_insert(handle(), target.table, values.get(), 0, nullptr), 0);
    } else if (action == 1) {
      EXPECT_EQ(zym_db_update(handle(), target.table, values.get(), row.c_str(), nullptr, 0, nullptr), 0);
    } else {
      EXPECT_EQ(remove(target.table, row.c_str()), 0);
    }
  }

  void run_transaction() {
    const bool is_single = number(2) == 0;
    if (is_single) return change_something();
    ASSERT_EQ(zym_db_begin(handle()), 0);
    for (int i = number(6); i >= 0; --i) change_something();
    ASSERT_EQ(number(5) == 0 ? zym_db_rollback(handle()) : zym_db_commit(handle()), 0);
  }

  // All that the journal accounts for; of disks not the temperature.
  static std::string moment(const std::string& file) {
    return found_in(file, "SELECT _id, FunKey, BusNo, quote(SlotDesignation) FROM PCIs") +
           found_in(file, "SELECT _id, quote(SerialNo), quote(Presence) FROM AimDisks");
  }
  static std::string all(const std::string& file) {
    return moment(file) + found_in(file, "SELECT _id, Temperature FROM AimDisks") +
           found_in(file, "SELECT _id, TxBytes FROM PCIPhysicalPortCounter") +
           found_in(file, "SELECT _id, quote(Message) FROM DPUEvents");
  }

  std::mt19937 random_{20260101};
};

TEST_F(JournalModelTest, EveryGenerationCanBeHadBack) {
  std::map<uint64_t, std::string> moments;
  uint64_t before = generation();
  std::string content = all(inventory());
  moments[before] = moment(inventory());
  for (int i = 0; i < kTransactions; ++i) {
    run_transaction();
    const uint64_t now = generation();
    const std::string found = all(inventory());
    // A transaction that put back what it changed may count.
    ASSERT_GE(now, found != content ? before + 1 : before) << "transaction " << i;
    ASSERT_LE(now, before + 1) << "transaction " << i;
    before = now;
    content = found;
    moments[now] = moment(inventory());
  }
  EXPECT_GE(moments.size(), kTransactions / 3u);
  for (auto at = moments.rbegin(); at != moments.rend(); ++at) {
    ASSERT_EQ(zym_db_rewind(handle(), at->first), 0);
    ASSERT_EQ(moment(inventory()), at->second) << "generation " << at->first;
  }
}

}  // namespace
