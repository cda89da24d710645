// clsCommonFunctions: the coercions, formatting, time and filter routines,
// with the awkward inputs among the rows. Expected values are worked out by
// hand from each routine's rules.
#include "common/common_functions.h"

#include <gtest/gtest.h>

#include <ostream>

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

template <class T>
void PrintTo(const Case<T>& c, std::ostream* os) {
  *os << c.name;
}

class CommonFunctions {
 protected:
  clsCommonFunctions cf;
};

// ---- ReturnCur -------------------------------------------------------------

class ReturnCur : public CommonFunctions, public ::testing::TestWithParam<Case<Currency>> {};
TEST_P(ReturnCur, Converts) {
  EXPECT_EQ(cf.ReturnCur(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ReturnCur,
    ::testing::Values(
        Case<Currency>{"Null", Variant::Null(), Cur("0")},
        Case<Currency>{"EmptyText", "", Cur("0")}, Case<Currency>{"ThreeBlanks", "   ", Cur("0")},
        Case<Currency>{"Empty", Variant(), Cur("0")}, Case<Currency>{"NoNumber", "abc", Cur("0")},
        Case<Currency>{"LocaleText", "$1,234.50", Cur("1234.5")},
        Case<Currency>{"Parentheses", "(5.00)", Cur("-5")},
        Case<Currency>{"FloatToFourDecimals", 12.34567, Cur("12.3457")},
        Case<Currency>{"TextHalfToEvenDown", "12.34565", Cur("12.3456")},
        Case<Currency>{"TextHalfToEvenUp", "12.34575", Cur("12.3458")},
        Case<Currency>{"Whole", 42, Cur("42")}, Case<Currency>{"TrueIsMinusOne", true, Cur("-1")},
        Case<Currency>{"Money", Cur("-0.0001"), Cur("-0.0001")},
        Case<Currency>{"TooBig", 1e300, Cur("0")}),
    CaseName);

// ---- ReturnNumber ----------------------------------------------------------

struct NumberCase {
  const char* name;
  Variant value;
  int32_t expected;
  Variant after;  // the caller's variable afterwards
};
void PrintTo(const NumberCase& c, std::ostream* os) {
  *os << c.name;
}

class ReturnNumber : public CommonFunctions, public ::testing::TestWithParam<NumberCase> {};
TEST_P(ReturnNumber, ConvertsAndCleans) {
  Variant v = GetParam().value;
  EXPECT_EQ(cf.ReturnNumber(v), GetParam().expected);
  EXPECT_EQ(v, GetParam().after);
}
INSTANTIATE_TEST_SUITE_P(Cases, ReturnNumber,
                         ::testing::Values(NumberCase{"MaskedInput", "1_2_3", 123, "123"},
                                           NumberCase{"TrailingMask", "42___", 42, "42"},
                                           NumberCase{"OnlyMask", "___", 0, ""},
                                           NumberCase{"Null", Variant::Null(), 0, Variant::Null()},
                                           NumberCase{"Blanks", "  ", 0, "  "},
                                           NumberCase{"HalfToEvenDown", "2.5", 2, "2.5"},
                                           NumberCase{"HalfToEvenUp", "3.5", 4, "3.5"},
                                           NumberCase{"NoNumber", "abc", 0, "abc"},
                                           NumberCase{"Padded", " 42 ", 42, " 42 "},
                                           NumberCase{"TooBig", "99999999999", 0, "99999999999"},
                                           NumberCase{"NumberUntouched", 7, 7, 7},
                                           NumberCase{"FloatUntouched", -7.5, -8, -7.5}),
                         CaseName);

// ---- ReturnVal, Return01 ---------------------------------------------------

class ReturnVal : public CommonFunctions, public ::testing::TestWithParam<Case<double>> {};
TEST_P(ReturnVal, ReadsTheLeadingNumber) {
  EXPECT_DOUBLE_EQ(cf.ReturnVal(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Cases, ReturnVal,
                         ::testing::Values(Case<double>{"TrailingLetters", "12abc", 12},
                                           Case<double>{"NoNumber", "abc", 0},
                                           Case<double>{"BlanksInside", " - 1 2.5e1x", -125},
                                           Case<double>{"NoGrouping", "1,234", 1},
                                           Case<double>{"Hex", "&HFF", 255},
                                           Case<double>{"HexWraps16Bit", "&HFFFF", -1},
                                           Case<double>{"Null", Variant::Null(), 0},
                                           Case<double>{"Float", 12.5, 12.5},
                                           Case<double>{"Money", Cur("3.25"), 3.25},
                                           Case<double>{"DateTextIsItsYear", Serial(36951), 2001},
                                           Case<double>{"OverflowGivesZero", "1e400", 0},
                                           Case<double>{"TrueTextIsNoNumber", true, 0}),
                         CaseName);

class Return01 : public CommonFunctions, public ::testing::TestWithParam<Case<int>> {};
TEST_P(Return01, OneForNonzero) {
  EXPECT_EQ(cf.Return01(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, Return01,
    ::testing::Values(Case<int>{"Null", Variant::Null(), 0}, Case<int>{"NoNumber", "abc", 0},
                      Case<int>{"LeadingNumber", "5x", 1}, Case<int>{"Zero", "0", 0},
                      Case<int>{"Fraction", "0.5", 1}, Case<int>{"MinusOne", -1, 1},
                      Case<int>{"TrueTextReadsAsZero", true, 0}),
    CaseName);

// ---- ReturnDate, ReturnBool, ReturnYN --------------------------------------

class ReturnDate : public CommonFunctions, public ::testing::Test {
 protected:
  void SetUp() override { Clock::SetFixed(DateTime(40344 + 0.4375)); }  // 2010-06-15 10:30
  void TearDown() override { Clock::UseSystem(); }
};

TEST_F(ReturnDate, NullIsTodayWithoutTime) {
  EXPECT_EQ(cf.ReturnDate(Variant::Null()).serial(), 40344);
}
TEST_F(ReturnDate, NoDateIsZeroDate) {
  EXPECT_EQ(cf.ReturnDate("abc").serial(), 0);
  EXPECT_EQ(cf.ReturnDate("").serial(), 0);
  EXPECT_EQ(cf.ReturnDate(Variant()).serial(), 0);
}
TEST_F(ReturnDate, ConvertsDatesTextAndSerials) {
  EXPECT_EQ(cf.ReturnDate("2001-03-01").serial(), 36951);
  EXPECT_EQ(cf.ReturnDate("Mar/01/2001").serial(), 36951);
  EXPECT_EQ(cf.ReturnDate(36951).serial(), 36951);
  EXPECT_EQ(cf.ReturnDate(Serial(36951.5)).serial(), 36951.5);
}

class ReturnBool : public CommonFunctions, public ::testing::TestWithParam<Case<bool>> {};
TEST_P(ReturnBool, Converts) {
  EXPECT_EQ(cf.ReturnBool(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ReturnBool,
    ::testing::Values(Case<bool>{"Null", Variant::Null(), false},
                      Case<bool>{"EmptyText", "", false}, Case<bool>{"TrueText", "True", true},
                      Case<bool>{"FalseLowerCase", "false", false},
                      Case<bool>{"NoBoolean", "abc", false}, Case<bool>{"Zero", 0, false},
                      Case<bool>{"MinusOne", -1, true}, Case<bool>{"OneText", "1", true},
                      Case<bool>{"ZeroText", "0", false}),
    CaseName);

class ReturnYN : public CommonFunctions, public ::testing::TestWithParam<Case<std::string>> {};
TEST_P(ReturnYN, Converts) {
  EXPECT_EQ(cf.ReturnYN(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Cases, ReturnYN,
                         ::testing::Values(Case<std::string>{"Null", Variant::Null(), "N"},
                                           Case<std::string>{"True", true, "Y"},
                                           Case<std::string>{"Zero", 0, "N"},
                                           Case<std::string>{"TrueText", "true", "Y"},
                                           Case<std::string>{"NoBoolean", "abc", ""},
                                           Case<std::string>{"EmptyText", "", ""}),
                         CaseName);

TEST(BoolToInt, OneForAnyNonzero) {
  clsCommonFunctions cf;
  EXPECT_EQ(cf.BoolToInt(0), 0);
  EXPECT_EQ(cf.BoolToInt(-1), 1);
  EXPECT_EQ(cf.BoolToInt(5), 1);
}

TEST(ReturnStr, TextWithOptionalTrim) {
  clsCommonFunctions cf;
  EXPECT_EQ(cf.returnStr(Variant::Null()), "");
  EXPECT_EQ(cf.returnStr(Variant()), "");
  EXPECT_EQ(cf.returnStr("  a b  "), "  a b  ");
  EXPECT_EQ(cf.returnStr("  a b  ", true), "a b");
  EXPECT_EQ(cf.returnStr(12.5), "12.5");
  EXPECT_EQ(cf.returnStr(Cur("1090.0000")), "1090");
  EXPECT_EQ(cf.returnStr(Serial(36951)), "2001-03-01");
}

// ---- MyFormat, ReturnFormatedDate -----------------------------------------

TEST(MyFormat, CurrencyMeansNoSign) {
  clsCommonFunctions cf;
  EXPECT_EQ(cf.MyFormat(1234.5, "Currency"), "1,234.50");
  EXPECT_EQ(cf.MyFormat(Cur("1234.5"), "Currency"), "1,234.50");
  EXPECT_EQ(cf.MyFormat(Cur("-5"), "Currency"), "-5.00");
  EXPECT_EQ(cf.MyFormat(Cur("0.005"), "Currency"), "0.01");
  EXPECT_EQ(cf.MyFormat("$2,000", "Currency"), "2,000.00");
}

TEST(MyFormat, AnyOtherFormatMeansTheNamedCurrency) {
  clsCommonFunctions cf;
  EXPECT_EQ(cf.MyFormat(1234.5, "x"), "$1,234.50");
  EXPECT_EQ(cf.MyFormat(1234.5, "currency"), "$1,234.50");
  EXPECT_EQ(cf.MyFormat(Cur("-5"), ""), "-$5.00");
}

TEST(MyFormat, TextThatIsNoNumberFails) {
  clsCommonFunctions cf;
  EXPECT_THROW(cf.MyFormat("abc", "Currency"), ConversionError);
  EXPECT_THROW(cf.MyFormat(Variant::Null(), "Currency"), NullError);
}

struct DateTextCase {
  const char* name;
  Variant value;
  const char* fmt;
  const char* expected;
};
void PrintTo(const DateTextCase& c, std::ostream* os) {
  *os << c.name;
}

class ReturnFormatedDate : public CommonFunctions, public ::testing::TestWithParam<DateTextCase> {};
TEST_P(ReturnFormatedDate, Formats) {
  EXPECT_EQ(cf.ReturnFormatedDate(GetParam().value, GetParam().fmt), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ReturnFormatedDate,
    ::testing::Values(DateTextCase{"Null", Variant::Null(), "yyyymmdd", "00000000"},
                      DateTextCase{"Year1899", Serial(1), "yyyymmdd", "00000000"},
                      DateTextCase{"Empty", Variant(), "yyyymmdd", "00000000"},
                      DateTextCase{"FirstDayOf1900", Serial(2), "yyyymmdd", "19000101"},
                      DateTextCase{"Date", Serial(36951), "yyyymmdd", "20010301"},
                      DateTextCase{"DateText", "2001-03-01", "mmddyyyy", "03012001"},
                      DateTextCase{"NoDate", "abc", "yyyymmdd", ""}),
    CaseName);

// ---- ConvertToNormalDate, ConvertoNormalCurrency --------------------------

TEST(ConvertToNormalDate, ReadsYyyymmdd) {
  clsCommonFunctions cf;
  EXPECT_TRUE(cf.ConvertToNormalDate(Variant::Null()).IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("00000000").IsNull());
  EXPECT_EQ(cf.ConvertToNormalDate("20010301"), Variant(Serial(36951)));
  EXPECT_EQ(cf.ConvertToNormalDate(20010301), Variant(Serial(36951)));
  EXPECT_EQ(cf.ConvertToNormalDate("20010103"), Variant(Serial(36894)));
  EXPECT_TRUE(cf.ConvertToNormalDate("20010230").IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("2001").IsEmpty());
  EXPECT_TRUE(cf.ConvertToNormalDate("abcdefgh").IsEmpty());
}

class ConvertoNormalCurrency : public CommonFunctions,
                               public ::testing::TestWithParam<Case<Currency>> {};
TEST_P(ConvertoNormalCurrency, ImpliedDecimalPoint) {
  EXPECT_EQ(cf.ConvertoNormalCurrency(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Cases, ConvertoNormalCurrency,
                         ::testing::Values(Case<Currency>{"FiveDigits", "12345", Cur("123.45")},
                                           Case<Currency>{"TwoDigits", "12", Cur("0")},
                                           Case<Currency>{"OneDigit", "5", Cur("0")},
                                           Case<Currency>{"Fifty", "50", Cur("0")},
                                           Case<Currency>{"ThreeDigits", "150", Cur("1.50")},
                                           Case<Currency>{"Negative", "-150", Cur("-1.50")},
                                           Case<Currency>{"Number", 12345, Cur("123.45")},
                                           Case<Currency>{"Null", Variant::Null(), Cur("0")},
                                           Case<Currency>{"NoNumber", "abcd", Cur("0")}),
                         CaseName);

// ---- TimeToInt, IntToTime --------------------------------------------------

class TimeToInt : public CommonFunctions, public ::testing::TestWithParam<Case<int32_t>> {};
TEST_P(TimeToInt, MinutesSinceMidnight) {
  EXPECT_EQ(cf.TimeToInt(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, TimeToInt,
    ::testing::Values(
        Case<int32_t>{"Null", Variant::Null(), 0}, Case<int32_t>{"EmptyText", "", 0},
        Case<int32_t>{"ZeroText", "0", 0}, Case<int32_t>{"HalfPastMidnight", "12:30 AM", 30},
        Case<int32_t>{"HalfPastNoon", "12:30 PM", 750},
        Case<int32_t>{"FivePastOne", "1:05 PM", 785},
        Case<int32_t>{"TwentyFourHourText", "13:05", 785}, Case<int32_t>{"Morning", "09:05", 545},
        Case<int32_t>{"DateWithTime", Serial(36951 + 785 / 1440.0), 785},
        Case<int32_t>{"NoonSerial", 0.5, 720}, Case<int32_t>{"LastMinute", "11:59 PM", 1439}),
    CaseName);

TEST(TimeToIntFails, OnTextThatIsNoTime) {
  clsCommonFunctions cf;
  EXPECT_THROW(cf.TimeToInt("abc"), ReportError);
}

TEST(IntToTime, LocaleLongTimeWithSeconds) {
  clsCommonFunctions cf;
  EXPECT_EQ(cf.IntToTime(0), "12:00:00 AM");
  EXPECT_EQ(cf.IntToTime(5), "12:05:00 AM");
  EXPECT_EQ(cf.IntToTime(60), "1:00:00 AM");
  EXPECT_EQ(cf.IntToTime(545), "9:05:00 AM");
  EXPECT_EQ(cf.IntToTime(720), "12:00:00 PM");
  EXPECT_EQ(cf.IntToTime(785), "1:05:00 PM");
  EXPECT_EQ(cf.IntToTime(1439), "11:59:00 PM");
}

// ---- Provider filters and bulk payment names ------------------------------

TEST(ProviderFilter, CountsAndReadsIds) {
  clsCommonFunctions cf;
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

struct PurseCase {
  const char* name;
  const char* payment;
  const char* which;
  const char* expected;
};
void PrintTo(const PurseCase& c, std::ostream* os) {
  *os << c.name;
}

class PursePaymentName : public CommonFunctions, public ::testing::TestWithParam<PurseCase> {};
TEST_P(PursePaymentName, Splits) {
  EXPECT_EQ(cf.PursePaymentName(GetParam().payment, GetParam().which), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, PursePaymentName,
    ::testing::Values(
        PurseCase{"Insurer", "Sun Life-Smith", "Insurance", "Sun Life"},
        PurseCase{"Patient", "Sun Life-Smith", "Patient", "Smith"},
        PurseCase{"NoDashInsurer", "Sun Life", "Insurance", "Sun Life"},
        PurseCase{"NoDashPatient", "Sun Life", "Patient", ""},
        PurseCase{"LongInsurerCut", "Great West Life Assurance-Jones", "Insurance",
                  "Great West Life"},
        PurseCase{"LongInsurerPatient", "Great West Life Assurance-Jones", "Patient", "Jones"},
        PurseCase{"DashAtFifteen", "ABCDEFGHIJKLMN-Z", "Insurance", "ABCDEFGHIJKLMN"},
        PurseCase{"DashAtSeventeen", "ABCDEFGHIJKLMNOP-Z", "Insurance", "ABCDEFGHIJKLMNO"},
        PurseCase{"LastDashCounts", "A-B-C", "Insurance", "A-B"},
        PurseCase{"LastDashPatient", "A-B-C", "Patient", "C"},
        PurseCase{"BlanksKept", "Blue Cross - Roy", "Patient", " Roy"},
        PurseCase{"AccentsCountAsOne", "Desjardins Sécurité-Côté", "Insurance", "Desjardins Sécu"},
        PurseCase{"OtherWhich", "x-y", "Other", ""},
        PurseCase{"WhichIsExact", "x-y", "insurance", ""}),
    CaseName);

}  // namespace
}  // namespace orv
