// Engine values turned into the Variants fields yield, by server-side kind.
#include "platform/db/field_type.h"

#include <gtest/gtest.h>

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
      {"date with T and milliseconds", Variant("2026-11-03T00:00:00.000"), ValueKind::Date, Variant(DateTime::FromParts(2026, 11, 3))},
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

TEST(FieldType, IsoDateTimeRejectsNonsense) {
  for (const char* t : {"2026-02-30", "2026-11-03 25:00:00", "2026-11-03 10", "20261103", "2026-11-03 10:00:00x"})
    EXPECT_FALSE(ParseIsoDateTime(t).has_value()) << t;
}

}  // namespace
}  // namespace orv::db
