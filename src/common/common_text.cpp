// The text routines of clsCommonFunctions that the host shares with the
// reports: wrapping, lines, digits, character filters and fixed fields.
#include <algorithm>

#include "common/common_functions.h"
#include "common/format.h"
#include "common/vbstrings.h"

namespace orv {

namespace {

// Keeps the characters of `text` found in `keep`.
std::string Keep(std::string_view text, std::string_view keep) {
  std::string out;
  for (char c : text)
    if (keep.find(c) != std::string_view::npos) out += c;
  return out;
}

std::string ReplaceAll(std::string s, std::string_view from, std::string_view to) {
  for (size_t p = s.find(from); p != std::string::npos; p = s.find(from, p + to.size()))
    s.replace(p, from.size(), to);
  return s;
}

}  // namespace

std::string clsCommonFunctions::WrapText(const Variant& text, int width) const {
  if (text.IsNull() || returnStr(text, true).empty() || width < 1) return "";
  std::string rest = returnStr(text);
  rest = ReplaceAll(rest, "\r\n", " ");
  std::replace(rest.begin(), rest.end(), '\r', ' ');
  std::replace(rest.begin(), rest.end(), '\n', ' ');
  // A break at the end would leave an empty last line: it goes, with the
  // blanks it became.
  rest = vb::RTrim(rest);
  std::string out;
  while (rest.size() > size_t(width)) {
    // The blank may stand just after the width-th character: the line
    // before it still fits.
    const size_t blank = rest.rfind(' ', size_t(width));
    if (blank == std::string::npos || blank == 0) break;
    out += rest.substr(0, blank) + "\r\n";
    rest.erase(0, blank + 1);
  }
  return out + rest;
}

std::string clsCommonFunctions::ReturnLine(std::string_view text, int n) const {
  if (n < 1) return "";
  size_t start = 0;
  for (int line = 1; line < n; ++line) {
    const size_t br = text.find("\r\n", start);
    if (br == std::string_view::npos) return "";
    start = br + 2;
  }
  const size_t end = text.find("\r\n", start);
  return std::string(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
}

std::string clsCommonFunctions::ReturnNumberOnly(std::string_view text, bool words) const {
  std::string s(text);
  if (words) {
    // In this order, inside words as well: "one" is taken before "two" and
    // "to" before "too", so "too" never matches whole, and "tomorrow" keeps
    // a 2. Callers read phone numbers typed as words.
    static const std::pair<const char*, const char*> kSpoken[] = {
        {"twelve", "12"}, {"one two", "12"}, {"one to", "12"}, {"thirteen", "13"}, {"one", "1"},
        {"two", "2"},     {"to", "2"},       {"too", "2"},     {"three", "3"},     {"four", "4"},
        {"for", "4"},     {"five", "5"},     {"six", "6"},     {"seven", "7"},     {"eight", "8"},
        {"ate", "8"},     {"nine", "9"}};
    for (const auto& [word, digits] : kSpoken) s = ReplaceAll(s, word, digits);
  }
  return Keep(s, "0123456789");
}

std::string clsCommonFunctions::KeepNumbers(const Variant& text) const {
  if (text.IsNull()) return "";
  return Keep(returnStr(text), "0123456789.");
}

std::string clsCommonFunctions::StripNonAlphaNum(std::string_view text, bool digitsOnly) const {
  // Three leading blanks mark a field the host left unfilled on purpose.
  if (text.substr(0, 3) == "   ") return "";
  return vb::Trim(Keep(text, digitsOnly ? "1234567890"
                                        : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                          "1234567890 (),"));
}

bool clsCommonFunctions::ValidateText(std::string_view text, std::string_view allowed) const {
  for (char c : vb::Trim(text))
    if (allowed.find(c) == std::string_view::npos) return false;
  return true;
}

Variant clsCommonFunctions::PadString(const Variant& value, int side, int length, std::string fill,
                                      bool isMoney) const {
  if (value.IsNull()) return value;
  if (fill.empty()) fill = " ";
  std::string s;
  if (isMoney) {
    // Cents as digits; a negative amount keeps one leading minus sign,
    // whichever way the currency format shows it.
    const Currency amount = ReturnCur(value);
    const bool negative = amount < Currency();
    s = Keep(Format(Variant(negative ? -amount : amount), "Currency"), "0123456789");
    if (negative) s = "-" + s;
  } else {
    s = returnStr(value);
  }
  s.erase(std::remove_if(s.begin(), s.end(), [](char c) { return c == '\r' || c == '\n'; }), s.end());
  if (length < 0) length = 0;
  if (s.size() > size_t(length)) return Variant(side == 1 ? s.substr(s.size() - length) : s.substr(0, length));
  std::string pad;
  while (pad.size() + s.size() < size_t(length)) pad += fill;
  pad.resize(size_t(length) - s.size());
  return Variant(side == 1 ? pad + s : s + pad);
}

clsCommonFunctions::RGBColor clsCommonFunctions::returnRGBColor(uint32_t color) const {
  return {uint8_t(color & 0xFF), uint8_t((color >> 8) & 0xFF), uint8_t((color >> 16) & 0xFF)};
}

void clsCommonFunctions::setID(IDLists& list, std::string_view name, const Variant& key,
                               const Variant& value) const {
  const std::string upper = vb::UCase(name);
  auto it = std::find_if(list.lists.begin(), list.lists.end(),
                         [&](const auto& l) { return l.first == upper; });
  if (it == list.lists.end()) {
    list.lists.emplace_back(upper, std::map<std::string, std::string>());
    it = std::prev(list.lists.end());
  }
  it->second[returnStr(key)] = "ID = " + returnStr(value);
}

Variant clsCommonFunctions::GetID(const IDLists& list, std::string_view name, const Variant& key) const {
  const std::string upper = vb::UCase(name);
  for (const auto& [list_name, entries] : list.lists) {
    if (list_name != upper) continue;
    auto found = entries.find(returnStr(key));
    return found == entries.end() ? Variant() : Variant(found->second);
  }
  return Variant();
}

}  // namespace orv
