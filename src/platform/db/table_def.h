// A table as the copy between engines sees it: columns with their declared
// SQL Server types, the primary key and the indexes. Each engine reads its
// tables into this form and creates tables from it, so a practice moves
// between engines with the same declared types, keys and indexes.
#pragma once

#include <string>
#include <vector>

#include "platform/sql/translate.h"

namespace orv::db {

struct IndexDef {
  std::string name;
  std::vector<std::string> columns;
  bool unique = false;
};

struct TableDef {
  std::string name;
  std::vector<sql::ColumnType> columns;  // declared types as on SQL Server
  std::vector<std::string> primary_key;
  std::vector<IndexDef> indexes;
};

// A name quoted for engine SQL, as both engines take it: "Policy#",
// "Complete?", "say ""hi""".
inline std::string QuoteIdent(const std::string& name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

}  // namespace orv::db
