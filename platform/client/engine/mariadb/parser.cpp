#include "client/engine/mariadb/parser.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "client/dialect/dialect.h"
#include "client/dialect/lexer.h"

namespace zymdb::client::mariadb {
namespace {

using Kind = Expression::Kind;

struct Refusal {
  std::string_view reason;
};

// As deep as SQLite takes it: nothing that walks a tree runs out of stack.
constexpr size_t kDeepest = 1000;

// The operators of one precedence, the weakest first.
constexpr std::string_view kEqualities[] = {"=", "==", "!=", "<>"};
constexpr std::string_view kComparisons[] = {"<", "<=", ">", ">="};
constexpr std::string_view kBits[] = {"&", "|", "<<", ">>"};
constexpr std::string_view kSums[] = {"+", "-"};
constexpr std::string_view kProducts[] = {"*", "/", "%"};
constexpr std::string_view kJoins[] = {"||"};

class Parser {
 public:
  Parser(const Catalog& catalog, std::string_view sql, Parsed& out) : catalog_(catalog), out_(out) {
    Lexer lexer(sql);
    do {
      tokens_.push_back(lexer.next());
      if (tokens_.back().kind == TokenKind::kInvalid) throw Refusal{tokens_.back().text};
    } while (tokens_.back().kind != TokenKind::kEnd);
  }

  void run(Request::Kind kind) {
    if (kind == Request::Kind::kInsert)
      insert();
    else if (kind == Request::Kind::kUpdate)
      update();
    else if (kind == Request::Kind::kDelete)
      remove();
    else
      out_.select = select();
    if (token().kind != TokenKind::kEnd) throw Refusal{"text after the statement"};
  }

 private:
  const Token& token() const { return tokens_[at_]; }
  const Token& ahead(size_t by) const { return tokens_[std::min(at_ + by, tokens_.size() - 1)]; }
  static bool is_word(const Token& token, std::string_view word) {
    return token.kind == TokenKind::kWord && token.text == word;
  }
  bool accept(std::string_view word) {
    const bool found =
        token().text == word && (token().kind == TokenKind::kWord || token().kind == TokenKind::kOperator);
    if (found) ++at_;
    return found;
  }
  [[noreturn]] void refuse() const {
    throw Refusal{token().kind == TokenKind::kEnd ? "incomplete input"
                                                  : "a statement that is not understood"};
  }
  void expect(std::string_view word) {
    if (!accept(word)) refuse();
  }
  template <size_t N>
  std::string_view accept_any(const std::string_view (&words)[N]) {
    if (token().kind != TokenKind::kOperator) return {};
    const auto* const found = std::find(std::begin(words), std::end(words), token().text);
    if (found == std::end(words)) return {};
    ++at_;
    return *found;
  }
  bool is_name() const { return token().kind == TokenKind::kText; }

  const Table& table_name() {
    const Table* const table = is_name() ? catalog_.table(token().text) : nullptr;
    if (table == nullptr) throw Refusal{"an unknown table"};
    ++at_;
    return *table;
  }
  const Column& column_of(const Table& table) {
    const Column* const column = is_name() ? table.column(token().text) : nullptr;
    if (column == nullptr) throw Refusal{"no such column"};
    ++at_;
    return *column;
  }

  void insert() {
    expect("INSERT");
    expect("INTO");
    const Table& table = changed_table();
    if (accept("DEFAULT")) return expect("VALUES");
    expect("(");
    do out_.columns.push_back(&column_of(table));
    while (accept(","));
    expect(")");
    expect("VALUES");
    expect("(");
    do placeholder();
    while (accept(","));
    expect(")");
  }
  void update() {
    expect("UPDATE");
    const Table& table = changed_table();
    expect("SET");
    do {
      out_.columns.push_back(&column_of(table));
      expect("=");
      placeholder();
    } while (accept(","));
    condition();
  }
  void remove() {
    expect("DELETE");
    expect("FROM");
    changed_table();
    condition();
  }
  const Table& changed_table() {
    const Table& table = table_name();
    out_.select.sources.push_back({&table, next_table_++});
    scopes_.push_back(&out_.select.sources);
    return table;
  }
  void placeholder() {
    if (token().kind != TokenKind::kPlaceholder) refuse();
    ++at_;
  }
  void condition() {
    if (accept("WHERE")) out_.select.where = expression();
  }

  // Its tables come first, because the items name their columns.
  Select select() {
    expect("SELECT");
    Select select;
    select.distinct = accept("DISTINCT");
    const size_t items = at_;
    skip_to_from();
    sources(select);
    const size_t rest = at_;
    scopes_.push_back(&select.sources);
    at_ = items;
    do item(select);
    while (accept(","));
    expect("FROM");
    at_ = rest;
    if (accept("WHERE")) select.where = expression();
    groups(select);
    if (accept("HAVING")) select.having = expression();
    orders(select);
    limit(select);
    scopes_.pop_back();
    return select;
  }
  void skip_to_from() {
    size_t depth = 0;
    for (; token().kind != TokenKind::kEnd; ++at_) {
      if (depth == 0 && accept("FROM")) return;
      if (token().is('(')) ++depth;
      if (!token().is(')')) continue;
      if (depth-- == 0) break;
    }
    throw Refusal{"a SELECT from no table"};
  }
  void sources(Select& select) {
    do select.sources.push_back({&table_name(), next_table_++});
    while (accept(","));
  }
  void item(Select& select) {
    if (token().is('*') && (ahead(1).is(',') || is_word(ahead(1), "FROM"))) {
      ++at_;
      for (const Source& source : select.sources) {
        for (const Column& column : source.table->columns()) {
          select.items.push_back({column_expression(column, source.number), column.name});
        }
      }
      return;
    }
    const size_t begin = at_;
    Expression value = expression();
    std::string name = value.kind == Kind::kColumn ? value.column->name : source(begin, at_ - 1);
    select.items.push_back({std::move(value), std::move(name)});
  }
  // As it was written, from one token to another.
  std::string source(size_t from, size_t to) const {
    const auto quote = [](const Token& token) { return token.kind == TokenKind::kText ? 1 : 0; };
    const Token& first = tokens_[from];
    const Token& last = tokens_[to];
    return {first.text.data() - quote(first), last.text.data() + last.text.size() + quote(last)};
  }
  void groups(Select& select) {
    if (!accept("GROUP")) return;
    expect("BY");
    do {
      select.groups.push_back(expression());
      settle_place(select.groups.back(), select);
    } while (accept(","));
  }
  void orders(Select& select) {
    if (!accept("ORDER")) return;
    expect("BY");
    do {
      Order order{expression()};
      settle_place(order.by, select);
      order.descending = accept("DESC");
      if (!order.descending) accept("ASC");
      select.orders.push_back(std::move(order));
    } while (accept(","));
  }
  // A number by which is grouped or ordered is a column's place.
  static void settle_place(Expression& by, const Select& select) {
    const Expression* number = &by;
    bool is_negative = false;
    for (; number->kind == Kind::kUnary && number->word != "~"; number = &number->parts[0])
      is_negative ^= number->word == "-";
    if (number->kind != Kind::kNumber || number->word.find('.') != std::string::npos) return;
    size_t place = 0;
    const char* const end = number->word.data() + number->word.size();
    const auto read = std::from_chars(number->word.data(), end, place);
    if (is_negative || read.ec != std::errc() || place == 0 || place > select.items.size())
      throw Refusal{"a place where there is no column"};
    by = Expression(*number);
  }
  void limit(Select& select) {
    if (!accept("LIMIT")) return;
    const int64_t first = count();
    select.limit = first;
    if (accept(",")) {
      select.offset = first;
      select.limit = count();
    } else if (accept("OFFSET")) {
      select.offset = count();
    }
  }
  int64_t count() {
    const bool negative = accept("-");
    if (token().kind != TokenKind::kInteger) throw Refusal{"a LIMIT that is no number"};
    const int64_t value = token().integer;
    ++at_;
    return negative ? -value : value;
  }

  Expression expression() {
    Expression left = conjunction();
    while (accept("OR")) left = join(Kind::kOr, "", std::move(left), conjunction());
    return left;
  }
  Expression conjunction() {
    Expression left = negation();
    while (accept("AND")) left = join(Kind::kAnd, "", std::move(left), negation());
    return left;
  }
  Expression negation() {
    if (!accept("NOT")) return equality();
    Expression negated;
    negated.kind = Kind::kNot;
    const Nested nested(*this);
    add(negated, negation());
    return negated;
  }

  Expression equality() {
    Expression left = comparison();
    for (;;) {
      if (const std::string_view word = accept_any(kEqualities); !word.empty()) {
        const bool equal = word == "=" || word == "==";
        left = compare(equal ? "=" : "<>", std::move(left), comparison());
      } else if (accept("IS")) {
        const bool negated = accept("NOT");
        left = compare(negated ? "IS NOT" : "IS", std::move(left), comparison());
      } else if (accept("ISNULL")) {
        left = compare("IS", std::move(left), {});
      } else if (accept("NOTNULL")) {
        left = compare("IS NOT", std::move(left), {});
      } else if (is_word(token(), "NOT") && is_word(ahead(1), "NULL")) {
        at_ += 2;
        left = compare("IS NOT", std::move(left), {});
      } else if (!membership(left)) {
        return left;
      }
    }
  }
  bool membership(Expression& left) {
    const bool negated = is_word(token(), "NOT") && (is_word(ahead(1), "IN") || is_word(ahead(1), "LIKE") ||
                                                     is_word(ahead(1), "BETWEEN"));
    if (negated) ++at_;
    if (accept("IN"))
      left = in(std::move(left));
    else if (accept("LIKE"))
      left = like(std::move(left));
    else if (accept("BETWEEN"))
      left = between(std::move(left));
    else
      return false;
    left.negated = negated;
    return true;
  }
  Expression between(Expression left) {
    Expression low = comparison();
    expect("AND");
    Expression high = comparison();
    Expression between = join(Kind::kBetween, "", std::move(left), std::move(low));
    add(between, std::move(high));
    pair(between.parts[0], between.parts[1]);
    pair(between.parts[0], between.parts[2]);
    return between;
  }
  Expression like(Expression left) {
    Expression like = join(Kind::kLike, "", std::move(left), comparison());
    if (accept("ESCAPE"))
      add(like, comparison());
    else
      set_affinity(like.parts[1], Affinity::kPattern);
    return like;
  }
  // The values of a list have no affinity of their own.
  Expression in(Expression left) {
    Expression in;
    expect("(");
    if (is_word(token(), "SELECT")) {
      in.kind = Kind::kInSelect;
      in.select = std::make_shared<const Select>(select());
      if (in.select->items.size() != 1) throw Refusal{"a sub-select of several columns"};
      if (left.kind == Kind::kArgument) set_affinity(left, affinity_of(in.select->items[0].value));
      add(in, std::move(left));
    } else {
      in.kind = Kind::kIn;
      add(in, std::move(left));
      while (!token().is(')')) {
        add(in, expression());
        set_affinity(in.parts.back(), affinity_of(in.parts.front()));
        if (!accept(",")) break;
      }
    }
    expect(")");
    return in;
  }
  Expression comparison() {
    Expression left = bits();
    for (std::string_view word; !(word = accept_any(kComparisons)).empty();)
      left = compare(word, std::move(left), bits());
    return left;
  }
  Expression bits() {
    Expression left = sum();
    for (std::string_view word; !(word = accept_any(kBits)).empty();)
      left = join(Kind::kBinary, word, std::move(left), sum());
    return left;
  }
  Expression sum() {
    Expression left = product();
    for (std::string_view word; !(word = accept_any(kSums)).empty();)
      left = join(Kind::kBinary, word, std::move(left), product());
    return left;
  }
  Expression product() {
    Expression left = joined();
    for (std::string_view word; !(word = accept_any(kProducts)).empty();)
      left = join(Kind::kBinary, word, std::move(left), joined());
    return left;
  }
  Expression joined() {
    Expression left = unary();
    for (std::string_view word; !(word = accept_any(kJoins)).empty();)
      left = join(Kind::kBinary, word, std::move(left), unary());
    return left;
  }
  Expression unary() {
    for (const std::string_view sign : {"-", "+", "~"}) {
      if (!accept(sign)) continue;
      Expression signed_value;
      signed_value.kind = Kind::kUnary;
      signed_value.word = sign;
      const Nested nested(*this);
      add(signed_value, unary());
      return signed_value;
    }
    return operand();
  }

  Expression operand() {
    if (accept("(")) {
      if (is_word(token(), "SELECT")) return sub_select(Kind::kSelect);
      Expression inner = expression();
      expect(")");
      return inner;
    }
    if (accept("EXISTS")) {
      expect("(");
      return sub_select(Kind::kExists);
    }
    if (accept("NULL")) return {};
    if (is_word(token(), "NOT")) return negation();
    Expression value;
    if (token().kind == TokenKind::kPlaceholder) {
      value.kind = Kind::kArgument;
      value.argument = out_.affinities.size();
      out_.affinities.push_back(Affinity::kNone);
    } else if (token().kind == TokenKind::kInteger || token().kind == TokenKind::kReal) {
      value.kind = Kind::kNumber;
      // Hexadecimal is a text there.
      value.word = token().kind == TokenKind::kInteger ? std::to_string(token().integer) : token().text;
    } else if (is_name()) {
      value = named_column();
    } else if (token().kind == TokenKind::kWord && ahead(1).is('(')) {
      return call();
    } else {
      refuse();
    }
    ++at_;
    return value;
  }
  Expression sub_select(Kind kind) {
    Expression value;
    value.kind = kind;
    value.select = std::make_shared<const Select>(select());
    if (kind == Kind::kSelect && value.select->items.size() != 1)
      throw Refusal{"a sub-select of several columns"};
    expect(")");
    return value;
  }
  Expression call() {
    Expression call;
    call.kind = Kind::kCall;
    call.word = token().text;
    if (!is_function(call.word)) throw Refusal{"an unknown function"};
    at_ += 2;
    call.distinct = accept("DISTINCT");
    call.star = accept("*");
    while (!call.star && !token().is(')')) {
      add(call, expression());
      if (!accept(",")) break;
    }
    expect(")");
    return call;
  }

  // The innermost statement that has such a column means it.
  Expression named_column() {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
      Expression found;
      for (const Source& source : **scope) {
        const Column* const column = source.table->column(token().text);
        if (column == nullptr) continue;
        if (found.column != nullptr) throw Refusal{"a column that several tables have"};
        found = column_expression(*column, source.number);
      }
      if (found.column != nullptr) return found;
    }
    throw Refusal{"no such column"};
  }
  static Expression column_expression(const Column& column, size_t table) {
    Expression value;
    value.kind = Kind::kColumn;
    value.column = &column;
    value.table = table;
    return value;
  }

  Expression compare(std::string_view word, Expression left, Expression right) {
    pair(left, right);
    return join(Kind::kCompare, word, std::move(left), std::move(right));
  }
  static Expression join(Kind kind, std::string_view word, Expression left, Expression right) {
    Expression joined;
    joined.kind = kind;
    joined.word = word;
    add(joined, std::move(left));
    add(joined, std::move(right));
    return joined;
  }
  static void add(Expression& whole, Expression part) {
    whole.depth = std::max(whole.depth, part.depth + 1);
    if (whole.depth > kDeepest) throw Refusal{"an expression that is too deep"};
    whole.parts.push_back(std::move(part));
  }
  // A step into what the dialect does not count: signs and negations.
  struct Nested {
    explicit Nested(Parser& of) : parser(of) {
      if (++parser.nesting_ > kDeepest) throw Refusal{"an expression that is too deep"};
    }
    ~Nested() { --parser.nesting_; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;
    Parser& parser;
  };
  void pair(const Expression& left, const Expression& right) {
    set_affinity(left, affinity_of(right));
    set_affinity(right, affinity_of(left));
  }
  static Affinity affinity_of(const Expression& value) {
    if (value.kind == Kind::kSelect) return affinity_of(value.select->items[0].value);
    if (value.kind != Kind::kColumn || value.column->is_bytes) return Affinity::kNone;
    return value.column->is_text ? Affinity::kText : Affinity::kNumber;
  }
  void set_affinity(const Expression& value, Affinity affinity) {
    if (value.kind == Kind::kArgument && out_.affinities[value.argument] == Affinity::kNone)
      out_.affinities[value.argument] = affinity;
  }

  const Catalog& catalog_;
  Parsed& out_;
  std::vector<Token> tokens_;
  size_t at_ = 0;
  size_t nesting_ = 0;
  size_t next_table_ = 0;
  std::vector<const std::vector<Source>*> scopes_;
};

}  // namespace

bool parse(const Catalog& catalog, Request::Kind kind, std::string_view sql, Parsed& out,
           std::string& reason) {
  try {
    Parser(catalog, sql, out).run(kind);
    return true;
  } catch (const Refusal& refusal) {
    reason = refusal.reason;
    return false;
  }
}

}  // namespace zymdb::client::mariadb
