#include "platform/sql/ast.h"

namespace orv::sql {

std::string NestingLevel::Message(int limit) {
  return "The statement nests more than " + std::to_string(limit) +
         " levels deep (expressions within expressions, subqueries, joins)";
}

NestingLevel::NestingLevel(int& depth, int limit, Pos at, std::string_view statement) : depth_(depth) {
  if (depth_ >= limit) throw SqlError(Message(limit), at.line, at.column, std::string(statement));
  ++depth_;
}

// True when `e` aggregates over the rows of its own SELECT (a subquery's
// aggregates are the subquery's).
bool HasAggregate(const Expr& e) {
  if (e.kind == ExprKind::Function && e.is_aggregate) return true;
  for (const auto& a : e.args) {
    if (HasAggregate(*a)) return true;
  }
  return false;
}

// A copy of a bound expression; nullptr when it holds a subquery.
ExprPtr CopyBound(const Expr& e) {
  if (e.query) return nullptr;
  auto c = std::make_unique<Expr>(e.kind, e.pos);
  c->text = e.text;
  c->qualifier = e.qualifier;
  c->type_name = e.type_name;
  c->negated = e.negated;
  c->distinct = e.distinct;
  c->has_operand = e.has_operand;
  c->has_else = e.has_else;
  c->is_convert = e.is_convert;
  c->depth = e.depth;
  c->type = e.type;
  c->op = e.op;
  c->table_alias = e.table_alias;
  c->column_name = e.column_name;
  c->is_aggregate = e.is_aggregate;
  for (const auto& a : e.args) {
    ExprPtr arg = CopyBound(*a);
    if (!arg) return nullptr;
    c->args.push_back(std::move(arg));
  }
  return c;
}

bool IsIntegerColumn(const Expr& e) { return e.kind == ExprKind::Column && e.type.kind == ValueKind::Integer; }

std::vector<Expr*> Conjuncts(Expr* condition) {
  std::vector<Expr*> out;
  if (!condition) return out;
  if (condition->kind == ExprKind::Logical && condition->text == "AND") {
    for (auto& a : condition->args) out.push_back(a.get());
  } else {
    out.push_back(condition);
  }
  return out;
}

void RemoveConjunct(ExprPtr& where, size_t i) {
  if (where->kind != ExprKind::Logical || where->text != "AND") {
    where.reset();
    return;
  }
  where->args.erase(where->args.begin() + static_cast<std::ptrdiff_t>(i));
  if (where->args.size() == 1) where = std::move(where->args[0]);
}

}  // namespace orv::sql
