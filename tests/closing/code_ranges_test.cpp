// Code ranges take a reversed code with its positive code, in the SQL every
// report sends and in the C++ that sorts rows already read, on both engines.
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "closing/code_ranges.h"
#include "closing/closing_practice.h"

namespace orv::testing {
namespace {

using closing::CodeInRange;
using closing::CodeRange;
using closing::CodeRangeCondition;
using closing::NormaliseCodeRange;

TEST(CodeRange, ReversalsBelongWithTheirPositiveCode) {
  struct Case {
    const char* name;
    const char* code;
    CodeRange range;
    bool in;
  };
  const Case cases[] = {
      {"positive inside", "01101", {"01000", "09999"}, true},
      {"reversal inside", "-01101", {"01000", "09999"}, true},
      {"reversal of the first code", "-01000", {"01000", "09999"}, true},
      {"reversal of the last code", "-09999", {"01000", "09999"}, true},
      {"positive below", "00999", {"01000", "09999"}, false},
      {"reversal below", "-00999", {"01000", "09999"}, false},
      {"reversal above", "-10000", {"01000", "09999"}, false},
      {"the excluded internal code is still in its range", "-00100", {"00000", "00299"}, true},
  };
  for (const Case& c : cases) EXPECT_EQ(CodeInRange(c.code, c.range), c.in) << c.name;
}

// (A code that is no number and a range upside down, refused with their
// messages: ProductionRun.BadInputIsRefusedBeforeDrawing.)
TEST(CodeRange, TypedCodesAreCheckedAndPadded) {
  EXPECT_EQ(NormaliseCodeRange("", "").from, "00000");
  EXPECT_EQ(NormaliseCodeRange("", "").to, "99999");
  EXPECT_EQ(NormaliseCodeRange(" 1000", "9999").from, "01000");
  EXPECT_EQ(NormaliseCodeRange(" 1000", "9999").to, "09999");
  EXPECT_THROW(NormaliseCodeRange("123456", ""), std::invalid_argument);
}

using CodeRangeOnEngine = ProductionTest;

// The engine picks the same lines as CodeInRange does: plain text order
// would leave every reversal out.
TEST_F(CodeRangeOnEngine, SqlConditionSelectsWhatTheCodeTestSelects) {
  struct Case {
    const char* name;
    CodeRange range;
    std::set<int> lines;
  };
  const Case cases[] = {
      {"hygiene codes take the reversals",
       {"11000", "11999"},
       {2, 73, 75, 79, 95, 9212, 9213, 9214}},
      {"internal codes take -00100", {"00000", "00299"}, {76, 77}},
      // Its reversals stand at both ends of the range.
      {"one code", {"11101", "11101"}, {2, 73, 75, 79, 95, 9212, 9213, 9214}},
      {"all",
       {"00000", "99999"},
       {1, 2, 3, 71, 72, 73, 74, 75, 76, 77, 78, 79, 91, 92, 93, 94, 95, 96, 97, 3311, 3312, 3321,
        9211, 9212, 9213, 9214, 9241, 9251}},
  };
  for (const Case& c : cases) {
    db::Recordset rs;
    rs.Open("SELECT ID, Code FROM InvoiceDetails WHERE " + CodeRangeCondition("Code", c.range),
            conn_, db::adOpenStatic);
    std::set<int> got;
    while (!rs.Eof()) {
      got.insert(CLng(rs["ID"].Value()));
      EXPECT_TRUE(CodeInRange(CStr(rs["Code"].Value()), c.range)) << c.name;
      rs.MoveNext();
    }
    EXPECT_EQ(got, c.lines) << c.name;
  }
}

}  // namespace
}  // namespace orv::testing
