#include "platform/sql/sqlite_functions.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/collation.h"
#include "common/datetime.h"
#include "platform/sql/date_text.h"

namespace orv::sql {

namespace {

// ---- text under the server's collation ----

// Decodes UTF-8 into code points; a stray byte stands for itself.
std::vector<char32_t> Decode(const unsigned char* s, size_t n) {
  std::vector<char32_t> out;
  out.reserve(n);
  for (size_t i = 0; i < n;) {
    unsigned char c = s[i];
    int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (extra == 0 || i + static_cast<size_t>(extra) >= n) {
      out.push_back(c);
      ++i;
      continue;
    }
    char32_t cp = c & (0x3F >> extra);
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      unsigned char cc = s[i + k];
      if ((cc & 0xC0) != 0x80) ok = false;
      cp = (cp << 6) | (cc & 0x3F);
    }
    if (!ok) {
      out.push_back(c);
      ++i;
      continue;
    }
    out.push_back(cp);
    i += extra + 1;
  }
  return out;
}

// Case folding of the Latin letters the practice's data holds (ASCII and
// Latin-1: 'É' equals 'é'); accents stay significant, as in the server's
// accent-sensitive collation.
char32_t Fold(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + 32;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
  return c;
}

// Comparison and ORDER BY of text: the practice's dictionary order (equal
// exactly when equal ignoring case and trailing blanks).
int CollateCi(void*, int na, const void* a, int nb, const void* b) {
  return collation::Compare(std::string_view(static_cast<const char*>(a), static_cast<size_t>(na)),
                            std::string_view(static_cast<const char*>(b), static_cast<size_t>(nb)));
}

std::string TextArg(sqlite3_value* v) {
  const unsigned char* t = sqlite3_value_text(v);
  return t ? std::string(reinterpret_cast<const char*>(t), static_cast<size_t>(sqlite3_value_bytes(v))) : std::string();
}

std::vector<char32_t> CodePoints(sqlite3_value* v) {
  const unsigned char* t = sqlite3_value_text(v);
  return t ? Decode(t, static_cast<size_t>(sqlite3_value_bytes(v))) : std::vector<char32_t>();
}

std::string Utf8(const std::vector<char32_t>& cps, size_t from = 0, size_t count = std::string::npos) {
  std::string out;
  for (size_t i = from; i < cps.size() && (count == std::string::npos || i < from + count); ++i)
    collation::AppendUtf8(cps[i], out);
  return out;
}

bool AnyNull(int argc, sqlite3_value** argv) {
  for (int i = 0; i < argc; ++i) {
    if (sqlite3_value_type(argv[i]) == SQLITE_NULL) return true;
  }
  return false;
}

void ResultText(sqlite3_context* ctx, const std::string& s) {
  sqlite3_result_text(ctx, s.data(), static_cast<int>(s.size()), SQLITE_TRANSIENT);
}

// ---- dates ----

std::optional<DateTime> DateArg(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      // A number is days since 1900-01-01, the server's day zero (serial 2).
      return DateTime(2.0 + sqlite3_value_double(v));
    case SQLITE_TEXT:
      return ReadServerDate(TextArg(v));
    default:
      return std::nullopt;
  }
}

// Reads argument `i` as a date; reports the server's error when it is none.
bool ReadDate(sqlite3_context* ctx, sqlite3_value* v, DateTime& out) {
  std::optional<DateTime> d = DateArg(v);
  if (!d) {
    std::string msg = "Conversion failed when converting date and/or time from character string '" + TextArg(v) + "'";
    sqlite3_result_error(ctx, msg.c_str(), -1);
    return false;
  }
  out = *d;
  return true;
}

// The date parts as orv::DateAdd/DateDiff name them.
const char* Interval(const std::string& part) {
  if (part == "year") return "yyyy";
  if (part == "quarter") return "q";
  if (part == "month") return "m";
  if (part == "dayofyear" || part == "day" || part == "weekday") return "d";
  if (part == "week") return "ww";
  if (part == "hour") return "h";
  if (part == "minute") return "n";
  if (part == "second") return "s";
  return nullptr;
}

// GETDATE() is a constant of the statement on the server, read once however
// many rows it meets. It is registered as deterministic so that SQLite too
// reads the clock once per statement: "SignupDate >= DATEADD(d, -120,
// GETDATE())" inside a subquery run per patient then compares with one
// date instead of formatting the clock and reading it back for each row.
void FnGetDate(sqlite3_context* ctx, int, sqlite3_value**) { ResultText(ctx, Clock::Now().ToIso()); }

void FnDate(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  DateTime d;
  if (ReadDate(ctx, argv[0], d)) ResultText(ctx, d.ToIso());
}

void FnDateOnly(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  DateTime d;
  if (ReadDate(ctx, argv[0], d)) ResultText(ctx, d.DatePart().ToIso());
}

void FnAddDays(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  DateTime d;
  if (ReadDate(ctx, argv[0], d)) ResultText(ctx, DateTime(d.serial() + sqlite3_value_double(argv[1])).ToIso());
}

void FnDateAdd(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  const char* interval = Interval(TextArg(argv[0]));
  if (!interval) return sqlite3_result_error(ctx, "DATEADD: unknown date part", -1);
  DateTime d;
  if (!ReadDate(ctx, argv[2], d)) return;
  // The server truncates a fractional number to an integer.
  double n = std::trunc(sqlite3_value_double(argv[1]));
  ResultText(ctx, DateAdd(interval, n, d).ToIso());
}

void FnDateDiff(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  const char* interval = Interval(TextArg(argv[0]));
  if (!interval) return sqlite3_result_error(ctx, "DATEDIFF: unknown date part", -1);
  DateTime a, b;
  if (!ReadDate(ctx, argv[1], a) || !ReadDate(ctx, argv[2], b)) return;
  sqlite3_result_int64(ctx, DateDiff(interval, a, b));
}

int DatePartOf(const std::string& part, DateTime d) {
  if (part == "year") return d.Year();
  if (part == "quarter") return (d.Month() - 1) / 3 + 1;
  if (part == "month") return d.Month();
  if (part == "dayofyear") return d.DayOfYear();
  if (part == "day") return d.Day();
  if (part == "weekday") return d.Weekday();
  if (part == "week") {
    // Week 1 holds January 1; weeks start on Sunday.
    int jan1_weekday = DateTime::FromParts(d.Year(), 1, 1).Weekday();
    return (d.DayOfYear() + jan1_weekday - 2) / 7 + 1;
  }
  if (part == "hour") return d.Hour();
  if (part == "minute") return d.Minute();
  if (part == "second") return d.Second();
  return -1;
}

void FnDatePart(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  DateTime d;
  if (!ReadDate(ctx, argv[1], d)) return;
  sqlite3_result_int(ctx, DatePartOf(TextArg(argv[0]), d));
}

const char* const kMonthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};
const char* const kDayNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

void FnDateName(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  DateTime d;
  if (!ReadDate(ctx, argv[1], d)) return;
  std::string part = TextArg(argv[0]);
  if (part == "month") return ResultText(ctx, kMonthNames[d.Month() - 1]);
  if (part == "weekday") return ResultText(ctx, kDayNames[d.Weekday() - 1]);
  ResultText(ctx, std::to_string(DatePartOf(part, d)));
}

// ---- LIKE ----

// One pattern element matched against one character: `[abc]`, `[a-c]`,
// `[^abc]`, `_`, or a literal. `i` is advanced past the element.
bool ElementMatches(const std::vector<char32_t>& p, size_t& i, char32_t c, char32_t escape, bool has_escape) {
  char32_t fc = Fold(c);
  if (has_escape && p[i] == escape && i + 1 < p.size()) {
    i += 2;
    return Fold(p[i - 1]) == fc;
  }
  if (p[i] == '_') {
    ++i;
    return true;
  }
  if (p[i] == '[') {
    size_t close = i + 1;
    if (close < p.size() && p[close] == '^') ++close;
    if (close < p.size() && p[close] == ']') ++close;  // "[]]" holds ']'
    while (close < p.size() && p[close] != ']') ++close;
    if (close < p.size()) {
      size_t j = i + 1;
      bool negate = p[j] == '^';
      if (negate) ++j;
      bool hit = false;
      for (; j < close; ++j) {
        if (j + 2 < close && p[j + 1] == '-') {
          if (fc >= Fold(p[j]) && fc <= Fold(p[j + 2])) hit = true;
          j += 2;
        } else if (Fold(p[j]) == fc) {
          hit = true;
        }
      }
      i = close + 1;
      return hit != negate;
    }
  }
  ++i;
  return Fold(p[i - 1]) == fc;
}

bool Like(const std::vector<char32_t>& s, const std::vector<char32_t>& p, char32_t escape, bool has_escape) {
  size_t si = 0, pi = 0;
  size_t star_p = std::string::npos, star_s = 0;
  while (si < s.size()) {
    if (pi < p.size() && p[pi] == '%' && !(has_escape && pi > 0 && p[pi - 1] == escape)) {
      star_p = ++pi;
      star_s = si;
      continue;
    }
    if (pi < p.size()) {
      size_t next = pi;
      if (ElementMatches(p, next, s[si], escape, has_escape)) {
        pi = next;
        ++si;
        continue;
      }
    }
    if (star_p == std::string::npos) return false;
    pi = star_p;
    si = ++star_s;
  }
  while (pi < p.size() && p[pi] == '%') ++pi;
  return pi == p.size();
}

void FnLike(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  std::vector<char32_t> s = CodePoints(argv[0]);
  std::vector<char32_t> p = CodePoints(argv[1]);
  // Trailing blanks are not significant for varchar data in LIKE.
  while (!s.empty() && s.back() == ' ') s.pop_back();
  while (!p.empty() && p.back() == ' ') p.pop_back();
  char32_t escape = 0;
  bool has_escape = false;
  if (argc > 2) {
    std::vector<char32_t> e = CodePoints(argv[2]);
    if (e.size() != 1) return sqlite3_result_error(ctx, "The ESCAPE clause must be one character", -1);
    escape = e[0];
    has_escape = true;
  }
  sqlite3_result_int(ctx, Like(s, p, escape, has_escape) ? 1 : 0);
}

// ---- conversion to text ----

std::string Two(int n) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%02d", n);
  return buf;
}

std::string DateText(DateTime d, int style) {
  static const char* const kShort[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::string y4 = std::to_string(d.Year()), y2 = Two(d.Year() % 100);
  std::string mm = Two(d.Month()), dd = Two(d.Day());
  std::string hms = Two(d.Hour()) + ":" + Two(d.Minute()) + ":" + Two(d.Second());
  switch (style) {
    case 1: return mm + "/" + dd + "/" + y2;
    case 3: return dd + "/" + mm + "/" + y2;
    case 10: return mm + "-" + dd + "-" + y2;
    case 23: return y4 + "-" + mm + "-" + dd;
    case 101: return mm + "/" + dd + "/" + y4;
    case 103: return dd + "/" + mm + "/" + y4;
    case 106: return dd + " " + kShort[d.Month() - 1] + " " + y4;
    case 107: return std::string(kShort[d.Month() - 1]) + " " + dd + ", " + y4;
    case 108: return hms;
    case 110: return mm + "-" + dd + "-" + y4;
    case 111: return y4 + "/" + mm + "/" + dd;
    case 112: return y4 + mm + dd;
    case 120: return y4 + "-" + mm + "-" + dd + " " + hms;
    case 121: return y4 + "-" + mm + "-" + dd + " " + hms + ".000";
    default: {
      // Styles 0 and 100: "Nov 20 2026 10:00AM", the day padded to two places.
      int h = d.Hour() % 12;
      if (h == 0) h = 12;
      char day[4], hour[4];
      std::snprintf(day, sizeof day, "%2d", d.Day());
      std::snprintf(hour, sizeof hour, "%2d", h);
      return std::string(kShort[d.Month() - 1]) + " " + day + " " + y4 + " " + hour + ":" + Two(d.Minute()) +
             (d.Hour() < 12 ? "AM" : "PM");
    }
  }
}

void FnToText(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) return sqlite3_result_null(ctx);
  std::string kind = TextArg(argv[1]);
  int style = argc > 2 ? sqlite3_value_int(argv[2]) : 0;
  char buf[64];
  if (kind == "money") {
    // Money converts with two decimals, rounded.
    std::snprintf(buf, sizeof buf, "%.2f", sqlite3_value_double(argv[0]));
    return ResultText(ctx, buf);
  }
  if (kind == "float") {
    std::snprintf(buf, sizeof buf, "%.6g", sqlite3_value_double(argv[0]));
    return ResultText(ctx, buf);
  }
  if (kind == "datetime") {
    DateTime d;
    if (ReadDate(ctx, argv[0], d)) ResultText(ctx, DateText(d, style));
    return;
  }
  if (sqlite3_value_type(argv[0]) == SQLITE_FLOAT) {
    std::snprintf(buf, sizeof buf, "%.15g", sqlite3_value_double(argv[0]));
    return ResultText(ctx, buf);
  }
  ResultText(ctx, TextArg(argv[0]));
}

// ---- strict conversion of text to numbers ----

// Text as the server converts it to a number: blanks around, an optional
// sign, digits, and for non-integers a fraction and exponent. Empty text
// is 0. Anything else fails the statement, as the conversion does there.
bool ParseNumberText(const std::string& text, bool integer, double& out) {
  size_t b = text.find_first_not_of(" \t"), e = text.find_last_not_of(" \t");
  if (b == std::string::npos) {
    out = 0;
    return true;
  }
  std::string t = text.substr(b, e - b + 1);
  size_t i = (t[0] == '+' || t[0] == '-') ? 1 : 0;
  bool digits = false;
  for (size_t k = i; k < t.size(); ++k) {
    char c = t[k];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      digits = true;
    } else if (integer || !(c == '.' || c == 'e' || c == 'E' || ((c == '+' || c == '-') && k > 0 &&
                                                                  (t[k - 1] == 'e' || t[k - 1] == 'E')))) {
      return false;
    }
  }
  if (!digits) return false;
  char* end = nullptr;
  out = std::strtod(t.c_str(), &end);
  return end && *end == '\0';
}

void ConvertText(sqlite3_context* ctx, sqlite3_value* v, bool integer) {
  int type = sqlite3_value_type(v);
  if (type == SQLITE_NULL) return sqlite3_result_null(ctx);
  if (type == SQLITE_INTEGER) return sqlite3_result_int64(ctx, sqlite3_value_int64(v));
  if (type == SQLITE_FLOAT) {
    double d = sqlite3_value_double(v);
    if (integer) return sqlite3_result_int64(ctx, static_cast<long long>(std::trunc(d)));
    return sqlite3_result_double(ctx, d);
  }
  std::string text = TextArg(v);
  double d = 0;
  if (!ParseNumberText(text, integer, d)) {
    std::string msg = "Conversion failed when converting the varchar value '" + text + "' to data type " +
                      (integer ? "int" : "float");
    return sqlite3_result_error(ctx, msg.c_str(), -1);
  }
  if (integer) {
    if (std::fabs(d) > 9.2e18) return sqlite3_result_error(ctx, "Arithmetic overflow converting to int", -1);
    return sqlite3_result_int64(ctx, static_cast<long long>(d));
  }
  sqlite3_result_double(ctx, d);
}

void FnToInt(sqlite3_context* ctx, int, sqlite3_value** argv) { ConvertText(ctx, argv[0], true); }
void FnToFloat(sqlite3_context* ctx, int, sqlite3_value** argv) { ConvertText(ctx, argv[0], false); }

// ---- text functions ----

void FnRight(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  std::vector<char32_t> s = CodePoints(argv[0]);
  long long n = sqlite3_value_int64(argv[1]);
  if (n < 0) return sqlite3_result_error(ctx, "Invalid length parameter passed to the right function", -1);
  size_t keep = std::min<size_t>(static_cast<size_t>(n), s.size());
  ResultText(ctx, Utf8(s, s.size() - keep));
}

// Position of `needle` in `hay` from `from` under the collation, or npos.
size_t FindCi(const std::vector<char32_t>& hay, const std::vector<char32_t>& needle, size_t from) {
  if (needle.empty()) return std::string::npos;
  for (size_t i = from; i + needle.size() <= hay.size(); ++i) {
    size_t k = 0;
    while (k < needle.size() && Fold(hay[i + k]) == Fold(needle[k])) ++k;
    if (k == needle.size()) return i;
  }
  return std::string::npos;
}

void FnReplace(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  std::vector<char32_t> s = CodePoints(argv[0]), from = CodePoints(argv[1]), to = CodePoints(argv[2]);
  std::vector<char32_t> out;
  size_t i = 0;
  for (;;) {
    size_t at = FindCi(s, from, i);
    if (at == std::string::npos) break;
    out.insert(out.end(), s.begin() + static_cast<long>(i), s.begin() + static_cast<long>(at));
    out.insert(out.end(), to.begin(), to.end());
    i = at + from.size();
  }
  out.insert(out.end(), s.begin() + static_cast<long>(i), s.end());
  ResultText(ctx, Utf8(out));
}

void FnCharIndex(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  std::vector<char32_t> needle = CodePoints(argv[0]), hay = CodePoints(argv[1]);
  long long start = argc > 2 ? sqlite3_value_int64(argv[2]) : 1;
  if (start < 1) start = 1;
  size_t at = FindCi(hay, needle, static_cast<size_t>(start - 1));
  sqlite3_result_int64(ctx, at == std::string::npos ? 0 : static_cast<long long>(at) + 1);
}

void FnSpace(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  long long n = sqlite3_value_int64(argv[0]);
  if (n < 0) return sqlite3_result_null(ctx);
  if (n > 8000) n = 8000;
  ResultText(ctx, std::string(static_cast<size_t>(n), ' '));
}

void FnReplicate(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  long long n = sqlite3_value_int64(argv[1]);
  if (n < 0) return sqlite3_result_null(ctx);
  std::string s = TextArg(argv[0]), out;
  for (long long i = 0; i < n && out.size() < 8000; ++i) out += s;
  ResultText(ctx, out);
}

void FnStr(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  int length = argc > 1 ? sqlite3_value_int(argv[1]) : 10;
  int decimals = argc > 2 ? sqlite3_value_int(argv[2]) : 0;
  if (length < 1 || length > 8000) return sqlite3_result_null(ctx);
  decimals = std::max(0, std::min(decimals, 16));
  char buf[128];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, sqlite3_value_double(argv[0]));
  std::string s = buf;
  // Too long: fewer decimals first, then stars, as the server does.
  while (static_cast<int>(s.size()) > length && decimals > 0) {
    --decimals;
    std::snprintf(buf, sizeof buf, "%.*f", decimals, sqlite3_value_double(argv[0]));
    s = buf;
  }
  if (static_cast<int>(s.size()) > length) s = std::string(static_cast<size_t>(length), '*');
  ResultText(ctx, std::string(static_cast<size_t>(length) - s.size(), ' ') + s);
}

// ---- numbers ----

void ResultNumberLike(sqlite3_context* ctx, sqlite3_value* model, double v) {
  if (sqlite3_value_type(model) == SQLITE_INTEGER) {
    sqlite3_result_int64(ctx, static_cast<long long>(v));
  } else {
    sqlite3_result_double(ctx, v);
  }
}

void FnFloor(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  if (sqlite3_value_type(argv[0]) == SQLITE_INTEGER) return sqlite3_result_value(ctx, argv[0]);
  sqlite3_result_double(ctx, std::floor(sqlite3_value_double(argv[0])));
}

void FnCeiling(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  if (sqlite3_value_type(argv[0]) == SQLITE_INTEGER) return sqlite3_result_value(ctx, argv[0]);
  sqlite3_result_double(ctx, std::ceil(sqlite3_value_double(argv[0])));
}

// ROUND(x, n[, f]): half away from zero; n may be negative; a nonzero f
// truncates instead.
void FnRound(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  double x = sqlite3_value_double(argv[0]);
  int n = sqlite3_value_int(argv[1]);
  bool truncate = argc > 2 && sqlite3_value_int(argv[2]) != 0;
  n = std::max(-18, std::min(n, 18));
  double scale = std::pow(10.0, n);
  double scaled = x * scale;
  // Money and decimals are exact on the server; nudge the binary value so
  // that 2.675 rounds as the decimal 2.675 does.
  double nudged = scaled + (scaled >= 0 ? 1e-9 : -1e-9);
  double r = truncate ? std::trunc(scaled) : std::round(nudged);
  ResultNumberLike(ctx, argv[0], r / scale);
}

void FnPower(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  sqlite3_result_double(ctx, std::pow(sqlite3_value_double(argv[0]), sqlite3_value_double(argv[1])));
}

void FnSqrt(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  double x = sqlite3_value_double(argv[0]);
  if (x < 0) return sqlite3_result_error(ctx, "An invalid floating point operation occurred", -1);
  sqlite3_result_double(ctx, std::sqrt(x));
}

void FnSign(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (AnyNull(argc, argv)) return sqlite3_result_null(ctx);
  double x = sqlite3_value_double(argv[0]);
  ResultNumberLike(ctx, argv[0], x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0);
}

void FnIsNumeric(sqlite3_context* ctx, int, sqlite3_value** argv) {
  int type = sqlite3_value_type(argv[0]);
  if (type == SQLITE_INTEGER || type == SQLITE_FLOAT) return sqlite3_result_int(ctx, 1);
  if (type != SQLITE_TEXT) return sqlite3_result_int(ctx, 0);
  std::string s = TextArg(argv[0]);
  size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
  if (b == std::string::npos) return sqlite3_result_int(ctx, 0);
  s = s.substr(b, e - b + 1);
  if (s[0] == '$') s.erase(0, 1);
  char* end = nullptr;
  std::strtod(s.c_str(), &end);
  sqlite3_result_int(ctx, !s.empty() && end && *end == '\0' ? 1 : 0);
}

void FnIsDate(sqlite3_context* ctx, int, sqlite3_value** argv) {
  int type = sqlite3_value_type(argv[0]);
  sqlite3_result_int(ctx, type == SQLITE_TEXT && ReadServerDate(TextArg(argv[0])) ? 1 : 0);
}

struct Function {
  const char* name;
  int args;  // -1: any number
  void (*fn)(sqlite3_context*, int, sqlite3_value**);
  bool deterministic;
};

const Function kFunctions[] = {
    {"orv_getdate", 0, FnGetDate, true},  {"orv_date", 1, FnDate, true},
    {"orv_date_only", 1, FnDateOnly, true}, {"orv_adddays", 2, FnAddDays, true},
    {"orv_dateadd", 3, FnDateAdd, true},    {"orv_datediff", 3, FnDateDiff, true},
    {"orv_datepart", 2, FnDatePart, true},  {"orv_datename", 2, FnDateName, true},
    {"orv_like", 2, FnLike, true},          {"orv_like", 3, FnLike, true},
    {"orv_to_text", 3, FnToText, true},     {"orv_right", 2, FnRight, true},
    {"orv_replace", 3, FnReplace, true},    {"orv_charindex", 2, FnCharIndex, true},
    {"orv_charindex", 3, FnCharIndex, true}, {"orv_space", 1, FnSpace, true},
    {"orv_replicate", 2, FnReplicate, true}, {"orv_str", 1, FnStr, true},
    {"orv_str", 2, FnStr, true},            {"orv_str", 3, FnStr, true},
    {"orv_floor", 1, FnFloor, true},        {"orv_ceiling", 1, FnCeiling, true},
    {"orv_round", 2, FnRound, true},        {"orv_round", 3, FnRound, true},
    {"orv_power", 2, FnPower, true},        {"orv_sqrt", 1, FnSqrt, true},
    {"orv_sign", 1, FnSign, true},          {"orv_isnumeric", 1, FnIsNumeric, true},
    {"orv_isdate", 1, FnIsDate, true},      {"orv_int", 1, FnToInt, true},
    {"orv_float", 1, FnToFloat, true},
};

}  // namespace

void RegisterSqliteFunctions(sqlite3* db) {
  int rc = sqlite3_create_collation(db, "orv_ci", SQLITE_UTF8, nullptr, CollateCi);
  if (rc != SQLITE_OK) throw ReportError(kErrDatabase, "Cannot register the collation orv_ci");
  for (const Function& f : kFunctions) {
    int flags = SQLITE_UTF8 | (f.deterministic ? SQLITE_DETERMINISTIC : 0);
    rc = sqlite3_create_function(db, f.name, f.args, flags, nullptr, f.fn, nullptr, nullptr);
    if (rc != SQLITE_OK) throw ReportError(kErrDatabase, std::string("Cannot register the function ") + f.name);
  }
}

namespace {

// What the schema of one SQLite connection reads its tables with: the
// declared names of the tables and views, and one statement for the
// columns of any of them, prepared once.
class SqliteTableReader {
 public:
  explicit SqliteTableReader(sqlite3* db) : db_(db) {}
  ~SqliteTableReader() { sqlite3_finalize(columns_); }
  SqliteTableReader(const SqliteTableReader&) = delete;
  SqliteTableReader& operator=(const SqliteTableReader&) = delete;

  std::optional<TableColumns> Read(std::string_view table) {
    auto name = names_.find(Lower(table));
    if (name == names_.end()) {
      // Not there when the names were read: a table made since is found.
      ReadNames();
      name = names_.find(Lower(table));
      if (name == names_.end()) return std::nullopt;
    }
    if (!columns_ && sqlite3_prepare_v2(db_, "SELECT name, type, pk FROM pragma_table_info(?1)", -1,
                                        &columns_, nullptr) != SQLITE_OK)
      Fail("Cannot read the schema: ");
    TableColumns t;
    t.name = name->second;
    sqlite3_bind_text(columns_, 1, t.name.data(), int(t.name.size()), SQLITE_TRANSIENT);
    std::vector<std::pair<int, std::string>> keyed;  // (place in the key, column)
    int rc;
    while ((rc = sqlite3_step(columns_)) == SQLITE_ROW) {
      ColumnType c;
      c.name = reinterpret_cast<const char*>(sqlite3_column_text(columns_, 0));
      const unsigned char* declared = sqlite3_column_text(columns_, 1);
      c.declared = declared ? reinterpret_cast<const char*>(declared) : "";
      const auto& [kind, length] = KindOf(c.declared);
      c.kind = kind;
      c.length = length;
      if (int pk = sqlite3_column_int(columns_, 2); pk > 0) keyed.emplace_back(pk, c.name);
      t.columns.push_back(std::move(c));
    }
    if (rc != SQLITE_DONE) Fail("Cannot read the columns of " + t.name + ": ");
    sqlite3_reset(columns_);
    std::sort(keyed.begin(), keyed.end());
    for (auto& k : keyed) t.primary_key.push_back(std::move(k.second));
    return t;
  }

 private:
  // A practice's tables declare a handful of types over and over
  // ("varchar(50)", "int", "money"): each is read once per connection.
  const std::pair<ValueKind, int>& KindOf(const std::string& declared) {
    auto it = kinds_.find(declared);
    if (it == kinds_.end()) {
      int length = 0;
      const ValueKind kind = Schema::KindOfDeclared(declared, &length);
      it = kinds_.emplace(declared, std::make_pair(kind, length)).first;
    }
    return it->second;
  }

  static std::string Lower(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
  }

  void ReadNames() {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db_,
                           "SELECT name FROM sqlite_master WHERE type IN ('table', 'view') AND "
                           "name NOT LIKE 'sqlite_%'",
                           -1, &stmt, nullptr) != SQLITE_OK)
      Fail("Cannot read the schema: ");
    names_.clear();
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      std::string name = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
      names_.emplace(Lower(name), name);
    }
    sqlite3_finalize(stmt);
    if (rc != SQLITE_DONE) Fail("Cannot read the schema: ");
  }

  [[noreturn]] void Fail(const std::string& what) {
    std::string msg = what + sqlite3_errmsg(db_);
    if (columns_) sqlite3_reset(columns_);
    throw SchemaError(msg);
  }

  sqlite3* db_;
  sqlite3_stmt* columns_ = nullptr;
  std::map<std::string, std::string> names_;  // lower-case name -> as declared
  std::unordered_map<std::string, std::pair<ValueKind, int>> kinds_;  // declared type -> its kind
};

}  // namespace

Schema LoadSqliteSchema(sqlite3* db) {
  // Each table is read when a statement first names it, its columns in
  // their declared order. Reading every table up front (a statement per
  // table, or one over all of them) was most of what a short report spent
  // before its first query.
  auto reader = std::make_shared<SqliteTableReader>(db);
  return Schema([reader](std::string_view table) { return reader->Read(table); });
}

}  // namespace orv::sql
