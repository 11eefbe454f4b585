#include "collect/sources/sysfs/drivers.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "collect/sources/sysfs/machine_folders.h"
#include "collect/sources/sysfs/nvme_health.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr char kPermanentAddress[] = "permanent_address";
constexpr char kMaxSpeed[] = "max_speed";
constexpr char kConnector[] = "connector";
constexpr char kVersion[] = "version";
constexpr char kWarning[] = "critical_warning";
constexpr char kTemperature[] = "temperature";
constexpr char kRemainingLife[] = "remaining_life";
constexpr char kCapacity[] = "capacity";

// What one driver told: a line for each thing, a name, a blank and a value.
class Answer {
 public:
  explicit Answer(std::string text = {}) : text_(std::move(text)) {}

  void add(const char* name, const std::string& value) { text_ += std::string(name) + " " + value + "\n"; }
  void add(const char* name, uint64_t value) { add(name, std::to_string(value)); }

  std::optional<std::string> text(std::string_view name) const {
    std::string_view rest = text_;
    while (!rest.empty()) {
      const auto line = rest.substr(0, rest.find('\n'));
      rest.remove_prefix(std::min(line.size() + 1, rest.size()));
      if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == ' ')
        return known_text(line.substr(name.size()));
    }
    return std::nullopt;
  }

  std::optional<uint64_t> number(std::string_view name, uint64_t most = UINT64_MAX) const {
    const auto value = text(name);
    const auto number = value ? leading_number(*value) : std::nullopt;
    return number && *number <= most ? number : std::nullopt;
  }

  const std::string& all() const { return text_; }

 private:
  std::string text_;
};

Answer answer_of(const EthtoolSettings& settings) {
  Answer answer;
  if (settings.permanent_address) answer.add(kPermanentAddress, *settings.permanent_address);
  if (settings.max_speed) answer.add(kMaxSpeed, *settings.max_speed);
  if (settings.connector) answer.add(kConnector, static_cast<uint64_t>(*settings.connector));
  return answer;
}

EthtoolSettings settings_of(const Answer& answer) {
  EthtoolSettings settings;
  settings.permanent_address = answer.text(kPermanentAddress);
  if (const auto speed = answer.number(kMaxSpeed, UINT32_MAX))
    settings.max_speed = static_cast<uint32_t>(*speed);
  if (const auto connector = answer.number(kConnector, UINT16_MAX))
    settings.connector = static_cast<Connector>(*connector);
  return settings;
}

Answer answer_of(const std::optional<std::string>& version) {
  Answer answer;
  if (version) answer.add(kVersion, *version);
  return answer;
}

Answer answer_of(const std::optional<DriveHealth>& health) {
  Answer answer;
  if (!health) return answer;
  answer.add(kWarning, uint64_t{health->warning});
  answer.add(kTemperature, uint64_t{health->temperature});
  answer.add(kRemainingLife, uint64_t{health->remaining_life});
  if (health->capacity) answer.add(kCapacity, *health->capacity);
  return answer;
}

std::optional<DriveHealth> health_of(const Answer& answer) {
  const auto warning = answer.number(kWarning, UINT8_MAX);
  const auto temperature = answer.number(kTemperature, UINT8_MAX);
  const auto life = answer.number(kRemainingLife, UINT8_MAX);
  if (!warning || !temperature || !life) return std::nullopt;
  return DriveHealth{static_cast<uint8_t>(*warning), static_cast<uint8_t>(*temperature),
                     static_cast<uint8_t>(*life), answer.number(kCapacity)};
}

// Where the answers of a recorded machine are.
std::string answers_of(const std::string& root) {
  return (std::filesystem::path(root) / ".." / "driver-answers").string();
}

// Whoever records the machine keeps the answer as a file like any other.
void tell(const std::string& file, const Answer& answer) {
  if (auto* const observer = access_observer()) observer->read_file(file, answer.all(), 0);
}

// A reader that asks the running machine about a device.
template <class Told>
auto asking(Told (*read)(const std::string&), const std::string& folder, const char* what) {
  return [read, folder, what](const std::string& name) {
    Told told = ask(name + "'s driver, asked for its " + what, [read, name] { return read(name); });
    tell(folder + "/" + what + "/" + name, answer_of(told));
    return told;
  };
}

Drivers running_drivers() {
  const std::string folder = answers_of(kRunningMachine);
  if (auto* const observer = access_observer()) observer->listed(folder, {});
  return {.are_told = true,
          .ethtool = asking(read_ethtool, folder, "link"),
          .firmware_version = asking(read_firmware_version, folder, "firmware"),
          .health = asking(read_nvme_health, folder, "health"),
          .nvidia_folder = "/proc/driver/nvidia/gpus"};
}

// A reader of what was told about a device.
template <class Told>
auto recorded(Told (*read)(const Answer&), const std::string& folder, const char* what) {
  return [read, file = folder + "/" + what + "/"](const std::string& name) {
    return read(Answer(read_attribute(file + name).value_or("")));
  };
}

std::optional<std::string> version_of(const Answer& answer) {
  return answer.text(kVersion);
}

}  // namespace

Drivers drivers_of(const std::string& root) {
  if (root.empty()) return {};
  if (root == kRunningMachine) return running_drivers();
  const std::string folder = answers_of(root);
  if (!folder_entries(folder)) return {};
  return {.are_told = true,
          .ethtool = recorded(settings_of, folder, "link"),
          .firmware_version = recorded(version_of, folder, "firmware"),
          .health = recorded(health_of, folder, "health"),
          .nvidia_folder = folder_beside(root, "proc") + "/driver/nvidia/gpus"};
}

}  // namespace zymdb::collect
