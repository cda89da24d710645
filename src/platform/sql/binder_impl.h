// The binder's working parts, shared by its two files: binder.cpp resolves
// names (scopes, FROM sources, star expansion, ORDER BY) and
// bind_expressions.cpp types expressions (operators, comparisons, functions,
// CAST). Not part of the layer's interface.
#pragma once

#include <cctype>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sql/ast.h"

namespace orv::sql::bind {

inline std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = AsciiLower(c);
  return out;
}
// Names compare as the server's default collation compares identifiers:
// letters without regard to case. Binding a statement compares every
// column it names with the columns of each table in scope, so this folds
// in place rather than making two lower-case copies a comparison.
inline bool SameName(std::string_view a, std::string_view b) { return EqualNoCase(a, b); }

inline bool IsNumeric(ValueKind k) {
  return k == ValueKind::Integer || k == ValueKind::Boolean || k == ValueKind::Float ||
         k == ValueKind::Decimal || k == ValueKind::Money;
}
inline bool IsIntegral(ValueKind k) { return k == ValueKind::Integer || k == ValueKind::Boolean; }

// SQL Server's data type precedence among the kinds the layer knows: the
// operand of lower precedence is converted to the type of the higher.
inline int Precedence(ValueKind k) {
  switch (k) {
    case ValueKind::Date: return 8;
    case ValueKind::Float: return 7;
    case ValueKind::Decimal: return 6;
    case ValueKind::Money: return 5;
    case ValueKind::Integer: return 4;
    case ValueKind::Boolean: return 3;
    case ValueKind::Text: return 2;
    case ValueKind::Blob: return 1;
    case ValueKind::Unknown: return 0;
  }
  return 0;
}

inline ValueKind Higher(ValueKind a, ValueKind b) { return Precedence(a) >= Precedence(b) ? a : b; }

inline const char* KindName(ValueKind k) {
  switch (k) {
    case ValueKind::Integer: return "int";
    case ValueKind::Boolean: return "bit";
    case ValueKind::Float: return "float";
    case ValueKind::Decimal: return "numeric";
    case ValueKind::Money: return "money";
    case ValueKind::Date: return "datetime";
    case ValueKind::Text: return "varchar";
    case ValueKind::Blob: return "image";
    case ValueKind::Unknown: return "unknown";
  }
  return "unknown";
}

// The tables a SELECT sees, and the scope of the query around it (for
// correlated subqueries).
struct Scope {
  Scope* parent = nullptr;
  std::vector<TableSource*> tables;  // Table and Derived sources, in FROM order
};

class Binder {
 public:
  Binder(const Schema& schema, std::string_view text) : schema_(schema), text_(text) {}
  void BindStatement(Statement& st);

 private:
  [[noreturn]] void Fail(const std::string& reason, Pos at) const;
  void BindQuery(Query& q, Scope* outer);
  static size_t OutputCount(const Select& s);
  // ORDER BY names a result column by alias or position, or (in a single
  // SELECT) any expression over the FROM tables. After a UNION it must name
  // a result column of the first SELECT.
  void BindOrderItem(OrderItem& item, Query& q, Scope* scope);
  // The ORDER BY of a statement's own query that gave none (see binder.cpp).
  void ImplyOrder(Query& q);
  // True when the select list or HAVING of `s` aggregates.
  static bool IsAggregate(const Select& s);
  // Appends the primary key of each table of `s` in the order they are
  // written; false (with `order` partly filled) when a source has no key.
  bool KeyOrder(const Select& s, std::vector<OrderItem>& order) const;
  Scope* BindSelect(Select& s, Scope* outer);
  void AddSources(TableSource& src, Scope* scope, Scope* outer);
  void BindJoinConditions(TableSource& src, Scope* scope);
  void BindItem(SelectItem& item, Scope* scope);
  void BindWrite(Statement& st);
  // A value stored into a column takes the column's type: a date column gets
  // normalised date text, a text column its declared length.
  void ConvertForStore(ExprPtr& value, const ColumnType& c);
  static bool IsCondition(const Expr& e);
  void RequireCondition(const Expr& e);
  void RequireValue(const Expr& e);
  void Wrap(ExprPtr& slot, ExprType to);
  // Makes `slot` a date: a text literal is read now and replaced by its
  // normalised form; other text is converted when the statement runs.
  void ToDate(ExprPtr& slot);
  void BindExpr(ExprPtr& slot, Scope* scope, bool allow_aggregate);
  static const SelectItem::Output& FirstOutput(const Query& q);
  void ResolveColumn(ExprPtr& slot, Scope* scope);
  static bool IsComparison(const std::string& op);
  // Brings the two sides of a comparison to one type as SQL Server does and
  // records how the engine must compare them.
  BoundOp Harmonise(ExprPtr& a, ExprPtr& b, Pos at);
  void BindComparison(Expr& e);
  // IN, NOT IN and BETWEEN: every value is compared with the first operand.
  void BindMembership(Expr& e);
  void BindArithmetic(Expr& e);
  void BindCase(Expr& e, Scope* scope, bool allow_aggregate);
  static bool IsAggregateName(const std::string& n);
  void CheckArgs(const Expr& e, size_t min, size_t max);
  void BindFunction(Expr& e, Scope* scope, bool allow_aggregate);
  void TextArgs(Expr& e, size_t from, size_t to);
  void IntegerArgs(Expr& e, size_t from, size_t to);
  void NumberArgs(Expr& e, size_t from, size_t to);
  // ISNULL(a, b) has a's type: b converts to it, and text b is cut to a's
  // declared length (ISNULL(PreferredName, FirstName) keeps at most
  // PreferredName's length).
  void BindIsNull(Expr& e);
  void BindCast(Expr& e, Scope* scope, bool allow_aggregate);

  const Schema& schema_;
  std::string_view text_;
  int depth_ = 0;  // levels of BindExpr and BindQuery under way
  std::vector<std::unique_ptr<Scope>> scopes_;
  std::unique_ptr<TableSource> target_;
  int alias_count_ = 0;
};

}  // namespace orv::sql::bind
