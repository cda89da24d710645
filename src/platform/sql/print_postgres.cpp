#include "platform/sql/print_postgres.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/sql/decorrelate.h"
#include "platform/sql/postgres_traits.h"
#include "platform/sql/printer.h"

namespace orv::sql {

namespace {

using print::Quote;
using print::QuoteText;
using T = PostgresTraits;

bool IsIntegral(ValueKind k) { return k == ValueKind::Integer || k == ValueKind::Boolean; }

// A text column of a table or a derived table: bpchar under orv_ci
// already (derived tables get it from the casts of OutputValue), so it
// compares, groups and deduplicates as on the server with nothing added.
bool IsCollatedColumn(const Expr& e) { return e.kind == ExprKind::Column && e.type.kind == ValueKind::Text; }

// The columns of table `alias` that the conjuncts of `on` equate to a
// value of the tables `before`.
void EquatedColumns(const Expr& on, const std::string& alias, const std::set<std::string>& before,
                    std::set<std::string>& out) {
  if (on.kind == ExprKind::Logical && on.text == "AND") {
    for (const ExprPtr& a : on.args) EquatedColumns(*a, alias, before, out);
    return;
  }
  if (on.kind != ExprKind::Binary || on.text != "=" || on.args.size() != 2 ||
      (on.op != BoundOp::CompareText && on.op != BoundOp::CompareOther))
    return;
  for (int side = 0; side < 2; ++side) {
    const Expr& column = *on.args[static_cast<size_t>(side)];
    const Expr& value = *on.args[static_cast<size_t>(1 - side)];
    if (column.kind == ExprKind::Column && column.table_alias == alias && !HasQuery(value) &&
        !NamesOuter(value, before))
      out.insert(column.column_name);
  }
}

// The tables of a join that add at most one row to each row of the tables
// before them: joined (inner or left) by their whole primary key, as the
// implied order lists it (`key` by table), to values of those tables.
void DeterminedTables(const TableSource& src, const std::multimap<std::string, std::string>& key,
                      std::set<std::string>& out) {
  if (src.kind != TableSource::Kind::Join) return;
  DeterminedTables(*src.left, key, out);
  DeterminedTables(*src.right, key, out);
  const TableSource& right = *src.right;
  if ((src.join != JoinType::Inner && src.join != JoinType::Left) || !src.on ||
      right.kind != TableSource::Kind::Table)
    return;
  auto [first, last] = key.equal_range(right.engine_alias);
  if (first == last) return;
  std::set<std::string> before, equated;
  Aliases(*src.left, before);
  EquatedColumns(*src.on, right.engine_alias, before, equated);
  for (auto k = first; k != last; ++k)
    if (equated.count(k->second) == 0) return;
  out.insert(right.engine_alias);
}

// PostgreSQL's spelling of the constructs that differ by engine.
//
// Text: table columns compare natively; any other text is cast to bpchar
// under orv_ci where it is compared, grouped or deduplicated, and a bpchar
// value becomes text through orv_text where its trailing blanks must stay
// (concatenation, string functions). ORDER BY orders text by orv_key in
// the "C" collation, the order the SQLite path gives.
// Types: PostgreSQL converts less than SQL Server, so every conversion the
// binder decided is printed as an explicit cast or orv_* call.
class PostgresPrinter : public print::Printer {
 protected:
  // || is one of the "other" operators, weaker than + and -, as strong as
  // & | #.
  int ConcatStrength() const override { return 1; }

  // PostgreSQL 15 requires an alias on a derived table.
  std::string WrapAlias(const Select&) const override { return " AS \"q\""; }

  // After DISTINCT, UNION or WITH ROLLUP, PostgreSQL orders only by result
  // columns, not by an expression over them such as a text sort key: such a
  // query is wrapped and ordered from outside, by its result columns.
  void Query(const orv::sql::Query& q) override {
    const Select& first = *q.selects[0];
    bool compound = q.selects.size() > 1;
    std::vector<int> positions;
    bool wrap = !q.order_by.empty() && (compound || first.rollup || first.distinct);
    if (wrap) {
      bool text_key = false;
      for (const OrderItem& item : q.order_by) {
        int position = item.output_position > 0 ? item.output_position : PositionInSelectList(first, *item.expr);
        text_key = text_key || item.expr->type.kind == ValueKind::Text;
        if (position == 0) wrap = false;  // not in the select list: the engine reports it
        positions.push_back(position);
      }
      wrap = wrap && text_key;
    }
    if (!wrap) {
      QueryBody(q);
      OrderBy(q);
      if (!compound) Limit(first);
      return;
    }
    std::vector<std::string> names = ResultNames(first);
    out_ += "SELECT * FROM (";
    QueryBody(q);
    out_ += ") AS \"q\"(";
    for (size_t i = 0; i < names.size(); ++i) out_ += (i ? ", " : "") + Quote(names[i]);
    out_ += ") ORDER BY ";
    for (size_t i = 0; i < q.order_by.size(); ++i) {
      const OrderItem& item = q.order_by[i];
      Key("\"q\"." + Quote(names[static_cast<size_t>(positions[i] - 1)]), item.expr->type.kind, item.descending,
          i == 0);
    }
    for (int position : TieBreakPositions(q))
      Key("\"q\"." + Quote(names[static_cast<size_t>(position - 1)]), ValueKind::Integer, false, false);
    if (!compound) Limit(first);
  }

  void OrderBy(const orv::sql::Query& q) override {
    if (q.order_by.empty()) return;
    GroupedOrder grouped(*this, q);
    out_ += " ORDER BY ";
    const Select& first = *q.selects[0];
    bool single = q.selects.size() == 1 && !first.rollup;
    const std::set<std::string> determined =
        q.implied_order ? DeterminedByKey(q, q.order_by) : std::set<std::string>();
    bool opened = false;
    for (size_t i = 0; i < q.order_by.size(); ++i) {
      const OrderItem& item = q.order_by[i];
      if (item.expr->kind == ExprKind::Column && determined.count(item.expr->table_alias) > 0) continue;
      bool text = item.expr->type.kind == ValueKind::Text;
      std::string key;
      if (item.output_position > 0) {
        // A sort key needs the expression; a position serves otherwise.
        key = text && single ? SelectListText(first, item.output_position) : std::to_string(item.output_position);
      } else {
        key = Captured([&] { Operand(*item.expr); });
      }
      Key(key, item.expr->type.kind, item.descending, !opened);
      opened = true;
    }
    // Tie-breakers go up with NULLs first, as every other key and as SQLite
    // orders them: a plan not yet marked complete (NULL) before one marked
    // not complete (0). They are never text.
    const std::vector<int> positions = TieBreakPositions(q);
    for (int position : positions) Key(std::to_string(position), ValueKind::Integer, false, false);
    const std::set<std::string> tie_determined = DeterminedByKey(q, q.key_ties);
    for (const OrderItem* item : TieBreakKeys(q, positions)) {
      if (tie_determined.count(item->expr->table_alias) > 0) continue;
      Key(Captured([&] { Operand(*item->expr); }), item->expr->type.kind, false, false);
    }
  }

  // The tables whose keys a key order (the implied one, or the keys that
  // break a written order's ties) may leave out. The order of
  // a join by the key of each table in turn is already total once the
  // tables before one joined by its whole key are ordered: it adds at most
  // one row to each of theirs (its key is unique under the comparison the
  // join makes, orv_ci for text, as on the server). Leaving its key out
  // spares the server a sort key a row: billing by client joins 296,000
  // invoice lines to their fee codes, and the fee code's orv_key cost 0.33 s
  // of the statement's 0.74 s.
  static std::set<std::string> DeterminedByKey(const orv::sql::Query& q, const std::vector<OrderItem>& keys) {
    std::set<std::string> determined;
    const Select& s = *q.selects[0];
    if (keys.empty() || q.selects.size() != 1 || !s.group_by.empty() || s.distinct) return determined;
    std::multimap<std::string, std::string> key;
    for (const OrderItem& item : keys) {
      if (item.expr->kind != ExprKind::Column) return determined;
      key.emplace(item.expr->table_alias, item.expr->column_name);
    }
    for (const auto& src : s.from) DeterminedTables(*src, key, determined);
    return determined;
  }

  void CompareLeft(const Expr& e) override {
    if (IsCollatedColumn(e)) {
      Operand(e);
      return;
    }
    out_ += "CAST(";
    TextValue(e);
    out_ += T::kCollated;
  }

  // ICU's order under orv_ci is not the dictionary order the other engine
  // and the recordsets use (punctuation, accents): <, > and BETWEEN compare
  // sort keys instead, which equality does not need.
  // In parentheses: the server's grammar takes no COLLATE between BETWEEN
  // and its AND.
  void OrderedText(const Expr& e, bool) override {
    out_ += "(";
    out_ += T::kSortKey;
    out_ += "(";
    Expression(e);
    out_ += ")";
    out_ += T::kSortCollation;
    out_ += ")";
  }

  // Ordered comparisons of one text column with literals, under AND and
  // OR: "(Code >= '27000' AND Code <= '29999') OR (Code >= '62000' AND ...)".
  // Printed one by one, each compares sort keys: the server computes the
  // column's key once a comparison, and, the literals coming as parameters
  // of a generic plan, each literal's key once a row as well: eight keys a
  // row for two ranges, most of the time of a day's hygiene production.
  // Instead the column's key is computed once a row and tested against the
  // set of keys the comparisons admit, a multirange of key ranges built
  // once a run by an uncorrelated subquery: AND is its intersection, OR its
  // union. The truth value is the same: for a column that is not NULL each
  // comparison is true or false, a set membership; for NULL every
  // comparison is NULL, and so is the membership test. The comparisons of
  // one column among the operands of an AND or an OR are gathered into one
  // test, printed where the first of them stood (the operands' order does
  // not change what AND and OR give). Only in WHERE, where a subquery may
  // stand anywhere in the condition.
  void WhereCondition(const Expr& e) override {
    if (!HoldsKeyTest(e)) {
      Expression(e);
      return;
    }
    if (e.kind != ExprKind::Logical) {
      KeyTest({&e}, "AND");
      return;
    }
    const std::vector<KeyGroup> groups = KeyGroups(e);
    bool first = true;
    for (const ExprPtr& a : e.args) {
      const KeyGroup* group = nullptr;
      for (const KeyGroup& g : groups)
        if (std::find(g.members.begin(), g.members.end(), a.get()) != g.members.end()) group = &g;
      if (group && group->members.front() != a.get()) continue;
      if (!first) out_ += " " + e.text + " ";
      first = false;
      if (group) {
        KeyTest(group->members, e.text);
      } else if (a->kind == ExprKind::Logical) {
        out_ += "(";
        WhereCondition(*a);
        out_ += ")";
      } else {
        WhereCondition(*a);
      }
    }
  }

  // Operands of one AND or OR that compare one column, with two or more
  // comparisons among them.
  struct KeyGroup {
    const Expr* column = nullptr;
    std::vector<const Expr*> members;
    int comparisons = 0;
  };
  static std::vector<KeyGroup> KeyGroups(const Expr& e) {
    std::vector<KeyGroup> groups;
    for (const ExprPtr& a : e.args) {
      const Expr* column = nullptr;
      int comparisons = 0;
      if (!KeyRangeCondition(*a, column, comparisons)) continue;
      auto same = std::find_if(groups.begin(), groups.end(), [&](const KeyGroup& g) {
        return g.column->table_alias == column->table_alias && g.column->column_name == column->column_name;
      });
      if (same == groups.end()) same = groups.insert(groups.end(), KeyGroup{column, {}, 0});
      same->members.push_back(a.get());
      same->comparisons += comparisons;
    }
    groups.erase(std::remove_if(groups.begin(), groups.end(), [](const KeyGroup& g) { return g.comparisons < 2; }),
                 groups.end());
    return groups;
  }

  // Whether WhereCondition prints a key test somewhere in `e`. Not in a
  // chain of more than 32 operands, which the printer balances into halves
  // (Printer::Logical) as it always has.
  static bool HoldsKeyTest(const Expr& e) {
    if (e.kind != ExprKind::Logical) {
      const Expr* column = nullptr;
      int comparisons = 0;
      return KeyRangeCondition(e, column, comparisons) && comparisons >= 2;
    }
    if (e.args.size() > 32) return false;
    if (!KeyGroups(e).empty()) return true;
    for (const ExprPtr& a : e.args)
      if (a->kind == ExprKind::Logical && HoldsKeyTest(*a)) return true;
    return false;
  }

  // "(key(column) <@ (SELECT keys))" for `members`, comparisons of one
  // column joined by `op`.
  void KeyTest(const std::vector<const Expr*>& members, const std::string& op) {
    const Expr* column = nullptr;
    int comparisons = 0;
    KeyRangeCondition(*members.front(), column, comparisons);
    out_ += "(";
    out_ += T::kSortKey;
    out_ += "(";
    Expression(*column);
    out_ += ")";
    out_ += T::kSortCollation;
    out_ += " <@ (SELECT ";
    if (members.size() > 1) out_ += "(";
    for (size_t i = 0; i < members.size(); ++i) {
      if (i > 0) out_ += op == "AND" ? " * " : " + ";
      KeyRanges(*members[i]);
    }
    if (members.size() > 1) out_ += ")";
    out_ += "))";
  }

  // Whether `e` is made of AND, OR and ordered comparisons (BETWEEN
  // counting two) of one text column, `column`, with text literals.
  static bool KeyRangeCondition(const Expr& e, const Expr*& column, int& comparisons) {
    const Expr* compared = nullptr;
    if (e.kind == ExprKind::Logical) {
      for (const ExprPtr& a : e.args)
        if (!KeyRangeCondition(*a, column, comparisons)) return false;
      return true;
    }
    if (e.kind == ExprKind::Binary && e.op == BoundOp::CompareText && e.text != "=" && e.text != "<>" &&
        e.text != "!=") {
      const bool left = IsCollatedColumn(*e.args[0]);
      if (!(left ? IsTextLiteral(*e.args[1]) : IsCollatedColumn(*e.args[1]) && IsTextLiteral(*e.args[0])))
        return false;
      compared = e.args[left ? 0 : 1].get();
      comparisons += 1;
    } else if (e.kind == ExprKind::Between && e.op == BoundOp::CompareText) {
      if (!IsCollatedColumn(*e.args[0]) || !IsTextLiteral(*e.args[1]) || !IsTextLiteral(*e.args[2])) return false;
      compared = e.args[0].get();
      comparisons += 2;
    } else {
      return false;
    }
    if (!column) column = compared;
    return column->table_alias == compared->table_alias && column->column_name == compared->column_name;
  }

  static bool IsTextLiteral(const Expr& e) { return e.kind == ExprKind::String && e.type.kind == ValueKind::Text; }

  // The keys a KeyRangeCondition admits, as an orv_keyranges value. A bound
  // is a literal's key; NULL leaves a range open on that side.
  void KeyRanges(const Expr& e) {
    auto bound = [&](const Expr* literal) {
      if (!literal) {
        out_ += "NULL";
        return;
      }
      out_ += T::kSortKey;
      out_ += "(";
      Expression(*literal);
      out_ += ")";
    };
    auto range = [&](const Expr* low, const Expr* high, const char* bounds) {
      out_ += "orvenda.orv_keyranges(orvenda.orv_keyrange(";
      bound(low);
      out_ += ", ";
      bound(high);
      out_ += ", '";
      out_ += bounds;
      out_ += "'))";
    };
    if (e.kind == ExprKind::Logical) {
      out_ += "(";
      for (size_t i = 0; i < e.args.size(); ++i) {
        if (i > 0) out_ += e.text == "AND" ? " * " : " + ";
        KeyRanges(*e.args[i]);
      }
      out_ += ")";
      return;
    }
    if (e.kind == ExprKind::Between) {
      // NOT BETWEEN a AND b: below a or above b, which is everything when
      // a is above b, as no key lies between them then.
      out_ += "(";
      if (e.negated) {
        range(nullptr, e.args[1].get(), "()");
        out_ += " + ";
        range(e.args[2].get(), nullptr, "()");
      } else {
        range(e.args[1].get(), nullptr, "[)");
        out_ += " * ";
        range(nullptr, e.args[2].get(), "(]");
      }
      out_ += ")";
      return;
    }
    // The column's side of the comparison: "'27000' <= Code" is
    // "Code >= '27000'".
    const bool left = IsCollatedColumn(*e.args[0]);
    const Expr* literal = e.args[left ? 1 : 0].get();
    std::string op = e.text == "!<" ? ">=" : e.text == "!>" ? "<=" : e.text;
    if (!left) op = op[0] == '<' ? ">" + op.substr(1) : "<" + op.substr(1);
    if (op == ">=") range(literal, nullptr, "[)");
    if (op == ">") range(literal, nullptr, "()");
    if (op == "<=") range(nullptr, literal, "(]");
    if (op == "<") range(nullptr, literal, "()");
  }

  // Against a collated left operand, bpchar suffices; a literal takes the
  // left operand's type by itself.
  void CompareRight(const Expr& e) override {
    if (IsCollatedColumn(e) || e.kind == ExprKind::String || e.kind == ExprKind::Null) {
      Operand(e);
      return;
    }
    out_ += "CAST(";
    TextValue(e);
    out_ += " AS bpchar)";
  }

  void OutputValue(const Expr& e, bool distinct, bool collate) override {
    if (e.type.kind == ValueKind::Text && (distinct || collate) && e.kind != ExprKind::Column) {
      out_ += "CAST(";
      TextValue(e);
      out_ += T::kCollated;
    } else {
      Expression(e);
    }
  }

  void GroupKey(const Expr& g) override {
    if (KeyStandsInForExpression(g)) {
      out_ += "CAST(";
      TextValue(g);
      out_ += T::kCollated;
    } else {
      Expression(g);
    }
  }

  bool KeyStandsInForExpression(const Expr& g) const override {
    return g.type.kind == ValueKind::Text && g.kind != ExprKind::Column;
  }

  // The key is collated bpchar. Where a text function or operator takes
  // it, PostgreSQL would convert it to text beneath its COLLATE, and the
  // converted expression is no longer the grouped one; orv_text takes
  // bpchar as it is (and keeps its trailing blanks).
  const char* StandInReader() const override { return T::kText; }

  void ResultValue(const Expr& e) override { TextValue(e); }

  // A date literal (normalised by the binder) is typed, so that it is a
  // timestamp wherever it stands.
  void StringLiteral(const Expr& e) override {
    if (e.type.kind == ValueKind::Date) out_ += "TIMESTAMP ";
    out_ += QuoteText(e.text);
  }

  void Concat(const Expr& e) override {
    ConcatOperand(e, *e.args[0], false);
    out_ += " || ";
    ConcatOperand(e, *e.args[1], true);
  }

  // Money and decimals divide exactly; the server's money and decimal
  // division keeps at least four decimals, which numeric's does too.
  void Divide(const Expr& e) override {
    const Expr& l = *e.args[0];
    const Expr& r = *e.args[1];
    bool real = l.type.kind == ValueKind::Float || r.type.kind == ValueKind::Float;
    out_ += "CAST(";
    Expression(l);
    out_ += real ? " AS double precision) / " : " AS numeric) / ";
    ArithmeticOperand(e, r, true);
  }

  void BitXor(const Expr& e) override {
    ArithmeticOperand(e, *e.args[0], false);
    out_ += " # ";
    ArithmeticOperand(e, *e.args[1], true);
  }

  // PostgreSQL refuses LIKE under a nondeterministic collation; orv_like
  // matches a regular expression made from the T-SQL pattern instead.
  void Like(const Expr& e) override {
    if (e.negated) out_ += "NOT ";
    Call(T::kLike, e);
  }

  bool EngineAggregate(const Expr& e) override {
    const std::string& n = e.text;
    const Expr& arg = *e.args[0];
    auto call = [&](const std::string& head, const std::string& tail, bool text_value) {
      out_ += head;
      if (e.distinct) out_ += "DISTINCT ";
      if (text_value) {
        TextValue(arg);
      } else {
        Expression(arg);
      }
      out_ += tail;
    };
    if (n == "AVG" && IsIntegral(arg.type.kind)) {
      // AVG of integers is an integer on the server, truncated.
      call("CAST(trunc(AVG(", ")) AS bigint)", false);
    } else if (n == "SUM" && IsIntegral(arg.type.kind)) {
      // SUM of bigint is numeric here; an integer there.
      call("CAST(SUM(", ") AS bigint)", false);
    } else if ((n == "MIN" || n == "MAX") && arg.type.kind == ValueKind::Text) {
      call(std::string(n == "MIN" ? T::kMin : T::kMax) + "(", ")", true);
    } else if (e.distinct && arg.type.kind == ValueKind::Text && arg.kind != ExprKind::Column) {
      out_ += n == "COUNT_BIG" ? "COUNT" : n;
      out_ += "(DISTINCT CAST(";
      TextValue(arg);
      out_ += T::kCollated;
      out_ += ")";
    } else {
      return false;
    }
    return true;
  }

  bool EngineFunction(const Expr& e) override {
    const std::string& n = e.text;
    const auto& a = e.args;
    if (n == "LEFT" || n == "SUBSTRING") {
      out_ += "substr(";
      TextValue(*a[0]);
      out_ += ", ";
      if (n == "LEFT") {
        out_ += "1";
      } else {
        IntArg(*a[1]);
      }
      out_ += ", ";
      IntArg(*a.back());
      out_ += ")";
    } else if (n == "DATALENGTH") {
      // Bytes of a blob; of text, one byte a character as in the server's
      // single-byte Latin code page, trailing blanks counted.
      if (a[0]->type.kind == ValueKind::Blob) {
        out_ += "octet_length(";
        Expression(*a[0]);
      } else {
        out_ += "length(";
        TextValue(*a[0]);
      }
      out_ += ")";
    } else if (n == "LEN") {
      // LEN leaves out trailing blanks.
      out_ += "length(rtrim(";
      Expression(*a[0]);
      out_ += ", ' '))";
    } else if (n == "CHAR") {
      out_ += "chr(";
      IntArg(*a[0]);
      out_ += ")";
    } else if (n == "POWER" || n == "SQRT") {
      out_ += n == "POWER" ? "power(" : "sqrt(";
      for (size_t i = 0; i < a.size(); ++i) {
        out_ += i ? ", CAST(" : "CAST(";
        Expression(*a[i]);
        out_ += " AS double precision)";
      }
      out_ += ")";
    } else if (n == "ISNUMERIC" || n == "ISDATE") {
      out_ += n == "ISNUMERIC" ? "orvenda.orv_isnumeric(" : "orvenda.orv_isdate(";
      AsText(*a[0]);
      out_ += ")";
    } else if (n == "NULLIF" && e.op == BoundOp::CompareText && e.type.kind == ValueKind::Text) {
      // The collated comparison leaves the first value as bpchar, which
      // would lose its trailing blanks wherever text is taken from it.
      out_ += T::kText;
      out_ += "(NULLIF(";
      CompareLeft(*a[0]);
      out_ += ", ";
      CompareRight(*a[1]);
      out_ += "))";
    } else if (const char* mapped = n == "COALESCE" ? "COALESCE" : T::FunctionName(n)) {
      // COALESCE of a bpchar value would be bpchar too: its arguments are
      // read as text, as ISNULL's are.
      out_ += mapped;
      out_ += "(";
      for (size_t i = 0; i < a.size(); ++i) {
        if (i) out_ += ", ";
        TextValue(*a[i]);
      }
      out_ += ")";
    } else {
      return false;
    }
    return true;
  }

  const char* FunctionName(const std::string& tsql) const override { return T::FunctionName(tsql); }
  bool SwapRightJoin() const override { return false; }
  const char* NowCall() const override { return T::kNow; }
  const char* AddDaysFunction() const override { return T::kAddDays; }
  const char* DatePartFunction() const override { return T::kDatePart; }


 private:
  // ORDER BY key: text by its sort key; NULLs first going up and last
  // going down, as on the server.
  void Key(const std::string& expr, ValueKind kind, bool descending, bool first) {
    if (!first) out_ += ", ";
    if (kind == ValueKind::Text) {
      out_ += std::string(T::kSortKey) + "(" + expr + ")" + T::kSortCollation;
    } else {
      out_ += expr;
    }
    out_ += descending ? " DESC NULLS LAST" : " NULLS FIRST";
  }

  // The printed expression of result column `position` (1-based).
  std::string SelectListText(const Select& s, int position) {
    int p = 0;
    for (const SelectItem& item : s.items) {
      for (const auto& o : item.outputs) {
        if (++p != position) continue;
        if (item.expr->kind == ExprKind::Star) return Quote(o.table_alias) + "." + Quote(o.column_name);
        return Printed(*item.expr);
      }
    }
    return std::to_string(position);
  }

  // 1-based position of the select-list item printed as `e` is; 0 if none.
  int PositionInSelectList(const Select& s, const Expr& e) {
    std::string text = Printed(e);
    int count = static_cast<int>(OutputCount(s));
    for (int p = 1; p <= count; ++p) {
      if (SelectListText(s, p) == text) return p;
    }
    return 0;
  }

  // Result column names for a wrapping alias list: the names, made unique.
  static std::vector<std::string> ResultNames(const Select& s) {
    std::vector<std::string> names;
    for (const SelectItem& item : s.items) {
      for (const auto& o : item.outputs) {
        std::string name = o.name;
        for (const std::string& seen : names) {
          if (seen == name) name.clear();
        }
        names.push_back(name.empty() ? "c" + std::to_string(names.size() + 1) : name);
      }
    }
    return names;
  }

  // `e` as text keeping its trailing blanks: a bpchar column or a subquery
  // reading one goes through orv_text.
  void TextValue(const Expr& e) {
    if (e.type.kind == ValueKind::Text && (e.kind == ExprKind::Column || e.kind == ExprKind::Subquery)) {
      out_ += T::kText;
      out_ += "(";
      Expression(e);
      out_ += ")";
    } else {
      Expression(e);
    }
  }

  void ConcatOperand(const Expr& parent, const Expr& child, bool right) {
    if (child.kind == ExprKind::Column || child.kind == ExprKind::Subquery) {
      TextValue(child);
    } else {
      ArithmeticOperand(parent, child, right);
    }
  }

  // An integer argument of a built-in that takes int4.
  void IntArg(const Expr& e) {
    if (e.kind == ExprKind::Number) {
      Number(e.text);
      return;
    }
    out_ += "CAST(";
    Expression(e);
    out_ += " AS integer)";
  }

  void AsText(const Expr& e) {
    if (e.type.kind == ValueKind::Text) {
      TextValue(e);
      return;
    }
    out_ += "CAST(";
    Expression(e);
    out_ += " AS text)";
  }

  // Text of a value as CAST(x AS varchar) gives it on the server.
  void TextOf(const Expr& x, int style) {
    switch (x.type.kind) {
      case ValueKind::Text:
      case ValueKind::Unknown:
        TextValue(x);
        return;
      case ValueKind::Money:
        out_ += T::kMoneyText;
        break;
      case ValueKind::Float:
        out_ += T::kFloatText;
        break;
      case ValueKind::Date:
        out_ += T::kDateText;
        out_ += "(";
        Expression(x);
        out_ += ", " + std::to_string(style) + ")";
        return;
      default:
        AsText(x);
        return;
    }
    out_ += "(";
    Expression(x);
    out_ += ")";
  }

  // `x` as a number: text converts strictly (blanks around do not count).
  void Number(const Expr& x, const char* text_function) {
    if (x.type.kind == ValueKind::Text) {
      out_ += text_function;
      out_ += "(";
      Expression(x);
      out_ += ")";
    } else {
      Expression(x);
    }
  }
  using print::Printer::Number;

  void ToKind(const Expr& x, const ExprType& to, int style, bool pad, bool date_only, int scale) override {
    ValueKind from = x.type.kind;
    switch (to.kind) {
      case ValueKind::Text:
        if (to.length > 0) {
          // char(n) is padded with blanks to n; both are cut to n.
          out_ += pad ? "rpad(" : "substr(";
          TextOf(x, style);
          out_ += (pad ? ", " : ", 1, ") + std::to_string(to.length) + ")";
        } else {
          TextOf(x, style);
        }
        return;
      case ValueKind::Integer:
        if (from == ValueKind::Text) {
          Number(x, T::kTextToInt);
          return;
        }
        out_ += "CAST(";
        if (from == ValueKind::Money) {
          // Money converts to int by rounding, the others truncate.
          out_ += "round(";
          Expression(x);
          out_ += ")";
        } else if (from == ValueKind::Float || from == ValueKind::Decimal) {
          out_ += "trunc(";
          Expression(x);
          out_ += ")";
        } else {
          Expression(x);
        }
        out_ += " AS bigint)";
        return;
      case ValueKind::Boolean:
        out_ += "CASE WHEN ";
        Number(x, T::kTextToInt);
        out_ += " IS NULL THEN NULL WHEN ";
        Number(x, T::kTextToInt);
        out_ += " <> 0 THEN 1 ELSE 0 END";
        return;
      case ValueKind::Money:
        out_ += "CAST(";
        Number(x, T::kTextToNumeric);
        out_ += " AS numeric(19, 4))";
        return;
      case ValueKind::Decimal:
        if (scale >= 0) {
          out_ += "round(CAST(";
          Number(x, T::kTextToNumeric);
          out_ += " AS numeric), " + std::to_string(scale) + ")";
        } else {
          out_ += "CAST(";
          Number(x, T::kTextToNumeric);
          out_ += " AS numeric)";
        }
        return;
      case ValueKind::Float:
        if (from == ValueKind::Text) {
          Number(x, T::kTextToFloat);
        } else {
          out_ += "CAST(";
          Expression(x);
          out_ += " AS double precision)";
        }
        return;
      case ValueKind::Date:
        if (date_only) out_ += "date_trunc('day', ";
        if (from == ValueKind::Date) {
          Expression(x);
        } else if (from == ValueKind::Text) {
          out_ += T::kToDate;
          out_ += "(";
          TextValue(x);
          out_ += ")";
        } else if (from == ValueKind::Unknown) {
          out_ += "CAST(";
          Expression(x);
          out_ += " AS timestamp)";
        } else {
          out_ += T::kToDate;
          out_ += "(CAST(";
          Expression(x);
          out_ += " AS double precision))";
        }
        if (date_only) out_ += ")";
        return;
      default:
        Expression(x);
        return;
    }
  }
};

}  // namespace

std::string PrintPostgres(const Statement& st) { return PostgresPrinter().Run(st); }

}  // namespace orv::sql
