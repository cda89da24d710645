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

TEST(StatementForm, LiftsQuotedDatesAfterAComparison) {
  // In the expected form, #0, ... stand for the number sentinels and @0, ...
  // for the date sentinels, in order.
  struct Case {
    const char* name;
    const char* statement;
    const char* form;
    std::vector<const char*> dates;  // as the server reads them
  } cases[] = {
      {"a day's holidays",
       "SELECT * FROM EmployeeHolidays WHERE (FromDate <= '2026-11-20') AND (ToDate >= '2026-11-20') AND "
       "(EmployeeID = 5)",
       "SELECT * FROM EmployeeHolidays WHERE (FromDate <= '@0') AND (ToDate >= '@1') AND (EmployeeID = #0)",
       {"2026-11-20 00:00:00", "2026-11-20 00:00:00"}},
      {"every comparison, any spelling of a date",
       "SELECT 1 FROM t WHERE a='11/20/2026 5:00 PM' AND b<>'Nov 3, 2026' AND c < '20261104' AND d>'2026-11-05'",
       "SELECT 1 FROM t WHERE a='@0' AND b<>'@1' AND c < '@2' AND d>'@3'",
       {"2026-11-20 17:00:00", "2026-11-03 00:00:00", "2026-11-04 00:00:00", "2026-11-05 00:00:00"}},
      // Text that is no date, empty text, doubled quotes, N'' text, dates
      // not compared (a select list, BETWEEN, IN, a function) stay.
      {"text and dates not compared",
       "SELECT '2026-11-20', DATEADD(d, 1, '2026-11-20') FROM t WHERE a = 'Smith' AND b = '' AND c = 'O''Brien' "
       "AND d = N'2026-11-20' AND e BETWEEN '2026-11-01' AND '2026-11-30' AND f IN ('2026-11-02') AND "
       "g LIKE '2026%' AND h = '13/45/2026'",
       "SELECT '2026-11-20', DATEADD(d, 1, '2026-11-20') FROM t WHERE a = 'Smith' AND b = '' AND c = 'O''Brien' "
       "AND d = N'2026-11-20' AND e BETWEEN '2026-11-01' AND '2026-11-30' AND f IN ('2026-11-02') AND "
       "g LIKE '2026%' AND h = '13/45/2026'",
       {}},
      {"inside names and comments",
       "SELECT 1 FROM t WHERE [x = '2026-11-20'] = 1 -- a = '2026-11-20'\n AND b = '2026-11-21'",
       "SELECT 1 FROM t WHERE [x = '2026-11-20'] = #0 -- a = '2026-11-20'\n AND b = '@0'",
       {"2026-11-21 00:00:00"}},
  };
  for (const auto& c : cases) {
    StatementForm f = ParameteriseLiterals(c.statement);
    std::string form = f.form;
    for (size_t i = 0; i < f.sentinels.size(); ++i) {
      size_t at = form.find(f.sentinels[i]);
      ASSERT_NE(at, std::string::npos) << c.name;
      form.replace(at, f.sentinels[i].size(), "#" + std::to_string(i));
    }
    for (size_t i = 0; i < f.date_sentinels.size(); ++i) {
      size_t at = form.find(f.date_sentinels[i]);
      ASSERT_NE(at, std::string::npos) << c.name;
      form.replace(at, f.date_sentinels[i].size(), "@" + std::to_string(i));
    }
    EXPECT_EQ(form, c.form) << c.name;
    std::vector<std::string> dates;
    for (const DateTime& d : f.dates) dates.push_back(d.ToIso());
    EXPECT_EQ(dates, std::vector<std::string>(c.dates.begin(), c.dates.end())) << c.name;
  }
}

TEST(StatementForm, StatementHoldingASentinelIsLeftWhole) {
  StatementForm probe = ParameteriseLiterals("SELECT 1 FROM t WHERE a = 1");
  ASSERT_EQ(probe.sentinels.size(), 1u);
  std::string s = "SELECT 1 FROM t WHERE a = 1 AND b = '" + probe.sentinels[0] + "'";
  StatementForm f = ParameteriseLiterals(s);
  EXPECT_EQ(f.form, s);
  EXPECT_TRUE(f.values.empty());

  StatementForm dated = ParameteriseLiterals("SELECT 1 FROM t WHERE a >= '2026-11-20'");
  ASSERT_EQ(dated.date_sentinels.size(), 1u);
  std::string d = "SELECT 1 FROM t WHERE a >= '2026-11-20' AND b = '" + dated.date_sentinels[0] + "'";
  EXPECT_TRUE(ParameteriseLiterals(d).dates.empty());
}

}  // namespace
}  // namespace orv::db
