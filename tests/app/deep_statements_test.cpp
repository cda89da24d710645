// Statements nested past the data layer's limits, given to the command-line
// host as a careless or hostile user would: through `sql` and as a report's
// filter. Each is refused with exit 1 and a message naming the limit; none
// may take the process down.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "host_support.h"

namespace {

namespace fs = std::filesystem;

std::string Repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

// The limits the messages name (platform/sql/ast.h, platform/db/shape.h).
constexpr int kNesting = 400;
constexpr int kShapeNesting = 100;

std::string NestedAbs(int n) {
  return Repeat("ABS(", n) + "1" + Repeat(")", n);
}

std::string JoinChain(int n) {
  std::string s = "SELECT p0.ID FROM Patient p0";
  for (int i = 1; i <= n; ++i) s += " JOIN Patient p" + std::to_string(i) + " ON 1 = 1";
  return s;
}

std::string NestedShape(int n) {
  return Repeat("SHAPE {SELECT ID FROM Patient} APPEND ((", n - 1) +
         "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT PatientID FROM Invoices} RELATE ID TO "
         "PatientID)" +
         Repeat(") RELATE ID TO ID)", n - 1);
}

class DeepStatements : public orv::testing::HostSuite {
 protected:
  static void SetUpTestSuite() { MakePractice("deep", 10, 2); }

  // Runs the host with `args` after the statement or filter in `text`,
  // passed through a file so that no shell quoting stands in the way.
  static orv::testing::ShellResult Run(const std::string& before, const std::string& text,
                                       const std::string& after) {
    std::string file = dir + "/text";
    std::ofstream(file) << text;
    return Host(before + " \"$(cat " + file + ")\" " + after);
  }
};

TEST_F(DeepStatements, RefusedThroughTheSqlCommand) {
  struct Case {
    const char* name;
    std::string statement;
    std::string says;
  } cases[] = {
      {"nested calls", "SELECT ID FROM Patient WHERE ID = " + NestedAbs(2 * kNesting),
       std::to_string(kNesting) + " levels"},
      {"JOIN chain", JoinChain(2 * kNesting), std::to_string(kNesting) + " levels"},
      {"nested SHAPE", NestedShape(2 * kShapeNesting), std::to_string(kShapeNesting) + " levels"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto r = Run("sql --db " + dir + "/demo.db", c.statement, "");
    EXPECT_EQ(r.status, 1) << r.out.substr(0, 400);
    EXPECT_NE(r.out.find(c.says), std::string::npos) << r.out.substr(0, 400);
  }
}

TEST_F(DeepStatements, RefusedAsAReportFilter) {
  // Twice the limit, and the 38 KB filter that once overflowed the stack.
  for (int levels : {2 * kNesting, 8000}) {
    SCOPED_TRACE(levels);
    std::string out = dir + "/list" + std::to_string(levels) + ".pdf";
    auto r =
        Run("--db " + dir + "/demo.db --today 2026-11-20 --out " + out + " rptPatientListSimple",
            "ID = " + NestedAbs(levels), "desk Patients");
    EXPECT_EQ(r.status, 1) << r.out.substr(0, 400);
    EXPECT_NE(r.out.find(std::to_string(kNesting) + " levels"), std::string::npos)
        << r.out.substr(0, 400);
  }
}

}  // namespace
