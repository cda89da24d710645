// A report's filter nested past the T-SQL layer's limit, given to the
// command-line host as a careless or hostile user would: refused with exit 1
// and a message naming the limit, never taking the process down. (Each
// nesting shape, and SHAPE's own limit, are refused at the layers below:
// tests/platform/sql/nesting_test.cpp, tests/platform/db/shape_parse_test.cpp.)
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "host_support.h"

namespace {

std::string Repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

// The limit the message names (platform/sql/ast.h).
constexpr int kNesting = 400;

std::string NestedAbs(int n) {
  return Repeat("ABS(", n) + "1" + Repeat(")", n);
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
