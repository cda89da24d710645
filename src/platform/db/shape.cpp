#include "platform/db/shape.h"

#include <cctype>

#include "platform/db/db_error.h"
#include "platform/db/value_compare.h"

namespace orv::db {

namespace {

class ShapeParser {
 public:
  explicit ShapeParser(std::string_view t) : t_(t) {}

  ShapeNode Statement() {
    ShapeNode n = Shape();
    Skip();
    if (p_ < t_.size()) Fail("unexpected text after the SHAPE statement");
    return n;
  }

 private:
  [[noreturn]] void Fail(const std::string& why) {
    throw DatabaseError("SHAPE: " + why + " at position " + std::to_string(p_ + 1) +
                        " in statement: " + std::string(t_));
  }
  void Skip() {
    while (p_ < t_.size() && std::isspace(static_cast<unsigned char>(t_[p_]))) ++p_;
  }
  bool Peek(char c) {
    Skip();
    return p_ < t_.size() && t_[p_] == c;
  }
  void Expect(char c) {
    if (!Peek(c)) Fail(std::string("'") + c + "' is expected");
    ++p_;
  }
  bool Keyword(std::string_view kw) {
    Skip();
    if (p_ + kw.size() > t_.size() || !EqualsNoCase(t_.substr(p_, kw.size()), kw)) return false;
    size_t after = p_ + kw.size();
    if (after < t_.size() && (std::isalnum(static_cast<unsigned char>(t_[after])) || t_[after] == '_'))
      return false;
    p_ = after;
    return true;
  }
  // A name: 'quoted', [bracketed] or bare.
  std::string Name() {
    Skip();
    if (p_ >= t_.size()) Fail("a name is expected");
    char c = t_[p_];
    if (c == '\'' || c == '"' || c == '[') {
      char close = c == '[' ? ']' : c;
      size_t end = t_.find(close, p_ + 1);
      if (end == std::string_view::npos) Fail("a closing " + std::string(1, close) + " is missing");
      std::string name(t_.substr(p_ + 1, end - p_ - 1));
      p_ = end + 1;
      return name;
    }
    size_t start = p_;
    while (p_ < t_.size() && (std::isalnum(static_cast<unsigned char>(t_[p_])) || t_[p_] == '_' ||
                              t_[p_] == '#' || t_[p_] == '?' || t_[p_] == '$' || t_[p_] == '.'))
      ++p_;
    if (p_ == start) Fail("a name is expected");
    return std::string(t_.substr(start, p_ - start));
  }
  // The text between braces, skipping braces inside quotes and brackets.
  std::string Command() {
    Expect('{');
    size_t start = p_;
    int depth = 1;
    while (p_ < t_.size()) {
      char c = t_[p_];
      if (c == '\'' || c == '"' || c == '[') {
        char close = c == '[' ? ']' : c;
        size_t end = t_.find(close, p_ + 1);
        if (end == std::string_view::npos) Fail("a closing " + std::string(1, close) + " is missing");
        p_ = end + 1;
        continue;
      }
      if (c == '{') ++depth;
      if (c == '}' && --depth == 0) {
        std::string cmd(t_.substr(start, p_ - start));
        ++p_;
        return cmd;
      }
      ++p_;
    }
    Fail("the command has no closing '}'");
  }
  ShapeNode Shape() {
    if (!Keyword("SHAPE")) Fail("SHAPE is expected");
    if (depth_ == kMaxShapeNesting)
      Fail("SHAPEs nest more than " + std::to_string(kMaxShapeNesting) + " levels deep");
    ++depth_;  // the parser is dropped on a failure, so only success restores it
    ShapeNode n;
    n.command = Command();
    if (Keyword("AS")) n.alias = Name();
    if (Keyword("COMPUTE")) Fail("SHAPE ... COMPUTE is not supported");
    if (Keyword("APPEND")) {
      do {
        n.children.push_back(Child(static_cast<int>(n.children.size()) + 1));
      } while (Peek(',') && (++p_, true));
    }
    --depth_;
    return n;
  }
  ShapeChild Child(int number) {
    ShapeChild c;
    Expect('(');
    if (Peek('{')) {
      c.node.command = Command();
    } else if (Peek('(')) {
      ++p_;
      c.node = Shape();
      Expect(')');
    } else if (Keyword("SHAPE")) {
      p_ -= 5;
      c.node = Shape();
    } else if (Keyword("CALC") || Keyword("SUM") || Keyword("COUNT")) {
      Fail("aggregate and calculated chapters are not supported");
    } else {
      Fail("a child command in braces or a nested SHAPE is expected");
    }
    if (Keyword("AS")) c.node.alias = Name();
    if (!Keyword("RELATE")) Fail("RELATE is expected");
    do {
      std::string parent = Name();
      if (!Keyword("TO")) Fail("TO is expected");
      if (Peek('?')) Fail("parameterised relations are not supported");
      c.relate.emplace_back(parent, Name());
    } while (Peek(',') && (++p_, true));
    Expect(')');
    if (Keyword("AS")) c.name = Name();
    if (c.name.empty()) c.name = c.node.alias;
    if (c.name.empty()) c.name = "Chapter" + std::to_string(number);
    return c;
  }

  std::string_view t_;
  size_t p_ = 0;
  int depth_ = 0;  // SHAPEs being parsed
};

}  // namespace

bool IsShapeStatement(std::string_view s) {
  size_t i = 0;
  while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  if (s.size() - i < 5 || !EqualsNoCase(s.substr(i, 5), "SHAPE")) return false;
  return i + 5 == s.size() || !std::isalnum(static_cast<unsigned char>(s[i + 5]));
}

ShapeNode ParseShape(std::string_view statement) { return ShapeParser(statement).Statement(); }

}  // namespace orv::db
