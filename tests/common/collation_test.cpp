// The dictionary order of text on its own: pairs a front desk would order by
// eye, equality as the server keeps it, and the quick path for plain ASCII
// agreeing with the full key. The names a front desk files every day (the
// plain letter before the accented one, hyphens, apostrophes, ligatures,
// cedillas) are ordered through each engine in dictionary_order_test.cpp;
// the pairs here are the rest.
#include "common/collation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orv::collation {
namespace {

int Sign(int v) {
  return v < 0 ? -1 : (v > 0 ? 1 : 0);
}

TEST(Collation, PairsInDictionaryOrder) {
  struct Case {
    const char* name;
    const char* a;
    const char* b;
    int order;  // sign of Compare(a, b)
  } cases[] = {
      {"capital accented letter folds", "ÉTIENNE", "étienne", 0},
      {"case ignored", "macdonald", "MacDonald", 0},
      {"trailing blanks ignored", "Côté   ", "CÔTÉ", 0},
      {"leading blank counts", " Côté", "Côté", -1},
      {"acute before grave", "é", "è", -1},
      {"grave before circumflex", "è", "ê", -1},
      {"circumflex before diaeresis", "ê", "ë", -1},
      {"first accent decides", "coté", "côte", -1},
      {"hyphen after the plain spelling", "SaintPierre", "Saint-Pierre", -1},
      {"typographic apostrophe like the plain one", "O’Brien", "O'Brien", 1},
      {"hyphen is not equal to nothing", "co-op", "coop", 1},
      {"sharp s as ss", "Straße", "Strasser", -1},
      {"digits before letters", "4th", "Abbott", -1},
      {"empty first", "", "A", -1},
      {"blank equals empty", "   ", "", 0},
      {"letters beyond the table by code point", "Zoë", "Ωmega", -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Sign(Compare(c.a, c.b)), c.order);
    EXPECT_EQ(Sign(Compare(c.b, c.a)), -c.order);
    EXPECT_EQ(Sign(SortKey(c.a).compare(SortKey(c.b))), c.order);
  }
}

// Compare takes a quick path when both texts are plain ASCII; it must give
// the key's answer for every pair, mixed ones included.
TEST(Collation, QuickPathAgreesWithTheKey) {
  const std::vector<std::string> texts = {
      "",       "a",     "A",     "ab",    "a b",   "a-b",  "ab ",   "Abbott", "abbot",
      "O'Neil", "ONeil", "Oneil", "Zz",    "z~",    "1",    "10",    "9",      "{",
      "@home",  "Élise", "Elise", "elise", "co-op", "coop", "Coop ", "\t",     "a\x01"};
  for (const auto& a : texts) {
    for (const auto& b : texts) {
      SCOPED_TRACE("'" + a + "' against '" + b + "'");
      EXPECT_EQ(Sign(Compare(a, b)), Sign(SortKey(a).compare(SortKey(b))));
    }
  }
}

TEST(Collation, BrokenUtf8StandsForItselfWithoutCrashing) {
  const std::string cut = "Cot\xC3";      // a sequence cut short
  const std::string stray = "Cot\xA9x";   // a continuation byte alone
  const std::string bad = "Cot\xE9\x41";  // a lead byte without its continuation
  for (const std::string& s : {cut, stray, bad}) {
    EXPECT_EQ(Compare(s, s), 0);
    EXPECT_GT(Compare(s, "Cot"), 0);
    EXPECT_LT(Compare(s, "Cou"), 0);
  }
}

}  // namespace
}  // namespace orv::collation
