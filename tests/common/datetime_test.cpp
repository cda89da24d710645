// The floating date: serial numbers from known days, parts, DateAdd and
// DateDiff, including the days before 1899-12-30 where the fraction still
// counts forward.
#include "common/datetime.h"

#include <gtest/gtest.h>

#include "common/errors.h"

namespace orv {
namespace {

TEST(DateTimeSerial, KnownDaysAndPartsRollingOver) {
  EXPECT_EQ(DateTime::FromParts(1899, 12, 30).serial(), 0);
  EXPECT_EQ(DateTime::FromParts(1899, 12, 31).serial(), 1);
  EXPECT_EQ(DateTime::FromParts(1900, 1, 1).serial(), 2);
  EXPECT_EQ(DateTime::FromParts(2001, 3, 1).serial(), 36951);
  EXPECT_EQ(DateTime::FromParts(2004, 2, 29).serial(), 38046);
  EXPECT_EQ(DateTime::FromParts(2001, 3, 1, 12).serial(), 36951.5);
  EXPECT_EQ(DateTime::FromParts(1899, 12, 29, 6).serial(), -1.25);
  // Parts past their range roll over.
  EXPECT_EQ(DateTime::FromParts(2001, 13, 1).ToIso(), "2002-01-01 00:00:00");
  EXPECT_EQ(DateTime::FromParts(2001, 3, 0).ToIso(), "2001-02-28 00:00:00");
  EXPECT_EQ(DateTime::FromParts(2001, 0, 1).ToIso(), "2000-12-01 00:00:00");
  EXPECT_EQ(DateTime::FromParts(2001, 3, 1, 25).ToIso(), "2001-03-02 01:00:00");
}

TEST(DateTimeParts, FieldsWeekdayAndTheDaysBeforeTheBase) {
  DateTime d(36951 + (13 * 3600 + 5 * 60 + 9) / 86400.0);
  DateParts p = d.Parts();
  EXPECT_EQ(p.year, 2001);
  EXPECT_EQ(p.month, 3);
  EXPECT_EQ(p.day, 1);
  EXPECT_EQ(p.hour, 13);
  EXPECT_EQ(p.minute, 5);
  EXPECT_EQ(p.second, 9);
  EXPECT_EQ(d.Weekday(), 5);  // Thursday
  EXPECT_EQ(d.DayOfYear(), 60);
  EXPECT_EQ(DateTime(0.0).Weekday(), 7);  // 1899-12-30 was a Saturday

  // Before the base day the fraction still counts forward.
  DateTime before(-1.25);
  EXPECT_EQ(before.ToIso(), "1899-12-29 06:00:00");
  EXPECT_EQ(before.Weekday(), 6);  // Friday
  EXPECT_EQ(before.DatePart().serial(), -1);
  EXPECT_EQ(before.TimePart().serial(), 0.25);

  // Rounding to midnight goes to the next day.
  EXPECT_EQ(DateTime(1.9999999999).ToIso(), "1900-01-01 00:00:00");
  // -1.9999999999 is 1899-12-29 at 23:59:59.99..., so the next day is day 0.
  EXPECT_EQ(DateTime(-1.9999999999).ToIso(), "1899-12-30 00:00:00");
}

TEST(DateAdd, MonthsClipToTheMonthEndDaysAndClock) {
  DateTime jan31 = DateTime::FromParts(2001, 1, 31);
  EXPECT_EQ(DateAdd("m", 1, jan31).ToIso(), "2001-02-28 00:00:00");
  EXPECT_EQ(DateAdd("m", 1, DateTime::FromParts(2004, 1, 31)).ToIso(), "2004-02-29 00:00:00");
  EXPECT_EQ(DateAdd("yyyy", 1, DateTime::FromParts(2004, 2, 29)).ToIso(), "2005-02-28 00:00:00");
  EXPECT_EQ(DateAdd("q", 1, jan31).ToIso(), "2001-04-30 00:00:00");
  // Months keep the time across the base day.
  EXPECT_EQ(DateAdd("m", -1, DateTime::FromParts(1900, 1, 15, 6)).ToIso(), "1899-12-15 06:00:00");

  DateTime d = DateTime::FromParts(2001, 2, 28, 23, 30);
  EXPECT_EQ(DateAdd("d", 1, d).ToIso(), "2001-03-01 23:30:00");
  EXPECT_EQ(DateAdd("ww", 1, d).ToIso(), "2001-03-07 23:30:00");
  EXPECT_EQ(DateAdd("h", 1, d).ToIso(), "2001-03-01 00:30:00");
  EXPECT_EQ(DateAdd("n", -31, d).ToIso(), "2001-02-28 22:59:00");
  EXPECT_EQ(DateAdd("s", 1800, d).ToIso(), "2001-03-01 00:00:00");
  EXPECT_EQ(DateAdd("D", -1, DateTime(0.0)).ToIso(), "1899-12-29 00:00:00");
  EXPECT_THROW(DateAdd("x", 1, d), ReportError);
}

TEST(DateDiff, CountsBoundariesBeforeTheBaseDayToo) {
  DateTime dec31 = DateTime::FromParts(2001, 12, 31, 23);
  DateTime jan1 = DateTime::FromParts(2002, 1, 1, 1);
  EXPECT_EQ(DateDiff("yyyy", dec31, jan1), 1);
  EXPECT_EQ(DateDiff("q", dec31, jan1), 1);
  EXPECT_EQ(DateDiff("m", DateTime::FromParts(2001, 1, 31), DateTime::FromParts(2001, 2, 1)), 1);
  EXPECT_EQ(DateDiff("d", dec31, jan1), 1);
  EXPECT_EQ(DateDiff("h", dec31, jan1), 2);
  EXPECT_EQ(DateDiff("d", jan1, dec31), -1);
  // 2001-03-03 was a Saturday: one Sunday is crossed to the 4th, none in "w".
  DateTime sat = DateTime::FromParts(2001, 3, 3), sun = DateTime::FromParts(2001, 3, 4);
  EXPECT_EQ(DateDiff("ww", sat, sun), 1);
  EXPECT_EQ(DateDiff("w", sat, sun), 0);
  EXPECT_EQ(DateDiff("w", sat, DateTime::FromParts(2001, 3, 17)), 2);

  // From 06:30 on 1899-12-29 to midnight: 07:00 ... 24:00 is 18 boundaries.
  EXPECT_EQ(DateDiff("h", DateTime::FromParts(1899, 12, 29, 6, 30), DateTime(0.0)), 18);
  EXPECT_EQ(DateDiff("n", DateTime::FromParts(1899, 12, 29, 23, 59, 30), DateTime(0.0)), 1);
}

TEST(Clock, FixedAndSystem) {
  Clock::SetFixed(DateTime::FromParts(2010, 6, 15, 10, 30));
  EXPECT_TRUE(Clock::IsFixed());
  EXPECT_EQ(Clock::Now().ToIso(), "2010-06-15 10:30:00");
  EXPECT_EQ(Clock::Today().ToIso(), "2010-06-15 00:00:00");
  Clock::UseSystem();
  EXPECT_FALSE(Clock::IsFixed());
  EXPECT_GT(Clock::Today().Year(), 2020);
}

}  // namespace
}  // namespace orv
