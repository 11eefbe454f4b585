#include "collect/sources/sysfs/proc_cpuinfo.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "common/text.h"

namespace zymdb::collect {
namespace {

struct Name {
  std::string_view id;
  const char* name;
};
constexpr Name kVendors[] = {
    {"GenuineIntel", "Intel"},   {"AuthenticAMD", "AMD"}, {"HygonGenuine", "Hygon"},
    {"CentaurHauls", "Centaur"}, {"IBM/S390", "IBM"},
};

struct Implementer {
  uint64_t number;
  const char* name;
};
constexpr Implementer kImplementers[] = {
    {0x41, "ARM"},    {0x42, "Broadcom"}, {0x43, "Cavium"},   {0x46, "FUJITSU"}, {0x48, "HiSilicon"},
    {0x4e, "NVIDIA"}, {0x50, "APM"},      {0x51, "Qualcomm"}, {0x53, "Samsung"}, {0x56, "Marvell"},
    {0x61, "Apple"},  {0x69, "Intel"},    {0x70, "Phytium"},  {0xc0, "Ampere"},
};

struct Part {
  uint64_t implementer;
  uint64_t number;
  const char* name;
};
constexpr Part kParts[] = {
    {0x41, 0xc07, "Cortex-A7"},      {0x41, 0xc09, "Cortex-A9"},   {0x41, 0xc0f, "Cortex-A15"},
    {0x41, 0xd03, "Cortex-A53"},     {0x41, 0xd04, "Cortex-A35"},  {0x41, 0xd05, "Cortex-A55"},
    {0x41, 0xd07, "Cortex-A57"},     {0x41, 0xd08, "Cortex-A72"},  {0x41, 0xd09, "Cortex-A73"},
    {0x41, 0xd0a, "Cortex-A75"},     {0x41, 0xd0b, "Cortex-A76"},  {0x41, 0xd0c, "Neoverse-N1"},
    {0x41, 0xd0d, "Cortex-A77"},     {0x41, 0xd40, "Neoverse-V1"}, {0x41, 0xd41, "Cortex-A78"},
    {0x41, 0xd44, "Cortex-X1"},      {0x41, 0xd46, "Cortex-A510"}, {0x41, 0xd47, "Cortex-A710"},
    {0x41, 0xd48, "Cortex-X2"},      {0x41, 0xd49, "Neoverse-N2"}, {0x41, 0xd4a, "Neoverse-E1"},
    {0x41, 0xd4f, "Neoverse-V2"},    {0x41, 0xd84, "Neoverse-V3"}, {0x41, 0xd8e, "Neoverse-N3"},
    {0x42, 0x516, "ThunderX2"},      {0x43, 0x0a0, "ThunderX"},    {0x43, 0x0a1, "ThunderX-88XX"},
    {0x43, 0x0af, "ThunderX2-99xx"}, {0x46, 0x001, "A64FX"},       {0x48, 0xd01, "Kunpeng-920"},
    {0x4e, 0x003, "Denver-2"},       {0x4e, 0x004, "Carmel"},      {0x50, 0x000, "X-Gene"},
    {0x51, 0xc00, "Falkor"},         {0x70, 0x662, "FTC662"},      {0x70, 0x663, "FTC663"},
    {0xc0, 0xac3, "Ampere-1"},       {0xc0, 0xac4, "Ampere-1a"},
};

std::optional<std::string> value_of(const CpuinfoBlock& block, const char* name) {
  const auto found = block.find(name);
  return found == block.end() ? std::nullopt : known_text(found->second);
}

std::optional<uint64_t> number_of(const CpuinfoBlock& block, const char* name) {
  const auto text = value_of(block, name);
  return text ? leading_number(*text) : std::nullopt;
}

// The first of the names that the block has.
std::optional<std::string> first_of(const CpuinfoBlock& block, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (auto value = value_of(block, name)) return value;
  }
  return std::nullopt;
}

}  // namespace

std::map<unsigned, CpuinfoBlock> parse_cpuinfo(std::string_view text) {
  std::map<unsigned, CpuinfoBlock> blocks;
  CpuinfoBlock* current = nullptr;
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string name(trimmed(line.substr(0, colon)));
    const auto value = trimmed(line.substr(colon + 1));
    const auto number = name == "processor" ? leading_number(value) : std::nullopt;
    if (number && *number <= UINT16_MAX) current = &blocks[static_cast<unsigned>(*number)];
    if (current != nullptr) current->emplace(name, value);
  }
  return blocks;
}

std::optional<std::string> cpu_manufacturer(const CpuinfoBlock& block) {
  if (const auto vendor = value_of(block, "vendor_id")) {
    const auto known = std::ranges::find(kVendors, *vendor, &Name::id);
    return known == std::end(kVendors) ? vendor : std::optional<std::string>(known->name);
  }
  const auto implementer = number_of(block, "CPU implementer");
  const auto known = std::ranges::find(kImplementers, implementer.value_or(0), &Implementer::number);
  return known == std::end(kImplementers) ? std::nullopt : std::optional<std::string>(known->name);
}

std::optional<std::string> cpu_name(const CpuinfoBlock& block) {
  const auto implementer = number_of(block, "CPU implementer");
  const auto part = number_of(block, "CPU part");
  const auto known = std::ranges::find_if(
      kParts, [&](const Part& each) { return implementer == each.implementer && part == each.number; });
  if (known != std::end(kParts)) return known->name;
  return first_of(block, {"model name", "cpu model", "cpu", "uarch"});
}

}  // namespace zymdb::collect
