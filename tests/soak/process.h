// Processes of this program, and what they and files use.
#ifndef ZYMDB_TESTS_SOAK_PROCESS_H
#define ZYMDB_TESTS_SOAK_PROCESS_H

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace soak {

// This program anew, with these arguments. Its log goes nowhere; what it prints is shown.
class Process {
 public:
  explicit Process(const std::vector<std::string>& arguments);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  bool has_ended();
  // Asks it to end; whether it did so as it should.
  bool end();

  int64_t memory() const;  // resident, in KiB
  int64_t descriptors() const;

 private:
  bool wait(int options);

  pid_t pid_;
  int status_ = -1;  // once it has ended
};

// In KiB; 0 for a file that is not there.
int64_t size_of_file(const std::filesystem::path& path);

}  // namespace soak

#endif
