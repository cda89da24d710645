// Which literals of a statement become parameters of its cached form.
#include <gtest/gtest.h>

#include "platform/db/statement_cache.h"

namespace orv::db {
namespace {

// The form with its number sentinels written #0, #1, ... and its quoted
// ones @0, @1, ..., in order.
std::string Marked(const StatementForm& f) {
  std::string form = f.form;
  auto mark = [&form](const std::vector<std::string>& sentinels, const char* sign) {
    for (size_t i = 0; i < sentinels.size(); ++i) {
      size_t at = form.find(sentinels[i]);
      if (at == std::string::npos) return false;
      form.replace(at, sentinels[i].size(), sign + std::to_string(i));
    }
    return true;
  };
  if (!mark(f.sentinels, "#") || !mark(f.quoted_sentinels, "@")) return "a sentinel is missing: " + f.form;
  return form;
}

TEST(StatementForm, ParameterisesKeyLiteralsOnly) {
  struct Case {
    const char* statement;
    const char* form;  // nullptr: the statement as it stands
    std::vector<int64_t> values;
  } cases[] = {
      {"SELECT x FROM t WHERE a=5 AND b = -3 AND c <= 12", "SELECT x FROM t WHERE a=#0 AND b = -#1 AND c <= #2", {5, 3, 12}},
      // Not after "=": positions, sizes, TOP, CASE arms, IN lists.
      {"SELECT TOP 5 CAST(x AS VARCHAR(50)) FROM t ORDER BY 1", nullptr, {}},
      {"SELECT CASE a WHEN 1 THEN 2 END FROM t WHERE b IN (1, 2)", nullptr, {}},
      // Not whole numbers, not in text, names or comments.
      {"SELECT 1 FROM t WHERE a = 1.5 AND b = 'x = 7' AND [c = 8] = 1 -- = 9",
       "SELECT 1 FROM t WHERE a = 1.5 AND b = 'x = 7' AND [c = 8] = #0 -- = 9",
       {1}},
      {"SELECT 1 FROM t WHERE a = 12e3 AND b = 1234567890", nullptr, {}},
      {"SELECT 1 FROM t WHERE Invoice# = 5 AND x =4/*= 3*/", "SELECT 1 FROM t WHERE Invoice# = #0 AND x =#1/*= 3*/", {5, 4}},
      // A keyword straight after the number ends it, as the lexer reads it;
      // other letters make it no whole number.
      {"Select * from t where PatientID = 1364ORDER BY ID", "Select * from t where PatientID = #0ORDER BY ID", {1364}},
      {"SELECT 1 FROM t WHERE a = 7and b = 8or c = 9ORDERS", "SELECT 1 FROM t WHERE a = #0and b = #1or c = 9ORDERS",
       {7, 8}},
  };
  for (const auto& c : cases) {
    StatementForm f = ParameteriseLiterals(c.statement);
    EXPECT_EQ(Marked(f), c.form ? c.form : c.statement) << c.statement;
    EXPECT_EQ(f.values, c.values) << c.statement;
  }
}

TEST(StatementForm, LiftsQuotedKeysAndDatesAfterAComparison) {
  // A date is expected as the server reads it, a key as its text.
  struct Case {
    const char* name;
    const char* statement;
    const char* form;  // nullptr: the statement as it stands
    std::vector<const char*> quoted;
  } cases[] = {
      {"a day's holidays",
       "SELECT * FROM EmployeeHolidays WHERE (FromDate <= '2026-11-20') AND (ToDate >= '2026-11-20') AND "
       "(EmployeeID = 5)",
       "SELECT * FROM EmployeeHolidays WHERE (FromDate <= '@0') AND (ToDate >= '@1') AND (EmployeeID = #0)",
       {"2026-11-20 00:00:00", "2026-11-20 00:00:00"}},
      {"keys written as text",
       "SELECT * FROM PatientAlerts WHERE PatientID = '0017' AND AlertID<>'3' AND x = '-4' AND y = '1.5'",
       "SELECT * FROM PatientAlerts WHERE PatientID = '@0' AND AlertID<>'@1' AND x = '-4' AND y = '1.5'",
       {"0017", "3"}},
      {"every comparison, any spelling of a date",
       "SELECT 1 FROM t WHERE a='11/20/2026 5:00 PM' AND b<>'Nov 3, 2026' AND c < '11.04.2026' AND d>'2026-11-05'",
       "SELECT 1 FROM t WHERE a='@0' AND b<>'@1' AND c < '@2' AND d>'@3'",
       {"2026-11-20 17:00:00", "2026-11-03 00:00:00", "2026-11-04 00:00:00", "2026-11-05 00:00:00"}},
      // Text that is no date, empty text, doubled quotes, N'' text, dates
      // not compared (a select list, BETWEEN, IN, a function) stay.
      {"text and dates not compared",
       "SELECT '2026-11-20', DATEADD(d, 1, '2026-11-20') FROM t WHERE a = 'Smith' AND b = '' AND c = 'O''Brien' "
       "AND d = N'2026-11-20' AND e BETWEEN '2026-11-01' AND '2026-11-30' AND f IN ('2026-11-02') AND "
       "g LIKE '2026%' AND h = '13/45/2026'",
       nullptr,
       {}},
      {"inside names and comments",
       "SELECT 1 FROM t WHERE [x = '2026-11-20'] = 1 -- a = '2026-11-20'\n AND b = '2026-11-21'",
       "SELECT 1 FROM t WHERE [x = '2026-11-20'] = #0 -- a = '2026-11-20'\n AND b = '@0'",
       {"2026-11-21 00:00:00"}},
  };
  for (const auto& c : cases) {
    StatementForm f = ParameteriseLiterals(c.statement);
    EXPECT_EQ(Marked(f), c.form ? c.form : c.statement) << c.name;
    std::vector<std::string> quoted;
    for (const Variant& q : f.quoted) quoted.push_back(q.IsDate() ? CDate(q).ToIso() : CStr(q));
    EXPECT_EQ(quoted, std::vector<std::string>(c.quoted.begin(), c.quoted.end())) << c.name;
  }
  // Without dates, as on the server, a day stays in the text and a key does not.
  StatementForm keys = ParameteriseLiterals("SELECT 1 FROM t WHERE d >= '2026-11-20' AND k = '17'", false);
  ASSERT_EQ(keys.quoted.size(), 1u);
  EXPECT_EQ(CStr(keys.quoted[0]), "17");
  EXPECT_NE(keys.form.find("d >= '2026-11-20'"), std::string::npos) << keys.form;
}

TEST(StatementForm, StatementHoldingASentinelIsLeftWhole) {
  StatementForm probe = ParameteriseLiterals("SELECT 1 FROM t WHERE a = 1");
  ASSERT_EQ(probe.sentinels.size(), 1u);
  std::string s = "SELECT 1 FROM t WHERE a = 1 -- " + probe.sentinels[0];
  StatementForm f = ParameteriseLiterals(s);
  EXPECT_EQ(f.form, s);
  EXPECT_TRUE(f.values.empty());

  StatementForm quoted = ParameteriseLiterals("SELECT 1 FROM t WHERE a >= '2026-11-20' AND b = '7'");
  ASSERT_EQ(quoted.quoted_sentinels.size(), 2u);
  for (const std::string& sentinel : quoted.quoted_sentinels) {
    std::string q = "SELECT 1 FROM t WHERE a >= '2026-11-20' AND b = '" + sentinel + "'";
    EXPECT_TRUE(ParameteriseLiterals(q).quoted.empty()) << sentinel;
  }
}

}  // namespace
}  // namespace orv::db
