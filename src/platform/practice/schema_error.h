// The failure of the schema or of the demo practice generator: a statement
// that SQLite refused, with SQLite's message.
#pragma once

#include <string>

#include "common/errors.h"

namespace orv::practice {

class SchemaError : public ReportError {
 public:
  explicit SchemaError(const std::string& what) : ReportError(kErrDatabase, what) {}
};

}  // namespace orv::practice
