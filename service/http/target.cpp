#include "service/http/target.h"

#include <algorithm>
#include <cstdint>

#include "common/text.h"

namespace zymdb::service {
namespace {

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool is_control(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

std::optional<std::string> decode(std::string_view text, bool is_query) {
  std::string decoded;
  decoded.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '%') {
      const int high = i + 1 < text.size() ? hex_digit(text[i + 1]) : -1;
      const int low = i + 2 < text.size() ? hex_digit(text[i + 2]) : -1;
      if (high < 0 || low < 0) return {};
      c = static_cast<char>(high << 4 | low);
      i += 2;
    } else if (c == '+' && is_query) {
      c = ' ';
    }
    if (is_control(c)) return {};
    decoded += c;
  }
  return valid_utf8(decoded) == decoded ? std::optional(std::move(decoded)) : std::nullopt;
}

// What comes before `separator`, which is taken off `rest` together with it.
std::string_view take_until(std::string_view& rest, char separator) {
  const size_t end = rest.find(separator);
  const auto part = rest.substr(0, end);
  rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  return part;
}

bool steps_aside(std::string_view path) {
  while (!path.empty()) {
    const auto step = take_until(path, '/');
    if (step == "." || step == "..") return true;
  }
  return false;
}

// A request that was meant for a proxy names the host too.
std::string_view without_host(std::string_view text) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (text.size() == scheme.size() || !begins_alike(text, scheme)) continue;
    const size_t path = text.find('/', scheme.size());
    return path == std::string_view::npos ? "/" : text.substr(path);
  }
  return text;
}

std::optional<std::string> decode_base64(std::string_view text) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  while (text.ends_with('=')) text.remove_suffix(1);
  std::string decoded;
  uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) return {};
    bits = bits << 6 | static_cast<uint32_t>(digit);
    if ((count += 6) < 8) continue;
    count -= 8;
    decoded += static_cast<char>(bits >> count & 0xFF);
  }
  return decoded;
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Without the port; nothing where what follows the host is no port.
std::optional<std::string_view> host_of(std::string_view text) {
  const size_t end = text.starts_with('[') ? text.find(']') : text.find(':');
  if (text.starts_with('[') && end == std::string_view::npos) return {};
  const auto host = text.starts_with('[') ? text.substr(0, end + 1) : text.substr(0, end);
  auto rest = text.substr(host.size());
  if (rest.empty()) return host;
  if (!rest.starts_with(':') || rest.size() > 6 || !std::ranges::all_of(rest.substr(1), is_digit)) return {};
  return host;
}

bool is_of_host(char c) {
  constexpr std::string_view kOthers = "-._~!$&'()*,;=%[]:";
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         kOthers.find(c) != std::string_view::npos;
}

}  // namespace

std::optional<Target> parse_target(std::string_view text) {
  text = without_host(text);
  auto path = decode(take_until(text, '?'), false);
  if (!path || !path->starts_with('/') || steps_aside(*path)) return {};
  Target target{std::move(*path), {}};
  while (!text.empty()) {
    auto parameter = take_until(text, '&');
    if (parameter.empty()) continue;
    const auto name = decode(take_until(parameter, '='), true);
    const auto value = decode(parameter, true);
    if (!name || !value) return {};
    target.query.emplace_back(*name, *value);
  }
  return target;
}

std::optional<Credentials> parse_basic(std::string_view authorization) {
  constexpr std::string_view kScheme = "Basic ";
  if (!begins_alike(authorization, kScheme)) return {};
  authorization.remove_prefix(
      std::min(authorization.find_first_not_of(' ', kScheme.size()), authorization.size()));
  const auto decoded = decode_base64(authorization);
  if (!decoded || decoded->find('\0') != std::string::npos) return {};
  const size_t colon = decoded->find(':');
  if (colon == std::string::npos || colon == 0) return {};
  return Credentials{decoded->substr(0, colon), decoded->substr(colon + 1)};
}

bool is_host(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, is_of_host) && host_of(text).has_value();
}

bool is_loopback_host(std::string_view text) {
  const auto host = is_host(text) ? host_of(text) : std::nullopt;
  if (!host) return false;
  if (*host == "[::1]" || is_alike(*host, "localhost")) return true;
  // 127.0.0.0/8 as four numbers: a name may begin with "127." too.
  return host->starts_with("127.") && std::ranges::count(*host, '.') == 3 &&
         std::ranges::all_of(*host, [](char c) { return is_digit(c) || c == '.'; });
}

}  // namespace zymdb::service
