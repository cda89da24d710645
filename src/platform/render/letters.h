// A run of letters (statements) written as one PDF per letter, for mailing
// each to its addressee.
//
// The document records where each letter starts and whose account it is
// (Document::letters); the pages of each letter already carry their own
// "Page 1 of 2" and the footer in the letter's language, so a letter's PDF
// is its page range of the whole.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::render {

struct LetterFile {
  std::string name;    // the file name, "1234-Jane_Doe.pdf"
  int first_page = 1;  // the letter's pages in the whole document, from 1
  int last_page = 1;
  int32_t account = 0;
};

// The file name of a letter without its extension: the account number, a
// dash, and the addressee's name in letters and digits only, so that it
// survives mail, zip files and every file system. Accented letters become
// their plain letter ("Hélène" -> "Helene"), apostrophes go ("O'Brien" ->
// "OBrien"), and every other run of characters becomes one "_" ("Mary Ann
// Smith-Jones" -> "Mary_Ann_Smith_Jones"); the name part is cut at 60
// characters. A letter without a name is its account number alone.
std::string LetterFileStem(int32_t account, const std::string& name);

// The files of the document's letters in page order; empty when it has
// none. Two letters that would share a name (one account addressed twice
// in a run; names equal but for case, which a zip file or a Windows folder
// cannot keep apart) are told apart by "-2", "-3", ... after the stem, in
// page order.
std::vector<LetterFile> LetterFiles(const Document& doc);

// Writes each letter as a PDF of its own into `folder` (made if missing),
// every file under a temporary name first and renamed once all are
// complete, so that a failure leaves no partial set. Returns the paths
// written, in page order. Raises RenderError when the document has no
// letters or a file cannot be written.
std::vector<std::string> WriteLetterPdfs(const Document& doc, const std::string& folder);

}  // namespace orv::render
