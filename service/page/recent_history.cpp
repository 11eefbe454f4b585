#include "service/page/recent_history.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "documents/difference_json.h"
#include "documents/json_value.h"
#include "documents/snapshot.h"
#include "service/page/child_process.h"

namespace zymdb::service {
namespace {

using documents::Event;
using documents::Json;

constexpr char kInventoryVariable[] = "ZYMDB_INVENTORY";
constexpr std::chrono::seconds kLongestReading{20};

Json json_of(const Event& event, const documents::Change& change) {
  Json json{{"generation", event.generation}, {"time", documents::time_text(event.time)}};
  json.update(Json::parse(documents::to_json_line(change)));
  json["where"] = documents::where(change);
  json["what"] = documents::what(change);
  return json;
}

// From the last that is to be told to the first; what there is no room for is told as a number.
std::string lines_of(const Event& event) {
  const Json when{{"generation", event.generation}, {"time", documents::time_text(event.time)}};
  const auto line = [](const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  };
  const auto sum = [&](const char* name, size_t parts) {
    Json json = when;
    json["change"] = name;
    json["parts"] = parts;
    return line(json);
  };
  if (event.is_baseline) return sum("baseline", event.changes.size());
  std::string lines;
  const size_t told = std::min(event.changes.size(), RecentHistory::kMostOfOne);
  if (event.changes.size() > told) lines += sum("more", event.changes.size() - told);
  for (size_t i = told; i > 0; --i) lines += line(json_of(event, event.changes[i - 1]));
  return lines;
}

// Runs in a process of its own: to look back, the open inventory is exchanged for a copy, which is taken
// back.
std::string read_lines(const std::vector<documents::RecordType>& types, const std::string& copy,
                       uint64_t since) {
  copy_inventory(copy);
  zym_db_close(get_dmdb_handle());
  allow_creation(false);
  if (setenv(kInventoryVariable, copy.c_str(), 1) != 0) throw std::bad_alloc();
  std::string lines;
  for (const Event& event : documents::read_history(types, since)) lines += lines_of(event);
  return lines;
}

PastChange parse_line(const std::string& line) {
  return {Json::parse(line)["generation"].get<uint64_t>(), line};
}

}  // namespace

std::vector<PastChange> RecentHistory::newest(std::optional<uint64_t> generation) {
  const std::lock_guard lock(mutex_);
  const bool is_another = !generation || (generation_ && *generation < *generation_);
  if (is_another) {
    generation_.reset();
    changes_.clear();
  }
  if (!generation_ || generation_ != generation) {
    const uint64_t since = first_to_read();
    // Removed here, also where the child had to be ended.
    const documents::ScratchFolder folder;
    const std::string lines = output_of_child(
        [&] { return read_lines(types_, folder.file("inventory.db"), since); }, kLongestReading);
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) changes_.push_back(parse_line(line));
    while (changes_.size() > kMostChanges) changes_.pop_front();
    // Somebody may have committed since: what was read beyond is not read again.
    generation_ = generation;
    if (generation_ && !changes_.empty()) generation_ = std::max(*generation_, changes_.back().generation);
  }
  return {changes_.rbegin(), changes_.rend()};
}

// So far back that it takes its time and no more. What is older is forgotten where there is something in
// between.
uint64_t RecentHistory::first_to_read() {
  const uint64_t next = generation_ ? *generation_ + 1 : 0;
  const auto entries = documents::read_entries();
  if (entries.size() <= kMostEntries) return next;
  const uint64_t oldest = entries[entries.size() - kMostEntries].generation;
  if (oldest <= next) return next;
  changes_.clear();
  return oldest;
}

}  // namespace zymdb::service
