// What a document carries besides its pages: the cells of its tables, the
// letters a run of statements is made of, and who made it with what.
//
// The surface fills the first two as it lays the document out; the host
// sets the identity before the run. The CSV writer reads the tables, the
// one-file-per-letter writer the letters, and the PDF renderer writes the
// identity into the file's metadata.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orv::render {

// One table as the report handed it to the surface: every cell's text
// before layout (escaped separators already turned back into "|" and ";",
// line breaks kept), the header row first when the table has one.
struct TableCells {
  int page = 1;  // the page it was laid out from, from 1
  bool has_header = false;
  std::vector<std::vector<std::string>> rows;
};

// One letter of a document printed as several (a statement of a run): its
// first page and whose account it is. It runs to the page before the next
// letter's first page, the last one to the end of the document.
struct Letter {
  int first_page = 1;
  int32_t account = 0;  // the addressee's patient ID
  std::string name;     // the addressee's name as printed, "First Last"
};

// Who made the document and how to make it again. Every item is text as
// the person would type it back; an empty item is left out of the file.
struct DocumentIdentity {
  std::string method;  // "rptAgedReceivables"
  // The method's arguments in signature order, by parameter name, as given.
  std::vector<std::pair<std::string, std::string>> arguments;
  std::string database;  // where it ran, never with a password in it
  std::string today;     // the day the run took as today, yyyy-mm-dd
  std::string user;      // the signed-in user
  std::string office;    // the office the run was for
  std::string version;   // the program's version
  std::string program;   // the program that made it, "orvenda-reports"
};

}  // namespace orv::render
