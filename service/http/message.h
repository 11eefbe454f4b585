// Requests and responses, as whoever answers them sees them: nothing of sockets, and nothing of a library.
#ifndef ZYMDB_SERVICE_HTTP_MESSAGE_H
#define ZYMDB_SERVICE_HTTP_MESSAGE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "service/http/log.h"

namespace zymdb {
class DatabaseError;
}

namespace zymdb::service {

// When whoever cannot be answered now may ask again, in seconds.
inline constexpr unsigned kRetrySeconds = 5;

enum class Method : uint8_t { kGet, kHead, kPost, kPut, kPatch, kDelete, kOptions, kOther };

// What a caller may do; each may do all that the one before may.
enum class Role : uint8_t { kNone, kReadOnly, kOperator, kAdministrator };

struct Caller {
  std::string user;  // empty: nobody
  Role role = Role::kNone;
  std::string session;  // the id of the session, where there is one

  bool may(Role needed) const { return role >= needed; }
};

using Fields = std::vector<std::pair<std::string, std::string>>;

struct Request {
  Method method = Method::kGet;
  std::string path;  // percent-decoded, without the query
  // In their order, decoded: {"$expand", "."}. A parameter without "=" has an empty value.
  Fields query = {};
  Fields headers = {};  // as they came
  std::string body = {};
  Caller caller = {};
  std::string peer = {};  // the address that it came from
  bool is_encrypted = false;

  bool is_read() const { return method == Method::kGet || method == Method::kHead; }

  // Of any case; nothing where the request lacks it.
  std::optional<std::string_view> header(std::string_view name) const;
};

// What follows, piece by piece, once the headers are out: a stream of events.
class Stream {
 public:
  virtual ~Stream() = default;

  // What there is to send now, at most for a moment of waiting; empty where there is nothing yet. Called by
  // one thread at a time.
  virtual std::string take() = 0;
  // Nothing will follow what was taken.
  virtual bool is_over() const = 0;
};

struct Response {
  int status = 200;
  Fields headers = {};
  // Shared, because most answers are sent again and again.
  std::shared_ptr<const std::string> body = {};
  // The body compressed; null: not worth it, or not yet. Where it is there alone, who takes no gzip gets it
  // decompressed.
  std::shared_ptr<const std::string> gzip = {};
  std::shared_ptr<Stream> stream = {};  // in place of a body

  static Response of(int status, std::string type, std::string content);
};

// Tells when to ask again.
Response with_retry(Response response);

// Answers on any thread, several at a time.
class Handler {
 public:
  virtual ~Handler() = default;
  // Throws DatabaseError where the inventory cannot be read, and for memory.
  virtual Response answer(const Request& request) = 0;

  // What answering throws becomes a refusal, and a line of the log.
  Response answer_or_refuse(const Request& request, const Log& log);

  // What is refused before it comes to the handler, in the handler's own form. The request may lack anything;
  // headers that belong to the status are added by the caller. One line of text unless somebody says it
  // better.
  virtual Response refuse(int status, const Request& request);

 protected:
  // While the inventory cannot be read; when to ask again is added by the caller.
  virtual Response refuse_unreadable(const Request& request, const DatabaseError& error);
};

// "Not Found".
std::string_view reason_of(int status);

}  // namespace zymdb::service

#endif
