#include "platform/sql/decorrelate.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orv::sql {

void Aliases(const TableSource& src, std::set<std::string>& out) {
  if (src.kind == TableSource::Kind::Join) {
    Aliases(*src.left, out);
    Aliases(*src.right, out);
  } else {
    out.insert(src.engine_alias);
  }
}

bool HasQuery(const Expr& e) {
  if (e.query) return true;
  for (const auto& a : e.args)
    if (a && HasQuery(*a)) return true;
  return false;
}

bool NamesOuter(const Expr& e, const std::set<std::string>& own) {
  if (e.kind == ExprKind::Column && !own.count(e.table_alias)) return true;
  for (const auto& a : e.args)
    if (a && NamesOuter(*a, own)) return true;
  return false;
}

namespace {

bool SourceNamesOuter(const TableSource& src, const std::set<std::string>& own) {
  if (src.kind == TableSource::Kind::Derived) return true;  // not followed: leave it alone
  if (src.kind != TableSource::Kind::Join) return false;
  if (src.on && (NamesOuter(*src.on, own) || HasQuery(*src.on))) return true;
  return SourceNamesOuter(*src.left, own) || SourceNamesOuter(*src.right, own);
}


ExprPtr NewColumn(const std::string& alias, const std::string& name, const ExprType& type, Pos pos) {
  auto e = std::make_unique<Expr>(ExprKind::Column, pos);
  e->text = name;
  e->qualifier = alias;
  e->table_alias = alias;
  e->column_name = name;
  e->type = type;
  return e;
}

class Decorrelator {
 public:
  explicit Decorrelator(Select& outer) : outer_(outer) {
    for (const auto& src : outer.from) Aliases(*src, outer_aliases_);
  }

  void Visit(ExprPtr& e) {
    if (!e) return;
    if (e->kind == ExprKind::Subquery && e->query) {
      Rewrite(e);
      return;
    }
    for (auto& a : e->args) Visit(a);
  }

 private:
  // The subquery `e` as a grouped LEFT JOIN of the outer FROM, when it
  // qualifies; otherwise left as it is.
  void Rewrite(ExprPtr& e) {
    Query& q = *e->query;
    if (q.selects.size() != 1 || !q.order_by.empty()) return;
    Select& s = *q.selects[0];
    if (s.distinct || s.top || !s.group_by.empty() || s.rollup || s.having || !s.where || s.items.size() != 1)
      return;
    const Expr& value = *s.items[0].expr;
    if (value.kind != ExprKind::Function || !value.is_aggregate || value.distinct ||
        !(value.text == "SUM" || value.text == "MIN" || value.text == "MAX" || value.text == "AVG"))
      return;
    for (const auto& a : value.args)
      if (a && (HasAggregate(*a) || HasQuery(*a))) return;

    std::set<std::string> own;
    for (const auto& src : s.from) Aliases(*src, own);
    for (const auto& src : s.from)
      if (SourceNamesOuter(*src, own)) return;
    if (NamesOuter(value, own)) return;

    // Exactly one conjunct names the outer query: inner = outer, integers.
    const std::vector<Expr*> conjuncts = Conjuncts(s.where.get());
    int link = -1;
    for (size_t i = 0; i < conjuncts.size(); ++i) {
      const Expr& c = *conjuncts[i];
      if (HasQuery(c)) return;
      if (!NamesOuter(c, own)) continue;
      const bool equality = c.kind == ExprKind::Binary && c.text == "=" && c.op == BoundOp::CompareOther &&
                            IsIntegerColumn(*c.args[0]) && IsIntegerColumn(*c.args[1]);
      if (!equality || link >= 0) return;
      link = static_cast<int>(i);
    }
    if (link < 0) return;
    const Expr* inner = conjuncts[link]->args[0].get();
    const Expr* outer = conjuncts[link]->args[1].get();
    if (!own.count(inner->table_alias)) std::swap(inner, outer);
    if (!own.count(inner->table_alias) || !outer_aliases_.count(outer->table_alias)) return;

    // The derived table: the key first, then the aggregate, grouped.
    const std::string alias = "d" + std::to_string(++count_);
    ExprPtr key = CopyBound(*inner);
    ExprPtr on = std::make_unique<Expr>(ExprKind::Binary, e->pos);
    on->text = "=";
    on->op = BoundOp::CompareOther;
    on->type.kind = ValueKind::Boolean;
    on->args.push_back(NewColumn(alias, "k", inner->type, e->pos));
    on->args.push_back(CopyBound(*outer));
    const std::string outer_alias = outer->table_alias;
    s.group_by.push_back(CopyBound(*inner));
    RemoveConjunct(s.where, static_cast<size_t>(link));  // `inner` and `outer` go with it

    SelectItem key_item;
    key_item.pos = e->pos;
    key_item.alias = "k";
    key_item.has_alias = true;
    key_item.outputs.push_back({"k", key->type, "", ""});
    key_item.expr = std::move(key);
    SelectItem& value_item = s.items[0];
    value_item.alias = "v";
    value_item.has_alias = true;
    value_item.outputs.resize(1);
    value_item.outputs[0].name = "v";
    const ExprType value_type = e->type;
    s.items.insert(s.items.begin(), std::move(key_item));

    auto derived = std::make_unique<TableSource>();
    derived->kind = TableSource::Kind::Derived;
    derived->pos = e->pos;
    derived->alias = alias;
    derived->engine_alias = alias;
    derived->columns = {{"k", "", ValueKind::Integer, 0}, {"v", "", value_type.kind, 0}};
    derived->query = std::move(e->query);

    // Joined to the FROM item that holds the outer column.
    for (auto& src : outer_.from) {
      std::set<std::string> here;
      Aliases(*src, here);
      if (!here.count(outer_alias)) continue;
      auto join = std::make_unique<TableSource>();
      join->kind = TableSource::Kind::Join;
      join->pos = e->pos;
      join->join = JoinType::Left;
      join->left = std::move(src);
      join->right = std::move(derived);
      join->on = std::move(on);
      src = std::move(join);
      break;
    }
    e = NewColumn(alias, "v", value_type, e->pos);
  }

  Select& outer_;
  std::set<std::string> outer_aliases_;
  int count_ = 0;
};

}  // namespace

void DecorrelateAggregateSubqueries(Statement& st) {
  if (st.kind != Statement::Kind::Select || !st.query || st.query->selects.size() != 1) return;
  Select& s = *st.query->selects[0];
  if (!s.group_by.empty() || s.rollup || s.having || s.from.empty()) return;
  for (const SelectItem& item : s.items)
    if (item.expr && HasAggregate(*item.expr)) return;
  Decorrelator d(s);
  for (SelectItem& item : s.items) d.Visit(item.expr);
}

}  // namespace orv::sql
