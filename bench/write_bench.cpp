// Reports that change something, and those that do not; settings; the merge.
#include <benchmark/benchmark.h>
#include <syslog.h>

#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>

#include "comparison.h"
#include "controller/database_client.h"
#include "pci_settings/setting_columns.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_storage.h"

using bench::Columns;
using bench::Statements;

namespace {

constexpr int kRows = 200;
constexpr auto kIgnore = [](Columns) {};

// A drive's presence: the comparison stands in the update itself.
void add_presence() {
  bench::add({"unchanged presence of a drive",
              kRows,
              {"SELECT Presence FROM AimDisks WHERE LocationId=? AND BayNo=?"},
              [](int turn) { return zymdb_update_aim_disk_presence(2, bench::row_of(turn, kRows), 1) == 0; },
              [](Statements& raw, int turn) {
                int presence = 0;
                raw.one(
                    0, [&](Columns row) { presence = row.number(); }, 2, bench::row_of(turn, kRows));
                return presence == 1;
              },
              false});
}

// The health of an adapter function through the record helper, which locates the row before it updates it.
bool report_health(int adapter, unsigned health) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  zym_db_content_put_uint(values, "HealthStatus", health);
  const std::string where = "PCIFuncKey=" + std::to_string(bench::function_key(adapter));
  const std::string filter = "HealthStatus!=" + std::to_string(health);
  const int64_t id = insert_or_update_db_record(handle, "PCIAdapter", where.c_str(), values, filter.c_str());
  zym_db_free_content_values(values);
  return id > 0;
}

int64_t locate(Statements& raw, uint32_t key) {
  int64_t id = 0;
  raw.one(
      0, [&](Columns row) { id = row.number().value; }, key);
  return id;
}

constexpr unsigned kGood = 1;

void add_health() {
  static constexpr char kLocate[] = "SELECT _id FROM PCIAdapter WHERE PCIFuncKey=?";
  bench::add({"unchanged health, located first",
              kRows,
              {kLocate, "SELECT 1 FROM PCIAdapter WHERE _id=? AND HealthStatus!=?"},
              [](int turn) { return report_health(bench::row_of(turn, kRows), kGood); },
              [](Statements& raw, int turn) {
                const int64_t id = locate(raw, bench::function_key(bench::row_of(turn, kRows)));
                return !raw.one(1, kIgnore, id, kGood) && id > 0;
              },
              false});
  // Its adapters are in another inventory: the unchanged ones stay so.
  constexpr int kChanging = 250;
  static unsigned health = kGood;
  bench::add({"changed health, located first",
              kChanging,
              {kLocate, "UPDATE PCIAdapter SET HealthStatus=? WHERE _id=? AND HealthStatus!=?"},
              [](int turn) { return report_health(bench::row_of(turn, kChanging), ++health); },
              [](Statements& raw, int turn) {
                const int64_t id = locate(raw, bench::function_key(bench::row_of(turn, kChanging)));
                ++health;
                return raw.change(1, health, id, health);
              },
              true});
}

// ---- Settings

using Setting = ZYMDB_PCI_Config_Setting;

const char* field_of(const zymdb::Column& column, const Setting& setting) {
  return reinterpret_cast<const char*>(&setting) + column.offset;
}

bool is_text(const zymdb::Column& column) {
  return column.reading == zymdb::Reading::kText;
}

// Binds the fields of a setting, from a place on; empty texts are null. Returns the place behind them.
int bind_setting(sqlite3_stmt* statement, int place, std::span<const zymdb::Column> columns,
                 const Setting& setting, bool with_empty_texts) {
  for (const zymdb::Column& column : columns) {
    const char* const field = field_of(column, setting);
    if (!is_text(column)) {
      uint32_t number;
      std::memcpy(&number, field, sizeof number);
      sqlite3_bind_int64(statement, place++, number);
    } else if (field[0] != '\0') {
      sqlite3_bind_text(statement, place++, field, -1, SQLITE_STATIC);
    } else if (with_empty_texts) {
      sqlite3_bind_null(statement, place++);
    }
  }
  return place;
}

// "column IS NULL OR column!=?" and the like, for every column but the id.
std::string changed_terms(const Setting& like) {
  std::string terms;
  for (const zymdb::Column& column : zymdb::kComparedColumns) {
    const std::string name = column.name;
    if (!terms.empty()) terms += " OR ";
    if (!is_text(column))
      terms += name + "!=?";
    else if (field_of(column, like)[0] != '\0')
      terms += "(" + name + " IS NULL OR " + name + "!=?)";
    else
      terms += name + " IS NOT NULL";
  }
  return terms;
}

std::string update_of_all_columns() {
  std::string sql = "UPDATE PCISetting SET ";
  for (const zymdb::Column& column : zymdb::kWrittenColumns.table) sql.append(column.name).append("=?,");
  sql.pop_back();
  return sql + " WHERE _id=?";
}

// The settings of the busy function as they stand in an inventory, each written back once: empty texts are
// then null, and nothing is left to change.
std::vector<Setting> settled_settings(int rows) {
  bench::inventory(rows);
  std::vector<Setting> settings(static_cast<size_t>(rows));
  unsigned short filled = 0;
  zymdb_get_pci_configSet_list(bench::kBusyFunction, nullptr, static_cast<unsigned>(rows), settings.data(), 0,
                               &filled);
  if (filled != rows) throw std::runtime_error("no settings");
  for (const Setting& setting : settings) extract_PCISetting_info(&setting);
  return settings;
}

void add_settings() {
  static std::vector<Setting> settings = settled_settings(kRows);
  static const std::string compare =
      "SELECT 1 FROM PCISetting WHERE _id=? AND (" + changed_terms(settings[0]) + ")";
  static const std::string update = update_of_all_columns();
  constexpr auto setting_of = [](int turn) -> Setting& {
    return settings[static_cast<size_t>(bench::row_of(turn, kRows))];
  };
  static constexpr char kLocate[] = "SELECT _id FROM PCISetting WHERE SettingID=?";
  constexpr auto locate_setting = [](Statements& raw, const Setting& setting) {
    int64_t id = 0;
    raw.one(
        0, [&](Columns row) { id = row.number().value; }, setting.SettingID);
    return id;
  };

  bench::add({"unchanged setting, 30 terms",
              kRows,
              {kLocate, compare.c_str()},
              [=](int turn) { return extract_PCISetting_info(&setting_of(turn)) == 0; },
              [=](Statements& raw, int turn) {
                const Setting& setting = setting_of(turn);
                const int64_t id = locate_setting(raw, setting);
                sqlite3_bind_int64(raw[1], 1, id);
                bind_setting(raw[1], 2, zymdb::kComparedColumns, setting, false);
                const bool is_changed = sqlite3_step(raw[1]) == SQLITE_ROW;
                sqlite3_reset(raw[1]);
                return id > 0 && !is_changed;
              },
              false});

  constexpr int kChanging = 250;
  static std::vector<Setting> changing = settled_settings(kChanging);
  static int value = 0;
  constexpr auto change = [](int turn) -> const Setting& {
    Setting& setting = changing[static_cast<size_t>(bench::row_of(turn, kChanging))];
    std::snprintf(setting.CurrentValue, sizeof setting.CurrentValue, "Value %d", ++value);
    return setting;
  };
  bench::add({"changed setting, 30 columns",
              kChanging,
              {kLocate, update.c_str()},
              [=](int turn) { return extract_PCISetting_info(&change(turn)) == 0; },
              [=](Statements& raw, int turn) {
                const Setting& setting = change(turn);
                const int64_t id = locate_setting(raw, setting);
                const int last = bind_setting(raw[1], 1, zymdb::kWrittenColumns.table, setting, true);
                sqlite3_bind_int64(raw[1], last, id);
                const bool is_written = sqlite3_step(raw[1]) == SQLITE_DONE;
                sqlite3_reset(raw[1]);
                return id > 0 && is_written;
              },
              true});
}

// ---- The merge

#define MERGED_WITHOUT_SETTINGS \
  "FROM PCIAdapter WHERE AIMSupported=? AND PCIFuncKey NOT IN (SELECT PfaKey FROM PCISetting)"

// The functions that have settings, and then each with the type of its adapter.
template <class Merge>
int merge_raw(Statements& raw, Merge merge) {
  raw.one(0, kIgnore, 3);
  raw.one(1, kIgnore, 3);
  std::vector<uint32_t> functions;
  raw.each(2, [&](Columns row) { functions.push_back(row.number()); });
  for (const uint32_t key : functions) {
    uint32_t type = 0;
    raw.one(
        3, [&](Columns adapter) { type = adapter.number(); }, key);
    if (type != 3) merge(key);
  }
  return static_cast<int>(functions.size());
}

const std::vector<const char*> kMergeSql = {
    "SELECT 1 " MERGED_WITHOUT_SETTINGS " AND PCIFuncKey IN (SELECT FunKey FROM PCIs) LIMIT 1",
    "SELECT 1 " MERGED_WITHOUT_SETTINGS " LIMIT 1",
    "SELECT PfaKey FROM PCISetting WHERE 1 GROUP BY PfaKey",
    "SELECT AIMSupported FROM PCIAdapter WHERE PCIFuncKey=?",
    "SELECT NodeIndex,SlotNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,DevKey,FunKey FROM PCIs WHERE FunKey=?",
    "SELECT CardName,ConnectorType FROM PCIAdapter WHERE PCIKey=?",
    "UPDATE PCIAdapter SET "
    "SegNo=?,BusNo=?,DeviceNo=?,FunctionNo=?,NodeNo=?,SlotNo=?,CardName=?,ConnectorType=?,"
    "AIMSupported=3,PCIKey=?,PCIFuncKey=?,Location=? WHERE PCIFuncKey=?"};

struct Function {
  int64_t node, slot, segment, bus, device, function, location, device_key, key;
};

bool merge_function_raw(Statements& raw, uint32_t key) {
  Function f{};
  raw.one(
      4,
      [&](Columns row) {
        f = {row.number().value, row.number().value, row.number().value,
             row.number().value, row.number().value, row.number().value,
             row.number().value, row.number().value, row.number().value};
      },
      key);
  char card[129] = {};
  char connector[8] = {};
  raw.one(
      5, [&](Columns row) { row.text(card), row.text(connector); }, f.device_key);
  return raw.change(6, f.segment, f.bus, f.device, f.function, f.node, f.slot, card, connector, f.device_key,
                    f.key, f.location, key);
}

// Of an inventory whose busy function, which is no adapter's, has no settings.
int merged_functions(int rows) {
  bench::inventory(rows);
  int64_t merged = 0;
  zym_db_result_t* result = nullptr;
  const char* const column = "_id";
  if (zym_db_query(get_dmdb_handle(), "PCIAdapter", &column, 1, "AIMSupported=3", nullptr, 0, 0, &result) ==
      0) {
    merged = zym_db_result_row_count(result);
    zym_db_free_result(result);
  }
  return static_cast<int>(merged);
}

void run_raw(int rows, const char* sql) {
  bench::execute(bench::open_raw(bench::inventory(rows).path()).get(), sql);
}

void add_merge() {
  constexpr char kWithoutBusyFunction[] = "DELETE FROM PCISetting WHERE PfaKey=0x7F000000";
  constexpr int kMerged = 100;
  run_raw(kMerged, kWithoutBusyFunction);
  if (zymdb_merge_aim_ucm_pfa() != 0 || merged_functions(kMerged) != kMerged)
    throw std::runtime_error("no merge");
  bench::add({"merge, all merged", kMerged, kMergeSql, [](int) { return zymdb_merge_aim_ucm_pfa() == 0; },
              [](Statements& raw, int) { return merge_raw(raw, [](uint32_t) {}) == kMerged; }, false});

  constexpr int kNew = 20;
  run_raw(kNew, kWithoutBusyFunction);
  bench::add({"merge, all new", kNew, kMergeSql, [](int) { return zymdb_merge_aim_ucm_pfa() == 0; },
              [](Statements& raw, int) {
                return merge_raw(raw, [&](uint32_t key) { merge_function_raw(raw, key); }) == kNew;
              },
              true,
              [] {
                if (merged_functions(kNew) != kNew) throw std::runtime_error("not merged");
                run_raw(kNew, "UPDATE PCIAdapter SET AIMSupported=0");
              }});
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  // The merge writes a line of information for each function, which no comparator does.
  setlogmask(LOG_UPTO(LOG_NOTICE));
  add_presence();
  add_health();
  add_settings();
  add_merge();
  benchmark::RunSpecifiedBenchmarks();
}
