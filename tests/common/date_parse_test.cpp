// ParseDateText: every text form the database, the host and the reports' own
// formats produce. "Today" is fixed at 2010-06-15 for the forms without a
// year. Expected values are written as "yyyy-mm-dd hh:nn:ss".
#include <gtest/gtest.h>

#include <ostream>

#include "common/datetime.h"
#include "named_cases.h"

namespace orv {
namespace {

struct ParseCase {
  const char* name;
  const char* text;
  const char* expected;  // nullptr: no date
};

void PrintTo(const ParseCase& c, std::ostream* os) {
  *os << c.name << " [" << c.text << "]";
}

class ParseDate : public ::testing::TestWithParam<ParseCase> {
 protected:
  void SetUp() override { Clock::SetFixed(DateTime::FromParts(2010, 6, 15, 10, 30)); }
  void TearDown() override { Clock::UseSystem(); }
};

TEST_P(ParseDate, ReadsTheText) {
  const ParseCase& c = GetParam();
  std::optional<DateTime> d = ParseDateText(c.text);
  if (c.expected == nullptr) {
    EXPECT_FALSE(d.has_value()) << d->ToIso();
  } else {
    ASSERT_TRUE(d.has_value());
    EXPECT_EQ(d->ToIso(), c.expected);
  }
}

const ParseCase kDates[] = {
    {"Iso", "2001-03-01", "2001-03-01 00:00:00"},
    {"IsoSlashes", "2001/03/01", "2001-03-01 00:00:00"},
    {"MonthFirstSlashes", "03/01/2001", "2001-03-01 00:00:00"},
    {"DayFirstWhenMonthTooBig", "13/01/2001", "2001-01-13 00:00:00"},
    {"AbbrevSlashes", "Mar/1/2001", "2001-03-01 00:00:00"},
    {"FullNameUpperCase", "MARCH 1 2001", "2001-03-01 00:00:00"},
    {"DayMonthYear", "1 Mar 2001", "2001-03-01 00:00:00"},
    {"MediumDate", "01-Mar-01", "2001-03-01 00:00:00"},
    {"WithWeekday", "Thursday March 1, 2001", "2001-03-01 00:00:00"},
    {"ShortDayComma", "Thu,01 Mar,01", "2001-03-01 00:00:00"},
    {"AbbrevWithDot", "Mar. 1, 2001", "2001-03-01 00:00:00"},
    {"SeptemberFourLetters", "Sept 30, 2001", "2001-09-30 00:00:00"},
    {"French", "1 mars 2001", "2001-03-01 00:00:00"},
    {"FrenchWithWeekday", "jeudi 1 mars 2001", "2001-03-01 00:00:00"},
    {"FrenchAbbrev", "15 janv. 2001", "2001-01-15 00:00:00"},
    {"StrayBlanks", "  2001 - 03 - 01  ", "2001-03-01 00:00:00"},
    {"Hashes", "#03/01/2001#", "2001-03-01 00:00:00"},
    {"YearWindowLow", "3/1/29", "2029-03-01 00:00:00"},
    {"YearWindowHigh", "3/1/30", "1930-03-01 00:00:00"},
    {"MonthDayThisYear", "3/5", "2010-03-05 00:00:00"},
    {"NameDayThisYear", "Mar 5", "2010-03-05 00:00:00"},
    {"MonthYear", "3/2001", "2001-03-01 00:00:00"},
    {"YearMonth", "2001/3", "2001-03-01 00:00:00"},
    {"NameYear", "March 2001", "2001-03-01 00:00:00"},
    {"BeforeBaseDay", "1899-12-29", "1899-12-29 00:00:00"},
};
INSTANTIATE_TEST_SUITE_P(Dates, ParseDate, ::testing::ValuesIn(kDates), CaseName);

const ParseCase kTimes[] = {
    {"IsoWithMinutes", "2001-03-01 09:05", "2001-03-01 09:05:00"},
    {"IsoWithT", "2001-03-01T13:05:09", "2001-03-01 13:05:09"},
    {"IsoWithFraction", "2001-03-01 13:05:09.000", "2001-03-01 13:05:09"},
    {"LongTimeAm", "2001-03-01 9:05:07 AM", "2001-03-01 09:05:07"},
    {"MidnightHalfPast", "03/01/2001 12:30 AM", "2001-03-01 00:30:00"},
    {"NoonHalfPast", "3/1/2001 12:30 PM", "2001-03-01 12:30:00"},
    {"PmGlued", "3/1/2001 1:05pm", "2001-03-01 13:05:00"},
    {"PmWithDots", "3/1/2001 1:05 p.m.", "2001-03-01 13:05:00"},
    {"TimeFirst", "9:05 AM Mar 1, 2001", "2001-03-01 09:05:00"},
    {"TimeAlone", "9:05 AM", "1899-12-30 09:05:00"},
    {"TimeAlone24", "13:05", "1899-12-30 13:05:00"},
    {"HourAndMarker", "9 PM", "1899-12-30 21:00:00"},
    {"ThirteenPmStays", "13:00 PM", "1899-12-30 13:00:00"},
    {"BlanksInTime", "9 : 05 : 07", "1899-12-30 09:05:07"},
    {"TimeBeforeBaseDay", "1899-12-29 06:00", "1899-12-29 06:00:00"},
};
INSTANTIATE_TEST_SUITE_P(Times, ParseDate, ::testing::ValuesIn(kTimes), CaseName);

const ParseCase kNotDates[] = {
    {"EmptyText", "", nullptr},
    {"Word", "abc", nullptr},
    {"YearAlone", "2001", nullptr},
    {"Decimal", "12.5", nullptr},
    {"NoSuchDay", "2001-02-29", nullptr},
    {"MonthAndDayTooBig", "13/13/2001", nullptr},
    {"HourTooBig", "25:00", nullptr},
    {"MinuteTooBig", "9:60", nullptr},
    {"UnknownWord", "3/1/2001 xyz", nullptr},
    {"FourNumbers", "1-2-3-4", nullptr},
    {"PhoneNumber", "416-555-1234", nullptr},
    {"NameAndNumber", "Smith 12", nullptr},
    {"TwoMonthNames", "Mar Apr 1 2001", nullptr},
    {"MarkerWithoutHour", "AM", nullptr},
    {"OtherCharacter", "2001-03-01; drop", nullptr},
};
INSTANTIATE_TEST_SUITE_P(NotDates, ParseDate, ::testing::ValuesIn(kNotDates), CaseName);

}  // namespace
}  // namespace orv
