#include "platform/db/value_compare.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "common/collation.h"
#include "platform/db/field_type.h"

namespace orv::db {

namespace {

enum class Class { Nothing, Number, Date, Text, Binary };

Class ClassOf(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null: return Class::Nothing;
    case VarType::Date: return Class::Date;
    case VarType::String: return Class::Text;
    case VarType::Binary: return Class::Binary;
    default: return Class::Number;
  }
}

// Numbers as long double, which holds every int64 and every money amount
// exactly enough to order them.
long double NumberOf(const Variant& v) {
  const auto& s = v.storage();
  if (auto* i = std::get_if<int32_t>(&s)) return *i;
  if (auto* l = std::get_if<int64_t>(&s)) return static_cast<long double>(*l);
  if (auto* d = std::get_if<double>(&s)) return *d;
  if (auto* c = std::get_if<Currency>(&s)) return static_cast<long double>(c->raw()) / Currency::kScale;
  if (auto* b = std::get_if<bool>(&s)) return *b ? -1 : 0;
  return 0;
}

std::optional<long double> TextAsNumber(const std::string& t) {
  size_t a = t.find_first_not_of(' ');
  if (a == std::string::npos) return std::nullopt;
  size_t b = t.find_last_not_of(' ');
  std::string s = t.substr(a, b - a + 1);
  char* end = nullptr;
  long double v = std::strtold(s.c_str(), &end);
  if (end != s.c_str() + s.size()) return std::nullopt;
  return v;
}

std::string_view TrimRight(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// Sort and Filter order text as the server does (common/collation.h).
int CompareText(std::string_view a, std::string_view b) { return collation::Compare(a, b); }

template <typename T>
int Sign(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

}  // namespace

std::string Lower(std::string_view s) {
  std::string out(s);
  for (auto& c : out) c = FoldCase(c);
  return out;
}

int CompareValues(const Variant& a, const Variant& b) {
  Class ca = ClassOf(a), cb = ClassOf(b);
  if (ca == Class::Nothing || cb == Class::Nothing)
    return Sign(ca == Class::Nothing ? 0 : 1, cb == Class::Nothing ? 0 : 1);
  if (ca == cb) {
    switch (ca) {
      case Class::Number: {
        // Money against money by its raw count; anything against a float as
        // floats, so money 123.45 equals the float 123.45 it was read from;
        // whole numbers and money exactly in long double.
        const auto* ca_ = std::get_if<Currency>(&a.storage());
        const auto* cb_ = std::get_if<Currency>(&b.storage());
        if (ca_ && cb_) return Sign(ca_->raw(), cb_->raw());
        if (std::holds_alternative<double>(a.storage()) || std::holds_alternative<double>(b.storage()))
          return Sign(static_cast<double>(NumberOf(a)), static_cast<double>(NumberOf(b)));
        return Sign(NumberOf(a), NumberOf(b));
      }
      case Class::Date: return Sign(a.AsDate().serial(), b.AsDate().serial());
      case Class::Text: return CompareText(a.AsString(), b.AsString());
      case Class::Binary: {
        const Bytes& x = a.AsBytes();
        const Bytes& y = b.AsBytes();
        for (size_t i = 0; i < x.size() && i < y.size(); ++i)
          if (x[i] != y[i]) return x[i] < y[i] ? -1 : 1;
        return Sign(x.size(), y.size());
      }
      case Class::Nothing: return 0;
    }
  }
  // Mixed classes: read the text side as the other side's kind when it is
  // one ('2026-11-01' against a date, '12' against a number).
  if (ca == Class::Text || cb == Class::Text) {
    bool text_left = ca == Class::Text;
    const Variant& text = text_left ? a : b;
    const Variant& other = text_left ? b : a;
    Class co = text_left ? cb : ca;
    int r = 2;
    if (co == Class::Date) {
      auto d = ParseIsoDateTime(text.AsString());
      if (!d) d = ParseDateText(text.AsString());
      if (d) r = Sign(d->serial(), other.AsDate().serial());
    } else if (co == Class::Number) {
      if (auto n = TextAsNumber(text.AsString())) r = Sign(*n, NumberOf(other));
    }
    if (r == 2) r = CompareText(text.AsString(), CStr(other));
    return text_left ? r : -r;
  }
  if (ca == Class::Date && cb == Class::Number) return Sign<long double>(a.AsDate().serial(), NumberOf(b));
  if (ca == Class::Number && cb == Class::Date) return Sign<long double>(NumberOf(a), b.AsDate().serial());
  return Sign(static_cast<int>(ca), static_cast<int>(cb));
}

std::optional<std::string> RelateKey(const Variant& v) {
  switch (ClassOf(v)) {
    case Class::Nothing: return std::nullopt;
    case Class::Number: {
      long double n = NumberOf(v);
      // Whole numbers, the usual keys, print as integers; others as the
      // shortest text that reads back as the same double.
      std::string key = "n";
      if (std::fabs(n) < 9e18L && std::truncl(n) == n) {
        key += std::to_string(static_cast<long long>(n));
      } else {
        char buf[64];
        auto r = std::to_chars(buf, buf + sizeof buf, static_cast<double>(n));
        key.append(buf, r.ptr);
      }
      return key;
    }
    case Class::Date: {
      char buf[64];
      auto r = std::to_chars(buf, buf + sizeof buf, v.AsDate().serial());
      std::string key = "d";
      key.append(buf, r.ptr);
      return key;
    }
    case Class::Text: {
      std::string key = "t";
      key += Lower(TrimRight(v.AsString()));
      return key;
    }
    case Class::Binary: {
      const Bytes& b = v.AsBytes();
      std::string key = "b";
      key.append(b.begin(), b.end());
      return key;
    }
  }
  return std::nullopt;
}

}  // namespace orv::db
