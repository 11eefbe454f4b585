#include "documents/check_junit.h"

#include <algorithm>
#include <string_view>

#include "common/text.h"

namespace zymdb::documents {
namespace {

struct Escape {
  char character;
  std::string_view text;
};
constexpr Escape kEscapes[] = {
    {'&', "&amp;"},   {'<', "&lt;"},  {'>', "&gt;"},   {'"', "&quot;"},
    {'\'', "&apos;"}, {'\t', "&#9;"}, {'\n', "&#10;"}, {'\r', "&#13;"},
};
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
// U+FFFE and U+FFFF, which are characters to UTF-8 and none to XML.
constexpr std::string_view kNoCharacters[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};

// As a text or an attribute may hold it. What XML has no way to say becomes U+FFFD.
std::string escaped(std::string_view text) {
  std::string valid = valid_utf8(text);
  for (const auto each : kNoCharacters) {
    for (size_t at = valid.find(each); at != std::string::npos; at = valid.find(each, at))
      valid.replace(at, each.size(), kReplacement);
  }
  std::string result;
  for (const char c : valid) {
    const auto escape = std::ranges::find(kEscapes, c, &Escape::character);
    if (escape != std::end(kEscapes))
      result += escape->text;
    else if (static_cast<unsigned char>(c) < 0x20)
      result += kReplacement;
    else
      result += c;
  }
  return result;
}

std::string attribute(std::string_view name, std::string_view value) {
  return " " + std::string(name) + "=\"" + escaped(value) + "\"";
}

std::string test_case(const Verdict& verdict) {
  const std::string begin = "    <testcase" + attribute("classname", "zymdb." + verdict.part_class) +
                            attribute("name", verdict.title);
  if (verdict.failures.empty()) return begin + "/>\n";
  std::string lines;
  for (const Failure& failure : verdict.failures) lines += (lines.empty() ? "" : "\n") + text_of(failure);
  const std::string first = text_of(verdict.failures.front());
  return begin + ">\n      <failure" + attribute("type", "expectation") + attribute("message", first) + ">" +
         escaped(lines) + "</failure>\n    </testcase>\n";
}

}  // namespace

std::string to_junit(const std::vector<Verdict>& verdicts) {
  const auto failed =
      std::ranges::count_if(verdicts, [](const Verdict& each) { return !each.failures.empty(); });
  const std::string counts = attribute("tests", std::to_string(verdicts.size())) +
                             attribute("failures", std::to_string(failed)) + attribute("errors", "0");
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite" +
                    attribute("name", "zymdb check") + counts + ">\n";
  for (const Verdict& verdict : verdicts) xml += test_case(verdict);
  return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace zymdb::documents
