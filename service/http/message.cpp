#include "service/http/message.h"

#include <syslog.h>

#include <algorithm>
#include <new>

#include "common/client_objects.h"
#include "common/text.h"

namespace zymdb::service {
namespace {

constexpr std::pair<int, std::string_view> kReasons[] = {
    {200, "OK"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {411, "Length Required"},
    {413, "Content Too Large"},
    {414, "URI Too Long"},
    {421, "Misdirected Request"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {503, "Service Unavailable"},
};

}  // namespace

std::optional<std::string_view> Request::header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (is_alike(key, name)) return value;
  }
  return {};
}

Response Response::of(int status, std::string type, std::string content) {
  return {.status = status,
          .headers = {{"Content-Type", std::move(type)}},
          .body = std::make_shared<const std::string>(std::move(content))};
}

Response with_retry(Response response) {
  response.headers.emplace_back("Retry-After", std::to_string(kRetrySeconds));
  return response;
}

Response Handler::answer_or_refuse(const Request& request, const Log& log) {
  try {
    return answer(request);
  } catch (const DatabaseError& error) {
    log(LOG_WARNING, std::string("cannot read the inventory: ") + error.what());
    return with_retry(refuse_unreadable(request, error));
  } catch (const std::bad_alloc&) {
    log(LOG_ERR, "out of memory");
    return with_retry(refuse(503, request));
  } catch (const std::exception& error) {
    log(LOG_ERR, std::string("cannot answer: ") + error.what());
    return refuse(500, request);
  }
}

Response Handler::refuse_unreadable(const Request& request, const DatabaseError&) {
  return refuse(503, request);
}

Response Handler::refuse(int status, const Request&) {
  return Response::of(status, "text/plain; charset=utf-8",
                      std::to_string(status) + " " + std::string(reason_of(status)) + "\n");
}

std::string_view reason_of(int status) {
  const auto* const found = std::ranges::find(kReasons, status, &std::pair<int, std::string_view>::first);
  return found != std::end(kReasons) ? found->second : "Refused";
}

}  // namespace zymdb::service
