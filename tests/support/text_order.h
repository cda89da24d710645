// Whether words stand in a document's text, and in a given order.
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

// How many times `what` stands in `text`, overlaps counted.
inline size_t Occurrences(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1)) ++n;
  return n;
}

// Success when every one of `parts` is somewhere in `text`; the failure
// names each one missing, with the text.
inline ::testing::AssertionResult HasAll(const std::string& text,
                                         const std::vector<std::string>& parts) {
  std::string missing;
  for (const std::string& part : parts)
    if (text.find(part) == std::string::npos) missing += "\"" + part + "\"\n";
  if (missing.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "missing:\n" << missing << "in:\n" << text;
}

// Success when none of `parts` is in `text`; the failure names those found.
inline ::testing::AssertionResult HasNone(const std::string& text,
                                          const std::vector<std::string>& parts) {
  std::string found;
  for (const std::string& part : parts)
    if (text.find(part) != std::string::npos) found += "\"" + part + "\"\n";
  if (found.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "should not be there:\n" << found << "in:\n" << text;
}

}  // namespace orv::testing
