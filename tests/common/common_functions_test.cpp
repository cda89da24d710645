// clsCommonFunctions: the coercions, formatting, time, filter and text
// routines, with the awkward inputs among the rows. Expected values are worked out by
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

// ---- Text: wrapping, lines, digits, padding, colours, ID lists -------------

TEST_F(CommonFunctions, WrapTextBreaksAtTheLastBlankThatFits) {
  struct Case {
    const char* name;
    Variant text;
    int width;
    const char* wrapped;
  } cases[] = {
      {"Null", Variant::Null(), 10, ""},
      {"blank", Variant("   "), 10, ""},
      {"short text stays", Variant("a b"), 10, "a b"},
      {"breaks at the last blank within the width", Variant("one two three four"), 9, "one two\r\nthree\r\nfour"},
      {"a blank just past the width still fits the line", Variant("abcd efgh"), 4, "abcd\r\nefgh"},
      {"line breaks become blanks", Variant("one\r\ntwo\nthree"), 8, "one two\r\nthree"},
      {"no blank in reach leaves the rest whole", Variant("abcdefghij klm"), 5, "abcdefghij klm"},
      {"a trailing break leaves no empty line", Variant("abc \r\n"), 3, "abc"},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.WrapText(c.text, c.width), c.wrapped) << c.name;
}

TEST_F(CommonFunctions, LinesAndDigits) {
  const std::string text = "first\r\nsecond\r\nlast";
  EXPECT_EQ(cf.ReturnLine(text, 1), "first");
  EXPECT_EQ(cf.ReturnLine(text, 3), "last");
  EXPECT_EQ(cf.ReturnLine(text, 4), "");
  EXPECT_EQ(cf.ReturnLine(text, 0), "");

  struct Case {
    const char* text;
    bool words;
    const char* digits;
  } cases[] = {
      {"(613) 555-0100 x12", false, "613555010012"},
      {"tomorrow", true, "2"},
      {"tomorrow", false, ""},
      {"one two three", true, "123"},
      {"too", true, "2"},
      {"four for ate nine", true, "4489"},
      {"twelve thirteen", true, "1213"},
      {"ONE", true, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.ReturnNumberOnly(c.text, c.words), c.digits) << c.text;

  EXPECT_EQ(cf.KeepNumbers(Variant("$1,234.50")), "1234.50");
  EXPECT_EQ(cf.KeepNumbers(Variant::Null()), "");
}

TEST_F(CommonFunctions, CharacterFilters) {
  EXPECT_EQ(cf.StripNonAlphaNum("   Smith", false), "") << "three leading blanks";
  EXPECT_EQ(cf.StripNonAlphaNum("  O'Brien-Côté (Jr.), 3", false), "OBrienCt (Jr), 3");
  EXPECT_EQ(cf.StripNonAlphaNum("K1A 0B1", true), "101");
  EXPECT_TRUE(cf.ValidateText("  12.50 ", "0123456789."));
  EXPECT_FALSE(cf.ValidateText("12,50", "0123456789."));
  EXPECT_TRUE(cf.ValidateText("", "x"));
}

TEST_F(CommonFunctions, PadStringCutsAndFillsByItsSide) {
  struct Case {
    const char* name;
    Variant value;
    int side, length;
    const char* fill;
    bool money;
    const char* padded;
  } cases[] = {
      {"fills on the right", Variant("AB"), 0, 5, "", false, "AB   "},
      {"side 1 fills on the left", Variant("42"), 1, 5, "0", false, "00042"},
      {"cut keeping the left", Variant("ABCDEF"), 0, 3, " ", false, "ABC"},
      {"side 1 keeps the right end", Variant("ABCDEF"), 1, 3, " ", false, "DEF"},
      {"line breaks removed", Variant("A\r\nB"), 0, 3, ".", false, "AB."},
      {"money in cents", Variant(1234.5), 1, 8, "0", true, "00123450"},
      {"a negative amount keeps its sign", Variant(-5.0), 1, 6, "0", true, "00-500"},
  };
  for (const auto& c : cases) EXPECT_EQ(CStr(cf.PadString(c.value, c.side, c.length, c.fill, c.money)), c.padded) << c.name;
  EXPECT_TRUE(cf.PadString(Variant::Null(), 0, 4, "", false).IsNull());
}

TEST_F(CommonFunctions, ColourBytes) {
  // The colour number holds red in its lowest byte, blue in its highest.
  const auto red = cf.returnRGBColor(0x0000FF);
  EXPECT_EQ(red.red, 255);
  EXPECT_EQ(red.blue, 0);
  EXPECT_EQ(cf.returnRGBColor(0x102030).green, 0x20);
}

// Two screens' lists side by side: names in any case, keys exactly.
TEST_F(CommonFunctions, IDListsSetAndGetById) {
  IDLists lists;
  cf.setID(lists, "Providers", Variant("Dr. Moreau"), Variant(12));
  cf.setID(lists, "PROVIDERS", Variant("Dr. Girard"), Variant(14));
  cf.setID(lists, "providers", Variant("Dr. Moreau"), Variant(15));  // reloaded
  cf.setID(lists, "Offices", Variant("Dr. Moreau"), Variant(2));
  cf.setID(lists, "Offices", Variant::Null(), Variant::Null());
  EXPECT_EQ(lists.lists.size(), 2u) << "one list per name, whatever its case";
  struct Case {
    const char* name;
    const char* list;
    Variant key;
    Variant id;
  } cases[] = {
      {"the ID last set", "Providers", Variant("Dr. Moreau"), Variant("ID = 15")},
      {"another key of the list", "pRoViDeRs", Variant("Dr. Girard"), Variant("ID = 14")},
      {"the same key in another list", "OFFICES", Variant("Dr. Moreau"), Variant("ID = 2")},
      {"a Null key and value", "Offices", Variant(""), Variant("ID = ")},
      {"keys are exact", "Providers", Variant("dr. moreau"), Variant()},
      {"no such key", "Providers", Variant("Dr. Roy"), Variant()},
      {"no such list", "Rooms", Variant("Dr. Moreau"), Variant()},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.GetID(lists, c.list, c.key), c.id) << c.name;
}

}  // namespace
}  // namespace orv
