#include "platform/sql/date_text.h"

#include <cctype>
#include <vector>

namespace orv::sql {

namespace {

int MonthOfName(std::string_view word) {
  static const char* const kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                        "jul", "aug", "sep", "oct", "nov", "dec"};
  if (word.size() < 3) return 0;
  std::string w;
  for (char c : word) w += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (int i = 0; i < 12; ++i) {
    if (w.compare(0, 3, kMonths[i]) == 0) {
      // Accept the abbreviation and the full English name only.
      static const char* const kFull[] = {"january", "february", "march",     "april",   "may",      "june",
                                          "july",    "august",   "september", "october", "november", "december"};
      if (w.size() == 3 || w == kFull[i] || (i == 8 && w == "sept")) return i + 1;
    }
  }
  return 0;
}

struct Piece {
  enum Kind { Number, Word } kind;
  std::string text;
};

int ExpandYear(const std::string& digits) {
  int y = std::stoi(digits);
  if (digits.size() <= 2) y += y < 50 ? 2000 : 1900;
  return y;
}

// Reads "hh:mm[:ss[.fff]] [AM|PM]" from the rest of the text.
bool ReadTime(std::string_view rest, int& h, int& n, int& s) {
  size_t i = 0;
  auto skip = [&] {
    while (i < rest.size() && std::isspace(static_cast<unsigned char>(rest[i]))) ++i;
  };
  auto number = [&](int& out, size_t max_digits) {
    skip();
    size_t start = i;
    while (i < rest.size() && std::isdigit(static_cast<unsigned char>(rest[i])) && i - start < max_digits) ++i;
    if (i == start) return false;
    out = std::stoi(std::string(rest.substr(start, i - start)));
    skip();
    return true;
  };
  skip();
  if (i == rest.size()) return true;
  if (!number(h, 2)) return false;
  if (i < rest.size() && rest[i] == ':') {
    ++i;
    if (!number(n, 2)) return false;
    if (i < rest.size() && rest[i] == ':') {
      ++i;
      if (!number(s, 2)) return false;
      if (i < rest.size() && (rest[i] == '.' || rest[i] == ':')) {
        ++i;
        int ms = 0;
        if (!number(ms, 7)) return false;
      }
    }
  } else {
    // "10 AM" is a time too; a bare number is not.
    if (i == rest.size()) return false;
  }
  std::string tail;
  for (; i < rest.size(); ++i) {
    if (!std::isspace(static_cast<unsigned char>(rest[i])))
      tail += static_cast<char>(std::toupper(static_cast<unsigned char>(rest[i])));
  }
  if (tail == "PM") {
    if (h < 1 || h > 12) return false;
    if (h != 12) h += 12;
  } else if (tail == "AM") {
    if (h < 1 || h > 12) return false;
    if (h == 12) h = 0;
  } else if (!tail.empty()) {
    return false;
  }
  return h < 24 && n < 60 && s < 60;
}

// The digits of `text` from `from` to `to` as a number; -1 when any is no
// digit.
int Digits(std::string_view text, size_t from, size_t to) {
  int v = 0;
  for (size_t i = from; i < to; ++i) {
    if (text[i] < '0' || text[i] > '9') return -1;
    v = v * 10 + (text[i] - '0');
  }
  return v;
}

}  // namespace

std::optional<DateTime> ReadServerDate(std::string_view text) {
  // The form reports write nearly every date in, "yyyy-mm-dd" with or
  // without " hh:mm:ss", is read directly; it reads as the general reading
  // below reads it. Every quoted literal a statement compares is tried as
  // a date before the statement is prepared.
  if ((text.size() == 10 || (text.size() == 19 && text[10] == ' ' && text[13] == ':' &&
                             text[16] == ':')) &&
      text[4] == '-' && text[7] == '-') {
    const int y = Digits(text, 0, 4), m = Digits(text, 5, 7), d = Digits(text, 8, 10);
    const bool timed = text.size() == 19;
    if (y >= 0 && m >= 0 && d >= 0 &&
        (!timed || (Digits(text, 11, 13) >= 0 && Digits(text, 14, 16) >= 0 && Digits(text, 17, 19) >= 0))) {
      if (!IsValidDate(y, m, d) || y < 1753) return std::nullopt;
      int h = 0, n = 0, sec = 0;
      if (timed && !ReadTime(text.substr(11), h, n, sec)) return std::nullopt;
      return DateTime::FromParts(y, m, d, h, n, sec);
    }
  }
  // Empty text (or blanks) is the server's day zero, 1900-01-01.
  if (text.find_first_not_of(" \t") == std::string_view::npos) return DateTime::FromParts(1900, 1, 1);
  // Split off the time: it starts at the first ':' less the hour digits, or
  // at a trailing AM/PM.
  size_t colon = text.find(':');
  std::string_view date_part = text, time_part;
  if (colon != std::string_view::npos) {
    size_t start = colon;
    while (start > 0 && std::isdigit(static_cast<unsigned char>(text[start - 1]))) --start;
    // ISO 8601 puts a 'T' between date and time.
    size_t cut = start;
    if (cut > 0 && (text[cut - 1] == 'T' || text[cut - 1] == 't')) --cut;
    date_part = text.substr(0, cut);
    time_part = text.substr(start);
  }
  // Pieces of the date: digit runs and words; '-', '/', '.', ',' and blanks separate.
  std::vector<Piece> pieces;
  std::vector<char> seps;
  for (size_t i = 0; i < date_part.size();) {
    unsigned char c = date_part[i];
    if (std::isdigit(c)) {
      size_t start = i;
      while (i < date_part.size() && std::isdigit(static_cast<unsigned char>(date_part[i]))) ++i;
      pieces.push_back({Piece::Number, std::string(date_part.substr(start, i - start))});
    } else if (std::isalpha(c)) {
      size_t start = i;
      while (i < date_part.size() && std::isalpha(static_cast<unsigned char>(date_part[i]))) ++i;
      pieces.push_back({Piece::Word, std::string(date_part.substr(start, i - start))});
    } else if (c == '-' || c == '/' || c == '.' || c == ',' || std::isspace(c)) {
      if (!std::isspace(c)) seps.push_back(static_cast<char>(c));
      ++i;
    } else {
      return std::nullopt;
    }
  }
  for (const Piece& p : pieces) {
    // Longer digit runs are no part of a date (and would overflow).
    if (p.kind == Piece::Number && p.text.size() > 8) return std::nullopt;
  }
  int y = 0, m = 0, d = 0;
  bool ok = false;
  auto num = [](const Piece& p) { return p.kind == Piece::Number; };
  if (pieces.size() == 1 && num(pieces[0]) && pieces[0].text.size() == 8) {
    // yyyymmdd
    y = std::stoi(pieces[0].text.substr(0, 4));
    m = std::stoi(pieces[0].text.substr(4, 2));
    d = std::stoi(pieces[0].text.substr(6, 2));
    ok = true;
  } else if (pieces.size() == 3) {
    const Piece &a = pieces[0], &b = pieces[1], &c = pieces[2];
    if (num(a) && num(b) && num(c)) {
      if (a.text.size() == 4) {  // yyyy-mm-dd, yyyy/mm/dd
        y = std::stoi(a.text), m = std::stoi(b.text), d = std::stoi(c.text);
        ok = b.text.size() <= 2 && c.text.size() <= 2;
      } else if (a.text.size() <= 2 && b.text.size() <= 2 && (c.text.size() == 4 || c.text.size() == 2)) {
        m = std::stoi(a.text), d = std::stoi(b.text), y = ExpandYear(c.text);  // mdy
        ok = true;
      }
    } else if (!num(a) && num(b) && num(c)) {  // Mon d yyyy, Mon/d/yyyy
      m = MonthOfName(a.text);
      ok = m > 0 && b.text.size() <= 2 && (c.text.size() == 4 || c.text.size() == 2);
      if (ok) d = std::stoi(b.text), y = ExpandYear(c.text);
    } else if (num(a) && !num(b) && num(c)) {  // d Mon yyyy
      m = MonthOfName(b.text);
      ok = m > 0 && a.text.size() <= 2 && (c.text.size() == 4 || c.text.size() == 2);
      if (ok) d = std::stoi(a.text), y = ExpandYear(c.text);
    }
  } else if (pieces.empty() && !time_part.empty()) {
    // A time alone is that time on 1900-01-01.
    y = 1900, m = 1, d = 1;
    ok = true;
  }
  if (!ok || !IsValidDate(y, m, d) || y < 1753 || y > 9999) return std::nullopt;
  int h = 0, n = 0, s = 0;
  if (!ReadTime(time_part, h, n, s)) return std::nullopt;
  return DateTime::FromParts(y, m, d, h, n, s);
}

std::string NormaliseDateText(std::string_view text) {
  std::optional<DateTime> d = ReadServerDate(text);
  return d ? d->ToIso() : std::string();
}

}  // namespace orv::sql
