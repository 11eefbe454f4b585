// InfiniBand devices and Fibre Channel hosts.
#include <algorithm>
#include <charconv>
#include <iterator>
#include <map>
#include <span>
#include <utility>

#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kBytesPerWord = 4;  // counters of both count words
constexpr size_t kGuidDigits = 19;     // "0002:c903:00fa:1234", the last part of a gid

std::optional<PortCounters> word_counters(const fs::path& sent_file, const fs::path& received_file) {
  const auto sent = read_number(sent_file.string());
  const auto received = read_number(received_file.string());
  // A driver that does not count has all bits set.
  if (!sent || !received || *sent == UINT64_MAX || *received == UINT64_MAX) return std::nullopt;
  return PortCounters{*sent * kBytesPerWord, *received * kBytesPerWord};
}

std::vector<fs::path> entries_of(const fs::path& folder) {
  return folder_entries(folder).value_or(std::vector<fs::path>{});
}

std::optional<std::string> read_guid(const fs::path& folder) {
  const auto gid = read_word(folder / "gids/0");
  if (!gid || gid->size() < kGuidDigits) return std::nullopt;
  return address_of_digits(std::string_view(*gid).substr(gid->size() - kGuidDigits));
}

NetworkPort read_infiniband_port(const fs::path& folder, const PciAddress& function, unsigned number) {
  NetworkPort port;
  port.function = function;
  port.index = number - 1;
  port.technology = LinkTechnology::kInfiniBand;
  port.permanent_address = read_guid(folder);
  // "4: ACTIVE"
  if (const auto state = read_word(folder / "state")) port.has_link = state->starts_with("4");
  const auto rate = read_word(folder / "rate");
  if (port.has_link == true && rate) port.speed = gigabits(*rate);
  if (port.speed) port.connector = cage_of(port.speed);
  port.counters = word_counters(folder / "counters/port_xmit_data", folder / "counters/port_rcv_data");
  return port;
}

std::optional<uint32_t> fastest_of(std::string_view speeds) {
  std::optional<uint32_t> fastest;
  while (!speeds.empty()) {
    const size_t comma = std::min(speeds.find(','), speeds.size());
    fastest = std::max(fastest, gigabits(speeds.substr(0, comma)));
    speeds.remove_prefix(std::min(comma + 1, speeds.size()));
  }
  return fastest;
}

// Sixteen digits and nothing else, as a storage endpoint's name is kept.
std::optional<std::string> port_name_digits(const std::optional<std::string>& address) {
  if (!address) return std::nullopt;
  std::string digits;
  std::ranges::copy_if(*address, std::back_inserter(digits), [](char c) { return c != ':'; });
  return digits;
}

std::optional<StorageRole> read_role(const fs::path& root, const std::string& host) {
  const auto mode = read_word(root / "class/scsi_host" / host / "active_mode");
  if (!mode) return std::nullopt;
  const bool initiates = mode->find("Initiator") != std::string::npos;
  const bool serves = mode->find("Target") != std::string::npos;
  if (initiates && serves) return StorageRole::kBoth;
  if (initiates) return StorageRole::kInitiator;
  return serves ? std::optional(StorageRole::kTarget) : std::nullopt;
}

std::optional<std::string> read_address(const fs::path& file) {
  const auto word = read_word(file);
  return word ? address_of_digits(*word) : std::nullopt;
}

// A virtual port lies in the folder of the host that carries it.
bool is_virtual(const fs::path& folder) {
  return real_path(folder).value_or("").string().find("/vport-") != std::string::npos;
}

NetworkPort read_fibre_host(const fs::path& root, const fs::path& folder, const PciAddress& function) {
  NetworkPort port;
  port.function = function;
  port.interface = folder.filename().string();
  port.technology = LinkTechnology::kFibreChannel;
  port.current_address = read_address(folder / "port_name");
  port.permanent_address = read_address(folder / "permanent_port_name");
  if (!port.permanent_address) port.permanent_address = port.current_address;
  port.current_fibre_address = port_name_digits(port.current_address);
  port.permanent_fibre_address = port_name_digits(port.permanent_address);
  port.role = read_role(root, folder.filename().string());
  const auto state = read_word(folder / "port_state");
  if (state && *state != "Unknown") port.has_link = *state == "Online";
  if (const auto speed = read_word(folder / "speed"); speed && port.has_link == true)
    port.speed = gigabits(*speed);
  if (const auto speeds = read_word(folder / "supported_speeds")) port.max_speed = fastest_of(*speeds);
  port.connector = cage_of(port.max_speed);
  port.counters = word_counters(folder / "statistics/tx_words", folder / "statistics/rx_words");
  return port;
}

}  // namespace

std::optional<PciAddress> function_of(const fs::path& folder) {
  const auto real = real_path(folder);
  if (!real) return std::nullopt;
  std::optional<PciAddress> nearest;
  for (const auto& part : *real) {
    if (const auto address = parse_pci_address(part.string())) nearest = address;
  }
  return nearest;
}

std::optional<std::string> read_word(const fs::path& file) {
  const auto content = read_attribute(file.string());
  if (!content || trimmed(*content).empty()) return std::nullopt;
  return std::string(trimmed(*content));
}

std::optional<std::string> address_of_digits(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  std::string digits;
  std::ranges::copy_if(text, std::back_inserter(digits), [](char c) { return c != ':'; });
  std::vector<uint8_t> bytes;
  for (size_t at = 0; at < digits.size(); at += 2) {
    const auto byte = hex_number(std::string_view(digits).substr(at, 2));
    if (!byte || digits.size() % 2 != 0) return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(*byte));
  }
  return address_text(bytes);
}

std::optional<uint32_t> gigabits(std::string_view text) {
  text = trimmed(text);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view unit = trimmed({end, static_cast<size_t>(text.data() + text.size() - end)});
  if (error != std::errc{} || !unit.starts_with("Gb") || !(number > 0) || number > 100'000)
    return std::nullopt;
  return static_cast<uint32_t>(number * 1000);
}

std::vector<NetworkPort> read_infiniband_ports(const fs::path& root) {
  std::vector<NetworkPort> ports;
  for (const auto& device : entries_of(root / "class/infiniband")) {
    const auto function = function_of(device);
    if (!function) continue;
    for (const auto& folder : entries_of(device / "ports")) {
      const auto number = leading_number(folder.filename().string());
      // The others are Ethernet ports that can do remote memory access; their interfaces tell of them.
      const auto layer = read_word(folder / "link_layer").value_or("InfiniBand");
      if (!number || *number == 0 || *number > UINT8_MAX || layer != "InfiniBand") continue;
      auto& port =
          ports.emplace_back(read_infiniband_port(folder, *function, static_cast<unsigned>(*number)));
      port.interface = device.filename().string();
    }
  }
  return ports;
}

std::vector<NetworkPort> read_fibre_channel_ports(const fs::path& root) {
  std::vector<NetworkPort> ports;
  for (const auto& folder : entries_of(root / "class/fc_host")) {
    const auto function = function_of(folder);
    if (function && !is_virtual(folder)) ports.push_back(read_fibre_host(root, folder, *function));
  }
  return ports;
}

}  // namespace zymdb::collect
