#include "platform/db/criteria.h"

#include <cctype>
#include <cstdlib>

#include "platform/db/db_error.h"
#include "platform/db/field_type.h"
#include "platform/db/value_compare.h"

namespace orv::db {

class CriteriaParser {
 public:
  CriteriaParser(Criteria& c, std::string_view text) : c_(c), t_(text) {}

  void Run() {
    c_.root_ = ParseOr();
    Skip();
    if (p_ < t_.size()) Fail("unexpected text");
  }

 private:
  [[noreturn]] void Fail(const std::string& why) {
    throw DatabaseError("malformed filter: " + why + " at position " + std::to_string(p_ + 1) +
                        " in: " + std::string(t_));
  }
  void Skip() {
    while (p_ < t_.size() && std::isspace(static_cast<unsigned char>(t_[p_]))) ++p_;
  }
  // Matches a keyword followed by a non-name character.
  bool Keyword(std::string_view kw) {
    Skip();
    if (p_ + kw.size() > t_.size() || !EqualsNoCase(t_.substr(p_, kw.size()), kw)) return false;
    size_t after = p_ + kw.size();
    if (after < t_.size() && (std::isalnum(static_cast<unsigned char>(t_[after])) || t_[after] == '_'))
      return false;
    p_ = after;
    return true;
  }
  int Add(Criteria::Node n) {
    c_.nodes_.push_back(std::move(n));
    return static_cast<int>(c_.nodes_.size()) - 1;
  }
  int ParseOr() {
    int left = ParseAnd();
    while (Keyword("OR")) left = Add({Criteria::Op::Or, {}, -1, {}, left, ParseAnd()});
    return left;
  }
  int ParseAnd() {
    int left = ParseFactor();
    while (Keyword("AND")) left = Add({Criteria::Op::And, {}, -1, {}, left, ParseFactor()});
    return left;
  }
  int ParseFactor() {
    Skip();
    if (p_ < t_.size() && t_[p_] == '(') {
      if (depth_ == Criteria::kMaxNesting)
        Fail("parentheses nest more than " + std::to_string(Criteria::kMaxNesting) + " levels deep");
      ++p_;
      ++depth_;
      int inner = ParseOr();
      --depth_;
      Skip();
      if (p_ >= t_.size() || t_[p_] != ')') Fail("a ')' is missing");
      ++p_;
      return inner;
    }
    Criteria::Node n{Criteria::Op::Eq, ParseFieldName(), -1, {}, -1, -1};
    n.op = ParseOperator();
    n.value = ParseValue();
    if (n.value.IsNull() && n.op != Criteria::Op::Eq && n.op != Criteria::Op::Ne)
      Fail("NULL can only be compared with = or <>");
    if (n.op == Criteria::Op::Like && !n.value.IsString()) Fail("LIKE wants a quoted pattern");
    return Add(std::move(n));
  }
  std::string ParseFieldName() {
    Skip();
    if (p_ < t_.size() && t_[p_] == '[') {
      size_t close = t_.find(']', p_);
      if (close == std::string_view::npos) Fail("a ']' is missing");
      std::string name(t_.substr(p_ + 1, close - p_ - 1));
      p_ = close + 1;
      return name;
    }
    size_t start = p_;
    while (p_ < t_.size() && (std::isalnum(static_cast<unsigned char>(t_[p_])) || t_[p_] == '_' ||
                              t_[p_] == '#' || t_[p_] == '?' || t_[p_] == '$'))
      ++p_;
    if (p_ == start) Fail("a field name is expected");
    return std::string(t_.substr(start, p_ - start));
  }
  Criteria::Op ParseOperator() {
    Skip();
    auto at = [&](std::string_view s) { return t_.substr(p_, s.size()) == s; };
    if (at("<>")) { p_ += 2; return Criteria::Op::Ne; }
    if (at("<=")) { p_ += 2; return Criteria::Op::Le; }
    if (at(">=")) { p_ += 2; return Criteria::Op::Ge; }
    if (at("=")) { p_ += 1; return Criteria::Op::Eq; }
    if (at("<")) { p_ += 1; return Criteria::Op::Lt; }
    if (at(">")) { p_ += 1; return Criteria::Op::Gt; }
    if (Keyword("LIKE")) return Criteria::Op::Like;
    Fail("a comparison operator is expected");
  }
  Variant ParseValue() {
    Skip();
    if (p_ >= t_.size()) Fail("a value is expected");
    char c = t_[p_];
    if (c == '\'') {
      std::string s;
      ++p_;
      for (;;) {
        if (p_ >= t_.size()) Fail("a closing quote is missing");
        if (t_[p_] == '\'') {
          if (p_ + 1 < t_.size() && t_[p_ + 1] == '\'') {
            s += '\'';
            p_ += 2;
            continue;
          }
          ++p_;
          break;
        }
        s += t_[p_++];
      }
      return Variant(s);
    }
    if (c == '#') {
      size_t close = t_.find('#', p_ + 1);
      if (close == std::string_view::npos) Fail("a closing '#' is missing");
      std::string text(t_.substr(p_ + 1, close - p_ - 1));
      auto d = ParseIsoDateTime(text);
      if (!d) d = ParseDateText(text);
      if (!d) Fail("'" + text + "' is no date");
      p_ = close + 1;
      return Variant(*d);
    }
    if (Keyword("NULL")) return Variant::Null();
    size_t start = p_;
    if (c == '-' || c == '+') ++p_;
    while (p_ < t_.size() && (std::isdigit(static_cast<unsigned char>(t_[p_])) || t_[p_] == '.')) ++p_;
    std::string num(t_.substr(start, p_ - start));
    if (num.empty() || num == "-" || num == "+") Fail("a value is expected");
    if (p_ < t_.size() && (std::isalpha(static_cast<unsigned char>(t_[p_])) || t_[p_] == '_'))
      Fail("a value is expected");
    if (num.find('.') == std::string::npos) {
      long long v = std::strtoll(num.c_str(), nullptr, 10);
      return Variant::Int64(v);
    }
    return Variant(std::strtod(num.c_str(), nullptr));
  }

  Criteria& c_;
  std::string_view t_;
  size_t p_ = 0;
  int depth_ = 0;  // parentheses open
};

Criteria Criteria::Parse(std::string_view text) {
  Criteria c;
  c.text_ = std::string(text);
  CriteriaParser(c, text).Run();
  return c;
}

void Criteria::Bind(const std::function<int(std::string_view)>& find_field) {
  for (auto& n : nodes_) {
    if (n.op == Op::And || n.op == Op::Or) continue;
    n.index = find_field(n.field);
    if (n.index < 0)
      throw DatabaseError("the filter names a field the recordset does not have: '" + n.field +
                          "' in: " + text_);
  }
}

int Criteria::ComparisonCount() const {
  int n = 0;
  for (auto& node : nodes_) n += (node.op != Op::And && node.op != Op::Or);
  return n;
}

bool Criteria::Matches(const std::function<const Variant&(int)>& value) const {
  return root_ >= 0 && Eval(root_, value);
}

bool Criteria::Eval(int i, const std::function<const Variant&(int)>& value) const {
  const Node& n = nodes_[i];
  if (n.op == Op::And || n.op == Op::Or) {
    // A chain of one operator leans left ((a AND b) AND c): its right
    // operands are taken in a loop down the spine, so a list of thousands
    // of conditions needs no stack. The comparisons have no side effects,
    // so their order does not matter.
    bool is_and = n.op == Op::And;
    int k = i;
    for (; nodes_[k].op == n.op; k = nodes_[k].left)
      if (Eval(nodes_[k].right, value) != is_and) return !is_and;
    return Eval(k, value);
  }
  const Variant& v = value(n.index);
  bool is_null = v.IsNull() || v.IsEmpty();
  if (n.value.IsNull()) return n.op == Op::Eq ? is_null : !is_null;
  if (is_null) return false;
  if (n.op == Op::Like) return LikeMatch(CStr(v), n.value.AsString());
  int r = CompareValues(v, n.value);
  switch (n.op) {
    case Op::Eq: return r == 0;
    case Op::Ne: return r != 0;
    case Op::Lt: return r < 0;
    case Op::Le: return r <= 0;
    case Op::Gt: return r > 0;
    case Op::Ge: return r >= 0;
    default: return false;
  }
}

bool LikeMatch(std::string_view text, std::string_view pattern) {
  // Iterative wildcard match with one backtrack point: the last '*'.
  size_t t = 0, p = 0, star = std::string_view::npos, mark = 0;
  auto low = [](char ch) { return std::tolower(static_cast<unsigned char>(ch)); };
  while (t < text.size()) {
    if (p < pattern.size() && (pattern[p] == '*' || pattern[p] == '%')) {
      star = p++;
      mark = t;
    } else if (p < pattern.size() && low(pattern[p]) == low(text[t])) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++mark;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && (pattern[p] == '*' || pattern[p] == '%')) ++p;
  return p == pattern.size();
}

std::optional<std::pair<int, Variant>> Criteria::SingleEquality() const {
  if (root_ < 0) return std::nullopt;
  const Node& n = nodes_[root_];
  if (n.op != Op::Eq || n.value.IsNull()) return std::nullopt;
  return std::make_pair(n.index, n.value);
}

}  // namespace orv::db
