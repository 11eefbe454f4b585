// What the processes of the soak do over and over.
#ifndef ZYMDB_TESTS_SOAK_WORK_H
#define ZYMDB_TESTS_SOAK_WORK_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace soak {

struct Work {
  const char* name;
  // The n-th round. Throws what a user of the operations must not see.
  void (*round)(uint32_t number, const std::filesystem::path& folder);
};

std::span<const Work> works();

// Fills the inventory that everybody works on, and the folder with what the rounds read.
void prepare(const std::filesystem::path& folder);

}  // namespace soak

#endif
