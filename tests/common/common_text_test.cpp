#include <gtest/gtest.h>

#include "common/common_functions.h"

namespace orv {
namespace {

class CommonText : public ::testing::Test {
 protected:
  clsCommonFunctions cf;
};

TEST_F(CommonText, WrapTextBreaksAtTheLastBlankThatFits) {
  struct Case {
    const char* name;
    Variant text;
    int width;
    const char* wrapped;
  } cases[] = {
      {"Null", Variant::Null(), 10, ""},
      {"blank", Variant("   "), 10, ""},
      {"short text stays", Variant("a b"), 10, "a b"},
      {"breaks at the last blank within the width", Variant("one two three four"), 9, "one two\r\nthree\r\nfour"},
      {"a blank just past the width still fits the line", Variant("abcd efgh"), 4, "abcd\r\nefgh"},
      {"line breaks become blanks", Variant("one\r\ntwo\nthree"), 8, "one two\r\nthree"},
      {"no blank in reach leaves the rest whole", Variant("abcdefghij klm"), 5, "abcdefghij klm"},
      {"a trailing break leaves no empty line", Variant("abc \r\n"), 3, "abc"},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.WrapText(c.text, c.width), c.wrapped) << c.name;
}

TEST_F(CommonText, LinesAndDigits) {
  const std::string text = "first\r\nsecond\r\nlast";
  EXPECT_EQ(cf.ReturnLine(text, 1), "first");
  EXPECT_EQ(cf.ReturnLine(text, 3), "last");
  EXPECT_EQ(cf.ReturnLine(text, 4), "");
  EXPECT_EQ(cf.ReturnLine(text, 0), "");

  struct Case {
    const char* text;
    bool words;
    const char* digits;
  } cases[] = {
      {"(613) 555-0100 x12", false, "613555010012"},
      {"tomorrow", true, "2"},
      {"tomorrow", false, ""},
      {"one two three", true, "123"},
      {"too", true, "2"},
      {"four for ate nine", true, "4489"},
      {"twelve thirteen", true, "1213"},
      {"ONE", true, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.ReturnNumberOnly(c.text, c.words), c.digits) << c.text;

  EXPECT_EQ(cf.KeepNumbers(Variant("$1,234.50")), "1234.50");
  EXPECT_EQ(cf.KeepNumbers(Variant::Null()), "");
}

TEST_F(CommonText, CharacterFilters) {
  EXPECT_EQ(cf.StripNonAlphaNum("   Smith", false), "") << "three leading blanks";
  EXPECT_EQ(cf.StripNonAlphaNum("  O'Brien-Côté (Jr.), 3", false), "OBrienCt (Jr), 3");
  EXPECT_EQ(cf.StripNonAlphaNum("K1A 0B1", true), "101");
  EXPECT_TRUE(cf.ValidateText("  12.50 ", "0123456789."));
  EXPECT_FALSE(cf.ValidateText("12,50", "0123456789."));
  EXPECT_TRUE(cf.ValidateText("", "x"));
}

TEST_F(CommonText, PadStringCutsAndFillsByItsSide) {
  struct Case {
    const char* name;
    Variant value;
    int side, length;
    const char* fill;
    bool money;
    const char* padded;
  } cases[] = {
      {"fills on the right", Variant("AB"), 0, 5, "", false, "AB   "},
      {"side 1 fills on the left", Variant("42"), 1, 5, "0", false, "00042"},
      {"cut keeping the left", Variant("ABCDEF"), 0, 3, " ", false, "ABC"},
      {"side 1 keeps the right end", Variant("ABCDEF"), 1, 3, " ", false, "DEF"},
      {"line breaks removed", Variant("A\r\nB"), 0, 3, ".", false, "AB."},
      {"money in cents", Variant(1234.5), 1, 8, "0", true, "00123450"},
      {"a negative amount keeps its sign", Variant(-5.0), 1, 6, "0", true, "00-500"},
  };
  for (const auto& c : cases) EXPECT_EQ(CStr(cf.PadString(c.value, c.side, c.length, c.fill, c.money)), c.padded) << c.name;
  EXPECT_TRUE(cf.PadString(Variant::Null(), 0, 4, "", false).IsNull());
}

TEST_F(CommonText, ColourBytes) {
  // The colour number holds red in its lowest byte, blue in its highest.
  const auto red = cf.returnRGBColor(0x0000FF);
  EXPECT_EQ(red.red, 255);
  EXPECT_EQ(red.blue, 0);
  EXPECT_EQ(cf.returnRGBColor(0x102030).green, 0x20);
}

// Two screens' lists side by side: names in any case, keys exactly.
TEST_F(CommonText, IDListsSetAndGetById) {
  IDLists lists;
  cf.setID(lists, "Providers", Variant("Dr. Moreau"), Variant(12));
  cf.setID(lists, "PROVIDERS", Variant("Dr. Girard"), Variant(14));
  cf.setID(lists, "providers", Variant("Dr. Moreau"), Variant(15));  // reloaded
  cf.setID(lists, "Offices", Variant("Dr. Moreau"), Variant(2));
  cf.setID(lists, "Offices", Variant::Null(), Variant::Null());
  EXPECT_EQ(lists.lists.size(), 2u) << "one list per name, whatever its case";
  struct Case {
    const char* name;
    const char* list;
    Variant key;
    Variant id;
  } cases[] = {
      {"the ID last set", "Providers", Variant("Dr. Moreau"), Variant("ID = 15")},
      {"another key of the list", "pRoViDeRs", Variant("Dr. Girard"), Variant("ID = 14")},
      {"the same key in another list", "OFFICES", Variant("Dr. Moreau"), Variant("ID = 2")},
      {"a Null key and value", "Offices", Variant(""), Variant("ID = ")},
      {"keys are exact", "Providers", Variant("dr. moreau"), Variant()},
      {"no such key", "Providers", Variant("Dr. Roy"), Variant()},
      {"no such list", "Rooms", Variant("Dr. Moreau"), Variant()},
  };
  for (const auto& c : cases) EXPECT_EQ(cf.GetID(lists, c.list, c.key), c.id) << c.name;
}

}  // namespace
}  // namespace orv
