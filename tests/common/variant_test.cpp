// Variant conversions with the host language's rules: number text by the
// locale, rounding half to even, Null failing a typed conversion.
#include "common/variant.h"

#include <gtest/gtest.h>

#include <ostream>

#include "common/errors.h"
#include "named_cases.h"

namespace orv {
namespace {

// Number text read by the locale: IsNumericValue, TryTextToDouble and CDbl
// agree on what is a number.
TEST(NumberText, ReadsByTheLocale) {
  const struct {
    const char* name;
    const char* text;
    bool numeric;
    double value;
  } cases[] = {
      {"Plain", "12.5", true, 12.5},
      {"MoneyText", " $1,234.50 ", true, 1234.5},
      {"SignBeforeSymbol", "-$5", true, -5},
      {"SignSymbolBlanks", "- $ 5", true, -5},
      {"TrailingSign", "5-", true, -5},
      {"Parentheses", "(5)", true, -5},
      {"Exponent", "1e3", true, 1000},
      {"LeadingPoint", ".5", true, 0.5},
      {"TrailingPoint", "5.", true, 5},
      {"BlanksInside", "416 555 1234", false, 0},
      {"DashInside", "1-2", false, 0},
      {"ExponentWithoutDigits", "1e", false, 0},
      {"GroupingFirst", ",5", false, 0},
      {"SymbolAlone", "$", false, 0},
      {"EmptyText", "", false, 0},
      {"SignAndParentheses", "(-5)", false, 0},
      {"TwoSigns", "--5", false, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(IsNumericValue(c.text), c.numeric);
    double d = 0;
    EXPECT_EQ(TryTextToDouble(c.text, d), c.numeric);
    if (c.numeric) {
      EXPECT_DOUBLE_EQ(CDbl(c.text), c.value);
    } else {
      EXPECT_THROW(CDbl(c.text), ConversionError);
    }
  }
}

TEST(CStr, TextOfEachKind) {
  EXPECT_EQ(CStr(Variant()), "");
  EXPECT_EQ(CStr(42), "42");
  EXPECT_EQ(CStr(Variant::Int64(-9007199254740993LL)), "-9007199254740993");
  EXPECT_EQ(CStr(12.5), "12.5");
  EXPECT_EQ(CStr(0.1 + 0.2), "0.3");
  EXPECT_EQ(CStr(1e20), "1E+20");
  EXPECT_EQ(CStr(Cur("1090.0000")), "1090");
  EXPECT_EQ(CStr(Cur("-3.2500")), "-3.25");
  EXPECT_EQ(CStr(true), "True");
  EXPECT_EQ(CStr(DateTime(36951.0)), "2001-03-01");
  EXPECT_EQ(CStr(DateTime(36951.5)), "2001-03-01 12:00:00 PM");
  EXPECT_EQ(CStr(DateTime(0.0)), "12:00:00 AM");  // the base day prints its time alone
  EXPECT_THROW(CStr(Variant::Null()), NullError);
}

TEST(CLng, RoundsHalfToEven) {
  EXPECT_EQ(CLng("2.5"), 2);
  EXPECT_EQ(CLng(3.5), 4);
  EXPECT_EQ(CLng(-2.5), -2);
  EXPECT_EQ(CLng(Cur("2.5")), 2);
  EXPECT_EQ(CLng(Cur("-3.5")), -4);
  EXPECT_EQ(CLng(true), -1);
  EXPECT_EQ(CLng(Variant()), 0);
  EXPECT_THROW(CLng(3e10), OverflowError);
  EXPECT_THROW(CLng("abc"), ConversionError);
  EXPECT_THROW(CLng(Variant::Null()), NullError);
}

TEST(CCur, RoundsAtTheFourthDecimal) {
  EXPECT_EQ(CCur("1.23455"), Cur("1.2346"));
  EXPECT_EQ(CCur("1.23445"), Cur("1.2344"));
  EXPECT_EQ(CCur("$1,234.50"), Cur("1234.5"));
  EXPECT_EQ(CCur(12.5), Cur("12.5"));
  EXPECT_THROW(CCur("12abc"), ConversionError);
  EXPECT_THROW(CCur(Variant::Null()), NullError);
}

TEST(CBool, TextAndNumbers) {
  EXPECT_TRUE(CBool("True"));
  EXPECT_TRUE(CBool(" TRUE "));
  EXPECT_FALSE(CBool("false"));
  EXPECT_TRUE(CBool("-1"));
  EXPECT_TRUE(CBool(0.5));
  EXPECT_FALSE(CBool(Variant()));
  EXPECT_THROW(CBool("Yes"), ConversionError);
  EXPECT_THROW(CBool(""), ConversionError);
}

TEST(CDate, FromTextNumbersAndDates) {
  EXPECT_EQ(CDate("2001-03-01").serial(), 36951);
  EXPECT_EQ(CDate(36951).serial(), 36951);
  EXPECT_EQ(CDate("36951").serial(), 36951);
  EXPECT_THROW(CDate("abc"), ConversionError);
  EXPECT_THROW(CDate(Variant::Null()), NullError);
}

TEST(IsDateValue, DatesAndDateText) {
  EXPECT_TRUE(IsDateValue(DateTime(1.0)));
  EXPECT_TRUE(IsDateValue("2001-03-01"));
  EXPECT_TRUE(IsDateValue("9:05 AM"));
  EXPECT_FALSE(IsDateValue("36951"));
  EXPECT_FALSE(IsDateValue(36951));
  EXPECT_FALSE(IsDateValue(Variant::Null()));
}

TEST(IsNumericValue, KindsThatAreNumbers) {
  EXPECT_TRUE(IsNumericValue(Variant()));
  EXPECT_TRUE(IsNumericValue(true));
  EXPECT_TRUE(IsNumericValue(Cur("1")));
  EXPECT_FALSE(IsNumericValue(Variant::Null()));
  EXPECT_FALSE(IsNumericValue(DateTime(1.0)));
}

}  // namespace
}  // namespace orv
