// The dictionary order of text, as the practice's server sorts it: case-
// insensitive, accent-sensitive Latin order. Every place that orders text
// (the SQLite collation, the PostgreSQL sort key, the recordset's Sort and
// Filter) uses the key defined here, so the three agree to the byte.
//
// The order, level by level, on the text without its trailing blanks:
//   1. letters by their base letter, case ignored ("É" sorts with "e"; "æ",
//      "œ", "ß" and "þ" as "ae", "oe", "ss", "th"); a hyphen or an
//      apostrophe does not count here ("O'Neil" sorts with "ONeil"); every
//      other character by its code point (blanks before digits before
//      letters);
//   2. then the accents, letter by letter: the plain letter first, then
//      acute, grave, circumflex, diaeresis, tilde, ring, cedilla, stroke,
//      caron, and a ligature last ("Elise" < "Élise" < "Emma");
//   3. then the hyphens and apostrophes, by where they stand ("coop" <
//      "co-op").
// Two texts are equal under the order exactly when they are equal ignoring
// case and trailing blanks, as equality on the server is.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orv::collation {

// A letter the order folds or gives a base to: its capital (0 when it has
// none), its small form, its base letters and its accent's weight.
struct Letter {
  char32_t capital;
  char32_t small;
  const char* base;  // one or two ASCII letters
  char accent;       // weight character of level 2; kPlain for none
};

// The letters with a capital or an accent, in code point order.
std::span<const Letter> Letters();

// Characters left out of levels 1 and 2 and compared at level 3.
inline constexpr std::u32string_view kIgnorable = U"'-\u2019";

// Characters of the key: the level separator, the weight of a plain letter
// and the level-3 mark of a character that is not ignorable.
inline constexpr char kLevelSeparator = '\x01';
inline constexpr char kPlain = '0';
inline constexpr char kCounted = '\x02';

// The sort key of UTF-8 text: keys compare bytewise (memcmp, or COLLATE "C"
// on PostgreSQL) in the dictionary order above. A byte that is not part of
// a valid UTF-8 sequence stands for the code point of its value.
std::string SortKey(std::string_view text);

// Appends code point `c` to `out` in UTF-8.
void AppendUtf8(char32_t c, std::string& out);

// Three-way comparison in the dictionary order: <0, 0, >0. Plain ASCII
// text is compared in place; anything else through SortKey.
int Compare(std::string_view a, std::string_view b);

}  // namespace orv::collation
