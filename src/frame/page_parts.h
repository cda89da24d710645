// A document printed as several letters one after the other (a run of
// statements): each letter's pages are numbered within it, "Page 1 of 2",
// and each letter's footer has its own text, in its own language.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/render/document_record.h"

namespace orv::frame {

// One letter of a document: its first page (from 1) and the text centred in
// the footer of each of its pages. A letter runs to the page before the next
// letter's first page, the last one to the end of the document.
struct DocumentPart {
  int first_page = 1;
  std::string footer;
  // Whose letter it is, for writing each letter to a file of its own: the
  // addressee's patient ID (0: the part is no one's letter) and name.
  int32_t account = 0;
  std::string name;
};

// The parts that are someone's letter, as the document records them.
inline std::vector<render::Letter> LettersOf(const std::vector<DocumentPart>& parts) {
  std::vector<render::Letter> letters;
  for (const DocumentPart& p : parts)
    if (p.account != 0) letters.push_back({p.first_page, p.account, p.name});
  return letters;
}

// Where one page stands within its letter.
struct PagePlace {
  int number = 1;                      // the page within its letter, from 1
  int count = 1;                       // the pages of its letter
  const DocumentPart* part = nullptr;  // null before the first letter
};

// The place of `page` (from 1) in a document of `page_count` pages whose
// letters are `parts`, in page order. Pages before the first letter are
// numbered as one letter of their own, with no part.
inline PagePlace PlaceOfPage(int page, int page_count, const std::vector<DocumentPart>& parts) {
  PagePlace place;
  int first = 1, next = page_count + 1;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (parts[i].first_page > page) {
      next = parts[i].first_page;
      break;
    }
    first = parts[i].first_page;
    place.part = &parts[i];
  }
  place.number = page - first + 1;
  place.count = next - first;
  return place;
}

}  // namespace orv::frame
