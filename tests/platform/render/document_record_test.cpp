// The cells a document keeps of its tables, held in one buffer: every row
// and cell reads back as added, empty ones included, and comparison with
// rows written out tells a moved cell boundary from the same text.
#include <gtest/gtest.h>

#include "platform/render/document_record.h"

namespace orv::render {
namespace {

using Rows = std::vector<std::vector<std::string>>;

TEST(CellRows, RowsReadBackCellByCell) {
  const Rows rows = {{"Name", "Total($)"},
                     {"", "$0.00"},
                     {},
                     {"Smith; Jones | Co", std::string("a\0b", 3), "Line one\r\nLine two"},
                     {"last"}};
  CellRows cells;
  cells.Reserve(2, 3, 10);  // less than needed: it grows beyond it
  for (const auto& row : rows) {
    cells.StartRow();
    for (const auto& cell : row) cells.AddCell(cell);
  }
  ASSERT_EQ(cells.size(), rows.size());
  for (size_t r = 0; r < rows.size(); ++r) {
    SCOPED_TRACE(r);
    ASSERT_EQ(cells[r].size(), rows[r].size());
    EXPECT_EQ(cells[r].empty(), rows[r].empty());
    for (size_t c = 0; c < rows[r].size(); ++c) EXPECT_EQ(cells[r][c], rows[r][c]);
  }
  EXPECT_TRUE(cells == rows);
  EXPECT_TRUE(CellRows{} == Rows{});

  // The same text cut at another place, a missing row or an extra empty
  // cell is not the same table.
  const std::pair<const char*, Rows> others[] = {
      {"a cell boundary moved", {{"Nam", "eTotal($)"}}},
      {"a row fewer", {}},
      {"an empty cell more", {{"Name", "Total($)", ""}}},
  };
  const CellRows first = {{"Name", "Total($)"}};
  for (const auto& [name, other] : others) EXPECT_FALSE(first == other) << name;
}

}  // namespace
}  // namespace orv::render
