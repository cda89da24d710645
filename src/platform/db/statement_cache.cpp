#include "platform/db/statement_cache.h"

#include <algorithm>
#include <cctype>

#include "platform/db/db_error.h"

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

StatementForm ParameteriseLiterals(const std::string& s) {
  StatementForm f;
  // The form is copied in spans between replaced literals: this runs for
  // every statement a report opens, so it avoids per-character appends.
  size_t copied = 0;
  size_t i = 0;
  const size_t n = s.size();
  while (i < n) {
    char c = s[i];
    if (c == '\'' || c == '"' || c == '[') {
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
      bool whole = end >= n || !IsNameChar(s[end]);
      size_t b = i;
      while (b > 0 && s[b - 1] == ' ') --b;
      if (b > 0 && s[b - 1] == '-') {
        --b;
        while (b > 0 && s[b - 1] == ' ') --b;
      }
      bool after_eq = b > 0 && s[b - 1] == '=';
      if (whole && after_eq && end - i <= 9 && f.values.size() < kMaxParameters) {
        if (f.form.empty()) f.form.reserve(n + 16);
        f.form.append(s, copied, i - copied);
        f.sentinels.push_back(Sentinel(f.values.size()));
        f.values.push_back(value);
        f.offsets.push_back(i);
        f.form += f.sentinels.back();
        copied = end;
      }
      i = end;
      continue;
    }
    ++i;
  }
  if (f.values.empty()) {
    f.form = s;
    return f;
  }
  f.form.append(s, copied, n - copied);
  // A statement that already holds a sentinel's digits is not parameterised.
  if (s.find(Sentinel(0).substr(0, 6)) != std::string::npos) {
    for (const auto& sentinel : f.sentinels) {
      if (!FindNumber(s, sentinel).empty()) {
        f.values.clear();
        f.sentinels.clear();
        f.form = s;
        break;
      }
    }
  }
  return f;
}

std::unique_ptr<StatementCache::Entry> StatementCache::Build(const std::string& statement) {
  auto e = std::make_unique<Entry>();
  e->translation = sql::Translate(statement, schema_, engine_.dialect());
  e->stmt = engine_.Prepare(e->translation.sql, statement);
  return e;
}

std::unique_ptr<StatementCache::Entry> StatementCache::BuildForm(
    const std::string& form, const std::vector<std::string>& sentinels,
    const std::string& statement) {
  sql::Translation tr;
  try {
    tr = sql::Translate(form, schema_, engine_.dialect());
  } catch (const ReportError&) {
    return nullptr;
  }
  std::string sql = tr.sql;
  // Replace from the last sentinel backwards so earlier offsets hold.
  std::vector<std::pair<size_t, int>> places;
  for (size_t k = 0; k < sentinels.size(); ++k) {
    auto at = FindNumber(sql, sentinels[k]);
    if (at.size() != 1) return nullptr;
    places.emplace_back(at[0], static_cast<int>(k));
  }
  std::sort(places.rbegin(), places.rend());
  for (auto [pos, k] : places) sql.replace(pos, sentinels[k].size(), engine_.ParameterMarker(k + 1));
  auto e = std::make_unique<Entry>();
  e->translation = std::move(tr);
  e->translation.sql = sql;
  e->parameters = static_cast<int>(sentinels.size());
  try {
    e->stmt = engine_.Prepare(sql, statement);
  } catch (const ReportError&) {
    // The full text is prepared next and reports the fault in its own words.
    return nullptr;
  }
  return e;
}

StatementCache::Lease StatementCache::Get(const std::string& statement) {
  return Get(statement, ParameteriseLiterals(statement));
}

StatementCache::Lease StatementCache::Get(const std::string& statement, StatementForm f) {
  Entry* entry = nullptr;
  std::unique_ptr<Entry> own;
  if (!f.values.empty()) {
    auto it = by_form_.find(f.form);
    if (it == by_form_.end()) {
      Trim(by_form_);
      it = by_form_.emplace(f.form, BuildForm(f.form, f.sentinels, statement)).first;
    }
    entry = it->second.get();
  }
  if (!entry) {
    auto it = by_text_.find(statement);
    if (it == by_text_.end()) {
      Trim(by_text_);
      it = by_text_.emplace(statement, Build(statement)).first;
    }
    entry = it->second.get();
    f.values.clear();
  }
  if (entry->in_use) {
    // The same statement is being read already (a report nesting one lookup
    // inside another); run a one-off copy.
    own = Build(statement);
    entry = own.get();
    f.values.clear();
  }
  entry->in_use = true;
  Lease lease(entry, std::move(own));
  entry->stmt->Reset();
  for (size_t k = 0; k < f.values.size(); ++k) {
    entry->stmt->Bind(static_cast<int>(k) + 1, Variant::Int64(f.values[k]));
    if (k) lease.bound_ += ", ";
    lease.bound_ += engine_.ParameterMarker(static_cast<int>(k) + 1);
    lease.bound_ += " = ";
    lease.bound_ += std::to_string(f.values[k]);
  }
  return lease;
}

bool StatementCache::Lease::Step() {
  if (bound_.empty()) return entry_->stmt->Step();
  try {
    return entry_->stmt->Step();
  } catch (const ReportError& e) {
    throw DatabaseError(e.number(), e.description() + "\nwith the statement's numbers bound as " + bound_);
  }
}

void StatementCache::Lease::Done() {
  if (!entry_) return;
  entry_->stmt->Reset();
  entry_->in_use = false;
  entry_ = nullptr;
}

}  // namespace orv::db
