// The statement tree.
//
// The parser builds it untyped: names as written, operators as written, each
// node with its source position. The binder then resolves every name against
// the schema and fills the `bound` parts in place (the type of every
// expression, the table a column comes from, the meaning of each operator),
// inserting explicit conversion nodes where SQL Server converts implicitly.
// The printers read only bound trees, so every type-dependent decision is
// taken once, in the binder.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sql/lexer.h"
#include "platform/sql/translate.h"

namespace orv::sql {

struct Select;
struct Query;
struct TableSource;
using SelectPtr = std::unique_ptr<Select>;
using QueryPtr = std::unique_ptr<Query>;

// A type as written in CAST/CONVERT: `varchar(50)`, `decimal(10, 2)`, `int`.
struct TypeName {
  std::string name;  // lower case
  int length = -1;   // first number in parentheses; -1 when none; 0 for MAX
  int scale = -1;    // second number; -1 when none
};

// The typed value of an expression, decided by the binder.
struct ExprType {
  ValueKind kind = ValueKind::Unknown;
  int length = 0;     // declared length of text, 0 when unknown
  bool is_null = false;  // the NULL literal (takes the other operand's type)
};

enum class ExprKind {
  Null,
  Number,     // text: the digits as written
  String,     // text: the value
  Column,     // qualifier (may be empty) and text: the name as written
  Star,       // `*` or `t.*` (only in select lists and COUNT(*))
  Unary,      // text: "-", "+", "~", "NOT"; args[0]
  Binary,     // text: the operator as written ("+", "=", ...); args[0], args[1]
  Logical,    // text: "AND" or "OR"; args: two or more operands, flattened
  Function,   // text: upper-case name; args; distinct for COUNT(DISTINCT x)
  DatePart,   // the first argument of DATEADD/DATEDIFF/DATEPART; text: canonical part
  Case,       // args: [operand], then WHEN/THEN pairs, then [ELSE]; has_operand, has_else
  Cast,       // CAST(args[0] AS type) and CONVERT(type, args[0] [, style = args[1]])
  Subquery,   // (SELECT ...) as a value; query
  Exists,     // EXISTS (SELECT ...); query
  InList,     // args[0] [NOT] IN (args[1..])
  InQuery,    // args[0] [NOT] IN (query)
  Between,    // args[0] [NOT] BETWEEN args[1] AND args[2]
  Like,       // args[0] [NOT] LIKE args[1] [ESCAPE args[2]]
  IsNull,     // args[0] IS [NOT] NULL
  Bool,       // True/False of host filters (bound from an unresolved name); text "1"/"0"
  // Made by the binder only:
  Convert,    // implicit conversion of args[0] to `type.kind`
};

// What the binder decided an operator means on the server.
enum class BoundOp {
  None,
  Concat,        // text + text
  Add, Subtract, Multiply, Divide, Modulo,
  IntDivide,     // integer / integer truncates
  AddDays,       // datetime + n, n + datetime
  SubtractDays,  // datetime - n
  BitAnd, BitOr, BitXor,
  CompareText,   // comparison under the server's case-insensitive, blank-padded collation
  CompareOther,  // numbers, dates: compared as values
  FlagTrue,      // flag = True / flag <> False: nonzero
  FlagFalse,     // flag = False / flag <> True: zero
};

struct Expr {
  ExprKind kind;
  Pos pos;
  std::string text;
  std::string qualifier;            // Column, Star
  std::vector<std::unique_ptr<Expr>> args;
  QueryPtr query;                   // Subquery, Exists, InQuery
  TypeName type_name;               // Cast
  bool negated = false;             // NOT IN, NOT BETWEEN, NOT LIKE, IS NOT NULL, NOT EXISTS
  bool distinct = false;            // COUNT(DISTINCT x)
  bool has_operand = false;         // CASE x WHEN ...
  bool has_else = false;
  bool is_convert = false;          // written as CONVERT
  int depth = 1;                    // height of the tree below, to refuse absurd nesting

  // Filled by the binder.
  ExprType type;
  BoundOp op = BoundOp::None;
  std::string table_alias;          // Column: the engine alias of its table
  std::string column_name;          // Column: the name as declared
  bool is_aggregate = false;        // Function: SUM, COUNT, ...

  Expr(ExprKind k, Pos p) : kind(k), pos(p) {}
};
using ExprPtr = std::unique_ptr<Expr>;

struct SelectItem {
  Pos pos;
  ExprPtr expr;        // Star for `*` and `t.*`
  std::string alias;   // empty when none was written
  bool has_alias = false;
  // Filled by the binder: the item's result columns (a star gives several).
  struct Output {
    std::string name;          // result column name
    ExprType type;
    std::string table_alias;   // star expansion: where the column comes from
    std::string column_name;
  };
  std::vector<Output> outputs;
};

enum class JoinType { Inner, Left, Right, Full, Cross };

struct TableSource {
  enum class Kind { Table, Derived, Join } kind = Kind::Table;
  Pos pos;
  std::string table;      // Table: the name (schema prefix dropped)
  std::string alias;      // as written; empty when none
  QueryPtr query;         // Derived
  JoinType join = JoinType::Inner;
  std::unique_ptr<TableSource> left, right;  // Join
  ExprPtr on;                                // Join
  bool parenthesised = false;
  // Filled by the binder.
  std::string engine_alias;   // unique alias in the printed statement
  // The columns in order: a table's are the schema's own list, which the
  // schema keeps for as long as it lives (a table of a hundred columns is
  // not copied for every statement that names it); a derived table's are
  // its own.
  const std::vector<ColumnType>* table_columns = nullptr;  // Table
  std::vector<ColumnType> columns;                         // Derived
  const std::vector<ColumnType>& Columns() const { return table_columns ? *table_columns : columns; }
};
using TableSourcePtr = std::unique_ptr<TableSource>;

struct OrderItem {
  ExprPtr expr;
  bool descending = false;
  // Filled by the binder: 1-based select-list position when the item names
  // a result column (an alias, or in a UNION any result column); 0 otherwise.
  int output_position = 0;
};

struct Select {
  Pos pos;
  bool distinct = false;
  ExprPtr top;                       // TOP n
  std::vector<SelectItem> items;
  std::vector<TableSourcePtr> from;  // comma-separated sources
  ExprPtr where;
  std::vector<ExprPtr> group_by;
  bool rollup = false;
  ExprPtr having;
};

// SELECT, or SELECTs joined by UNION [ALL] / EXCEPT / INTERSECT, with the
// ORDER BY that applies to the whole.
struct Query {
  Pos pos;
  std::vector<SelectPtr> selects;
  std::vector<std::string> set_ops;  // between selects: "UNION ALL", "UNION", ...
  std::vector<OrderItem> order_by;
  // Set by the binder when the statement gave no ORDER BY and the binder
  // supplied one (Binder::ImplyOrder); its items are a key of the rows.
  bool implied_order = false;
  // Set by the binder when the statement wrote its own ORDER BY over rows of
  // base tables: their primary keys (those not written already), ordered by
  // after every other key so that no two rows tie.
  std::vector<OrderItem> key_ties;
};

struct Assignment {
  Pos pos;
  std::string column;
  ExprPtr value;
  // Filled by the binder.
  std::string column_name;
};

struct Statement {
  enum class Kind { Select, Update, Insert, Delete } kind = Kind::Select;
  Pos pos;
  std::string text;                  // as written, for the messages of later passes
  QueryPtr query;                    // Select; Insert ... SELECT
  std::string table;                 // Update, Insert, Delete
  Pos table_pos;
  std::vector<Assignment> sets;      // Update
  std::vector<std::string> insert_columns;
  std::vector<std::vector<ExprPtr>> insert_rows;  // Insert ... VALUES
  ExprPtr where;                     // Update, Delete
  // Filled by the binder.
  std::string table_name;            // as declared in the schema
  std::vector<std::string> insert_column_names;
};

// How deep a statement may nest: an expression inside another (an operand,
// a function's argument, a parenthesis), a query inside another, a join of
// a FROM item upon the ones before it. The parser, the binder and the
// printers count their depth as they descend and refuse a statement past
// the limit before they recurse further, so none of them can run out of
// stack. The binder and the printers allow twice as much, for the
// conversions and rewrites the binder adds. Real statements stay far below.
inline constexpr int kMaxNesting = 400;

// One level of a recursive pass, counted in `depth` for as long as it
// lives. Throws SqlError at `at` in `statement`, naming the limit, when the
// level would pass `limit`.
class NestingLevel {
 public:
  NestingLevel(int& depth, int limit, Pos at, std::string_view statement);
  ~NestingLevel() { --depth_; }
  // The message of a statement nested past `limit` levels.
  static std::string Message(int limit);
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

 private:
  int& depth_;
};

// True when `e` aggregates over the rows of its own SELECT (a subquery's
// aggregates are the subquery's).
bool HasAggregate(const Expr& e);

// A copy of a bound expression; nullptr when it holds a subquery.
ExprPtr CopyBound(const Expr& e);

// A bound column of integer type.
bool IsIntegerColumn(const Expr& e);

// The top-level conjuncts of a condition (the condition itself when it is
// no AND); none for nullptr.
std::vector<Expr*> Conjuncts(Expr* condition);

// Removes conjunct `i` (as Conjuncts counts) from `where`: an AND left with
// one operand becomes that operand, a condition left with none is dropped.
void RemoveConjunct(ExprPtr& where, size_t i);

}  // namespace orv::sql
