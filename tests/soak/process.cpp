#include "soak/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace soak {
namespace {

constexpr int64_t kKibibyte = 1024;

std::filesystem::path proc(pid_t pid, const char* name) {
  return std::filesystem::path("/proc") / std::to_string(pid) / name;
}

[[noreturn]] void run(const std::vector<std::string>& arguments) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDERR_FILENO);
  std::vector<std::string> words{"/proc/self/exe"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(argv[0], argv.data());
  _exit(127);
}

}  // namespace

Process::Process(const std::vector<std::string>& arguments) : pid_(fork()) {
  if (pid_ < 0) throw std::runtime_error("no process");
  if (pid_ == 0) run(arguments);
}

Process::~Process() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  wait(0);
}

bool Process::wait(int options) {
  if (pid_ > 0 && waitpid(pid_, &status_, options) == pid_) pid_ = 0;
  return pid_ == 0;
}

bool Process::has_ended() {
  return wait(WNOHANG);
}

bool Process::end() {
  if (pid_ > 0) kill(pid_, SIGTERM);
  wait(0);
  return WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
}

int64_t Process::memory() const {
  std::ifstream file(proc(pid_, "statm"));
  int64_t size = 0;
  int64_t resident = 0;
  file >> size >> resident;
  return resident * sysconf(_SC_PAGESIZE) / kKibibyte;
}

int64_t Process::descriptors() const {
  std::error_code ignored;
  const std::filesystem::directory_iterator files(proc(pid_, "fd"), ignored);
  return std::distance(files, std::filesystem::directory_iterator());
}

int64_t size_of_file(const std::filesystem::path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : static_cast<int64_t>(size) / kKibibyte;
}

}  // namespace soak
