#include <algorithm>
#include <filesystem>
#include <map>

#include "collect/sources/sysfs/machine_folders.h"
#include "collect/sources/sysfs/sysfs_ports.h"
#include "collect/sources/sysfs/sysfs_processors.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMebibyteShift = 20;
constexpr unsigned kKibibytesShift = 10;

// "node0", "memory17".
std::optional<unsigned> number_in(const fs::path& path, std::string_view word) {
  const std::string name = path.filename().string();
  if (!name.starts_with(word) || name.size() == word.size()) return std::nullopt;
  const std::string_view digits = std::string_view(name).substr(word.size());
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  const auto number = leading_number(digits);
  return number && *number < UINT16_MAX ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
}

size_t count_blocks(const fs::path& folder) {
  const auto entries = folder_entries(folder).value_or(std::vector<fs::path>{});
  return static_cast<size_t>(std::ranges::count_if(
      entries, [](const fs::path& entry) { return number_in(entry, "memory").has_value(); }));
}

// In bytes; hexadecimal without a prefix.
uint64_t block_size(const std::string& root) {
  const auto word = read_word(fs::path(root) / "devices/system/memory/block_size_bytes");
  return word ? leading_number("0x" + *word).value_or(0) : 0;
}

// MiB of the line "MemTotal:  32768 kB", in a node's list after its name.
std::optional<uint32_t> total_of(const std::string& file) {
  constexpr std::string_view kName = "MemTotal:";
  const auto text = read_attribute(file);
  const size_t at = text ? text->find(kName) : std::string::npos;
  if (at == std::string::npos) return std::nullopt;
  const auto kibibytes = leading_number(std::string_view(*text).substr(at + kName.size()));
  const uint64_t mebibytes = kibibytes.value_or(0) >> kKibibytesShift;
  return mebibytes == 0 || mebibytes > UINT32_MAX ? std::nullopt
                                                  : std::optional(static_cast<uint32_t>(mebibytes));
}

using Nodes = std::map<unsigned, uint32_t>;  // MiB

uint32_t mebibytes_of(size_t blocks, uint64_t size) {
  return static_cast<uint32_t>(std::min<uint64_t>(blocks * (size >> kMebibyteShift), UINT32_MAX));
}

Nodes read_nodes(const std::string& root) {
  Nodes nodes;
  const uint64_t size = block_size(root);
  for (const auto& folder :
       folder_entries(fs::path(root) / "devices/system/node").value_or(std::vector<fs::path>{})) {
    const auto number = number_in(folder, kNode);
    if (!number) continue;
    const uint32_t blocks = mebibytes_of(count_blocks(folder), size);
    const uint32_t told = blocks != 0 ? blocks : total_of((folder / "meminfo").string()).value_or(0);
    if (told != 0) nodes.emplace(*number, told);
  }
  return nodes;
}

// A system without nodes is one.
Nodes read_whole(const std::string& root) {
  const uint32_t blocks =
      mebibytes_of(count_blocks(fs::path(root) / "devices/system/memory"), block_size(root));
  if (blocks != 0) return {{0, blocks}};
  const std::string proc = folder_beside(root, "proc");
  const auto told = proc.empty() ? std::nullopt : total_of(proc + "/meminfo");
  return told ? Nodes{{0, *told}} : Nodes{};
}

}  // namespace

std::optional<std::vector<SmbiosMemoryDevice>> read_sysfs_memory(const std::string& root) {
  auto nodes = read_nodes(root);
  if (nodes.empty()) nodes = read_whole(root);
  if (nodes.empty()) return std::nullopt;
  std::vector<SmbiosMemoryDevice> memory;
  for (const auto& [number, mebibytes] : nodes) {
    auto& device = memory.emplace_back();
    device.locator = kNode + std::to_string(number);
    device.size = mebibytes;
  }
  return memory;
}

}  // namespace zymdb::collect
