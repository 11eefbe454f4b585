#include "client/engine/mariadb/address.h"

#include <algorithm>
#include <charconv>

namespace zymdb::client::mariadb {
namespace {

constexpr std::string_view kForm = "is not mariadb://USER@HOST[:PORT][,HOST[:PORT]...]/DATABASE[?CHOICES]";
constexpr size_t kLongestName = 64;
constexpr size_t kMostHosts = 16;

struct Refusal {
  std::string reason;
};

// What stands before the separator, which goes with it.
std::string_view split(std::string_view& text, char separator) {
  const std::string_view part = text.substr(0, std::min(text.size(), text.find(separator)));
  text.remove_prefix(std::min(text.size(), part.size() + 1));
  return part;
}

bool has_only(std::string_view text, std::string_view others) {
  return std::ranges::all_of(text, [&](char c) {
    const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return is_plain || others.find(c) != others.npos;
  });
}

bool is_name(std::string_view name, std::string_view others) {
  return !name.empty() && name.size() <= kLongestName && has_only(name, others);
}

unsigned parse_port(std::string_view text) {
  unsigned port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port == 0 || port > 65535)
    throw Refusal{"names the port " + std::string(text)};
  return port;
}

// An IPv6 address stands in brackets.
Host parse_host(std::string_view text) {
  Host host;
  if (text.starts_with('[')) {
    text.remove_prefix(1);
    if (text.find(']') == text.npos) throw Refusal{std::string(kForm)};
    host.name = split(text, ']');
    if (!is_name(host.name, ":.") || (!text.empty() && text.front() != ':'))
      throw Refusal{std::string(kForm)};
    if (!text.empty()) host.port = parse_port(text.substr(1));
    return host;
  }
  const size_t colon = text.find(':');
  host.name = text.substr(0, colon);
  if (host.name.empty() || host.name.size() > 255 || !has_only(host.name, ".-_"))
    throw Refusal{std::string(kForm)};
  if (colon != text.npos) host.port = parse_port(text.substr(colon + 1));
  return host;
}

bool is_loopback(const std::string& host) {
  const bool is_number = host.find_first_not_of("0123456789.") == host.npos;
  return host == "localhost" || host == "::1" || (is_number && host.starts_with("127."));
}

Tls parse_tls(std::string_view word) {
  if (word == "verify") return Tls::kVerify;
  if (word == "required") return Tls::kRequired;
  if (word == "off") return Tls::kOff;
  throw Refusal{"says tls=" + std::string(word) + ", and may say tls=verify, tls=required or tls=off"};
}

std::string parse_path(std::string_view key, std::string_view path) {
  if (!path.starts_with('/'))
    throw Refusal{"says " + std::string(key) + "=" + std::string(path) + ", which is no absolute path"};
  return std::string(path);
}

void parse_choices(std::string_view choices, Address& address, bool& says_tls) {
  while (!choices.empty()) {
    std::string_view value = split(choices, '&');
    const std::string_view choice = value;
    const std::string_view key = split(value, '=');
    if (key == "tls") {
      address.tls = parse_tls(value);
      says_tls = true;
    } else if (key == "socket") {
      address.socket = parse_path(key, value);
    } else if (key == "password-file") {
      address.password_file = parse_path(key, value);
    } else if (key == "ca") {
      address.authority = parse_path(key, value);
    } else if (key == "password") {
      throw Refusal{"holds a password, which is to stand in an option file or a password-file."};
    } else {
      throw Refusal{"says " + std::string(choice) + ", and may say tls, ca, socket or password-file"};
    }
  }
}

void parse(std::string_view text, Address& address) {
  if (!text.starts_with("//")) throw Refusal{std::string(kForm)};
  text.remove_prefix(2);
  std::string_view choices = text;
  text = split(choices, '?');
  std::string_view place = split(text, '/');
  address.database = text;
  if (place.find('@') == place.npos) throw Refusal{std::string(kForm)};
  const std::string_view user = split(place, '@');
  if (user.find(':') != user.npos || place.find('@') != place.npos)
    throw Refusal{"holds a password, which is to stand in an option file or a password-file."};
  address.user = user;
  if (!is_name(user, "._-")) throw Refusal{std::string(kForm)};
  if (!is_name(address.database, "_-$"))
    throw Refusal{"names no database of letters, digits, \"_\", \"-\" and \"$\""};
  if (place.ends_with(',')) throw Refusal{std::string(kForm)};
  do address.hosts.push_back(parse_host(split(place, ',')));
  while (!place.empty());
  if (address.hosts.size() > kMostHosts) throw Refusal{"names more than 16 hosts"};
  bool says_tls = false;
  parse_choices(choices, address, says_tls);
  const bool is_here =
      std::ranges::all_of(address.hosts, [](const Host& host) { return is_loopback(host.name); });
  if (!address.socket.empty() && (address.hosts.size() != 1 || !is_here))
    throw Refusal{"names a socket, which is for localhost alone"};
  if (!says_tls && is_here) address.tls = Tls::kOff;
  if (address.tls == Tls::kOff && !is_here) throw Refusal{"says tls=off, which is for this machine alone"};
}

}  // namespace

bool parse_address(std::string_view text, Address& address, std::string& error) {
  address = {};
  try {
    parse(text, address);
    return true;
  } catch (const Refusal& refusal) {
    error = refusal.reason;
    return false;
  }
}

std::string describe(const Address& address, const Host& host) {
  if (!address.socket.empty()) return address.socket;
  const bool is_v6 = host.name.find(':') != host.name.npos;
  return (is_v6 ? "[" + host.name + "]" : host.name) + ":" + std::to_string(host.port);
}

}  // namespace zymdb::client::mariadb
