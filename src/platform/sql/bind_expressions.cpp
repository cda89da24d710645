// Expression typing: every operator, comparison, function and CAST gets
// SQL Server's result type and meaning, with explicit conversions where the
// server converts implicitly.
#include <algorithm>

#include "platform/sql/binder_impl.h"
#include "platform/sql/date_text.h"

namespace orv::sql::bind {

void Binder::BindExpr(ExprPtr& slot, Scope* scope, bool allow_aggregate) {
  Expr& e = *slot;
  NestingLevel level(depth_, 2 * kMaxNesting, e.pos, text_);
  switch (e.kind) {
    case ExprKind::Null:
      e.type = {ValueKind::Unknown, 0, true};
      return;
    case ExprKind::Number:
      if (e.text.find_first_of("eE") != std::string::npos) {
        e.type.kind = ValueKind::Float;
      } else if (e.text.find('.') != std::string::npos || e.text.size() > 18) {
        e.type.kind = ValueKind::Decimal;
      } else {
        e.type.kind = ValueKind::Integer;
      }
      return;
    case ExprKind::String:
      e.type = {ValueKind::Text, static_cast<int>(e.text.size()), false};
      return;
    case ExprKind::Column:
      ResolveColumn(slot, scope);
      return;
    case ExprKind::Star:
      Fail("'*' is only allowed in a select list or COUNT(*)", e.pos);
    case ExprKind::Bool:
    case ExprKind::Convert:
    case ExprKind::DatePart:
      return;
    case ExprKind::Unary:
      BindExpr(e.args[0], scope, allow_aggregate);
      if (e.text == "NOT") {
        RequireCondition(*e.args[0]);
        e.type.kind = ValueKind::Boolean;
      } else {
        RequireValue(*e.args[0]);
        ValueKind k = e.args[0]->type.kind;
        if (k == ValueKind::Text) {
          Wrap(e.args[0], {ValueKind::Float, 0, false});
          k = ValueKind::Float;
        } else if (k == ValueKind::Date) {
          Fail("Operand type clash: datetime is incompatible with unary " + e.text, e.pos);
        }
        e.type.kind = k;
      }
      return;
    case ExprKind::Logical:
      for (auto& a : e.args) {
        BindExpr(a, scope, allow_aggregate);
        RequireCondition(*a);
      }
      e.type.kind = ValueKind::Boolean;
      return;
    case ExprKind::Binary:
      BindExpr(e.args[0], scope, allow_aggregate);
      BindExpr(e.args[1], scope, allow_aggregate);
      if (IsComparison(e.text)) {
        BindComparison(e);
      } else {
        BindArithmetic(e);
      }
      return;
    case ExprKind::Function:
      BindFunction(e, scope, allow_aggregate);
      return;
    case ExprKind::Case:
      BindCase(e, scope, allow_aggregate);
      return;
    case ExprKind::Cast:
      BindCast(e, scope, allow_aggregate);
      return;
    case ExprKind::Subquery: {
      BindQuery(*e.query, scope);
      const Select& first = *e.query->selects[0];
      if (OutputCount(first) != 1) {
        Fail("Only one expression can be specified in the select list when the subquery is not introduced with EXISTS",
             e.pos);
      }
      e.type = FirstOutput(*e.query).type;
      return;
    }
    case ExprKind::Exists:
      BindQuery(*e.query, scope);
      e.type.kind = ValueKind::Boolean;
      return;
    case ExprKind::InList:
      for (auto& a : e.args) {
        BindExpr(a, scope, allow_aggregate);
        RequireValue(*a);
      }
      BindMembership(e);
      return;
    case ExprKind::InQuery: {
      BindExpr(e.args[0], scope, allow_aggregate);
      RequireValue(*e.args[0]);
      BindQuery(*e.query, scope);
      if (OutputCount(*e.query->selects[0]) != 1) {
        Fail("Only one expression can be specified in the select list when the subquery is not introduced with EXISTS",
             e.pos);
      }
      BindMembership(e);
      return;
    }
    case ExprKind::Between:
      for (auto& a : e.args) {
        BindExpr(a, scope, allow_aggregate);
        RequireValue(*a);
      }
      BindMembership(e);
      return;
    case ExprKind::Like:
      for (auto& a : e.args) {
        BindExpr(a, scope, allow_aggregate);
        RequireValue(*a);
      }
      for (auto& a : e.args) {
        if (a->type.kind != ValueKind::Text && a->type.kind != ValueKind::Unknown) Wrap(a, {ValueKind::Text, 0, false});
      }
      e.type.kind = ValueKind::Boolean;
      return;
    case ExprKind::IsNull:
      BindExpr(e.args[0], scope, allow_aggregate);
      RequireValue(*e.args[0]);
      e.type.kind = ValueKind::Boolean;
      return;
  }
}

const SelectItem::Output& Binder::FirstOutput(const Query& q) {
  for (const auto& item : q.selects[0]->items) {
    if (!item.outputs.empty()) return item.outputs[0];
  }
  static const SelectItem::Output kNone;
  return kNone;
}

bool Binder::IsComparison(const std::string& op) {
  return op == "=" || op == "<>" || op == "!=" || op == "<" || op == ">" || op == "<=" || op == ">=" ||
         op == "!<" || op == "!>";
}

// Brings the two sides of a comparison to one type as SQL Server does and
// records how the engine must compare them.
BoundOp Binder::Harmonise(ExprPtr& a, ExprPtr& b, Pos at) {
  ValueKind ka = a->type.kind, kb = b->type.kind;
  if (a->type.is_null || b->type.is_null) return BoundOp::CompareOther;
  if (ka == ValueKind::Date || kb == ValueKind::Date) {
    ExprPtr& other = ka == ValueKind::Date ? b : a;
    ValueKind ko = other->type.kind;
    if (ko == ValueKind::Date || ko == ValueKind::Unknown) return BoundOp::CompareOther;
    if (ko == ValueKind::Text) {
      ToDate(other);
      return BoundOp::CompareOther;
    }
    Fail(std::string("Comparing a datetime with ") + KindName(ko) + " is not supported", at);
  }
  bool ta = ka == ValueKind::Text, tb = kb == ValueKind::Text;
  if (ta && (tb || kb == ValueKind::Unknown)) return BoundOp::CompareText;
  if (tb && ka == ValueKind::Unknown) return BoundOp::CompareText;
  if (ta != tb && (IsNumeric(ka) || IsNumeric(kb))) {
    // Text converts to the number's type (data type precedence): a text
    // code compared with 1101 is compared as a number.
    ExprPtr& text_side = ta ? a : b;
    ValueKind number = ta ? kb : ka;
    Wrap(text_side, {IsIntegral(number) ? ValueKind::Integer : ValueKind::Float, 0, false});
    return BoundOp::CompareOther;
  }
  if ((ka == ValueKind::Blob) || (kb == ValueKind::Blob)) {
    Fail("The image data type cannot be compared", at);
  }
  return BoundOp::CompareOther;
}

void Binder::BindComparison(Expr& e) {
  e.type.kind = ValueKind::Boolean;
  Expr& l = *e.args[0];
  Expr& r = *e.args[1];
  RequireValue(l);
  RequireValue(r);
  if (l.kind == ExprKind::Bool || r.kind == ExprKind::Bool) {
    const Expr& flag = l.kind == ExprKind::Bool ? l : r;
    bool is_true = flag.text == "1";
    if (e.text == "=") {
      e.op = is_true ? BoundOp::FlagTrue : BoundOp::FlagFalse;
    } else if (e.text == "<>" || e.text == "!=") {
      e.op = is_true ? BoundOp::FlagFalse : BoundOp::FlagTrue;
    } else {
      Fail("True and False can only be compared with = or <>", e.pos);
    }
    // The printer expects the tested value first and the flag second.
    if (l.kind == ExprKind::Bool) std::swap(e.args[0], e.args[1]);
    return;
  }
  e.op = Harmonise(e.args[0], e.args[1], e.pos);
}

// IN, NOT IN and BETWEEN: every value is compared with the first operand.
void Binder::BindMembership(Expr& e) {
  e.type.kind = ValueKind::Boolean;
  if (e.kind == ExprKind::InQuery) {
    // Type the subquery's column through a stand-in operand.
    const auto& out = FirstOutput(*e.query);
    ExprPtr stand_in = std::make_unique<Expr>(ExprKind::Null, e.pos);
    stand_in->type = out.type;
    stand_in->type.is_null = false;
    e.op = Harmonise(e.args[0], stand_in, e.pos);
    if (stand_in->kind == ExprKind::Convert) {
      // The server would convert the subquery's text column to a number;
      // the printer has no place for that conversion inside the subquery.
      Fail("IN with a text subquery compared with a number is not supported", e.pos);
    }
    return;
  }
  ValueKind left = e.args[0]->type.kind;
  bool any_date = false;
  for (size_t i = 1; i < e.args.size(); ++i) any_date = any_date || e.args[i]->type.kind == ValueKind::Date;
  if (left == ValueKind::Text && any_date) {
    // '2026-11-20' BETWEEN StartDate AND EndDate compares dates.
    ToDate(e.args[0]);
    left = ValueKind::Date;
  }
  bool any_text = false, any_number = false, any_other = false;
  for (size_t i = 1; i < e.args.size(); ++i) {
    ValueKind k = e.args[i]->type.kind;
    if (e.args[i]->type.is_null) continue;
    if (k == ValueKind::Text) any_text = true;
    else if (IsNumeric(k)) any_number = true;
    else any_other = true;
  }
  if (left == ValueKind::Date) {
    for (size_t i = 1; i < e.args.size(); ++i) {
      if (e.args[i]->type.kind == ValueKind::Text) ToDate(e.args[i]);
    }
    e.op = BoundOp::CompareOther;
  } else if (left == ValueKind::Text && any_number) {
    ValueKind target = ValueKind::Integer;
    for (size_t i = 1; i < e.args.size(); ++i) {
      if (IsNumeric(e.args[i]->type.kind) && !IsIntegral(e.args[i]->type.kind)) target = ValueKind::Float;
    }
    Wrap(e.args[0], {target, 0, false});
    for (size_t i = 1; i < e.args.size(); ++i) {
      if (e.args[i]->type.kind == ValueKind::Text) Wrap(e.args[i], {target, 0, false});
    }
    e.op = BoundOp::CompareOther;
  } else if (IsNumeric(left) && any_text) {
    for (size_t i = 1; i < e.args.size(); ++i) {
      if (e.args[i]->type.kind == ValueKind::Text)
        Wrap(e.args[i], {IsIntegral(left) ? ValueKind::Integer : ValueKind::Float, 0, false});
    }
    e.op = BoundOp::CompareOther;
  } else if ((left == ValueKind::Text || left == ValueKind::Unknown) && any_text && !any_other) {
    e.op = BoundOp::CompareText;
  } else {
    e.op = BoundOp::CompareOther;
  }
}

void Binder::BindArithmetic(Expr& e) {
  RequireValue(*e.args[0]);
  RequireValue(*e.args[1]);
  const std::string& op = e.text;
  ExprType& lt = e.args[0]->type;
  ExprType& rt = e.args[1]->type;
  ValueKind l = lt.kind, r = rt.kind;
  bool l_text = l == ValueKind::Text, r_text = r == ValueKind::Text;
  bool l_loose = lt.is_null || l == ValueKind::Unknown, r_loose = rt.is_null || r == ValueKind::Unknown;
  if (l == ValueKind::Blob || r == ValueKind::Blob) Fail("The image data type is invalid in arithmetic", e.pos);
  if (op == "+" && ((l_text && (r_text || r_loose)) || (r_text && l_loose))) {
    e.op = BoundOp::Concat;
    e.type.kind = ValueKind::Text;
    e.type.length = (lt.length > 0 && rt.length > 0) ? lt.length + rt.length : 0;
    return;
  }
  if (op == "&" || op == "|" || op == "^") {
    for (auto* t : {&e.args[0], &e.args[1]}) {
      if (!IsIntegral((*t)->type.kind) && !(*t)->type.is_null && (*t)->type.kind != ValueKind::Unknown) {
        Fail("The data types of a bitwise operator must be integers", e.pos);
      }
    }
    e.op = op == "&" ? BoundOp::BitAnd : op == "|" ? BoundOp::BitOr : BoundOp::BitXor;
    e.type.kind = ValueKind::Integer;
    return;
  }
  // Dates: datetime + n and datetime - n add days.
  if (l == ValueKind::Date || r == ValueKind::Date) {
    bool l_days = IsNumeric(l) || l_loose, r_days = IsNumeric(r) || r_loose;
    if (op == "+" && l == ValueKind::Date && r_days) {
      e.op = BoundOp::AddDays;
    } else if (op == "+" && r == ValueKind::Date && l_days) {
      std::swap(e.args[0], e.args[1]);
      e.op = BoundOp::AddDays;
    } else if (op == "-" && l == ValueKind::Date && r_days) {
      e.op = BoundOp::SubtractDays;
    } else {
      Fail(std::string("Operand type clash: ") + KindName(l) + " " + op + " " + KindName(r) + " is not supported",
           e.pos);
    }
    e.type.kind = ValueKind::Date;
    return;
  }
  // Text meets a number: the text converts to the number's type.
  if (l_text && !r_text) Wrap(e.args[0], {IsIntegral(r) || r_loose ? ValueKind::Integer : r, 0, false});
  if (r_text && !l_text) Wrap(e.args[1], {IsIntegral(l) || l_loose ? ValueKind::Integer : l, 0, false});
  if (l_text && r_text) {
    // '5' - '3': SQL Server refuses arithmetic on two texts except +.
    Fail("Operand data type varchar is invalid for the " + op + " operator", e.pos);
  }
  ValueKind lk = e.args[0]->type.kind, rk = e.args[1]->type.kind;
  ValueKind result = Higher(lk, rk);
  if (result == ValueKind::Boolean) result = ValueKind::Integer;
  if (op == "+") {
    e.op = BoundOp::Add;
  } else if (op == "-") {
    e.op = BoundOp::Subtract;
  } else if (op == "*") {
    e.op = BoundOp::Multiply;
  } else if (op == "%") {
    e.op = BoundOp::Modulo;
  } else {
    bool integral = (IsIntegral(lk) || e.args[0]->type.is_null) && (IsIntegral(rk) || e.args[1]->type.is_null);
    e.op = integral ? BoundOp::IntDivide : BoundOp::Divide;
  }
  e.type.kind = result;
}

void Binder::BindCase(Expr& e, Scope* scope, bool allow_aggregate) {
  for (auto& a : e.args) BindExpr(a, scope, allow_aggregate);
  size_t first = e.has_operand ? 1 : 0;
  size_t end = e.args.size() - (e.has_else ? 1 : 0);
  std::vector<ExprPtr*> results;
  for (size_t i = first; i < end; i += 2) {
    if (e.has_operand) {
      // CASE x WHEN v: compare as x = v would.
      RequireValue(*e.args[i]);
      ExprPtr& operand = e.args[0];
      BoundOp cmp = Harmonise(operand, e.args[i], e.args[i]->pos);
      if (cmp == BoundOp::CompareText) e.op = BoundOp::CompareText;
    } else {
      RequireCondition(*e.args[i]);
    }
    results.push_back(&e.args[i + 1]);
  }
  if (e.has_else) results.push_back(&e.args.back());
  ExprType type{ValueKind::Unknown, 0, true};
  for (ExprPtr* r : results) {
    RequireValue(**r);
    const ExprType& t = (*r)->type;
    if (t.is_null) continue;
    if (type.is_null || Precedence(t.kind) > Precedence(type.kind)) {
      type = t;
    } else if (t.kind == type.kind) {
      type.length = (type.length > 0 && t.length > 0) ? std::max(type.length, t.length) : 0;
    }
  }
  // Branches of lower precedence convert to the result type.
  for (ExprPtr* r : results) {
    const ExprType& t = (*r)->type;
    if (t.is_null || t.kind == type.kind) continue;
    if (type.kind == ValueKind::Date && t.kind == ValueKind::Text) {
      ToDate(*r);
    } else if (IsNumeric(type.kind) && t.kind == ValueKind::Text) {
      Wrap(*r, {IsIntegral(type.kind) ? ValueKind::Integer : ValueKind::Float, 0, false});
    }
  }
  type.is_null = false;
  e.type = type;
}

bool Binder::IsAggregateName(const std::string& n) {
  return n == "SUM" || n == "COUNT" || n == "COUNT_BIG" || n == "AVG" || n == "MIN" || n == "MAX";
}

void Binder::CheckArgs(const Expr& e, size_t min, size_t max) {
  if (e.args.size() < min || e.args.size() > max) {
    Fail("The " + e.text + " function requires " + std::to_string(min) +
             (max != min ? " to " + std::to_string(max) : std::string()) + " argument(s)",
         e.pos);
  }
}

void Binder::BindFunction(Expr& e, Scope* scope, bool allow_aggregate) {
  const std::string& n = e.text;
  bool aggregate = IsAggregateName(n);
  if (aggregate) {
    if (!allow_aggregate) {
      Fail("An aggregate may not appear in the WHERE clause or a JOIN condition unless it is in a subquery", e.pos);
    }
    e.is_aggregate = true;
    CheckArgs(e, 1, 1);
    if (e.args[0]->kind == ExprKind::Star) {
      if (n != "COUNT" && n != "COUNT_BIG") Fail("'*' is only allowed in COUNT(*)", e.args[0]->pos);
      e.type.kind = ValueKind::Integer;
      return;
    }
    // No aggregate inside an aggregate.
    BindExpr(e.args[0], scope, false);
    RequireValue(*e.args[0]);
    ValueKind k = e.args[0]->type.kind;
    if (n == "COUNT" || n == "COUNT_BIG") {
      e.type.kind = ValueKind::Integer;
    } else if (n == "MIN" || n == "MAX") {
      e.type = e.args[0]->type;
      e.type.is_null = false;
    } else {
      if (k == ValueKind::Text || k == ValueKind::Date || k == ValueKind::Blob) {
        Fail(std::string("Operand data type ") + KindName(k) + " is invalid for " + Lower(n) + " operator", e.pos);
      }
      e.type.kind = k == ValueKind::Boolean ? ValueKind::Integer : k;
    }
    return;
  }
  if (e.distinct) Fail("DISTINCT is only allowed in an aggregate", e.pos);
  for (auto& a : e.args) {
    BindExpr(a, scope, allow_aggregate);
    if (a->kind != ExprKind::DatePart) RequireValue(*a);
  }
  auto arg_kind = [&](size_t i) { return e.args[i]->type.kind; };
  if (n == "GETDATE" || n == "SYSDATETIME" || n == "CURRENT_TIMESTAMP") {
    CheckArgs(e, 0, 0);
    e.text = "GETDATE";
    e.type.kind = ValueKind::Date;
  } else if (n == "ISNULL") {
    CheckArgs(e, 2, 2);
    BindIsNull(e);
  } else if (n == "COALESCE") {
    if (e.args.size() < 2) CheckArgs(e, 2, 2);
    ExprType type{ValueKind::Unknown, 0, true};
    for (auto& a : e.args) {
      if (a->type.is_null) continue;
      if (type.is_null || Precedence(a->type.kind) > Precedence(type.kind)) type = a->type;
    }
    for (auto& a : e.args) {
      if (type.kind == ValueKind::Date && a->type.kind == ValueKind::Text) ToDate(a);
      if (IsNumeric(type.kind) && a->type.kind == ValueKind::Text)
        Wrap(a, {IsIntegral(type.kind) ? ValueKind::Integer : ValueKind::Float, 0, false});
    }
    type.is_null = false;
    e.type = type;
  } else if (n == "NULLIF") {
    CheckArgs(e, 2, 2);
    e.op = Harmonise(e.args[0], e.args[1], e.pos);
    e.type = e.args[0]->type;
  } else if (n == "DATEADD") {
    CheckArgs(e, 3, 3);
    if (!IsNumeric(arg_kind(1)) && !e.args[1]->type.is_null) {
      if (arg_kind(1) == ValueKind::Text) Wrap(e.args[1], {ValueKind::Integer, 0, false});
      else Fail("Argument 2 of DATEADD must be a number", e.args[1]->pos);
    }
    ToDate(e.args[2]);
    e.type.kind = ValueKind::Date;
  } else if (n == "DATEDIFF") {
    CheckArgs(e, 3, 3);
    ToDate(e.args[1]);
    ToDate(e.args[2]);
    e.type.kind = ValueKind::Integer;
  } else if (n == "DATEPART" || n == "DATENAME") {
    CheckArgs(e, 2, 2);
    ToDate(e.args[1]);
    e.type.kind = n == "DATEPART" ? ValueKind::Integer : ValueKind::Text;
  } else if (n == "YEAR" || n == "MONTH" || n == "DAY") {
    CheckArgs(e, 1, 1);
    ToDate(e.args[0]);
    e.type.kind = ValueKind::Integer;
  } else if (n == "UPPER" || n == "LOWER" || n == "LTRIM" || n == "RTRIM" || n == "TRIM") {
    CheckArgs(e, 1, 1);
    e.type = {ValueKind::Text, e.args[0]->type.kind == ValueKind::Text ? e.args[0]->type.length : 0, false};
    TextArgs(e, 0, 1);
  } else if (n == "LEN" || n == "DATALENGTH") {
    CheckArgs(e, 1, 1);
    // DATALENGTH of a picture counts its bytes, not those of a text form.
    if (n == "LEN" || e.args[0]->type.kind != ValueKind::Blob) TextArgs(e, 0, 1);
    e.type.kind = ValueKind::Integer;
  } else if (n == "LEFT" || n == "RIGHT") {
    CheckArgs(e, 2, 2);
    TextArgs(e, 0, 1);
    IntegerArgs(e, 1, 2);
    e.type = {ValueKind::Text, e.args[0]->type.length, false};
  } else if (n == "SUBSTRING") {
    CheckArgs(e, 3, 3);
    TextArgs(e, 0, 1);
    IntegerArgs(e, 1, 3);
    e.type = {ValueKind::Text, e.args[0]->type.length, false};
  } else if (n == "REPLACE") {
    CheckArgs(e, 3, 3);
    TextArgs(e, 0, 3);
    e.type.kind = ValueKind::Text;
  } else if (n == "CHARINDEX") {
    CheckArgs(e, 2, 3);
    TextArgs(e, 0, 2);
    IntegerArgs(e, 2, e.args.size());
    e.type.kind = ValueKind::Integer;
  } else if (n == "SPACE") {
    CheckArgs(e, 1, 1);
    IntegerArgs(e, 0, 1);
    e.type.kind = ValueKind::Text;
  } else if (n == "REPLICATE") {
    CheckArgs(e, 2, 2);
    TextArgs(e, 0, 1);
    IntegerArgs(e, 1, 2);
    e.type.kind = ValueKind::Text;
  } else if (n == "STR") {
    CheckArgs(e, 1, 3);
    IntegerArgs(e, 1, e.args.size());
    e.type.kind = ValueKind::Text;
  } else if (n == "CHAR" || n == "NCHAR") {
    CheckArgs(e, 1, 1);
    IntegerArgs(e, 0, 1);
    e.text = "CHAR";
    e.type = {ValueKind::Text, 1, false};
  } else if (n == "ASCII" || n == "UNICODE") {
    CheckArgs(e, 1, 1);
    TextArgs(e, 0, 1);
    e.type.kind = ValueKind::Integer;
  } else if (n == "ABS" || n == "FLOOR" || n == "CEILING" || n == "SIGN") {
    CheckArgs(e, 1, 1);
    NumberArgs(e, 0, 1);
    e.type.kind = arg_kind(0) == ValueKind::Boolean ? ValueKind::Integer : arg_kind(0);
  } else if (n == "ROUND") {
    CheckArgs(e, 2, 3);
    NumberArgs(e, 0, 1);
    IntegerArgs(e, 1, e.args.size());
    e.type.kind = arg_kind(0);
  } else if (n == "POWER" || n == "SQRT") {
    CheckArgs(e, n == "SQRT" ? 1 : 2, n == "SQRT" ? 1 : 2);
    NumberArgs(e, 0, e.args.size());
    e.type.kind = ValueKind::Float;
  } else if (n == "ISNUMERIC" || n == "ISDATE") {
    CheckArgs(e, 1, 1);
    e.type.kind = ValueKind::Integer;
  } else {
    Fail("'" + n + "' is not a recognized built-in function name", e.pos);
  }
}

void Binder::TextArgs(Expr& e, size_t from, size_t to) {
  for (size_t i = from; i < to && i < e.args.size(); ++i) {
    ValueKind k = e.args[i]->type.kind;
    if (k != ValueKind::Text && k != ValueKind::Unknown && !e.args[i]->type.is_null) {
      Wrap(e.args[i], {ValueKind::Text, 0, false});
    }
  }
}

void Binder::IntegerArgs(Expr& e, size_t from, size_t to) {
  for (size_t i = from; i < to && i < e.args.size(); ++i) {
    if (e.args[i]->type.kind == ValueKind::Text) Wrap(e.args[i], {ValueKind::Integer, 0, false});
    else if (e.args[i]->type.kind == ValueKind::Date) Fail("A datetime is not an integer argument", e.args[i]->pos);
  }
}

void Binder::NumberArgs(Expr& e, size_t from, size_t to) {
  for (size_t i = from; i < to && i < e.args.size(); ++i) {
    if (e.args[i]->type.kind == ValueKind::Text) Wrap(e.args[i], {ValueKind::Float, 0, false});
    else if (e.args[i]->type.kind == ValueKind::Date) Fail("A datetime is not a number argument", e.args[i]->pos);
  }
}

// ISNULL(a, b) has a's type: b converts to it, and text b is cut to a's
// declared length (ISNULL(PreferredName, FirstName) keeps at most
// PreferredName's length).
void Binder::BindIsNull(Expr& e) {
  ExprType a = e.args[0]->type;
  ExprType b = e.args[1]->type;
  if (a.is_null) {
    e.type = b;
    return;
  }
  e.type = a;
  if (b.is_null) return;
  if (a.kind == ValueKind::Date && b.kind == ValueKind::Text) {
    ToDate(e.args[1]);
  } else if (a.kind == ValueKind::Text && a.length > 0 && e.args[1]->kind == ExprKind::String) {
    // A text literal is cut now.
    Expr& literal = *e.args[1];
    int chars = 0;
    size_t i = 0;
    for (; i < literal.text.size(); ++i) {
      // Count characters, not UTF-8 continuation bytes.
      if ((static_cast<unsigned char>(literal.text[i]) & 0xC0) != 0x80 && chars++ == a.length) break;
    }
    literal.text.resize(i);
    literal.type.length = std::min(chars, a.length);
  } else if (a.kind == ValueKind::Text && a.length > 0) {
    if (b.kind != ValueKind::Text || b.length == 0 || b.length > a.length) {
      Wrap(e.args[1], {ValueKind::Text, a.length, false});
    }
  } else if (a.kind == ValueKind::Text && b.kind != ValueKind::Text && b.kind != ValueKind::Unknown) {
    Wrap(e.args[1], {ValueKind::Text, 0, false});
  } else if (IsNumeric(a.kind) && b.kind == ValueKind::Text) {
    Wrap(e.args[1], {IsIntegral(a.kind) ? ValueKind::Integer : ValueKind::Float, 0, false});
  } else if (IsIntegral(a.kind) && IsNumeric(b.kind) && !IsIntegral(b.kind)) {
    Wrap(e.args[1], {ValueKind::Integer, 0, false});
  }
}

void Binder::BindCast(Expr& e, Scope* scope, bool allow_aggregate) {
  for (auto& a : e.args) {
    BindExpr(a, scope, allow_aggregate);
    RequireValue(*a);
  }
  const TypeName& t = e.type_name;
  const std::string& n = t.name;
  if (n == "varchar" || n == "nvarchar" || n == "char" || n == "nchar") {
    // CAST(x AS varchar) without a length means 30 characters.
    int length = t.length < 0 ? 30 : t.length;
    e.type = {ValueKind::Text, length, false};
  } else if (n == "int" || n == "integer" || n == "bigint" || n == "smallint" || n == "tinyint") {
    e.type.kind = ValueKind::Integer;
  } else if (n == "bit") {
    e.type.kind = ValueKind::Boolean;
  } else if (n == "money" || n == "smallmoney") {
    e.type.kind = ValueKind::Money;
  } else if (n == "float" || n == "real") {
    e.type.kind = ValueKind::Float;
  } else if (n == "decimal" || n == "numeric") {
    e.type.kind = ValueKind::Decimal;
  } else if (n == "datetime" || n == "smalldatetime" || n == "datetime2" || n == "date") {
    e.type.kind = ValueKind::Date;
    if (e.args[0]->kind == ExprKind::String) ToDate(e.args[0]);
  } else {
    Fail("Type " + n + " is not supported in CAST or CONVERT", e.pos);
  }
  if (e.args.size() > 1) {
    const Expr& style = *e.args[1];
    if (style.kind != ExprKind::Number) Fail("The CONVERT style must be a number", style.pos);
    static const int kStyles[] = {0, 1, 3, 10, 23, 100, 101, 103, 106, 107, 108, 110, 111, 112, 120, 121};
    int s = style.text.size() > 4 ? -1 : std::atoi(style.text.c_str());
    bool known = std::find(std::begin(kStyles), std::end(kStyles), s) != std::end(kStyles);
    if (!known) Fail("CONVERT style " + style.text + " is not supported", style.pos);
  }
  ValueKind from = e.args[0]->type.kind;
  if (from == ValueKind::Date && IsNumeric(e.type.kind)) {
    Fail("Converting a datetime to a number is not supported", e.pos);
  }
}

}  // namespace orv::sql::bind
