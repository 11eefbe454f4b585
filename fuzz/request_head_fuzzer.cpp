// Whatever the head of a request says: what is let through has a path within its root that can be shown
// anywhere, one host, and a length that is within the bound.
#include <algorithm>
#include <string>
#include <string_view>

#include "checks.h"
#include "common/text.h"
#include "service/http/compression.h"
#include "service/http/entity_tag.h"
#include "service/http/request_head.h"
#include "service/http/target.h"

using namespace zymdb::fuzz;
using namespace zymdb::service;

namespace {

std::string_view take_until(std::string_view& rest, std::string_view separator) {
  const size_t end = rest.find(separator);
  const auto part = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + separator.size());
  return part;
}

// As a line-wise reader takes it apart; what it leaves out it does not judge.
RequestHead parse(std::string_view text) {
  RequestHead head;
  auto line = take_until(text, "\n");
  head.method = take_until(line, " ");
  head.target = take_until(line, " ");
  head.version = line;
  while (!text.empty()) {
    auto header = take_until(text, "\n");
    const auto name = take_until(header, ": ");
    head.headers.emplace_back(name, header);
  }
  return head;
}

void require_plain(const std::string& text) {
  require(std::ranges::none_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }),
          "a control character", text);
  require(zymdb::valid_utf8(text) == text, "a text that is not UTF-8", text);
}

void require_within_root(std::string path) {
  require(path.starts_with('/'), "a path without a root", path);
  path += '/';
  require(path.find("/../") == std::string::npos && path.find("/./") == std::string::npos,
          "a path that steps aside", path);
}

void check_request(const RequestHead& head) {
  const Limits limits;
  const CheckedHead checked = check_head(head, limits);
  const Request& request = checked.request;
  constexpr int kAnswers[] = {0, 400, 411, 413, 414, 431, 501};
  require(std::ranges::find(kAnswers, checked.status) != std::end(kAnswers), "answers no known status");
  require_plain(request.path);
  if (checked.status != 0) return;
  require_within_root(request.path);
  for (const auto& [name, value] : request.query) {
    require_plain(name);
    require_plain(value);
  }
  require(head.target.size() <= limits.target_length, "a target beyond its bound");
  require(request.method != Method::kOther, "a method that nobody knows");
  require(!request.header("Transfer-Encoding"), "a body of unknown length");
  if (const auto length = request.header("Content-Length"))
    require(std::stoull(std::string(*length)) <= limits.body_size, "a body beyond its bound", *length);
  require(head.version == "HTTP/1.0" || is_host(request.header("Host").value_or("")), "a host that is none");
}

void check_headers(const Fields& headers) {
  for (const auto& [name, value] : headers) {
    accepts_gzip(value);
    names_tag(value, "\"tag\"");
    require(!is_loopback_host(value) || is_host(value), "a name of this machine that is none", value);
    if (const auto credentials = parse_basic(value)) {
      require(!credentials->user.empty() && credentials->user.find(':') == std::string::npos,
              "a user that is none");
      require((credentials->user + credentials->password).find('\0') == std::string::npos,
              "a NUL in credentials");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const RequestHead head = parse(text);
  check_request(head);
  check_headers(head.headers);
  return 0;
}
