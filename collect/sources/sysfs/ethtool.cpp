#include "collect/sources/sysfs/ethtool.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kLongestAddress = 32;
constexpr size_t kMostModeWords = INT8_MAX;

// Link modes from one number to another, both included.
struct ModeRange {
  unsigned first;
  unsigned last;
  uint32_t speed;
};
constexpr ModeRange kModes[] = {
    {0, 1, 10},        {2, 3, 100},       {4, 5, 1000},      {12, 12, 10'000},  {15, 15, 2500},
    {17, 17, 1000},    {18, 20, 10'000},  {21, 22, 20'000},  {23, 26, 40'000},  {27, 30, 56'000},
    {31, 33, 25'000},  {34, 35, 50'000},  {36, 39, 100'000}, {40, 40, 50'000},  {41, 41, 1000},
    {42, 46, 10'000},  {47, 47, 2500},    {48, 48, 5000},    {52, 56, 50'000},  {57, 61, 100'000},
    {62, 66, 200'000}, {67, 67, 100},     {68, 68, 1000},    {69, 73, 400'000}, {75, 79, 100'000},
    {80, 84, 200'000}, {85, 89, 400'000}, {90, 91, 100},     {92, 92, 10},      {93, 98, 800'000},
};

// Port types by the speed from which on they are used.
struct Cage {
  uint32_t speed;
  Connector connector;
};
constexpr Cage kCages[] = {
    {10'000, Connector::kSfpPlus}, {14'000, Connector::kSfpPlus},  {16'000, Connector::kSfpPlus},
    {25'000, Connector::kSfp28},   {32'000, Connector::kSfp28},    {40'000, Connector::kQsfpPlus},
    {50'000, Connector::kSfp56},   {56'000, Connector::kQsfpPlus}, {64'000, Connector::kSfp56},
    {100'000, Connector::kQsfp28}, {200'000, Connector::kQsfp56},  {400'000, Connector::kQsfp112},
};

// A socket to ask through, about one interface.
class Kernel {
 public:
  explicit Kernel(const std::string& interface) : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    std::strncpy(request_.ifr_name, interface.c_str(), IFNAMSIZ - 1);
  }
  ~Kernel() {
    if (socket_ >= 0) close(socket_);
  }
  Kernel(const Kernel&) = delete;
  Kernel& operator=(const Kernel&) = delete;

  bool answers(void* command) const {
    ifreq request = request_;
    request.ifr_data = static_cast<char*>(command);
    return socket_ >= 0 && ioctl(socket_, SIOCETHTOOL, &request) == 0;
  }

 private:
  int socket_;
  ifreq request_{};
};

// A command of the kernel's, with room behind it for what the answer appends.
template <class Command, class Appended, size_t Count>
class Question {
 public:
  explicit Question(uint32_t number) { command().cmd = number; }

  Command& command() { return *reinterpret_cast<Command*>(memory_.data()); }

  std::array<Appended, Count> appended() const {
    std::array<Appended, Count> answer;
    std::memcpy(answer.data(), memory_.data() + sizeof(Command), sizeof answer);
    return answer;
  }

 private:
  alignas(Command) std::array<std::byte, sizeof(Command) + Count * sizeof(Appended)> memory_{};
};

std::optional<std::string> read_permanent_address(const Kernel& kernel) {
  Question<ethtool_perm_addr, uint8_t, kLongestAddress> question(ETHTOOL_GPERMADDR);
  auto& command = question.command();
  command.size = kLongestAddress;
  if (!kernel.answers(&command) || command.size > kLongestAddress) return std::nullopt;
  const auto address = question.appended();
  return address_text(std::span(address).first(command.size));
}

// The first answer says how many words a set of modes has, the second fills the sets: those that the device
// supports, advertises, and that its partner does.
void read_link_settings(const Kernel& kernel, EthtoolSettings& settings) {
  Question<ethtool_link_settings, uint32_t, 3 * kMostModeWords> question(ETHTOOL_GLINKSETTINGS);
  auto& command = question.command();
  if (!kernel.answers(&command) || command.link_mode_masks_nwords >= 0) return;
  command.cmd = ETHTOOL_GLINKSETTINGS;
  command.link_mode_masks_nwords = static_cast<__s8>(-command.link_mode_masks_nwords);
  if (!kernel.answers(&command) || command.link_mode_masks_nwords <= 0) return;
  const auto sets = question.appended();
  settings.max_speed =
      fastest_mode(std::span(sets).first(static_cast<size_t>(command.link_mode_masks_nwords)));
  settings.connector = connector_of(command.port, settings.max_speed);
}

}  // namespace

std::optional<uint32_t> fastest_mode(std::span<const uint32_t> modes) {
  const auto is_set = [&](unsigned mode) {
    return mode / 32 < modes.size() && (modes[mode / 32] >> mode % 32 & 1U) != 0;
  };
  uint32_t fastest = 0;
  for (const auto& [first, last, speed] : kModes) {
    for (unsigned mode = first; mode <= last; ++mode)
      if (is_set(mode)) fastest = std::max(fastest, speed);
  }
  return fastest == 0 ? std::nullopt : std::optional(fastest);
}

std::optional<Connector> cage_of(std::optional<uint32_t> max_speed) {
  const auto cage = std::ranges::find(kCages, max_speed.value_or(0), &Cage::speed);
  return cage == std::end(kCages) ? std::nullopt : std::optional(cage->connector);
}

std::optional<Connector> connector_of(unsigned medium, std::optional<uint32_t> max_speed) {
  switch (medium) {
    case PORT_TP:
      return Connector::kRj45;
    case PORT_AUI:
      return Connector::kAui;
    case PORT_BNC:
      return Connector::kBnc;
    case PORT_FIBRE:
    case PORT_DA:
      return cage_of(max_speed);
    default:
      return std::nullopt;
  }
}

std::optional<std::string> address_text(std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; })) return std::nullopt;
  std::string text;
  for (const uint8_t byte : bytes) {
    if (!text.empty()) text += ':';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

EthtoolSettings read_ethtool(const std::string& interface) {
  EthtoolSettings settings;
  if (interface.size() >= IFNAMSIZ) return settings;
  const Kernel kernel(interface);
  settings.permanent_address = read_permanent_address(kernel);
  read_link_settings(kernel, settings);
  return settings;
}

std::optional<std::string> read_firmware_version(const std::string& interface) {
  if (interface.size() >= IFNAMSIZ) return std::nullopt;
  ethtool_drvinfo driver{};
  driver.cmd = ETHTOOL_GDRVINFO;
  if (!Kernel(interface).answers(&driver)) return std::nullopt;
  return known_text({driver.fw_version, strnlen(driver.fw_version, sizeof driver.fw_version)});
}

}  // namespace zymdb::collect
