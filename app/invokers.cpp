#include "invokers.h"

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
    std::string item = vb::Trim(params.substr(i, comma == std::string::npos ? std::string::npos : comma - i));
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
int32_t MethodArgs::Long(size_t i) const { return values_.at(i).IsEmpty() ? 0 : CLng(values_.at(i)); }
int16_t MethodArgs::Int(size_t i) const { return static_cast<int16_t>(Long(i)); }
bool MethodArgs::Bool(size_t i) const { return values_.at(i).IsEmpty() ? false : CBool(values_.at(i)); }
DateTime MethodArgs::Date(size_t i) const {
  return values_.at(i).IsEmpty() ? DateTime() : CDate(values_.at(i));
}
Currency MethodArgs::Cur(size_t i) const { return values_.at(i).IsEmpty() ? Currency() : CCur(values_.at(i)); }

std::vector<int32_t> MethodArgs::LongArray(size_t i) const {
  std::vector<int32_t> out;
  std::string s = Str(i);
  size_t pos = 0;
  while (pos < s.size()) {
    size_t comma = s.find(',', pos);
    std::string item = vb::Trim(s.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos));
    pos = comma == std::string::npos ? s.size() : comma + 1;
    if (!item.empty()) out.push_back(CLng(Variant(item)));
  }
  return out;
}

Variant ParseArgument(const Param& p, const std::string& text) {
  auto bad = [&](const char* want) {
    return std::invalid_argument("argument " + p.name + " wants " + want + ", not '" + text + "'");
  };
  const std::string& t = p.type;
  try {
    if (t == "Boolean") {
      std::string l = vb::LCase(vb::Trim(text));
      if (l == "true" || l == "-1" || l == "1" || l == "yes") return Variant(true);
      if (l == "false" || l == "0" || l == "no" || l.empty()) return Variant(false);
      throw bad("True or False");
    }
    if (t == "Date") {
      auto d = ParseDateText(text);
      if (!d) throw bad("a date as yyyy-mm-dd");
      return Variant(*d);
    }
    if (t == "Long" || t == "Integer" || t == "AddressParts" || t == "iPosition" ||
        t == "RescheduleTypes") {
      Variant v(text);
      if (!IsNumericValue(v) || vb::Trim(text).empty()) throw bad("a whole number");
      const int32_t n = CLng(v);
      // An Integer is 16 bits in the host's interface: a larger value would
      // wrap inside the report, so it is refused here.
      if (t == "Integer" && (n < -32768 || n > 32767)) throw bad("a whole number from -32768 to 32767");
      return Variant(n);
    }
    if (t == "Currency") return Variant(CCur(Variant(text)));
    if (t.rfind("array of", 0) == 0) {
      // Checked now so that a bad list fails before the report starts.
      MethodArgs probe({p}, {Variant(text)}, {true});
      (void)probe.LongArray(0);
      return Variant(text);
    }
  } catch (const ReportError&) {
    throw bad(t.c_str());
  }
  return Variant(text);
}

}  // namespace orv::app
