#include "common/common_functions.h"

#include <cctype>
#include <cmath>

#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"

namespace orv {

namespace {

// True for text that is empty once its blanks are trimmed, and for Empty.
bool IsBlank(const Variant& value) {
  if (value.IsEmpty()) return true;
  return value.IsString() && vb::Trim(value.AsString()).empty();
}

// The first `count` characters of UTF-8 text, so that an accented name is not
// cut inside a character.
std::string_view Utf8Prefix(std::string_view s, size_t count) {
  size_t i = 0;
  for (size_t chars = 0; i < s.size() && chars < count; ++chars) {
    ++i;
    while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) ++i;
  }
  return s.substr(0, i);
}

size_t Utf8Length(std::string_view s) {
  size_t n = 0;
  for (char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
}

}  // namespace

Currency clsCommonFunctions::ReturnCur(const Variant& value) const {
  if (value.IsNull() || IsBlank(value)) return Currency();
  try {
    return CCur(value);
  } catch (const ReportError&) {
    return Currency();
  }
}

int32_t clsCommonFunctions::ReturnNumber(Variant& value) const {
  if (value.IsNull()) return 0;
  // Masked input fields leave "_" where nothing was typed; the caller's
  // variable is cleaned too.
  if (value.IsString() && value.AsString().find('_') != std::string::npos)
    value = Variant(vb::Replace(value.AsString(), "_", ""));
  if (IsBlank(value)) return 0;
  try {
    return CLng(value);
  } catch (const ReportError&) {
    return 0;
  }
}

double clsCommonFunctions::ReturnVal(const Variant& value) const {
  if (value.IsNull()) return 0;
  // A whole number is its own value: Val of its text gives the same double
  // for every one a double holds exactly, and lists read thousands of
  // codes and minutes this way. Larger ones still go through the text.
  constexpr int64_t kExact = int64_t(1) << 53;
  const VarType type = value.type();
  if ((type == VarType::Long || type == VarType::LongLong) && value.AsInteger() > -kExact &&
      value.AsInteger() < kExact)
    return static_cast<double>(value.AsInteger());
  try {
    return vb::Val(CStr(value));
  } catch (const ReportError&) {
    return 0;
  }
}

DateTime clsCommonFunctions::ReturnDate(const Variant& value) const {
  if (value.IsNull()) return Clock::Today();
  try {
    return CDate(value);
  } catch (const ReportError&) {
    return DateTime();
  }
}

bool clsCommonFunctions::ReturnBool(const Variant& value) const {
  if (value.IsNull()) return false;
  if (value.IsString() && value.AsString().empty()) return false;
  try {
    return CBool(value);
  } catch (const ReportError&) {
    return false;
  }
}

uint8_t clsCommonFunctions::Return01(const Variant& value) const {
  return ReturnVal(value) != 0 ? 1 : 0;
}

std::string clsCommonFunctions::ReturnYN(const Variant& value) const {
  if (value.IsNull()) return "N";
  try {
    return CBool(value) ? "Y" : "N";
  } catch (const ReportError&) {
    return "";
  }
}

int16_t clsCommonFunctions::BoolToInt(int16_t value) const {
  return value != 0 ? 1 : 0;
}

std::string clsCommonFunctions::returnStr(const Variant& value, bool trim) const {
  if (value.IsNull() || value.IsEmpty()) return "";
  std::string s = CStr(value);
  return trim ? vb::Trim(s) : s;
}

std::string clsCommonFunctions::MyFormat(const Variant& value, std::string_view fmt) const {
  return MyFormat(CCur(value), fmt);
}

std::string clsCommonFunctions::MyFormat(Currency value, std::string_view fmt) const {
  // Inverted on purpose (see the header): "Currency" means no sign.
  if (fmt == "Currency") return Format(Variant(value), "##,##0.00");
  return Format(Variant(value), "Currency");
}

std::string clsCommonFunctions::ReturnFormatedDate(const Variant& value,
                                                   std::string_view fmt) const {
  if (value.IsNull()) return "00000000";
  try {
    DateTime d = CDate(value);
    if (d.Year() < 1900) return "00000000";
    return Format(Variant(d), fmt);
  } catch (const ReportError&) {
    return "";
  }
}

Variant clsCommonFunctions::ConvertToNormalDate(const Variant& value) const {
  if (value.IsNull()) return Variant();
  try {
    std::string s = CStr(value);
    if (s == "00000000") return Variant::Null();
    // The original asked the locale whether it reads numeric dates day first
    // and joined the parts in the order it needed. Year-first text is read
    // the same way in every order (ParseDateText), so the parts go in as
    // "yyyy/mm/dd" and the result never depends on the locale.
    std::string text = vb::Mid(s, 1, 4) + "/" + vb::Mid(s, 5, 2) + "/" + vb::Mid(s, 7, 2);
    return Variant(CDate(Variant(text)));
  } catch (const ReportError&) {
    return Variant();
  }
}

Currency clsCommonFunctions::ConvertoNormalCurrency(const Variant& value) const {
  if (value.IsNull()) return Currency();
  try {
    std::string s = CStr(value);
    if (s.size() <= 2) return Currency();
    std::string text = s.substr(0, s.size() - 2) + "." + s.substr(s.size() - 2);
    return CCur(Variant(text));
  } catch (const ReportError&) {
    return Currency();
  }
}

int32_t clsCommonFunctions::TimeToInt(const Variant& value) const {
  // 1. Null, "" and "0" (compared as the host language compares a value with
  //    text, so the number 0 and Empty as well).
  if (value.IsNull() || value.IsEmpty()) return 0;
  if (value.IsString() && (value.AsString().empty() || value.AsString() == "0")) return 0;
  if (value.IsNumeric() && CDbl(value) == 0) return 0;
  // 2. "09:05 AM". A value that is no time comes back as its own text, and
  //    the steps below then raise the host language's error.
  std::string t = Format(value, "Medium Time");
  // 3. Hours before the first ':', minutes the two characters after it.
  long colon = vb::InStr(t, ":");
  int32_t hours = CLng(Variant(vb::Left(t, colon - 1)));
  int32_t minutes = CLng(Variant(vb::Mid(t, colon + 1, 2)));
  // 4 and 5.
  if (vb::UCase(vb::Right(t, 2)) != "PM") {
    if (hours == 12) hours = 0;
    return hours * 60 + minutes;
  }
  return hours >= 12 ? hours * 60 + minutes : hours * 60 + 720 + minutes;
}

std::string clsCommonFunctions::IntToTime(int16_t minutes) const {
  // 1. Whole hours, and the rest of the quotient back in minutes.
  double quotient = minutes / 60.0;
  int hours = static_cast<int>(std::trunc(quotient));
  int mins = static_cast<int>(std::nearbyint((quotient - hours) * 60));
  // 2 and 3. "h:mm AM" text that carries the meaning to the formatter.
  std::string mm = (mins >= 0 && mins < 10 ? "0" : "") + std::to_string(mins);
  std::string text;
  if (hours < 13) {
    if (hours == 0) {
      text = "12:" + mm + " AM";
    } else if (hours == 12) {
      text = "12:" + mm + " PM";
    } else {
      text = std::to_string(hours) + ":" + mm + " AM";
    }
  } else {
    text = std::to_string(hours - 12) + ":" + mm + " PM";
  }
  // 4. The locale's long time, with seconds.
  return Format(Variant(text), "Long Time");
}

int32_t clsCommonFunctions::GetNumberOfIDFromProviderName(std::string_view text) const {
  int32_t count = 0;
  for (char c : text) count += c == '=';
  return count;
}

int32_t clsCommonFunctions::GetIDFromProviderName(std::string_view text, int32_t n) const {
  if (n < 1) return 0;
  size_t pos = std::string_view::npos;
  for (int32_t k = 0; k < n; ++k) {
    pos = text.find('=', pos == std::string_view::npos ? 0 : pos + 1);
    if (pos == std::string_view::npos) return 0;
  }
  // Two characters on, past the one blank the filter has after "=".
  std::string digits;
  for (size_t i = pos + 2; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]));
       ++i)
    digits += text[i];
  if (digits.empty()) return 0;
  return CLng(Variant(digits));
}

std::string clsCommonFunctions::PursePaymentName(std::string_view name,
                                                 std::string_view which) const {
  size_t dash = name.rfind('-');
  if (which == "Insurance") {
    if (dash == std::string_view::npos) return std::string(name);
    // Positions count characters, from 1.
    size_t position = Utf8Length(name.substr(0, dash)) + 1;
    if (position > 15) return std::string(Utf8Prefix(name, 15));
    return std::string(name.substr(0, dash));
  }
  if (which == "Patient") {
    if (dash == std::string_view::npos) return "";
    return std::string(name.substr(dash + 1));
  }
  return "";
}

}  // namespace orv
