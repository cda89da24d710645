// Money arithmetic and text, and the host language's Val.
#include <gtest/gtest.h>

#include <limits>

#include "common/currency.h"
#include "common/errors.h"
#include "common/vbstrings.h"
#include "named_cases.h"

namespace orv {
namespace {

TEST(Currency, DecimalTextIsExact) {
  EXPECT_EQ(Cur("0.1").raw(), 1000);
  EXPECT_EQ(Cur("1090").raw(), 10900000);
  EXPECT_EQ(Cur(" -12.5 ").raw(), -125000);
  EXPECT_EQ(Cur("1.23455").raw(), 12346);   // half to even: 5 after an odd digit
  EXPECT_EQ(Cur("1.23445").raw(), 12344);   // half to even: 5 after an even digit
  EXPECT_EQ(Cur("1.234451").raw(), 12345);  // above half
  EXPECT_EQ(Cur("-1.23455").raw(), -12346);
  EXPECT_EQ(Cur("1e3").raw(), 10000000);
  EXPECT_THROW(Cur("abc"), ConversionError);
  EXPECT_THROW(Cur(""), ConversionError);
}

TEST(Currency, Text) {
  EXPECT_EQ(Cur("12.5").ToString(), "12.5");
  EXPECT_EQ(Cur("-3").ToString(), "-3");
  EXPECT_EQ(Cur("0").ToString(), "0");
  EXPECT_EQ(Cur("1090").ToFixed4(), "1090.0000");
  EXPECT_EQ(Cur("-50").ToFixed4(), "-50.0000");
  EXPECT_EQ(Cur("-0.0001").ToFixed4(), "-0.0001");
}

TEST(Currency, Arithmetic) {
  EXPECT_EQ(Cur("1.5") * Cur("1.5"), Cur("2.25"));
  EXPECT_EQ(Cur("0.0001") * Cur("0.5"), Cur("0"));       // 0.00005 to even: 0
  EXPECT_EQ(Cur("0.0003") * Cur("0.5"), Cur("0.0002"));  // 0.00015 to even: 0.0002
  EXPECT_EQ(Cur("2.5") * 3, Cur("7.5"));
  EXPECT_DOUBLE_EQ(Cur("1") / Cur("4"), 0.25);
  EXPECT_THROW(Cur("1") / Cur("0"), DivisionByZeroError);
  EXPECT_THROW(Currency::FromRaw(std::numeric_limits<int64_t>::max()) + Currency::FromRaw(1),
               OverflowError);
  EXPECT_THROW(-Currency::FromRaw(std::numeric_limits<int64_t>::min()), OverflowError);
}

TEST(Currency, RoundHalfToEven) {
  EXPECT_EQ(Round(Cur("2.345"), 2), Cur("2.34"));
  EXPECT_EQ(Round(Cur("2.355"), 2), Cur("2.36"));
  EXPECT_EQ(Round(Cur("-2.5"), 0), Cur("-2"));
  EXPECT_EQ(Round(Cur("1.23456"), 4), Cur("1.2346"));
  EXPECT_EQ(RoundHalfEven(2.5, 0), 2);
  EXPECT_EQ(RoundHalfEven(0.125, 2), 0.12);
  EXPECT_EQ(RoundHalfEven(0.375, 2), 0.38);
  EXPECT_EQ(RoundHalfEven(2.675, 2), 2.68);  // 2.675 * 100 rounds to exactly 267.5
}

TEST(Val, ReadsTheLeadingNumber) {
  const struct {
    const char* name;
    const char* text;
    double expected;
  } cases[] = {
      {"Plain", "12.5", 12.5}, {"TrailingText", "12abc", 12},
      {"NoNumber", "abc", 0}, {"EmptyText", "", 0},
      {"BlanksEverywhere", " 1 2 3 ", 123},
      {"SignAndBlanks", " - 1 2.5e1x", -125}, {"PlusSign", "+7", 7},
      {"LeadingPoint", ".5", 0.5}, {"SecondPointStops", "1.2.3", 1.2},
      {"CommaStops", "1,234", 1}, {"ExponentD", "1D3", 1000},
      {"ExponentWithoutDigits", "1e", 1},
      {"ExponentSignWithoutDigits", "2E-x", 2}, {"Hex", "&HFF", 255},
      {"HexLowerCase", "&hff", 255}, {"Hex16BitWraps", "&HFFFF", -1},
      {"Hex32Bit", "&H10000", 65536},
      {"Hex32BitWraps", "&HFFFFFFFF", -1}, {"Octal", "&O17", 15},
      {"SignOnly", "-", 0}, {"DateText", "2001-03-01", 2001},
      {"Tab", "\t4", 4},
  };
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(vb::Val(c.text), c.expected) << c.name;
  EXPECT_THROW(vb::Val("1e400"), OverflowError);
  EXPECT_THROW(vb::Val("&H100000000"), OverflowError);
}


}  // namespace
}  // namespace orv
