// The compact cell store under every recordset: each kind of value comes
// back as it went in, and rewritten text does not grow the store without
// bound. (Comparison in place, as Sort uses it on a column of mixed kinds:
// sort_and_relate_test.cpp.)
#include <gtest/gtest.h>

#include "platform/db/column_store.h"
#include "platform/db/value_compare.h"

namespace orv::db {
namespace {

// One value of every kind a field may hold, and the awkward ones of each.
std::vector<std::pair<const char*, Variant>> Samples() {
  return {
      {"empty", Variant()},
      {"null", Variant::Null()},
      {"empty text", Variant("")},
      {"blanks", Variant("   ")},
      {"trailing blanks", Variant("Côté  ")},
      {"text with a zero byte", Variant(std::string("a\0b", 3))},
      // The longest text with a one-byte length, and the first with two.
      {"text of 127 bytes", Variant(std::string(127, 'p'))},
      {"text of 128 bytes", Variant(std::string(128, 'q'))},
      {"text of 200 bytes", Variant(std::string(200, 'x'))},
      {"text of 20,000 bytes", Variant(std::string(20000, 'y'))},
      {"int32", Variant(-7)},
      {"int32 minimum", Variant(INT32_MIN)},
      {"int64", Variant::Int64(INT64_MIN)},
      {"zero as int64", Variant::Int64(0)},
      {"float", Variant(0.1)},
      {"negative zero float", Variant(-0.0)},
      {"money to the fourth decimal", Variant(Currency::FromRaw(-1))},
      {"money at its top", Variant(Currency::FromRaw(INT64_MAX))},
      {"date", Variant(DateTime::FromParts(2026, 11, 20))},
      {"date with time", Variant(DateTime::FromParts(2026, 11, 20, 14, 5, 30))},
      {"date before the base day", Variant(DateTime(-700.25))},
      {"true", Variant(true)},
      {"false", Variant(false)},
      {"blob", Variant(Bytes{0x00, 0xff, 0x10})},
      {"empty blob", Variant(Bytes{})},
  };
}

TEST(ColumnStore, EveryKindReadsBackAsStored) {
  auto samples = Samples();
  ColumnStore store;
  store.AddColumn();
  store.AddColumn();
  for (const auto& [name, v] : samples) {
    size_t r = store.AppendRow();
    store.Set(r, 1, v);
  }
  for (size_t r = 0; r < samples.size(); ++r) {
    SCOPED_TRACE(samples[r].first);
    // Identity of kind and value: an int32 stays an int32, "" stays text.
    EXPECT_EQ(store.Get(r, 1), samples[r].second);
    EXPECT_EQ(store.TypeAt(r, 1), samples[r].second.type());
    EXPECT_TRUE(store.Get(r, 0).IsNull()) << "a new row is Null";
  }
  // Served on into another store, without the first column.
  ColumnStore copy;
  copy.AddColumn();
  for (size_t r = 0; r < samples.size(); ++r) copy.AppendRowFrom(store, r, 1);
  for (size_t r = 0; r < samples.size(); ++r) EXPECT_EQ(copy.Get(r, 0), samples[r].second) << samples[r].first;
}

TEST(ColumnStore, LargeStoresKeepEveryCellAcrossChunksAndBlocks) {
  // Enough rows for several chunks of cells and enough text for several
  // arena blocks, with texts longer than a block among them; each row is
  // checked after the store has grown past it, and after a self-copy, a
  // drop across a chunk's edge and a compaction.
  constexpr size_t kRows = 10000;
  auto text_of = [](size_t r) {
    if (r % 997 == 0) return std::string(70000 + r, static_cast<char>('a' + r % 26));
    return "Patient " + std::to_string(r) + std::string(r % 40, '.');
  };
  ColumnStore store;
  store.AddColumn();
  store.AddColumn();
  for (size_t r = 0; r < kRows; ++r) {
    size_t row = store.AppendRow();
    store.Set(row, 0, Variant::Int64(static_cast<int64_t>(r) - 5000));
    store.Set(row, 1, Variant(text_of(r)));
  }
  // A column added to a store of many rows reads Empty in all of them.
  store.AddColumn();
  for (size_t r = 0; r < kRows; ++r) {
    ASSERT_EQ(store.IntegerAt(r, 0), static_cast<int64_t>(r) - 5000) << r;
    ASSERT_EQ(store.BytesAt(r, 1), text_of(r)) << r;
    ASSERT_TRUE(store.Get(r, 2).IsEmpty()) << r;
  }
  // Rows served on from the same store land in new chunks and blocks.
  for (size_t r = 0; r < 3000; ++r) store.AppendRowFrom(store, r * 3, 1);
  for (size_t r = 0; r < 3000; ++r) ASSERT_EQ(store.BytesAt(kRows + r, 0), text_of(r * 3)) << r;
  // Dropped back below a chunk's edge, then grown again.
  while (store.RowCount() > 4000) store.PopRow();
  size_t row = store.AppendRow();
  EXPECT_TRUE(store.Get(row, 1).IsNull());
  EXPECT_EQ(store.BytesAt(3999, 1), text_of(3999));
  // Rewriting every long text leaves most of the arena unused: the store
  // compacts it and every cell still reads its own text.
  for (size_t r = 0; r < 4000; ++r) store.Set(r, 1, Variant(std::to_string(r)));
  for (size_t r = 0; r < 4000; ++r) ASSERT_EQ(store.BytesAt(r, 1), std::to_string(r)) << r;
  EXPECT_LT(store.MemoryBytes(), size_t{1} << 20);
  // The whole number of a cell, as the relate keys read it; 0 for others.
  EXPECT_EQ(store.IntegerAt(0, 1), 0);
}

TEST(ColumnStore, CellsPushedRowByRowKeepTheirKinds) {
  // A result read cell by cell: whole numbers with a Null now and then,
  // text in every row, dates that stop for Nulls partway through a chunk.
  // Most chunks hold cells of one kind; a cell of another kind, pushed or
  // written later, must change that cell alone.
  constexpr size_t kRows = 10000;
  auto number = [](size_t r) { return r % 4096 == 100 ? Variant::Null() : Variant(static_cast<int>(r)); };
  auto text = [](size_t r) { return "Patient " + std::to_string(r); };
  auto day = [](size_t r) {
    return r >= 9000 ? Variant::Null() : Variant(DateTime::FromParts(2026, 1, 1 + static_cast<int>(r % 300)));
  };
  ColumnStore store;
  for (int c = 0; c < 3; ++c) store.AddColumn();
  for (size_t r = 0; r < kRows; ++r) {
    const Variant n = number(r);
    if (n.IsNull())
      store.PushCell(0, ColumnStore::Kind::Null, 0);
    else
      store.PushCell(0, ColumnStore::Kind::Long, static_cast<uint64_t>(r));
    store.PushBytes(1, ColumnStore::Kind::String, text(r));
    store.PushValue(2, day(r));
    ASSERT_EQ(store.EndRow(), r);
  }
  auto check = [&](size_t r) {
    ASSERT_EQ(store.Get(r, 0), number(r)) << r;
    ASSERT_EQ(store.TypeAt(r, 0), number(r).type()) << r;
    ASSERT_EQ(store.Get(r, 1), Variant(text(r))) << r;
    ASSERT_EQ(store.Get(r, 2), day(r)) << r;
  };
  for (size_t r = 0; r < kRows; ++r) check(r);
  // One cell of a chunk of texts becomes a number, then text again.
  store.Set(5000, 1, Variant(7));
  EXPECT_EQ(store.Get(5000, 1), Variant(7));
  EXPECT_EQ(store.Get(4999, 1), Variant(text(4999)));
  EXPECT_EQ(store.Get(5001, 1), Variant(text(5001)));
  EXPECT_EQ(store.Compare(4999, 5000, 1), CompareValues(Variant(text(4999)), Variant(7)));
  store.Set(5000, 1, Variant(text(5000)));
  // Rows dropped across the edge of a chunk and the change of kind, then
  // rows added both ways.
  while (store.RowCount() > 8000) store.PopRow();
  const size_t added = store.AppendRow();
  store.PushValue(0, Variant(-1));
  store.PushValue(1, Variant("pushed"));
  store.PushValue(2, Variant::Null());
  store.EndRow();
  for (size_t r = 0; r < 8000; ++r) check(r);
  for (size_t c = 0; c < 3; ++c) EXPECT_TRUE(store.Get(added, c).IsNull()) << c;
  EXPECT_EQ(store.Get(added + 1, 0), Variant(-1));
  EXPECT_EQ(store.Get(added + 1, 1), Variant("pushed"));
  EXPECT_TRUE(store.Get(added + 1, 2).IsNull());
}

TEST(ColumnStore, RepeatedTextsPushedShareTheirBytes) {
  // A long result whose first column repeats a few dozen texts (a fee
  // code's description on every line) and whose second holds a new text in
  // every row: each cell reads back its own text, the repeated ones take
  // their bytes about once, and so they do again after a compaction has
  // moved every entry.
  constexpr size_t kRows = 20000;
  auto repeated = [](size_t r) {
    const size_t k = (r * 7) % 50;
    // Lengths from 1 to past the longest text looked for again.
    return std::string(1 + (k * 3) % 80, static_cast<char>('A' + k % 26)) + std::to_string(k);
  };
  auto unique = [](size_t r) { return "Patient " + std::to_string(r * 2654435761u % 1000003); };
  // Blobs among the texts are held as they come.
  auto kind_of = [](size_t r) {
    return r % 3 ? ColumnStore::Kind::String : ColumnStore::Kind::Binary;
  };
  auto value = [&](size_t r, const std::string& text) {
    return kind_of(r) == ColumnStore::Kind::String ? Variant(text)
                                                   : Variant(Bytes(text.begin(), text.end()));
  };
  ColumnStore store;
  store.AddColumn();
  store.AddColumn();
  size_t repeated_bytes = 0;
  auto push = [&](size_t r) {
    store.PushBytes(0, ColumnStore::Kind::String, repeated(r));
    store.PushBytes(1, kind_of(r), unique(r));
    store.EndRow();
    repeated_bytes += repeated(r).size() + 1;
  };
  auto check = [&](size_t from, size_t to) {
    for (size_t r = from; r < to; ++r) {
      ASSERT_EQ(store.BytesAt(r, 0), repeated(r)) << r;
      ASSERT_EQ(store.BytesAt(r, 1), unique(r)) << r;
      ASSERT_EQ(store.KindAt(r, 1), kind_of(r)) << r;
    }
  };
  size_t unique_bytes = 0;
  for (size_t r = 0; r < kRows; ++r) {
    push(r);
    unique_bytes += unique(r).size() + 1;
  }
  check(0, kRows);
  // Two columns of cells and the kinds of the one that mixes them.
  const size_t cells = 2 * kRows * sizeof(uint64_t) + kRows;
  // The repeated texts longer than 64 bytes are held each time.
  size_t long_bytes = 0;
  for (size_t r = 0; r < kRows; ++r)
    if (repeated(r).size() > 64) long_bytes += repeated(r).size() + 1;
  EXPECT_LT(store.MemoryBytes(),
            cells + unique_bytes + long_bytes + (repeated_bytes - long_bytes) / 10);

  // Every unique text rewritten longer, then shorter: most of the arena is
  // garbage and is compacted, each cell taking its own copy again.
  for (size_t r = 0; r < kRows; ++r) store.Set(r, 1, value(r, std::string(100, 'x') + unique(r)));
  for (size_t r = 0; r < kRows; ++r) store.Set(r, 1, value(r, unique(r)));
  // Rows pushed after the compaction find the texts at their new places,
  // and so do rows pushed once the store was told the reading is done.
  for (size_t r = kRows; r < kRows + 5000; ++r) push(r);
  store.DonePushing();
  for (size_t r = kRows + 5000; r < kRows + 6000; ++r) push(r);
  check(0, kRows + 6000);
}

}  // namespace
}  // namespace orv::db
