#include "common/formatted_texts.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv {
namespace {

// Keys asked for in the order a listing might ask: runs of one key, keys
// coming back after others, and 0, which formats to nothing.
TEST(FormattedTexts, FormatsEachKeyOnceAndKeepsItsText) {
  std::map<int, int> calls;
  FormattedTexts<int> texts([&](const int& k) {
    ++calls[k];
    return k == 0 ? std::string() : "#" + std::to_string(k);
  });
  const std::vector<int> asked = {5, 5, 3, 0, 5, 9, 0, 3, 3, 1, 5, 0};
  std::map<int, const std::string*> first_seen;
  for (int k : asked) {
    const std::string& text = texts(k);
    EXPECT_EQ(text, k == 0 ? "" : "#" + std::to_string(k)) << "key " << k;
    // The same kept text every time, wherever the key comes back.
    auto [it, fresh] = first_seen.try_emplace(k, &text);
    if (!fresh) {
      EXPECT_EQ(it->second, &text) << "key " << k;
    }
  }
  EXPECT_EQ(calls, (std::map<int, int>{{0, 1}, {1, 1}, {3, 1}, {5, 1}, {9, 1}}));

  // A formatter that fails keeps nothing: the key is formatted again when
  // next asked for, and the keys already kept are untouched.
  bool fail = true;
  FormattedTexts<int> flaky([&](const int& k) {
    if (fail) throw std::runtime_error("no text");
    return std::to_string(k);
  });
  EXPECT_THROW(flaky(7), std::runtime_error);
  fail = false;
  EXPECT_EQ(flaky(7), "7");
}

}  // namespace
}  // namespace orv
