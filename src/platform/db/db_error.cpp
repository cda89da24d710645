#include "platform/db/db_error.h"

namespace orv::db {

std::string DescribeStatementError(const std::string& reason, const std::string& statement,
                                   const std::string& engine_sql, int engine_offset) {
  std::string d = reason + " in statement: " + statement;
  bool differs = !engine_sql.empty() && engine_sql != statement;
  if (differs) d += "\nstatement run by the engine: " + engine_sql;
  if (engine_offset >= 0) {
    const std::string& text = differs ? engine_sql : statement;
    if (static_cast<size_t>(engine_offset) <= text.size()) {
      // Name the place by line and column as well as showing the text from
      // it, since the statements are long single lines.
      int line = 1, column = 1;
      for (int i = 0; i < engine_offset; ++i) {
        if (text[i] == '\n') {
          ++line;
          column = 1;
        } else {
          ++column;
        }
      }
      d += "\nat line " + std::to_string(line) + ", column " + std::to_string(column) + " of the " +
           (differs ? "engine's statement" : "statement") + ", near: " +
           text.substr(engine_offset, 40);
    }
  }
  return d;
}

}  // namespace orv::db
