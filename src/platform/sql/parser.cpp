#include "platform/sql/parser.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <deque>
#include <iterator>

namespace orv::sql {

namespace {

// Trees deeper than this are refused rather than risk the stack here and in
// the recursive passes that follow. Long AND/OR chains and IN lists are flat
// and do not count.
constexpr int kMaxDepth = kMaxNesting;

std::string Upper(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = AsciiUpper(c);
  return out;
}

// Words that end an expression or a table source, so they are never taken
// as an alias written without AS.
bool IsReserved(const Token& t) {
  // In order, for a binary search; upper case.
  static constexpr std::string_view kWords[] = {
      "ALL",    "AND",    "AS",     "ASC",       "BETWEEN", "BY",     "CASE",  "COMPUTE",
      "CROSS",  "DELETE", "DESC",   "DISTINCT",  "ELSE",    "END",    "ESCAPE", "EXCEPT",
      "EXISTS", "FOR",    "FROM",   "FULL",      "GROUP",   "HAVING", "IN",    "INNER",
      "INSERT", "INTERSECT", "INTO", "IS",       "JOIN",    "LEFT",   "LIKE",  "NOT",
      "NULL",   "ON",     "OPTION", "OR",        "ORDER",   "OUTER",  "RIGHT", "SELECT",
      "SET",    "THEN",   "TOP",    "UNION",     "UPDATE",  "VALUES", "WHEN",  "WHERE",
      "WITH"};
  static_assert(std::is_sorted(std::begin(kWords), std::end(kWords)));
  // The parser asks this of nearly every name it reads, and most names are
  // columns and tables: a word whose length and first letter begin no
  // keyword is answered from a mask of the first letters of each length.
  // The others are upper-cased into a buffer of the longest keyword's
  // size, with no string made.
  constexpr size_t kLongest = 9;
  static constexpr std::array<uint32_t, kLongest + 1> kFirstLetters = [] {
    std::array<uint32_t, kLongest + 1> mask{};
    for (std::string_view w : kWords) mask[w.size()] |= 1u << (w[0] - 'A');
    return mask;
  }();
  if (t.type != TokenType::Identifier || t.text.empty() || t.text.size() > kLongest) return false;
  const char first = AsciiUpper(t.text[0]);
  if (first < 'A' || first > 'Z' || !(kFirstLetters[t.text.size()] & (1u << (first - 'A')))) return false;
  char up[kLongest];
  for (size_t i = 0; i < t.text.size(); ++i) up[i] = AsciiUpper(t.text[i]);
  return std::binary_search(std::begin(kWords), std::end(kWords),
                            std::string_view(up, t.text.size()));
}

// A small non-negative number as written; values past `limit` clamp to it.
int SmallNumber(const std::string& digits, int limit) {
  long long v = 0;
  for (char c : digits) {
    if (c < '0' || c > '9') break;
    v = v * 10 + (c - '0');
    if (v > limit) return limit;
  }
  return static_cast<int>(v);
}

std::string CanonicalDatePart(const std::string& written) {
  static const std::pair<const char*, const char*> kParts[] = {
      {"YEAR", "year"},       {"YY", "year"},          {"YYYY", "year"},
      {"QUARTER", "quarter"}, {"QQ", "quarter"},       {"Q", "quarter"},
      {"MONTH", "month"},     {"MM", "month"},         {"M", "month"},
      {"DAYOFYEAR", "dayofyear"}, {"DY", "dayofyear"}, {"Y", "dayofyear"},
      {"DAY", "day"},         {"DD", "day"},           {"D", "day"},
      {"WEEK", "week"},       {"WK", "week"},          {"WW", "week"},
      {"WEEKDAY", "weekday"}, {"DW", "weekday"},       {"W", "weekday"},
      {"HOUR", "hour"},       {"HH", "hour"},
      {"MINUTE", "minute"},   {"MI", "minute"},        {"N", "minute"},
      {"SECOND", "second"},   {"SS", "second"},        {"S", "second"}};
  std::string up = Upper(written);
  for (const auto& [name, canonical] : kParts) {
    if (up == name) return canonical;
  }
  return "";
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), tokens_(Tokenize(text)) {}

  Statement Run() {
    Statement st;
    st.pos = Cur().pos;
    st.text = std::string(text_);
    if (Cur().Is("SELECT") || Cur().IsSymbol("(")) {
      st.kind = Statement::Kind::Select;
      st.query = ParseQuery();
    } else if (Cur().Is("UPDATE")) {
      ParseUpdate(st);
    } else if (Cur().Is("INSERT")) {
      ParseInsert(st);
    } else if (Cur().Is("DELETE")) {
      ParseDelete(st);
    } else {
      Fail("Expected SELECT, UPDATE, INSERT or DELETE");
    }
    if (Cur().IsSymbol(";")) Next();
    if (Cur().type != TokenType::End) Fail("Incorrect syntax near " + Describe(Cur()));
    return st;
  }

 private:
  const Token& Cur() const { return tokens_[i_]; }
  const Token& Ahead(size_t n) const { return tokens_[std::min(i_ + n, tokens_.size() - 1)]; }
  const Token& Next() {
    const Token& t = tokens_[i_];
    if (i_ + 1 < tokens_.size()) ++i_;
    return t;
  }

  static std::string Describe(const Token& t) {
    switch (t.type) {
      case TokenType::End: return "the end of the statement";
      case TokenType::String: return "'" + t.text + "'";
      case TokenType::Quoted: return "'[" + t.text + "]'";
      default: return "'" + t.text + "'";
    }
  }

  [[noreturn]] void Fail(const std::string& reason) const { FailAt(reason, Cur().pos); }
  [[noreturn]] void FailAt(const std::string& reason, Pos at) const {
    throw SqlError(reason, at.line, at.column, std::string(text_));
  }

  bool Accept(std::string_view word) {
    if (Cur().Is(word)) {
      Next();
      return true;
    }
    return false;
  }
  bool AcceptSymbol(std::string_view s) {
    if (Cur().IsSymbol(s)) {
      Next();
      return true;
    }
    return false;
  }
  void Expect(std::string_view word) {
    if (!Accept(word)) Fail("Expected " + Upper(word) + " near " + Describe(Cur()));
  }
  void ExpectSymbol(std::string_view s) {
    if (!AcceptSymbol(s)) Fail("Expected '" + std::string(s) + "' near " + Describe(Cur()));
  }

  bool IsName(const Token& t) const {
    return (t.type == TokenType::Identifier && !IsReserved(t)) || t.type == TokenType::Quoted;
  }
  std::string ExpectName(const char* what) {
    if (Cur().type == TokenType::Variable) Fail("Variables are not supported: " + Cur().text);
    if (!IsName(Cur())) Fail(std::string("Expected ") + what + " near " + Describe(Cur()));
    return Next().text;
  }

  // [server.][database.][schema.]name: only the last part names the table.
  std::string ParseObjectName() {
    std::string name = ExpectName("a table name");
    while (Cur().IsSymbol(".")) {
      Next();
      name = ExpectName("a table name");
    }
    return name;
  }

  ExprPtr Make(ExprKind k, Pos p) { return std::make_unique<Expr>(k, p); }

  ExprPtr Finish(ExprPtr e) {
    int d = 0;
    for (const auto& a : e->args) d = std::max(d, a->depth);
    e->depth = d + 1;
    if (e->depth > kMaxDepth) FailAt(NestingLevel::Message(kMaxDepth), e->pos);
    return e;
  }

  // One more level of recursion, refused past kMaxDepth before it is taken.
  NestingLevel Deeper() { return NestingLevel(nesting_, kMaxDepth, Cur().pos, text_); }

  // ---- queries ----

  QueryPtr ParseQuery() {
    NestingLevel level = Deeper();
    auto q = std::make_unique<Query>();
    q->pos = Cur().pos;
    q->selects.push_back(ParseQueryTerm());
    for (;;) {
      std::string op;
      if (Accept("UNION")) {
        op = Accept("ALL") ? "UNION ALL" : "UNION";
      } else if (Accept("EXCEPT")) {
        op = "EXCEPT";
      } else if (Accept("INTERSECT")) {
        op = "INTERSECT";
      } else {
        break;
      }
      q->set_ops.push_back(op);
      q->selects.push_back(ParseQueryTerm());
    }
    if (Cur().Is("ORDER")) {
      Next();
      Expect("BY");
      do {
        OrderItem item;
        item.expr = ParseExpr();
        if (Accept("DESC")) {
          item.descending = true;
        } else {
          Accept("ASC");
        }
        q->order_by.push_back(std::move(item));
      } while (AcceptSymbol(","));
    }
    if (Cur().Is("COMPUTE") || Cur().Is("FOR") || Cur().Is("OPTION")) {
      Fail("Unsupported clause " + Upper(Cur().text));
    }
    return q;
  }

  // A SELECT, or a parenthesised query that holds exactly one SELECT.
  SelectPtr ParseQueryTerm() {
    if (Cur().IsSymbol("(")) {
      Pos p = Next().pos;
      QueryPtr inner = ParseQuery();
      ExpectSymbol(")");
      if (inner->selects.size() != 1 || !inner->order_by.empty()) {
        FailAt("Parenthesised set operations are not supported", p);
      }
      return std::move(inner->selects[0]);
    }
    return ParseSelect();
  }

  SelectPtr ParseSelect() {
    auto s = std::make_unique<Select>();
    s->pos = Cur().pos;
    Expect("SELECT");
    if (Accept("DISTINCT")) {
      s->distinct = true;
    } else {
      Accept("ALL");
    }
    if (Cur().Is("TOP")) {
      Pos p = Next().pos;
      if (AcceptSymbol("(")) {
        s->top = ParseExpr();
        ExpectSymbol(")");
      } else {
        if (Cur().type != TokenType::Number) Fail("Expected a number after TOP");
        s->top = Make(ExprKind::Number, Cur().pos);
        s->top->text = Next().text;
      }
      if (Cur().Is("PERCENT") || Cur().Is("WITH")) FailAt("TOP ... PERCENT and WITH TIES are not supported", p);
    }
    do {
      s->items.push_back(ParseSelectItem());
    } while (AcceptSymbol(","));
    if (Cur().Is("INTO")) Fail("SELECT ... INTO is not supported");
    if (Accept("FROM")) {
      do {
        s->from.push_back(ParseTableSource());
      } while (AcceptSymbol(","));
    }
    if (Accept("WHERE")) s->where = ParseExpr();
    if (Cur().Is("GROUP")) {
      Next();
      Expect("BY");
      if (Cur().Is("ALL")) Fail("GROUP BY ALL is not supported");
      do {
        s->group_by.push_back(ParseExpr());
      } while (AcceptSymbol(","));
      if (Cur().Is("WITH")) {
        Next();
        if (Accept("ROLLUP")) {
          s->rollup = true;
        } else {
          Fail("Only WITH ROLLUP is supported after GROUP BY");
        }
      }
    }
    if (Accept("HAVING")) s->having = ParseExpr();
    return s;
  }

  SelectItem ParseSelectItem() {
    SelectItem item;
    item.pos = Cur().pos;
    // `alias = expr` and `'alias' = expr`: a name or text followed by '='.
    if ((IsName(Cur()) || Cur().type == TokenType::String) && Ahead(1).IsSymbol("=")) {
      item.alias = Next().text;
      item.has_alias = true;
      Next();
      item.expr = ParseExpr();
      return item;
    }
    if (Cur().IsSymbol("*")) {
      item.expr = Make(ExprKind::Star, Next().pos);
      return item;
    }
    // t.* and schema.t.*
    if (IsName(Cur()) && Ahead(1).IsSymbol(".")) {
      size_t k = 0;
      while (IsName(Ahead(k)) && Ahead(k + 1).IsSymbol(".")) k += 2;
      if (Ahead(k).IsSymbol("*")) {
        auto star = Make(ExprKind::Star, Cur().pos);
        star->qualifier = Ahead(k - 2).text;
        for (size_t j = 0; j <= k; ++j) Next();
        item.expr = std::move(star);
        return item;
      }
    }
    item.expr = ParseExpr();
    if (Accept("AS")) {
      if (!IsName(Cur()) && Cur().type != TokenType::String) Fail("Expected an alias after AS");
      item.alias = Next().text;
      item.has_alias = true;
    } else if (IsName(Cur()) || Cur().type == TokenType::String) {
      item.alias = Next().text;
      item.has_alias = true;
    }
    return item;
  }

  TableSourcePtr ParseTableSource() {
    NestingLevel level = Deeper();
    TableSourcePtr left = ParseTablePrimary();
    // Each join nests the sources before it one level deeper in the tree,
    // which the later passes walk recursively.
    std::deque<NestingLevel> joins;
    for (;;) {
      JoinType type;
      Pos p = Cur().pos;
      if (Cur().Is("JOIN")) {
        type = JoinType::Inner;
      } else if (Cur().Is("INNER") && Ahead(1).Is("JOIN")) {
        type = JoinType::Inner;
        Next();
      } else if ((Cur().Is("LEFT") || Cur().Is("RIGHT") || Cur().Is("FULL")) &&
                 (Ahead(1).Is("JOIN") || (Ahead(1).Is("OUTER") && Ahead(2).Is("JOIN")))) {
        type = Cur().Is("LEFT") ? JoinType::Left : Cur().Is("RIGHT") ? JoinType::Right : JoinType::Full;
        Next();
        Accept("OUTER");
      } else if (Cur().Is("CROSS") && Ahead(1).Is("JOIN")) {
        type = JoinType::Cross;
        Next();
      } else {
        return left;
      }
      Expect("JOIN");
      joins.emplace_back(nesting_, kMaxDepth, p, text_);
      auto join = std::make_unique<TableSource>();
      join->kind = TableSource::Kind::Join;
      join->pos = p;
      join->join = type;
      join->left = std::move(left);
      // `a JOIN b JOIN c ON x ON y` nests the second join inside the first.
      join->right = ParseTableSource();
      if (type != JoinType::Cross) {
        Expect("ON");
        join->on = ParseExpr();
      }
      left = std::move(join);
    }
  }

  TableSourcePtr ParseTablePrimary() {
    auto ts = std::make_unique<TableSource>();
    ts->pos = Cur().pos;
    if (Cur().IsSymbol("(")) {
      if (Ahead(1).Is("SELECT")) {
        Next();
        ts->kind = TableSource::Kind::Derived;
        ts->query = ParseQuery();
        ExpectSymbol(")");
        Accept("AS");
        ts->alias = ExpectName("an alias for the derived table");
        return ts;
      }
      Next();
      TableSourcePtr inner = ParseTableSource();
      ExpectSymbol(")");
      inner->parenthesised = true;
      return inner;
    }
    ts->kind = TableSource::Kind::Table;
    ts->table = ParseObjectName();
    if (Accept("AS")) {
      ts->alias = ExpectName("an alias");
    } else if (IsName(Cur())) {
      ts->alias = Next().text;
    }
    if (Cur().Is("WITH") && Ahead(1).IsSymbol("(")) {
      // Table hints such as WITH (NOLOCK) do not change the rows.
      Next();
      Next();
      while (!Cur().IsSymbol(")")) {
        if (Cur().type == TokenType::End) Fail("Unclosed table hint");
        Next();
      }
      Next();
    }
    return ts;
  }

  // ---- expressions ----

  // Every expression inside another comes through here (operands of NOT
  // and the unary operators through Guarded), so the depth is counted
  // before each descent.
  ExprPtr ParseExpr() {
    NestingLevel level = Deeper();
    return ParseOr();
  }

  ExprPtr ParseLogical(const char* word, ExprPtr (Parser::*operand)()) {
    ExprPtr first = (this->*operand)();
    if (!Cur().Is(word)) return first;
    auto e = Make(ExprKind::Logical, first->pos);
    e->text = word;
    e->args.push_back(std::move(first));
    while (Accept(word)) e->args.push_back((this->*operand)());
    return Finish(std::move(e));
  }
  ExprPtr ParseOr() { return ParseLogical("OR", &Parser::ParseAnd); }
  ExprPtr ParseAnd() { return ParseLogical("AND", &Parser::ParseNot); }

  ExprPtr ParseNot() {
    if (Cur().Is("NOT")) {
      auto e = Make(ExprKind::Unary, Next().pos);
      e->text = "NOT";
      e->args.push_back(Guarded(&Parser::ParseNot));
      return Finish(std::move(e));
    }
    return ParsePredicate();
  }

  ExprPtr Guarded(ExprPtr (Parser::*f)()) {
    NestingLevel level = Deeper();
    return (this->*f)();
  }

  ExprPtr ParsePredicate() {
    if (Cur().Is("EXISTS")) {
      auto e = Make(ExprKind::Exists, Next().pos);
      ExpectSymbol("(");
      e->query = ParseQuery();
      ExpectSymbol(")");
      return e;
    }
    ExprPtr left = ParseAdditive();
    static const char* const kCompare[] = {"=", "<>", "!=", "<", ">", "<=", ">=", "!<", "!>"};
    for (const char* op : kCompare) {
      if (Cur().IsSymbol(op)) {
        auto e = Make(ExprKind::Binary, Next().pos);
        e->text = op;
        if (Cur().Is("ANY") || Cur().Is("ALL") || Cur().Is("SOME")) Fail("ANY, ALL and SOME are not supported");
        e->args.push_back(std::move(left));
        e->args.push_back(ParseAdditive());
        return Finish(std::move(e));
      }
    }
    bool negated = false;
    Pos not_pos = Cur().pos;
    if (Cur().Is("NOT") && (Ahead(1).Is("IN") || Ahead(1).Is("LIKE") || Ahead(1).Is("BETWEEN"))) {
      Next();
      negated = true;
    }
    if (Cur().Is("IN")) {
      Pos p = Next().pos;
      ExpectSymbol("(");
      ExprPtr e;
      if (Cur().Is("SELECT")) {
        e = Make(ExprKind::InQuery, p);
        e->args.push_back(std::move(left));
        e->query = ParseQuery();
      } else {
        e = Make(ExprKind::InList, p);
        e->args.push_back(std::move(left));
        do {
          e->args.push_back(ParseAdditive());
        } while (AcceptSymbol(","));
      }
      ExpectSymbol(")");
      e->negated = negated;
      return Finish(std::move(e));
    }
    if (Cur().Is("LIKE")) {
      auto e = Make(ExprKind::Like, Next().pos);
      e->negated = negated;
      e->args.push_back(std::move(left));
      e->args.push_back(ParseAdditive());
      if (Accept("ESCAPE")) e->args.push_back(ParseAdditive());
      return Finish(std::move(e));
    }
    if (Cur().Is("BETWEEN")) {
      auto e = Make(ExprKind::Between, Next().pos);
      e->negated = negated;
      e->args.push_back(std::move(left));
      e->args.push_back(ParseAdditive());
      Expect("AND");
      e->args.push_back(ParseAdditive());
      return Finish(std::move(e));
    }
    if (negated) FailAt("Incorrect syntax near 'NOT'", not_pos);
    if (Cur().Is("IS")) {
      auto e = Make(ExprKind::IsNull, Next().pos);
      e->negated = Accept("NOT");
      Expect("NULL");
      e->args.push_back(std::move(left));
      return Finish(std::move(e));
    }
    return left;
  }

  ExprPtr ParseBinaryLevel(std::initializer_list<const char*> ops, ExprPtr (Parser::*operand)()) {
    ExprPtr left = (this->*operand)();
    for (;;) {
      const char* found = nullptr;
      for (const char* op : ops) {
        if (Cur().IsSymbol(op)) found = op;
      }
      if (!found) return left;
      auto e = Make(ExprKind::Binary, Next().pos);
      e->text = found;
      e->args.push_back(std::move(left));
      e->args.push_back((this->*operand)());
      left = Finish(std::move(e));
    }
  }
  ExprPtr ParseAdditive() { return ParseBinaryLevel({"+", "-", "&", "|", "^"}, &Parser::ParseMultiplicative); }
  ExprPtr ParseMultiplicative() { return ParseBinaryLevel({"*", "/", "%"}, &Parser::ParseUnary); }

  ExprPtr ParseUnary() {
    if (Cur().IsSymbol("-") || Cur().IsSymbol("+") || Cur().IsSymbol("~")) {
      auto e = Make(ExprKind::Unary, Cur().pos);
      e->text = Next().text;
      e->args.push_back(Guarded(&Parser::ParseUnary));
      return Finish(std::move(e));
    }
    return ParsePrimary();
  }

  TypeName ParseTypeName() {
    TypeName t;
    if (!IsName(Cur())) Fail("Expected a type name near " + Describe(Cur()));
    std::string name = Next().text;
    for (char& c : name) c = AsciiLower(c);
    t.name = name;
    if (AcceptSymbol("(")) {
      if (Accept("MAX")) {
        t.length = 0;
      } else {
        if (Cur().type != TokenType::Number) Fail("Expected a length near " + Describe(Cur()));
        t.length = SmallNumber(Next().text, 1 << 30);
        if (AcceptSymbol(",")) {
          if (Cur().type != TokenType::Number) Fail("Expected a scale near " + Describe(Cur()));
          t.scale = SmallNumber(Next().text, 1 << 30);
        }
      }
      ExpectSymbol(")");
    }
    return t;
  }

  ExprPtr ParsePrimary() {
    const Token& t = Cur();
    Pos p = t.pos;
    switch (t.type) {
      case TokenType::Number: {
        auto e = Make(ExprKind::Number, p);
        e->text = Next().text;
        return e;
      }
      case TokenType::String: {
        auto e = Make(ExprKind::String, p);
        e->text = Next().text;
        return e;
      }
      case TokenType::Variable:
        Fail("Variables are not supported: " + t.text);
      case TokenType::End:
        Fail("Incorrect syntax near the end of the statement");
      case TokenType::Symbol: {
        if (t.IsSymbol("(")) {
          Next();
          if (Cur().Is("SELECT")) {
            auto e = Make(ExprKind::Subquery, p);
            e->query = ParseQuery();
            ExpectSymbol(")");
            return e;
          }
          ExprPtr inner = ParseExpr();
          ExpectSymbol(")");
          return inner;
        }
        Fail("Incorrect syntax near " + Describe(t));
      }
      case TokenType::Identifier:
      case TokenType::Quoted:
        break;
    }
    if (t.type == TokenType::Identifier) {
      if (t.Is("NULL")) {
        Next();
        return Make(ExprKind::Null, p);
      }
      if (t.Is("CASE")) return ParseCase();
      if (t.Is("CAST") && Ahead(1).IsSymbol("(")) {
        Next();
        Next();
        auto e = Make(ExprKind::Cast, p);
        e->args.push_back(ParseExpr());
        Expect("AS");
        e->type_name = ParseTypeName();
        ExpectSymbol(")");
        return Finish(std::move(e));
      }
      if (t.Is("CONVERT") && Ahead(1).IsSymbol("(")) {
        Next();
        Next();
        auto e = Make(ExprKind::Cast, p);
        e->is_convert = true;
        e->type_name = ParseTypeName();
        ExpectSymbol(",");
        e->args.push_back(ParseExpr());
        if (AcceptSymbol(",")) e->args.push_back(ParseExpr());
        ExpectSymbol(")");
        return Finish(std::move(e));
      }
      if ((t.Is("CURRENT_TIMESTAMP")) && !Ahead(1).IsSymbol("(")) {
        Next();
        auto e = Make(ExprKind::Function, p);
        e->text = "GETDATE";
        return e;
      }
      if (IsReserved(t) && !(Ahead(1).IsSymbol("(") && (t.Is("LEFT") || t.Is("RIGHT")))) {
        Fail("Incorrect syntax near " + Describe(t));
      }
    }
    if (Ahead(1).IsSymbol("(") && t.type == TokenType::Identifier) return ParseFunction();
    // Column: [[schema.]table.]column, with blanks allowed around the dots.
    std::vector<std::string> parts;
    parts.push_back(Next().text);
    while (Cur().IsSymbol(".")) {
      Next();
      if (!IsName(Cur())) Fail("Expected a column name near " + Describe(Cur()));
      parts.push_back(Next().text);
    }
    auto e = Make(ExprKind::Column, p);
    e->text = parts.back();
    if (parts.size() >= 2) e->qualifier = parts[parts.size() - 2];
    return e;
  }

  ExprPtr ParseFunction() {
    auto e = Make(ExprKind::Function, Cur().pos);
    e->text = Upper(Next().text);
    ExpectSymbol("(");
    bool date_part_first = e->text == "DATEADD" || e->text == "DATEDIFF" || e->text == "DATEPART" ||
                           e->text == "DATENAME";
    if (date_part_first) {
      Pos dp = Cur().pos;
      if (Cur().type != TokenType::Identifier && Cur().type != TokenType::String) {
        Fail("Expected a date part near " + Describe(Cur()));
      }
      std::string canonical = CanonicalDatePart(Next().text);
      if (canonical.empty()) FailAt("Unknown date part in " + e->text, dp);
      auto part = Make(ExprKind::DatePart, dp);
      part->text = canonical;
      e->args.push_back(std::move(part));
      if (!Cur().IsSymbol(")")) ExpectSymbol(",");
    }
    if (Cur().IsSymbol("*") && e->text == "COUNT") {
      e->args.push_back(Make(ExprKind::Star, Next().pos));
    } else if (!Cur().IsSymbol(")")) {
      if (Accept("DISTINCT")) {
        e->distinct = true;
      } else {
        Accept("ALL");
      }
      do {
        e->args.push_back(ParseExpr());
      } while (AcceptSymbol(","));
    }
    ExpectSymbol(")");
    if (Cur().Is("OVER")) Fail("Window functions are not supported");
    return Finish(std::move(e));
  }

  ExprPtr ParseCase() {
    auto e = Make(ExprKind::Case, Next().pos);
    if (!Cur().Is("WHEN")) {
      e->has_operand = true;
      e->args.push_back(ParseExpr());
    }
    if (!Cur().Is("WHEN")) Fail("Expected WHEN near " + Describe(Cur()));
    while (Accept("WHEN")) {
      e->args.push_back(ParseExpr());
      Expect("THEN");
      e->args.push_back(ParseExpr());
    }
    if (Accept("ELSE")) {
      e->has_else = true;
      e->args.push_back(ParseExpr());
    }
    Expect("END");
    return Finish(std::move(e));
  }

  // ---- writes ----

  void ParseUpdate(Statement& st) {
    st.kind = Statement::Kind::Update;
    Next();
    st.table_pos = Cur().pos;
    st.table = ParseObjectName();
    Expect("SET");
    do {
      Assignment a;
      a.pos = Cur().pos;
      std::vector<std::string> parts{ExpectName("a column name")};
      while (AcceptSymbol(".")) parts.push_back(ExpectName("a column name"));
      a.column = parts.back();
      ExpectSymbol("=");
      a.value = ParseExpr();
      st.sets.push_back(std::move(a));
    } while (AcceptSymbol(","));
    if (Cur().Is("FROM")) Fail("UPDATE ... FROM is not supported");
    if (Accept("WHERE")) st.where = ParseExpr();
  }

  void ParseInsert(Statement& st) {
    st.kind = Statement::Kind::Insert;
    Next();
    Accept("INTO");
    st.table_pos = Cur().pos;
    st.table = ParseObjectName();
    if (AcceptSymbol("(")) {
      do {
        st.insert_columns.push_back(ExpectName("a column name"));
      } while (AcceptSymbol(","));
      ExpectSymbol(")");
    }
    if (Accept("VALUES")) {
      do {
        ExpectSymbol("(");
        std::vector<ExprPtr> row;
        do {
          row.push_back(ParseExpr());
        } while (AcceptSymbol(","));
        ExpectSymbol(")");
        st.insert_rows.push_back(std::move(row));
      } while (AcceptSymbol(","));
    } else if (Cur().Is("SELECT")) {
      st.query = ParseQuery();
    } else {
      Fail("Expected VALUES or SELECT near " + Describe(Cur()));
    }
  }

  void ParseDelete(Statement& st) {
    st.kind = Statement::Kind::Delete;
    Next();
    Accept("FROM");
    st.table_pos = Cur().pos;
    st.table = ParseObjectName();
    if (Cur().Is("FROM")) Fail("DELETE ... FROM a join is not supported");
    if (Accept("WHERE")) st.where = ParseExpr();
  }

  std::string_view text_;
  std::vector<Token> tokens_;
  size_t i_ = 0;
  int nesting_ = 0;
};

}  // namespace

Statement Parse(std::string_view text) { return Parser(text).Run(); }

}  // namespace orv::sql
