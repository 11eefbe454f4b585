#include "service/http/server.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <optional>
#include <unordered_set>
#include <utility>

#include "service/http/compression.h"
#include "service/http/request_head.h"
#include "service/http/workers.h"

namespace zymdb::service {
namespace {

using Clock = std::chrono::steady_clock;

// What a login may take with all that wait before it; nothing else takes as long as a minute.
constexpr auto kLongestSlowAnswer = std::chrono::minutes(10);
constexpr auto kLongestAnswer = std::chrono::minutes(1);
constexpr auto kLongestStop = std::chrono::seconds(5);
constexpr size_t kSlowThreads = 2;
constexpr size_t kStreamBlock = 4096;

// A connection, and the request on it.
struct Client {
  Client(int descriptor, std::string peer, bool is_encrypted)
      : connection(descriptor, std::move(peer), is_encrypted) {}

  void begin(const char* text) { target = text; }

  // A connection that rests keeps nothing of what was asked and answered.
  void rest() {
    target = {};
    checked = {};
    response.reset();
  }

  Connection connection;
  std::string target;
  CheckedHead checked;
  std::optional<Response> response;
  Clock::time_point begun;
  std::mutex gate;  // held until the connection is suspended
};

struct EndResponse {
  void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using ResponsePtr = std::unique_ptr<MHD_Response, EndResponse>;

// Null where there was no memory for it; then the connection is being closed.
Client* client_of(MHD_Connection* connection) {
  return static_cast<Client*>(
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

Address address_of(MHD_Connection* connection) {
  const auto* const from =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
  Address address;
  if (from == nullptr) return address;
  if (from->sa_family == AF_INET) address.length = sizeof(sockaddr_in);
  if (from->sa_family == AF_INET6) address.length = sizeof(sockaddr_in6);
  std::memcpy(&address.storage, from, address.length);
  return address;
}

// Lines that clients can cause are nobody's business; why it does not start is.
struct Complaint {
  [[gnu::format(printf, 2, 0)]] static void note(void* self, const char* format, va_list arguments) {
    auto& complaint = *static_cast<Complaint*>(self);
    const std::lock_guard lock(complaint.mutex);
    if (!complaint.is_starting) return;
    char line[256];
    std::vsnprintf(line, sizeof line, format, arguments);
    complaint.text = line;
    while (complaint.text.ends_with('\n')) complaint.text.pop_back();
  }

  std::mutex mutex;
  bool is_starting = true;
  std::string text;
};

// Streams that have nothing to send at the moment: their connections rest until somebody finds something.
class Streams {
 public:
  class Reader;

  explicit Streams(unsigned most) : most_(most) {}

  // Null where there are enough of them.
  std::unique_ptr<Reader> open(Client& client, MHD_Connection* connection, std::shared_ptr<Stream> stream,
                               std::chrono::milliseconds sending);
  void look();
  void end();

 private:
  const unsigned most_;
  std::atomic<unsigned> count_ = 0;
  std::mutex mutex_;
  std::unordered_set<Reader*> waiting_;
  bool is_over_ = false;
};

class Streams::Reader {
 public:
  Reader(Streams& streams, Client& client, MHD_Connection* connection, std::shared_ptr<Stream> stream,
         std::chrono::milliseconds sending)
      : streams_(streams),
        client_(client),
        connection_(connection),
        stream_(std::move(stream)),
        sending_(sending) {
    ++streams_.count_;
  }
  ~Reader() { --streams_.count_; }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  ssize_t read(char* to, size_t size) {
    if (sent_ == pending_.size() && !fetch()) return rest_or_end();
    const size_t count = std::min(size, pending_.size() - sent_);
    pending_.copy(to, count, sent_);
    sent_ += count;
    client_.connection.enter(Phase::kSending, sending_);
    return static_cast<ssize_t>(count);
  }

  // Whether there is something to do: to send, or to end.
  bool look() {
    char byte = 0;
    is_gone_ = recv(client_.connection.descriptor(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    return is_gone_ || fetch() || stream_->is_over();
  }
  void resume() { MHD_resume_connection(connection_); }

 private:
  bool fetch() {
    sent_ = 0;
    pending_ = stream_->take();
    return !pending_.empty();
  }

  ssize_t rest_or_end() {
    const std::lock_guard lock(streams_.mutex_);
    if (is_gone_ || streams_.is_over_ || stream_->is_over()) return MHD_CONTENT_READER_END_OF_STREAM;
    client_.connection.enter(Phase::kSending, std::chrono::hours(24 * 365));
    streams_.waiting_.insert(this);
    MHD_suspend_connection(connection_);
    return 0;
  }

  Streams& streams_;
  Client& client_;
  MHD_Connection* const connection_;
  const std::shared_ptr<Stream> stream_;
  const std::chrono::milliseconds sending_;
  std::string pending_;
  size_t sent_ = 0;
  bool is_gone_ = false;
};

std::unique_ptr<Streams::Reader> Streams::open(Client& client, MHD_Connection* connection,
                                               std::shared_ptr<Stream> stream,
                                               std::chrono::milliseconds sending) {
  if (count_ >= most_) return nullptr;
  return std::make_unique<Reader>(*this, client, connection, std::move(stream), sending);
}

void Streams::look() {
  const std::lock_guard lock(mutex_);
  std::erase_if(waiting_, [this](Reader* reader) {
    if (!is_over_ && !reader->look()) return false;
    reader->resume();
    return true;
  });
}

void Streams::end() {
  {
    const std::lock_guard lock(mutex_);
    is_over_ = true;
  }
  look();
}

ssize_t read_stream(void* reader, uint64_t, char* to, size_t size) {
  try {
    return static_cast<Streams::Reader*>(reader)->read(to, size);
  } catch (...) {
    return MHD_CONTENT_READER_END_WITH_ERROR;
  }
}

void end_stream(void* reader) {
  delete static_cast<Streams::Reader*>(reader);
}

void release_text(void* text) {
  delete static_cast<Text*>(text);
}

ResponsePtr response_of(const Text& text) {
  auto owner = std::make_unique<Text>(text);
  // The library reads it only.
  auto* const content = const_cast<char*>(text->data());
  ResponsePtr response(MHD_create_response_from_buffer_with_free_callback_cls(text->size(), content,
                                                                              release_text, owner.get()));
  if (response == nullptr) throw std::bad_alloc();
  (void)owner.release();
  return response;
}

ResponsePtr empty_response() {
  ResponsePtr response(MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
  if (response == nullptr) throw std::bad_alloc();
  return response;
}

ResponsePtr response_of(std::unique_ptr<Streams::Reader> reader) {
  ResponsePtr response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kStreamBlock, read_stream,
                                                         reader.get(), end_stream));
  if (response == nullptr) throw std::bad_alloc();
  (void)reader.release();
  return response;
}

std::string* find(Fields& headers, std::string_view name) {
  const auto found =
      std::ranges::find(headers, name, [](const auto& each) -> std::string_view { return each.first; });
  return found != headers.end() ? &found->second : nullptr;
}

MHD_Result add_header(void* headers, MHD_ValueKind, const char* name, size_t name_size, const char* value,
                      size_t value_size) {
  try {
    static_cast<Fields*>(headers)->emplace_back(std::string(name, name_size),
                                                value != nullptr ? std::string(value, value_size) : "");
    return MHD_YES;
  } catch (...) {
    return MHD_NO;
  }
}

}  // namespace

class Server::Implementation {
 public:
  Implementation(Handler& handler, Socket socket, const ServerOptions& options)
      : handler_(handler),
        options_(options),
        streams_(options.limits.streams),
        workers_(std::in_place, kSlowThreads, options.limits.waiting_requests),
        connections_(options.limits, [this] { streams_.look(); }) {
    start(std::move(socket));
  }

  // Nobody new; whoever is being answered gets the answer; then everybody goes.
  ~Implementation() {
    Socket socket(MHD_quiesce_daemon(daemon_));
    streams_.end();
    connections_.wait_for_answers(kLongestStop);
    workers_.reset();
    // The library that is told to stop while it refuses a request would fall over it.
    connections_.close_all(kLongestStop);
    MHD_stop_daemon(daemon_);
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  unsigned connections() const { return connections_.count(); }
  bool is_alive() const { return connections_.are_alive(); }

 private:
  void start(Socket socket) {
    const Limits& limits = options_.limits;
    // Where the limit is reached connections are still answered, so that they are told.
    const auto beyond = [](unsigned most) { return most + most / 4 + 8; };
    // The library's own bound, which cannot be told of in our words, is met after ours. A connection that
    // rests keeps as much.
    const size_t memory = limits.header_size * 2;
    unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG;
    std::vector<MHD_OptionItem> items = {
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<intptr_t>(memory), nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, static_cast<intptr_t>(beyond(limits.connections)), nullptr},
        {MHD_OPTION_PER_IP_CONNECTION_LIMIT, static_cast<intptr_t>(beyond(limits.connections_of_an_address)),
         nullptr},
        {MHD_OPTION_THREAD_POOL_SIZE, static_cast<intptr_t>(std::max(2U, options_.threads)), nullptr},
        {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
        {MHD_OPTION_LISTEN_SOCKET, socket.descriptor(), nullptr},
        {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<intptr_t>(&Implementation::on_target), this},
        {MHD_OPTION_UNESCAPE_CALLBACK, reinterpret_cast<intptr_t>(&Implementation::leave_escaped), nullptr},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<intptr_t>(&Implementation::on_connection), this},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<intptr_t>(&Implementation::on_completed), this},
    };
    if (options_.certificate != nullptr) {
      flags |= MHD_USE_TLS;
      items.push_back(
          {MHD_OPTION_HTTPS_CERT_CALLBACK2, 0, reinterpret_cast<void*>(Certificate::retriever())});
      items.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>(kTlsPriorities)});
    }
    items.push_back({MHD_OPTION_END, 0, nullptr});
    // The logger comes first: it hears of what is wrong with the others.
    daemon_ = MHD_start_daemon(flags, 0, nullptr, nullptr, &Implementation::on_request, this,
                               MHD_OPTION_EXTERNAL_LOGGER, &Complaint::note, &complaint_, MHD_OPTION_ARRAY,
                               items.data(), MHD_OPTION_END);
    const std::lock_guard lock(complaint_.mutex);
    complaint_.is_starting = false;
    if (daemon_ == nullptr) throw ServiceError("cannot start the HTTP server: " + complaint_.text);
    socket.release();
  }

  static size_t leave_escaped(void*, MHD_Connection*, char* text) {
    return std::char_traits<char>::length(text);
  }

  static void on_connection(void* self, MHD_Connection* connection, void** context,
                            MHD_ConnectionNotificationCode code) {
    auto& server = *static_cast<Implementation*>(self);
    if (code == MHD_CONNECTION_NOTIFY_STARTED) {
      const int descriptor =
          MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
      try {
        auto client = std::make_unique<Client>(descriptor, address_of(connection).host(),
                                               server.options_.certificate != nullptr);
        server.connections_.add(client->connection);
        *context = client.release();
      } catch (...) {
        *context = nullptr;
        shutdown(descriptor, SHUT_RDWR);
      }
    } else if (auto* const client = static_cast<Client*>(*context); client != nullptr) {
      server.connections_.remove(client->connection);
      delete client;
    }
  }

  static void* on_target(void* self, const char* text, MHD_Connection* connection) {
    try {
      Client* const client = client_of(connection);
      if (client == nullptr) return nullptr;
      client->connection.enter(Phase::kReceiving,
                               static_cast<Implementation*>(self)->options_.limits.receiving);
      client->begin(text);
    } catch (...) {
    }
    return nullptr;
  }

  static void on_completed(void* self, MHD_Connection* connection, void**, MHD_RequestTerminationCode) {
    Client* const client = client_of(connection);
    if (client == nullptr) return;
    client->rest();
    client->connection.enter(Phase::kIdle, static_cast<Implementation*>(self)->options_.limits.idle);
  }

  static MHD_Result on_request(void* self, MHD_Connection* connection, const char*, const char* method,
                               const char* version, const char* data, size_t* size, void** context) {
    try {
      auto& server = *static_cast<Implementation*>(self);
      if (client_of(connection) == nullptr) return MHD_NO;
      Client& client = *client_of(connection);
      const bool is_first = std::exchange(*context, &client) == nullptr;
      if (is_first) return server.take_head(client, connection, method, version);
      if (*size == 0) return server.answer(client, connection);
      client.checked.request.body.append(data, std::exchange(*size, 0));
      return MHD_YES;
    } catch (...) {
      return MHD_NO;
    }
  }

  MHD_Result take_head(Client& client, MHD_Connection* connection, const char* method, const char* version) {
    client.begun = Clock::now();
    RequestHead head{method, version, client.target, {}};
    MHD_get_connection_values_n(connection, MHD_HEADER_KIND, add_header, &head.headers);
    client.checked = check_head(std::move(head), options_.limits);
    client.checked.request.peer = client.connection.peer();
    client.checked.request.is_encrypted = client.connection.is_encrypted();
    if (client.connection.is_one_too_many()) client.checked.status = 503;
    const int status = client.checked.status;
    if (status == 0) return MHD_YES;
    // What follows of the request is not read, and so nothing can follow it.
    client.response = refusal(status, client.checked.request);
    client.response->headers.emplace_back("Connection", "close");
    return client.connection.enter(Phase::kSending, options_.limits.sending) ? deliver(client, connection)
                                                                             : MHD_NO;
  }

  MHD_Result answer(Client& client, MHD_Connection* connection) {
    if (!client.response) {
      const Request& request = client.checked.request;
      const bool is_slow = options_.is_slow && options_.is_slow(request);
      if (!client.connection.enter(Phase::kAnswering, is_slow ? kLongestSlowAnswer : kLongestAnswer))
        return MHD_NO;
      if (is_slow) {
        if (answer_elsewhere(client, connection)) return MHD_YES;
        client.response = refusal(503, request);
      } else {
        client.response = answered(request);
      }
    }
    return client.connection.enter(Phase::kSending, options_.limits.sending) ? deliver(client, connection)
                                                                             : MHD_NO;
  }

  bool answer_elsewhere(Client& client, MHD_Connection* connection) {
    const std::lock_guard lock(client.gate);
    const bool is_taken = workers_->run([this, &client, connection] {
      auto response = answered(client.checked.request);
      {
        const std::lock_guard resumed_later(client.gate);
        client.response = std::move(response);
      }
      // From here on the client may be gone at any moment.
      MHD_resume_connection(connection);
    });
    if (is_taken) MHD_suspend_connection(connection);
    return is_taken;
  }

  // Handlers have their own words for what goes wrong; without memory there are none.
  Response answered(const Request& request) {
    try {
      return handler_.answer(request);
    } catch (...) {
      return with_retry({.status = 503});
    }
  }

  Response refusal(int status, const Request& request) {
    Response response = handler_.refuse(status, request);
    return status == 503 ? with_retry(std::move(response)) : response;
  }

  MHD_Result deliver(Client& client, MHD_Connection* connection) {
    Response& answer = *client.response;
    const Request& request = client.checked.request;
    auto content = content_of(client, connection);
    if (content == nullptr) {
      answer = refusal(503, request);
      content = response_of(answer.body);
    }
    for (const auto& [name, value] : answer.headers)
      MHD_add_response_header(content.get(), name.c_str(), value.c_str());
    if (options_.observe) options_.observe(request, answer.status, Clock::now() - client.begun);
    return MHD_queue_response(connection, static_cast<unsigned>(answer.status), content.get());
  }

  // Null where there are enough streams.
  ResponsePtr content_of(Client& client, MHD_Connection* connection) {
    Response& answer = *client.response;
    const Request& request = client.checked.request;
    if (answer.stream != nullptr && request.method != Method::kHead) {
      auto reader = streams_.open(client, connection, answer.stream, options_.limits.sending);
      return reader != nullptr ? response_of(std::move(reader)) : nullptr;
    }
    if (answer.body == nullptr && answer.gzip == nullptr) return empty_response();
    return response_of(compressed(answer, request));
  }

  static Text plain(const Response& answer) {
    return answer.body != nullptr ? answer.body : std::make_shared<const std::string>(gunzip(*answer.gzip));
  }

  // The body as it is sent, with the headers that say so.
  Text compressed(Response& answer, const Request& request) {
    const std::string* const type = find(answer.headers, "Content-Type");
    if (find(answer.headers, "Content-Encoding") != nullptr) return answer.body;
    if (answer.gzip == nullptr && (type == nullptr || !is_compressible(*type))) return answer.body;
    answer.headers.emplace_back("Vary", "Accept-Encoding");
    const auto accepted = request.header("Accept-Encoding");
    if (!accepted || !accepts_gzip(*accepted)) return plain(answer);
    const Text text = answer.gzip != nullptr ? answer.gzip : compressed_.of(answer.body);
    if (text == nullptr) return answer.body;
    answer.headers.emplace_back("Content-Encoding", "gzip");
    // Other bytes of the same: no longer the same to the letter.
    if (std::string* const tag = find(answer.headers, "ETag"); tag != nullptr && tag->starts_with('"'))
      tag->insert(0, "W/");
    return text;
  }

  Handler& handler_;
  const ServerOptions options_;
  CompressedTexts compressed_;
  Complaint complaint_;
  Streams streams_;
  std::optional<Workers> workers_;
  Connections connections_;
  MHD_Daemon* daemon_ = nullptr;
};

Server::Server(Handler& handler, Socket socket, const ServerOptions& options)
    : implementation_(std::make_unique<Implementation>(handler, std::move(socket), options)) {}

Server::~Server() = default;

unsigned Server::connections() const {
  return implementation_->connections();
}

bool Server::is_alive() const {
  return implementation_->is_alive();
}

}  // namespace zymdb::service
