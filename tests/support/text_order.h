// Whether words stand in a document's text in a given order.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orv::testing {

// Success when each of `words` is found in `text` after the one before it;
// the failure names the first word not found there, with the text.
inline ::testing::AssertionResult InOrder(const std::string& text,
                                          const std::vector<std::string>& words) {
  size_t at = 0;
  for (const std::string& word : words) {
    const size_t found = text.find(word, at);
    if (found == std::string::npos)
      return ::testing::AssertionFailure() << "\"" << word << "\" not found in order in:\n" << text;
    at = found + word.size();
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orv::testing
