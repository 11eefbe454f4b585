// Ids of resources: parts of paths, made of what stays with a part.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_NAMES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_NAMES_H

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

namespace zymdb::service::redfish {

// The text with letters, digits, ".", "_" and "-" alone, at most 64 of them: "CPU 1" is "CPU-1". Empty where
// nothing of it is left.
std::string path_segment(std::string_view text);

// The ids of one collection.
class Names {
 public:
  // The first of the texts that says something and that no other part has; else that one with a number, from
  // 2 on. `fallback` says something.
  std::string take(std::initializer_list<std::string> texts, std::string_view fallback);

 private:
  std::set<std::string> taken_;
};

}  // namespace zymdb::service::redfish

#endif
