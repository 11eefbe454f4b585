#include "client/dialect/dialect.h"
#include "client/dialect/words.h"

namespace zymdb::client {
namespace {

// column | function "(" ( "*" | [DISTINCT] column ) ")", either after DISTINCT
class ColumnParser {
 public:
  ColumnParser(const Table& table, std::string_view entry, ColumnEntry& out, const Flavour& flavour)
      : table_(table), entry_(entry), lexer_(entry), out_(out), flavour_(flavour) {}

  bool run() {
    advance();
    distinct();
    if (token_.kind != TokenKind::kWord || entry_.ends_with(';')) return false;
    out_.name = entry_.substr(static_cast<size_t>(token_.text.data() - entry_.data()));
    const Function* function = find_word(kFunctions, token_.text);
    out_.plain = function == nullptr && out_.sql.empty();
    return (function != nullptr ? call(*function) : column()) && token_.kind == TokenKind::kEnd;
  }

 private:
  void advance() { token_ = lexer_.next(); }

  void distinct() {
    if (token_.kind != TokenKind::kWord || !same_word(token_.text, "DISTINCT")) return;
    out_.sql.append("DISTINCT ");
    advance();
  }

  bool column() {
    const Column* column = token_.kind == TokenKind::kWord ? table_.column(token_.text) : nullptr;
    if (column == nullptr) return false;
    append_identifier(out_.sql, column->name, flavour_);
    advance();
    return true;
  }

  bool call(const Function& function) {
    out_.aggregate = function.aggregate;
    out_.sql.append(function.text).push_back('(');
    advance();
    if (!punctuation('(')) return false;
    distinct();
    if (token_.is('*')) {
      out_.sql.push_back('*');
      advance();
    } else if (!column()) {
      return false;
    }
    out_.sql.push_back(')');
    return punctuation(')');
  }

  bool punctuation(char c) {
    if (!token_.is(c)) return false;
    advance();
    return true;
  }

  const Table& table_;
  std::string_view entry_;
  Lexer lexer_;
  ColumnEntry& out_;
  const Flavour& flavour_;
  Token token_;
};

}  // namespace

bool parse_column(const Table& table, std::string_view entry, ColumnEntry& out, const Flavour& flavour) {
  return ColumnParser(table, entry, out, flavour).run();
}

bool is_function(std::string_view word) {
  return find_word(kFunctions, word) != nullptr;
}

}  // namespace zymdb::client
