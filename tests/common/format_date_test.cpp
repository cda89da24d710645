// Format over dates and times, and over text with the text placeholders.
// Thursday 2001-03-01 is day 36951 of the floating date; 2004-02-29 was a
// Sunday. Expected texts are worked out by hand.
#include <gtest/gtest.h>

#include "common/errors.h"
#include "common/format.h"
#include "named_cases.h"

namespace orv {
namespace {

// 2001-03-01 09:05:07, 2001-03-01 13:05:09, 2004-02-29 00:00:00, by serial.
const Variant kMorning = DateTime(36951 + (9 * 3600 + 5 * 60 + 7) / 86400.0);
const Variant kAfternoon = DateTime(36951 + (13 * 3600 + 5 * 60 + 9) / 86400.0);
const Variant kLeapDay = DateTime(38046.0);

class FormatDate : public ::testing::TestWithParam<FormatCase> {};

TEST_P(FormatDate, GivesTheText) {
  const FormatCase& c = GetParam();
  EXPECT_EQ(Format(c.value, c.fmt), c.expected);
}

// Every date and time format string the reports use.
const FormatCase kReportDates[] = {
    {"StandardPrintedDate", kMorning, "mmm/dd/yyyy", "Mar/01/2001"},
    {"StatementDate", kMorning, "MMM/d/yyyy", "Mar/1/2001"},
    {"AppointmentLongDate", kMorning, "dddd mmmm d, yyyy", "Thursday March 1, 2001"},
    {"CardLabel", kMorning, "dddd dd MMM yyyy", "Thursday 01 Mar 2001"},
    {"ShortDayComma", kMorning, "ddd,dd mmm,yy", "Thu,01 Mar,01"},
    {"LongDate", kMorning, "Long Date", "March 1, 2001"},
    {"AppointmentTimeMorning", kMorning, "h:nn AMPM", "9:05 AM"},
    {"AppointmentTimeAfternoon", kAfternoon, "h:nn AMPM", "1:05 PM"},
    {"AmPmUpper", kMorning, "h:mm AM/PM", "9:05 AM"},
    {"AmPmLower", kAfternoon, "h:mm am/pm", "1:05 pm"},
    {"APUpper", kAfternoon, "h:mm A/P", "1:05 P"},
    {"APLowerPadded", kMorning, "hh:mm a/p", "09:05 a"},
    {"SqlDate", kMorning, "yyyy-mm-dd", "2001-03-01"},
};
INSTANTIATE_TEST_SUITE_P(ReportDates, FormatDate, ::testing::ValuesIn(kReportDates), CaseName);

const FormatCase kTokens[] = {
    {"TwentyFourHour", kAfternoon, "hh:nn:ss", "13:05:09"},
    {"MonthTokenAsMinutesAfterHour", kAfternoon, "h:mm:ss", "13:05:09"},
    {"MonthTokenAsMinutesBeforeSeconds", kAfternoon, "mm:ss", "05:09"},
    {"MonthTokenAloneIsMonth", kAfternoon, "mm", "03"},
    {"SingleLetters", kAfternoon, "h n s", "13 5 9"},
    {"Quarter", kMorning, "q", "1"},
    {"DayOfYear", kMorning, "y", "60"},
    {"Weekday", kMorning, "w", "5"},
    {"WeekOfYear", kMorning, "ww", "9"},
    {"DayNameLeap", kLeapDay, "dddd", "Sunday"},
    {"DayAbbrevLeap", kLeapDay, "ddd d", "Sun 29"},
    {"MonthName", kLeapDay, "mmmm", "February"},
    {"ShortDateToken", kMorning, "ddddd", "2001-03-01"},
    {"LongTimeToken", kMorning, "ttttt", "9:05:07 AM"},
    {"GeneralDateToken", kMorning, "c", "2001-03-01 9:05:07 AM"},
    {"EscapedWord", kMorning, "\\D\\a\\t\\e\\: yyyy", "Date: 2001"},
    {"NoonTwelveHour", DateTime(0.5), "h AMPM", "12 PM"},
    {"MidnightTwelveHour", DateTime(36951.0), "hh:nn AM/PM", "12:00 AM"},
};
INSTANTIATE_TEST_SUITE_P(Tokens, FormatDate, ::testing::ValuesIn(kTokens), CaseName);

const FormatCase kNamed[] = {
    {"LongTime", kMorning, "Long Time", "9:05:07 AM"},
    {"MediumTime", kMorning, "Medium Time", "09:05 AM"},
    {"MediumTimeAfternoon", kAfternoon, "Medium Time", "01:05 PM"},
    {"ShortTime", kAfternoon, "Short Time", "13:05"},
    {"ShortDate", kMorning, "Short Date", "2001-03-01"},
    {"MediumDate", kMorning, "Medium Date", "01-Mar-01"},
    {"GeneralDate", kMorning, "General Date", "2001-03-01 9:05:07 AM"},
    {"GeneralDateNoTime", kLeapDay, "General Date", "2004-02-29"},
    {"GeneralDateTimeOnly", DateTime(0.5), "General Date", "12:00:00 PM"},
    {"LongDateAnyCase", kLeapDay, "long date", "February 29, 2004"},
};
INSTANTIATE_TEST_SUITE_P(Named, FormatDate, ::testing::ValuesIn(kNamed), CaseName);

// What a date format does with values that are not dates.
const FormatCase kValues[] = {
    {"IsoText", "2001-03-01", "mmm/dd/yyyy", "Mar/01/2001"},
    {"TimeText", "13:05", "h:nn AMPM", "1:05 PM"},
    {"SerialWithTime", 36951.75, "yyyy-mm-dd hh:nn", "2001-03-01 18:00"},
    {"TextNoDateUnchanged", "abc", "mmm/dd/yyyy", "abc"},
    {"NullIsEmpty", Variant::Null(), "mmm/dd/yyyy", ""},
    {"EmptyIsEmpty", Variant(), "mmm/dd/yyyy", ""},
    {"BeforeBaseDay", DateTime(-1.25), "yyyy-mm-dd hh:nn", "1899-12-29 06:00"},
};
INSTANTIATE_TEST_SUITE_P(Values, FormatDate, ::testing::ValuesIn(kValues), CaseName);

// Text placeholders.
const FormatCase kText[] = {
    {"AtRightAligned", "abc", "@@@@@", "  abc"},
    {"AtLeftAligned", "abc", "!@@@@@", "abc  "},
    {"AmpersandNoPadding", "abc", "&&&&&", "abc"},
    {"Upper", "abc", ">", "ABC"},
    {"UpperWithPlaceholders", "abc", ">@@@@", " ABC"},
    {"PhoneFromText", "4165551234", "(@@@) @@@-@@@@", "(416) 555-1234"},
    {"OverflowAtFirst", "abcd", "@@", "abcd"},
    {"AccentedCountsCharacters", "Hélène", "@@@@@@@", " Hélène"},
    {"NullSection", Variant::Null(), "@;\\N\\o\\n\\e", "None"},
    {"EmptyTextSection", "", "@;\\N\\o\\n\\e", "None"},
    {"NullWithoutSection", Variant::Null(), "@@@", ""},
    {"EmptyTextIsBlanks", "", "@@@", "   "},
    {"NumberAsText", 123, "@@@@@", "  123"},
};
INSTANTIATE_TEST_SUITE_P(Text, FormatDate, ::testing::ValuesIn(kText), CaseName);

TEST(FormatDateFrench, UsesFrenchNames) {
  EXPECT_EQ(Format(kMorning, "dddd d mmmm yyyy", FrenchCanada()), "jeudi 1 mars 2001");
  EXPECT_EQ(Format(kMorning, "Long Date", FrenchCanada()), "1 mars 2001");
  EXPECT_EQ(Format(kMorning, "ddd dd mmm", FrenchCanada()), "jeu. 01 mars");
  EXPECT_EQ(Format(kLeapDay, "dddd d mmmm", FrenchCanada()), "dimanche 29 février");
  EXPECT_EQ(Format(kAfternoon, "Long Time", FrenchCanada()), "13:05:09");
  EXPECT_EQ(DateToLocaleText(kAfternoon.AsDate(), FrenchCanada()), "2001-03-01 13:05:09");
}

TEST(FormatDateRange, SerialBeyondYear9999Overflows) {
  EXPECT_THROW(Format(1e10, "mm/dd/yyyy"), OverflowError);
  EXPECT_THROW(Format(-1e7, "mm/dd/yyyy"), OverflowError);
}

// A formatter made once prints what Format prints, for every value and
// format: dates over the whole range with and without a time of day, the
// kinds that are no dates, the named and the non-date formats, and the
// French names. It appends: what `out` held stays in front. Each value is
// given twice in a row, as the lines of one invoice give their date, and
// the same day comes at midnight and then at a time of day.
TEST(DateFormatterMatchesFormat, OverASweepOfValues) {
  std::vector<Variant> values = {Variant::Null(), Variant(),       "2001-03-01", "March 1, 2001",
                                 "13:05",         "abc",           "",           36951,
                                 36951.75,        Variant(true),   Cur("12.5")};
  // Every 997th day from the year 100 to 9999, each at midnight and at a
  // time of day that moves with it, and the days around the base day.
  for (double day = -657434; day < 2958465; day += 997) {
    values.emplace_back(DateTime(day));
    values.emplace_back(DateTime(day + (static_cast<long long>(day) % 86400 + 86400) % 86400 / 86400.0));
  }
  for (double day = -2.75; day <= 2; day += 0.25) values.emplace_back(DateTime(day));
  const char* formats[] = {"mmm/dd/yyyy", "MMM/d/yyyy", "dddd mmmm d, yyyy h:nn AMPM", "yyyy-mm-dd hh:nn:ss",
                           "c",           "Long Date",  "General Date",                "@@@@",
                           "0.00",        ""};
  for (const LocaleInfo* locale : {&EnglishCanada(), &FrenchCanada()}) {
    for (const char* fmt : formats) {
      const DateFormatter formatter(fmt, *locale);
      for (const Variant& v : values) {
        for (const char* again : {"x", "yz"}) {
          std::string out = again;
          formatter.Append(v, out);
          EXPECT_EQ(out, again + Format(v, fmt, *locale)) << "format " << fmt << ", value " << CStr(v);
        }
      }
    }
  }
  // Beyond the year 9999 both refuse the serial.
  std::string out;
  EXPECT_THROW(DateFormatter("mm/dd/yyyy").Append(1e10, out), OverflowError);
}

}  // namespace
}  // namespace orv
