// Checks that an operation fails with an error whose description names what
// the user must see (the bad text, the place, the reason).
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "common/errors.h"

namespace orv::testing {

// The description of the error `run` throws; "(no error)" when it throws none.
template <class Error = ReportError, class Run>
std::string ErrorOf(Run&& run) {
  try {
    run();
  } catch (const Error& e) {
    return e.description();
  }
  return "(no error)";
}

// Success when `run` throws an `Error` whose description holds every one of
// `parts`; otherwise a failure naming what was missing. An error of another
// type passes through and fails the test by itself.
template <class Error = ReportError, class Run>
::testing::AssertionResult ThrowsSaying(Run&& run, std::initializer_list<std::string_view> parts) {
  try {
    run();
  } catch (const Error& e) {
    const std::string said = e.description();
    for (std::string_view part : parts)
      if (said.find(part) == std::string::npos)
        return ::testing::AssertionFailure() << "\"" << part << "\" is missing from: " << said.substr(0, 300);
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "no error";
}

}  // namespace orv::testing
