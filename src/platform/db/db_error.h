// The error the database layer raises: a ReportError with the provider's
// generic number, whose description says what the database answered, the
// statement as the caller gave it and, where known, the place in it.
#pragma once

#include <string>

#include "common/errors.h"

namespace orv::db {

class DatabaseError : public ReportError {
 public:
  explicit DatabaseError(const std::string& description)
      : ReportError(kErrDatabase, description) {}
  DatabaseError(int number, const std::string& description) : ReportError(number, description) {}
};

// The numbers of the recordset's own errors.
enum RecordsetError : int {
  kErrNoCurrentRecord = 3021,     // at BOF or EOF
  kErrObjectClosed = 3704,        // used after Close or before Open
  kErrItemNotFound = 3265,        // no field of that name or position
  kErrNotUpdatable = 3251,        // a read-only recordset was written
  kErrNotAllowed = 3219,          // operation not allowed in this context
};

// Builds the description of a failed statement:
//   "<reason> in statement: <statement>"
// followed, when the engine's text differs from the statement, by the engine
// text and a caret line under the place the engine named (offset < 0: none).
std::string DescribeStatementError(const std::string& reason, const std::string& statement,
                                   const std::string& engine_sql = {}, int engine_offset = -1);

}  // namespace orv::db
