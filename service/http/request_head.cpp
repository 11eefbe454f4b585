#include "service/http/request_head.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "common/text.h"
#include "service/http/target.h"

namespace zymdb::service {
namespace {

constexpr std::pair<std::string_view, Method> kMethods[] = {
    {"GET", Method::kGet},         {"HEAD", Method::kHead},   {"POST", Method::kPost},
    {"PUT", Method::kPut},         {"PATCH", Method::kPatch}, {"DELETE", Method::kDelete},
    {"OPTIONS", Method::kOptions},
};

size_t count(const Fields& headers, std::string_view name) {
  return static_cast<size_t>(
      std::ranges::count_if(headers, [&](const auto& each) { return is_alike(each.first, name); }));
}

size_t size_of(const RequestHead& head, const Fields& headers) {
  constexpr size_t kAround = 4;  // ": " and the end of the line
  size_t size = head.method.size() + head.target.size() + head.version.size() + kAround;
  for (const auto& [name, value] : headers) size += name.size() + value.size() + kAround;
  return size;
}

std::optional<uint64_t> parse_length(std::string_view text) {
  uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  // Longer than any number is too long, and not wrong.
  if (error == std::errc::result_out_of_range) return UINT64_MAX;
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
  return length;
}

bool has_good_host(const RequestHead& head, const Request& request) {
  const size_t hosts = count(request.headers, "Host");
  if (hosts == 0) return head.version == "HTTP/1.0";
  return hosts == 1 && is_host(*request.header("Host"));
}

int check_body(const Request& request, const Limits& limits) {
  const size_t lengths = count(request.headers, "Content-Length");
  if (count(request.headers, "Transfer-Encoding") != 0) {
    // Two lengths are how one request is made to look like two.
    return lengths != 0 ? 400 : 411;
  }
  if (lengths == 0) return 0;
  const auto length = parse_length(*request.header("Content-Length"));
  if (lengths > 1 || !length) return 400;
  return *length > limits.body_size ? 413 : 0;
}

int check(const RequestHead& head, const Limits& limits, CheckedHead& checked) {
  Request& request = checked.request;
  if (head.target.size() > limits.target_length) return 414;
  auto target = parse_target(head.target);
  if (target) {
    request.path = std::move(target->path);
    request.query = std::move(target->query);
  }
  if (size_of(head, request.headers) > limits.header_size) return 431;
  if (!target || !has_good_host(head, request)) return 400;
  if (const int status = check_body(request, limits); status != 0) return status;
  return request.method == Method::kOther ? 501 : 0;
}

}  // namespace

CheckedHead check_head(RequestHead head, const Limits& limits) {
  CheckedHead checked;
  const auto* const method =
      std::ranges::find(kMethods, head.method, &std::pair<std::string_view, Method>::first);
  checked.request.method = method != std::end(kMethods) ? method->second : Method::kOther;
  checked.request.headers = std::move(head.headers);
  checked.status = check(head, limits, checked);
  return checked;
}

}  // namespace zymdb::service
