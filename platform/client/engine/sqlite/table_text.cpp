#include "client/engine/sqlite/table_text.h"

#include <algorithm>
#include <array>

#include "client/dialect/catalog.h"
#include "client/dialect/lexer.h"

namespace zymdb::client::sqlite {
namespace {

constexpr std::array<std::string_view, 5> kTableConstraints = {"CONSTRAINT", "PRIMARY", "UNIQUE", "CHECK",
                                                               "FOREIGN"};
constexpr std::array<std::string_view, 8> kColumnConstraints = {
    "CONSTRAINT", "PRIMARY", "NOT", "UNIQUE", "CHECK", "DEFAULT", "COLLATE", "REFERENCES"};
// What makes a column that the engine counts among the hidden ones.
constexpr std::array<std::string_view, 2> kGenerated = {"GENERATED", "AS"};

struct Part {
  enum class Kind { kEnd, kWord, kName, kMark };

  Kind kind = Kind::kEnd;
  std::string text;  // of a name without its quotes

  bool is(char mark) const { return kind == Kind::kMark && text[0] == mark; }
  template <size_t N>
  bool is_one_of(const std::array<std::string_view, N>& words) const {
    return kind == Kind::kWord &&
           std::ranges::any_of(words, [&](std::string_view word) { return same_word(word, text); });
  }
};

class Reader {
 public:
  explicit Reader(std::string_view statement) : rest_(statement) {}

  bool read(std::vector<ColumnText>& columns) {
    // "CREATE VIRTUAL TABLE" is another thing.
    for (const char* const word : {"CREATE", "TABLE"}) {
      advance();
      if (part_.kind != Part::Kind::kWord || part_.text != word) return false;
    }
    advance();
    if (!is_name()) return false;
    advance();
    if (!part_.is('(')) return false;
    while (!part_.is(')')) {
      advance();
      if (!part_.is_one_of(kTableConstraints) && !read_column(columns)) return false;
      if (!skip_definition()) return false;
    }
    return true;
  }

 private:
  bool is_name() const { return part_.kind == Part::Kind::kWord || part_.kind == Part::Kind::kName; }
  bool ends_type() const { return part_.is(',') || part_.is(')') || part_.is_one_of(kColumnConstraints); }

  // A name and the first word of its type. "TEXT" alone is the type of texts.
  bool read_column(std::vector<ColumnText>& columns) {
    if (!is_name()) return false;
    ColumnText column{std::move(part_.text)};
    advance();
    if (!ends_type()) {
      if (part_.kind != Part::Kind::kWord) return false;
      const bool is_text = same_word(part_.text, "TEXT");
      if (is_text && part_.text != "TEXT") return false;
      if (!part_.is_one_of(kGenerated)) advance();
      column.is_text = is_text && ends_type();
    }
    columns.push_back(std::move(column));
    return true;
  }

  // Up to the comma behind a definition, or the end of all.
  bool skip_definition() {
    for (int depth = 0;; advance()) {
      if (part_.kind == Part::Kind::kEnd || part_.is_one_of(kGenerated)) return false;
      if (depth == 0 && (part_.is(',') || part_.is(')'))) return true;
      if (part_.is('(')) ++depth;
      if (part_.is(')')) --depth;
    }
  }

  void advance() {
    skip_comments();
    part_ = {};
    if (rest_.empty()) return;
    const char first = rest_.front();
    if (first == '[') return take_quoted(']');
    if (first == '"' || first == '`' || first == '\'') return take_quoted(first);
    size_t length = 0;
    while (length < rest_.size() && is_word_character(rest_[length])) ++length;
    part_.kind = length != 0 ? Part::Kind::kWord : Part::Kind::kMark;
    take(std::max<size_t>(length, 1));
  }

  void take(size_t length) {
    part_.text.assign(rest_.substr(0, length));
    rest_.remove_prefix(length);
  }

  // A quote inside is written twice. Without its end there is nothing.
  void take_quoted(char quote) {
    std::string text;
    for (size_t at = 1; at < rest_.size(); ++at) {
      const bool is_quote = rest_[at] == quote;
      const bool is_doubled = is_quote && quote != ']' && at + 1 < rest_.size() && rest_[at + 1] == quote;
      if (is_quote && !is_doubled) {
        rest_.remove_prefix(at + 1);
        part_ = {Part::Kind::kName, std::move(text)};
        return;
      }
      at += is_doubled;
      text.push_back(rest_[at]);
    }
    rest_ = {};
  }

  void skip_comments() {
    while (true) {
      rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n\f"), rest_.size()));
      const bool is_line = rest_.starts_with("--");
      if (!is_line && !rest_.starts_with("/*")) return;
      const std::string_view end = is_line ? "\n" : "*/";
      const size_t found = rest_.find(end, 2);
      rest_.remove_prefix(found == rest_.npos ? rest_.size() : found + end.size());
    }
  }

  std::string_view rest_;
  Part part_;
};

}  // namespace

bool read_columns(std::string_view statement, std::vector<ColumnText>& columns) {
  return Reader(statement).read(columns);
}

}  // namespace zymdb::client::sqlite
