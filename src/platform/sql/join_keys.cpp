#include "platform/sql/join_keys.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orv::sql {

namespace {

// "a.x = b.y" between integer columns of two tables.
bool IsColumnEquality(const Expr& e) {
  return e.kind == ExprKind::Binary && e.text == "=" && e.op == BoundOp::CompareOther && e.args.size() == 2 &&
         IsIntegerColumn(*e.args[0]) && IsIntegerColumn(*e.args[1]) &&
         e.args[0]->table_alias != e.args[1]->table_alias;
}

using Equality = std::pair<const Expr*, const Expr*>;

// Equalities of INNER JOINs whose rows are all kept: not under the NULL
// side of an outer join.
void JoinEqualities(const TableSource& src, std::vector<Equality>& out) {
  if (src.kind != TableSource::Kind::Join) return;
  switch (src.join) {
    case JoinType::Inner:
      for (const Expr* c : Conjuncts(src.on.get()))
        if (IsColumnEquality(*c)) out.emplace_back(c->args[0].get(), c->args[1].get());
      JoinEqualities(*src.left, out);
      JoinEqualities(*src.right, out);
      break;
    case JoinType::Cross: JoinEqualities(*src.left, out), JoinEqualities(*src.right, out); break;
    case JoinType::Left: JoinEqualities(*src.left, out); break;
    case JoinType::Right: JoinEqualities(*src.right, out); break;
    case JoinType::Full: break;
  }
}

// The tables a term names; false when it holds a subquery (whose columns
// this pass does not follow).
bool TablesOf(const Expr& e, std::set<std::string>& tables) {
  if (e.query) return false;
  if (e.kind == ExprKind::Column) tables.insert(e.table_alias);
  for (const auto& a : e.args)
    if (a && !TablesOf(*a, tables)) return false;
  return true;
}

// The column of "column = number" (either side) on `table`, or nullptr.
Expr* KeyTermColumn(Expr& term, const std::string& table) {
  if (term.kind != ExprKind::Binary || term.text != "=" || term.op != BoundOp::CompareOther || term.args.size() != 2)
    return nullptr;
  Expr* l = term.args[0].get();
  Expr* r = term.args[1].get();
  if (l->kind == ExprKind::Number) std::swap(l, r);
  if (r->kind != ExprKind::Number || !IsIntegerColumn(*l) || l->table_alias != table) return nullptr;
  return l;
}

// The column of `to` that `column` is joined to, or nullptr.
const Expr* JoinedColumn(const Expr& column, const std::string& to, const std::vector<Equality>& equalities) {
  for (const auto& [a, b] : equalities) {
    if (a->table_alias == column.table_alias && a->column_name == column.column_name && b->table_alias == to) return b;
    if (b->table_alias == column.table_alias && b->column_name == column.column_name && a->table_alias == to) return a;
  }
  return nullptr;
}

// The terms of an OR, through ORs in parentheses: "(a OR b) OR (c OR d)".
void OrTerms(Expr& e, std::vector<Expr*>& out) {
  if (e.kind == ExprKind::Logical && e.text == "OR") {
    for (auto& a : e.args) OrTerms(*a, out);
  } else {
    out.push_back(&e);
  }
}

// Moves the terms on `from` onto `to`, if all of them can.
bool MoveTerms(const std::vector<Expr*>& terms, const std::string& from, const std::string& to,
               const std::vector<Equality>& equalities) {
  std::vector<std::pair<Expr*, const Expr*>> moves;
  for (Expr* term : terms) {
    std::set<std::string> tables;
    TablesOf(*term, tables);
    if (!tables.count(from)) continue;
    Expr* column = KeyTermColumn(*term, from);
    const Expr* target = column ? JoinedColumn(*column, to, equalities) : nullptr;
    if (!target) return false;
    moves.emplace_back(column, target);
  }
  for (auto& [column, target] : moves) {
    column->qualifier = target->qualifier;
    column->text = target->text;
    column->table_alias = target->table_alias;
    column->column_name = target->column_name;
    column->type = target->type;
  }
  return !moves.empty();
}

void RewriteSelect(Select& s) {
  if (!s.where) return;
  std::vector<Equality> equalities;
  for (const auto& src : s.from) JoinEqualities(*src, equalities);
  for (const Expr* c : Conjuncts(s.where.get()))
    if (IsColumnEquality(*c)) equalities.emplace_back(c->args[0].get(), c->args[1].get());
  if (equalities.empty()) return;

  std::vector<Expr*> ors;
  if (s.where->kind == ExprKind::Logical && s.where->text == "OR") ors.push_back(s.where.get());
  if (s.where->kind == ExprKind::Logical && s.where->text == "AND")
    for (auto& a : s.where->args)
      if (a->kind == ExprKind::Logical && a->text == "OR") ors.push_back(a.get());
  for (Expr* disjunction : ors) {
    std::vector<Expr*> terms;
    OrTerms(*disjunction, terms);
    std::set<std::string> tables;
    bool plain = true;
    for (const Expr* term : terms) plain = plain && TablesOf(*term, tables);
    if (!plain || tables.size() != 2) continue;
    const std::string first = *tables.begin(), second = *tables.rbegin();
    // Onto the table more terms already name, so that fewer move.
    size_t on_first = 0;
    for (const Expr* term : terms) {
      std::set<std::string> t;
      TablesOf(*term, t);
      on_first += t.count(first);
    }
    const bool first_is_target = on_first * 2 > terms.size();
    const std::string& to = first_is_target ? first : second;
    const std::string& from = first_is_target ? second : first;
    if (!MoveTerms(terms, from, to, equalities)) MoveTerms(terms, to, from, equalities);
  }
}

void RewriteQuery(Query& q);

void RewriteExpr(Expr* e) {
  if (!e) return;
  if (e->query) RewriteQuery(*e->query);
  for (auto& a : e->args) RewriteExpr(a.get());
}

void RewriteSource(TableSource& src) {
  if (src.query) RewriteQuery(*src.query);
  if (src.left) RewriteSource(*src.left);
  if (src.right) RewriteSource(*src.right);
  RewriteExpr(src.on.get());
}

void RewriteQuery(Query& q) {
  for (auto& s : q.selects) {
    RewriteSelect(*s);
    for (auto& item : s->items) RewriteExpr(item.expr.get());
    for (auto& src : s->from) RewriteSource(*src);
    RewriteExpr(s->where.get());
    RewriteExpr(s->having.get());
  }
}

}  // namespace

void MoveDisjunctionsOntoOneTable(Statement& st) {
  if (st.query) RewriteQuery(*st.query);
  RewriteExpr(st.where.get());
}

}  // namespace orv::sql
