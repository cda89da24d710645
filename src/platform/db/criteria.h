// The condition language of Recordset.Filter and Recordset.Find:
//
//   criteria := term { OR term }        term := factor { AND factor }
//   factor   := '(' criteria ')' | field op value
//   op       := = | <> | < | <= | > | >= | LIKE
//   value    := 'text' ('' for a quote) | #date# | number | NULL
//
// Field names are bare (letters, digits, _ # ? $) or in square brackets and
// compare case-insensitively. AND binds tighter than OR and parentheses may
// group anything. LIKE takes * or % for any run of characters and is
// case-insensitive. "= NULL" and "<> NULL" test for Null; any other
// comparison with a Null field is false.
#pragma once

#include <optional>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"

namespace orv::db {

class Criteria {
 public:
  // Parentheses may nest this deep; AND and OR chains of any length are
  // evaluated without recursion.
  static constexpr int kMaxNesting = 100;

  // Parses `text`. Throws DatabaseError naming the text and the position of
  // the fault, and for parentheses nested past kMaxNesting.
  static Criteria Parse(std::string_view text);

  // Resolves every field name to an index with `find_field` (returning -1 for
  // an unknown name). Throws DatabaseError naming the field and the text.
  void Bind(const std::function<int(std::string_view)>& find_field);

  // True when the row whose field values `value(index)` gives satisfies the
  // criteria. Needs Bind first.
  bool Matches(const std::function<const Variant&(int)>& value) const;

  // The bound field and the value when the whole criteria is one "="
  // comparison; nullopt otherwise.
  std::optional<std::pair<int, Variant>> SingleEquality() const;

  // Number of comparisons (Find allows exactly one).
  int ComparisonCount() const;
  const std::string& text() const { return text_; }

 private:
  enum class Op { Eq, Ne, Lt, Le, Gt, Ge, Like, And, Or };
  struct Node {
    Op op;
    std::string field;  // comparisons
    int index = -1;     // bound field index
    Variant value;      // comparisons; Null for "= NULL"
    int left = -1, right = -1;  // And / Or
  };
  bool Eval(int node, const std::function<const Variant&(int)>& value) const;
  friend class CriteriaParser;

  std::string text_;
  std::vector<Node> nodes_;
  int root_ = -1;
};

// LIKE with * and % for any run of characters, case-insensitive.
bool LikeMatch(std::string_view text, std::string_view pattern);

}  // namespace orv::db
