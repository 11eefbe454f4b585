#include "tool/run_tool.h"

#include <fcntl.h>
#include <grp.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zymdb::test {
namespace {

constexpr unsigned kNobody = 65534;

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

std::string read_descriptor(int descriptor) {
  std::string text;
  char block[4096];
  for (;;) {
    const ssize_t size = read(descriptor, block, sizeof block);
    // A terminal whose last program has ended answers EIO.
    if (size <= 0) return text;
    text.append(block, static_cast<size_t>(size));
  }
}

// The parent's and the child's end of a standard stream.
class Channel {
 public:
  explicit Channel(const Stream& stream) : kind_(stream.kind) {
    if (kind_ == Stream::kFile) {
      child_ = parent_ = memfd_create("output", MFD_CLOEXEC);
      require(child_ >= 0, "memfd_create");
    } else if (kind_ == Stream::kTerminal) {
      winsize size{};
      size.ws_col = stream.columns;
      size.ws_row = 25;
      require(openpty(&parent_, &child_, nullptr, nullptr, &size) == 0, "openpty");
    } else {
      child_ = stream.descriptor;
    }
  }
  ~Channel() {
    if (parent_ >= 0) close(parent_);
    close_child();
  }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  void enter(int descriptor) const {
    if (child_ >= 0) {
      dup2(child_, descriptor);
    } else {
      close(descriptor);
    }
  }

  // To be called once the child has its end.
  std::string read_while_running() {
    close_child();
    return kind_ == Stream::kTerminal ? read_descriptor(parent_) : std::string();
  }

  std::string read_afterwards() const {
    if (kind_ != Stream::kFile) return {};
    lseek(parent_, 0, SEEK_SET);
    return read_descriptor(parent_);
  }

 private:
  void close_child() {
    if (kind_ == Stream::kTerminal && child_ >= 0) close(std::exchange(child_, -1));
  }

  Stream::Kind kind_;
  int parent_ = -1;
  int child_ = -1;
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (auto& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environment_of(const Setting& setting) {
  // Of two with one name the first counts.
  std::vector<std::string> environment;
  for (const auto& [name, value] : setting.environment) environment.push_back(name + "=" + value);
  environment.insert(environment.end(),
                     {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "TERM=xterm", "LC_ALL=C.UTF-8"});
  // How the sanitizers report is the caller's to say.
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

void drop_privileges() {
  if (geteuid() != 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(126);
}

std::filesystem::path temporary_folder_for_all() {
  auto name = (std::filesystem::temp_directory_path() / "zymdb-tool-XXXXXX").string();
  require(mkdtemp(name.data()) != nullptr, "mkdtemp");
  std::filesystem::permissions(name, std::filesystem::perms::owner_all | std::filesystem::perms::others_read |
                                         std::filesystem::perms::others_exec);
  return name;
}

int exit_status(pid_t child) {
  int status = 0;
  require(waitpid(child, &status, 0) == child, "waitpid");
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "status " << outcome.status << "\nout:\n" << outcome.out << "err:\n" << outcome.err;
}

Outcome run_program(const Words& command, const Setting& setting) {
  Channel out(setting.out);
  Channel err(setting.err);
  auto words = command;
  auto environment = environment_of(setting);
  const auto argv = pointers(words);
  const auto envp = pointers(environment);
  const pid_t child = fork();
  require(child >= 0, "fork");
  if (child == 0) {
    out.enter(STDOUT_FILENO);
    err.enter(STDERR_FILENO);
    if (setting.unprivileged) drop_privileges();
    execvpe(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  Outcome outcome;
  outcome.out = out.read_while_running();
  outcome.err = err.read_while_running();
  outcome.status = exit_status(child);
  outcome.out += out.read_afterwards();
  outcome.err += err.read_afterwards();
  return outcome;
}

// Whoever has given up their rights may not enter the folder of the build; their copy of the tool is in one
// that they may.
class ReachableTool {
 public:
  ReachableTool() : folder_(temporary_folder_for_all()) {
    for (const char* file : {ZYMDB_TOOL, ZYMDB_LIBRARIES})
      std::filesystem::copy_file(file, folder_ / std::filesystem::path(file).filename());
  }
  ~ReachableTool() { std::filesystem::remove_all(folder_); }
  ReachableTool(const ReachableTool&) = delete;
  ReachableTool& operator=(const ReachableTool&) = delete;

  std::string program() const { return folder_ / std::filesystem::path(ZYMDB_TOOL).filename(); }
  std::pair<std::string, std::string> libraries() const { return {"LD_LIBRARY_PATH", folder_}; }

 private:
  std::filesystem::path folder_;
};

Outcome run_reachable_tool(const Words& arguments, Setting setting) {
  const ReachableTool tool;
  Words command{tool.program()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  setting.environment.push_back(tool.libraries());
  return run_program(command, setting);
}

Outcome run_tool(const Words& arguments, const Setting& setting) {
  if (setting.unprivileged) return run_reachable_tool(arguments, setting);
  Words command{ZYMDB_TOOL};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run_program(command, setting);
}

Setting Workplace::with_inventory(Setting setting) const {
  setting.environment.emplace_back("ZYMDB_INVENTORY", inventory().string());
  return setting;
}

Outcome Workplace::tool(const Words& arguments, const Setting& setting) const {
  return run_tool(arguments, with_inventory(setting));
}

void Workplace::run(const Words& arguments) const {
  const auto outcome = tool(arguments);
  if (outcome.status != 0) throw std::runtime_error("cannot prepare the inventory: " + outcome.err);
}

void Workplace::create_inventory() const {
  run({"init"});
}

void Workplace::collect_example() const {
  run({"collect", "--quiet", "--lspci", example_lspci(), "--smbios", example_smbios()});
}

void Workplace::collect_example_system() const {
  const auto tree = path("sys").string();
  const auto made = run_program({"python3", ZYMDB_SOURCE_DIR "/data/example-server/system_tree.py", tree});
  if (made.status != 0) throw std::runtime_error("cannot make the example server's tree: " + made.err);
  run({"collect", "--quiet", "--lspci", example_lspci(), "--smbios", example_smbios(), "--sysfs", tree});
}

std::string example_lspci() {
  return ZYMDB_SOURCE_DIR "/data/example-server/server.lspci";
}
std::string example_smbios() {
  return ZYMDB_SOURCE_DIR "/data/example-server/server.smbios";
}

std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.is_open(), path.c_str());
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void write_file(const std::filesystem::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string stripped(const std::string& text) {
  const auto first = text.find_first_not_of(" \r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \r\n") - first + 1);
}

}  // namespace zymdb::test
