#include "platform/sql/print_sqlite.h"

#include <cctype>
#include <set>

#include "platform/sql/sqlite_traits.h"

namespace orv::sql {

namespace {

std::string Quote(const std::string& name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

std::string QuoteText(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  return out + "'";
}

const char* EngineOperator(const std::string& op) {
  if (op == "!=") return "<>";
  if (op == "!<") return ">=";
  if (op == "!>") return "<=";
  return nullptr;
}

// Binding strength of arithmetic in SQLite: || binds tighter than * / %,
// which bind tighter than + -, which bind tighter than & |.
int Strength(const Expr& e) {
  if (e.kind != ExprKind::Binary) return 10;
  switch (e.op) {
    case BoundOp::Concat: return 4;
    case BoundOp::Multiply:
    case BoundOp::Modulo:
    case BoundOp::IntDivide:
      return 3;
    case BoundOp::Divide: return 3;
    case BoundOp::Add:
    case BoundOp::Subtract:
      return 2;
    case BoundOp::BitAnd:
    case BoundOp::BitOr:
      return 1;
    default:
      return 0;  // comparisons and the rest: always parenthesised as operands
  }
}

// True when the printed form of `e` is a single term (no operator at its top).
bool IsTerm(const Expr& e) {
  switch (e.kind) {
    case ExprKind::Null:
    case ExprKind::Number:
    case ExprKind::String:
    case ExprKind::Bool:
    case ExprKind::Column:
    case ExprKind::Star:
    case ExprKind::Function:
    case ExprKind::DatePart:
    case ExprKind::Case:
    case ExprKind::Cast:
    case ExprKind::Subquery:
    case ExprKind::Convert:
      return true;
    case ExprKind::Binary:
      return e.op == BoundOp::AddDays || e.op == BoundOp::SubtractDays;
    default:
      return false;
  }
}

class Printer {
 public:
  std::string Run(const Statement& st) {
    switch (st.kind) {
      case Statement::Kind::Select:
        Query(*st.query);
        break;
      case Statement::Kind::Update:
        out_ += "UPDATE " + Quote(st.table_name) + " SET ";
        for (size_t i = 0; i < st.sets.size(); ++i) {
          if (i) out_ += ", ";
          out_ += Quote(st.sets[i].column_name) + " = ";
          Expression(*st.sets[i].value);
        }
        Where(st.where.get());
        break;
      case Statement::Kind::Insert:
        out_ += "INSERT INTO " + Quote(st.table_name) + " (";
        for (size_t i = 0; i < st.insert_column_names.size(); ++i) {
          if (i) out_ += ", ";
          out_ += Quote(st.insert_column_names[i]);
        }
        out_ += ") ";
        if (st.query) {
          Query(*st.query);
        } else {
          out_ += "VALUES ";
          for (size_t r = 0; r < st.insert_rows.size(); ++r) {
            out_ += r ? ", (" : "(";
            List(st.insert_rows[r], 0);
            out_ += ")";
          }
        }
        break;
      case Statement::Kind::Delete:
        out_ += "DELETE FROM " + Quote(st.table_name);
        Where(st.where.get());
        break;
    }
    return std::move(out_);
  }

 private:
  void Where(const Expr* where) {
    if (!where) return;
    out_ += " WHERE ";
    Expression(*where);
  }

  // ---- queries ----

  void Query(const orv::sql::Query& q) {
    bool compound = q.selects.size() > 1;
    if (!compound && !q.selects[0]->rollup) {
      SelectBody(*q.selects[0], {}, q.selects[0]->group_by.size(), false);
      OrderBy(q);
      Limit(*q.selects[0]);
      return;
    }
    if (!compound) {
      // Rolled-up rows come from further SELECTs; ORDER BY and TOP apply to all.
      out_ += "SELECT * FROM (";
      Rollup(*q.selects[0]);
      out_ += ")";
      OrderBy(q);
      Limit(*q.selects[0]);
      return;
    }
    for (size_t i = 0; i < q.selects.size(); ++i) {
      if (i) out_ += " " + q.set_ops[i - 1] + " ";
      const Select& s = *q.selects[i];
      // SQLite allows neither LIMIT nor a compound inside a compound member.
      if (s.top || s.rollup) {
        out_ += "SELECT * FROM (";
        if (s.rollup) {
          Rollup(s);
        } else {
          SelectBody(s, {}, s.group_by.size(), false);
        }
        Limit(s);
        out_ += ")";
      } else {
        SelectBody(s, {}, s.group_by.size(), false);
      }
    }
    OrderBy(q);
  }

  void Limit(const Select& s) {
    if (!s.top) return;
    out_ += " LIMIT ";
    Expression(*s.top);
  }

  void OrderBy(const orv::sql::Query& q) {
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
      if (item.expr->type.kind == ValueKind::Text) {
        out_ += " COLLATE ";
        out_ += SqliteTraits::kTextCollation;
      }
      if (item.descending) out_ += " DESC";
    }
  }

  // WITH ROLLUP: one SELECT per grouping level, from all the GROUP BY
  // columns down to none, joined by UNION ALL. At each level the columns
  // rolled up read NULL outside aggregates, as on the server.
  void Rollup(const Select& s) {
    size_t k = s.group_by.size();
    for (size_t level = k + 1; level-- > 0;) {
      if (level != k) out_ += " UNION ALL ";
      std::set<std::string> nulled;
      for (size_t g = level; g < k; ++g) nulled.insert(Printed(*s.group_by[g]));
      // The grand total of no rows is no row: the reports test for an empty
      // result before they read the total.
      SelectBody(s, nulled, level, level == 0);
    }
  }

  std::string Printed(const Expr& e) {
    std::string saved = std::move(out_);
    out_.clear();
    Expression(e);
    std::string text = std::move(out_);
    out_ = std::move(saved);
    return text;
  }

  void SelectBody(const Select& s, const std::set<std::string>& nulled, size_t group_count, bool require_rows) {
    out_ += "SELECT ";
    if (s.distinct) out_ += "DISTINCT ";
    nulled_ = &nulled;
    bool first = true;
    for (const SelectItem& item : s.items) {
      if (item.expr->kind == ExprKind::Star) {
        for (const auto& o : item.outputs) {
          if (!first) out_ += ", ";
          first = false;
          std::string column = Quote(o.table_alias) + "." + Quote(o.column_name);
          if (!nulled.empty() && nulled.count(column)) column = "NULL";
          out_ += column;
          if (s.distinct && o.type.kind == ValueKind::Text) Collate();
          out_ += " AS " + Quote(o.name);
        }
        continue;
      }
      if (!first) out_ += ", ";
      first = false;
      if (s.distinct && item.outputs[0].type.kind == ValueKind::Text) {
        Operand(*item.expr);
        Collate();
      } else {
        Expression(*item.expr);
      }
      if (!item.outputs[0].name.empty()) out_ += " AS " + Quote(item.outputs[0].name);
    }
    // Rows are chosen and grouped on the real values; only the select list
    // and HAVING see the rolled-up columns as NULL.
    nulled_ = nullptr;
    if (!s.from.empty()) {
      out_ += " FROM ";
      for (size_t i = 0; i < s.from.size(); ++i) {
        if (i) out_ += ", ";
        Source(*s.from[i], false);
      }
    }
    Where(s.where.get());
    if (group_count > 0) {
      out_ += " GROUP BY ";
      for (size_t i = 0; i < group_count; ++i) {
        if (i) out_ += ", ";
        const Expr& g = *s.group_by[i];
        if (g.type.kind == ValueKind::Text) {
          Operand(g);
          Collate();
        } else {
          Expression(g);
        }
      }
    }
    nulled_ = &nulled;
    if (s.having || require_rows) {
      out_ += " HAVING ";
      if (s.having) {
        out_ += "(";
        Expression(*s.having);
        out_ += ")";
      }
      if (s.having && require_rows) out_ += " AND ";
      if (require_rows) out_ += "COUNT(*) > 0";
    }
    nulled_ = nullptr;
  }

  void Source(const TableSource& src, bool right_operand) {
    switch (src.kind) {
      case TableSource::Kind::Table:
        out_ += Quote(src.table) + " AS " + Quote(src.engine_alias);
        return;
      case TableSource::Kind::Derived:
        out_ += "(";
        Query(*src.query);
        out_ += ") AS " + Quote(src.engine_alias);
        return;
      case TableSource::Kind::Join:
        break;
    }
    if (right_operand) out_ += "(";
    // SQLite before 3.39 has no RIGHT JOIN: a RIGHT JOIN b is b LEFT JOIN a.
    bool swap = src.join == JoinType::Right;
    const TableSource& first = swap ? *src.right : *src.left;
    const TableSource& second = swap ? *src.left : *src.right;
    Source(first, false);
    switch (src.join) {
      case JoinType::Inner: out_ += " INNER JOIN "; break;
      case JoinType::Left:
      case JoinType::Right: out_ += " LEFT JOIN "; break;
      case JoinType::Full: out_ += " FULL JOIN "; break;
      case JoinType::Cross: out_ += " CROSS JOIN "; break;
    }
    Source(second, true);
    if (src.on) {
      out_ += " ON ";
      Expression(*src.on);
    }
    if (right_operand) out_ += ")";
  }

  // ---- expressions ----

  void Collate() {
    out_ += " COLLATE ";
    out_ += SqliteTraits::kTextCollation;
  }

  // Prints `e` so that a postfix or binary operator may follow it.
  void Operand(const Expr& e) {
    if (IsTerm(e)) {
      Expression(e);
    } else {
      out_ += "(";
      Expression(e);
      out_ += ")";
    }
  }

  void Collated(const Expr& e) {
    Operand(e);
    Collate();
  }

  void List(const std::vector<ExprPtr>& args, size_t from) {
    for (size_t i = from; i < args.size(); ++i) {
      if (i > from) out_ += ", ";
      Expression(*args[i]);
    }
  }

  void Call(const char* name, const Expr& e, size_t from = 0) {
    out_ += name;
    out_ += "(";
    List(e.args, from);
    out_ += ")";
  }

  void ArithmeticOperand(const Expr& parent, const Expr& child, bool right) {
    int p = Strength(parent), c = Strength(child);
    bool wrap = !IsTerm(child) && (c == 0 || c < p || (right && c == p));
    if (child.kind == ExprKind::Unary && child.text != "NOT") wrap = false;
    if (wrap) out_ += "(";
    Expression(child);
    if (wrap) out_ += ")";
  }

  void Expression(const Expr& e) {
    // Inside a rolled-up level, a grouping expression outside an aggregate
    // reads NULL.
    if (nulled_ && !nulled_->empty() && aggregate_depth_ == 0 && e.kind != ExprKind::Null &&
        e.kind != ExprKind::Number && e.kind != ExprKind::String) {
      const std::set<std::string>* saved = nulled_;
      nulled_ = nullptr;
      std::string text = Printed(e);
      nulled_ = saved;
      if (nulled_->count(text)) {
        out_ += "NULL";
        return;
      }
    }
    switch (e.kind) {
      case ExprKind::Null: out_ += "NULL"; return;
      case ExprKind::Number: Number(e.text); return;
      case ExprKind::String: out_ += QuoteText(e.text); return;
      case ExprKind::Bool: out_ += e.text; return;
      case ExprKind::Column: out_ += Quote(e.table_alias) + "." + Quote(e.column_name); return;
      case ExprKind::Star: out_ += "*"; return;
      case ExprKind::DatePart: out_ += QuoteText(e.text); return;
      case ExprKind::Unary:
        if (e.text == "NOT") {
          out_ += "NOT ";
          Operand(*e.args[0]);
        } else if (e.text == "+") {
          Operand(*e.args[0]);
        } else {
          out_ += e.text;
          Operand(*e.args[0]);
        }
        return;
      case ExprKind::Logical:
        Logical(e, 0, e.args.size());
        return;
      case ExprKind::Binary: Binary(e); return;
      case ExprKind::Function: Function(e); return;
      case ExprKind::Case: Case(e); return;
      case ExprKind::Cast: Cast(e); return;
      case ExprKind::Convert: Convert(e); return;
      case ExprKind::Subquery:
        out_ += "(";
        Query(*e.query);
        out_ += ")";
        return;
      case ExprKind::Exists:
        out_ += "EXISTS (";
        Query(*e.query);
        out_ += ")";
        return;
      case ExprKind::InList:
      case ExprKind::InQuery:
        if (e.op == BoundOp::CompareText) {
          Collated(*e.args[0]);
        } else {
          Operand(*e.args[0]);
        }
        out_ += e.negated ? " NOT IN (" : " IN (";
        if (e.kind == ExprKind::InQuery) {
          Query(*e.query);
        } else {
          List(e.args, 1);
        }
        out_ += ")";
        return;
      case ExprKind::Between:
        if (e.op == BoundOp::CompareText) {
          Collated(*e.args[0]);
        } else {
          Operand(*e.args[0]);
        }
        out_ += e.negated ? " NOT BETWEEN " : " BETWEEN ";
        Operand(*e.args[1]);
        out_ += " AND ";
        Operand(*e.args[2]);
        return;
      case ExprKind::Like:
        if (e.negated) out_ += "NOT ";
        Call(SqliteTraits::kLike, e);
        return;
      case ExprKind::IsNull:
        Operand(*e.args[0]);
        out_ += e.negated ? " IS NOT NULL" : " IS NULL";
        return;
    }
  }

  // Operands [from, to) of an AND/OR chain. SQLite refuses expression
  // trees deeper than 1000, and a flat chain is as deep as it is long, so a
  // long chain is printed as a balanced tree of parenthesised halves.
  void Logical(const Expr& e, size_t from, size_t to) {
    constexpr size_t kFlat = 32;
    if (to - from > kFlat) {
      size_t mid = from + (to - from) / 2;
      out_ += "(";
      Logical(e, from, mid);
      out_ += ") " + e.text + " (";
      Logical(e, mid, to);
      out_ += ")";
      return;
    }
    for (size_t i = from; i < to; ++i) {
      if (i > from) out_ += " " + e.text + " ";
      const Expr& a = *e.args[i];
      if (a.kind == ExprKind::Logical) {
        out_ += "(";
        Expression(a);
        out_ += ")";
      } else {
        Expression(a);
      }
    }
  }

  // SQLite reads 01101 as 1101 too, but a plain form is clearer.
  void Number(const std::string& text) {
    size_t i = 0;
    while (i + 1 < text.size() && text[i] == '0' && std::isdigit(static_cast<unsigned char>(text[i + 1]))) ++i;
    if (text[i] == '.') out_ += "0";
    out_ += text.substr(i);
  }

  void Binary(const Expr& e) {
    const Expr& l = *e.args[0];
    const Expr& r = *e.args[1];
    auto infix = [&](const char* op) {
      ArithmeticOperand(e, l, false);
      out_ += op;
      ArithmeticOperand(e, r, true);
    };
    switch (e.op) {
      case BoundOp::Concat: infix(" || "); return;
      case BoundOp::Add: infix(" + "); return;
      case BoundOp::Subtract: infix(" - "); return;
      case BoundOp::Multiply: infix(" * "); return;
      case BoundOp::Modulo: infix(" % "); return;
      case BoundOp::IntDivide: infix(" / "); return;
      case BoundOp::Divide:
        // Money and decimals may be stored as integers; divide as reals.
        if (l.type.kind == ValueKind::Float) {
          ArithmeticOperand(e, l, false);
        } else {
          out_ += "CAST(";
          Expression(l);
          out_ += " AS REAL)";
        }
        out_ += " / ";
        ArithmeticOperand(e, r, true);
        return;
      case BoundOp::BitAnd: infix(" & "); return;
      case BoundOp::BitOr: infix(" | "); return;
      case BoundOp::BitXor:
        // SQLite has no ^: a XOR b = (a | b) - (a & b).
        out_ += "((";
        Operand(l);
        out_ += " | ";
        Operand(r);
        out_ += ") - (";
        Operand(l);
        out_ += " & ";
        Operand(r);
        out_ += "))";
        return;
      case BoundOp::AddDays:
      case BoundOp::SubtractDays:
        out_ += SqliteTraits::kAddDays;
        out_ += "(";
        Expression(l);
        out_ += e.op == BoundOp::AddDays ? ", " : ", -";
        if (e.op == BoundOp::SubtractDays) {
          Operand(r);
        } else {
          Expression(r);
        }
        out_ += ")";
        return;
      case BoundOp::FlagTrue:
      case BoundOp::FlagFalse:
        Operand(l);
        out_ += e.op == BoundOp::FlagTrue ? " <> 0" : " = 0";
        return;
      case BoundOp::CompareText:
      case BoundOp::CompareOther: {
        const char* mapped = EngineOperator(e.text);
        if (e.op == BoundOp::CompareText) {
          Collated(l);
        } else {
          Operand(l);
        }
        out_ += " ";
        out_ += mapped ? mapped : e.text.c_str();
        out_ += " ";
        Operand(r);
        return;
      }
      case BoundOp::None:
        break;
    }
    out_ += "NULL";
  }

  void Function(const Expr& e) {
    const std::string& n = e.text;
    if (e.is_aggregate) {
      ++aggregate_depth_;
      const Expr& arg = *e.args[0];
      if (arg.kind == ExprKind::Star) {
        out_ += "COUNT(*)";
      } else {
        bool integer_avg = n == "AVG" && (arg.type.kind == ValueKind::Integer || arg.type.kind == ValueKind::Boolean);
        // AVG of integers is an integer on the server, truncated.
        if (integer_avg) out_ += "CAST(";
        out_ += n == "COUNT_BIG" ? "COUNT" : n;
        out_ += "(";
        if (e.distinct) out_ += "DISTINCT ";
        bool collate = arg.type.kind == ValueKind::Text && (e.distinct || n == "MIN" || n == "MAX");
        if (collate) {
          Collated(arg);
        } else {
          Expression(arg);
        }
        out_ += ")";
        if (integer_avg) out_ += " AS INTEGER)";
      }
      --aggregate_depth_;
      return;
    }
    if (n == "GETDATE") {
      out_ += SqliteTraits::kNow;
      return;
    }
    if (n == "YEAR" || n == "MONTH" || n == "DAY") {
      out_ += SqliteTraits::kDatePart;
      out_ += "('";
      out_ += n == "YEAR" ? "year" : n == "MONTH" ? "month" : "day";
      out_ += "', ";
      Expression(*e.args[0]);
      out_ += ")";
      return;
    }
    if (n == "LEFT") {
      out_ += "SUBSTR(";
      Expression(*e.args[0]);
      out_ += ", 1, ";
      Expression(*e.args[1]);
      out_ += ")";
      return;
    }
    if (n == "LEN") {
      // LEN leaves out trailing blanks.
      out_ += "LENGTH(RTRIM(";
      Expression(*e.args[0]);
      out_ += ", ' '))";
      return;
    }
    if (n == "NULLIF" && e.op == BoundOp::CompareText) {
      out_ += "NULLIF(";
      Collated(*e.args[0]);
      out_ += ", ";
      Expression(*e.args[1]);
      out_ += ")";
      return;
    }
    const char* mapped = SqliteTraits::FunctionName(n);
    Call(mapped ? mapped : n.c_str(), e);
  }

  void Case(const Expr& e) {
    out_ += "CASE";
    size_t i = 0;
    if (e.has_operand) {
      out_ += " ";
      if (e.op == BoundOp::CompareText) {
        Collated(*e.args[0]);
      } else {
        Expression(*e.args[0]);
      }
      i = 1;
    }
    size_t end = e.args.size() - (e.has_else ? 1 : 0);
    for (; i + 1 < end; i += 2) {
      out_ += " WHEN ";
      Expression(*e.args[i]);
      out_ += " THEN ";
      Expression(*e.args[i + 1]);
    }
    if (e.has_else) {
      out_ += " ELSE ";
      Expression(*e.args.back());
    }
    out_ += " END";
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

  void ToKind(const Expr& x, const ExprType& to, int style, bool pad, bool date_only, int scale) {
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

  void Cast(const Expr& e) {
    int style = e.args.size() > 1 ? std::atoi(e.args[1]->text.c_str()) : 0;
    const std::string& n = e.type_name.name;
    bool pad = n == "char" || n == "nchar";
    int scale = n == "decimal" || n == "numeric" ? (e.type_name.scale < 0 ? 0 : e.type_name.scale) : -1;
    ToKind(*e.args[0], e.type, style, pad, n == "date", scale);
  }

  void Convert(const Expr& e) {
    const Expr& x = *e.args[0];
    ToKind(x, e.type, 0, false, false, -1);
  }

  std::string out_;
  const std::set<std::string>* nulled_ = nullptr;
  int aggregate_depth_ = 0;
};

}  // namespace

std::string PrintSqlite(const Statement& st) { return Printer().Run(st); }

}  // namespace orv::sql
