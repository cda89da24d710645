#include "common/collation.h"

#include <algorithm>
#include <array>
#include <vector>

namespace orv::collation {

namespace {

// Level-2 characters, in the order the accents sort after the plain letter
// (which stands for itself, below them all).
constexpr char32_t kAcute = 0x101, kGrave = 0x102, kCircumflex = 0x103, kDiaeresis = 0x104,
                   kTilde = 0x105, kRing = 0x106, kCedilla = 0x107, kStroke = 0x108, kCaron = 0x109,
                   kLigature = 0x10A;

// Latin-1 and the Windows Latin letters beyond it that names in a Canadian
// practice carry. ASCII capitals fold by arithmetic and are not listed.
constexpr std::array<Letter, 35> kLetters = {{
    {0xC0, 0xE0, "a", kGrave},     {0xC1, 0xE1, "a", kAcute},      {0xC2, 0xE2, "a", kCircumflex},
    {0xC3, 0xE3, "a", kTilde},     {0xC4, 0xE4, "a", kDiaeresis},  {0xC5, 0xE5, "a", kRing},
    {0xC6, 0xE6, "ae", kLigature}, {0xC7, 0xE7, "c", kCedilla},    {0xC8, 0xE8, "e", kGrave},
    {0xC9, 0xE9, "e", kAcute},     {0xCA, 0xEA, "e", kCircumflex}, {0xCB, 0xEB, "e", kDiaeresis},
    {0xCC, 0xEC, "i", kGrave},     {0xCD, 0xED, "i", kAcute},      {0xCE, 0xEE, "i", kCircumflex},
    {0xCF, 0xEF, "i", kDiaeresis}, {0xD0, 0xF0, "d", kStroke},     {0xD1, 0xF1, "n", kTilde},
    {0xD2, 0xF2, "o", kGrave},     {0xD3, 0xF3, "o", kAcute},      {0xD4, 0xF4, "o", kCircumflex},
    {0xD5, 0xF5, "o", kTilde},     {0xD6, 0xF6, "o", kDiaeresis},  {0xD8, 0xF8, "o", kStroke},
    {0xD9, 0xF9, "u", kGrave},     {0xDA, 0xFA, "u", kAcute},      {0xDB, 0xFB, "u", kCircumflex},
    {0xDC, 0xFC, "u", kDiaeresis}, {0xDD, 0xFD, "y", kAcute},      {0xDE, 0xFE, "th", kLigature},
    {0, 0xDF, "ss", kLigature},    {0x178, 0xFF, "y", kDiaeresis}, {0x152, 0x153, "oe", kLigature},
    {0x160, 0x161, "s", kCaron},   {0x17D, 0x17E, "z", kCaron},
}};

// Every code point below this is looked up in one table; the letters of
// kLetters all lie below it.
constexpr char32_t kTableEnd = 0x180;

// For each code point below kTableEnd: its entry in kLetters, or -1.
const std::array<short, kTableEnd>& LetterIndex() {
  static const std::array<short, kTableEnd> index = [] {
    std::array<short, kTableEnd> ix;
    ix.fill(-1);
    for (size_t i = 0; i < kLetters.size(); ++i) {
      if (kLetters[i].capital) ix[kLetters[i].capital] = static_cast<short>(i);
      ix[kLetters[i].small] = static_cast<short>(i);
    }
    return ix;
  }();
  return index;
}

const Letter* Find(char32_t c) {
  if (c >= kTableEnd) return nullptr;
  short i = LetterIndex()[c];
  return i < 0 ? nullptr : &kLetters[static_cast<size_t>(i)];
}

}  // namespace

void AppendUtf8(char32_t cp, std::string& out) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

namespace {

// The next code point of `s` from `i`, advancing `i`; a stray byte stands
// for itself.
char32_t Next(std::string_view s, size_t& i) {
  auto c = static_cast<unsigned char>(s[i]);
  size_t extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
  if (extra == 0 || i + extra >= s.size()) {
    ++i;
    return c;
  }
  char32_t cp = c & (0x3F >> extra);
  for (size_t k = 1; k <= extra; ++k) {
    auto cc = static_cast<unsigned char>(s[i + k]);
    if ((cc & 0xC0) != 0x80) {
      ++i;
      return c;
    }
    cp = (cp << 6) | (cc & 0x3F);
  }
  i += extra + 1;
  return cp;
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// Printable ASCII without the level-3 characters: its key order is its
// lower-case byte order, which Compare uses without building keys.
bool IsPlainAscii(std::string_view s) {
  for (char ch : s) {
    auto c = static_cast<unsigned char>(ch);
    if (c < 0x20 || c > 0x7E || c == '-' || c == '\'') return false;
  }
  return true;
}

}  // namespace

std::span<const Letter> Letters() {
  return kLetters;
}

std::string SortKey(std::string_view text) {
  text = TrimBlanks(text);
  std::string primary, accents, marks;
  primary.reserve(text.size() + 4);
  for (size_t i = 0; i < text.size();) {
    char32_t c = Next(text, i);
    if (size_t k = kIgnorable.find(c); k != std::u32string_view::npos) {
      AppendUtf8(kIgnorableMarks[k], marks);
      continue;
    }
    if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    const Letter* l = Find(c);
    if (l) c = l->small;
    AppendUtf8(c, marks);
    if (l) {
      for (const char* b = l->base; *b; ++b) {
        primary += *b;
        AppendUtf8(l->accent, accents);
      }
      continue;
    }
    AppendUtf8(c, primary);
    AppendUtf8(c, accents);
  }
  return primary + kLevelSeparator + accents + kLevelSeparator + marks;
}

int Compare(std::string_view a, std::string_view b) {
  a = TrimBlanks(a);
  b = TrimBlanks(b);
  if (IsPlainAscii(a) && IsPlainAscii(b)) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
      int x = a[i] >= 'A' && a[i] <= 'Z' ? a[i] + 32 : a[i];
      int y = b[i] >= 'A' && b[i] <= 'Z' ? b[i] + 32 : b[i];
      if (x != y) return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
  }
  int r = SortKey(a).compare(SortKey(b));
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

}  // namespace orv::collation
