// Stands between a client and a server's socket, and cuts the connection where a statement passes.
#ifndef ZYMDB_TESTS_MARIADB_CUTTING_PROXY_H
#define ZYMDB_TESTS_MARIADB_CUTTING_PROXY_H

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class CuttingProxy {
 public:
  // What becomes of the statement: it is heard, but its answer is not, or it is lost itself.
  enum class Cut { kAnswer, kStatement };

  CuttingProxy(std::string path, std::string server);
  ~CuttingProxy();
  CuttingProxy(const CuttingProxy&) = delete;
  CuttingProxy& operator=(const CuttingProxy&) = delete;

  // The next statement that holds the words is the last of its connection.
  void cut_at(std::string words, Cut cut);
  int connections() const { return connections_; }
  // How often a client spoke after its server did: what it waited for.
  int round_trips() const { return round_trips_; }

 private:
  void accept_all();
  void pass(int client);
  bool is_cut(const std::string& sent, Cut& cut);

  std::string path_;
  std::string server_;
  int listener_;
  std::atomic<int> connections_{0};
  std::atomic<int> round_trips_{0};
  std::mutex mutex_;
  std::string words_;
  Cut cut_ = Cut::kAnswer;
  std::vector<std::thread> threads_;
  std::atomic<bool> ends_{false};
  std::thread accepting_;
};

#endif
