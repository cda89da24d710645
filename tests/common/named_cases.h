// Helpers shared by the tables of named cases in the common-layer tests.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "common/currency.h"
#include "common/variant.h"

// In the namespace of the tests that include it, so the tables use them bare.
namespace orv {

// A money figure written as the reports print it, "123.45".
inline Currency Cur(const char* text) {
  return Currency::FromDecimalText(text);
}

// Names each instance of a parameterised test after its case's `name`.
struct CaseNameOf {
  template <class Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const {
    return info.param.name;
  }
};
inline constexpr CaseNameOf CaseName{};

// A value, a format string and the text Format gives for them.
struct FormatCase {
  const char* name;
  Variant value;
  const char* fmt;
  const char* expected;
};
inline void PrintTo(const FormatCase& c, std::ostream* os) { *os << c.name << " [" << c.fmt << "]"; }

}  // namespace orv
