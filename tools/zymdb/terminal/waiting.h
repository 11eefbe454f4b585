// Waiting for signals and for changes of a file.
#ifndef ZYMDB_TOOL_TERMINAL_WAITING_H
#define ZYMDB_TOOL_TERMINAL_WAITING_H

#include <csignal>
#include <functional>
#include <string>

namespace zymdb::tool {

// Signals that end a command or ask for the whole picture (another size, a terminal that came back). They are
// taken when the command waits, and so never come between two halves of its output.
class Signals {
 public:
  Signals();
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  int descriptor() const { return descriptor_; }

  // The next one that has come, or 0.
  int take() const;

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

bool is_end(int signal);

// Changes of a file and of those beside it whose names begin with its name, as the system tells of them.
class FileChanges {
 public:
  explicit FileChanges(const std::string& path);
  ~FileChanges();
  FileChanges(const FileChanges&) = delete;
  FileChanges& operator=(const FileChanges&) = delete;

  // Where the system does not tell, somebody has to look from time to time.
  bool is_told() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

  // Forgets what has been told until now. Whether any of it was about the file.
  bool take() const;

 private:
  std::string name_;
  int descriptor_ = -1;
};

// Waits until a signal comes or `has_happened`, which is asked when the file changes and, where nothing tells
// of that, every so many seconds. What writes a file may be done with it a little later: it is asked again
// for some seconds. Returns the signal, or 0.
int wait_for_change(const Signals& signals, const FileChanges& changes, unsigned seconds,
                    const std::function<bool()>& has_happened);

}  // namespace zymdb::tool

#endif
