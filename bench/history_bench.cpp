// What it costs that changes are accounted for: time and bytes of a change with history and without, and
// beside them what else SQLite offers for it, triggers and its session extension, on the same tables.
#define SQLITE_ENABLE_PREUPDATE_HOOK
#define SQLITE_ENABLE_SESSION
#include <benchmark/benchmark.h>

#include <fstream>
#include <map>
#include <set>
#include <stdexcept>

#include "comparison.h"
#include "controller/database_client.h"
#include "zymdb_network.h"
#include "zymdb_pci_settings.h"
#include "zymdb_platform.h"

using bench::Statements;

namespace {

constexpr int kRows = 250;

constexpr char kOff[] = "without history";
constexpr char kTriggers[] = "triggers";
constexpr char kSessions[] = "sessions";

// All that this process has had written, whatever file it went to.
uint64_t written_bytes() {
  std::ifstream counters("/proc/self/io");
  for (std::string name; counters >> name;) {
    uint64_t value = 0;
    counters >> value;
    if (name == "wchar:") return value;
  }
  throw std::runtime_error("no count of written bytes");
}

// What filled the inventory is no change that is measured.
void empty_log(const bench::Inventory& inventory) {
  bench::execute(bench::open_raw(inventory.path()).get(), "PRAGMA wal_checkpoint(TRUNCATE)");
}

// The library's inventory, whose history is kept or is not.
class Kept {
 public:
  explicit Kept(bool with_history) : with_history_(with_history) {
    prepare();
    inventory_.emplace(kRows);
    empty_log(*inventory_);
  }

  void open() {
    prepare();
    inventory_->open();
  }

 private:
  // The client looks at the variable when it opens the inventory.
  void prepare() const {
    if (with_history_)
      unsetenv("ZYMDB_HISTORY");
    else
      setenv("ZYMDB_HISTORY", "off", 1);
  }

  bool with_history_;
  std::optional<bench::Inventory> inventory_;
};

// A change, as the library makes it and as a statement. `rows` are changed together.
struct Change {
  const char* name;
  const char* table;
  int rows;
  bool (*library)(int turn);
  std::string update;
  void (*bind)(sqlite3_stmt* statement, int turn);
};

// ---- What else SQLite offers

constexpr char kLog[] = "CREATE TABLE ChangeLog (_id INTEGER PRIMARY KEY, Time INTEGER, Changes)";
#define NOW "CAST(1000*(julianday('now')-2440587.5)*86400 AS INTEGER)"
constexpr char kAppend[] = "INSERT INTO ChangeLog (Time, Changes) VALUES (" NOW ", ?)";

std::vector<std::string> columns_of(sqlite3* connection, const char* table) {
  Statements statement(connection, std::vector{"SELECT name FROM pragma_table_info(?)"});
  std::vector<std::string> names;
  char name[64];
  statement.each(
      0, [&](bench::Columns row) { names.emplace_back((row.text(name), name)); }, table);
  return names;
}

// A row for each row that changed, with the former values of what changed: what the journal holds, too.
std::string trigger_on(sqlite3* connection, const char* table) {
  std::string values;
  for (const std::string& column : columns_of(connection, table))
    values += (values.empty() ? "SELECT '" : " UNION ALL SELECT '") + column + "' AS k, OLD.\"" + column +
              "\" AS v WHERE OLD.\"" + column + "\" IS NOT NEW.\"" + column + "\"";
  return std::string("CREATE TRIGGER Log") + table + " AFTER UPDATE ON " + table +
         " BEGIN INSERT INTO ChangeLog (Time, Changes) SELECT " NOW ", json_object('" + table +
         "', json_array(OLD._id, json_group_object(k, v))) FROM (" + values + "); END";
}

// An inventory that is changed through SQLite's own interface.
class Raw {
 public:
  explicit Raw(bool with_log) : inventory_(kRows), connection_(bench::open_raw(inventory_.path())) {
    if (with_log) bench::execute(connection_.get(), kLog);
    empty_log(inventory_);
    append_ = bench::prepare(connection_.get(), with_log ? kAppend : "SELECT ?");
  }

  sqlite3* connection() const { return connection_.get(); }

  void execute(const char* sql) const { bench::execute(connection(), sql); }

  sqlite3_stmt* update(const Change& change) {
    auto& prepared = updates_[&change];
    if (!prepared) prepared.emplace(bench::prepare(connection(), change.update.c_str()));
    return prepared->get();
  }

  bool run(const Change& change, int turn) {
    sqlite3_stmt* const statement = update(change);
    bool done = true;
    for (int row = 0; row < change.rows; ++row) {
      change.bind(statement, turn * change.rows + row);
      done = done && sqlite3_step(statement) == SQLITE_DONE && sqlite3_changes(connection()) == 1;
      sqlite3_reset(statement);
    }
    return done;
  }

  bool append(const void* changes, int size) {
    sqlite3_bind_blob(append_->get(), 1, changes, size, SQLITE_STATIC);
    const bool done = sqlite3_step(append_->get()) == SQLITE_DONE;
    sqlite3_reset(append_->get());
    return done;
  }

 private:
  bench::Inventory inventory_;
  bench::Connection connection_;
  std::optional<bench::Prepared> append_;
  std::map<const Change*, std::optional<bench::Prepared>> updates_;
};

class Triggers : public Raw {
 public:
  explicit Triggers(const std::vector<Change>& changes) : Raw(true) {
    std::set<std::string> tables;
    for (const Change& change : changes) {
      if (tables.insert(change.table).second) execute(trigger_on(connection(), change.table).c_str());
    }
  }
};

bool run_in_transaction(Raw& raw, const Change& change, int turn) {
  raw.execute("BEGIN IMMEDIATE");
  const bool done = raw.run(change, turn);
  raw.execute("COMMIT");
  return done;
}

// A changeset for each transaction, written with it.
bool run_in_session(Raw& raw, const Change& change, int turn) {
  raw.execute("BEGIN IMMEDIATE");
  sqlite3_session* session = nullptr;
  bool done = sqlite3session_create(raw.connection(), "main", &session) == SQLITE_OK &&
              sqlite3session_attach(session, change.table) == SQLITE_OK && raw.run(change, turn);
  int size = 0;
  void* changes = nullptr;
  done = done && sqlite3session_changeset(session, &size, &changes) == SQLITE_OK && size > 0;
  sqlite3session_delete(session);
  done = done && raw.append(changes, size);
  sqlite3_free(changes);
  raw.execute("COMMIT");
  return done;
}

// ---- The changes

const char* number_text(int number) {
  static char text[32];
  std::snprintf(text, sizeof text, "Value %d", number);
  return text;
}

bool set_link(int turn) {
  const _ZYMDB_PCI_PortLinkState state{1u + static_cast<unsigned>(turn) % 2u,
                                       26000u + static_cast<unsigned>(turn), 0, 0, 0};
  return zymdb_set_network_physical_port_link_state(bench::function_key(bench::row_of(turn, kRows)), &state,
                                                    0) == 0;
}

bool set_load(int turn) {
  const _ZYMDB_PCI_PortLinkState state{1, 25000, 1000u + static_cast<unsigned>(turn), 0, 0};
  return zymdb_set_network_physical_port_link_state(bench::function_key(bench::row_of(turn, kRows)), &state,
                                                    0) == 0;
}

// Of the library's own operations the one with most columns.
bool set_setting(int turn) {
  static ZYMDB_PCI_Config_Setting setting = [] {
    std::vector<ZYMDB_PCI_Config_Setting> found(kRows);
    unsigned short filled = 0;
    zymdb_get_pci_configSet_list(bench::kBusyFunction, nullptr, kRows, found.data(), 0, &filled);
    if (filled != kRows) throw std::runtime_error("no settings");
    return found[0];
  }();
  std::snprintf(setting.CurrentValue, sizeof setting.CurrentValue, "%s", number_text(turn));
  return extract_PCISetting_info(&setting) == 0;
}

bool set_links_together(int turn) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  bool done = zym_db_begin(handle) == 0;
  for (int row = 0; row < 100; ++row) done = set_link(turn * 100 + row) && done;
  return zym_db_commit(handle) == 0 && done;
}

void bind_link(sqlite3_stmt* statement, int turn) {
  bench::bind(statement, int64_t{1 + turn % 2}, int64_t{26000 + turn},
              int64_t{bench::function_key(bench::row_of(turn, kRows))});
}

void bind_load(sqlite3_stmt* statement, int turn) {
  bench::bind(statement, int64_t{1000 + turn}, int64_t{bench::function_key(bench::row_of(turn, kRows))});
}

void bind_setting(sqlite3_stmt* statement, int turn) {
  sqlite3_bind_text(statement, 1, number_text(turn), -1, SQLITE_STATIC);
}

constexpr char kSetLink[] =
    "UPDATE PCIPhysicalPortStat SET LinkStatus=?,LinkSpeed=? WHERE PCIFuncKey=? AND Idx=0";

const std::vector<Change>& changes() {
  static const std::vector<Change> all = {
      {"link of a port", "PCIPhysicalPortStat", 1, set_link, kSetLink, bind_link},
      {"100 links in a transaction", "PCIPhysicalPortStat", 100, set_links_together, kSetLink, bind_link},
      {"load of a port, volatile", "PCIPhysicalPortStat", 1, set_load,
       "UPDATE PCIPhysicalPortStat SET TxUtil=? WHERE PCIFuncKey=? AND Idx=0", bind_load},
      {"setting", "PCISetting", 1, set_setting,
       "UPDATE PCISetting SET CurrentValue=? WHERE SettingID='NetworkAdapter.0'", bind_setting},
  };
  return all;
}

// The inventories of the sides. A turn is nobody's twice, so that each call changes something.
struct Inventories {
  Kept with{true}, without{false};
  Raw plain{false}, sessions{true};
  Triggers triggers{changes()};

  std::vector<bench::Side> sides(const Change& change) {
    return {{bench::kLibrary, [&](int turn) { return with.open(), change.library(turn); }},
            {kOff, [&](int turn) { return without.open(), change.library(turn); }},
            {bench::kLimit, [&](int turn) { return run_in_transaction(plain, change, turn); }},
            {kTriggers, [&](int turn) { return run_in_transaction(triggers, change, turn); }},
            {kSessions, [&](int turn) { return run_in_session(sessions, change, turn); }}};
  }
};

// Bytes of a call, of so many.
double bytes_of(const bench::Side& side, int calls) {
  const auto run = [&](int turn) {
    if (!side.run(turn)) throw std::runtime_error("wrong result");
  };
  run(0);
  const uint64_t before = written_bytes();
  for (int turn = 1; turn <= calls; ++turn) run(turn);
  return static_cast<double>(written_bytes() - before) / calls;
}

// Of new inventories, whatever was measured before, and once: these figures are exact.
template <class Measure>
void add_bytes(const std::string& name, int rows, Measure measure) {
  benchmark::RegisterBenchmark((name + "/" + std::to_string(rows) + "/bytes").c_str(),
                               [measure](benchmark::State& state) {
                                 for (auto _ : state) measure(state);
                               })
      ->Iterations(1)
      ->Repetitions(1);
}

// Enough calls for the log to go into the database several times.
void add_bytes(const Change& change, int calls, const std::string& note = {}) {
  add_bytes(change.name + note, change.rows, [&change, calls](benchmark::State& state) {
    Inventories inventories;
    for (const auto& side : inventories.sides(change)) state.counters[side.name] = bytes_of(side, calls);
  });
}

// The same report again: nothing is to be written, history or not.
void add_unchanged() {
  add_bytes("unchanged setting", 1, [](benchmark::State& state) {
    Kept with(true);
    state.counters[bench::kLibrary] = bytes_of({bench::kLibrary, [](int) { return set_setting(0); }}, 100);
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  static Inventories inventories;
  for (const Change& change : changes()) {
    bench::add(change.name, change.rows, inventories.sides(change));
    add_bytes(change, change.rows == 1 ? 4000 : 100);
  }
  // The journal's bound is a mebibyte, which the oldest accounts leave.
  add_bytes(changes()[1], 1000, ", full journal");
  add_unchanged();
  benchmark::RunSpecifiedBenchmarks();
}
