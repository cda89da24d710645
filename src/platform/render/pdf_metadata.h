// The document information a PDF carries: its title and who made it, with
// what and how, so that a printed day-end can be traced and run again.
//
// A PDF's information dictionary has a few named entries and readers show
// them as they are ("pdfinfo", a viewer's document properties). The
// identity goes into them like this:
//   Title     the document's name ("Aged Receivables")
//   Author    the signed-in user
//   Subject   the method and its arguments as given, by parameter name:
//             "rptStatements(dtStart=2026-11-01, dtEnd=2026-11-30,
//             PatientIDs=12, Family=True)"
//   Keywords  the rest of the run's setting, "name=value" separated by
//             "; ": "today=2026-11-20; database=sqlite:out/demo.db;
//             user=desk; office=1; version=0.1"
//   Creator   the program and its version, "orvenda-reports 0.1"
// A value that holds its list's separator, a parenthesis, a double quote
// or blanks at an end is put in double quotes with its quotes doubled, so
// that the text reads back into the same values.
#pragma once

#include <string>

#include "platform/render/display_list.h"

namespace orv::render {

struct PdfMetadata {
  std::string title, author, subject, keywords, creator;
};

// The entries for `doc`; an entry with nothing to say is empty.
PdfMetadata MetadataOf(const Document& doc);

}  // namespace orv::render
