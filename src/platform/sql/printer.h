// What the engine printers share: the walk over a bound statement tree.
//
// The tree's shape is the same for every engine (statements, queries,
// rolled-up groups, joins, operators, functions); what differs is how a few
// constructs are spelled and which helpers the engine needs to keep SQL
// Server's meaning. The walk lives here once; each engine's printer
// (print_sqlite.cpp, print_postgres.cpp) overrides the hooks below. Not part
// of the layer's interface.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/sql/ast.h"

namespace orv::sql::print {

std::string Quote(const std::string& name);
std::string QuoteText(const std::string& text);
// Appends `text` between `mark`s, a `mark` inside doubled: Quote and
// QuoteText written straight into a statement being printed.
void AppendEnclosed(std::string& out, std::string_view text, char mark);

class Printer {
 public:
  virtual ~Printer() = default;
  std::string Run(const Statement& st);

 protected:
  // ---- hooks: one per construct whose spelling differs by engine ----

  // Binding strength of || (see Strength): the engines disagree on it.
  virtual int ConcatStrength() const = 0;
  // The alias a wrapping `SELECT * FROM (...)` gives its inner query.
  virtual std::string WrapAlias(const Select& inner) const = 0;
  // The whole query with its ORDER BY and TOP; the default prints the body,
  // then ORDER BY, then TOP.
  virtual void Query(const orv::sql::Query& q);
  virtual void OrderBy(const orv::sql::Query& q) = 0;
  // The left and right operands of a comparison under the server's text
  // collation (BoundOp::CompareText); the right one also for IN members,
  // BETWEEN bounds and CASE x WHEN values.
  virtual void CompareLeft(const Expr& e) = 0;
  virtual void CompareRight(const Expr& e) = 0;
  // An operand of <, >, <=, >= or BETWEEN on text, which order by the
  // dictionary order; by default the collated operand of CompareLeft or
  // CompareRight.
  virtual void OrderedText(const Expr& e, bool left) { left ? CompareLeft(e) : CompareRight(e); }
  // The condition of a WHERE clause; by default through Condition.
  virtual void WhereCondition(const Expr& e) { Condition(e); }
  // A select-list value. `collate` is set where the server's text semantics
  // must hold for the result column itself: under DISTINCT, in a compound
  // member, or in a query nested in another.
  virtual void OutputValue(const Expr& e, bool distinct, bool collate) = 0;
  // A column of a `*` expansion under DISTINCT, after its name is printed.
  virtual void DistinctStarColumn(const SelectItem::Output& o) {}
  virtual void GroupKey(const Expr& g) = 0;
  // True when GroupKey's form of `g` must also stand in for `g` in the
  // select list, HAVING and ORDER BY (the engine accepts only the grouped
  // form there).
  virtual bool KeyStandsInForExpression(const Expr& g) const { return false; }
  // A function of one argument through which a standing-in key is read, or
  // null to read it bare. An engine that would convert the key where an
  // operator or function takes it (and so hide the grouped expression from
  // its grouping check) reads it through a function that takes the key's
  // own type.
  virtual const char* StandInReader() const { return nullptr; }
  // A value whose text must come out whole (a CASE branch).
  virtual void ResultValue(const Expr& e) { Expression(e); }
  virtual void StringLiteral(const Expr& e) { AppendEnclosed(out_, e.text, '\''); }
  virtual void Concat(const Expr& e) = 0;
  virtual void Divide(const Expr& e) = 0;
  virtual void BitXor(const Expr& e) = 0;
  virtual void Like(const Expr& e) = 0;
  // An aggregate whose spelling differs (AVG of integers, MIN/MAX of text,
  // DISTINCT over text); false leaves it to the shared form.
  virtual bool EngineAggregate(const Expr& e) = 0;
  // A scalar function whose spelling differs; false leaves it to the shared
  // forms and the FunctionName mapping.
  virtual bool EngineFunction(const Expr& e) = 0;
  virtual const char* FunctionName(const std::string& tsql) const = 0;
  // `x` converted to the type `to`: CAST/CONVERT (with a CONVERT style,
  // blank padding for char(n), the day alone for date, a decimal scale or
  // -1) and the binder's implicit conversions.
  virtual void ToKind(const Expr& x, const ExprType& to, int style, bool pad, bool date_only, int scale) = 0;
  // True when the engine lacks RIGHT JOIN and it is printed as a LEFT JOIN
  // with its operands swapped.
  virtual bool SwapRightJoin() const = 0;
  virtual const char* NowCall() const = 0;
  virtual const char* AddDaysFunction() const = 0;
  virtual const char* DatePartFunction() const = 0;
  // One term of a WHERE or ON condition joined to the others by AND (the
  // whole condition when it is no AND): `siblings` are all its terms, for
  // hints that depend on them. By default the term as it reads.
  virtual void ConditionTerm(const Expr& term, const std::vector<const Expr*>& siblings) { Expression(term); }

  // While alive, expressions print as they read after the grouping of the
  // SELECT of `q`, for its ORDER BY: a grouping expression stands as the
  // engine's grouping key there, as in the select list and HAVING (see
  // KeyStandsInForExpression and StandInReader), so that the engine finds
  // it grouped.
  class GroupedOrder {
   public:
    GroupedOrder(Printer& printer, const orv::sql::Query& q);
    ~GroupedOrder() { printer_.replaced_ = outer_; }
    GroupedOrder(const GroupedOrder&) = delete;
    GroupedOrder& operator=(const GroupedOrder&) = delete;

   private:
    Printer& printer_;
    const std::map<std::string, std::string>* outer_;
    std::map<std::string, std::string> replaced_;
  };

  // ---- the shared walk ----

  // The query without its final ORDER BY and outer TOP.
  void QueryBody(const orv::sql::Query& q);
  void Limit(const Select& s);
  void Rollup(const Select& s);
  void SelectBody(const Select& s, bool collate_outputs, size_t group_count, bool require_rows);
  // What the select list and HAVING of `s` read in place of its grouping
  // expressions, keyed by their printed text: the first `group_count` are
  // grouped on (their GroupKey form where it stands in for them), the rest
  // are rolled up and read NULL. `keys` receives the GroupKey forms of the
  // grouped ones, in order, as the GROUP BY clause spells them (a standing-in
  // key is read through StandInReader only where it replaces).
  std::map<std::string, std::string> GroupReplacements(const Select& s, size_t group_count,
                                                       std::vector<std::string>* keys);
  void Source(const TableSource& src, bool right_operand);
  void Where(const Expr* where);
  // A WHERE or ON condition, its AND terms each through ConditionTerm.
  void Condition(const Expr& e);
  // Prints `e` so that a postfix or binary operator may follow it.
  void Operand(const Expr& e);
  void List(const std::vector<ExprPtr>& args, size_t from);
  void Call(const char* name, const Expr& e, size_t from = 0);
  void ArithmeticOperand(const Expr& parent, const Expr& child, bool right);
  void Expression(const Expr& e);
  // "alias"."column", written in place.
  void QuotedColumn(const std::string& alias, const std::string& column) {
    AppendEnclosed(out_, alias, '"');
    out_ += '.';
    AppendEnclosed(out_, column, '"');
  }
  void Logical(const Expr& e, size_t from, size_t to);
  void Number(const std::string& text);
  void Binary(const Expr& e);
  void Function(const Expr& e);
  void Case(const Expr& e);
  void Cast(const Expr& e);
  // Binding strength of an arithmetic node (higher binds tighter); 0 for
  // comparisons and anything that must always be parenthesised as an operand.
  int Strength(const Expr& e) const;
  // The text `e` prints as, without touching the output.
  std::string Printed(const Expr& e);
  // The text the printer gives `e` through `print`, without touching the output.
  template <typename F>
  std::string Captured(F print) {
    std::string saved = std::move(out_);
    out_.clear();
    print();
    std::string text = std::move(out_);
    out_ = std::move(saved);
    return text;
  }
  // Number of result columns of a SELECT (a star counts its columns).
  static size_t OutputCount(const Select& s);
  // Positions (1-based) of the result columns that break ties of ORDER BY:
  // every number, money and date column not already a key. Rows that tie on
  // the keys come out in one order on every engine (SQLite keeps the scan
  // order, PostgreSQL none), so reports print the same on both. Text
  // columns are left out (the engines' collations would order them apart),
  // and so is WITH ROLLUP, whose total rows have an order of their own. An
  // ORDER BY the binder supplied is a key of the rows and leaves no ties.
  static std::vector<int> TieBreakPositions(const orv::sql::Query& q);
  // The keys that break what the written keys and the result columns at
  // `positions` (TieBreakPositions) leave tied: Query::key_ties less the
  // key columns among those result columns.
  static std::vector<const OrderItem*> TieBreakKeys(const orv::sql::Query& q, const std::vector<int>& positions);
  // The table alias and column a result column reads, where it is one
  // (empty strings otherwise).
  static std::pair<std::string, std::string> SourceColumn(const SelectItem& item, const SelectItem::Output& out);
  // True when the printed form of `e` is a single term.
  static bool IsTerm(const Expr& e);

  std::string out_;
  // Inside a select list and HAVING: expressions printed as other text (a
  // rolled-up grouping column reads NULL; an engine may print a grouping key
  // in a collated form). Keyed by the expression's own printed text.
  const std::map<std::string, std::string>* replaced_ = nullptr;
  // The SELECT whose FROM and WHERE are being printed (for ConditionTerm);
  // nullptr outside one.
  const Select* condition_select_ = nullptr;
  int aggregate_depth_ = 0;
  int query_depth_ = 0;
  // Levels of Expression, QueryBody and Source under way, and the
  // statement their message quotes.
  int depth_ = 0;
  std::string_view statement_;
};

}  // namespace orv::sql::print
