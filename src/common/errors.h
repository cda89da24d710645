// Errors raised by the value layer, the database layer and the reports.
//
// The reports trap errors the way the host language does: an error carries a
// number and a description, and a trap shows the description in a message box.
// Every error this library raises derives from ReportError so that one catch
// serves every trap.
#pragma once

#include <stdexcept>
#include <string>

namespace orv {

class ReportError : public std::runtime_error {
 public:
  ReportError(int number, std::string description)
      : std::runtime_error(description), number_(number), description_(std::move(description)) {}
  int number() const { return number_; }
  const std::string& description() const { return description_; }

 private:
  int number_;
  std::string description_;
};

// The host language's error numbers for the failures of value conversion.
enum ErrorNumber : int {
  kErrOverflow = 6,
  kErrSubscript = 9,
  kErrDivisionByZero = 11,
  kErrTypeMismatch = 13,
  kErrInvalidUseOfNull = 94,
  kErrInvalidProcedureCall = 5,
  kErrDatabase = -2147217900,  // the provider's generic "command failed"
};

// A value could not be converted to the type asked for ("Type mismatch").
class ConversionError : public ReportError {
 public:
  explicit ConversionError(const std::string& what = "Type mismatch")
      : ReportError(kErrTypeMismatch, what) {}
};

// Null reached an operation that needs a value ("Invalid use of Null").
class NullError : public ReportError {
 public:
  NullError() : ReportError(kErrInvalidUseOfNull, "Invalid use of Null") {}
};

// A result does not fit its type ("Overflow"). Money never wraps.
class OverflowError : public ReportError {
 public:
  OverflowError() : ReportError(kErrOverflow, "Overflow") {}
};

class DivisionByZeroError : public ReportError {
 public:
  DivisionByZeroError() : ReportError(kErrDivisionByZero, "Division by zero") {}
};

}  // namespace orv
