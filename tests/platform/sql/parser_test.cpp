// The lexer and parser on their own: how SQL Server's spellings become
// tokens, and where the untyped tree records each node.
#include <gtest/gtest.h>

#include "platform/sql/lexer.h"
#include "platform/sql/parser.h"

namespace orv::sql {
namespace {

std::string Kinds(const std::vector<Token>& tokens) {
  std::string s;
  for (const Token& t : tokens) {
    switch (t.type) {
      case TokenType::Identifier: s += "I"; break;
      case TokenType::Quoted: s += "Q"; break;
      case TokenType::Number: s += "N"; break;
      case TokenType::String: s += "S"; break;
      case TokenType::Variable: s += "V"; break;
      case TokenType::Symbol: s += "Y"; break;
      case TokenType::End: s += "E"; break;
    }
    if (t.type != TokenType::End) s += "(" + t.text + ")";
  }
  return s;
}

TEST(SqlLexer, ServerSpellings) {
  const std::pair<const char*, const char*> cases[] = {
      {"ID = 5AND", "I(ID)Y(=)N(5)I(AND)E"},
      {"1e5 2E 2e+3 .5", "N(1e5)N(2)I(E)N(2e+3)N(.5)E"},
      {"Invoices.Invoice# Check#", "I(Invoices)Y(.)I(Invoice#)I(Check#)E"},
      {"[Complete?] [a]]b] \"x y\"", "Q(Complete?)Q(a]b)Q(x y)E"},
      {"N'O''Brien' 'it''s'", "S(O'Brien)S(it's)E"},
      {"a<>b!=c<=d>=e", "I(a)Y(<>)I(b)Y(!=)I(c)Y(<=)I(d)Y(>=)I(e)E"},
      {"x -- note\n/* a /* nested */ one */ y", "I(x)I(y)E"},
      {"@id", "V(@id)E"},
      {"between'2026-01-01'", "I(between)S(2026-01-01)E"},
  };
  for (const auto& [text, kinds] : cases) EXPECT_EQ(kinds, Kinds(Tokenize(text))) << text;
}

// TOP, ROLLUP and the order are seen in the rows of constructs_test.cpp;
// here the shapes rows do not show: an alias given by "=" (rows do not
// show their names), the qualifier of a star, a nested join, precedence.
TEST(SqlParser, TreeShapes) {
  Statement st = Parse(
      "SELECT 'x' = a.b, t.* FROM dbo.T t LEFT OUTER JOIN (U INNER JOIN V ON U.k = V.k) ON t.k = U.k "
      "WHERE a.b IN (1, 2) AND NOT c LIKE 'x%' OR d BETWEEN 1 AND 2");
  const Select& s = *st.query->selects[0];
  EXPECT_EQ("x", s.items[0].alias);
  EXPECT_EQ(ExprKind::Star, s.items[1].expr->kind);
  EXPECT_EQ("t", s.items[1].expr->qualifier);
  ASSERT_EQ(1u, s.from.size());
  const TableSource& join = *s.from[0];
  EXPECT_EQ(JoinType::Left, join.join);
  EXPECT_EQ("T", join.left->table);
  EXPECT_TRUE(join.right->parenthesised);
  // OR of (IN AND NOT LIKE) and BETWEEN: AND binds tighter than OR.
  ASSERT_EQ(ExprKind::Logical, s.where->kind);
  EXPECT_EQ("OR", s.where->text);
  EXPECT_EQ("AND", s.where->args[0]->text);
  EXPECT_EQ(ExprKind::Between, s.where->args[1]->kind);
}

TEST(SqlParser, NodesKeepTheirSourcePositions) {
  Statement st = Parse("SELECT ID\nFROM Patient\nWHERE  LastName = 'x'");
  const Select& s = *st.query->selects[0];
  EXPECT_EQ(1, s.items[0].expr->pos.line);
  EXPECT_EQ(8, s.items[0].expr->pos.column);
  EXPECT_EQ(2, s.from[0]->pos.line);
  EXPECT_EQ(6, s.from[0]->pos.column);
  // A comparison sits at its operator; its operands at their own tokens.
  EXPECT_EQ(3, s.where->pos.line);
  EXPECT_EQ(17, s.where->pos.column);
  EXPECT_EQ(8, s.where->args[0]->pos.column);
  EXPECT_EQ(19, s.where->args[1]->pos.column);
}

}  // namespace
}  // namespace orv::sql
