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

std::string Repeat(const std::string& s, int n) {
  std::string out;
  out.reserve(s.size() * static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

struct Shape {
  const char* name;
  std::string (*statement)(int levels);
};

// Each shape nests `levels` times one construct that the passes walk
// recursively.
const Shape kShapes[] = {
    {"nested ABS",
     [](int n) {
       return "SELECT ID FROM Patient WHERE ID = " + Repeat("ABS(", n) + "1" + Repeat(")", n);
     }},
    {"nested CAST",
     [](int n) {
       return "SELECT " + Repeat("CAST(", n) + "ID" + Repeat(" AS int)", n) + " FROM Patient";
     }},
    {"nested ISNULL",
     [](int n) {
       return "SELECT " + Repeat("ISNULL(", n) + "LastName" + Repeat(", '')", n) + " FROM Patient";
     }},
    {"parentheses",
     [](int n) { return "SELECT " + Repeat("(", n) + "1" + Repeat(")", n) + " FROM Patient"; }},
    {"unary minus", [](int n) { return "SELECT " + Repeat("- ", n) + "ID FROM Patient"; }},
    {"NOT", [](int n) { return "SELECT ID FROM Patient WHERE " + Repeat("NOT ", n) + "ID = 1"; }},
    {"CASE in CASE",
     [](int n) {
       return "SELECT " + Repeat("CASE WHEN ID = 1 THEN ", n) + "1" + Repeat(" END", n) +
              " FROM Patient";
     }},
    {"sums", [](int n) { return "SELECT ID" + Repeat(" + 1", n) + " FROM Patient"; }},
    {"scalar subqueries",
     [](int n) {
       return "SELECT ID FROM Patient WHERE ID = " + Repeat("(SELECT ", n) + "1" + Repeat(")", n);
     }},
    {"IN subqueries",
     [](int n) {
       return "SELECT ID FROM Patient WHERE ID IN " +
              Repeat("(SELECT ID FROM Patient WHERE ID IN ", n) + "(1)" + Repeat(")", n);
     }},
    {"derived tables",
     [](int n) {
       return "SELECT * FROM " + Repeat("(SELECT * FROM ", n) + "Patient" + Repeat(") AS d", n);
     }},
    {"parenthesised sources",
     [](int n) { return "SELECT 1 FROM " + Repeat("(", n) + "Patient" + Repeat(")", n); }},
    {"JOIN chain",
     [](int n) {
       std::string s = "SELECT p0.ID FROM Patient p0";
       for (int i = 1; i <= n; ++i) s += " JOIN Patient p" + std::to_string(i) + " ON 1 = 1";
       return s;
     }},
    {"JOINs nested to the right",
     [](int n) {
       std::string s = "SELECT 1 FROM Patient p0";
       for (int i = 1; i <= n; ++i) s += " JOIN Patient p" + std::to_string(i);
       return s + Repeat(" ON 1 = 1", n);
     }},
    {"UPDATE with nested values",
     [](int n) { return "UPDATE Patient SET ID = " + Repeat("ABS(", n) + "1" + Repeat(")", n); }},
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
    const std::string inside = shape.statement(kMaxNesting / 4), twice = shape.statement(2 * kMaxNesting);
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
    EXPECT_THROW(Translate(shape.statement(40 * kMaxNesting), schema_, Dialect::SQLite), SqlError);
  }
}

}  // namespace
}  // namespace orv::sql
