// clsCommonFunctions: the coercions, formatting, time and filter routines,
// with the awkward inputs among the rows. Expected values are worked out by
// hand from each routine's rules.
#include "common/common_functions.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "common/errors.h"
#include "named_cases.h"

namespace orv {
namespace {

DateTime Serial(double s) {
  return DateTime(s);
}

template <class T>
struct Case {
  const char* name;
  Variant value;
  T expected;
};

// Every case through `convert`, each under its name.
template <class T, class Convert>
void ExpectEach(const std::vector<Case<T>>& cases, Convert convert) {
  for (const Case<T>& c : cases) {
    SCOPED_TRACE(c.name);
    if constexpr (std::is_floating_point_v<T>) {
      EXPECT_DOUBLE_EQ(convert(c.value), c.expected);
    } else {
      EXPECT_EQ(convert(c.value), c.expected);
    }
  }
}

class CommonFunctions : public ::testing::Test {
 protected:
  clsCommonFunctions cf;
};

// ---- ReturnCur -------------------------------------------------------------

TEST_F(CommonFunctions, ReturnCur) {
  ExpectEach<Currency>({{"Null", Variant::Null(), Cur("0")},
                        {"EmptyText", "", Cur("0")},
                        {"Empty", Variant(), Cur("0")},
                        {"NoNumber", "abc", Cur("0")},
                        {"Parentheses", "(5.00)", Cur("-5")},
                        {"FloatToFourDecimals", 12.34567, Cur("12.3457")},
                        {"TextHalfToEvenUp", "12.34575", Cur("12.3458")},
                        {"TrueIsMinusOne", true, Cur("-1")},
                        {"Money", Cur("-0.0001"), Cur("-0.0001")},
                        {"TooBig", 1e300, Cur("0")}},
                       [&](const Variant& v) { return cf.ReturnCur(v); });
}

// ---- ReturnNumber ----------------------------------------------------------

TEST_F(CommonFunctions, ReturnNumberConvertsAndCleans) {
  struct {
    const char* name;
    Variant value;
    int32_t expected;
    Variant after;  // the caller's variable afterwards
  } cases[] = {{"MaskedInput", "1_2_3", 123, "123"},
               {"OnlyMask", "___", 0, ""},
               {"Null", Variant::Null(), 0, Variant::Null()},
               {"Blanks", "  ", 0, "  "},
               {"HalfToEvenDown", "2.5", 2, "2.5"},
               {"HalfToEvenUp", "3.5", 4, "3.5"},
               {"NoNumber", "abc", 0, "abc"},
               {"Padded", " 42 ", 42, " 42 "},
               {"TooBig", "99999999999", 0, "99999999999"},
               {"NumberUntouched", 7, 7, 7},
               {"FloatUntouched", -7.5, -8, -7.5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Variant v = c.value;
    EXPECT_EQ(cf.ReturnNumber(v), c.expected);
    EXPECT_EQ(v, c.after);
  }
}

// ---- ReturnVal, Return01 ---------------------------------------------------
// Text is read by Val (its forms: currency_vbstrings_test.cpp); here what
// ReturnVal does around it.

TEST_F(CommonFunctions, ReturnValReadsTheLeadingNumber) {
  ExpectEach<double>({{"TrailingLetters", "12abc", 12},
                      {"Null", Variant::Null(), 0},
                      {"Float", 12.5, 12.5},
                      {"Whole", 785, 785},
                      {"NegativeWhole", -17, -17},
                      {"WideWhole", int64_t(9007199254740991), 9007199254740991.0},
                      {"Money", Cur("3.25"), 3.25},
                      {"DateTextIsItsYear", Serial(36951), 2001},
                      {"OverflowGivesZero", "1e400", 0},
                      {"TrueTextIsNoNumber", true, 0}},
                     [&](const Variant& v) { return cf.ReturnVal(v); });
}

TEST_F(CommonFunctions, Return01IsOneForNonzero) {
  ExpectEach<int>({{"Null", Variant::Null(), 0},
                   {"NoNumber", "abc", 0},
                   {"LeadingNumber", "5x", 1},
                   {"Zero", "0", 0},
                   {"Fraction", "0.5", 1},
                   {"MinusOne", -1, 1},
                   {"TrueTextReadsAsZero", true, 0}},
                  [&](const Variant& v) { return cf.Return01(v); });
}

// ---- ReturnDate, ReturnBool, ReturnYN --------------------------------------

class ReturnDate : public CommonFunctions {
 protected:
  void SetUp() override { Clock::SetFixed(DateTime(40344 + 0.4375)); }  // 2010-06-15 10:30
  void TearDown() override { Clock::UseSystem(); }
};

TEST_F(ReturnDate, NullIsTodayNoDateIsDayZeroAndTheRestConvert) {
  EXPECT_EQ(cf.ReturnDate(Variant::Null()).serial(), 40344);
  EXPECT_EQ(cf.ReturnDate("abc").serial(), 0);
  EXPECT_EQ(cf.ReturnDate(Variant()).serial(), 0);
  EXPECT_EQ(cf.ReturnDate("2001-03-01").serial(), 36951);
  EXPECT_EQ(cf.ReturnDate(36951).serial(), 36951);
  EXPECT_EQ(cf.ReturnDate(Serial(36951.5)).serial(), 36951.5);
}

TEST_F(CommonFunctions, ReturnBool) {
  ExpectEach<bool>({{"Null", Variant::Null(), false},
                    {"EmptyText", "", false},
                    {"TrueText", "True", true},
                    {"NoBoolean", "abc", false},
                    {"Zero", 0, false},
                    {"MinusOne", -1, true},
                    {"OneText", "1", true}},
                   [&](const Variant& v) { return cf.ReturnBool(v); });
}

TEST_F(CommonFunctions, ReturnYN) {
  ExpectEach<std::string>({{"Null", Variant::Null(), "N"},
                           {"True", true, "Y"},
                           {"Zero", 0, "N"},
                           {"TrueText", "true", "Y"},
                           {"NoBoolean", "abc", ""},
                           {"EmptyText", "", ""}},
                          [&](const Variant& v) { return cf.ReturnYN(v); });
}

TEST_F(CommonFunctions, BoolToIntOneForAnyNonzero) {
  EXPECT_EQ(cf.BoolToInt(0), 0);
  EXPECT_EQ(cf.BoolToInt(-1), 1);
  EXPECT_EQ(cf.BoolToInt(5), 1);
}

TEST_F(CommonFunctions, ReturnStrTextWithOptionalTrim) {
  EXPECT_EQ(cf.returnStr(Variant::Null()), "");
  EXPECT_EQ(cf.returnStr(Variant()), "");
  EXPECT_EQ(cf.returnStr("  a b  "), "  a b  ");
  EXPECT_EQ(cf.returnStr("  a b  ", true), "a b");
  EXPECT_EQ(cf.returnStr(12.5), "12.5");
  EXPECT_EQ(cf.returnStr(Cur("1090.0000")), "1090");
  EXPECT_EQ(cf.returnStr(Serial(36951)), "2001-03-01");
}

// ---- MyFormat, ReturnFormatedDate -----------------------------------------

// "Currency" means the figure without its sign; any other format the named
// currency format.
TEST_F(CommonFunctions, MyFormat) {
  EXPECT_EQ(cf.MyFormat(1234.5, "Currency"), "1,234.50");
  EXPECT_EQ(cf.MyFormat(Cur("-5"), "Currency"), "-5.00");
  EXPECT_EQ(cf.MyFormat(Cur("0.005"), "Currency"), "0.01");
  EXPECT_EQ(cf.MyFormat("$2,000", "Currency"), "2,000.00");
  EXPECT_EQ(cf.MyFormat(1234.5, "x"), "$1,234.50");
  EXPECT_EQ(cf.MyFormat(1234.5, "currency"), "$1,234.50");
  EXPECT_EQ(cf.MyFormat(Cur("-5"), ""), "-$5.00");
  EXPECT_THROW(cf.MyFormat("abc", "Currency"), ConversionError);
  EXPECT_THROW(cf.MyFormat(Variant::Null(), "Currency"), NullError);
}

TEST_F(CommonFunctions, ReturnFormatedDate) {
  struct {
    const char* name;
    Variant value;
    const char* fmt;
    const char* expected;
  } cases[] = {{"Null", Variant::Null(), "yyyymmdd", "00000000"},
               {"Year1899", Serial(1), "yyyymmdd", "00000000"},
               {"FirstDayOf1900", Serial(2), "yyyymmdd", "19000101"},
               {"Date", Serial(36951), "yyyymmdd", "20010301"},
               {"DateText", "2001-03-01", "mmddyyyy", "03012001"},
               {"NoDate", "abc", "yyyymmdd", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(cf.ReturnFormatedDate(c.value, c.fmt), c.expected) << c.name;
}

// ---- ConvertToNormalDate, ConvertoNormalCurrency --------------------------

TEST_F(CommonFunctions, ConvertToNormalDateReadsYyyymmdd) {
  EXPECT_TRUE(cf.ConvertToNormalDate(Variant::Null()).IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("00000000").IsNull());
  EXPECT_EQ(cf.ConvertToNormalDate("20010301"), Variant(Serial(36951)));
  EXPECT_EQ(cf.ConvertToNormalDate(20010301), Variant(Serial(36951)));
  EXPECT_EQ(cf.ConvertToNormalDate("20010103"), Variant(Serial(36894)));
  EXPECT_TRUE(cf.ConvertToNormalDate("20010230").IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("2001").IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("abcdefgh").IsEmpty());
}

TEST_F(CommonFunctions, ConvertoNormalCurrencyHasAnImpliedDecimalPoint) {
  ExpectEach<Currency>({{"TwoDigits", "12", Cur("0")},
                        {"ThreeDigits", "150", Cur("1.50")},
                        {"Negative", "-150", Cur("-1.50")},
                        {"Number", 12345, Cur("123.45")},
                        {"Null", Variant::Null(), Cur("0")},
                        {"NoNumber", "abcd", Cur("0")}},
                       [&](const Variant& v) { return cf.ConvertoNormalCurrency(v); });
}

// ---- TimeToInt, IntToTime --------------------------------------------------

TEST_F(CommonFunctions, TimeToIntCountsMinutesSinceMidnight) {
  EXPECT_THROW(cf.TimeToInt("abc"), ReportError);
  ExpectEach<int32_t>({{"Null", Variant::Null(), 0},
                       {"EmptyText", "", 0},
                       {"HalfPastMidnight", "12:30 AM", 30},
                       {"HalfPastNoon", "12:30 PM", 750},
                       {"FivePastOne", "1:05 PM", 785},
                       {"TwentyFourHourText", "13:05", 785},
                       {"DateWithTime", Serial(36951 + 785 / 1440.0), 785},
                       {"NoonSerial", 0.5, 720},
                       {"LastMinute", "11:59 PM", 1439}},
                      [&](const Variant& v) { return cf.TimeToInt(v); });
}

TEST_F(CommonFunctions, IntToTimeLocaleLongTimeWithSeconds) {
  EXPECT_EQ(cf.IntToTime(0), "12:00:00 AM");
  EXPECT_EQ(cf.IntToTime(720), "12:00:00 PM");
  EXPECT_EQ(cf.IntToTime(785), "1:05:00 PM");
  EXPECT_EQ(cf.IntToTime(1439), "11:59:00 PM");
}

// ---- Provider filters and bulk payment names ------------------------------

TEST_F(CommonFunctions, ProviderFilterCountsAndReadsIds) {
  EXPECT_EQ(cf.GetNumberOfIDFromProviderName("ID = 12 OR ID = 14"), 2);
  EXPECT_EQ(cf.GetNumberOfIDFromProviderName("ID = 5"), 1);
  EXPECT_EQ(cf.GetNumberOfIDFromProviderName(""), 0);
  EXPECT_EQ(cf.GetIDFromProviderName("ID = 12 OR ID = 14", 1), 12);
  EXPECT_EQ(cf.GetIDFromProviderName("ID = 12 OR ID = 14", 2), 14);
  EXPECT_EQ(cf.GetIDFromProviderName("ID = 12 OR ID = 14", 3), 0);
  EXPECT_EQ(cf.GetIDFromProviderName("(ID = 7)", 1), 7);
  EXPECT_EQ(cf.GetIDFromProviderName("ID = 7", 0), 0);
  // Without the blank after "=" the first digit is lost.
  EXPECT_EQ(cf.GetIDFromProviderName("ID =12", 1), 2);
  EXPECT_EQ(cf.GetIDFromProviderName("ID =7", 1), 0);
}

TEST_F(CommonFunctions, PursePaymentNameSplits) {
  struct {
    const char* name;
    const char* payment;
    const char* which;
    const char* expected;
  } cases[] = {
      {"Insurer", "Sun Life-Smith", "Insurance", "Sun Life"},
      {"Patient", "Sun Life-Smith", "Patient", "Smith"},
      {"NoDashInsurer", "Sun Life", "Insurance", "Sun Life"},
      {"NoDashPatient", "Sun Life", "Patient", ""},
      {"DashAtFifteen", "ABCDEFGHIJKLMN-Z", "Insurance", "ABCDEFGHIJKLMN"},
      {"DashAtSeventeen", "ABCDEFGHIJKLMNOP-Z", "Insurance", "ABCDEFGHIJKLMNO"},
      {"LastDashCounts", "A-B-C", "Insurance", "A-B"},
      {"LastDashPatient", "A-B-C", "Patient", "C"},
      {"BlanksKept", "Blue Cross - Roy", "Patient", " Roy"},
      {"AccentsCountAsOne", "Desjardins Sécurité-Côté", "Insurance", "Desjardins Sécu"},
      {"OtherWhich", "x-y", "Other", ""},
      {"WhichIsExact", "x-y", "insurance", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(cf.PursePaymentName(c.payment, c.which), c.expected) << c.name;
}

}  // namespace
}  // namespace orv
