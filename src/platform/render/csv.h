// The tables of a document as CSV, for a spreadsheet.
//
// One block per table, in the order the document reads (by page, then as
// laid out), a blank line between blocks; each block is the table's header
// row, when it has one, then its body rows. A table without a header row
// and with as many columns as the table before it continues that block,
// so a list drawn as one small table per row reads as one table. Fields are quoted as RFC 4180
// asks (a field holding a comma, a double quote or a line break is put in
// double quotes, its quotes doubled); records end with CRLF. Money is
// written as a plain number with two decimals, dates as yyyy-mm-dd
// (CsvValue). A document without tables is written as its text lines, one
// field per line.
#pragma once

#include <string>
#include <string_view>

#include "platform/render/display_list.h"

namespace orv::render {

// The CSV of `doc`, as WriteCsv writes it.
std::string CsvText(const Document& doc);

// Writes CsvText(doc) to `path` under a temporary name beside it, renamed
// to `path` once complete, so a failed write leaves what stood there.
// Raises RenderError when the file cannot be written.
void WriteCsv(const Document& doc, const std::string& path);

// One cell's text as a spreadsheet should read it:
//   "$1,234.50" -> "1234.50", "($5.00)" and "-$5.00" -> "-5.00", "$12" ->
//   "12.00"; "1,234.50" (grouped, with decimals) -> "1234.50";
//   "Nov/20/2026", "Nov/2/2026", "November 20, 2026", "Thursday November 20,
//   2026", "20 Nov 2026", "11/20/2026" -> "2026-11-20", with a time after
//   the date -> "2026-11-20 09:05" (seconds when printed);
//   a cell of several lines line by line, joined by LF ("$1.00\r\n$2.00"
//   -> "1.00\n2.00");
//   anything else, trimmed of the blanks around it, as it stands.
std::string CsvValue(std::string_view cell);

// One field as RFC 4180 writes it.
std::string CsvField(std::string_view value);

}  // namespace orv::render
