// Statements nested past what the layer's recursive passes may take: each
// shape is refused with a message naming the limit, on both engines, and
// never runs the process out of stack. The same shapes well inside the limit
// still translate.
#include <gtest/gtest.h>

#include <string>

#include "platform/sql/ast.h"
#include "platform/sql/translate.h"

namespace orv::sql {
namespace {

// One construct that the passes walk recursively, nested `levels` times:
// head, `levels` times open, core, `levels` times close, tail. A '#' in
// open or close stands for the level's number (1, 2, ...).
struct Shape {
  const char* name;
  const char *head, *open, *core, *close, *tail;

  std::string Statement(int levels) const {
    auto repeat = [levels](const std::string& s) {
      std::string out;
      for (int i = 1; i <= levels; ++i) {
        const size_t at = s.find('#');
        out += at == std::string::npos ? s : s.substr(0, at) + std::to_string(i) + s.substr(at + 1);
      }
      return out;
    };
    return head + repeat(open) + core + repeat(close) + tail;
  }
};

const Shape kShapes[] = {
    {"nested ABS", "SELECT ID FROM Patient WHERE ID = ", "ABS(", "1", ")", ""},
    {"nested CAST", "SELECT ", "CAST(", "ID", " AS int)", " FROM Patient"},
    {"nested ISNULL", "SELECT ", "ISNULL(", "LastName", ", '')", " FROM Patient"},
    {"parentheses", "SELECT ", "(", "1", ")", " FROM Patient"},
    {"unary minus", "SELECT ", "- ", "ID", "", " FROM Patient"},
    {"NOT", "SELECT ID FROM Patient WHERE ", "NOT ", "ID = 1", "", ""},
    {"CASE in CASE", "SELECT ", "CASE WHEN ID = 1 THEN ", "1", " END", " FROM Patient"},
    {"sums", "SELECT ID", "", "", " + 1", " FROM Patient"},
    {"scalar subqueries", "SELECT ID FROM Patient WHERE ID = ", "(SELECT ", "1", ")", ""},
    {"IN subqueries", "SELECT ID FROM Patient WHERE ID IN ", "(SELECT ID FROM Patient WHERE ID IN ", "(1)", ")", ""},
    {"derived tables", "SELECT * FROM ", "(SELECT * FROM ", "Patient", ") AS d", ""},
    {"parenthesised sources", "SELECT 1 FROM ", "(", "Patient", ")", ""},
    {"JOIN chain", "SELECT p0.ID FROM Patient p0", " JOIN Patient p# ON 1 = 1", "", "", ""},
    {"JOINs nested to the right", "SELECT 1 FROM Patient p0", " JOIN Patient p#", "", " ON 1 = 1", ""},
    {"UPDATE with nested values", "UPDATE Patient SET ID = ", "ABS(", "1", ")", ""},
};

class Nesting : public ::testing::Test {
 protected:
  Nesting() {
    schema_.AddTable("Patient",
                     {{"ID", "INTEGER", ValueKind::Integer, 0},
                      {"LastName", "VARCHAR(30)", ValueKind::Text, 30}},
                     {"ID"});
  }
  Schema schema_;
};

// Well inside the limit each shape translates; at twice the limit it is
// refused naming the limit; at forty times (the sizes that were seen to kill
// the process) it is refused as quickly.
TEST_F(Nesting, RefusedPastTheLimitNamingItAndTranslatedWellInside) {
  const std::string limit = std::to_string(kMaxNesting) + " levels";
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const std::string inside = shape.Statement(kMaxNesting / 4), twice = shape.Statement(2 * kMaxNesting);
    for (Dialect d : {Dialect::SQLite, Dialect::PostgreSQL}) {
      EXPECT_NO_THROW(Translate(inside, schema_, d));
      try {
        Translate(twice, schema_, d);
        ADD_FAILURE() << "translated";
      } catch (const SqlError& e) {
        std::string what = e.what();
        EXPECT_NE(what.find(limit), std::string::npos) << what.substr(0, 300);
        EXPECT_GE(e.line(), 1);
      }
    }
    EXPECT_THROW(Translate(shape.Statement(40 * kMaxNesting), schema_, Dialect::SQLite), SqlError);
  }
}

}  // namespace
}  // namespace orv::sql
