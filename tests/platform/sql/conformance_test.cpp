// The shared T-SQL conformance cases: each statement is translated, run on
// the fixture in SQLite, and its rows compared with the rows SQL Server
// returns, by the rules of the cases' README. SHAPE cases belong to the
// database layer and are skipped here.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>

#include "sql_test_support.h"
#include "test_paths.h"

namespace orv::sql::testing {
namespace {

struct Case {
  std::string name;
  std::string order;  // ordered, rows, children
  std::string statement;
  std::vector<std::string> expected;  // header line, then rows
};

// Test names and failure messages show the case by its file name.
void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> cells;
  size_t start = 0;
  for (;;) {
    size_t tab = line.find('\t', start);
    cells.push_back(line.substr(start, tab - start));
    if (tab == std::string::npos) return cells;
    start = tab + 1;
  }
}

std::string RTrim(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
  return s;
}

Case ReadCase(const std::filesystem::path& path) {
  Case c;
  c.name = path.stem().string();
  enum { Header, Statement, Expected } part = Header;
  for (const std::string& line : SplitLines(FileBytes(path.string()))) {
    if (line == "--- statement") {
      part = Statement;
    } else if (line == "--- expected") {
      part = Expected;
    } else if (part == Header && line.rfind("# order:", 0) == 0) {
      c.order = line.substr(8);
      c.order.erase(0, c.order.find_first_not_of(' '));
    } else if (part == Statement) {
      c.statement += (c.statement.empty() ? "" : "\n") + line;
    } else if (part == Expected) {
      c.expected.push_back(line);
    }
  }
  while (!c.expected.empty() && RTrim(c.expected.back()).empty()) c.expected.pop_back();
  return c;
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  if (SampleCasesDir().empty()) return cases;
  std::filesystem::path dir = std::filesystem::path(SampleCasesDir()) / "cases";
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() == ".case") cases.push_back(ReadCase(entry.path()));
  }
  std::sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) { return a.name < b.name; });
  return cases;
}

bool SameNameNoCase(std::string a, std::string b) {
  auto low = [](std::string& s) {
    for (char& ch : s) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  };
  low(a);
  low(b);
  return a == b;
}

class ConformanceTest : public ::testing::TestWithParam<Case> {};

TEST_P(ConformanceTest, RowsMatchTheServer) {
  const Case& c = GetParam();
  if (c.statement.rfind("SHAPE", 0) == 0) GTEST_SKIP() << "SHAPE is taken apart by the database layer";
  // The sample cases expect the rows of their own fixture.
  FixtureDb db(SampleCasesDir() + "/fixture.sql");
  FixtureDb::Result result;
  try {
    result = db.Run(c.statement);
  } catch (const SqlError& e) {
    FAIL() << e.description();
  }
  ASSERT_FALSE(c.expected.empty());
  std::vector<std::string> want_header = SplitTabs(RTrim(c.expected[0]));
  ASSERT_EQ(want_header.size(), result.header.size()) << RowsText({result.header});
  for (size_t i = 0; i < want_header.size(); ++i) {
    if (!want_header[i].empty()) {
      EXPECT_TRUE(SameNameNoCase(want_header[i], result.header[i])) << want_header[i] << " vs " << result.header[i];
    }
  }
  // The cases' files may end a row with blanks: neither side's count.
  std::vector<std::string> want_rows;
  for (size_t i = 1; i < c.expected.size(); ++i) want_rows.push_back(RTrim(c.expected[i]));
  Rows got = result.rows;
  for (auto& row : got) {
    if (!row.empty()) row.back() = RTrim(row.back());
  }
  // `~N` matches a number within 1e-5 relative (at least 1e-5 absolute).
  EXPECT_TRUE(SameRows(want_rows, got, c.order == "ordered", 1e-5)) << "rows:" << RowsText(result.rows);
}

// On a checkout without the sample cases beside it the suite has no case;
// this says so instead of passing in silence.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ConformanceTest);
TEST(SampleCases, PresentBesideTheCheckout) {
  if (SampleCasesDir().empty())
    GTEST_SKIP() << "no " << ORVENDA_SHARED_DIR << "/tsql-cases beside the checkout: its sample cases are not run";
  EXPECT_FALSE(AllCases().empty());
}

INSTANTIATE_TEST_SUITE_P(SharedCases, ConformanceTest, ::testing::ValuesIn(AllCases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           std::string n = "c" + info.param.name;
                           for (char& ch : n) {
                             if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                           }
                           return n;
                         });

}  // namespace
}  // namespace orv::sql::testing
