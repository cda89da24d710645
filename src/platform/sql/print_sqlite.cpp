#include "platform/sql/print_sqlite.h"

#include "platform/sql/printer.h"
#include "platform/sql/sqlite_traits.h"

namespace orv::sql {

namespace {

using print::Quote;
using print::QuoteText;

// True when `e` reads no column and no query: a literal, GETDATE() or a
// conversion or calculation of those.
bool IsConstant(const Expr& e) {
  switch (e.kind) {
    case ExprKind::Column:
    case ExprKind::Star:
    case ExprKind::Subquery:
    case ExprKind::Exists:
    case ExprKind::InQuery:
      return false;
    default:
      break;
  }
  for (const auto& a : e.args)
    if (!IsConstant(*a)) return false;
  return true;
}

bool IsDateColumn(const Expr& e) { return e.kind == ExprKind::Column && e.type.kind == ValueKind::Date; }

bool SameColumn(const Expr& a, const Expr& b) {
  return a.table_alias == b.table_alias && a.column_name == b.column_name;
}

// The date column `term` bounds from below (lower) or above (!lower)
// against a constant, or nullptr.
const Expr* BoundedDate(const Expr& term, bool lower) {
  if (term.kind == ExprKind::Between && !term.negated && IsDateColumn(*term.args[0]) &&
      IsConstant(*term.args[1]) && IsConstant(*term.args[2])) {
    return term.args[0].get();
  }
  if (term.kind != ExprKind::Binary || term.op != BoundOp::CompareOther) return nullptr;
  const std::string& op = term.text;
  bool below = op == "<" || op == "<=" || op == "!>";   // column below the constant
  bool above = op == ">" || op == ">=" || op == "!<";
  if (!below && !above) return nullptr;
  const Expr& l = *term.args[0];
  const Expr& r = *term.args[1];
  if (IsDateColumn(l) && IsConstant(r)) return (lower ? above : below) ? &l : nullptr;
  if (IsDateColumn(r) && IsConstant(l)) return (lower ? below : above) ? &r : nullptr;
  return nullptr;
}

// SQLite's spelling of the constructs that differ by engine. Text keeps
// SQL Server's meaning through the collation orv_ci, applied wherever text
// is compared, grouped or ordered.
class SqlitePrinter : public print::Printer {
 protected:
  // || binds tighter than * / % there.
  int ConcatStrength() const override { return 4; }

  std::string WrapAlias(const Select&) const override { return ""; }

  void OrderBy(const orv::sql::Query& q) override {
    if (q.order_by.empty()) return;
    out_ += " ORDER BY ";
    for (size_t i = 0; i < q.order_by.size(); ++i) {
      if (i) out_ += ", ";
      const OrderItem& item = q.order_by[i];
      if (item.output_position > 0) {
        out_ += std::to_string(item.output_position);
      } else {
        Operand(*item.expr);
      }
      if (item.expr->type.kind == ValueKind::Text) Collate();
      if (item.descending) out_ += " DESC";
    }
    const std::vector<int> positions = TieBreakPositions(q);
    for (int position : positions) out_ += ", " + std::to_string(position);
    for (const OrderItem* item : TieBreakKeys(q, positions)) {
      out_ += ", ";
      Operand(*item->expr);
      if (item->expr->type.kind == ValueKind::Text) Collate();
    }
  }

  void CompareLeft(const Expr& e) override { Collated(e); }
  void CompareRight(const Expr& e) override { Operand(e); }

  void OutputValue(const Expr& e, bool distinct, bool) override {
    if (distinct && e.type.kind == ValueKind::Text) {
      Collated(e);
    } else {
      Expression(e);
    }
  }

  void DistinctStarColumn(const SelectItem::Output& o) override {
    if (o.type.kind == ValueKind::Text) Collate();
  }

  void GroupKey(const Expr& g) override {
    if (g.type.kind == ValueKind::Text) {
      Collated(g);
    } else {
      Expression(g);
    }
  }

  void Concat(const Expr& e) override {
    ArithmeticOperand(e, *e.args[0], false);
    out_ += " || ";
    ArithmeticOperand(e, *e.args[1], true);
  }

  // Money and decimals may be stored as integers; divide as reals.
  void Divide(const Expr& e) override {
    const Expr& l = *e.args[0];
    if (l.type.kind == ValueKind::Float) {
      ArithmeticOperand(e, l, false);
    } else {
      out_ += "CAST(";
      Expression(l);
      out_ += " AS REAL)";
    }
    out_ += " / ";
    ArithmeticOperand(e, *e.args[1], true);
  }

  // SQLite has no ^: a XOR b = (a | b) - (a & b).
  void BitXor(const Expr& e) override {
    const Expr& l = *e.args[0];
    const Expr& r = *e.args[1];
    out_ += "((";
    Operand(l);
    out_ += " | ";
    Operand(r);
    out_ += ") - (";
    Operand(l);
    out_ += " & ";
    Operand(r);
    out_ += "))";
  }

  void Like(const Expr& e) override {
    if (e.negated) out_ += "NOT ";
    Call(SqliteTraits::kLike, e);
  }

  bool EngineAggregate(const Expr& e) override {
    const std::string& n = e.text;
    const Expr& arg = *e.args[0];
    // AVG of integers is an integer on the server, truncated.
    bool integer_avg = n == "AVG" && (arg.type.kind == ValueKind::Integer || arg.type.kind == ValueKind::Boolean);
    bool collate = arg.type.kind == ValueKind::Text && (e.distinct || n == "MIN" || n == "MAX");
    if (!integer_avg && !collate) return false;
    if (integer_avg) out_ += "CAST(";
    out_ += n;
    out_ += "(";
    if (e.distinct) out_ += "DISTINCT ";
    if (collate) {
      Collated(arg);
    } else {
      Expression(arg);
    }
    out_ += ")";
    if (integer_avg) out_ += " AS INTEGER)";
    return true;
  }

  bool EngineFunction(const Expr& e) override {
    const std::string& n = e.text;
    if (n == "LEFT") {
      out_ += "SUBSTR(";
      Expression(*e.args[0]);
      out_ += ", 1, ";
      Expression(*e.args[1]);
      out_ += ")";
      return true;
    }
    if (n == "DATALENGTH") {
      // Bytes of a blob; of text, one byte a character as in the server's
      // single-byte Latin code page, trailing blanks counted.
      out_ += "LENGTH(";
      Expression(*e.args[0]);
      out_ += ")";
      return true;
    }
    if (n == "LEN") {
      // LEN leaves out trailing blanks.
      out_ += "LENGTH(RTRIM(";
      Expression(*e.args[0]);
      out_ += ", ' '))";
      return true;
    }
    return false;
  }

  const char* FunctionName(const std::string& tsql) const override { return SqliteTraits::FunctionName(tsql); }
  bool SwapRightJoin() const override { return true; }  // SQLite before 3.39 has no RIGHT JOIN
  const char* NowCall() const override { return SqliteTraits::kNow; }
  const char* AddDaysFunction() const override { return SqliteTraits::kAddDays; }
  const char* DatePartFunction() const override { return SqliteTraits::kDatePart; }

  // A date with only an upper bound ("Date < '2026-11-01'": everything
  // before a period, as opening balances ask) takes in nearly the whole
  // table, since a practice's history only grows. Without histograms SQLite
  // guesses that such a range keeps a quarter of the rows, walks the date
  // index and fetches each row by its key; on a large practice those
  // scattered reads cost ten times a plain pass over the table and grow
  // faster than the table does. likelihood() gives the planner the real
  // proportion and leaves the value unchanged. A term that also has a lower
  // bound on the same column is a period and keeps SQLite's own guess.
  // A grouped query keeps it too: there the hint made the planner walk the
  // grouping key's index over a whole joined table to spare the sort, and
  // the partnership's adjustments by provider took twice as long on the
  // 100,000-patient practice (3.4 s of CPU against 6.3 s).
  void ConditionTerm(const Expr& term, const std::vector<const Expr*>& siblings) override {
    // A BETWEEN is a period by itself; only a comparison bounds one side.
    const Expr* column = term.kind == ExprKind::Binary ? BoundedDate(term, false) : nullptr;
    if (condition_select_ && !condition_select_->group_by.empty()) column = nullptr;
    for (const Expr* other : siblings) {
      if (!column) break;
      const Expr* below = BoundedDate(*other, true);
      if (below && SameColumn(*below, *column)) column = nullptr;
    }
    if (!column) {
      Expression(term);
      return;
    }
    out_ += "likelihood(";
    Expression(term);
    out_ += ", 0.9)";
  }


 private:
  void Collate() {
    out_ += " COLLATE ";
    out_ += SqliteTraits::kTextCollation;
  }

  void Collated(const Expr& e) {
    Operand(e);
    Collate();
  }

  // Text of a value as CAST(x AS varchar) gives it on the server.
  void TextOf(const Expr& x, int style) {
    if (x.type.kind == ValueKind::Text || x.type.kind == ValueKind::Unknown) {
      Expression(x);
      return;
    }
    out_ += SqliteTraits::kToText;
    out_ += "(";
    Expression(x);
    out_ += ", '";
    switch (x.type.kind) {
      case ValueKind::Money: out_ += "money"; break;
      case ValueKind::Date: out_ += "datetime"; break;
      case ValueKind::Float: out_ += "float"; break;
      default: out_ += "other"; break;
    }
    out_ += "', " + std::to_string(style) + ")";
  }

  void ToText(const Expr& x, const ExprType& to, int style, bool pad) {
    if (to.length > 0) {
      out_ += "SUBSTR(";
      TextOf(x, style);
      // char(n) is padded with blanks to n.
      if (pad) out_ += " || " + QuoteText(std::string(static_cast<size_t>(to.length), ' '));
      out_ += ", 1, " + std::to_string(to.length) + ")";
    } else {
      TextOf(x, style);
    }
  }

  void ToKind(const Expr& x, const ExprType& to, int style, bool pad, bool date_only, int scale) override {
    switch (to.kind) {
      case ValueKind::Text:
        ToText(x, to, style, pad);
        return;
      case ValueKind::Integer:
        if (x.type.kind == ValueKind::Text || x.type.kind == ValueKind::Unknown) {
          out_ += SqliteTraits::kTextToInt;
          out_ += "(";
          Expression(x);
          out_ += ")";
          return;
        }
        out_ += "CAST(";
        // Money converts to int by rounding, the others truncate.
        if (x.type.kind == ValueKind::Money) {
          out_ += "ROUND(";
          Expression(x);
          out_ += ")";
        } else {
          Expression(x);
        }
        out_ += " AS INTEGER)";
        return;
      case ValueKind::Boolean:
        out_ += "CASE WHEN ";
        Operand(x);
        out_ += " IS NULL THEN NULL WHEN ";
        Operand(x);
        out_ += " <> 0 THEN 1 ELSE 0 END";
        return;
      case ValueKind::Money:
        out_ += "ROUND(";
        Real(x);
        out_ += ", 4)";
        return;
      case ValueKind::Decimal:
        if (scale >= 0) {
          out_ += "ROUND(";
          Real(x);
          out_ += ", " + std::to_string(scale) + ")";
          return;
        }
        [[fallthrough]];
      case ValueKind::Float:
        Real(x);
        return;
      case ValueKind::Date:
        if (date_only) {
          out_ += SqliteTraits::kDateOnly;
          out_ += "(";
        }
        if (x.type.kind == ValueKind::Date) {
          Expression(x);
        } else {
          out_ += SqliteTraits::kToDate;
          out_ += "(";
          Expression(x);
          out_ += ")";
        }
        if (date_only) out_ += ")";
        return;
      default:
        Expression(x);
        return;
    }
  }

  // `x` as a real number; text converts strictly.
  void Real(const Expr& x) {
    bool text = x.type.kind == ValueKind::Text || x.type.kind == ValueKind::Unknown;
    out_ += text ? SqliteTraits::kTextToFloat : "CAST";
    out_ += "(";
    Expression(x);
    out_ += text ? ")" : " AS REAL)";
  }
};

}  // namespace

std::string PrintSqlite(const Statement& st) { return SqlitePrinter().Run(st); }

}  // namespace orv::sql
