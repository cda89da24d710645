// The age classes of the balance lists and the flag test they share with
// the account model, on the days around each boundary.
#include <gtest/gtest.h>

#include "common/flags.h"
#include "receivables/age_class.h"

namespace orv::testing {
namespace {

TEST(AgeClass, WholeDaysBackFromTheEndDate) {
  const DateTime end = DateTime::FromParts(2026, 11, 20, 9, 0, 0);
  struct Case {
    const char* name;
    Variant date;
    int age_class;
  };
  const Case cases[] = {
      {"the end date itself", Variant(DateTime::FromParts(2026, 11, 20)), 0},
      {"after the end date", Variant(DateTime::FromParts(2026, 12, 1)), 0},
      {"exactly 30 days, late in the day", Variant(DateTime::FromParts(2026, 10, 21, 23, 0, 0)), 0},
      {"31 days", Variant(DateTime::FromParts(2026, 10, 20)), 1},
      {"60 days", Variant(DateTime::FromParts(2026, 9, 21)), 1},
      {"61 days", Variant(DateTime::FromParts(2026, 9, 20)), 2},
      {"90 days", Variant(DateTime::FromParts(2026, 8, 22)), 2},
      {"91 days", Variant(DateTime::FromParts(2026, 8, 21)), 3},
      {"years back", Variant(DateTime::FromParts(2001, 2, 28)), 3},
      {"no date", Variant::Null(), 3},
      {"date as text", Variant(std::string("2026-10-21")), 0},
  };
  for (const Case& c : cases) EXPECT_EQ(AgeClass(c.date, end), c.age_class) << c.name;
}

TEST(FlagSet, EitherStoredFormOfSetAndNothingElse) {
  struct Case {
    const char* name;
    Variant value;
    bool set;
  };
  const Case cases[] = {
      {"-1 of the older screens", Variant(-1), true},
      {"1 of the newer screens", Variant(1), true},
      {"true", Variant(true), true},
      {"0", Variant(0), false},
      {"NULL", Variant::Null(), false},
      {"empty", Variant(), false},
      {"number as text", Variant(std::string("-1")), true},
      {"zero as text", Variant(std::string("0")), false},
      {"text that is no number", Variant(std::string("yes")), false},
  };
  for (const Case& c : cases) EXPECT_EQ(FlagSet(c.value), c.set) << c.name;
}

}  // namespace
}  // namespace orv::testing
