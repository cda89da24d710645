#include "platform/db/statement_cache.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string_view>

#include "platform/db/db_error.h"
#include "platform/sql/date_text.h"

namespace orv::db {

namespace {

// Sentinels are whole numbers in the 32-bit range, so the translator types
// them as it types a key literal.
constexpr int64_t kFirstSentinel = 1987650001;
// At most this many literals of one statement are parameterised.
constexpr size_t kMaxParameters = 64;
// Beyond this many entries the idle ones are dropped, so that a run that
// builds many distinct statements keeps memory bounded.
constexpr size_t kMaxEntries = 2000;

bool IsNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '#' || c == '?' ||
         c == '$' || c == '@' || c == '.';
}

// A keyword that may follow a number without a blank, as a report writes
// "where PatientID = " + key + "ORDER BY ID": the lexer ends the number
// where the letters begin, so the number is a whole literal all the same.
bool KeywordAt(const std::string& s, size_t at) {
  for (std::string_view word : {"ORDER", "AND", "OR", "GROUP"}) {
    if (at + word.size() > s.size()) continue;
    bool same = true;
    for (size_t k = 0; k < word.size() && same; ++k)
      same = std::toupper(static_cast<unsigned char>(s[at + k])) == word[k];
    if (same && (at + word.size() == s.size() || !IsNameChar(s[at + word.size()]))) return true;
  }
  return false;
}

// Counts occurrences of `digits` in `text` not adjacent to other digits or
// name characters.
std::vector<size_t> FindNumber(const std::string& text, const std::string& digits) {
  std::vector<size_t> at;
  size_t p = 0;
  while ((p = text.find(digits, p)) != std::string::npos) {
    bool before_ok = p == 0 || !IsNameChar(text[p - 1]);
    size_t end = p + digits.size();
    bool after_ok = end >= text.size() || !IsNameChar(text[end]);
    if (before_ok && after_ok) at.push_back(p);
    p = end;
  }
  return at;
}

template <typename Map>
void Trim(Map& map) {
  if (map.size() < kMaxEntries) return;
  for (auto it = map.begin(); it != map.end();) {
    if (!it->second || !it->second->in_use)
      it = map.erase(it);
    else
      ++it;
  }
}

}  // namespace

const std::string& Sentinel(size_t k) {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> t;
    for (size_t i = 0; i < kMaxParameters; ++i) t.push_back(std::to_string(kFirstSentinel + static_cast<int64_t>(i)));
    return t;
  }();
  return texts[k];
}

// The sentinels of quoted literals, one of each kind per position. A date
// sentinel is a day of a year no practice holds, written as a date alone,
// so that the translator, when it reads one as a date, prints it in its
// normalised form with a time ("1787-01-02 00:00:00"): that form, not the
// text as written, shows the place was taken as a date. A number written
// as text has a text sentinel of digits, found again in its quotes.
constexpr const char* kDateSentinelYear = "1787-";
constexpr int64_t kFirstTextSentinel = 1987660001;

struct QuotedSentinel {
  std::string written;  // as it stands in the form, between quotes
  std::string printed;  // as the translator prints it, quotes included
};

const QuotedSentinel& QuotedSentinelAt(size_t k, bool date) {
  // Made once for every statement of the process, so written out by hand
  // rather than through DateAdd and ToIso: a short report would otherwise
  // spend more on these 128 texts than on translating its statements.
  // The days run from January 1 of 1787 (not a leap year) into March.
  static_assert(kMaxParameters <= 31 + 28 + 31);
  static const auto texts = [] {
    constexpr int kDaysIn[] = {31, 28, 31};
    std::vector<QuotedSentinel> dates, numbers;
    dates.reserve(kMaxParameters);
    numbers.reserve(kMaxParameters);
    int month = 1, day = 1;
    for (size_t i = 0; i < kMaxParameters; ++i) {
      std::string written = kDateSentinelYear;
      written += char('0' + month / 10);
      written += char('0' + month % 10);
      written += '-';
      written += char('0' + day / 10);
      written += char('0' + day % 10);
      dates.push_back({written, "'" + written + " 00:00:00'"});
      if (++day > kDaysIn[month - 1]) {
        day = 1;
        ++month;
      }
      const std::string n = std::to_string(kFirstTextSentinel + static_cast<int64_t>(i));
      numbers.push_back({n, "'" + n + "'"});
    }
    return std::make_pair(std::move(dates), std::move(numbers));
  }();
  return date ? texts.first[k] : texts.second[k];
}

// True when the last thing before `at`, blanks aside, ends a comparison
// operator: "=", "<", ">", "<=", ">=", "<>", "!=".
bool AfterComparison(const std::string& s, size_t at) {
  while (at > 0 && s[at - 1] == ' ') --at;
  return at > 0 && (s[at - 1] == '=' || s[at - 1] == '<' || s[at - 1] == '>');
}

// The characters ParameteriseLiterals looks at: quotes, an opening
// bracket, the first characters of comments, and digits.
constexpr std::array<bool, 256> kScanStops = [] {
  std::array<bool, 256> stops{};
  for (unsigned char c : std::string_view("'\"[-/0123456789")) stops[c] = true;
  return stops;
}();

// True when the statement already holds one of the number sentinels, which
// would then be taken for a lifted literal.
bool HoldsNumberSentinel(const std::string& s) {
  static const std::string prefix = Sentinel(0).substr(0, 6);
  if (s.find(prefix) == std::string::npos) return false;
  for (size_t k = 0; k < kMaxParameters; ++k)
    if (!FindNumber(s, Sentinel(k)).empty()) return true;
  return false;
}

StatementForm ParameteriseLiterals(const std::string& s, bool dates) {
  StatementForm f;
  // A statement that already holds a sentinel keeps that kind of literal.
  const bool numbers_ok = !HoldsNumberSentinel(s);
  static const std::string text_prefix = std::to_string(kFirstTextSentinel).substr(0, 6);
  const bool quoted_ok =
      s.find(kDateSentinelYear) == std::string::npos && s.find(text_prefix) == std::string::npos;
  // The form is copied in spans between replaced literals: this runs for
  // every statement a report opens, so it avoids per-character appends.
  size_t copied = 0;
  size_t i = 0;
  const size_t n = s.size();
  auto lift = [&](size_t from, size_t to, const std::string& replacement) {
    if (f.form.empty()) f.form.reserve(n + 16);
    f.form.append(s, copied, from - copied);
    f.form += replacement;
    copied = to;
  };
  while (i < n) {
    // Names, blanks and operators are passed over in a tight loop: the scan
    // stops only where a literal, a quoted name or a comment may begin.
    while (i < n && !kScanStops[static_cast<unsigned char>(s[i])]) ++i;
    if (i == n) break;
    const char c = s[i];
    if (c == '\'') {
      size_t end = s.find('\'', i + 1);
      if (end == std::string::npos) break;
      // A key written as text ('17') or a date ('2026-11-20', '11/20/2026
      // 5:00 PM') compared with a value. Text holding a doubled quote,
      // empty text and other text stay in the statement.
      const bool doubled = end + 1 < n && s[end + 1] == '\'';
      if (quoted_ok && !doubled && end > i + 1 && end - i <= 40 && AfterComparison(s, i) &&
          f.quoted.size() < kMaxParameters) {
        const std::string_view text = std::string_view(s).substr(i + 1, end - i - 1);
        const bool digits = text.size() <= 18 && std::all_of(text.begin(), text.end(), [](char d) {
                              return d >= '0' && d <= '9';
                            });
        std::optional<DateTime> date;
        if (!digits && dates) date = sql::ReadServerDate(text);
        if (digits || date) {
          const QuotedSentinel& sentinel = QuotedSentinelAt(f.quoted.size(), !digits);
          lift(i + 1, end, sentinel.written);
          f.quoted.push_back(digits ? Variant(std::string(text)) : Variant(*date));
          f.quoted_sentinels.push_back(sentinel.written);
          f.quoted_offsets.push_back(i);
        }
      }
      i = end + 1;
      continue;
    }
    if (c == '"' || c == '[') {
      char close = c == '[' ? ']' : c;
      size_t end = s.find(close, i + 1);
      i = end == std::string::npos ? n : end + 1;
      continue;
    }
    if (c == '-' && i + 1 < n && s[i + 1] == '-') {
      size_t end = s.find('\n', i);
      i = end == std::string::npos ? n : end;
      continue;
    }
    if (c == '/' && i + 1 < n && s[i + 1] == '*') {
      size_t end = s.find("*/", i + 2);
      i = end == std::string::npos ? n : end + 2;
      continue;
    }
    if (c >= '0' && c <= '9' && (i == 0 || !IsNameChar(s[i - 1]))) {
      size_t end = i;
      int64_t value = 0;
      while (end < n && s[end] >= '0' && s[end] <= '9') {
        if (end - i < 18) value = value * 10 + (s[end] - '0');
        ++end;
      }
      // The literal counts when it is a whole number (no '.', no name
      // character after it) of at most nine digits, and the last thing
      // before it, blanks and a minus sign aside, is "=".
      bool whole = end >= n || !IsNameChar(s[end]) || KeywordAt(s, end);
      size_t b = i;
      while (b > 0 && s[b - 1] == ' ') --b;
      if (b > 0 && s[b - 1] == '-') {
        --b;
        while (b > 0 && s[b - 1] == ' ') --b;
      }
      bool after_eq = b > 0 && s[b - 1] == '=';
      if (numbers_ok && whole && after_eq && end - i <= 9 && f.values.size() < kMaxParameters) {
        f.sentinels.push_back(Sentinel(f.values.size()));
        f.values.push_back(value);
        f.offsets.push_back(i);
        lift(i, end, f.sentinels.back());
      }
      i = end;
      continue;
    }
    ++i;
  }
  if (!f.Parameterised()) {
    f.form = s;
    return f;
  }
  f.form.append(s, copied, n - copied);
  return f;
}

sql::Translation StatementCache::Translate(const std::string& text, const std::string& statement) {
  // The schema reads a table when a statement first names it; a table that
  // cannot be read fails the statement as the database's answer to it.
  try {
    return sql::Translate(text, schema_, engine_.dialect());
  } catch (const sql::SchemaError& e) {
    throw DatabaseError(DescribeStatementError(e.description(), statement));
  }
}

std::unique_ptr<StatementCache::Entry> StatementCache::Build(const std::string& statement) {
  auto e = std::make_unique<Entry>();
  e->translation = Translate(statement, statement);
  e->stmt = engine_.Prepare(e->translation.sql, statement);
  return e;
}

std::unique_ptr<StatementCache::Entry> StatementCache::BuildForm(const StatementForm& f,
                                                                const std::string& statement) {
  sql::Translation tr;
  try {
    tr = Translate(f.form, statement);
  } catch (const DatabaseError&) {
    throw;
  } catch (const ReportError&) {
    return nullptr;
  }
  std::string sql = tr.sql;
  // Where each sentinel stands in the engine's text, how long it is there,
  // and the parameter that takes its place: the numbers first, then the
  // quoted literals.
  struct Place {
    size_t pos, length;
    int parameter;
  };
  std::vector<Place> places;
  for (size_t k = 0; k < f.sentinels.size(); ++k) {
    auto at = FindNumber(sql, f.sentinels[k]);
    if (at.size() != 1) return nullptr;
    places.push_back({at[0], f.sentinels[k].size(), static_cast<int>(k) + 1});
  }
  for (size_t k = 0; k < f.quoted.size(); ++k) {
    const bool date = f.quoted[k].IsDate();
    const std::string& text = QuotedSentinelAt(k, date).printed;
    const size_t at = sql.find(text);
    if (at == std::string::npos || sql.find(text, at + 1) != std::string::npos) return nullptr;
    // A date literal may carry its type before it (PostgreSQL's TIMESTAMP
    // '...'); the parameter is bound as a date and needs none.
    static const std::string kTyped = "TIMESTAMP ";
    const bool typed =
        date && at >= kTyped.size() && sql.compare(at - kTyped.size(), kTyped.size(), kTyped) == 0;
    const size_t from = typed ? at - kTyped.size() : at;
    places.push_back({from, at + text.size() - from, static_cast<int>(f.sentinels.size() + k) + 1});
  }
  // Replace from the last place backwards so earlier offsets hold.
  std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.pos > b.pos; });
  for (const Place& p : places) sql.replace(p.pos, p.length, engine_.ParameterMarker(p.parameter));
  auto e = std::make_unique<Entry>();
  e->translation = std::move(tr);
  e->translation.sql = sql;
  e->parameters = static_cast<int>(places.size());
  try {
    e->stmt = engine_.Prepare(sql, statement);
  } catch (const ReportError&) {
    // The full text is prepared next and reports the fault in its own words.
    return nullptr;
  }
  return e;
}

StatementCache::Lease StatementCache::Get(const std::string& statement) {
  return Get(statement, ParameteriseLiterals(statement, LiftsDates(engine_.dialect())));
}

StatementCache::Lease StatementCache::Get(const std::string& statement, StatementForm f) {
  Entry* entry = nullptr;
  std::unique_ptr<Entry> own;
  if (f.Parameterised()) {
    auto it = by_form_.find(f.form);
    if (it == by_form_.end()) {
      Trim(by_form_);
      it = by_form_.emplace(f.form, BuildForm(f, statement)).first;
    }
    entry = it->second.get();
  }
  if (entry && entry->in_use) {
    // The same statement form is being read already (a report nesting one
    // lookup inside another); run a one-off copy of this text.
    own = Build(statement);
    entry = own.get();
  }
  if (!entry) {
    auto it = by_text_.find(statement);
    if (it == by_text_.end()) {
      Trim(by_text_);
      it = by_text_.emplace(statement, Build(statement)).first;
    }
    entry = it->second.get();
    if (entry->in_use) {
      own = Build(statement);
      entry = own.get();
    }
  }
  if (entry->parameters == 0) {
    f.values.clear();
    f.quoted.clear();
  }
  entry->in_use = true;
  Lease lease(entry, std::move(own));
  entry->stmt->Reset();
  int parameter = 0;
  for (int64_t v : f.values) entry->stmt->Bind(++parameter, Variant::Int64(v));
  for (const Variant& q : f.quoted) entry->stmt->Bind(++parameter, q);
  // The values are kept for the message of a failed step only; it is
  // written when a step fails, not for every run of a lookup.
  if (parameter > 0) {
    lease.engine_ = &engine_;
    lease.values_ = std::move(f.values);
    lease.quoted_ = std::move(f.quoted);
  }
  return lease;
}

std::string StatementCache::Lease::Bound() const {
  std::string bound;
  int parameter = 0;
  auto add = [&](const std::string& shown) {
    ++parameter;
    if (parameter > 1) bound += ", ";
    bound += engine_->ParameterMarker(parameter);
    bound += " = ";
    bound += shown;
  };
  for (int64_t v : values_) add(std::to_string(v));
  for (const Variant& q : quoted_) add("'" + (q.IsDate() ? CDate(q).ToIso() : CStr(q)) + "'");
  return bound;
}

bool StatementCache::Lease::Step() {
  if (!engine_) return entry_->stmt->Step();
  try {
    return entry_->stmt->Step();
  } catch (const ReportError& e) {
    throw DatabaseError(e.number(), e.description() + "\nwith the statement's literals bound as " + Bound());
  }
}

void StatementCache::Lease::Done() {
  if (!entry_) return;
  entry_->stmt->Reset();
  entry_->in_use = false;
  entry_ = nullptr;
}

}  // namespace orv::db
