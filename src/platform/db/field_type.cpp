#include "platform/db/field_type.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orv::db {

using sql::ValueKind;

FieldType FieldTypeOfKind(ValueKind kind) {
  switch (kind) {
    case ValueKind::Integer: return adInteger;
    case ValueKind::Boolean: return adBoolean;
    case ValueKind::Float: return adDouble;
    case ValueKind::Decimal: return adNumeric;
    case ValueKind::Money: return adCurrency;
    case ValueKind::Date: return adDBTimeStamp;
    case ValueKind::Text: return adVarChar;
    case ValueKind::Blob: return adLongVarBinary;
    case ValueKind::Unknown: return adVariant;
  }
  return adVariant;
}

namespace {

bool Digits(std::string_view t, size_t at, size_t n, int* out) {
  if (at + n > t.size()) return false;
  int v = 0;
  for (size_t i = at; i < at + n; ++i) {
    if (t[i] < '0' || t[i] > '9') return false;
    v = v * 10 + (t[i] - '0');
  }
  *out = v;
  return true;
}

Variant IntegerVariant(int64_t v) {
  if (v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max())
    return Variant(static_cast<int>(v));
  return Variant::Int64(v);
}

}  // namespace

std::optional<DateTime> ParseIsoDateTime(std::string_view t) {
  // The dates of a result repeat row after row (the payments of one day,
  // an entry date beside its check date), so the day of the last date
  // read is kept with its text and only the time is read again: a listing
  // of payments reads two dates a row.
  struct LastDay {
    char text[10];
    double serial = 0;
    bool held = false;
  };
  static thread_local LastDay last;
  int h = 0, mi = 0, s = 0;
  if (t.size() < 10) return std::nullopt;
  double day;
  if (last.held && std::memcmp(last.text, t.data(), 10) == 0) {
    day = last.serial;
  } else {
    int y, mo, d;
    if (!Digits(t, 0, 4, &y) || t[4] != '-' || !Digits(t, 5, 2, &mo) || t[7] != '-' || !Digits(t, 8, 2, &d))
      return std::nullopt;
    if (!IsValidDate(y, mo, d)) return std::nullopt;
    day = DateTime::FromParts(y, mo, d).serial();
    std::memcpy(last.text, t.data(), 10);
    last.serial = day;
    last.held = true;
  }
  double fraction = 0;
  if (t.size() > 10) {
    if ((t[10] != ' ' && t[10] != 'T') || !Digits(t, 11, 2, &h) || t.size() < 16 || t[13] != ':' ||
        !Digits(t, 14, 2, &mi))
      return std::nullopt;
    if (t.size() > 16) {
      if (t[16] != ':' || !Digits(t, 17, 2, &s)) return std::nullopt;
      if (t.size() > 19) {
        if (t[19] != '.') return std::nullopt;
        double scale = 0.1;
        for (size_t i = 20; i < t.size(); ++i) {
          if (t[i] < '0' || t[i] > '9') return std::nullopt;
          fraction += (t[i] - '0') * scale;
          scale /= 10;
        }
      }
    }
    if (h > 23 || mi > 59 || s > 59) return std::nullopt;
  }
  // As DateTime::FromParts joins a day and a time of day: the time runs
  // forward from midnight on either side of the base day.
  const double time = static_cast<double>(h * 3600 + mi * 60 + s) / 86400.0;
  DateTime dt(day < 0 ? day - time : day + time);
  if (fraction > 0) {
    // Milliseconds move the serial within the day: forward for dates on or
    // after the base day, where the fraction grows with the time.
    double f = fraction / 86400.0;
    dt = DateTime(dt.serial() + (dt.serial() >= 0 ? f : -f));
  }
  return dt;
}

Variant ValueOfKind(Variant stored, ValueKind kind) {
  if (stored.IsNull()) return stored;
  const auto& st = stored.storage();
  const int64_t* i = std::get_if<int64_t>(&st);
  const double* d = std::get_if<double>(&st);
  const std::string* t = std::get_if<std::string>(&st);
  switch (kind) {
    case ValueKind::Integer:
      if (i) return IntegerVariant(*i);
      if (d && std::trunc(*d) == *d && std::fabs(*d) < 9.2e18)
        return IntegerVariant(static_cast<int64_t>(*d));
      return stored;
    case ValueKind::Boolean:
      if (i) return Variant(*i != 0);
      if (d) return Variant(*d != 0);
      return stored;
    case ValueKind::Money:
      if (i) return Variant(Currency::FromInt(*i));
      if (d) return Variant(Currency::FromDouble(*d));
      if (t) {
        try {
          return Variant(Currency::FromDecimalText(*t));
        } catch (const ReportError&) {
          return stored;
        }
      }
      return stored;
    case ValueKind::Date:
      if (t) {
        if (auto dt = ParseIsoDateTime(*t)) return Variant(*dt);
        if (auto dt = ParseDateText(*t)) return Variant(*dt);
        return stored;
      }
      if (i) return Variant(DateTime(static_cast<double>(*i)));
      if (d) return Variant(DateTime(*d));
      return stored;
    case ValueKind::Float:
    case ValueKind::Decimal:
      if (i) return Variant(static_cast<double>(*i));
      if (t) {
        char* end = nullptr;
        double v = std::strtod(t->c_str(), &end);
        if (!t->empty() && end && *end == '\0') return Variant(v);
      }
      return stored;
    case ValueKind::Text:
      if (i) return Variant(std::to_string(*i));
      if (d) return Variant(CStr(Variant(*d)));
      return stored;
    case ValueKind::Blob:
      if (t) return Variant(Bytes(t->begin(), t->end()));
      return stored;
    case ValueKind::Unknown:
      if (i) return IntegerVariant(*i);
      return stored;
  }
  return stored;
}

Variant CoerceToFieldType(const Variant& value, FieldType type) {
  if (value.IsNull() || value.IsEmpty()) return value;
  switch (type) {
    case adSmallInt:
    case adInteger: return Variant(static_cast<int>(CLng(value)));
    case adBigInt: return Variant::Int64(CLngLng(value));
    case adSingle:
    case adDouble:
    case adDecimal:
    case adNumeric: return Variant(CDbl(value));
    case adCurrency: return Variant(CCur(value));
    case adDate:
    case adDBTimeStamp: return Variant(CDate(value));
    case adBoolean: return Variant(CBool(value));
    case adChar:
    case adVarChar:
    case adLongVarChar:
    case adVarWChar:
    case adLongVarWChar: return Variant(CStr(value));
    default: return value;
  }
}

}  // namespace orv::db
