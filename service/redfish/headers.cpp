#include "service/redfish/headers.h"

#include <string>

#include "common/text.h"

namespace zymdb::service::redfish {
namespace {

// "application/json" of "application/json; q=0.5".
std::string_view type_of(std::string_view entry) {
  return trimmed(entry.substr(0, entry.find(';')));
}

// Calls `wanted` with what stands between commas until it is content.
template <class Wanted>
bool any_of_list(std::string_view list, Wanted wanted) {
  while (true) {
    const size_t comma = list.find(',');
    if (wanted(trimmed(list.substr(0, comma)))) return true;
    if (comma == std::string_view::npos) return false;
    list.remove_prefix(comma + 1);
  }
}

}  // namespace

bool accepts(const Request& request, std::string_view type) {
  const auto header = request.header("Accept");
  if (!header || trimmed(*header).empty()) return true;
  const std::string any_of_kind = std::string(type.substr(0, type.find('/') + 1)) + "*";
  return any_of_list(*header, [&](std::string_view entry) {
    const std::string_view accepted = type_of(entry);
    return is_alike(accepted, type) || is_alike(accepted, any_of_kind) || accepted == "*/*";
  });
}

bool has_json(const Request& request) {
  const auto header = request.header("Content-Type");
  return header && is_alike(type_of(*header), "application/json");
}

}  // namespace zymdb::service::redfish
