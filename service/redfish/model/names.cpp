#include "service/redfish/model/names.h"

#include <algorithm>

namespace zymdb::service::redfish {
namespace {

constexpr size_t kLongest = 64;

bool is_plain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_';
}

}  // namespace

std::string path_segment(std::string_view text) {
  std::string segment;
  for (const char c : text) {
    if (segment.size() == kLongest) break;
    if (is_plain(c))
      segment += c;
    else if (!segment.empty() && segment.back() != '-')
      segment += '-';
  }
  while (!segment.empty() && segment.back() == '-') segment.pop_back();
  // Dots alone mean another folder to some readers.
  return segment.find_first_not_of('.') == std::string::npos ? "" : segment;
}

std::string Names::take(std::initializer_list<std::string> texts, std::string_view fallback) {
  std::string first;
  for (const std::string& text : texts) {
    std::string segment = path_segment(text);
    if (segment.empty()) continue;
    if (taken_.insert(segment).second) return segment;
    if (first.empty()) first = std::move(segment);
  }
  if (first.empty()) first = fallback;
  if (taken_.insert(first).second) return first;
  for (unsigned number = 2;; ++number) {
    std::string numbered = first + "-" + std::to_string(number);
    if (taken_.insert(numbered).second) return numbered;
  }
}

}  // namespace zymdb::service::redfish
