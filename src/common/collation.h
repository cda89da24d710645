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
  char32_t accent;   // its level-2 character, above every ASCII letter
};

// The letters with a capital or an accent, in code point order.
std::span<const Letter> Letters();

// Characters left out of levels 1 and 2 and compared at level 3, and the
// characters that stand for them there, above any a text holds, so that
// the plain spelling comes first.
inline constexpr std::u32string_view kIgnorable = U"'-\u2019";
inline constexpr std::u32string_view kIgnorableMarks = U"\U0010FFF0\U0010FFF1\U0010FFF2";

// Separates the levels in the key.
inline constexpr char kLevelSeparator = '\x01';

// The sort key of UTF-8 text: keys compare bytewise (memcmp, or COLLATE "C"
// on PostgreSQL) in the dictionary order above. A byte that is not part of
// a valid UTF-8 sequence stands for the code point of its value.
//
// The key is the three levels, each a string, separated by
// kLevelSeparator; the text is first folded (capitals to small letters,
// trailing blanks dropped):
//   level 1  each letter of the table its base, the ignorables left out,
//            any other character itself;
//   level 2  each letter of the table its accent character (once per base
//            letter), the ignorables left out, any other character itself:
//            where level 1 ties, the same position holds the same base, so
//            a plain letter (itself) comes before an accented one;
//   level 3  the folded text with each ignorable its mark: where the levels
//            before tie, only the ignorables differ.
// Each level is one character-for-character mapping of the folded text,
// which the server's translate() and replace() compute as well.
std::string SortKey(std::string_view text);

// Appends code point `c` to `out` in UTF-8.
void AppendUtf8(char32_t c, std::string& out);

// Three-way comparison in the dictionary order: <0, 0, >0. Plain ASCII
// text is compared in place; anything else through SortKey.
int Compare(std::string_view a, std::string_view b);

}  // namespace orv::collation
