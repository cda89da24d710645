#include "invokers.h"

#include <climits>
#include <cstdint>
#include <stdexcept>

#include "common/errors.h"
#include "common/vbstrings.h"

namespace orv::app {

std::map<std::string, Invoker>& Invokers() {
  static std::map<std::string, Invoker> invokers;
  return invokers;
}

std::vector<Param> ParseParams(const std::string& params) {
  std::vector<Param> out;
  size_t i = 0;
  while (i < params.size()) {
    size_t comma = params.find(',', i);
    std::string item =
        vb::Trim(params.substr(i, comma == std::string::npos ? std::string::npos : comma - i));
    i = comma == std::string::npos ? params.size() : comma + 1;
    if (item.empty()) continue;
    Param p;
    if (item.front() == '[' && item.back() == ']') {
      p.optional = true;
      item = item.substr(1, item.size() - 2);
    }
    size_t colon = item.find(':');
    p.name = vb::Trim(item.substr(0, colon));
    p.type = colon == std::string::npos ? "Variant" : vb::Trim(item.substr(colon + 1));
    out.push_back(p);
  }
  return out;
}

std::string MethodArgs::Str(size_t i) const {
  const Variant& v = values_.at(i);
  return v.IsEmpty() || v.IsNull() ? std::string() : CStr(v);
}
int32_t MethodArgs::Long(size_t i) const {
  return values_.at(i).IsEmpty() ? 0 : CLng(values_.at(i));
}
int16_t MethodArgs::Int(size_t i) const {
  return static_cast<int16_t>(Long(i));
}
bool MethodArgs::Bool(size_t i) const {
  return values_.at(i).IsEmpty() ? false : CBool(values_.at(i));
}
DateTime MethodArgs::Date(size_t i) const {
  return values_.at(i).IsEmpty() ? DateTime() : CDate(values_.at(i));
}
Currency MethodArgs::Cur(size_t i) const {
  return values_.at(i).IsEmpty() ? Currency() : CCur(values_.at(i));
}

std::vector<std::pair<std::string, std::string>> MethodArgs::GivenTexts() const {
  std::vector<std::pair<std::string, std::string>> out;
  for (size_t k = 0; k < params_.size(); ++k)
    if (Given(k)) out.emplace_back(params_[k].name, k < texts_.size() ? texts_[k] : std::string());
  return out;
}

std::vector<int32_t> MethodArgs::LongArray(size_t i) const {
  std::vector<int32_t> out;
  std::string s = Str(i);
  size_t pos = 0;
  while (pos < s.size()) {
    size_t comma = s.find(',', pos);
    std::string item =
        vb::Trim(s.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos));
    pos = comma == std::string::npos ? s.size() : comma + 1;
    if (!item.empty()) out.push_back(CLng(Variant(item)));
  }
  return out;
}

std::optional<int64_t> ParseWholeNumber(const std::string& text, int64_t min, int64_t max) {
  size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  if (i == text.size() || text.size() - i > 18) return std::nullopt;
  int64_t value = 0;
  for (; i < text.size(); ++i) {
    if (text[i] < '0' || text[i] > '9') return std::nullopt;
    value = value * 10 + (text[i] - '0');
  }
  if (negative) value = -value;
  if (value < min || value > max) return std::nullopt;
  return value;
}

namespace {

// Reads `min` to `max` digits at `i` into `value`; false when fewer stand
// there.
template <typename Int>
bool Digits(const std::string& text, size_t& i, int min, int max, Int& value) {
  value = 0;
  int n = 0;
  while (n < max && i < text.size() && text[i] >= '0' && text[i] <= '9') {
    value = value * 10 + (text[i++] - '0');
    ++n;
  }
  return n >= min;
}

}  // namespace

std::optional<DateTime> ParseDateArgument(const std::string& text) {
  // yyyy-mm-dd, then optionally a blank or "T" and hh:mm or hh:mm:ss. The
  // database's dates start in 1753, so earlier ones are no dates here.
  // Scanned by hand: every run parses --today.
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  size_t i = 0;
  auto sep = [&](char c) { return i < text.size() && text[i] == c && (++i, true); };
  if (!Digits(text, i, 4, 4, year) || !sep('-') || !Digits(text, i, 1, 2, month) || !sep('-') ||
      !Digits(text, i, 1, 2, day))
    return std::nullopt;
  if (i < text.size()) {
    if (!(sep(' ') || sep('T')) || !Digits(text, i, 1, 2, hour) || !sep(':') ||
        !Digits(text, i, 2, 2, minute))
      return std::nullopt;
    if (i < text.size() && (!sep(':') || !Digits(text, i, 2, 2, second))) return std::nullopt;
    if (i < text.size()) return std::nullopt;
  }
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  if (year < 1753 || month < 1 || month > 12) return std::nullopt;
  if (day < 1 || day > days[month - 1] + (month == 2 && leap ? 1 : 0)) return std::nullopt;
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return DateTime::FromParts(year, month, day, hour, minute, second);
}

namespace {

// An optional sign, 1 to 15 digits, then optionally a point and 1 to 4
// digits.
bool IsPlainAmount(const std::string& text) {
  size_t i = text.empty() || (text[0] != '-' && text[0] != '+') ? 0 : 1;
  int64_t whole = 0, cents = 0;
  if (!Digits(text, i, 1, 15, whole)) return false;
  if (i == text.size()) return true;
  if (text[i] != '.') return false;
  ++i;
  return Digits(text, i, 1, 4, cents) && i == text.size();
}

}  // namespace

Variant ParseArgument(const Param& p, const std::string& text) {
  auto bad = [&](const std::string& want) {
    return std::invalid_argument("argument " + p.name + " (" + p.type + ") wants " + want +
                                 ", not '" + text + "'");
  };
  const std::string& t = p.type;
  if (t == "Boolean") {
    std::string l = vb::LCase(vb::Trim(text));
    if (l == "true" || l == "-1" || l == "1" || l == "yes") return Variant(true);
    if (l == "false" || l == "0" || l == "no" || l.empty()) return Variant(false);
    throw bad("True or False, e.g. True");
  }
  if (t == "Date") {
    auto d = ParseDateArgument(text);
    if (!d) throw bad("a date yyyy-mm-dd from 1753-01-01 to 9999-12-31, e.g. 2026-11-20");
    return Variant(*d);
  }
  if (t == "Long") {
    auto n = ParseWholeNumber(text, INT32_MIN, INT32_MAX);
    if (!n) throw bad("a whole number from -2147483648 to 2147483647, e.g. 12");
    return Variant(static_cast<int32_t>(*n));
  }
  if (t == "Integer") {
    auto n = ParseWholeNumber(text, INT16_MIN, INT16_MAX);
    if (!n) throw bad("a whole number from -32768 to 32767, e.g. 10");
    return Variant(static_cast<int32_t>(*n));
  }
  if (const auto& members = EnumerationMembers(t); !members.empty()) {
    std::string names;
    for (const auto& [name, value] : members) {
      if (vb::LCase(name) == vb::LCase(vb::Trim(text)) || std::to_string(value) == vb::Trim(text))
        return Variant(static_cast<int32_t>(value));
      names += (names.empty() ? "" : ", ") + name + "=" + std::to_string(value);
    }
    throw bad("one of " + names);
  }
  if (t == "Currency") {
    // Plain decimal text with at most four decimals, within the money
    // type's range (a wider value would wrap).
    if (!IsPlainAmount(text))
      throw bad("an amount with up to four decimals, e.g. 125.50");
    try {
      return Variant(Currency::FromDecimalText(text));
    } catch (const std::exception&) {
      throw bad("an amount with up to four decimals, e.g. 125.50");
    }
  }
  if (t.rfind("array of", 0) == 0) {
    // Checked now so that a bad list fails before the report starts.
    size_t pos = 0;
    while (pos < text.size()) {
      size_t comma = text.find(',', pos);
      std::string item =
          vb::Trim(text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos));
      pos = comma == std::string::npos ? text.size() : comma + 1;
      if (!item.empty() && !ParseWholeNumber(item, INT32_MIN, INT32_MAX))
        throw bad("whole numbers separated by commas, e.g. 12,14,20");
    }
    return Variant(text);
  }
  if (t == "object") throw bad("an object, which the command line cannot pass");
  return Variant(text);
}

MethodArgs BindArguments(const MethodSignature& sig, const std::vector<std::string>& positional,
                         const std::vector<std::pair<std::string, std::string>>& named,
                         const std::string& user) {
  std::vector<Param> params = ParseParams(sig.params);
  std::vector<Variant> values(params.size());
  std::vector<bool> given(params.size(), false);
  std::vector<std::string> texts(params.size());
  std::string signature = std::string(sig.name) + "(" + sig.params + ")";
  if (positional.size() > params.size())
    throw std::invalid_argument("too many arguments for " + signature);
  for (size_t k = 0; k < positional.size(); ++k) {
    values[k] = ParseArgument(params[k], positional[k]);
    texts[k] = positional[k];
    given[k] = true;
  }
  for (const auto& [name, text] : named) {
    size_t slot = params.size();
    for (size_t k = 0; k < params.size(); ++k)
      if (vb::LCase(params[k].name) == vb::LCase(name)) slot = k;
    if (slot == params.size())
      throw std::invalid_argument(sig.name + std::string(" has no parameter ") + name);
    if (given[slot]) throw std::invalid_argument("argument " + name + " is given twice");
    values[slot] = ParseArgument(params[slot], text);
    texts[slot] = text;
    given[slot] = true;
  }
  for (size_t k = 0; k < params.size(); ++k) {
    if (given[k] || params[k].optional) continue;
    // The signed-in user's name comes from the host when not passed.
    if (params[k].name == "UserName") {
      values[k] = Variant(user);
      texts[k] = user;
      given[k] = true;
      continue;
    }
    throw std::invalid_argument("missing argument " + params[k].name + " (" + params[k].type +
                                ") of " + signature + "; see 'orvenda-reports help " + sig.name +
                                "'");
  }
  return MethodArgs(std::move(params), std::move(values), std::move(given), std::move(texts));
}

}  // namespace orv::app
