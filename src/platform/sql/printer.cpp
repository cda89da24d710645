#include "platform/sql/printer.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <set>

namespace orv::sql::print {

namespace {

// `text` between `mark`s, a `mark` inside doubled. Every name of every
// statement is printed through here, so the text is copied in runs between
// marks rather than a character at a time.
std::string Enclose(const std::string& text, char mark) {
  std::string out;
  out.reserve(text.size() + 2);
  AppendEnclosed(out, text, mark);
  return out;
}

}  // namespace

void AppendEnclosed(std::string& out, std::string_view text, char mark) {
  out += mark;
  size_t from = 0;
  for (size_t at; (at = text.find(mark, from)) != std::string_view::npos; from = at + 1) {
    out.append(text, from, at + 1 - from);
    out += mark;
  }
  out.append(text, from, std::string_view::npos);
  out += mark;
}

std::string Quote(const std::string& name) { return Enclose(name, '"'); }

std::string QuoteText(const std::string& text) { return Enclose(text, '\''); }

namespace {

const char* EngineOperator(const std::string& op) {
  if (op == "!=") return "<>";
  if (op == "!<") return ">=";
  if (op == "!>") return "<=";
  return nullptr;
}

bool IsOrdering(const std::string& op) { return op != "=" && op != "<>" && op != "!="; }

}  // namespace

bool Printer::IsTerm(const Expr& e) {
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

size_t Printer::OutputCount(const Select& s) {
  size_t n = 0;
  for (const auto& item : s.items) n += item.outputs.size();
  return n;
}

std::vector<int> Printer::TieBreakPositions(const orv::sql::Query& q) {
  std::vector<int> positions;
  const Select& first = *q.selects[0];
  if (q.order_by.empty() || q.implied_order || first.rollup) return positions;
  int position = 0;
  for (const auto& item : first.items) {
    for (const auto& out : item.outputs) {
      ++position;
      switch (out.type.kind) {
        case ValueKind::Integer:
        case ValueKind::Boolean:
        case ValueKind::Float:
        case ValueKind::Decimal:
        case ValueKind::Money:
        case ValueKind::Date:
          break;
        default:
          continue;
      }
      // A column already ordered by (by position or by name) breaks no tie.
      const auto [table, column] = SourceColumn(item, out);
      bool key = false;
      for (const OrderItem& o : q.order_by) {
        key = key || o.output_position == position;
        if (!column.empty() && o.expr && o.expr->kind == ExprKind::Column)
          key = key || (o.expr->table_alias == table && o.expr->column_name == column);
      }
      if (!key) positions.push_back(position);
    }
  }
  return positions;
}

std::pair<std::string, std::string> Printer::SourceColumn(const SelectItem& item, const SelectItem::Output& out) {
  const Expr* col = item.expr && item.expr->kind == ExprKind::Column ? item.expr.get() : nullptr;
  return {col ? col->table_alias : out.table_alias, col ? col->column_name : out.column_name};
}

std::vector<const OrderItem*> Printer::TieBreakKeys(const orv::sql::Query& q, const std::vector<int>& positions) {
  std::vector<const OrderItem*> keys;
  if (q.key_ties.empty()) return keys;
  std::set<std::pair<std::string, std::string>> ordered;
  int position = 0;
  for (const auto& item : q.selects[0]->items) {
    for (const auto& out : item.outputs) {
      ++position;
      if (std::find(positions.begin(), positions.end(), position) != positions.end())
        ordered.insert(SourceColumn(item, out));
    }
  }
  for (const OrderItem& k : q.key_ties)
    if (ordered.count({k.expr->table_alias, k.expr->column_name}) == 0) keys.push_back(&k);
  return keys;
}

std::string Printer::Run(const Statement& st) {
  statement_ = st.text;
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

void Printer::Where(const Expr* where) {
  if (!where) return;
  out_ += " WHERE ";
  WhereCondition(*where);
}

void Printer::Condition(const Expr& e) {
  std::vector<const Expr*> terms;
  bool conjunction = e.kind == ExprKind::Logical && e.text == "AND";
  // Logical() splits a very long list into parenthesised halves; leave
  // those as they print.
  if (conjunction && e.args.size() > 32) {
    Expression(e);
    return;
  }
  if (conjunction) {
    for (const auto& a : e.args) terms.push_back(a.get());
  } else {
    terms.push_back(&e);
  }
  for (size_t i = 0; i < terms.size(); ++i) {
    if (i) out_ += " AND ";
    bool parens = conjunction && terms[i]->kind == ExprKind::Logical;
    if (parens) out_ += "(";
    ConditionTerm(*terms[i], terms);
    if (parens) out_ += ")";
  }
}

// ---- queries ----

void Printer::Query(const orv::sql::Query& q) {
  QueryBody(q);
  OrderBy(q);
  if (q.selects.size() == 1) Limit(*q.selects[0]);
}

void Printer::QueryBody(const orv::sql::Query& q) {
  NestingLevel level(depth_, 2 * kMaxNesting, q.pos, statement_);
  ++query_depth_;
  bool compound = q.selects.size() > 1;
  bool nested = query_depth_ > 1;
  if (!compound && !q.selects[0]->rollup) {
    SelectBody(*q.selects[0], nested, q.selects[0]->group_by.size(), false);
  } else if (!compound) {
    // Rolled-up rows come from further SELECTs; ORDER BY and TOP apply to all.
    out_ += "SELECT * FROM (";
    Rollup(*q.selects[0]);
    out_ += ")" + WrapAlias(*q.selects[0]);
  } else {
    for (size_t i = 0; i < q.selects.size(); ++i) {
      if (i) out_ += " " + q.set_ops[i - 1] + " ";
      const Select& s = *q.selects[i];
      // Neither LIMIT nor a compound may stand as a compound member.
      if (s.top || s.rollup) {
        out_ += "SELECT * FROM (";
        if (s.rollup) {
          Rollup(s);
        } else {
          SelectBody(s, true, s.group_by.size(), false);
        }
        Limit(s);
        out_ += ")" + WrapAlias(s);
      } else {
        SelectBody(s, true, s.group_by.size(), false);
      }
    }
  }
  --query_depth_;
}

void Printer::Limit(const Select& s) {
  if (!s.top) return;
  out_ += " LIMIT ";
  Expression(*s.top);
}

// WITH ROLLUP: one SELECT per grouping level, from all the GROUP BY
// columns down to none, joined by UNION ALL. At each level the columns
// rolled up read NULL outside aggregates, as on the server.
void Printer::Rollup(const Select& s) {
  size_t k = s.group_by.size();
  for (size_t level = k + 1; level-- > 0;) {
    if (level != k) out_ += " UNION ALL ";
    // The grand total of no rows is no row: the reports test for an empty
    // result before they read the total.
    SelectBody(s, true, level, level == 0);
  }
}

std::string Printer::Printed(const Expr& e) {
  return Captured([&] { Expression(e); });
}

// `group_count` is the number of GROUP BY expressions grouped on; the ones
// after it are rolled up (WITH ROLLUP) and read NULL.
void Printer::SelectBody(const Select& s, bool collate_outputs, size_t group_count, bool require_rows) {
  // A query nested in a select list has its own replacements.
  const auto* outer = replaced_;
  replaced_ = nullptr;
  std::vector<std::string> keys;
  std::map<std::string, std::string> replaced = GroupReplacements(s, group_count, &keys);

  out_ += "SELECT ";
  if (s.distinct) out_ += "DISTINCT ";
  replaced_ = &replaced;
  bool first = true;
  for (const SelectItem& item : s.items) {
    if (item.expr->kind == ExprKind::Star) {
      for (const auto& o : item.outputs) {
        if (!first) out_ += ", ";
        first = false;
        // A star names every column of its tables, a hundred for a
        // patient's row: each is written in place, and made as text to
        // look up only when the rollup replaced some columns.
        if (replaced.empty()) {
          QuotedColumn(o.table_alias, o.column_name);
        } else {
          std::string column = Quote(o.table_alias) + "." + Quote(o.column_name);
          auto it = replaced.find(column);
          if (it != replaced.end() && it->second == "NULL") column = "NULL";
          out_ += column;
        }
        if (s.distinct) DistinctStarColumn(o);
        out_ += " AS ";
        AppendEnclosed(out_, o.name, '"');
      }
      continue;
    }
    if (!first) out_ += ", ";
    first = false;
    OutputValue(*item.expr, s.distinct, collate_outputs);
    if (!item.outputs[0].name.empty()) {
      out_ += " AS ";
      AppendEnclosed(out_, item.outputs[0].name, '"');
    }
  }
  // Rows are chosen and grouped on the real values; only the select list
  // and HAVING see the rolled-up columns as NULL.
  replaced_ = nullptr;
  const Select* outer_select = condition_select_;
  condition_select_ = &s;
  if (!s.from.empty()) {
    out_ += " FROM ";
    for (size_t i = 0; i < s.from.size(); ++i) {
      if (i) out_ += ", ";
      Source(*s.from[i], false);
    }
  }
  Where(s.where.get());
  condition_select_ = outer_select;
  if (group_count > 0) {
    out_ += " GROUP BY ";
    for (size_t i = 0; i < keys.size(); ++i) out_ += (i ? ", " : "") + keys[i];
  }
  replaced_ = &replaced;
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
  replaced_ = outer;
}

std::map<std::string, std::string> Printer::GroupReplacements(const Select& s, size_t group_count,
                                                              std::vector<std::string>* keys) {
  // Printed without the replacements in force around it.
  const auto* outer = replaced_;
  replaced_ = nullptr;
  std::map<std::string, std::string> replaced;
  for (size_t g = 0; g < s.group_by.size(); ++g) {
    std::string text = Printed(*s.group_by[g]);
    if (g >= group_count) {
      replaced[text] = "NULL";
      continue;
    }
    std::string key = Captured([&] { GroupKey(*s.group_by[g]); });
    if (KeyStandsInForExpression(*s.group_by[g])) {
      const char* reader = StandInReader();
      replaced[text] = reader ? std::string(reader) + "(" + key + ")" : key;
    }
    if (keys) keys->push_back(key);
  }
  replaced_ = outer;
  return replaced;
}

// Only a single SELECT without ROLLUP is ordered over its own grouping; a
// compound or rolled-up query is ordered by result columns. The
// replacements of a query around (an ORDER BY inside a subquery of a
// grouped select list) stay in force beside its own.
Printer::GroupedOrder::GroupedOrder(Printer& printer, const orv::sql::Query& q)
    : printer_(printer), outer_(printer.replaced_) {
  const Select& s = *q.selects[0];
  if (q.selects.size() != 1 || s.rollup || s.group_by.empty()) return;
  replaced_ = printer.GroupReplacements(s, s.group_by.size(), nullptr);
  if (replaced_.empty()) return;
  if (outer_) replaced_.insert(outer_->begin(), outer_->end());
  printer.replaced_ = &replaced_;
}

void Printer::Source(const TableSource& src, bool right_operand) {
  switch (src.kind) {
    case TableSource::Kind::Table:
      AppendEnclosed(out_, src.table, '"');
      out_ += " AS ";
      AppendEnclosed(out_, src.engine_alias, '"');
      return;
    case TableSource::Kind::Derived:
      out_ += "(";
      Query(*src.query);
      out_ += ") AS " + Quote(src.engine_alias);
      return;
    case TableSource::Kind::Join:
      break;
  }
  NestingLevel level(depth_, 2 * kMaxNesting, src.pos, statement_);
  if (right_operand) out_ += "(";
  bool swap = src.join == JoinType::Right && SwapRightJoin();
  const TableSource& first = swap ? *src.right : *src.left;
  const TableSource& second = swap ? *src.left : *src.right;
  Source(first, false);
  switch (src.join) {
    case JoinType::Inner: out_ += " INNER JOIN "; break;
    case JoinType::Left: out_ += " LEFT JOIN "; break;
    case JoinType::Right: out_ += swap ? " LEFT JOIN " : " RIGHT JOIN "; break;
    case JoinType::Full: out_ += " FULL JOIN "; break;
    case JoinType::Cross: out_ += " CROSS JOIN "; break;
  }
  Source(second, true);
  if (src.on) {
    out_ += " ON ";
    Condition(*src.on);
  }
  if (right_operand) out_ += ")";
}

// ---- expressions ----

void Printer::Operand(const Expr& e) {
  if (IsTerm(e)) {
    Expression(e);
  } else {
    out_ += "(";
    Expression(e);
    out_ += ")";
  }
}

void Printer::List(const std::vector<ExprPtr>& args, size_t from) {
  for (size_t i = from; i < args.size(); ++i) {
    if (i > from) out_ += ", ";
    Expression(*args[i]);
  }
}

void Printer::Call(const char* name, const Expr& e, size_t from) {
  out_ += name;
  out_ += "(";
  List(e.args, from);
  out_ += ")";
}

void Printer::ArithmeticOperand(const Expr& parent, const Expr& child, bool right) {
  int p = Strength(parent), c = Strength(child);
  bool wrap = !IsTerm(child) && (c == 0 || c < p || (right && c == p));
  if (child.kind == ExprKind::Unary && child.text != "NOT") wrap = false;
  if (wrap) out_ += "(";
  Expression(child);
  if (wrap) out_ += ")";
}

void Printer::Expression(const Expr& e) {
  NestingLevel level(depth_, 2 * kMaxNesting, e.pos, statement_);
  // Inside a select list or HAVING, a grouping expression outside an
  // aggregate may read as something else (NULL in a rolled-up level).
  if (replaced_ && !replaced_->empty() && aggregate_depth_ == 0 && e.kind != ExprKind::Null &&
      e.kind != ExprKind::Number && e.kind != ExprKind::String) {
    const auto* saved = replaced_;
    replaced_ = nullptr;
    std::string text = Printed(e);
    replaced_ = saved;
    auto it = replaced_->find(text);
    if (it != replaced_->end()) {
      out_ += it->second;
      return;
    }
  }
  switch (e.kind) {
    case ExprKind::Null: out_ += "NULL"; return;
    case ExprKind::Number: Number(e.text); return;
    case ExprKind::String: StringLiteral(e); return;
    case ExprKind::Bool: out_ += e.text; return;
    case ExprKind::Column: QuotedColumn(e.table_alias, e.column_name); return;
    case ExprKind::Star: out_ += "*"; return;
    case ExprKind::DatePart: AppendEnclosed(out_, e.text, '\''); return;
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
    case ExprKind::Convert: ToKind(*e.args[0], e.type, 0, false, false, -1); return;
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
        CompareLeft(*e.args[0]);
      } else {
        Operand(*e.args[0]);
      }
      out_ += e.negated ? " NOT IN (" : " IN (";
      if (e.kind == ExprKind::InQuery) {
        Query(*e.query);
      } else if (e.op == BoundOp::CompareText) {
        for (size_t i = 1; i < e.args.size(); ++i) {
          if (i > 1) out_ += ", ";
          CompareRight(*e.args[i]);
        }
      } else {
        List(e.args, 1);
      }
      out_ += ")";
      return;
    case ExprKind::Between:
      if (e.op == BoundOp::CompareText) {
        OrderedText(*e.args[0], true);
      } else {
        Operand(*e.args[0]);
      }
      out_ += e.negated ? " NOT BETWEEN " : " BETWEEN ";
      if (e.op == BoundOp::CompareText) {
        OrderedText(*e.args[1], false);
        out_ += " AND ";
        OrderedText(*e.args[2], false);
      } else {
        Operand(*e.args[1]);
        out_ += " AND ";
        Operand(*e.args[2]);
      }
      return;
    case ExprKind::Like:
      Like(e);
      return;
    case ExprKind::IsNull:
      Operand(*e.args[0]);
      out_ += e.negated ? " IS NOT NULL" : " IS NULL";
      return;
  }
}

// Operands [from, to) of an AND/OR chain. SQLite refuses expression trees
// deeper than 1000, and a flat chain is as deep as it is long, so a long
// chain is printed as a balanced tree of parenthesised halves.
void Printer::Logical(const Expr& e, size_t from, size_t to) {
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

// Engines read 01101 as 1101 too, but a plain form is clearer.
void Printer::Number(const std::string& text) {
  size_t i = 0;
  while (i + 1 < text.size() && text[i] == '0' && std::isdigit(static_cast<unsigned char>(text[i + 1]))) ++i;
  if (text[i] == '.') out_ += "0";
  out_ += text.substr(i);
}

void Printer::Binary(const Expr& e) {
  const Expr& l = *e.args[0];
  const Expr& r = *e.args[1];
  auto infix = [&](const char* op) {
    ArithmeticOperand(e, l, false);
    out_ += op;
    ArithmeticOperand(e, r, true);
  };
  switch (e.op) {
    case BoundOp::Concat: Concat(e); return;
    case BoundOp::Add: infix(" + "); return;
    case BoundOp::Subtract: infix(" - "); return;
    case BoundOp::Multiply: infix(" * "); return;
    case BoundOp::Modulo: infix(" % "); return;
    case BoundOp::IntDivide: infix(" / "); return;
    case BoundOp::Divide: Divide(e); return;
    case BoundOp::BitAnd: infix(" & "); return;
    case BoundOp::BitOr: infix(" | "); return;
    case BoundOp::BitXor: BitXor(e); return;
    case BoundOp::AddDays:
    case BoundOp::SubtractDays:
      out_ += AddDaysFunction();
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
      bool ordering = e.op == BoundOp::CompareText && IsOrdering(e.text);
      if (ordering) {
        OrderedText(l, true);
      } else if (e.op == BoundOp::CompareText) {
        CompareLeft(l);
      } else {
        Operand(l);
      }
      out_ += " ";
      out_ += mapped ? mapped : e.text.c_str();
      out_ += " ";
      if (ordering) {
        OrderedText(r, false);
      } else if (e.op == BoundOp::CompareText) {
        CompareRight(r);
      } else {
        Operand(r);
      }
      return;
    }
    case BoundOp::None:
      break;
  }
  out_ += "NULL";
}

void Printer::Function(const Expr& e) {
  const std::string& n = e.text;
  if (e.is_aggregate) {
    ++aggregate_depth_;
    const Expr& arg = *e.args[0];
    if (arg.kind == ExprKind::Star) {
      out_ += "COUNT(*)";
    } else if (!EngineAggregate(e)) {
      out_ += n == "COUNT_BIG" ? "COUNT" : n;
      out_ += "(";
      if (e.distinct) out_ += "DISTINCT ";
      Expression(arg);
      out_ += ")";
    }
    --aggregate_depth_;
    return;
  }
  if (EngineFunction(e)) return;
  if (n == "GETDATE") {
    out_ += NowCall();
    return;
  }
  if (n == "YEAR" || n == "MONTH" || n == "DAY") {
    out_ += DatePartFunction();
    out_ += "('";
    out_ += n == "YEAR" ? "year" : n == "MONTH" ? "month" : "day";
    out_ += "', ";
    Expression(*e.args[0]);
    out_ += ")";
    return;
  }
  if (n == "NULLIF" && e.op == BoundOp::CompareText) {
    out_ += "NULLIF(";
    CompareLeft(*e.args[0]);
    out_ += ", ";
    CompareRight(*e.args[1]);
    out_ += ")";
    return;
  }
  const char* mapped = FunctionName(n);
  Call(mapped ? mapped : n.c_str(), e);
}

// Both engines: * / % bind tighter than + -, which bind tighter than the
// bitwise operators.
int Printer::Strength(const Expr& e) const {
  if (e.kind != ExprKind::Binary) return 10;
  switch (e.op) {
    case BoundOp::Concat: return ConcatStrength();
    case BoundOp::Multiply:
    case BoundOp::Modulo:
    case BoundOp::IntDivide:
    case BoundOp::Divide:
      return 3;
    case BoundOp::Add:
    case BoundOp::Subtract:
      return 2;
    case BoundOp::BitAnd:
    case BoundOp::BitOr:
    case BoundOp::BitXor:
      return 1;
    default:
      return 0;
  }
}

void Printer::Cast(const Expr& e) {
  int style = e.args.size() > 1 ? std::atoi(e.args[1]->text.c_str()) : 0;
  const std::string& n = e.type_name.name;
  bool pad = n == "char" || n == "nchar";
  int scale = n == "decimal" || n == "numeric" ? (e.type_name.scale < 0 ? 0 : e.type_name.scale) : -1;
  ToKind(*e.args[0], e.type, style, pad, n == "date", scale);
}

void Printer::Case(const Expr& e) {
  out_ += "CASE";
  size_t i = 0;
  bool text_operand = e.has_operand && e.op == BoundOp::CompareText;
  if (e.has_operand) {
    out_ += " ";
    if (text_operand) {
      CompareLeft(*e.args[0]);
    } else {
      Expression(*e.args[0]);
    }
    i = 1;
  }
  size_t end = e.args.size() - (e.has_else ? 1 : 0);
  for (; i + 1 < end; i += 2) {
    out_ += " WHEN ";
    if (text_operand) {
      CompareRight(*e.args[i]);
    } else {
      Expression(*e.args[i]);
    }
    out_ += " THEN ";
    ResultValue(*e.args[i + 1]);
  }
  if (e.has_else) {
    out_ += " ELSE ";
    ResultValue(*e.args.back());
  }
  out_ += " END";
}

}  // namespace orv::sql::print
