// Whoever events are posted to: a server of HTTP on this machine that keeps what it is sent.
#ifndef ZYMDB_TESTS_SERVICE_REDFISH_EVENT_RECEIVER_H
#define ZYMDB_TESTS_SERVICE_REDFISH_EVENT_RECEIVER_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

namespace zymdb::service {

struct ReceivedPost {
  std::string line;                            // "POST /events HTTP/1.1"
  std::map<std::string, std::string> headers;  // by their names in lower case
  nlohmann::json json;
};

class EventReceiver {
 public:
  enum class Kind { kPlain, kTls };

  // With TLS, its certificate is one that nobody trusts.
  explicit EventReceiver(Kind kind = Kind::kPlain);
  ~EventReceiver();
  EventReceiver(const EventReceiver&) = delete;
  EventReceiver& operator=(const EventReceiver&) = delete;

  // "http://127.0.0.1:4711/events".
  std::string url() const;

  // How it answers from now on: one status after the other, the last one again and again.
  void answer_with(std::vector<int> statuses, const std::string& location = "");
  // It reads, and answers nobody until it is released.
  void hold();
  void release();

  // What it was sent, once it is so much or no more comes within the time.
  std::vector<ReceivedPost> received(size_t count,
                                     std::chrono::milliseconds longest = std::chrono::seconds(20));
  // How often somebody connected.
  size_t connections() const;
  // How often somebody did not wait for the answer that was held.
  size_t given_up() const;

 private:
  struct Tls;

  void serve();
  void serve(int descriptor);
  std::string next_answer();

  int listening_ = -1;
  int port_ = 0;
  std::unique_ptr<Tls> tls_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<ReceivedPost> received_;
  std::vector<int> statuses_ = {204};
  std::string location_;
  size_t connections_ = 0;
  size_t given_up_ = 0;
  bool is_held_ = false;
  bool is_over_ = false;
  std::thread thread_;
};

}  // namespace zymdb::service

#endif
