#include "mariadb/cutting_proxy.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace {

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  return address;
}

// What there is to be read; empty at the end.
std::string receive(int from) {
  char buffer[65536];
  const ssize_t size = read(from, buffer, sizeof buffer);
  return {buffer, size > 0 ? static_cast<size_t>(size) : 0};
}

bool send_all(int to, const std::string& text) {
  return send(to, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
}

}  // namespace

CuttingProxy::CuttingProxy(const std::string& path, std::string server)
    : path_(path), server_(std::move(server)), listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_un address = address_of(path_);
  bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  begin();
}

CuttingProxy::CuttingProxy(std::string server)
    : server_(std::move(server)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  begin();
}

void CuttingProxy::begin() {
  listen(listener_, 16);
  accepting_ = std::thread([this] { accept_all(); });
}

int CuttingProxy::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

CuttingProxy::~CuttingProxy() {
  ends_ = true;
  shutdown(listener_, SHUT_RDWR);
  accepting_.join();
  for (std::thread& thread : threads_) thread.join();
  close(listener_);
  if (!path_.empty()) unlink(path_.c_str());
}

void CuttingProxy::cut_at(std::string words, Cut cut) {
  const std::lock_guard lock(mutex_);
  words_ = std::move(words);
  cut_ = cut;
}

void CuttingProxy::delay_at(std::string words, std::chrono::seconds time) {
  const std::lock_guard lock(mutex_);
  delayed_words_ = std::move(words);
  delay_ = time;
}

std::chrono::seconds CuttingProxy::delay_of(const std::string& sent) {
  const std::lock_guard lock(mutex_);
  if (delayed_words_.empty() || sent.find(delayed_words_) == sent.npos) return {};
  delayed_words_.clear();
  return delay_;
}

bool CuttingProxy::is_cut(const std::string& sent, Cut& cut) {
  const std::lock_guard lock(mutex_);
  if (words_.empty() || sent.find(words_) == sent.npos) return false;
  words_.clear();
  cut = cut_;
  return true;
}

void CuttingProxy::accept_all() {
  for (int client; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    ++connections_;
    threads_.emplace_back([this, client] { pass(client); });
  }
}

void CuttingProxy::pass(int client) {
  const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_un address = address_of(server_);
  bool goes_on = connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  bool was_answered = true;
  std::chrono::steady_clock::time_point silent_until;
  pollfd ends[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
  while (goes_on && !ends_) {
    if (poll(ends, 2, 50) <= 0) continue;
    if (is_frozen_ || std::chrono::steady_clock::now() < silent_until) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      continue;
    }
    if (ends[0].revents != 0) {
      const std::string sent = receive(client);
      if (std::exchange(was_answered, false)) ++round_trips_;
      if (const auto delay = delay_of(sent); delay.count() != 0)
        silent_until = std::chrono::steady_clock::now() + delay;
      Cut cut{};
      const bool cuts = is_cut(sent, cut);
      goes_on = !sent.empty() && (cuts && cut == Cut::kStatement ? false : send_all(server, sent)) && !cuts;
      // The server does what it heard before it notices that nobody listens.
      if (cuts && cut == Cut::kAnswer) receive(server);
    } else if (ends[1].revents != 0) {
      const std::string answer = receive(server);
      was_answered = true;
      goes_on = !answer.empty() && send_all(client, answer);
    }
  }
  close(server);
  close(client);
}
