#include "platform/sql/binder.h"

#include <algorithm>

#include "platform/sql/binder_impl.h"
#include "platform/sql/date_text.h"

namespace orv::sql {
namespace bind {

namespace {

// The name a FROM source is known by: its alias, or the table's name. Asked
// for every table in scope at every qualified column, so not copied.
const std::string& ExposedName(const TableSource& src) {
  return src.alias.empty() ? src.table : src.alias;
}

// The sources of a FROM item in the order they are written.
void SourcesInOrder(const TableSource& src, std::vector<const TableSource*>& out) {
  if (src.kind == TableSource::Kind::Join) {
    SourcesInOrder(*src.left, out);
    SourcesInOrder(*src.right, out);
  } else {
    out.push_back(&src);
  }
}

}  // namespace

void Binder::BindStatement(Statement& st) {
  switch (st.kind) {
    case Statement::Kind::Select:
      BindQuery(*st.query, nullptr);
      ImplyOrder(*st.query);
      return;
    case Statement::Kind::Update:
    case Statement::Kind::Delete:
    case Statement::Kind::Insert:
      BindWrite(st);
      return;
  }
}

void Binder::Fail(const std::string& reason, Pos at) const {
  throw SqlError(reason, at.line, at.column, std::string(text_));
}

// ---- queries ----

void Binder::BindQuery(Query& q, Scope* outer) {
  NestingLevel level(depth_, 2 * kMaxNesting, q.pos, text_);
  std::vector<Scope*> scopes;
  for (auto& s : q.selects) scopes.push_back(BindSelect(*s, outer));
  const Select& first = *q.selects[0];
  size_t width = OutputCount(first);
  for (size_t i = 1; i < q.selects.size(); ++i) {
    if (OutputCount(*q.selects[i]) != width) {
      Fail("All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of "
           "expressions in their target lists",
           q.selects[i]->pos);
    }
  }
  for (OrderItem& item : q.order_by) BindOrderItem(item, q, scopes[0]);
}

size_t Binder::OutputCount(const Select& s) {
  size_t n = 0;
  for (const auto& item : s.items) n += item.outputs.size();
  return n;
}

// ORDER BY names a result column by alias or position, or (in a single
// SELECT) any expression over the FROM tables. After a UNION it must name
// a result column of the first SELECT.
void Binder::BindOrderItem(OrderItem& item, Query& q, Scope* scope) {
  Select& first = *q.selects[0];
  Expr& e = *item.expr;
  bool compound = q.selects.size() > 1;
  if (e.kind == ExprKind::Number && e.text.find_first_not_of("0123456789") == std::string::npos) {
    size_t n = e.text.size() > 6 ? 0 : static_cast<size_t>(std::atoi(e.text.c_str()));
    if (n < 1 || n > OutputCount(first)) {
      Fail("The ORDER BY position number " + e.text + " is out of range of the number of items in the select list",
           e.pos);
    }
    item.output_position = static_cast<int>(n);
    size_t position = 0;
    for (const auto& si : first.items) {
      for (const auto& out : si.outputs) {
        if (++position == n) e.type = out.type;
      }
    }
    return;
  }
  if (e.kind == ExprKind::Column && e.qualifier.empty()) {
    int position = 0;
    for (const auto& si : first.items) {
      for (const auto& out : si.outputs) {
        ++position;
        bool by_alias = si.has_alias && SameName(si.alias, e.text);
        bool by_name = compound && SameName(out.name, e.text);
        if (by_alias || by_name) {
          item.output_position = position;
          e.type = out.type;
          return;
        }
      }
    }
  }
  if (compound || first.rollup) {
    // The term must be one of the first SELECT's items, written the same way.
    int position = 0;
    for (const auto& si : first.items) {
      for (const auto& out : si.outputs) {
        ++position;
        bool same = false;
        if (e.kind == ExprKind::Column) {
          if (si.expr->kind == ExprKind::Column) {
            same = SameName(si.expr->text, e.text) &&
                   (e.qualifier.empty() || SameName(si.expr->qualifier, e.qualifier));
          } else if (si.expr->kind == ExprKind::Star) {
            same = SameName(out.name, e.text);
          }
        }
        if (same) {
          item.output_position = position;
          e.type = out.type;
          return;
        }
      }
    }
    Fail(compound ? "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or "
                    "EXCEPT operator"
                  : "ORDER BY of a query WITH ROLLUP must name a result column",
         e.pos);
  }
  BindExpr(item.expr, scope, /*allow_aggregate=*/true);
}

// A query without ORDER BY comes back in whatever order the engine stores
// or computes it: SQLite scans a table in key order, PostgreSQL in heap
// order (an UPDATE moves the row to the end) and aggregates by hashing.
// So that a report prints the same document on both engines, and the same
// one before and after rows were updated, the statement's own query gets an
// ORDER BY that makes its order total:
//  - rows of base tables: by the primary key of each table in the order the
//    tables are written (a join by the leftmost table's key, then the
//    next). That is the order SQL Server's clustered key gives a scan, and
//    the order SQLite already gives a plain scan of an integer key; where
//    SQLite used an index for the WHERE, it now sorts back to key order.
//    TOP takes its rows in that order too, as a scan on the server does.
//    Any source without a key (a derived table, a view, a table without a
//    primary key) leaves the query as it was: a partial key would not make
//    the order total, and both engines are left alike.
//  - GROUP BY: by the grouping expressions, which are a key of the groups.
//  - DISTINCT: by the result columns in order, which are a key of the rows
//    (ORDER BY of a DISTINCT query may only name result columns).
// A single aggregate row, a compound query (UNION, ...) and WITH ROLLUP
// (the printers order its levels themselves) are left alone, and so are
// subqueries and the SELECT of INSERT ... SELECT, whose order shows nowhere.
// A query that gives its own ORDER BY over rows of base tables keeps it and
// gets the tables' keys as its last tie-breakers (Query::key_ties): rows
// tied on everything else come out in key order on both engines.
void Binder::ImplyOrder(Query& q) {
  if (q.selects.size() != 1) return;
  Select& s = *q.selects[0];
  if (s.rollup || s.from.empty()) return;
  if (!q.order_by.empty()) {
    // A written ORDER BY can leave rows tied (two payments of one invoice on
    // one day); the tables' keys break what the written keys and the
    // result columns leave tied, in the order given above.
    if (s.distinct || !s.group_by.empty() || IsAggregate(s)) return;
    std::vector<OrderItem> keys;
    if (!KeyOrder(s, keys)) return;
    for (OrderItem& k : keys) {
      bool written = false;
      for (const OrderItem& o : q.order_by)
        written = written || (o.expr && o.expr->kind == ExprKind::Column && o.output_position == 0 &&
                              o.expr->table_alias == k.expr->table_alias &&
                              o.expr->column_name == k.expr->column_name);
      if (!written) q.key_ties.push_back(std::move(k));
    }
    return;
  }
  std::vector<OrderItem> order;
  if (s.distinct) {
    int position = 0;
    for (const SelectItem& item : s.items) {
      for (const auto& out : item.outputs) {
        OrderItem o;
        o.output_position = ++position;
        o.expr = std::make_unique<Expr>(ExprKind::Number, s.pos);
        o.expr->text = std::to_string(position);
        o.expr->type = out.type;
        order.push_back(std::move(o));
      }
    }
  } else if (!s.group_by.empty()) {
    for (const ExprPtr& g : s.group_by) {
      OrderItem o;
      o.expr = CopyBound(*g);
      if (!o.expr) return;
      order.push_back(std::move(o));
    }
  } else {
    if (IsAggregate(s) || !KeyOrder(s, order)) return;
  }
  q.order_by = std::move(order);
  q.implied_order = !q.order_by.empty();
}

bool Binder::IsAggregate(const Select& s) {
  bool aggregate = s.having != nullptr;
  for (const SelectItem& item : s.items) aggregate = aggregate || HasAggregate(*item.expr);
  return aggregate;
}

bool Binder::KeyOrder(const Select& s, std::vector<OrderItem>& order) const {
  std::vector<const TableSource*> sources;
  for (const auto& src : s.from) SourcesInOrder(*src, sources);
  for (const TableSource* t : sources) {
    if (t->kind != TableSource::Kind::Table) return false;
    const std::vector<std::string>& key = schema_.PrimaryKey(t->table);
    if (key.empty()) return false;
    for (const std::string& name : key) {
      const std::vector<ColumnType>& columns = t->Columns();
      auto c = std::find_if(columns.begin(), columns.end(),
                            [&](const ColumnType& col) { return SameName(col.name, name); });
      if (c == columns.end()) return false;
      OrderItem o;
      o.expr = std::make_unique<Expr>(ExprKind::Column, s.pos);
      o.expr->text = c->name;
      o.expr->table_alias = t->engine_alias;
      o.expr->column_name = c->name;
      o.expr->type = {c->kind, c->length, false};
      order.push_back(std::move(o));
    }
  }
  return true;
}

Scope* Binder::BindSelect(Select& s, Scope* outer) {
  scopes_.push_back(std::make_unique<Scope>());
  Scope* scope = scopes_.back().get();
  scope->parent = outer;
  for (auto& src : s.from) AddSources(*src, scope, outer);
  for (auto& src : s.from) BindJoinConditions(*src, scope);
  if (s.top) {
    BindExpr(s.top, scope, false);
    if (!IsIntegral(s.top->type.kind)) Fail("The TOP count must be an integer", s.top->pos);
  }
  for (auto& item : s.items) BindItem(item, scope);
  if (s.where) {
    BindExpr(s.where, scope, false);
    RequireCondition(*s.where);
  }
  for (auto& g : s.group_by) BindExpr(g, scope, false);
  if (s.having) {
    BindExpr(s.having, scope, true);
    RequireCondition(*s.having);
  }
  if (s.rollup && s.distinct) Fail("DISTINCT with WITH ROLLUP is not supported", s.pos);
  return scope;
}

void Binder::AddSources(TableSource& src, Scope* scope, Scope* outer) {
  NestingLevel level(depth_, 2 * kMaxNesting, src.pos, text_);
  switch (src.kind) {
    case TableSource::Kind::Join:
      AddSources(*src.left, scope, outer);
      AddSources(*src.right, scope, outer);
      return;
    case TableSource::Kind::Table: {
      const std::vector<ColumnType>* cols = schema_.FindTable(src.table);
      if (!cols) Fail("Invalid object name '" + src.table + "'", src.pos);
      src.table_columns = cols;
      src.table = schema_.TableName(src.table);
      break;
    }
    case TableSource::Kind::Derived: {
      // A derived table sees the outer query's scope but not its siblings.
      BindQuery(*src.query, outer);
      for (const auto& item : src.query->selects[0]->items) {
        for (const auto& out : item.outputs) {
          if (out.name.empty()) Fail("No column name was specified for a column of '" + src.alias + "'", item.pos);
          for (const ColumnType& seen : src.columns) {
            if (SameName(seen.name, out.name)) {
              Fail("The column '" + out.name + "' was specified multiple times for '" + src.alias + "'", item.pos);
            }
          }
          src.columns.push_back({out.name, "", out.type.kind, out.type.length});
        }
      }
      break;
    }
  }
  std::string exposed = src.alias.empty() ? src.table : src.alias;
  for (TableSource* other : scope->tables) {
    if (SameName(ExposedName(*other), exposed)) {
      Fail("The correlation name '" + exposed + "' is specified multiple times in a FROM clause", src.pos);
    }
  }
  src.engine_alias = "t" + std::to_string(++alias_count_);
  scope->tables.push_back(&src);
}


void Binder::BindJoinConditions(TableSource& src, Scope* scope) {
  if (src.kind != TableSource::Kind::Join) return;
  NestingLevel level(depth_, 2 * kMaxNesting, src.pos, text_);
  BindJoinConditions(*src.left, scope);
  BindJoinConditions(*src.right, scope);
  if (src.on) {
    BindExpr(src.on, scope, false);
    RequireCondition(*src.on);
  }
}

void Binder::BindItem(SelectItem& item, Scope* scope) {
  if (item.expr->kind == ExprKind::Star) {
    const std::string& q = item.expr->qualifier;
    bool found = false;
    for (TableSource* t : scope->tables) {
      if (!q.empty() && !SameName(ExposedName(*t), q)) continue;
      found = true;
      for (const ColumnType& c : t->Columns()) {
        item.outputs.push_back({c.name, {c.kind, c.length, false}, t->engine_alias, c.name});
      }
    }
    if (!found) {
      if (q.empty()) Fail("SELECT * with no tables specified is not valid", item.pos);
      Fail("The object name '" + q + "' is not valid for '" + q + ".*'", item.pos);
    }
    return;
  }
  BindExpr(item.expr, scope, true);
  if (IsCondition(*item.expr)) Fail("A condition is not a value in a select list", item.expr->pos);
  SelectItem::Output out;
  out.type = item.expr->type;
  if (item.has_alias) {
    out.name = item.alias;
  } else if (item.expr->kind == ExprKind::Column) {
    out.name = item.expr->column_name;
  }
  item.outputs.push_back(out);
}

// ---- writes ----

void Binder::BindWrite(Statement& st) {
  const std::vector<ColumnType>* cols = schema_.FindTable(st.table);
  if (!cols) Fail("Invalid object name '" + st.table + "'", st.table_pos);
  target_ = std::make_unique<TableSource>();
  target_->kind = TableSource::Kind::Table;
  target_->table = st.table;
  target_->table_columns = cols;
  // The target keeps its own name: SQLite's UPDATE and DELETE take no alias.
  target_->engine_alias = st.table;
  st.table_name = schema_.TableName(st.table);
  scopes_.push_back(std::make_unique<Scope>());
  Scope* scope = scopes_.back().get();
  scope->tables.push_back(target_.get());
  auto column_of = [&](const std::string& name, Pos at) -> const ColumnType& {
    for (const ColumnType& c : *cols) {
      if (SameName(c.name, name)) return c;
    }
    Fail("Invalid column name '" + name + "'", at);
  };
  for (Assignment& a : st.sets) {
    const ColumnType& c = column_of(a.column, a.pos);
    a.column_name = c.name;
    BindExpr(a.value, scope, false);
    ConvertForStore(a.value, c);
  }
  if (st.kind == Statement::Kind::Insert) {
    std::vector<const ColumnType*> targets;
    if (st.insert_columns.empty()) {
      for (const ColumnType& c : *cols) targets.push_back(&c);
    } else {
      for (const std::string& name : st.insert_columns) targets.push_back(&column_of(name, st.table_pos));
    }
    for (const ColumnType* c : targets) st.insert_column_names.push_back(c->name);
    for (auto& row : st.insert_rows) {
      if (row.size() != targets.size()) {
        Fail("There are fewer or more values in the VALUES clause than columns in the INSERT statement",
             row.empty() ? st.pos : row[0]->pos);
      }
      for (size_t i = 0; i < row.size(); ++i) {
        BindExpr(row[i], scope, false);
        ConvertForStore(row[i], *targets[i]);
      }
    }
    if (st.query) {
      BindQuery(*st.query, nullptr);
      if (OutputCount(*st.query->selects[0]) != targets.size()) {
        Fail("The select list of the INSERT does not match its columns", st.query->pos);
      }
    }
  }
  if (st.where) {
    BindExpr(st.where, scope, false);
    RequireCondition(*st.where);
  }
}

// A value stored into a column takes the column's type: a date column gets
// normalised date text, a text column its declared length.
void Binder::ConvertForStore(ExprPtr& value, const ColumnType& c) {
  if (c.kind == ValueKind::Date) {
    ToDate(value);
  } else if (c.kind == ValueKind::Text && value->type.kind != ValueKind::Text && !value->type.is_null &&
             value->type.kind != ValueKind::Unknown) {
    Wrap(value, {ValueKind::Text, 0, false});
  } else if (IsNumeric(c.kind) && value->type.kind == ValueKind::Text) {
    Wrap(value, {IsIntegral(c.kind) ? ValueKind::Integer : ValueKind::Float, 0, false});
  }
}

// ---- expressions ----

bool Binder::IsCondition(const Expr& e) {
  switch (e.kind) {
    case ExprKind::Logical:
    case ExprKind::Exists:
    case ExprKind::InList:
    case ExprKind::InQuery:
    case ExprKind::Between:
    case ExprKind::Like:
    case ExprKind::IsNull:
      return true;
    case ExprKind::Unary:
      return e.text == "NOT";
    case ExprKind::Binary:
      return e.op == BoundOp::CompareText || e.op == BoundOp::CompareOther || e.op == BoundOp::FlagTrue ||
             e.op == BoundOp::FlagFalse;
    default:
      return false;
  }
}

void Binder::RequireCondition(const Expr& e) {
  if (!IsCondition(e)) Fail("An expression of non-boolean type specified in a context where a condition is expected", e.pos);
}

void Binder::RequireValue(const Expr& e) {
  if (IsCondition(e)) Fail("Incorrect syntax: a condition where a value is expected", e.pos);
}

void Binder::Wrap(ExprPtr& slot, ExprType to) {
  auto conv = std::make_unique<Expr>(ExprKind::Convert, slot->pos);
  conv->type = to;
  conv->depth = slot->depth + 1;
  conv->args.push_back(std::move(slot));
  slot = std::move(conv);
}

// Makes `slot` a date: a text literal is read now and replaced by its
// normalised form; other text is converted when the statement runs.
void Binder::ToDate(ExprPtr& slot) {
  Expr& e = *slot;
  if (e.kind == ExprKind::String) {
    std::string iso = NormaliseDateText(e.text);
    if (iso.empty()) Fail("Conversion failed when converting date and/or time from character string '" + e.text + "'", e.pos);
    e.text = iso;
    e.type = {ValueKind::Date, 0, false};
  } else if (e.type.kind == ValueKind::Text || IsNumeric(e.type.kind)) {
    Wrap(slot, {ValueKind::Date, 0, false});
  }
}

void Binder::ResolveColumn(ExprPtr& slot, Scope* scope) {
  Expr& e = *slot;
  for (Scope* s = scope; s; s = s->parent) {
    TableSource* match = nullptr;
    const ColumnType* column = nullptr;
    if (!e.qualifier.empty()) {
      for (TableSource* t : s->tables) {
        if (SameName(ExposedName(*t), e.qualifier)) match = t;
      }
      if (!match) continue;
      for (const ColumnType& c : match->Columns()) {
        if (SameName(c.name, e.text)) column = &c;
      }
      if (!column) Fail("Invalid column name '" + e.qualifier + "." + e.text + "'", e.pos);
    } else {
      for (TableSource* t : s->tables) {
        for (const ColumnType& c : t->Columns()) {
          if (!SameName(c.name, e.text)) continue;
          if (column && match != t) Fail("Ambiguous column name '" + e.text + "'", e.pos);
          match = t;
          column = &c;
        }
      }
      if (!column) continue;
    }
    e.table_alias = match->engine_alias;
    e.column_name = column->name;
    e.type = {column->kind, column->length, false};
    return;
  }
  if (!e.qualifier.empty()) {
    Fail("The multi-part identifier \"" + e.qualifier + "." + e.text + "\" could not be bound", e.pos);
  }
  // The host writes flags as True and False in its filters.
  if (SameName(e.text, "True") || SameName(e.text, "False")) {
    e.kind = ExprKind::Bool;
    e.text = SameName(e.text, "True") ? "1" : "0";
    e.type.kind = ValueKind::Boolean;
    return;
  }
  Fail("Invalid column name '" + e.text + "'", e.pos);
}

}  // namespace bind

void Bind(Statement& st, const Schema& schema, std::string_view text) { bind::Binder(schema, text).BindStatement(st); }

}  // namespace orv::sql
