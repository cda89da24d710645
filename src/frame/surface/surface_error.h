// Errors of the print surface. They derive from ReportError so that a
// report's trap, or the host, sees them with a number and a description.
#pragma once

#include <string>

#include "common/errors.h"

namespace orv::frame {

class SurfaceError : public ReportError {
 public:
  explicit SurfaceError(const std::string& what, int number = kErrInvalidProcedureCall)
      : ReportError(number, what) {}
};

// A TableCell row or column outside the table ("Subscript out of range").
class CellRangeError : public SurfaceError {
 public:
  explicit CellRangeError(const std::string& what) : SurfaceError(what, kErrSubscript) {}
};

}  // namespace orv::frame
