#include "collect/sources/sysfs/sysfs_processors.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "collect/sources/sysfs/machine_folders.h"
#include "collect/sources/sysfs/proc_cpuinfo.h"
#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// SMBIOS's codes.
constexpr uint8_t kCentralProcessor = 3;
constexpr uint8_t kPopulatedAndEnabled = 0x41;
constexpr uint8_t kOtherCache = 1;
constexpr uint8_t kInstructionCache = 3;
constexpr uint8_t kDataCache = 4;
constexpr uint8_t kUnifiedCache = 5;

// A processor as the kernel counts them: a thread.
struct Cpu {
  unsigned number = 0;
  fs::path folder;      // empty where only proc tells of it
  std::string package;  // what those of one package have in common
  std::string core;     // and those of one core
};

struct Cache {
  uint64_t level;
  std::string type;
  std::string shared_by;

  auto operator<=>(const Cache&) const = default;
};

std::optional<unsigned> number_in(const std::string& name, std::string_view word) {
  if (!name.starts_with(word) || name.size() == word.size()) return std::nullopt;
  const std::string_view digits = std::string_view(name).substr(word.size());
  const bool is_number = digits.find_first_not_of("0123456789") == std::string_view::npos;
  const auto number = is_number ? leading_number(digits) : std::nullopt;
  return number && *number <= UINT16_MAX ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
}

// Kernels have had several names for these.
std::string first_word(const fs::path& folder, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (auto word = read_word(folder / name)) return *word;
  }
  return {};
}

std::vector<Cpu> list_cpus(const std::string& root) {
  std::vector<Cpu> cpus;
  for (const auto& folder :
       folder_entries(fs::path(root) / "devices/system/cpu").value_or(std::vector<fs::path>{})) {
    const auto number = number_in(folder.filename().string(), "cpu");
    if (!number) continue;
    const fs::path topology = folder / "topology";
    auto core = first_word(topology, {"core_cpus_list", "thread_siblings_list", "thread_siblings"});
    // One that is switched off shows no topology.
    if (core.empty()) continue;
    cpus.push_back({*number, folder,
                    first_word(topology, {"package_cpus_list", "core_siblings_list", "core_siblings"}),
                    std::move(core)});
  }
  std::ranges::sort(cpus, {}, &Cpu::number);
  return cpus;
}

std::string text_of(const CpuinfoBlock& block, const char* name) {
  const auto found = block.find(name);
  return found == block.end() ? "" : found->second;
}

std::vector<Cpu> list_cpus(const std::map<unsigned, CpuinfoBlock>& blocks) {
  std::vector<Cpu> cpus;
  for (const auto& [number, block] : blocks) {
    const std::string core = text_of(block, "core id");
    cpus.push_back({number, {}, text_of(block, "physical id"), core.empty() ? std::to_string(number) : core});
  }
  return cpus;
}

// "32K", "2048K", "36M".
std::optional<uint32_t> kilobytes(const std::string& size) {
  const auto number = leading_number(size);
  if (!number || *number > UINT32_MAX >> 10) return std::nullopt;
  const bool is_mega = size.ends_with("M");
  return static_cast<uint32_t>(is_mega ? *number << 10 : *number);
}

std::optional<uint16_t> megahertz(const fs::path& file) {
  const auto kilohertz = read_number(file.string());
  const uint64_t rounded = kilohertz.value_or(0) / 1000;
  return rounded == 0 || rounded > UINT16_MAX ? std::nullopt : std::optional(static_cast<uint16_t>(rounded));
}

uint8_t cache_type(const std::set<std::string>& types) {
  if (types.size() != 1) return kOtherCache;
  if (types.contains("Unified")) return kUnifiedCache;
  return types.contains("Data")          ? kDataCache
         : types.contains("Instruction") ? kInstructionCache
                                         : kOtherCache;
}

class Package {
 public:
  explicit Package(unsigned number) : number_(number) {}

  void add(const Cpu& cpu) {
    cpus_.push_back(cpu);
    cores_.insert(cpu.core);
    for (const auto& folder : folder_entries(cpu.folder / "cache").value_or(std::vector<fs::path>{})) {
      const auto level = read_number((folder / "level").string());
      const auto size = kilobytes(read_word(folder / "size").value_or(""));
      if (!level || !size) continue;
      auto shared = first_word(folder, {"shared_cpu_list", "shared_cpu_map"});
      if (shared.empty()) shared = std::to_string(cpu.number);
      caches_.emplace(Cache{*level, read_word(folder / "type").value_or(""), std::move(shared)}, *size);
    }
  }

  SmbiosProcessor describe(const std::map<unsigned, CpuinfoBlock>& blocks) const {
    SmbiosProcessor processor;
    processor.socket = kPackage + std::to_string(number_);
    processor.type = kCentralProcessor;
    processor.status = kPopulatedAndEnabled;
    processor.core_count = processor.cores_enabled = static_cast<uint16_t>(cores_.size());
    processor.thread_count = static_cast<uint16_t>(cpus_.size());
    const auto& first = cpus_.front();
    if (!first.folder.empty()) {
      processor.max_speed = megahertz(first.folder / "cpufreq/cpuinfo_max_freq");
      processor.current_speed = megahertz(first.folder / "cpufreq/base_frequency");
    }
    for (size_t level = 1; level <= processor.caches.size(); ++level)
      processor.caches[level - 1] = cache_of(level);
    if (const auto block = blocks.find(first.number); block != blocks.end()) name(block->second, processor);
    return processor;
  }

 private:
  // Without a driver for its frequency a processor keeps the one that the kernel measured.
  void name(const CpuinfoBlock& block, SmbiosProcessor& processor) const {
    processor.manufacturer = cpu_manufacturer(block);
    processor.version = cpu_name(block);
    const auto measured = leading_number(text_of(block, "cpu MHz"));
    if (!processor.max_speed && !processor.current_speed && measured.value_or(0) != 0 &&
        *measured <= UINT16_MAX)
      processor.current_speed = static_cast<uint16_t>(*measured);
  }

  SmbiosCache cache_of(size_t level) const {
    SmbiosCache all;
    std::set<std::string> types;
    for (const auto& [cache, size] : caches_) {
      if (cache.level != level) continue;
      all.installed = all.installed.value_or(0) + size;
      types.insert(cache.type);
    }
    all.max_size = all.installed;
    if (all.installed) all.type = cache_type(types);
    return all;
  }

  unsigned number_;
  std::vector<Cpu> cpus_;
  std::set<std::string> cores_;
  std::map<Cache, uint32_t> caches_;
};

// The kernel's number of a package; where it has none, or one that it gave before, the next free one.
unsigned package_number(const Cpu& cpu, const std::map<unsigned, Package>& known) {
  const auto told = cpu.folder.empty() ? leading_number(cpu.package)
                                       : read_number((cpu.folder / "topology/physical_package_id").string());
  if (told && *told <= UINT16_MAX && !known.contains(static_cast<unsigned>(*told)))
    return static_cast<unsigned>(*told);
  unsigned number = 0;
  while (known.contains(number)) ++number;
  return number;
}

std::map<unsigned, CpuinfoBlock> read_cpuinfo(const std::string& root) {
  const std::string proc = folder_beside(root, "proc");
  const auto text = proc.empty() ? std::nullopt : read_attribute(proc + "/cpuinfo");
  return text ? parse_cpuinfo(*text) : std::map<unsigned, CpuinfoBlock>{};
}

}  // namespace

std::optional<std::vector<SmbiosProcessor>> read_sysfs_processors(const std::string& root) {
  const auto blocks = read_cpuinfo(root);
  auto cpus = list_cpus(root);
  if (cpus.empty()) cpus = list_cpus(blocks);
  if (cpus.empty()) return std::nullopt;
  std::map<unsigned, Package> packages;
  std::map<std::string, unsigned> numbers;
  for (const auto& cpu : cpus) {
    if (!numbers.contains(cpu.package)) {
      const unsigned number = package_number(cpu, packages);
      numbers.emplace(cpu.package, number);
      packages.emplace(number, Package(number));
    }
    packages.at(numbers.at(cpu.package)).add(cpu);
  }
  std::vector<SmbiosProcessor> processors;
  for (const auto& [number, package] : packages) processors.push_back(package.describe(blocks));
  return processors;
}

}  // namespace zymdb::collect
