// The row loops that read cells in place rather than through Variants: a
// Sort keys each text once and must still order rows as CompareValues
// does, and a SHAPE child keyed straight from its cells (whole numbers
// hashed or indexed by range, other keys by their text) must relate the
// rows RelateKey relates.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <optional>

#include "platform/db/recordset.h"
#include "platform/db/rowset.h"
#include "platform/db/value_compare.h"
#include "temp_db.h"

namespace orv::db {
namespace {

// A fabricated recordset: a Seq field holding each row's place, then
// `fields`, one row per entry of `rows`.
Recordset Fabricated(std::vector<testing::FabricatedField> fields, const std::vector<std::vector<Variant>>& rows) {
  fields.insert(fields.begin(), {"Seq", adInteger});
  std::vector<std::vector<Variant>> numbered;
  for (size_t r = 0; r < rows.size(); ++r) {
    numbered.push_back({static_cast<int>(r)});
    numbered.back().insert(numbered.back().end(), rows[r].begin(), rows[r].end());
  }
  return testing::Fabricated(fields, numbered);
}

// The order the reference comparison gives (rows with equal keys keep
// their places) against the order Sort(sort) gives, as row places.
void ExpectSortedAs(Recordset& rs, const std::string& sort, const std::function<int(size_t, size_t)>& compare) {
  std::vector<size_t> want(static_cast<size_t>(rs.RecordCount()));
  std::iota(want.begin(), want.end(), 0);
  std::stable_sort(want.begin(), want.end(), [&](size_t a, size_t b) { return compare(a, b) < 0; });
  rs.Sort(sort);
  std::vector<size_t> got;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) got.push_back(static_cast<size_t>(CLng(rs["Seq"].Value())));
  EXPECT_EQ(got, want) << sort;
}

TEST(SortAndRelate, SortOrdersEachKindAsCompareValuesDoes) {
  // A column whose values are all of one kind is sorted by codes made
  // once per row, text by its dictionary key made once; each column here
  // has negatives, ties, Null and Empty and the edges of its kind. The
  // last holds every kind at once (a fabricated Variant field takes any).
  const double inf = std::numeric_limits<double>::infinity();
  struct Case {
    const char* name;
    std::vector<Variant> values;
  } cases[] = {
      {"whole numbers",
       {Variant(3), Variant(-2), Variant::Null(), Variant::Int64(INT64_MAX), Variant(0), Variant(-2),
        Variant::Int64(INT64_MIN + 1), Variant(), Variant(INT32_MIN), Variant(3)}},
      {"the least whole number", {Variant(1), Variant::Int64(INT64_MIN), Variant::Null(), Variant(-1)}},
      {"money",
       {Variant(Currency::FromRaw(-1)), Variant(Currency::FromRaw(5)), Variant::Null(), Variant(Currency::FromRaw(0)),
        Variant(Currency::FromRaw(-500000)), Variant(Currency::FromRaw(5))}},
      {"floats",
       {Variant(0.5), Variant(-0.0), Variant(0.0), Variant(-inf), Variant::Null(), Variant(inf), Variant(-1e-300),
        Variant(1e300), Variant(-0.5), Variant(0.5)}},
      {"dates",
       {Variant(DateTime::FromParts(2026, 11, 20, 9, 30, 0)), Variant(DateTime::FromParts(1899, 12, 29)),
        Variant(DateTime::FromParts(1800, 1, 1, 12, 0, 0)), Variant::Null(), Variant(DateTime::FromParts(2026, 11, 20)),
        Variant(DateTime(0.0)), Variant(DateTime::FromParts(1800, 1, 1))}},
      // Mixed kinds are sorted by comparing cells in place, of one kind
      // without a Variant, of two kinds as CompareValues does.
      {"text among other kinds: accents, case, hyphens, apostrophes, trailing blanks",
       {Variant("Émile"), Variant("emile"), Variant::Null(), Variant("O'Neil"), Variant("ONeil"), Variant("Oneil  "),
        Variant("co-op"), Variant("coop"), Variant(12), Variant("Zoë"), Variant("zoe"), Variant(), Variant("Émile"),
        Variant("Ærø"), Variant("aero"), Variant(DateTime::FromParts(2026, 11, 20)), Variant("Abbott"),
        Variant(Currency::FromRaw(5)), Variant(-3), Variant::Int64(-7), Variant::Int64(INT64_MAX), Variant(INT32_MIN),
        Variant(Currency::FromRaw(-1)), Variant(0.1), Variant(-0.5), Variant(-0.0), Variant(DateTime(-700.25)),
        Variant(true), Variant(false), Variant("12"), Variant(Bytes{0x00, 0xff}), Variant(Bytes{0x00, 0xff, 0x10})}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<std::vector<Variant>> rows;
    for (const Variant& v : c.values) rows.push_back({v});
    Recordset rs = Fabricated({{"V", adVariant}}, rows);
    auto compare = [&](size_t a, size_t b) { return CompareValues(c.values[a], c.values[b]); };
    ExpectSortedAs(rs, "V", compare);
    ExpectSortedAs(rs, "V DESC", [&](size_t a, size_t b) { return -compare(a, b); });
  }
}

TEST(SortAndRelate, SortsOnSeveralKeysOrderAsCompareValuesDoesKeyByKey) {
  // A listing sorted by provider, date and name, as the reports sort: few
  // providers, dates in runs of one day, names that recur, Nulls among
  // them, and each key ascending or descending.
  const char* providers[] = {"Nadeau", "adams", "Ouellet", "Côté"};
  std::vector<std::vector<Variant>> rows;
  uint32_t seed = 7;
  auto next = [&](uint32_t n) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 8) % n;
  };
  for (int i = 0; i < 3000; ++i) {
    rows.push_back({
        next(50) == 0 ? Variant::Null() : Variant(providers[next(4)]),
        Variant(DateTime::FromParts(2026, 1, 1 + i / 40, 0, 0, 0)),
        next(30) == 0 ? Variant::Null() : Variant("Patient " + std::to_string(next(400))),
        Variant(Currency::FromRaw(static_cast<int64_t>(next(2000)) * 2500 - 2500000)),
    });
  }
  Recordset rs = Fabricated(
      {{"Provider", adVarChar}, {"Day", adDBTimeStamp}, {"Name", adVarChar}, {"Amount", adCurrency}}, rows);
  struct Case {
    const char* sort;
    std::vector<std::pair<int, bool>> keys;  // field, descending
  } cases[] = {
      {"Provider DESC, Day, Name DESC", {{0, true}, {1, false}, {2, true}}},
      {"[Day] DESC, Amount", {{1, true}, {3, false}}},
      {"Name, Amount DESC, Day DESC", {{2, false}, {3, true}, {1, true}}},
  };
  for (const auto& c : cases) {
    ExpectSortedAs(rs, c.sort, [&](size_t a, size_t b) {
      for (const auto& [field, descending] : c.keys) {
        const int r = CompareValues(rows[a][field], rows[b][field]);
        if (r != 0) return descending ? -r : r;
      }
      return 0;
    });
  }
}

TEST(SortAndRelate, ChildRowsRelateAsTheirKeysDo) {
  // Parent values of every kind against children keyed by whole numbers
  // only (the hashed form), with one text key among them (the text form),
  // and over two columns. A row relates when both keys are RelateKey's
  // same text; the child's order is kept.
  const std::vector<Variant> parent_keys = {
      Variant(2),          Variant(2.0),       Variant(Currency::FromRaw(30000)), Variant(Currency::FromRaw(35000)),
      Variant("2"),        Variant::Null(),    Variant(true),                     Variant(-1),
      Variant(2.5),        Variant::Int64(INT64_MAX), Variant(),                  Variant(DateTime(2.0)),
      Variant(7),          Variant::Int64(8'000'000'000'000'000'000), Variant::Int64(-8'000'000'000'000'000'000),
      Variant::Int64(INT64_MIN), Variant::Int64(9'000'000'000'000'000'000), Variant(INT32_MIN), Variant("Smith  ")};
  const std::vector<Variant> whole_children = {Variant(2),      Variant(3),   Variant::Null(), Variant(-1),
                                               Variant(2.0),    Variant(Currency::FromRaw(20000)),
                                               Variant::Int64(3), Variant(false), Variant(2)};
  // Keys far apart are hashed; keys close together index their range.
  std::vector<Variant> sparse_children = whole_children;
  sparse_children.push_back(Variant::Int64(8'000'000'000'000'000'000));
  sparse_children.push_back(Variant::Int64(-8'000'000'000'000'000'000));
  std::vector<Variant> mixed_children = whole_children;
  mixed_children.push_back(Variant("2"));
  mixed_children.push_back(Variant(2.5));
  // The edges of the whole numbers, and trailing blanks, among text keys.
  for (const Variant& v : {Variant::Int64(INT64_MIN), Variant(9e18), Variant(INT32_MIN), Variant("Smith")})
    mixed_children.push_back(v);

  auto rowset = [](const std::vector<Variant>& keys) {
    RowSet rows;
    rows.fields = {FieldInfo{"K"}, FieldInfo{"Second"}};
    for (size_t i = 0; i < keys.size(); ++i) rows.AppendRow({keys[i], Variant(static_cast<int>(i % 2))});
    return rows;
  };
  const RowSet parent = rowset(parent_keys);
  struct Case {
    const char* name;
    std::vector<Variant> child;
    std::vector<int> fields;
  } cases[] = {
      {"whole-number keys", whole_children, {0}},
      {"whole-number keys far apart", sparse_children, {0}},
      {"a text key among them", mixed_children, {0}},
      {"two columns", whole_children, {0, 1}},
  };
  // The reference key, from the values: RelateKey of each column in turn.
  auto key_of = [](const RowSet& rows, size_t row, const std::vector<int>& fields) {
    std::optional<std::string> key = "";
    for (int f : fields) {
      const auto k = RelateKey(rows.Get(row, f));
      if (!k) return std::optional<std::string>();
      *key += *k + '|';
    }
    return key;
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const RowSet child = rowset(c.child);
    RelateIndex index;
    index.Build(child, c.fields);
    for (size_t p = 0; p < parent.RowCount(); ++p) {
      SCOPED_TRACE("parent row " + std::to_string(p));
      const auto key = key_of(parent, p, c.fields);
      std::vector<size_t> want;
      for (size_t r = 0; r < child.RowCount(); ++r)
        if (key && key_of(child, r, c.fields) == key) want.push_back(r);
      std::vector<size_t> got = {99};
      index.RowsFor(parent, p, c.fields, &got);
      EXPECT_EQ(got, want);
    }
  }
  // Anchors of the same rule: 2, 2.0 and money 2.0000 relate; "2" does not.
  RelateIndex index;
  const RowSet child = rowset(whole_children);
  index.Build(child, {0});
  std::vector<size_t> got;
  index.RowsFor(parent, 0, {0}, &got);
  EXPECT_EQ(got, (std::vector<size_t>{0, 4, 5, 8}));
  index.RowsFor(parent, 4, {0}, &got);
  EXPECT_TRUE(got.empty());
}

}  // namespace
}  // namespace orv::db
