#include "platform/sql/lookup_batch.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "platform/sql/ast.h"
#include "platform/sql/binder.h"
#include "platform/sql/decorrelate.h"
#include "platform/sql/join_keys.h"
#include "platform/sql/parser.h"
#include "platform/sql/print_postgres.h"
#include "platform/sql/print_sqlite.h"

namespace orv::sql {

namespace {

// The name of the key column in the batched result; no practice column is
// called this.
constexpr const char* kKeyColumn = "orv_batch_key";

bool IsAt(const Expr& e, Pos at) { return e.pos.line == at.line && e.pos.column == at.column; }

bool IsBareAggregate(const Expr& e) {
  if (e.kind != ExprKind::Function || !e.is_aggregate || e.distinct) return false;
  for (const auto& a : e.args)
    if (a && HasAggregate(*a)) return false;
  return e.text == "SUM" || e.text == "COUNT" || e.text == "MIN" || e.text == "MAX" || e.text == "AVG";
}

// A whole number written as is (17) or as text ('17'): an integer column
// compared with the text compares with the number it spells.
bool IsWholeNumberLiteral(const Expr& e) {
  if (e.kind != ExprKind::Number && e.kind != ExprKind::String) return false;
  return !e.text.empty() && e.text.size() <= 18 && e.text.find_first_not_of("0123456789") == std::string::npos;
}

// The integer column of a conjunct "column = <literal at `key`>" (either
// side), or nullptr.
const Expr* KeyColumn(const Expr& conjunct, Pos key) {
  if (conjunct.kind != ExprKind::Binary || conjunct.text != "=" || conjunct.args.size() != 2) return nullptr;
  const Expr* l = conjunct.args[0].get();
  const Expr* r = conjunct.args[1].get();
  // The binder converts text compared with a number to the number.
  auto literal = [](const Expr* e) {
    return e->kind == ExprKind::Convert && e->args.size() == 1 ? e->args[0].get() : e;
  };
  if (IsAt(*literal(l), key)) std::swap(l, r);
  r = literal(r);
  if (!IsAt(*r, key) || !IsWholeNumberLiteral(*r)) return nullptr;
  // Only an integer column groups exactly as "=" selects: a text column
  // would group under the collation, a money column by its decimals.
  if (!IsIntegerColumn(*l)) return nullptr;
  return l;
}

// "column IN (keys...)"; for no keys "IN (NULL)", which holds for no row.
ExprPtr KeyIn(ExprPtr column, const std::vector<int64_t>& keys) {
  auto in = std::make_unique<Expr>(ExprKind::InList, column->pos);
  in->type.kind = ValueKind::Boolean;
  in->op = BoundOp::CompareOther;
  in->args.push_back(std::move(column));
  for (int64_t key : keys) {
    auto number = std::make_unique<Expr>(ExprKind::Number, in->pos);
    number->text = std::to_string(key);
    number->type.kind = ValueKind::Integer;
    in->args.push_back(std::move(number));
  }
  if (keys.empty()) {
    auto none = std::make_unique<Expr>(ExprKind::Null, in->pos);
    none->type.kind = ValueKind::Integer;
    none->type.is_null = true;
    in->args.push_back(std::move(none));
  }
  return in;
}

// Adds `condition` as a conjunct at the top of the WHERE clause.
void AndWhere(Select& s, ExprPtr condition) {
  if (!s.where) {
    s.where = std::move(condition);
    return;
  }
  auto both = std::make_unique<Expr>(ExprKind::Logical, s.where->pos);
  both->text = "AND";
  both->type.kind = ValueKind::Boolean;
  both->args.push_back(std::move(s.where));
  both->args.push_back(std::move(condition));
  s.where = std::move(both);
}

}  // namespace

std::optional<BatchedLookup> TranslateBatchedLookup(std::string_view tsql, Pos key, const Schema& schema,
                                                    Dialect dialect, int64_t row_limit,
                                                    const std::vector<int64_t>* only) {
  Statement st = Parse(tsql);
  Bind(st, schema, tsql);
  MoveDisjunctionsOntoOneTable(st);
  if (st.kind != Statement::Kind::Select || st.query->selects.size() != 1) return std::nullopt;
  Query& q = *st.query;
  Select& s = *q.selects[0];
  if (s.distinct || s.top || !s.group_by.empty() || s.rollup || s.having || !s.where) return std::nullopt;

  // The key conjunct, at the top of the WHERE clause.
  const Expr* column = nullptr;
  size_t conjunct = 0;
  const std::vector<Expr*> conjuncts = Conjuncts(s.where.get());
  for (; conjunct < conjuncts.size() && !column; ++conjunct) column = KeyColumn(*conjuncts[conjunct], key);
  --conjunct;
  if (!column) return std::nullopt;

  // All bare aggregates, or none at all.
  size_t aggregates = 0, outputs = 0;
  for (const SelectItem& item : s.items) {
    outputs += item.outputs.size();
    if (item.expr && HasAggregate(*item.expr)) {
      if (!IsBareAggregate(*item.expr)) return std::nullopt;
      ++aggregates;
    }
  }
  const bool aggregate = aggregates > 0;
  if (aggregate && (aggregates != s.items.size() || !q.order_by.empty())) return std::nullopt;

  BatchedLookup out;
  out.aggregate = aggregate;
  if (aggregate)
    for (const SelectItem& item : s.items) out.count_columns.push_back(item.expr->text == "COUNT");

  // The key leads the select list, groups an aggregate lookup, and orders
  // a plain lookup's rows so that each key's rows lie together, in the
  // lookup's own order within the key. An aggregate lookup gives one row a
  // key and needs no order: on the server, ordering the invoices' payment
  // totals cost a sort of every payment line before they were summed, a
  // quarter of the read.
  ExprPtr key_column = CopyBound(*column);
  SelectItem item;
  item.pos = column->pos;
  item.alias = kKeyColumn;
  item.has_alias = true;
  item.outputs.push_back({kKeyColumn, column->type, "", ""});
  if (aggregate) {
    s.group_by.push_back(CopyBound(*column));
  } else {
    for (OrderItem& o : q.order_by)
      if (o.output_position > 0) ++o.output_position;
    OrderItem first;
    first.expr = CopyBound(*column);
    first.output_position = 1;
    q.order_by.insert(q.order_by.begin(), std::move(first));
  }
  item.expr = std::move(key_column);
  s.items.insert(s.items.begin(), std::move(item));

  ExprPtr restriction = only ? KeyIn(CopyBound(*column), *only) : nullptr;
  RemoveConjunct(s.where, conjunct);
  if (restriction) AndWhere(s, std::move(restriction));

  auto limit = std::make_unique<Expr>(ExprKind::Number, s.pos);
  limit->text = std::to_string(row_limit + 1);
  limit->type.kind = ValueKind::Integer;
  s.top = std::move(limit);

  out.translation.sql = dialect == Dialect::PostgreSQL ? PrintPostgres(st) : PrintSqlite(st);
  out.translation.is_query = true;
  for (const SelectItem& i : s.items)
    for (const auto& o : i.outputs)
      out.translation.columns.push_back({o.name, o.type.is_null ? ValueKind::Unknown : o.type.kind});
  if (out.translation.columns.size() != outputs + 1) return std::nullopt;
  return out;
}

std::optional<Translation> TranslateRestrictedToKeys(std::string_view tsql, std::string_view column,
                                                     const std::vector<int64_t>& keys, const Schema& schema,
                                                     Dialect dialect) {
  Statement st = Parse(tsql);
  Bind(st, schema, tsql);
  if (st.kind != Statement::Kind::Select || st.query->selects.size() != 1) return std::nullopt;
  Select& s = *st.query->selects[0];
  if (s.distinct || s.top || !s.group_by.empty() || s.rollup || s.having) return std::nullopt;
  auto same_name = [](std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
             return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
  };
  // Only a column of a table: its value is what the row holds, so "IN"
  // keeps exactly the rows whose column equals a key. An integer column, so
  // that the keys compare as the parent's relate values do.
  ExprPtr key_column;
  for (const SelectItem& item : s.items) {
    if (!item.expr || HasAggregate(*item.expr)) return std::nullopt;
    for (const SelectItem::Output& o : item.outputs) {
      if (!same_name(o.name, column)) continue;
      if (key_column) return std::nullopt;
      if (item.expr->kind == ExprKind::Star) {
        // "SELECT *": the column the star brought, by its table's alias.
        key_column = std::make_unique<Expr>(ExprKind::Column, item.pos);
        key_column->text = o.column_name;
        key_column->table_alias = o.table_alias;
        key_column->column_name = o.column_name;
        key_column->type = o.type;
      } else {
        key_column = CopyBound(*item.expr);
      }
      if (!key_column || !IsIntegerColumn(*key_column) || key_column->column_name.empty()) return std::nullopt;
    }
  }
  if (!key_column) return std::nullopt;

  AndWhere(s, KeyIn(std::move(key_column), keys));
  // As Translate prepares a statement for the engine.
  MoveDisjunctionsOntoOneTable(st);
  if (dialect == Dialect::PostgreSQL) DecorrelateAggregateSubqueries(st);

  Translation out;
  out.sql = dialect == Dialect::PostgreSQL ? PrintPostgres(st) : PrintSqlite(st);
  out.is_query = true;
  for (const SelectItem& i : s.items)
    for (const auto& o : i.outputs)
      out.columns.push_back({o.name, o.type.is_null ? ValueKind::Unknown : o.type.kind});
  return out;
}

}  // namespace orv::sql
