// Fee-code ranges: how every production and closing report decides whether
// a treatment line's code lies between two codes.
//
// Codes are text of five digits; a reversal line carries the same code with
// a leading "-" ("-01101" reverses "01101"). The front desk reads a range
// such as 01000-09999 as "these procedures and their reversals": a
// reversed 01101 belongs wherever 01101 does. Compared as plain text a
// leading "-" sorts before every digit, so "-01101" would fall outside
// every range and a reversal would never cancel its fee. Every range test
// of the reports is therefore made here, in SQL and in C++ alike, and both
// take a code with its reversal sign set aside:
//   "01101" and "-01101" are in 01000-09999;
//   "-00100" is in 00000-00299 (the reports that leave it out say so with
//   their own "Code <> '-00100'").
#pragma once

#include <string>
#include <string_view>

namespace orv::closing {

// The whole range of the production reports.
inline constexpr const char* kFirstCode = "00000";
inline constexpr const char* kLastCode = "99999";

// A range as the reports take it: the start and end code. An empty start
// means "00000" and an empty end "99999", so an empty range is every code.
struct CodeRange {
  std::string from;
  std::string to;
};

// The range with its defaults filled in and each code as the user typed it
// checked: up to five digits, padded on the left with zeros ("1000" is
// 01000). Throws std::invalid_argument naming the bad code, or a range whose
// start comes after its end.
CodeRange NormaliseCodeRange(std::string_view from, std::string_view to);

// The SQL condition that `column` lies in the range, reversals included:
// "((Code >= '01000' AND Code <= '09999') OR (Code >= '-01000' AND Code <=
// '-09999'))". Both halves are plain range tests on the column, so the
// engine can use an index on it. The codes go in as quoted text, with any
// quote doubled.
std::string CodeRangeCondition(std::string_view column, const CodeRange& range);

// The same test on a code in hand, for rows already read.
bool CodeInRange(std::string_view code, const CodeRange& range);

// The code without its reversal sign: "01101" for "-01101" and "01101".
std::string_view PositiveCode(std::string_view code);

// A reversal line: its code starts with "-". It adds its (negative) fee to
// the sums but is not a procedure of its own.
inline bool IsReversal(std::string_view code) { return !code.empty() && code.front() == '-'; }

// A laboratory fee: code "99..." or, reversed, "-99...".
inline bool IsLabCode(std::string_view code) {
  return code.substr(0, 2) == "99" || code.substr(0, 3) == "-99";
}

}  // namespace orv::closing
