// ReturnPercent, IsMonthEnd and the Progress percentage.
#include "common/report_math.h"

#include <gtest/gtest.h>

#include "common/errors.h"
#include "named_cases.h"

namespace orv {
namespace {

TEST(ReturnPercent, ZeroOrNullGivesTheLiteralElseTheShareOfTheValuesAsTheyCameIn) {
  EXPECT_EQ(ReturnPercent(Variant::Null(), 5), "0.00%");
  EXPECT_EQ(ReturnPercent(5, Variant::Null()), "0.00%");
  EXPECT_EQ(ReturnPercent(5, 0), "0.00%");
  EXPECT_EQ(ReturnPercent(0, 5), "0.00%");
  EXPECT_EQ(ReturnPercent("abc", 4), "0.00%");
  // Otherwise the share in the percent format.
  EXPECT_EQ(ReturnPercent(1, 3), "33.33%");
  EXPECT_EQ(ReturnPercent(Cur("50"), Cur("200")), "25.00%");
  EXPECT_EQ(ReturnPercent(-1, 4), "-25.00%");
  EXPECT_EQ(ReturnPercent("$1,000.00", "$4,000.00"), "25.00%");
  // The values are divided as they came in, not as money:
  // 0.00001 rounds to 0.0000 as money, so it counts as zero ...
  EXPECT_EQ(ReturnPercent(0.00001, 1), "0.00%");
  // ... while 0.00006 is 0.0001 as money, and the share is of 0.00006 itself:
  // 0.006% shows as 0.01%, where 0.0001 would also show 0.01%; 0.000064 of
  // 0.0002 is 32%, where the money forms 0.0001 / 0.0002 would give 50%.
  EXPECT_EQ(ReturnPercent(0.00006, 1), "0.01%");
  EXPECT_EQ(ReturnPercent(0.000064, 0.0002), "32.00%");
}

TEST(IsMonthEnd, ComparesWithTheNextDay) {
  EXPECT_TRUE(IsMonthEnd(DateTime::FromParts(2004, 2, 29)));
  EXPECT_FALSE(IsMonthEnd(DateTime::FromParts(2004, 2, 28)));
  EXPECT_TRUE(IsMonthEnd(DateTime::FromParts(2001, 2, 28)));
  EXPECT_TRUE(IsMonthEnd(DateTime::FromParts(2001, 12, 31)));
  EXPECT_TRUE(IsMonthEnd(DateTime::FromParts(2001, 4, 30, 23, 59)));
  EXPECT_FALSE(IsMonthEnd(DateTime::FromParts(2001, 4, 29, 23, 59)));
}

// Rounded half to even, and failing as the byte conversion fails.
TEST(ProgressPercent, RoundsHalfToEvenAndFailsLikeTheByteConversion) {
  const struct {
    const char* name;
    int64_t position, count;
    int expected;
  } cases[] = {
      {"OneEighthTieDown", 1, 8, 12}, {"ThreeEighthsTieUp", 3, 8, 38},
      {"LastRecord", 8, 8, 100}, {"Start", 0, 5, 0},
      {"TwoThirds", 2, 3, 67}, {"ByteLimit", 255, 100, 255},
      {"OneOfMany", 1, 1000, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(ProgressPercent(c.position, c.count), c.expected) << c.name;
  EXPECT_THROW(ProgressPercent(-1, 10), OverflowError);  // position unknown
  EXPECT_THROW(ProgressPercent(300, 100), OverflowError);
  EXPECT_THROW(ProgressPercent(5, 0), DivisionByZeroError);
  EXPECT_THROW(ProgressPercent(0, 0), OverflowError);
}

}  // namespace
}  // namespace orv
