// Taking SHAPE statements apart into commands, chapters and relations. (A
// SHAPE of three levels, parsed and run: shape_recordset_test.cpp.)
#include "platform/db/shape.h"

#include <gtest/gtest.h>

#include "platform/db/db_error.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

// Prints the tree as "command{alias}[chapter: parent->child](child...)" so
// that one expected text says everything about the parse.
std::string Outline(const ShapeNode& n) {
  std::string s = n.command + "{" + n.alias + "}";
  for (const auto& c : n.children) {
    s += "[" + c.name + ":";
    for (const auto& [p, ch] : c.relate) s += " " + p + "->" + ch;
    s += "](" + Outline(c.node) + ")";
  }
  return s;
}

TEST(ShapeParse, Forms) {
  struct Case {
    const char* name;
    const char* statement;
    const char* outline;
  } cases[] = {
      {"one child, quoted names",
       "SHAPE {SELECT ID FROM Accounts}  AS Account APPEND ({SELECT AccountID FROM AccountsPayable} "
       " AS AccountsPayable RELATE 'ID' TO 'AccountID') AS AccountsPayable",
       "SELECT ID FROM Accounts{Account}[AccountsPayable: ID->AccountID](SELECT AccountID FROM "
       "AccountsPayable{AccountsPayable})"},
      {"two children, bare and bracketed relate names, chapter name from the alias",
       "shape {SELECT a} append ({SELECT b} AS B relate ID to [Parent ID]), ({SELECT c} RELATE "
       "Code TO Code, Tooth TO Tooth) AS C",
       "SELECT a{}[B: ID->Parent ID](SELECT b{B})[C: Code->Code Tooth->Tooth](SELECT c{})"},
      {"braces and quotes inside a command",
       "SHAPE {SELECT '}' AS x, [a}b] FROM t WHERE n = '{'} APPEND ({SELECT 1} RELATE x TO y)",
       "SELECT '}' AS x, [a}b] FROM t WHERE n = '{'{}[Chapter1: x->y](SELECT 1{})"},
      {"two nested shapes side by side",
       "SHAPE {P} AS I APPEND (( SHAPE {A} AS SA APPEND ({B} AS RA RELATE 'ID' TO 'SendID') AS RA) "
       "AS SA RELATE 'ID' TO 'InsID') AS SA, (( SHAPE {C} AS SB APPEND ({D} AS RB RELATE 'ID' TO "
       "'SendID') AS RB) AS SB RELATE 'ID' TO 'SecID') AS SB",
       "P{I}[SA: ID->InsID](A{SA}[RA: ID->SendID](B{RA}))[SB: ID->SecID](C{SB}[RB: "
       "ID->SendID](D{RB}))"},
      {"no APPEND", "SHAPE {SELECT * FROM PaymentTypes}  AS rptBankDepositSlip",
       "SELECT * FROM PaymentTypes{rptBankDepositSlip}"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_TRUE(IsShapeStatement(c.statement));
    EXPECT_EQ(Outline(ParseShape(c.statement)), c.outline);
  }
}

TEST(ShapeParse, RecognisesOnlyTheWord) {
  EXPECT_TRUE(IsShapeStatement("  \n shape{x}"));
  EXPECT_FALSE(IsShapeStatement("SHAPES"));
  EXPECT_FALSE(IsShapeStatement("SELECT Shape FROM t"));
}

TEST(ShapeParse, MalformedStatementsNameThePlace) {
  struct Case {
    const char* statement;
    const char* says;
  } cases[] = {
      {"SHAPE SELECT 1", "'{' is expected"},
      {"SHAPE {SELECT 1", "no closing '}'"},
      {"SHAPE {A} APPEND ({B} RELATE ID)", "TO is expected"},
      {"SHAPE {A} APPEND ({B} AS b ID TO ID)", "RELATE is expected"},
      {"SHAPE {A} APPEND ({B} RELATE ID TO PID", "')' is expected"},
      {"SHAPE {A} APPEND ({B} RELATE ID TO PID) AS c extra", "unexpected text"},
      {"SHAPE {A} COMPUTE x BY y", "COMPUTE is not supported"},
      {"SHAPE {A} APPEND (CALC(x) AS y)", "not supported"},
  };
  for (const auto& c : cases)
    EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { ParseShape(c.statement); }, {c.says, c.statement}))
        << c.statement;
}

// `levels` SHAPEs, each the child of the one around it.
std::string NestedShape(int levels) {
  std::string s;
  for (int i = 1; i < levels; ++i) s += "SHAPE {SELECT ID FROM Patient} APPEND ((";
  s += "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT ID FROM Patient} RELATE ID TO ID)";
  for (int i = 1; i < levels; ++i) s += ") RELATE ID TO ID)";
  return s;
}

int Depth(const ShapeNode& n) { return n.children.empty() ? 1 : 1 + Depth(n.children[0].node); }

TEST(ShapeParse, NestingIsBoundedBeforeItRecurses) {
  EXPECT_EQ(Depth(ParseShape(NestedShape(kMaxShapeNesting))), kMaxShapeNesting + 1);
  // Twice the limit, and the depth that once ran the process out of stack.
  const std::string limit = "more than " + std::to_string(kMaxShapeNesting) + " levels";
  for (int levels : {2 * kMaxShapeNesting, 15000})
    EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { ParseShape(NestedShape(levels)); }, {limit}))
        << levels;
}

}  // namespace
}  // namespace orv::db
