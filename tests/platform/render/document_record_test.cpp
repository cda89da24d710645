#include "platform/render/document_record.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orv::render {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// The cells of a table read back as they were added, whatever their
// lengths, and a replaced cell leaves its neighbours as they were.
TEST(CellRows, CellsReadBackAsAddedAndReplaceOneByOne) {
  CellRows rows;
  rows.AddRow();
  rows.AddCell("Name");
  rows.AddCell("");
  rows.AddCell("Total ($)");
  rows.AddRow();  // a row without cells
  rows.AddRow();
  rows.AddCell("Smith; Jones | Co");
  rows.AddCell("Sub Total $1.00\r\nInterest $0.10");
  EXPECT_EQ(rows, (Rows{{"Name", "", "Total ($)"},
                        {},
                        {"Smith; Jones | Co", "Sub Total $1.00\r\nInterest $0.10"}}));
  EXPECT_EQ(rows[1].size(), 0u);
  EXPECT_EQ(rows[2].size(), 2u);

  // Longer, shorter and empty text in place of a cell.
  rows[0][1] = "A much longer heading than before";
  rows[2][0] = "Lee";
  rows[0][2] = "";
  EXPECT_EQ(rows, (Rows{{"Name", "A much longer heading than before", ""},
                        {},
                        {"Lee", "Sub Total $1.00\r\nInterest $0.10"}}));
  const CellRows& read = rows;
  EXPECT_EQ(read[2][1], "Sub Total $1.00\r\nInterest $0.10");

  // Equal to the same rows written out, and unequal where a cell, a row's
  // length or the number of rows differs.
  const CellRows same{{"Name", "A much longer heading than before", ""},
                      {},
                      {"Lee", "Sub Total $1.00\r\nInterest $0.10"}};
  EXPECT_TRUE(rows == same);
  EXPECT_FALSE(rows == (CellRows{{"Name", "A much longer heading than before", ""}, {}}));
  EXPECT_FALSE(rows == (CellRows{{"Name", "A much longer heading than before"},
                                 {},
                                 {"Lee", "Sub Total $1.00\r\nInterest $0.10"}}));
  EXPECT_FALSE(rows == (Rows{{"Name", "A much longer heading than before", ""},
                             {},
                             {"Lee", "Sub Total $1.00"}}));
}

}  // namespace
}  // namespace orv::render
