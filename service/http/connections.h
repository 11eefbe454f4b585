// The connections that are open: how many, whose, and how long each may take for what it does.
#ifndef ZYMDB_SERVICE_HTTP_CONNECTIONS_H
#define ZYMDB_SERVICE_HTTP_CONNECTIONS_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_set>
#include <utility>

#include "service/http/message.h"

namespace zymdb::service {

struct Limits {
  // More get 503; from a few more on they wait until others end.
  unsigned connections = 256;
  unsigned connections_of_an_address = 128;
  unsigned streams = 16;
  // Requests that wait for a login; more get 503.
  unsigned waiting_requests = 64;

  size_t target_length = 4 << 10;  // 414
  size_t header_size = 8 << 10;    // 431; with the target
  size_t body_size = 64 << 10;     // 413

  // For a request, from its first line or from the beginning of a connection: 408.
  std::chrono::milliseconds receiving = std::chrono::seconds(20);
  // For an answer; of a stream, for each piece.
  std::chrono::milliseconds sending = std::chrono::seconds(120);
  // Between two requests.
  std::chrono::milliseconds idle = std::chrono::seconds(60);
};

enum class Phase : uint8_t {
  kFresh,      // nothing has come
  kIdle,       // an answer was sent
  kReceiving,  // a request is coming
  kAnswering,  // somebody makes the answer
  kSending,
  kOver,  // took too long: it is being closed
};

class Connection {
 public:
  Connection(int descriptor, std::string peer, bool is_encrypted)
      : descriptor_(descriptor), peer_(std::move(peer)), is_encrypted_(is_encrypted) {}

  int descriptor() const { return descriptor_; }
  const std::string& peer() const { return peer_; }
  bool is_encrypted() const { return is_encrypted_; }
  // One more than there may be.
  bool is_one_too_many() const { return is_one_too_many_; }

  // False where the connection is over.
  bool enter(Phase phase, std::chrono::milliseconds longest);
  Phase phase() const { return phase_.load(); }

 private:
  friend class Connections;
  using Clock = std::chrono::steady_clock;

  const int descriptor_;
  const std::string peer_;
  const bool is_encrypted_;
  bool is_one_too_many_ = false;
  std::atomic<Phase> phase_ = Phase::kFresh;
  std::atomic<Clock::rep> deadline_ = 0;
  Clock::rep left_at_ = 0;  // the deadline when its client was seen to have gone
};

// Closes what takes too long. What is closed is a descriptor of another library: it is shut down, and that
// library finds it ended.
class Connections {
 public:
  // `look` is called from time to time while there are connections, by one thread.
  Connections(const Limits& limits, std::function<void()> look);
  ~Connections();
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;

  void add(Connection& connection);
  // Nothing of it is touched any more.
  void remove(Connection& connection);

  unsigned count() const;
  // Whether each answer that is being made was begun lately.
  bool are_alive() const;
  // Waits until nobody is being answered, at most so long.
  void wait_for_answers(std::chrono::milliseconds longest);
  // Closes all of them, and waits until they are closed, at most so long.
  void close_all(std::chrono::milliseconds longest);

 private:
  void watch();
  void close_overdue();
  // Those whose clients have gone.
  void close_left();

  const Limits limits_;
  const std::function<void()> look_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::unordered_set<Connection*> open_;
  std::map<std::string, unsigned> by_peer_;
  bool ends_ = false;
  std::thread thread_;
};

}  // namespace zymdb::service

#endif
