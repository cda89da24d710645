#include "common/format_parse.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <unordered_map>

namespace orv::format_detail {

namespace {

char Lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Splits at ';' outside quotes and escapes.
std::vector<std::string_view> SplitSections(std::string_view fmt) {
  std::vector<std::string_view> out;
  size_t start = 0;
  bool quoted = false;
  for (size_t i = 0; i < fmt.size(); ++i) {
    char c = fmt[i];
    if (quoted) {
      if (c == '"') quoted = false;
    } else if (c == '"') {
      quoted = true;
    } else if (c == '\\') {
      ++i;
    } else if (c == ';') {
      out.push_back(fmt.substr(start, i - start));
      start = i + 1;
    }
  }
  out.push_back(fmt.substr(start));
  return out;
}

// Case-insensitive prefix test at position i.
bool StartsWithNoCase(std::string_view s, size_t i, std::string_view word) {
  if (s.size() - i < word.size()) return false;
  for (size_t k = 0; k < word.size(); ++k)
    if (Lower(s[i + k]) != word[k]) return false;
  return true;
}

// The length of an AM/PM marker at i ("am/pm", "a/p", "ampm"), 0 when none.
size_t AmPmLength(std::string_view s, size_t i) {
  if (StartsWithNoCase(s, i, "am/pm")) return 5;
  if (StartsWithNoCase(s, i, "ampm")) return 4;
  if (StartsWithNoCase(s, i, "a/p")) return 3;
  return 0;
}

bool IsDateLetter(char lc) {
  switch (lc) {
    case 'd':
    case 'm':
    case 'y':
    case 'h':
    case 'n':
    case 's':
    case 'w':
    case 'q':
    case 'c':
      return true;
    default:
      return false;
  }
}

// Decides what a section formats by the tokens it holds outside literals:
// '@' or '&' make it text, a date or time token a date, anything else a
// number. '<', '>' and '!' alone also make it text.
SectionKind Classify(std::string_view s) {
  bool text = false, text_case = false, digits = false, date = false;
  for (size_t i = 0; i < s.size(); ++i) {
    char c = s[i];
    if (c == '"') {
      size_t close = s.find('"', i + 1);
      i = close == std::string_view::npos ? s.size() : close;
      continue;
    }
    if (c == '\\') {
      ++i;
      continue;
    }
    char lc = Lower(c);
    if (c == '@' || c == '&') text = true;
    if (c == '<' || c == '>' || c == '!') text_case = true;
    if (c == '0' || c == '#') digits = true;
    if ((lc == 'e') && i + 1 < s.size() && (s[i + 1] == '+' || s[i + 1] == '-')) {
      ++i;
      continue;
    }
    if (IsDateLetter(lc) || StartsWithNoCase(s, i, "ttttt") || AmPmLength(s, i) > 0) date = true;
  }
  if (text) return SectionKind::kText;
  if (date) return SectionKind::kDate;
  if (text_case && !digits) return SectionKind::kText;
  return SectionKind::kNumber;
}

void AddLiteral(Section& sec, std::string_view text) {
  if (text.empty()) return;
  if (!sec.tokens.empty() && sec.tokens.back().kind == Tok::kLiteral) {
    sec.tokens.back().text.append(text);
  } else {
    sec.tokens.push_back(Token{Tok::kLiteral, false, std::string(text)});
  }
}

void Add(Section& sec, Tok kind) {
  sec.tokens.push_back(Token{kind, false, {}});
}

// Reads a quoted literal or an escape at i; returns true and advances i past
// it when there is one.
bool TakeLiteral(std::string_view s, size_t& i, Section& sec) {
  if (s[i] == '"') {
    size_t close = s.find('"', i + 1);
    if (close == std::string_view::npos) close = s.size();
    AddLiteral(sec, s.substr(i + 1, close - i - 1));
    i = close + 1;
    return true;
  }
  if (s[i] == '\\') {
    if (i + 1 < s.size()) AddLiteral(sec, s.substr(i + 1, 1));
    i += 2;
    return true;
  }
  return false;
}

size_t RunLength(std::string_view s, size_t i, char lc) {
  size_t n = 0;
  while (i + n < s.size() && Lower(s[i + n]) == lc) ++n;
  return n;
}

bool IsHour(Tok t) {
  return t == Tok::kHour || t == Tok::kHour2;
}
bool IsSecond(Tok t) {
  return t == Tok::kSecond || t == Tok::kSecond2;
}

void ParseDate(std::string_view s, Section& sec) {
  size_t i = 0;
  while (i < s.size()) {
    if (TakeLiteral(s, i, sec)) continue;
    char c = s[i];
    char lc = Lower(c);
    size_t run = RunLength(s, i, lc);
    switch (lc) {
      case 'd': {
        static constexpr Tok kByCount[] = {Tok::kDay,     Tok::kDay2,      Tok::kDayAbbrev,
                                           Tok::kDayName, Tok::kShortDate, Tok::kLongDate};
        size_t n = std::clamp<size_t>(run, 1, 6);
        Add(sec, kByCount[n - 1]);
        i += n;
        continue;
      }
      case 'm': {
        size_t n = std::clamp<size_t>(run, 1, 4);
        static constexpr Tok kByCount[] = {Tok::kMonth, Tok::kMonth2, Tok::kMonthAbbrev,
                                           Tok::kMonthName};
        Add(sec, kByCount[n - 1]);
        i += n;
        continue;
      }
      case 'y':
        if (run >= 4) {
          Add(sec, Tok::kYear4);
          i += 4;
        } else if (run >= 2) {
          Add(sec, Tok::kYear2);
          i += 2;
        } else {
          Add(sec, Tok::kDayOfYear);
          i += 1;
        }
        continue;
      case 'h':
      case 'n':
      case 's':
      case 'w': {
        bool two = run >= 2;
        Tok t = lc == 'h'   ? (two ? Tok::kHour2 : Tok::kHour)
                : lc == 'n' ? (two ? Tok::kMinute2 : Tok::kMinute)
                : lc == 's' ? (two ? Tok::kSecond2 : Tok::kSecond)
                            : (two ? Tok::kWeekOfYear : Tok::kWeekday);
        Add(sec, t);
        i += two ? 2 : 1;
        continue;
      }
      case 'q':
        Add(sec, Tok::kQuarter);
        ++i;
        continue;
      case 'c':
        Add(sec, Tok::kGeneralDate);
        ++i;
        continue;
      case 't':
        if (run >= 5) {
          Add(sec, Tok::kLongTime);
          i += 5;
          continue;
        }
        break;
      case 'a': {
        size_t len = AmPmLength(s, i);
        if (len == 4) {
          Add(sec, Tok::kAmPmLocale);
        } else if (len == 5) {
          Add(sec, c == 'A' ? Tok::kAmPmUpper : Tok::kAmPmLower);
        } else if (len == 3) {
          Add(sec, c == 'A' ? Tok::kAPUpper : Tok::kAPLower);
        }
        if (len > 0) {
          sec.twelve_hour = true;
          i += len;
          continue;
        }
        break;
      }
      default:
        break;
    }
    AddLiteral(sec, s.substr(i, 1));
    ++i;
  }
  // "m" and "mm" are minutes right after an hour token or right before a
  // seconds token, literals between them not counting.
  std::vector<Token>& t = sec.tokens;
  for (size_t k = 0; k < t.size(); ++k) {
    if (t[k].kind != Tok::kMonth && t[k].kind != Tok::kMonth2) continue;
    bool minutes = false;
    for (size_t p = k; p-- > 0;) {
      if (t[p].kind == Tok::kLiteral) continue;
      minutes = IsHour(t[p].kind);
      break;
    }
    for (size_t q = k + 1; !minutes && q < t.size(); ++q) {
      if (t[q].kind == Tok::kLiteral) continue;
      minutes = IsSecond(t[q].kind);
      break;
    }
    if (minutes) t[k].kind = t[k].kind == Tok::kMonth ? Tok::kMinute : Tok::kMinute2;
  }
}

void ParseNumber(std::string_view s, Section& sec) {
  enum Zone { kInt, kFrac, kExp } zone = kInt;
  size_t i = 0;
  while (i < s.size()) {
    if (TakeLiteral(s, i, sec)) continue;
    char c = s[i];
    if (c == '0' || c == '#') {
      if (zone == kExp) {
        Add(sec, c == '0' ? Tok::kExpZero : Tok::kExpHash);
        if (c == '0') ++sec.exp_min_digits;
      } else {
        Add(sec, c == '0' ? Tok::kDigitZero : Tok::kDigitHash);
        sec.tokens.back().in_fraction = zone == kFrac;
        ++(zone == kFrac ? sec.frac_places : sec.int_places);
      }
    } else if (c == '.' && zone == kInt) {
      Add(sec, Tok::kDecimal);
      zone = kFrac;
    } else if (c == ',' && zone == kInt) {
      Add(sec, Tok::kComma);
    } else if (c == '%') {
      Add(sec, Tok::kPercent);
      sec.shift += 2;
    } else if ((c == 'E' || c == 'e') && zone != kExp && i + 1 < s.size() &&
               (s[i + 1] == '+' || s[i + 1] == '-')) {
      sec.tokens.push_back(Token{Tok::kExponent, false, std::string(s.substr(i, 2))});
      sec.scientific = true;
      zone = kExp;
      ++i;
    } else {
      AddLiteral(sec, s.substr(i, 1));
    }
    ++i;
  }
}

// Counts the integer placeholders from the first '0' and resolves the commas
// of the integer part: between digit placeholders they group by thousands,
// after the last one each divides by 1000, before the first one they print.
void FinishNumber(Section& sec) {
  std::vector<Token>& t = sec.tokens;
  auto is_int_digit = [](const Token& k) {
    return (k.kind == Tok::kDigitZero || k.kind == Tok::kDigitHash) && !k.in_fraction;
  };
  size_t end_int = t.size();  // first token past the integer part
  for (size_t k = 0; k < t.size(); ++k) {
    if (t[k].kind == Tok::kDecimal || t[k].kind == Tok::kExponent) {
      end_int = k;
      break;
    }
  }
  bool seen_zero = false;
  for (size_t k = 0; k < end_int; ++k) {
    if (!is_int_digit(t[k])) continue;
    seen_zero = seen_zero || t[k].kind == Tok::kDigitZero;
    if (seen_zero) ++sec.min_int_digits;
  }
  std::vector<Token> out;
  out.reserve(t.size());
  for (size_t k = 0; k < t.size(); ++k) {
    if (t[k].kind != Tok::kComma) {
      if (t[k].kind == Tok::kLiteral && !out.empty() && out.back().kind == Tok::kLiteral) {
        out.back().text += t[k].text;
      } else {
        out.push_back(std::move(t[k]));
      }
      continue;
    }
    bool before = false, after = false;
    for (size_t p = 0; p < k; ++p) before = before || is_int_digit(t[p]);
    for (size_t q = k + 1; q < end_int; ++q) after = after || is_int_digit(t[q]);
    if (before && after) {
      sec.grouping = true;
    } else if (before) {
      sec.shift -= 3;
    } else if (!out.empty() && out.back().kind == Tok::kLiteral) {
      out.back().text += ',';
    } else {
      out.push_back(Token{Tok::kLiteral, false, ","});
    }
  }
  t = std::move(out);
}

void ParseText(std::string_view s, Section& sec) {
  size_t i = 0;
  while (i < s.size()) {
    if (TakeLiteral(s, i, sec)) continue;
    char c = s[i];
    switch (c) {
      case '@':
        Add(sec, Tok::kTextAt);
        ++sec.text_places;
        break;
      case '&':
        Add(sec, Tok::kTextAmp);
        ++sec.text_places;
        break;
      case '<':
        sec.to_lower = true;
        sec.to_upper = false;
        break;
      case '>':
        sec.to_upper = true;
        sec.to_lower = false;
        break;
      case '!':
        sec.left_to_right = true;
        break;
      default:
        AddLiteral(sec, s.substr(i, 1));
    }
    ++i;
  }
}

}  // namespace

ParsedFormat ParseFormat(std::string_view fmt) {
  ParsedFormat pf;
  std::vector<std::string_view> parts = SplitSections(fmt);
  if (parts.size() > 4) parts.resize(4);
  for (std::string_view part : parts) {
    Section sec;
    sec.empty = part.empty();
    sec.kind = Classify(part);
    switch (sec.kind) {
      case SectionKind::kDate:
        ParseDate(part, sec);
        break;
      case SectionKind::kNumber:
        ParseNumber(part, sec);
        FinishNumber(sec);
        break;
      case SectionKind::kText:
        ParseText(part, sec);
        break;
    }
    pf.sections.push_back(std::move(sec));
  }
  return pf;
}

namespace {

struct TextHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};

// The reports use well under a hundred distinct format strings; the bound only
// keeps a host that builds format strings on the fly from growing the cache.
constexpr size_t kCacheLimit = 512;

}  // namespace

const ParsedFormat& CachedFormat(std::string_view fmt, ParsedFormat& scratch) {
  thread_local std::unordered_map<std::string, std::unique_ptr<ParsedFormat>, TextHash,
                                  std::equal_to<>>
      cache;
  auto it = cache.find(fmt);
  if (it != cache.end()) return *it->second;
  if (cache.size() >= kCacheLimit) {
    scratch = ParseFormat(fmt);
    return scratch;
  }
  auto parsed = std::make_unique<ParsedFormat>(ParseFormat(fmt));
  const ParsedFormat& ref = *parsed;
  cache.emplace(std::string(fmt), std::move(parsed));
  return ref;
}

}  // namespace orv::format_detail
