#include "documents/history.h"

#include <algorithm>
#include <array>
#include <span>

#include "common/client_extensions.h"
#include "common/text.h"
#include "documents/json_value.h"
#include "records/rows.h"

namespace zymdb::documents {
namespace {

constexpr int64_t kMillisecond = 1000;

// The tables that a class is read from: all others may change without a look at it.
struct Source {
  std::string_view class_name;
  std::array<std::string_view, 4> tables;
};
constexpr Source kSources[] = {
    {"system", {"System"}},
    {"processors", {"Processor"}},
    {"memory", {"Memory"}},
    {"adapters", {"PCIAdapter", "PCIs", "NCSIPackageID", "VPDs"}},
    {"functions", {"PCIs"}},
    {"gpus", {"PCIs", "PCIGPU", "PCIGPUChip"}},
    {"ports", {"PCIs", "PCINetwork", "PCIPhysicalPort", "PCIPhysicalPortStat"}},
    {"logical-ports", {"PCIs", "PCILogicalPort", "PCINetwork"}},
    {"firmware", {"PCIs", "Firmwares"}},
    {"pldm", {"PldmDeviceFirmware"}},
    {"embedded", {"EmbeddedDeviceFirmware"}},
    {"drives", {"AimDisks", "NVMeDrives", "SensorSlotMap"}},
    {"settings", {"PCISetting"}},
};

bool may_touch(const Json& account, std::string_view class_name) {
  for (const auto& [table, rows] : account.items()) {
    if (is_read_from(class_name, table)) return true;
  }
  return false;
}

// Steps back in time. What no table of an entry touches is as it was.
class Rewinder {
 public:
  explicit Rewinder(const std::vector<RecordType>& types) : types_(types), now_(read_document(types)) {}

  Event take_back(const Entry& entry) {
    rewind_inventory(entry.generation - 1);
    const Json account = Json::parse(entry.account, nullptr, false);
    Document before = now_;
    for (size_t i = 0; i < types_.size(); ++i) {
      if (may_touch(account, types_[i].name)) before.classes[i] = read_class(types_[i]);
    }
    Event event{entry.generation, entry.time, before.is_empty() && !now_.is_empty(), difference(before, now_)};
    now_ = std::move(before);
    return event;
  }

 private:
  const std::vector<RecordType>& types_;
  Document now_;
};

}  // namespace

bool is_read_from(std::string_view class_name, std::string_view table) {
  const auto source = std::ranges::find(kSources, class_name, &Source::class_name);
  return source == std::end(kSources) || std::ranges::find(source->tables, table) != source->tables.end();
}

std::vector<Entry> read_entries() {
  const records::Reading reading("journal");
  records::Rows rows(reading, get_dmdb_handle(), "Journal", {"_id", "Time", "Size", "Changes"});
  std::vector<Entry> entries;
  while (rows.step()) {
    const auto number = [&](const char* column) {
      const Value value = rows.stored(column);
      const auto* const stored = std::get_if<uint64_t>(&value);
      return stored != nullptr ? *stored : 0;
    };
    std::string account = rows.long_text("Changes");
    const bool follows_others = number("Size") > account.size();
    entries.push_back({number("_id"), static_cast<int64_t>(number("Time")), std::move(account), follows_others});
  }
  reading.require_whole();
  return entries;
}

std::optional<uint64_t> generation_at(const std::vector<Entry>& entries, int64_t time) {
  const auto later = std::ranges::find_if(entries, [time](const Entry& entry) { return entry.time > time; });
  if (later == entries.begin()) return std::nullopt;
  return std::prev(later)->generation;
}

std::vector<Event> read_history(const std::vector<RecordType>& types, uint64_t since) {
  const auto entries = read_entries();
  Rewinder rewinder(types);
  std::vector<Event> events;
  for (auto entry = entries.rbegin(); entry != entries.rend() && entry->generation >= since; ++entry) {
    if (entry->account.empty()) continue;
    Event event = rewinder.take_back(*entry);
    if (!event.changes.empty()) events.push_back(std::move(event));
  }
  std::ranges::reverse(events);
  return events;
}

std::string time_text(int64_t milliseconds) {
  return utc_text(milliseconds / kMillisecond);
}

}  // namespace zymdb::documents
