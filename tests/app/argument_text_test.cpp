// The texts both hosts take for dates and amounts: every form a person may
// type, and the near misses that must be refused rather than half read.
#include <gtest/gtest.h>

#include "invokers.h"

namespace orv::app {
namespace {

TEST(ArgumentText, DatesTakeTheDayAndAnOptionalTime) {
  struct Case {
    const char* name;
    const char* text;
    const char* iso;  // nullptr: refused
  } cases[] = {
      {"day", "2026-11-20", "2026-11-20 00:00:00"},
      {"one-digit month and day", "2026-3-7", "2026-03-07 00:00:00"},
      {"blank and minutes", "2026-11-20 9:05", "2026-11-20 09:05:00"},
      {"T and seconds", "2026-11-20T23:59:58", "2026-11-20 23:59:58"},
      {"leap day", "2024-02-29", "2024-02-29 00:00:00"},
      {"first day the database keeps", "1753-01-01", "1753-01-01 00:00:00"},
      {"empty", "", nullptr},
      {"five-digit year", "20261-11-20", nullptr},
      {"three-digit day", "2026-11-020", nullptr},
      {"slashes", "2026/11/20", nullptr},
      {"trailing blank", "2026-11-20 ", nullptr},
      {"hour without minutes", "2026-11-20 10", nullptr},
      {"one-digit minutes", "2026-11-20 10:5", nullptr},
      {"colon without seconds", "2026-11-20 10:30:", nullptr},
      {"three-digit seconds", "2026-11-20 10:30:000", nullptr},
      {"other separator", "2026-11-20_10:30", nullptr},
      {"before 1753", "1752-12-31", nullptr},
      {"no such day", "2026-02-29", nullptr},
      {"month 13", "2026-13-01", nullptr},
      {"hour 24", "2026-11-20 24:00", nullptr},
      {"minute 60", "2026-11-20 10:60", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto d = ParseDateArgument(c.text);
    if (c.iso == nullptr) {
      EXPECT_FALSE(d.has_value()) << d->ToIso();
    } else {
      ASSERT_TRUE(d.has_value());
      EXPECT_EQ(d->ToIso(), c.iso);
    }
  }
}

TEST(ArgumentText, AmountsArePlainDecimalsOfUpToFourPlaces) {
  const Param amount{"Amount", "Currency", false};
  struct Case {
    const char* name;
    const char* text;
    const char* value;  // nullptr: refused
  } cases[] = {
      {"whole", "125", "125"},
      {"cents", "125.50", "125.5"},
      {"four places", "-0.0001", "-0.0001"},
      {"plus sign", "+7.25", "7.25"},
      {"fifteen digits", "922337203685477", "922337203685477"},
      {"five places", "1.00001", nullptr},
      {"sixteen digits", "1234567890123456", nullptr},
      {"point without places", "12.", nullptr},
      {"point first", ".5", nullptr},
      {"thousands comma", "1,250.00", nullptr},
      {"sign alone", "-", nullptr},
      {"empty", "", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.value == nullptr) {
      EXPECT_THROW(ParseArgument(amount, c.text), std::invalid_argument);
    } else {
      EXPECT_EQ(CStr(ParseArgument(amount, c.text)), c.value);
    }
  }
}

}  // namespace
}  // namespace orv::app
