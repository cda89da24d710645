// Engine values turned into the Variants fields yield, by server-side kind,
// through Variants and straight into cells.
#include "platform/db/field_type.h"

#include <gtest/gtest.h>

#include <optional>

#include "common/errors.h"
#include "platform/db/rowset.h"

// The stored values below name only the members their class uses.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace orv::db {
namespace {

using sql::ValueKind;

TEST(FieldType, ValueOfKind) {
  struct Case {
    const char* name;
    Variant stored;
    ValueKind kind;
    Variant expected;
  } cases[] = {
      {"integer", Variant::Int64(-1), ValueKind::Integer, Variant(-1)},
      {"integer beyond 32 bits", Variant::Int64(5000000000LL), ValueKind::Integer, Variant::Int64(5000000000LL)},
      {"integral float as integer", Variant(42.0), ValueKind::Integer, Variant(42)},
      {"money from a float sum has no noise", Variant(0.1 + 0.2), ValueKind::Money, Variant(Currency::FromRaw(3000))},
      {"money rounds at four decimals", Variant(1.23456), ValueKind::Money, Variant(Currency::FromRaw(12346))},
      {"money from an integer", Variant::Int64(1090), ValueKind::Money, Variant(Currency::FromInt(1090))},
      {"money from text", Variant("-50.25"), ValueKind::Money, Variant(Currency::FromRaw(-502500))},
      {"date and time", Variant("2026-11-03 14:05:09"), ValueKind::Date, Variant(DateTime::FromParts(2026, 11, 3, 14, 5, 9))},
      {"date only", Variant("2026-11-03"), ValueKind::Date, Variant(DateTime::FromParts(2026, 11, 3))},
      {"text that is no date stays text", Variant("soon"), ValueKind::Date, Variant("soon")},
      {"flag", Variant::Int64(-1), ValueKind::Boolean, Variant(true)},
      {"float", Variant::Int64(3), ValueKind::Float, Variant(3.0)},
      {"number stored in a text column", Variant::Int64(1101), ValueKind::Text, Variant("1101")},
      {"null stays null", Variant::Null(), ValueKind::Money, Variant::Null()},
      {"blob", Variant(Bytes{1, 2}), ValueKind::Blob, Variant(Bytes{1, 2})},
      {"unknown integer", Variant::Int64(7), ValueKind::Unknown, Variant(7)},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueOfKind(c.stored, c.kind), c.expected) << c.name;
}

TEST(FieldType, StoredValuesBecomeTheCellsValueOfKindMakes) {
  // Results are read into cells straight from the engine's row; every
  // value that path takes must read back as ValueOfKind makes it, type and
  // value, or be left to ValueOfKind.
  const std::string blob = "\x01\x00\xff";
  const std::vector<std::pair<StoredView, Variant>> stored = {
      {{StoredView::Class::Null}, Variant::Null()},
      {{StoredView::Class::Integer, 0}, Variant::Int64(0)},
      {{StoredView::Class::Integer, -1}, Variant::Int64(-1)},
      {{StoredView::Class::Integer, INT32_MIN}, Variant::Int64(INT32_MIN)},
      {{StoredView::Class::Integer, 5000000000LL}, Variant::Int64(5000000000LL)},
      {{StoredView::Class::Float, 0, 42.0}, Variant(42.0)},
      {{StoredView::Class::Float, 0, 0.1 + 0.2}, Variant(0.1 + 0.2)},
      {{StoredView::Class::Float, 0, -2.5}, Variant(-2.5)},
      {{StoredView::Class::Float, 0, 1e19}, Variant(1e19)},
      {{StoredView::Class::Text, 0, 0, ""}, Variant("")},
      {{StoredView::Class::Text, 0, 0, "Smith  "}, Variant("Smith  ")},
      {{StoredView::Class::Text, 0, 0, "2026-11-03 14:05:09"}, Variant("2026-11-03 14:05:09")},
      {{StoredView::Class::Text, 0, 0, "2026-11-03"}, Variant("2026-11-03")},
      {{StoredView::Class::Text, 0, 0, "03/11/2026"}, Variant("03/11/2026")},
      {{StoredView::Class::Text, 0, 0, "-50.2512"}, Variant("-50.2512")},
      {{StoredView::Class::Blob, 0, 0, blob}, Variant(Bytes(blob.begin(), blob.end()))},
  };
  const ValueKind kinds[] = {ValueKind::Integer, ValueKind::Boolean, ValueKind::Float, ValueKind::Decimal,
                             ValueKind::Money,   ValueKind::Date,    ValueKind::Text,  ValueKind::Blob,
                             ValueKind::Unknown};
  int taken = 0;
  for (const ValueKind kind : kinds) {
    for (size_t i = 0; i < stored.size(); ++i) {
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + ", value " + std::to_string(i));
      RowSet rows;
      rows.fields = {FieldInfo{"F", FieldTypeOfKind(kind), kind}};
      rows.AppendRow();
      std::optional<Variant> want;
      try {
        want = ValueOfKind(stored[i].second, kind);
      } catch (const OverflowError&) {
        EXPECT_THROW(rows.SetStored(0, 0, stored[i].first), OverflowError);
        continue;
      }
      if (!rows.SetStored(0, 0, stored[i].first)) {
        EXPECT_TRUE(rows.Get(0, 0).IsNull());
        continue;
      }
      ++taken;
      const Variant got = rows.Get(0, 0);
      EXPECT_EQ(got.type(), want->type());
      EXPECT_EQ(got, *want);
    }
  }
  // Most values of most kinds take the direct path.
  EXPECT_GT(taken, 100);
}

TEST(FieldType, IsoDateTimesOfOneDayInARowKeepTheirOwnTimes) {
  // Read in this order, as a result gives them: the same day with other
  // times, a day before the base day, a bad time or a bad day after a good
  // text of the same day.
  struct Case {
    const char* text;
    std::optional<DateTime> expected;
  } cases[] = {
      {"2026-11-03", DateTime::FromParts(2026, 11, 3)},
      {"2026-11-03 14:05:09", DateTime::FromParts(2026, 11, 3, 14, 5, 9)},
      {"2026-11-03 25:00:00", std::nullopt},
      {"2026-11-03T23:59", DateTime::FromParts(2026, 11, 3, 23, 59, 0)},
      {"2026-11-04 08:00:00", DateTime::FromParts(2026, 11, 4, 8, 0, 0)},
      {"1899-12-29 06:00:00", DateTime::FromParts(1899, 12, 29, 6, 0, 0)},
      {"1899-12-29 18:00:00", DateTime::FromParts(1899, 12, 29, 18, 0, 0)},
      {"1899-12-29", DateTime::FromParts(1899, 12, 29)},
      {"2026-02-29 10:00:00", std::nullopt},
      {"2026-11-03 10", std::nullopt},
      {"2026-11-03 10:00:00x", std::nullopt},
      {"2026-11-03 14:05:09.5", DateTime(DateTime::FromParts(2026, 11, 3, 14, 5, 9).serial() + 0.5 / 86400)},
  };
  for (const auto& c : cases) {
    const std::optional<DateTime> got = ParseIsoDateTime(c.text);
    ASSERT_EQ(got.has_value(), c.expected.has_value()) << c.text;
    if (got) {
      EXPECT_EQ(got->serial(), c.expected->serial()) << c.text;
    }
  }
}

}  // namespace
}  // namespace orv::db
