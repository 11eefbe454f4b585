// Trees of machines that tell of their processors and memory without SMBIOS.
#ifndef ZYMDB_TESTS_COLLECT_PROCESSOR_TREE_H
#define ZYMDB_TESTS_COLLECT_PROCESSOR_TREE_H

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace zymdb::collect {

class ProcessorTree {
 public:
  std::string root() const { return folder_.path().string(); }
  std::string sysfs() const { return folder_.file("sys"); }

  void write(const std::string& name, const std::string& content) const { folder_.write(name, content); }

  // Packages of cores of threads; a core has caches of its own, a package one that all share.
  void processors(unsigned packages, unsigned cores, unsigned threads) const {
    const unsigned count = packages * cores * threads;
    for (unsigned cpu = 0; cpu < count; ++cpu) {
      const unsigned first_of_core = cpu / threads * threads;
      const unsigned first_of_package = cpu / (cores * threads) * cores * threads;
      const std::string folder = "sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/";
      write(folder + "topology/physical_package_id", std::to_string(cpu / (cores * threads)) + "\n");
      write(folder + "topology/core_id", std::to_string(cpu / threads % cores) + "\n");
      siblings(folder + "topology/thread_siblings", first_of_core, threads);
      siblings(folder + "topology/core_siblings", first_of_package, cores * threads);
      cache(folder + "cache/index0/", 1, "Data", "48K", first_of_core, threads);
      cache(folder + "cache/index1/", 1, "Instruction", "32K", first_of_core, threads);
      cache(folder + "cache/index2/", 2, "Unified", "1280K", first_of_core, threads);
      cache(folder + "cache/index3/", 3, "Unified", "24576K", first_of_package, cores * threads);
      write(folder + "cpufreq/cpuinfo_max_freq", "3400000\n");
      write(folder + "cpufreq/cpuinfo_min_freq", "800000\n");
      write(folder + "cpufreq/base_frequency", "2600000\n");
    }
    const std::string all = "0-" + std::to_string(count - 1) + "\n";
    for (const char* name : {"online", "possible", "present"})
      write(std::string("sys/devices/system/cpu/") + name, all);
  }

  // The kernel's list, with these lines about each.
  void cpuinfo(unsigned count, const std::string& lines) const {
    std::string text;
    for (unsigned cpu = 0; cpu < count; ++cpu)
      text += "processor\t: " + std::to_string(cpu) + "\n" + lines + "\n";
    write("proc/cpuinfo", text);
  }

  // Blocks of 128 MiB.
  void memory(unsigned node, unsigned first, unsigned count) const {
    write("sys/devices/system/memory/block_size_bytes", "8000000\n");
    for (unsigned block = first; block < first + count; ++block) {
      const std::string name = "memory" + std::to_string(block);
      char index[16];
      std::snprintf(index, sizeof index, "%08x", block);
      write("sys/devices/system/memory/" + name + "/state", "online\n");
      write("sys/devices/system/memory/" + name + "/phys_index", index + std::string("\n"));
      write("sys/devices/system/memory/" + name + "/removable", "0\n");
      const std::string folder = "sys/devices/system/node/node" + std::to_string(node);
      std::filesystem::create_directories(folder_.path() / folder);
      std::filesystem::create_directory_symlink("../../memory/" + name, folder_.path() / folder / name);
      std::filesystem::create_directory_symlink(
          "../../node/node" + std::to_string(node),
          folder_.path() / "sys/devices/system/memory" / name / ("node" + std::to_string(node)));
    }
  }

 private:
  void siblings(const std::string& name, unsigned first, unsigned count) const {
    shared(name, name + "_list", first, count);
  }

  void cache(const std::string& folder, unsigned level, const char* type, const char* size, unsigned first,
             unsigned count) const {
    write(folder + "level", std::to_string(level) + "\n");
    write(folder + "type", type + std::string("\n"));
    write(folder + "size", size + std::string("\n"));
    shared(folder + "shared_cpu_map", folder + "shared_cpu_list", first, count);
  }

  void shared(const std::string& map, const std::string& list, unsigned first, unsigned count) const {
    char mask[16];
    std::snprintf(mask, sizeof mask, "%08x\n", ((1U << count) - 1) << first);
    write(map, mask);
    const std::string last = count == 1 ? "" : "-" + std::to_string(first + count - 1);
    write(list, std::to_string(first) + last + "\n");
  }

  TemporaryFolder folder_;
};

}  // namespace zymdb::collect

#endif
