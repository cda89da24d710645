// Filter and Find conditions, evaluated over one row of typed values.
#include "platform/db/criteria.h"

#include <gtest/gtest.h>

#include "platform/db/db_error.h"
#include "platform/db/value_compare.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

// A row as a payment recordset holds it.
const std::vector<std::string> kNames = {"ID", "LastName", "CheckDate", "Value", "Complete?",
                                         "Check#", "Notes", "Rate"};
const std::vector<Variant> kRow = {
    Variant(12),
    Variant("O'Brien"),
    Variant(DateTime::FromParts(2026, 11, 5, 14, 30, 0)),
    Variant(Currency::FromRaw(1234500)),  // 123.4500
    Variant(-1),
    Variant("0"),
    Variant::Null(),
    Variant(0.25),
};

bool Eval(const std::string& text) {
  Criteria c = Criteria::Parse(text);
  c.Bind([](std::string_view name) {
    for (size_t i = 0; i < kNames.size(); ++i)
      if (EqualsNoCase(kNames[i], name)) return static_cast<int>(i);
    return -1;
  });
  return c.Matches([](int i) -> const Variant& { return kRow[i]; });
}

TEST(Criteria, MatchesRows) {
  struct Case {
    const char* text;
    bool expected;
  } cases[] = {
      {"ID = 12", true},
      {"ID=12", true},
      {"ID > 11.5", true},
      {"id >= 13", false},
      {"LastName = 'o''brien'", true},  // text compares case-insensitively
      {"LastName LIKE '%bri%'", true},
      {"CheckDate >= #2026-11-05#", true},  // the time of day is past midnight
      {"CheckDate > #11/04/2026#", true},   // month first
      {"CheckDate <= '2026-11-05 14:30:00'", true},
      {"Value = 123.45", true},
      {"[Complete?] = -1", true},
      {"[Check#] = '0'", true},
      {"Check# = 0", true},  // text holding a number against a number
      {"Notes = NULL", true},
      {"Notes <> NULL", false},
      {"Notes = 'x' OR ID = 12", true},   // a Null field fails its comparison only
      {"Notes <> 'x'", false},
      {"ID = 1 OR ID = 12 AND LastName = 'x'", false},  // AND binds tighter
      {"(ID = 1 OR ID = 12) AND LastName LIKE 'O*'", true},
      {"ID = 1 OR (ID = 12 AND (Rate < 0.3 OR Rate > 1))", true},
      {"Rate>=0.25 AND ( Rate > 0 AND Rate <1)", true},
  };
  for (const auto& c : cases) EXPECT_EQ(Eval(c.text), c.expected) << c.text;
}

TEST(Criteria, MalformedTextNamesTheTextAndPlace) {
  struct Case {
    const char* text;
    const char* says;
  } cases[] = {
      {"ID = ", "a value is expected"},
      {"ID 5", "a comparison operator is expected"},
      {"(ID = 5", "a ')' is missing"},
      {"LastName = 'abc", "a closing quote is missing"},
      {"CheckDate > #2026-13-45#", "is no date"},
      {"ID = 5 AND", "a field name is expected"},
      {"ID = 5 6", "unexpected text"},
      {"ID < NULL", "NULL can only be compared"},
      {"[Check# = 1", "a ']' is missing"},
  };
  for (const auto& c : cases)
    EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { Criteria::Parse(c.text); },
                                                          {c.says, c.text, "position"}))
        << c.text;
}

std::string Repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

// Long lists of conditions, as a host builds them for a picked set of rows,
// and parentheses past the limit.
TEST(Criteria, LongChainsEvaluateAndDeepNestingIsRefused) {
  const int n = 30000;
  EXPECT_TRUE(Eval(Repeat("ID = 1 OR ", n) + "ID = 12"));
  EXPECT_FALSE(Eval(Repeat("ID = 1 OR ", n) + "ID = 13"));
  EXPECT_TRUE(Eval(Repeat("ID <> 1 AND ", n) + "ID = 12"));
  EXPECT_FALSE(Eval("ID = 13 AND " + Repeat("ID <> 1 AND ", n) + "ID = 12"));
  EXPECT_TRUE(Eval(Repeat("(", Criteria::kMaxNesting) + "ID = 12" + Repeat(")", Criteria::kMaxNesting)));
  std::string deep = Repeat("(", 2 * Criteria::kMaxNesting) + "ID = 12" + Repeat(")", 2 * Criteria::kMaxNesting);
  const std::string limit = "more than " + std::to_string(Criteria::kMaxNesting) + " levels";
  EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { Criteria::Parse(deep); }, {limit}));
}

TEST(Criteria, LikeWildcards) {
  struct Case {
    const char* text;
    const char* pattern;
    bool expected;
  } cases[] = {
      {"Tremblay", "Trem*", true},  {"Tremblay", "*BLAY", true}, {"Tremblay", "T*b*y", true},
      {"Tremblay", "*x*", false},   {"", "*", true},             {"abc", "abc", true},
      {"abcd", "abc", false},       {"aXbXc", "a*c", true},      {"ab", "a*b*c", false},
  };
  for (const auto& c : cases) EXPECT_EQ(LikeMatch(c.text, c.pattern), c.expected) << c.text << " " << c.pattern;
}

}  // namespace
}  // namespace orv::db
