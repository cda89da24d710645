// ParseDateText: the date and time text the host language's CDate reads, as
// far as the database, the host and the reports' own formats produce it.
//
// The text is cut into numbers, words and separators; blanks only separate.
// 1. A time is a number, ':' and a number, optionally ':' and seconds and '.'
//    and a fraction of a second, or a lone number before AM/PM ("9 AM").
//    "AM", "PM", "A", "P", "a.m.", "p.m." (any case) switch to the 12-hour
//    clock: 12 AM is 0 h, 1 PM to 11 PM add 12, 13 PM and above stay as they
//    are.
// 2. The rest is the date: numbers, at most one month name (English or French,
//    full or abbreviated, any case, with or without a final '.'), and weekday
//    names, which are ignored. '/', '-', ',' separate; '.' does not (so "12.5"
//    is no date), nor does any other character.
// 3. With a month name: one number is the day of this year ("Mar 5") or a year
//    ("March 2001", day 1); two numbers are day and year, the year being the
//    one with 3 or more digits or above 31, otherwise the second
//    ("01-Mar-01").
// 4. Numbers alone: three are year-month-day when the first has 3 or more
//    digits or is above 31, otherwise month-day-year (Canadian English reads
//    numeric dates month first), falling back to day-month-year when the
//    month would be above 12. Two are month and year ("3/2001", day 1), year
//    and month ("2001/3"), or month and day of this year ("3/1", again with
//    the day-first fallback). One number alone is no date.
// 5. Two-digit years: 00 to 29 are 2000 to 2029, 30 to 99 are 1930 to 1999.
// "This year" comes from Clock::Today().
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "common/locale.h"

namespace orv {

namespace {

struct DateToken {
  enum Kind { kNumber, kWord, kSep } kind;
  std::string text;  // words in lower case; the separator character
  int value = 0;     // numbers
  int digits = 0;    // numbers: how many digits were written
};

bool IsWordByte(unsigned char c) {
  return std::isalpha(c) || c >= 0x80;
}

// Lower case for ASCII letters; accented letters are compared as written.
std::string LowerAscii(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return r;
}

bool Tokenize(std::string_view text, std::vector<DateToken>& out) {
  size_t i = 0, n = text.size();
  while (i < n) {
    auto c = static_cast<unsigned char>(text[i]);
    if (c == ' ' || c == '\t' || c == '#') {
      ++i;
    } else if (std::isdigit(c)) {
      DateToken t{DateToken::kNumber, {}, 0, 0};
      while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
        if (t.digits < 9) t.value = t.value * 10 + (text[i] - '0');
        ++t.digits;
        ++i;
      }
      if (t.digits > 9) return false;
      out.push_back(std::move(t));
    } else if (IsWordByte(c)) {
      size_t b = i;
      while (i < n && IsWordByte(static_cast<unsigned char>(text[i]))) ++i;
      std::string word = LowerAscii(text.substr(b, i - b));
      // "a.m." and "p.m." become "am" and "pm"; the dot of an abbreviation
      // ("Mar.", "janv.") belongs to the word.
      if ((word == "a" || word == "p") && i + 1 < n && text[i] == '.' &&
          std::tolower(static_cast<unsigned char>(text[i + 1])) == 'm') {
        word += 'm';
        i += 2;
        if (i < n && text[i] == '.') ++i;
      } else if (i < n && text[i] == '.') {
        ++i;
      }
      out.push_back(DateToken{DateToken::kWord, std::move(word), 0, 0});
    } else if (c == '/' || c == '-' || c == ',' || c == ':' || c == '.') {
      out.push_back(DateToken{DateToken::kSep, std::string(1, static_cast<char>(c)), 0, 0});
      ++i;
    } else {
      return false;
    }
  }
  return true;
}

// Strips an abbreviation's final '.' for comparison ("janv." -> "janv").
std::string_view NoDot(std::string_view s) {
  if (!s.empty() && s.back() == '.') s.remove_suffix(1);
  return s;
}

// Month names (value 1..12) and weekday names (value 0) of both locales, in
// lower case without an abbreviation's final '.', built once.
struct NameEntry {
  std::string name;
  int month;
};

const std::vector<NameEntry>& Names() {
  static const std::vector<NameEntry> names = [] {
    std::vector<NameEntry> v;
    for (const LocaleInfo* loc : {&EnglishCanada(), &FrenchCanada()}) {
      for (size_t m = 0; m < 12; ++m) {
        v.push_back({LowerAscii(loc->month_names[m]), static_cast<int>(m) + 1});
        v.push_back({LowerAscii(NoDot(loc->month_abbrev[m])), static_cast<int>(m) + 1});
      }
    }
    v.push_back({"sept", 9});
    for (const LocaleInfo* loc : {&EnglishCanada(), &FrenchCanada()}) {
      for (size_t d = 0; d < 7; ++d) {
        v.push_back({LowerAscii(loc->day_names[d]), 0});
        v.push_back({LowerAscii(NoDot(loc->day_abbrev[d])), 0});
      }
    }
    for (const char* w : {"tues", "thur", "thurs"}) v.push_back({w, 0});
    return v;
  }();
  return names;
}

// 1..12 for a month name, 0 for a weekday name, -1 for any other word. The
// first match wins, so "mar" is March and not the French Tuesday.
int NameValue(const std::string& w) {
  for (const NameEntry& e : Names())
    if (e.name == w) return e.month;
  return -1;
}

// 1 for AM, 2 for PM, 0 for neither.
int AmPmFromWord(const std::string& w) {
  if (w == "am" || w == "a") return 1;
  if (w == "pm" || w == "p") return 2;
  return 0;
}

int WindowYear(int year, int digits) {
  if (digits > 2) return year;
  return year < 30 ? 2000 + year : 1900 + year;
}

}  // namespace

std::optional<DateTime> ParseDateText(const std::string& text) {
  std::vector<DateToken> toks;
  toks.reserve(12);
  if (!Tokenize(text, toks) || toks.empty()) return std::nullopt;

  // 1. The time, if any, and its AM/PM.
  bool has_time = false;
  int hour = 0, minute = 0, second = 0;
  double fraction = 0;
  int ampm = 0;
  std::vector<bool> used(toks.size(), false);
  for (size_t k = 0; k < toks.size(); ++k) {
    if (toks[k].kind == DateToken::kWord && AmPmFromWord(toks[k].text) != 0) {
      if (ampm != 0) return std::nullopt;
      ampm = AmPmFromWord(toks[k].text);
      used[k] = true;
    }
  }
  for (size_t k = 0; k + 2 < toks.size() && !has_time; ++k) {
    if (toks[k].kind != DateToken::kNumber || toks[k + 1].kind != DateToken::kSep ||
        toks[k + 1].text != ":" || toks[k + 2].kind != DateToken::kNumber)
      continue;
    has_time = true;
    hour = toks[k].value;
    minute = toks[k + 2].value;
    used[k] = used[k + 1] = used[k + 2] = true;
    size_t e = k + 3;
    if (e + 1 < toks.size() && toks[e].kind == DateToken::kSep && toks[e].text == ":" &&
        toks[e + 1].kind == DateToken::kNumber) {
      second = toks[e + 1].value;
      used[e] = used[e + 1] = true;
      e += 2;
      if (e + 1 < toks.size() && toks[e].kind == DateToken::kSep && toks[e].text == "." &&
          toks[e + 1].kind == DateToken::kNumber) {
        double f = toks[e + 1].value;
        for (int d = 0; d < toks[e + 1].digits; ++d) f /= 10;
        fraction = f;
        used[e] = used[e + 1] = true;
      }
    }
  }
  if (ampm != 0 && !has_time) {
    // "9 AM": the number right before the marker is the hour.
    for (size_t k = 1; k < toks.size(); ++k) {
      if (toks[k].kind == DateToken::kWord && AmPmFromWord(toks[k].text) != 0 &&
          toks[k - 1].kind == DateToken::kNumber) {
        has_time = true;
        hour = toks[k - 1].value;
        used[k - 1] = true;
      }
    }
    if (!has_time) return std::nullopt;
  }
  if (has_time) {
    if (ampm == 1 && hour == 12) hour = 0;
    if (ampm == 2 && hour < 12) hour += 12;
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  }

  // 2. The date's numbers and month name.
  const DateToken* nums[3];
  int count = 0, month_name = 0;
  for (size_t k = 0; k < toks.size(); ++k) {
    if (used[k]) continue;
    const DateToken& t = toks[k];
    if (t.kind == DateToken::kNumber) {
      if (count == 3) return std::nullopt;
      nums[count++] = &t;
    } else if (t.kind == DateToken::kWord) {
      int value = NameValue(t.text);
      if (value > 0) {
        if (month_name != 0) return std::nullopt;
        month_name = value;
      } else if (value < 0 && t.text != "t") {
        return std::nullopt;  // "t" joins date and time in "2001-03-01T09:05"
      }
    } else if (t.text == "." || t.text == ":") {
      return std::nullopt;
    }
  }

  auto time_serial = [&] { return (hour * 3600.0 + minute * 60.0 + second + fraction) / 86400.0; };
  if (count == 0 && month_name == 0) {
    if (!has_time) return std::nullopt;
    return DateTime(time_serial());
  }

  // 3 and 4. Which number is which.
  auto big = [](const DateToken* t) { return t->digits >= 3 || t->value > 31; };
  const int this_year = Clock::Today().Year();
  int y = 0, m = 0, d = 0;
  auto set = [&](int year, int year_digits, int month, int day) {
    y = WindowYear(year, year_digits);
    m = month;
    d = day;
  };
  if (month_name != 0) {
    if (count == 1) {
      if (big(nums[0])) {
        set(nums[0]->value, nums[0]->digits, month_name, 1);
      } else {
        set(this_year, 4, month_name, nums[0]->value);
      }
    } else if (count == 2) {
      if (big(nums[0])) {
        set(nums[0]->value, nums[0]->digits, month_name, nums[1]->value);
      } else {
        set(nums[1]->value, nums[1]->digits, month_name, nums[0]->value);
      }
    } else {
      return std::nullopt;
    }
  } else if (count == 2) {
    const DateToken *a = nums[0], *b = nums[1];
    if (big(b)) {
      set(b->value, b->digits, a->value, 1);
    } else if (big(a)) {
      set(a->value, a->digits, b->value, 1);
    } else if (a->value > 12 && b->value <= 12) {
      set(this_year, 4, b->value, a->value);
    } else {
      set(this_year, 4, a->value, b->value);
    }
  } else if (count == 3) {
    const DateToken *a = nums[0], *b = nums[1], *c = nums[2];
    if (big(a)) {
      set(a->value, a->digits, b->value, c->value);
    } else if (a->value > 12 && b->value <= 12) {
      set(c->value, c->digits, b->value, a->value);
    } else {
      set(c->value, c->digits, a->value, b->value);
    }
  } else {
    return std::nullopt;
  }
  if (!IsValidDate(y, m, d)) return std::nullopt;
  DateTime date = DateTime::FromParts(y, m, d);
  if (!has_time) return date;
  // Dates before the base day keep the time as a positive fraction.
  double serial = date.serial();
  return DateTime(serial < 0 ? serial - time_serial() : serial + time_serial());
}

}  // namespace orv
