// Stands between a client and a server's socket, and cuts the connection where a statement passes.
#ifndef ZYMDB_TESTS_MARIADB_CUTTING_PROXY_H
#define ZYMDB_TESTS_MARIADB_CUTTING_PROXY_H

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class CuttingProxy {
 public:
  // What becomes of the statement: it is heard, but its answer is not, or it is lost itself.
  enum class Cut { kAnswer, kStatement };

  CuttingProxy(const std::string& path, std::string server);
  // On a free port of 127.0.0.1.
  explicit CuttingProxy(std::string server);
  ~CuttingProxy();
  CuttingProxy(const CuttingProxy&) = delete;
  CuttingProxy& operator=(const CuttingProxy&) = delete;

  // The next statement that holds the words is the last of its connection.
  void cut_at(std::string words, Cut cut);
  // The answer to the next statement that holds the words is kept back for so long.
  void delay_at(std::string words, std::chrono::seconds time);
  // As if the host had stopped: it takes connections, and nothing passes any more.
  void freeze() { is_frozen_ = true; }
  int port() const;
  int connections() const { return connections_; }
  // How often a client spoke after its server did: what it waited for.
  int round_trips() const { return round_trips_; }

 private:
  void begin();
  void accept_all();
  void pass(int client);
  bool is_cut(const std::string& sent, Cut& cut);
  std::chrono::seconds delay_of(const std::string& sent);

  std::string path_;
  std::string server_;
  int listener_;
  std::atomic<int> connections_{0};
  std::atomic<int> round_trips_{0};
  std::mutex mutex_;
  std::string words_;
  Cut cut_ = Cut::kAnswer;
  std::string delayed_words_;
  std::chrono::seconds delay_{0};
  std::vector<std::thread> threads_;
  std::atomic<bool> ends_{false};
  std::atomic<bool> is_frozen_{false};
  std::thread accepting_;
};

#endif
