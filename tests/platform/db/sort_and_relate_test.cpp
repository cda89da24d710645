// The row loops that read cells in place rather than through Variants: a
// Sort keys each text once and must still order rows as CompareValues
// does, and the relate key of a whole number, written straight from its
// cell, must be the key RelateKey gives.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>

#include "platform/db/recordset.h"
#include "platform/db/rowset.h"
#include "platform/db/value_compare.h"

namespace orv::db {
namespace {

TEST(SortAndRelate, SortOrdersTextByDictionaryKeyAmongOtherKinds) {
  // Accents, case, hyphens, apostrophes and trailing blanks, beside Null,
  // Empty, numbers and a date in the same column (a fabricated Variant
  // field takes any kind), with ties to show the sort is stable.
  const std::vector<Variant> names = {
      Variant("Émile"),   Variant("emile"),      Variant::Null(),   Variant("O'Neil"),
      Variant("ONeil"),   Variant("Oneil  "),    Variant("co-op"),  Variant("coop"),
      Variant(12),        Variant("Zoë"),        Variant("zoe"),    Variant(),
      Variant("Émile"),   Variant("Ærø"),        Variant("aero"),   Variant(DateTime::FromParts(2026, 11, 20)),
      Variant("Abbott"),  Variant(Currency::FromRaw(5)),
  };
  Recordset rs;
  rs.Fields().Append("Seq", adInteger);
  rs.Fields().Append("Name", adVariant);
  rs.Fields().Append("Group", adInteger);
  rs.Open();
  for (size_t i = 0; i < names.size(); ++i) {
    rs.AddNew();
    rs["Seq"].Value(static_cast<int>(i));
    rs["Name"].Value(names[i]);
    rs["Group"].Value(static_cast<int>(i % 2));
  }
  rs.Update();

  struct Case {
    const char* name;
    const char* sort;
    // The expected order by the reference comparison: keys in turn.
    std::function<int(size_t, size_t)> compare;
  };
  auto by_name = [&](size_t a, size_t b) { return CompareValues(names[a], names[b]); };
  auto by_group = [](size_t a, size_t b) { return static_cast<int>(a % 2) - static_cast<int>(b % 2); };
  const Case cases[] = {
      {"text ascending", "Name", by_name},
      {"text descending", "Name DESC", [&](size_t a, size_t b) { return -by_name(a, b); }},
      {"a number first, then text",
       "Group DESC, Name",
       [&](size_t a, size_t b) { return by_group(b, a) != 0 ? by_group(b, a) : by_name(a, b); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<size_t> want(names.size());
    std::iota(want.begin(), want.end(), 0);
    std::stable_sort(want.begin(), want.end(), [&](size_t a, size_t b) { return c.compare(a, b) < 0; });
    rs.Sort(c.sort);
    std::vector<size_t> got;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) got.push_back(static_cast<size_t>(CLng(rs["Seq"].Value())));
    EXPECT_EQ(got, want);
  }
  // Readable anchors of the same order: the plain letter before the
  // accented one, and "coop" before "co-op".
  rs.Sort("Name");
  rs.Find("Name = 'coop'");
  ASSERT_FALSE(rs.Eof());
  rs.MoveNext();
  EXPECT_EQ(rs["Name"].Value(), Variant("co-op"));
}

TEST(SortAndRelate, WholeNumberKeysAreTheKeysRelateKeyGives) {
  RowSet rows;
  rows.fields = {FieldInfo{"A"}, FieldInfo{"B"}};
  const std::vector<std::pair<Variant, Variant>> values = {
      {Variant(0), Variant(-7)},
      {Variant(INT32_MIN), Variant::Int64(INT64_MAX)},
      {Variant::Int64(INT64_MIN), Variant::Int64(8'999'999'999'999'999'999)},
      {Variant::Int64(-8'999'999'999'999'999'999), Variant::Int64(9'000'000'000'000'000'000)},
      {Variant(17), Variant("Smith  ")},
      {Variant(17), Variant(2.5)},
      {Variant(17), Variant::Null()},
  };
  for (const auto& [a, b] : values) rows.AppendRow({a, b});
  for (size_t r = 0; r < values.size(); ++r) {
    SCOPED_TRACE(r);
    bool has_null = false;
    const auto a = RelateKey(values[r].first), b = RelateKey(values[r].second);
    EXPECT_EQ(RowKey(rows, r, {0}, &has_null), *a);
    EXPECT_FALSE(has_null);
    const std::string both = RowKey(rows, r, {0, 1}, &has_null);
    EXPECT_EQ(has_null, !b.has_value());
    EXPECT_EQ(both, b ? *a + '\x1f' + *b : std::string());
  }
}

}  // namespace
}  // namespace orv::db
