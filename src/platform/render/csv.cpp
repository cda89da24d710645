#include "platform/render/csv.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>

#include "common/datetime.h"
#include "platform/host/partial_files.h"
#include "platform/render/document_text.h"
#include "platform/render/renderer.h"

namespace orv::render {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Without the blanks and line breaks at its ends ("Glenora Logistics\r\n",
// a cell whose second line is empty).
std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// "1234", "1,234", "1,234,567.8": digits, grouped by threes with commas or
// not grouped at all, then optionally a point and digits. Returns the
// digits without the commas, or "" when the text is no such number.
// `grouped` says whether it had commas.
std::string PlainNumber(std::string_view s, bool& grouped) {
  grouped = false;
  size_t point = s.find('.');
  std::string_view whole = s.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? "" : s.substr(point + 1);
  if (whole.empty() || (point != std::string_view::npos && fraction.empty())) return "";
  if (!std::all_of(fraction.begin(), fraction.end(), IsDigit)) return "";
  std::string digits;
  size_t group = 0;  // digits since the last comma
  bool any_comma = false;
  for (size_t i = 0; i < whole.size(); ++i) {
    char c = whole[i];
    if (c == ',') {
      // A comma follows one to three digits, and then only after three.
      if (group == 0 || group > 3 || (any_comma && group != 3)) return "";
      any_comma = true;
      group = 0;
    } else if (IsDigit(c)) {
      digits += c;
      ++group;
    } else {
      return "";
    }
  }
  if (any_comma && group != 3) return "";
  grouped = any_comma;
  if (point != std::string_view::npos) digits += "." + std::string(fraction);
  return digits;
}

// Money as the reports print it: "$1,234.50", "-$5.00", "$-5.00",
// "($5.00)", "$.50", with blanks allowed inside the parentheses. Grouped
// figures with decimals but without a sign ("1,234.50") are money too;
// grouped whole numbers ("1,234") are counts and a plain "12.50" is already
// plain, so both are left alone: a list of IDs such as "100,200,300" must
// not become one number.
std::optional<std::string> Money(std::string_view s) {
  bool negative = false;
  if (s.size() >= 2 && s.front() == '(' && s.back() == ')') {
    negative = true;
    s = Trim(s.substr(1, s.size() - 2));
  }
  bool sign = false;
  if (!s.empty() && s.front() == '-') {
    negative = !negative;
    sign = true;
    s.remove_prefix(1);
  }
  bool dollar = false;
  if (!s.empty() && s.front() == '$') {
    dollar = true;
    s.remove_prefix(1);
  }
  if (dollar && !sign && !s.empty() && s.front() == '-') {
    negative = !negative;
    s.remove_prefix(1);
  }
  if (s.empty()) return std::nullopt;
  // "$.50": a leading point is a zero before it.
  std::string text(s);
  if (text.front() == '.') text.insert(text.begin(), '0');
  bool grouped = false;
  std::string number = PlainNumber(text, grouped);
  if (number.empty()) return std::nullopt;
  const size_t point = number.find('.');
  const size_t decimals = point == std::string::npos ? 0 : number.size() - point - 1;
  if (!dollar && !(grouped && decimals > 0)) return std::nullopt;
  // Two decimals at least; more are kept, since dropping them would change
  // the amount.
  if (point == std::string::npos) number += ".";
  for (size_t d = decimals; d < 2; ++d) number += '0';
  // Leading zeros of the whole part go, but one stays before the point.
  size_t lead = 0;
  while (lead + 1 < number.size() && number[lead] == '0' && number[lead + 1] != '.') ++lead;
  number.erase(0, lead);
  const bool zero =
      std::all_of(number.begin(), number.end(), [](char c) { return c == '0' || c == '.'; });
  return negative && !zero ? "-" + number : number;
}

// Dates in the shapes the reports print them, each with a four-digit year
// so that a code or a count is never taken for one. A month or weekday
// name is any word here; ParseDateText then decides whether it is one.
const std::regex& DateShape() {
  static const std::regex shape(
      // An optional weekday, then month day year: "Nov/20/2026",
      // "November 20, 2026", "Thursday, November 20, 2026", "Nov, 20, 2026".
      R"(^(?:([^\s\d/,.:-]+\.?,?\s+)?[^\s\d/,.:-]+\.?[\s/,-]+\d{1,2},?[\s/,-]+\d{4})"
      // or an optional weekday, then day month year: "20 Nov 2026".
      R"(|(?:[^\s\d/,.:-]+,?\s+)?\d{1,2}[\s-]+[^\s\d/,.:-]+\.?[\s,-]+\d{4})"
      // or numbers: "11/20/2026", "2026-11-20".
      R"(|\d{1,2}/\d{1,2}/\d{4}|\d{4}-\d{1,2}-\d{1,2})"
      // then an optional time: "9:05 AM", "09:05:30".
      R"()(\s+\d{1,2}:\d{2}(:\d{2})?(\s*[AaPp]\.?[Mm]\.?)?)?$)");
  return shape;
}

std::optional<std::string> Date(std::string_view s) {
  std::match_results<std::string_view::const_iterator> m;
  if (!std::regex_match(s.begin(), s.end(), m, DateShape())) return std::nullopt;
  std::optional<DateTime> d = ParseDateText(std::string(s));
  if (!d) return std::nullopt;
  std::string out = d->ToIsoDate();
  if (m[2].matched) {
    // "yyyy-mm-dd hh:nn:ss" cut to the minute unless seconds were printed.
    std::string iso = d->ToIso();
    out = iso.substr(0, m[3].matched ? 19 : 16);
  }
  return out;
}

void AddRecord(std::string& out, const std::vector<std::string>& fields, bool header = false) {
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i) out += ',';
    std::string value = CsvValue(fields[i]);
    // A heading set on two lines ("Patient\nPortion") is one column name
    // to a spreadsheet's filters and formulas.
    if (header) std::replace(value.begin(), value.end(), '\n', ' ');
    out += CsvField(value);
  }
  out += "\r\n";
}

}  // namespace

std::string CsvField(std::string_view value) {
  if (value.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(value);
  std::string out = "\"";
  for (char c : value) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

std::string CsvValue(std::string_view cell) {
  std::string_view s = Trim(cell);
  // A cell of several lines (patient, insurance and total figures stacked
  // in one cell) is text to a spreadsheet; each line is written as a line
  // alone would be, and the breaks become the single LF that spreadsheets
  // write inside a cell.
  if (s.find_first_of("\r\n") != std::string_view::npos) {
    std::string out;
    size_t start = 0;
    while (true) {
      size_t end = s.find_first_of("\r\n", start);
      out += CsvValue(s.substr(start, end == std::string_view::npos ? end : end - start));
      if (end == std::string_view::npos) break;
      out += '\n';
      start = end + (s[end] == '\r' && end + 1 < s.size() && s[end + 1] == '\n' ? 2 : 1);
    }
    return out;
  }
  if (auto money = Money(s)) return *money;
  if (s.size() >= 8 && s.size() <= 48 && std::any_of(s.begin(), s.end(), IsDigit)) {
    if (auto date = Date(s)) return *date;
  }
  return std::string(s);
}

std::string CsvText(const Document& doc) {
  std::string out;
  if (doc.tables.empty()) {
    // A document of free text: its lines as the text output has them,
    // pages one after the other.
    std::string text = DocumentText(doc);
    // Every line ends in a newline; the form feed between pages goes.
    text.erase(std::remove(text.begin(), text.end(), '\f'), text.end());
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find('\n', start);
      if (end == std::string::npos) end = text.size();
      AddRecord(out, {text.substr(start, end - start)});
      start = end + 1;
    }
    return out;
  }
  // By page, so that a box an overlay put on page 1 after the body was laid
  // out reads where it stands; within a page, in the order laid out.
  std::vector<const TableCells*> tables;
  for (const auto& t : doc.tables) tables.push_back(&t);
  std::stable_sort(tables.begin(), tables.end(),
                   [](const TableCells* a, const TableCells* b) { return a->page < b->page; });
  for (size_t i = 0; i < tables.size(); ++i) {
    const TableCells& t = *tables[i];
    // A list drawn one row at a time (a table per patient, under a first
    // row of column heads) reads as the one table it looks like: a table
    // without a header row of its own and with as many columns as the one
    // before continues its block.
    const bool continues = i > 0 && !t.has_header && !t.rows.empty() &&
                           !tables[i - 1]->rows.empty() &&
                           t.rows[0].size() == tables[i - 1]->rows[0].size();
    if (i > 0 && !continues) out += "\r\n";
    for (size_t r = 0; r < t.rows.size(); ++r) AddRecord(out, t.rows[r], r == 0 && t.has_header);
  }
  return out;
}

void WriteCsv(const Document& doc, const std::string& path) {
  const std::string text = CsvText(doc);
  std::filesystem::path target(path);
  std::filesystem::path staged =
      target.parent_path() /
      ("." + target.filename().string() + ".part-" + std::to_string(::getpid()) + ".csv");
  std::error_code ec;
  host::TrackPartialFile(staged.string());
  {
    std::ofstream out(staged, std::ios::binary | std::ios::trunc);
    out << text;
    out.flush();
    if (!out) {
      host::RemovePartialFile(staged.string());
      throw RenderError("Cannot write the CSV file " + path);
    }
  }
  host::RenamePartialFile(staged.string(), target.string(), ec);
  if (ec) {
    host::RemovePartialFile(staged.string());
    throw RenderError("Cannot write the CSV file " + path);
  }
}

}  // namespace orv::render
