#include "records/links.h"

#include <algorithm>

namespace zymdb::records {
namespace {

constexpr unsigned kDeepest = 64;  // bridges above each other: more is a loop

const Link* find(const Links& links, std::optional<FunctionKey> function) {
  const auto found = function ? links.find(*function) : links.end();
  return found == links.end() ? nullptr : &found->second;
}

bool has_link(const Link& link) {
  return link.max_lanes.value_or(0) != 0;
}

// Links that lead down from the root alternate with ports that look up: a port at a root looks down, what is
// plugged into it looks up, the ports behind that look down again.
bool looks_up(const Links& links, const Link& link) {
  unsigned depth = 0;
  for (const Link* above = find(links, link.bridge); above != nullptr && depth < kDeepest; ++depth)
    above = find(links, above->bridge);
  return depth % 2 == 1;
}

// What is plugged into a port.
const Link* first_below(const Links& links, FunctionKey port) {
  const auto found = std::ranges::find_if(
      links, [port](const auto& each) { return each.second.bridge == port && has_link(each.second); });
  return found == links.end() ? nullptr : &found->second;
}

const Link* other_end(const Links& links, FunctionKey function, const Link& link) {
  if (looks_up(links, link)) return find(links, link.bridge);
  return link.is_bridge ? first_below(links, function) : nullptr;
}

bool is_below(std::optional<unsigned> used, std::optional<unsigned> one, std::optional<unsigned> other) {
  return used && one && other && *used < std::min(*one, *other);
}

}  // namespace

LinkState state_of(const Links& links, FunctionKey function) {
  const Link* const link = find(links, function);
  if (link == nullptr || !link->lanes || link->max_lanes == 0U) return LinkState::kUnknown;
  if (*link->lanes == 0) return LinkState::kDown;
  const Link* const other = other_end(links, function, *link);
  if (other == nullptr) return LinkState::kFull;
  const bool is_reduced = is_below(link->lanes, link->max_lanes, other->max_lanes) ||
                          is_below(link->generation, link->max_generation, other->max_generation);
  return is_reduced ? LinkState::kReduced : LinkState::kFull;
}

}  // namespace zymdb::records
