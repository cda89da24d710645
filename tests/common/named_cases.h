// Helpers shared by the tables of named cases in the common-layer tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "common/currency.h"

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

}  // namespace orv
