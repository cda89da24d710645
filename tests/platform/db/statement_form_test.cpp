// Which literals of a statement become parameters of its cached form.
#include <gtest/gtest.h>

#include "platform/db/statement_cache.h"

namespace orv::db {
namespace {

TEST(StatementForm, ParameterisesKeyLiteralsOnly) {
  // In the expected form, #0, #1, ... stand for the sentinels in order.
  struct Case {
    const char* statement;
    const char* form;
    std::vector<int64_t> values;
  } cases[] = {
      {"Select LastName from Patient where ID = 17", "Select LastName from Patient where ID = #0", {17}},
      {"SELECT x FROM t WHERE a=5 AND b = -3 AND c <= 12", "SELECT x FROM t WHERE a=#0 AND b = -#1 AND c <= #2", {5, 3, 12}},
      // Not after "=": positions, sizes, TOP, CASE arms, IN lists.
      {"SELECT TOP 5 CAST(x AS VARCHAR(50)) FROM t ORDER BY 1", "SELECT TOP 5 CAST(x AS VARCHAR(50)) FROM t ORDER BY 1", {}},
      {"SELECT CASE a WHEN 1 THEN 2 END FROM t WHERE b IN (1, 2)", "SELECT CASE a WHEN 1 THEN 2 END FROM t WHERE b IN (1, 2)", {}},
      // Not whole numbers, not in text, names or comments.
      {"SELECT 1 FROM t WHERE a = 1.5 AND b = '7' AND [c = 8] = 1 -- = 9",
       "SELECT 1 FROM t WHERE a = 1.5 AND b = '7' AND [c = 8] = #0 -- = 9",
       {1}},
      {"SELECT 1 FROM t WHERE a = 12e3 AND b = 1234567890", "SELECT 1 FROM t WHERE a = 12e3 AND b = 1234567890", {}},
      {"SELECT 1 FROM t WHERE Invoice# = 5 AND x =4/*= 3*/", "SELECT 1 FROM t WHERE Invoice# = #0 AND x =#1/*= 3*/", {5, 4}},
  };
  for (const auto& c : cases) {
    StatementForm f = ParameteriseLiterals(c.statement);
    std::string form = f.form;
    for (size_t i = 0; i < f.sentinels.size(); ++i) {
      size_t at = form.find(f.sentinels[i]);
      ASSERT_NE(at, std::string::npos);
      form.replace(at, f.sentinels[i].size(), "#" + std::to_string(i));
    }
    EXPECT_EQ(form, c.form) << c.statement;
    EXPECT_EQ(f.values, c.values) << c.statement;
  }
}

TEST(StatementForm, StatementHoldingASentinelIsLeftWhole) {
  StatementForm probe = ParameteriseLiterals("SELECT 1 FROM t WHERE a = 1");
  ASSERT_EQ(probe.sentinels.size(), 1u);
  std::string s = "SELECT 1 FROM t WHERE a = 1 AND b = '" + probe.sentinels[0] + "'";
  StatementForm f = ParameteriseLiterals(s);
  EXPECT_EQ(f.form, s);
  EXPECT_TRUE(f.values.empty());
}

}  // namespace
}  // namespace orv::db
