#include "documents/check_json.h"

#include "documents/json_value.h"

namespace zymdb::documents {

std::string to_json(const std::vector<Verdict>& verdicts) {
  Json failures = Json::array();
  for (const Verdict& verdict : verdicts) {
    for (const Failure& failure : verdict.failures) {
      failures.push_back({{"class", verdict.part_class},
                          {"expectation", verdict.title},
                          {"place", failure.place.empty() ? Json() : Json(failure.place)},
                          {"expected", failure.expected},
                          {"found", failure.found}});
    }
  }
  const Json json{{"format_version", kCheckFormatVersion},
                  {"expectations", verdicts.size()},
                  {"failures", std::move(failures)}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zymdb::documents
