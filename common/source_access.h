// How a machine is asked: each question may take so long and no longer, and whoever wants to know is told of
// the answers. Both hold for the calling thread, as long as the objects are there that say so.
#ifndef ZYMDB_COMMON_SOURCE_ACCESS_H
#define ZYMDB_COMMON_SOURCE_ACCESS_H

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace zymdb {

// A question without an answer in time. Its text is one line that names what was asked.
class NoAnswer : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Devices of one kind, of which one or another does not answer: it is left out and named. Where more of them
// are silent, what is above them hangs, and asking the rest would take its time for each.
class SilentDevices {
 public:
  // Throws the problem once there are too many.
  void add(const NoAnswer& problem) {
    constexpr int kMost = 3;
    if (++count_ > kMost) throw problem;
  }

 private:
  int count_ = 0;
};

// How long a question may take. A driver that hangs cannot be interrupted: the thread that waits for it is
// left behind, and another one asks the next question.
class TimeBound {
 public:
  explicit TimeBound(std::chrono::milliseconds longest);
  ~TimeBound();
  TimeBound(const TimeBound&) = delete;
  TimeBound& operator=(const TimeBound&) = delete;

 private:
  friend void ask_within_bound(const std::string& what, std::function<void()> question);
  class Worker;

  const std::chrono::milliseconds longest_;
  std::shared_ptr<Worker> worker_;
  TimeBound* const outer_;
};

// Runs the question, within the bound where there is one. What it refers to has to live as long as the
// question, which may be longer than the caller: it owns all that it uses.
void ask_within_bound(const std::string& what, std::function<void()> question);

// The answer to a question. Throws NoAnswer.
template <class Question>
auto ask(const std::string& what, Question question) {
  using Answer = decltype(question());
  auto answer = std::make_shared<std::optional<Answer>>();
  ask_within_bound(what, [answer, question = std::move(question)] { answer->emplace(question()); });
  return std::move(**answer);
}

// Who is told what is read.
class AccessObserver {
 public:
  virtual ~AccessObserver() = default;

  // A file, and its content or why there is none (an error number).
  virtual void read_file(const std::string& path, const std::optional<std::string>& content, int error) = 0;
  virtual void listed(const std::filesystem::path& folder,
                      const std::vector<std::filesystem::path>& entries) = 0;
  // Whether something is there, or where it really is.
  virtual void looked_at(const std::filesystem::path& path) = 0;
};

class Observation {
 public:
  explicit Observation(AccessObserver& observer);
  ~Observation();
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;
};

// Null where nobody wants to know.
AccessObserver* access_observer();

}  // namespace zymdb

#endif
