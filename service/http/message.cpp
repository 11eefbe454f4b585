#include "service/http/message.h"

#include <strings.h>

namespace zymdb::service {

std::optional<std::string_view> Request::header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) return value;
  }
  return {};
}

Response Response::of(int status, std::string type, std::string content) {
  return {.status = status,
          .headers = {{"Content-Type", std::move(type)}},
          .body = std::make_shared<const std::string>(std::move(content))};
}

}  // namespace zymdb::service
