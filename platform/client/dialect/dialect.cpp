#include "client/dialect/dialect.h"

#include <algorithm>
#include <array>

#include "client/dialect/text_comparisons.h"
#include "client/dialect/words.h"
#include "client/status.h"

namespace zymdb::client {
namespace {

constexpr size_t kMaxNesting = 50;
constexpr size_t kMaxArguments = 30000;

enum class Clause : uint8_t { kCondition, kSelectList, kFrom, kTail };

class Translator {
 public:
  Translator(const Catalog& catalog, Translation& out)
      : catalog_(catalog), out_(out), comparisons_(out.tokens) {}

  int run(std::string_view text, const Table* table, Clause start);

 private:
  bool read_tokens(std::string_view text);
  bool collect_tables();
  bool translate(size_t place);
  bool translate_word(size_t place);
  bool translate_operator(size_t place);
  bool translate_number(size_t place);
  bool is_compared_with_text(size_t place) const;
  void turn(const Keyword& keyword);
  std::string_view unescape(const Token& token);
  const Column* find_column(std::string_view word) const;

  void emit(std::string_view text) { out_.shape.append(text).push_back(' '); }
  bool emit_name(std::string_view name);
  bool lift(const Argument& argument);
  bool refuse(std::string_view reason, int status = ZYM_DB_STATUS_ERROR);

  const Catalog& catalog_;
  Translation& out_;
  TextComparisons comparisons_;
  const Table* table_ = nullptr;
  std::vector<const Table*> more_tables_;
  std::array<Clause, kMaxNesting + 1> clauses_{};
  size_t depth_ = 0;
  int status_ = 0;
};

int Translator::run(std::string_view text, const Table* table, Clause start) {
  out_.clear();
  table_ = table;
  clauses_[0] = start;
  if (!read_tokens(text) || !collect_tables()) return status_;
  for (size_t i = 0; i + 1 < out_.tokens.size(); ++i) {
    if (!translate(i)) return status_;
  }
  if (depth_ != 0) refuse("a parenthesis is not closed");
  return status_;
}

bool Translator::read_tokens(std::string_view text) {
  Lexer lexer(text);
  do {
    out_.tokens.push_back(lexer.next());
    if (out_.tokens.back().kind == TokenKind::kInvalid) return refuse(out_.tokens.back().text);
    // Views of unescaped texts stay valid: the storage never grows beyond what is reserved here.
    if (out_.tokens.back().quote != 0) out_.unescaped.reserve(text.size());
  } while (out_.tokens.back().kind != TokenKind::kEnd);
  if (out_.tokens.size() == 1) return refuse("an empty condition or statement");
  return true;
}

// A sub-select names its columns before its table.
bool Translator::collect_tables() {
  for (size_t i = 0; i + 1 < out_.tokens.size(); ++i) {
    if (out_.tokens[i].kind != TokenKind::kWord || !same_word(out_.tokens[i].text, "FROM")) continue;
    const Token& name = out_.tokens[i + 1];
    const Table* table = name.kind == TokenKind::kWord ? catalog_.table(name.text) : nullptr;
    if (table == nullptr) return refuse("no such table after FROM");
    more_tables_.push_back(table);
  }
  return true;
}

bool Translator::translate(size_t place) {
  const Token& token = out_.tokens[place];
  switch (token.kind) {
    case TokenKind::kWord:
      return translate_word(place);
    case TokenKind::kInteger:
    case TokenKind::kReal:
      return translate_number(place);
    case TokenKind::kText:
      return lift(Argument::of(token.quote != 0 ? unescape(token) : token.text));
    case TokenKind::kPlaceholder: {
      Argument argument;
      argument.type = Argument::Type::kPlaceholder;
      return lift(argument);
    }
    default:
      return translate_operator(place);
  }
}

bool Translator::translate_word(size_t place) {
  const std::string_view word = out_.tokens[place].text;
  if (const Keyword* keyword = find_keyword(word)) {
    comparisons_.see_keyword(place, *keyword);
    turn(*keyword);
    return true;
  }
  if (out_.tokens[place + 1].is('(')) {
    const Function* function = find_word(kFunctions, word);
    if (function == nullptr) return refuse("an unknown function");
    emit(function->text);
    return true;
  }
  if (clauses_[depth_] == Clause::kFrom) {
    const Table* table = catalog_.table(word);
    return table != nullptr ? emit_name(table->name()) : refuse("an unknown table");
  }
  if (const Column* column = find_column(word)) {
    comparisons_.see_column(place, *column);
    return emit_name(column->name);
  }
  if (clauses_[depth_] != Clause::kCondition) return refuse("an unknown column");
  return lift(Argument::of(word));
}

bool Translator::translate_operator(size_t place) {
  const Token& token = out_.tokens[place];
  if (token.is('(')) {
    if (depth_ == kMaxNesting) return refuse("parentheses nest too deep", kStatusTooLarge);
    ++depth_;
    clauses_[depth_] = clauses_[depth_ - 1];
  } else if (token.is(')')) {
    if (depth_ == 0) return refuse("a parenthesis was never opened");
    --depth_;
  }
  comparisons_.see_operator(place);
  emit(token.text);
  return !comparisons_.lacks_value(place) || lift(Argument::of(std::string_view("")));
}

bool Translator::translate_number(size_t place) {
  const Token& token = out_.tokens[place];
  if (clauses_[depth_] == Clause::kTail) {
    emit(token.text);
    return true;
  }
  if (is_compared_with_text(place)) return lift(Argument::of(token.text));
  Argument argument = Argument::of(token.integer);
  if (token.kind == TokenKind::kReal) {
    argument.type = Argument::Type::kReal;
    argument.real = token.real;
  }
  return lift(argument);
}

bool Translator::is_compared_with_text(size_t place) const {
  if (comparisons_.awaits(place)) return true;
  const Token* const right = comparisons_.compared_with(place);
  const Column* const column = right != nullptr ? find_column(right->text) : nullptr;
  return column != nullptr && column->is_text;
}

void Translator::turn(const Keyword& keyword) {
  Clause& clause = clauses_[depth_];
  switch (keyword.turn) {
    case Turn::kNone:
      break;
    case Turn::kSelect:
      clause = Clause::kSelectList;
      break;
    case Turn::kFrom:
      clause = Clause::kFrom;
      break;
    case Turn::kCondition:
      clause = Clause::kCondition;
      out_.bare &= depth_ != 0;
      break;
    case Turn::kGroup:
      clause = Clause::kTail;
      out_.bare &= depth_ != 0;
      out_.grouped |= depth_ == 0;
      break;
    case Turn::kTail:
      clause = Clause::kTail;
      out_.bare &= depth_ != 0;
      if (depth_ == 0) out_.tail = std::min(out_.tail, out_.shape.size());
      break;
  }
  emit(keyword.text);
}

std::string_view Translator::unescape(const Token& token) {
  const size_t begin = out_.unescaped.size();
  for (size_t i = 0; i < token.text.size(); ++i) {
    out_.unescaped.push_back(token.text[i]);
    if (token.text[i] == token.quote) ++i;
  }
  return std::string_view(out_.unescaped).substr(begin);
}

const Column* Translator::find_column(std::string_view word) const {
  const Column* column = table_ != nullptr ? table_->column(word) : nullptr;
  for (size_t i = 0; column == nullptr && i < more_tables_.size(); ++i)
    column = more_tables_[i]->column(word);
  return column;
}

bool Translator::emit_name(std::string_view name) {
  append_identifier(out_.shape, name, catalog_.flavour());
  out_.shape.push_back(' ');
  return true;
}

bool Translator::lift(const Argument& argument) {
  if (out_.arguments.size() == kMaxArguments) return refuse("too many values", kStatusTooLarge);
  out_.arguments.push_back(argument);
  emit("?");
  return true;
}

bool Translator::refuse(std::string_view reason, int status) {
  out_.reason = reason;
  status_ = status;
  return false;
}

}  // namespace

int translate_condition(const Catalog& catalog, const Table& table, std::string_view text, Translation& out) {
  return Translator(catalog, out).run(text, &table, Clause::kCondition);
}

int translate_select(const Catalog& catalog, std::string_view text, Translation& out) {
  const Token first = Lexer(text).next();
  if (first.kind != TokenKind::kWord || !same_word(first.text, "SELECT")) {
    out.clear();
    out.reason = "not a SELECT";
    return ZYM_DB_STATUS_ERROR;
  }
  return Translator(catalog, out).run(text, nullptr, Clause::kSelectList);
}

}  // namespace zymdb::client
