#include "service/redfish/event_receiver.h"

#include <arpa/inet.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <stdexcept>

#include "common/text.h"

namespace zymdb::service {
namespace {

void require(bool is_so, const char* what) {
  if (!is_so) throw std::runtime_error(what);
}

}  // namespace

// A certificate of its own making.
struct EventReceiver::Tls {
  Tls() {
    gnutls_x509_privkey_t key = nullptr;
    gnutls_x509_crt_t certificate = nullptr;
    gnutls_x509_privkey_init(&key);
    gnutls_x509_crt_init(&certificate);
    require(gnutls_x509_privkey_generate(key, GNUTLS_PK_ECDSA,
                                         GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0) == 0,
            "no key");
    const std::time_t now = std::time(nullptr);
    const unsigned char address[] = {127, 0, 0, 1};
    gnutls_x509_crt_set_version(certificate, 3);
    gnutls_x509_crt_set_serial(certificate, "\1", 1);
    gnutls_x509_crt_set_activation_time(certificate, now - 60);
    gnutls_x509_crt_set_expiration_time(certificate, now + 3600);
    gnutls_x509_crt_set_subject_alt_name(certificate, GNUTLS_SAN_IPADDRESS, address, sizeof address,
                                         GNUTLS_FSAN_SET);
    gnutls_x509_crt_set_key(certificate, key);
    require(gnutls_x509_crt_sign2(certificate, certificate, key, GNUTLS_DIG_SHA256, 0) == 0,
            "no certificate");
    gnutls_certificate_allocate_credentials(&credentials);
    require(gnutls_certificate_set_x509_key(credentials, &certificate, 1, key) >= 0, "no credentials");
    gnutls_x509_crt_deinit(certificate);
    gnutls_x509_privkey_deinit(key);
  }
  ~Tls() { gnutls_certificate_free_credentials(credentials); }
  Tls(const Tls&) = delete;
  Tls& operator=(const Tls&) = delete;

  gnutls_certificate_credentials_t credentials = nullptr;
};

namespace {

// One that came in, with TLS or without.
class Connection {
 public:
  Connection(int descriptor, gnutls_certificate_credentials_t credentials) : descriptor_(descriptor) {
    const timeval patience{5, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (credentials == nullptr) return;
    gnutls_init(&session_, GNUTLS_SERVER | GNUTLS_NO_SIGNAL);
    gnutls_set_default_priority(session_);
    gnutls_credentials_set(session_, GNUTLS_CRD_CERTIFICATE, credentials);
    gnutls_transport_set_int(session_, descriptor);
    is_open_ = gnutls_handshake(session_) == 0;
  }
  ~Connection() {
    if (session_ != nullptr) gnutls_deinit(session_);
    close(descriptor_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool read_more(std::string& text) {
    char buffer[4096];
    if (!is_open_) return false;
    const ssize_t size = session_ != nullptr ? gnutls_record_recv(session_, buffer, sizeof buffer)
                                             : recv(descriptor_, buffer, sizeof buffer, 0);
    if (size > 0) text.append(buffer, static_cast<size_t>(size));
    return size > 0;
  }
  // By whoever connected, who waits for no answer any more.
  bool is_given_up() const {
    char next = 0;
    return session_ == nullptr && recv(descriptor_, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
  }
  void write(const std::string& text) {
    if (session_ != nullptr)
      gnutls_record_send(session_, text.data(), text.size());
    else
      send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
  }

 private:
  const int descriptor_;
  gnutls_session_t session_ = nullptr;
  bool is_open_ = true;
};

// Whether a whole request came.
bool read(Connection& connection, ReceivedPost& post) {
  std::string text;
  size_t end = 0;
  while ((end = text.find("\r\n\r\n")) == std::string::npos) {
    if (!connection.read_more(text)) return false;
  }
  size_t at = text.find("\r\n");
  post.line = text.substr(0, at);
  while (at < end) {
    const size_t begin = at + 2;
    at = text.find("\r\n", begin);
    const std::string line = text.substr(begin, at - begin);
    const size_t colon = line.find(':');
    post.headers[lower_case(line.substr(0, colon))] = trimmed(line.substr(colon + 1));
  }
  const size_t length = std::stoul("0" + post.headers["content-length"]);
  while (text.size() < end + 4 + length) {
    if (!connection.read_more(text)) return false;
  }
  post.json = nlohmann::json::parse(text.substr(end + 4), nullptr, false);
  return true;
}

}  // namespace

EventReceiver::EventReceiver(Kind kind) : listening_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (kind == Kind::kTls) tls_ = std::make_unique<Tls>();
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  require(listening_ >= 0 && bind(listening_, any, length) == 0 && listen(listening_, 64) == 0 &&
              getsockname(listening_, any, &length) == 0,
          "cannot listen");
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { serve(); });
}

EventReceiver::~EventReceiver() {
  {
    const std::lock_guard lock(mutex_);
    is_over_ = true;
    changed_.notify_all();
  }
  shutdown(listening_, SHUT_RDWR);
  thread_.join();
  close(listening_);
}

std::string EventReceiver::url() const {
  return std::string(tls_ != nullptr ? "https" : "http") + "://127.0.0.1:" + std::to_string(port_) +
         "/events";
}

void EventReceiver::answer_with(std::vector<int> statuses, const std::string& location) {
  const std::lock_guard lock(mutex_);
  statuses_ = std::move(statuses);
  location_ = location;
}

void EventReceiver::hold() {
  const std::lock_guard lock(mutex_);
  is_held_ = true;
}

void EventReceiver::release() {
  const std::lock_guard lock(mutex_);
  is_held_ = false;
  changed_.notify_all();
}

std::vector<ReceivedPost> EventReceiver::received(size_t count, std::chrono::milliseconds longest) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, longest, [&] { return received_.size() >= count; });
  return received_;
}

size_t EventReceiver::connections() const {
  const std::lock_guard lock(mutex_);
  return connections_;
}

size_t EventReceiver::given_up() const {
  const std::lock_guard lock(mutex_);
  return given_up_;
}

void EventReceiver::serve() {
  while (true) {
    const int descriptor = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0) return;
    {
      const std::lock_guard lock(mutex_);
      ++connections_;
    }
    serve(descriptor);
  }
}

void EventReceiver::serve(int descriptor) {
  Connection connection(descriptor, tls_ != nullptr ? tls_->credentials : nullptr);
  ReceivedPost post;
  if (!read(connection, post)) return;
  std::unique_lock lock(mutex_);
  received_.push_back(std::move(post));
  changed_.notify_all();
  while (is_held_ && !is_over_) {
    changed_.wait_for(lock, std::chrono::milliseconds(10));
    if (!connection.is_given_up()) continue;
    ++given_up_;
    return;
  }
  if (is_over_) return;
  connection.write(next_answer());
}

std::string EventReceiver::next_answer() {
  const int status = statuses_.front();
  if (statuses_.size() > 1) statuses_.erase(statuses_.begin());
  const std::string location = location_.empty() ? "" : "Location: " + location_ + "\r\n";
  return "HTTP/1.1 " + std::to_string(status) + " Status\r\nContent-Length: 0\r\n" + location + "\r\n";
}

}  // namespace zymdb::service
