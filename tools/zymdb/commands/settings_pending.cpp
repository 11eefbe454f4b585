#include <iterator>
#include <map>
#include <memory>

#include "commands/settings.h"
#include "controller/database_client.h"
#include "show/inventory.h"
#include "show/pci_text.h"
#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

constexpr char kAction[] = "read the pending values";

constexpr char kExamples[] =
    "  zymdb settings pending\n"
    "  zymdb settings pending --json | jq -r '.pending[].SettingID'";

struct Pending {
  std::string id;
  uint32_t function = 0;
  std::string current;
  std::string pending;
  std::string accepted;
};

template <std::string Pending::*Member>
Value text(const Pending& pending) {
  return pending.*Member;
}

template <std::string Pending::*Member>
constexpr Column<Pending> text_column(const char* name, const char* heading, const char* help) {
  return {{name, heading, help, Shown::kByDefault, Kind::kText, 0}, &text<Member>};
}

Value function_address(const Pending& pending) {
  return pending.function == 0 ? std::string() : address_text(pending.function);
}

constexpr Column<Pending> kColumns[] = {
    text_column<&Pending::id>("SettingID", "SETTING", "the setting"),
    derived<Pending>("FUNCTION", "address of the adapter's function (PfaKey)", Shown::kByDefault,
                     function_address),
    field<Pending, &Pending::function, 8>("PfaKey", "KEY", "function key of the adapter"),
    text_column<&Pending::current>("CurrentValue", "CURRENT", "value in force"),
    text_column<&Pending::pending>("PendingValue", "PENDING", "value that a user has set"),
    text_column<&Pending::accepted>("AcceptedValue", "ACCEPTED",
                                    "value that the BIOS configuration manager holds for the firmware"),
};

struct CloseHandle {
  void operator()(_zym_db_handle_t* handle) const { zym_db_close(handle); }
};

// The rows of a query, read by name.
class Rows {
 public:
  Rows(_zym_db_handle_t* handle, const char* table, std::initializer_list<const char*> columns,
       const char* where) {
    zym_db_result_t* result = nullptr;
    const int status = zym_db_query(handle, table, columns.begin(), static_cast<int>(columns.size()), where,
                                    nullptr, 0, 0, &result);
    result_.reset(result);
    require_status(status, kAction);
  }

  bool step() { return result_ != nullptr && zym_db_result_step(result_.get()) == ZYM_DB_STATUS_ROW; }

  std::string text(const char* column) {
    char text[1025] = "";
    extract_str_column_from_result(result_.get(), column, text, sizeof text);
    return text;
  }
  uint32_t number(const char* column) {
    uint32_t number = 0;
    extract_uint_column_from_result(result_.get(), column, &number);
    return number;
  }

 private:
  struct Free {
    void operator()(zym_db_result_t* result) const { zym_db_free_result(result); }
  };
  std::unique_ptr<zym_db_result_t, Free> result_;
};

using PendingById = std::map<std::string, Pending>;

void add_settings_that_differ(PendingById& pending) {
  Rows rows(get_dmdb_handle(), "PCISetting", {"SettingID", "PfaKey", "CurrentValue", "PendingValue"},
            nullptr);
  while (rows.step()) {
    Pending setting{rows.text("SettingID"),
                    rows.number("PfaKey"),
                    rows.text("CurrentValue"),
                    rows.text("PendingValue"),
                    {}};
    const auto accepted = pending.find(setting.id);
    const bool differs = !setting.pending.empty() && setting.pending != setting.current;
    if (accepted != pending.end()) setting.accepted = accepted->second.accepted;
    if (accepted != pending.end() || differs) pending[setting.id] = std::move(setting);
  }
}

void add_accepted_values(PendingById& pending) {
  const std::unique_ptr<_zym_db_handle_t, CloseHandle> manager(
      zym_db_open("localhost", "root", "", "propertiesdb", 0));
  if (manager == nullptr) throw Failure(with_logged_error(std::string("cannot ") + kAction));
  Rows rows(manager.get(), "biosPendingValue", {"name", "value"}, nullptr);
  while (rows.step()) {
    const auto id = rows.text("name");
    pending[id] = {id, 0, {}, {}, rows.text("value")};
  }
}

std::vector<Pending> read_pending() {
  require_settled_settings();
  PendingById by_id;
  add_accepted_values(by_id);
  add_settings_that_differ(by_id);
  std::vector<Pending> all;
  for (auto& [id, pending] : by_id) all.push_back(std::move(pending));
  return all;
}

}  // namespace

void add_settings_pending(CommandTree& tree, CLI::App& settings) {
  add_listing(
      tree, settings,
      make_listing<Pending>("pending", "Values that are to take effect later", kColumns, read_pending),
      kExamples);
}

}  // namespace zymdb::tool
