#include "service/http/entity_tag.h"

#include "common/text.h"

namespace zymdb::service {
namespace {

std::string_view without_weakness(std::string_view tag) {
  return tag.starts_with("W/") ? tag.substr(2) : tag;
}

}  // namespace

bool is_known(const Request& request, std::string_view tag) {
  const auto known = request.header("If-None-Match");
  return known && names_tag(*known, tag);
}

bool names_tag(std::string_view if_none_match, std::string_view tag) {
  if (trimmed(if_none_match) == "*") return true;
  tag = without_weakness(tag);
  // A tag ends with its quote: commas in it separate nothing.
  while (true) {
    const size_t begin = if_none_match.find('"');
    const size_t end = begin == std::string_view::npos ? begin : if_none_match.find('"', begin + 1);
    if (end == std::string_view::npos) return false;
    if (if_none_match.substr(begin, end - begin + 1) == tag) return true;
    if_none_match.remove_prefix(end + 1);
  }
}

}  // namespace zymdb::service
