// What takes the place of what identifies a machine.
#ifndef ZYMDB_COLLECT_RECORD_REPLACEMENTS_H
#define ZYMDB_COLLECT_RECORD_REPLACEMENTS_H

#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace zymdb::collect {

// The same value gets the same replacement, of the same length and kinds of characters, and no two get the
// same.
class Replacements {
 public:
  // A serial number or tag. Shorter than five characters it identifies nobody, and stays.
  void add_text(std::string_view text);

  // An address in hexadecimal digits with whatever is between them: all its spellings, and its bytes. The
  // digits of its maker stay; of more than 8 bytes only the last 8 count.
  void add_address(std::string_view text);

  // "00112233-4455-6677-8899-aabbccddeeff": in both cases, and as SMBIOS stores it.
  void add_uuid(std::string_view text);

  void add_bytes(std::string_view bytes);

  // With everything replaced that was added.
  std::string applied(std::string_view content) const;

 private:
  char another(char c);
  std::string another_of(std::string_view text, size_t kept);
  void add(const std::string& value, const std::string& replacement);

  std::map<std::string, std::string> pairs_;
  std::set<std::string> used_;
  std::mt19937_64 random_{std::random_device()()};
};

}  // namespace zymdb::collect

#endif
