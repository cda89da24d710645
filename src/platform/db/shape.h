// The SHAPE statement of hierarchical recordsets, in the forms the reports
// write:
//
//   SHAPE {parent command} [AS name]
//     APPEND ({child command} [AS alias] RELATE parentcol TO childcol [, ...]) [AS chapter],
//            (( SHAPE {...} APPEND (...) ) [AS alias] RELATE 'ID' TO 'PatientID') [AS chapter]
//
// Column names in RELATE may be quoted ('ID'), bracketed or bare. A child is
// a command in braces or a nested SHAPE in parentheses, up to
// kMaxShapeNesting levels.
// Commands are T-SQL, handed to the translator one by one.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orv::db {

struct ShapeChild;

struct ShapeNode {
  std::string command;  // the text between the braces
  std::string alias;    // "AS name" after the braces, "" when absent
  std::vector<ShapeChild> children;
};

struct ShapeChild {
  ShapeNode node;
  // RELATE pairs: (parent column, child column).
  std::vector<std::pair<std::string, std::string>> relate;
  // The name of the chapter column on the parent: the "AS name" after the
  // closing parenthesis, else the child's alias, else "Chapter<n>".
  std::string name;
};

// How deep SHAPEs may nest in one statement. Parsing, running and relating
// a SHAPE recurse once a level; a deeper statement is refused before the
// parser descends past this. The reports nest two or three.
inline constexpr int kMaxShapeNesting = 100;

// True when the statement begins with the word SHAPE.
bool IsShapeStatement(std::string_view statement);

// Parses a SHAPE statement. Throws DatabaseError naming the statement and
// the position of the fault, and for the SHAPE forms the layer does not run
// (COMPUTE, CALC, parameterised relations), and for SHAPEs nested past
// kMaxShapeNesting.
ShapeNode ParseShape(std::string_view statement);

}  // namespace orv::db
