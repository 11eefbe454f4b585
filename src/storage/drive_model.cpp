#include <strings.h>

#include <algorithm>
#include <cstring>

#include "zymdb_storage.h"

namespace {

// The first prefix that a model begins with tells its maker. Inventories show these spellings; they are not
// those of the vendor words below.
struct ModelPrefix {
  char prefix[8];
  char maker[12];
};
constexpr ModelPrefix kModelPrefixes[] = {
    {"AL", "Toshiba"},    {"CV", "SSSTC"},   {"DC", "SMART"},      {"ER", "SSSTC"},   {"HU", "WDC"},
    {"HM", "WDC"},        {"HF", "Hynix"},   {"KHK", "KIOXIA"},    {"KPM", "KIOXIA"}, {"MTF", "Micron"},
    {"Micron", "Micron"}, {"MZ", "Samsung"}, {"MG", "Toshiba"},    {"ST", "Seagate"}, {"SSD", "Intel"},
    {"SSSTC", "SSSTC"},   {"SVE", "SMART"},  {"SFPC", "SWISSBIT"}, {"THN", "KIOXIA"}, {"WD", "WDC"},
    {"WU", "WDC"},
};
constexpr char kLiteon[] = "Liteon";  // the only one found in upper and lower case

// Words in front of a model that name its vendor.
constexpr char kVendorWords[][8] = {"Seagate", "WD",     "WDC",   "Intel",  "Samsung", "Toshiba",
                                    "Kioxia",  "Micron", "Hynix", "Liteon", "SSSTC",   "HGST"};
constexpr size_t kLongestVendorWord = 8;
constexpr size_t kSeriesName = 8;  // with the separator before it

// Also true for the beginning of a vendor word: some makers abbreviate theirs.
bool is_vendor_word(const char* word, size_t length) {
  return std::ranges::any_of(kVendorWords,
                             [&](const char* vendor) { return strncasecmp(word, vendor, length) == 0; });
}

bool is_separator(char c) {
  return c == ' ' || c == '_';
}

}  // namespace

const char* driveModel2Manufacture(const char* model) {
  if (model == nullptr) return nullptr;
  if (strncasecmp(model, kLiteon, std::strlen(kLiteon)) == 0) return kLiteon;
  const auto* const rule = std::ranges::find_if(kModelPrefixes, [&](const ModelPrefix& each) {
    return std::strncmp(model, each.prefix, std::strlen(each.prefix)) == 0;
  });
  return rule != std::end(kModelPrefixes) ? rule->maker : "";
}

char* trim_drive_model(char* model) {
  if (model == nullptr) return nullptr;
  char* start = model + std::strspn(model, " ");
  if (*start == '\0') start = model;

  // The separator that ended the vendor word. None while it is the string's first character, which no word
  // ends before.
  char* vendor_end = model;
  for (char* at = start; *at != '\0'; ++at) {
    if (!is_separator(*at)) continue;
    if (vendor_end != model) return (at - vendor_end > ptrdiff_t{kSeriesName} ? vendor_end : at) + 1;
    const size_t length = static_cast<size_t>(at - start);
    if (length > kLongestVendorWord) return start;
    if (is_vendor_word(start, length)) vendor_end = at;
  }
  return vendor_end != model ? vendor_end + 1 : start;
}
