#include "closing/code_ranges.h"

#include <stdexcept>

namespace orv::closing {

namespace {

std::string Quoted(std::string_view text) {
  std::string out = "'";
  for (char c : text) {
    out += c;
    if (c == '\'') out += '\'';
  }
  return out + "'";
}

std::string Normalise(std::string_view typed, const char* fallback, const char* which) {
  size_t b = 0, e = typed.size();
  while (b < e && typed[b] == ' ') ++b;
  while (e > b && typed[e - 1] == ' ') --e;
  std::string_view code = typed.substr(b, e - b);
  if (code.empty()) return fallback;
  bool digits = code.size() <= 5;
  for (char c : code) digits = digits && c >= '0' && c <= '9';
  if (!digits) {
    throw std::invalid_argument(std::string("The ") + which + " code \"" + std::string(typed) +
                                "\" is not a fee code: give up to five digits, such as 01000.");
  }
  return std::string(5 - code.size(), '0') + std::string(code);
}

}  // namespace

CodeRange NormaliseCodeRange(std::string_view from, std::string_view to) {
  CodeRange r{Normalise(from, kFirstCode, "start"), Normalise(to, kLastCode, "end")};
  if (r.from > r.to) {
    throw std::invalid_argument("The code range " + r.from + " - " + r.to +
                                " is empty: its start code comes after its end code.");
  }
  return r;
}

std::string CodeRangeCondition(std::string_view column, const CodeRange& range) {
  const std::string c(column);
  return "((" + c + " >= " + Quoted(range.from) + " AND " + c + " <= " + Quoted(range.to) +
         ") OR (" + c + " >= " + Quoted("-" + range.from) + " AND " + c +
         " <= " + Quoted("-" + range.to) + "))";
}

std::string_view PositiveCode(std::string_view code) {
  return IsReversal(code) ? code.substr(1) : code;
}

bool CodeInRange(std::string_view code, const CodeRange& range) {
  const std::string_view bare = PositiveCode(code);
  return bare >= range.from && bare <= range.to;
}

}  // namespace orv::closing
