// The options behind a path's question mark.
#ifndef ZYMDB_SERVICE_REDFISH_QUERY_H
#define ZYMDB_SERVICE_REDFISH_QUERY_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "service/http/message.h"
#include "service/redfish/model/json.h"
#include "service/redfish/model/messages.h"

namespace zymdb::service::redfish {

// Which links are followed.
enum class Expansion : uint8_t { kNone, kNoLinks, kLinks, kAll };

struct Query {
  Expansion expand = Expansion::kNone;
  unsigned levels = 1;
  std::vector<std::string> select = {};
  bool only = false;
  std::optional<uint64_t> top = {};
  std::optional<uint64_t> skip = {};

  bool is_plain() const { return expand == Expansion::kNone && select.empty() && !only && !top && !skip; }
  // The same for queries that mean the same.
  std::string key() const;
};

// Why a query is refused.
struct QueryError {
  int status = 400;
  Message message;
};

// What is unknown and begins with no "$" says nothing.
std::optional<QueryError> parse_query(const Fields& fields, Query& query);

// The members of a page of a collection, and the way to the next.
void take_page(Json& collection, const Query& query);

// Thrown where a response would be too large.
struct TooLarge {};

class Expander {
 public:
  // A resource for a path, as it is without options; null where there is none, or not for who asks.
  using Find = std::function<Json(const std::string&)>;

  Expander(Expansion expansion, Find find) : expansion_(expansion), find_(std::move(find)) {}

  // Puts resources in the place of links. Throws TooLarge.
  void expand(Json& resource, unsigned levels);

 private:
  void expand_within(Json& value, unsigned levels, bool is_in_links);
  void replace(Json& link, const std::string& path, unsigned levels);

  Expansion expansion_;
  Find find_;
  std::vector<std::string> above_ = {};  // the resources that are being expanded
  size_t bytes_ = 0;
};

// The properties that were chosen, and those that say what it is. Of an expanded collection, of its members.
Json selected(const Json& resource, const Query& query);

}  // namespace zymdb::service::redfish

#endif
