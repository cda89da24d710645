// Data that holds the separators of the table language ("|" between cells,
// ";" between rows), and the check that a document printed it inside one
// cell: the value stands whole in one text run and none of its pieces forms
// a cell or a row of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::testing {

// A last name built to forge a row, and a street with a separator in it.
inline constexpr const char* kForgedLastName = "Smith;Evil|9999|Row";
inline constexpr const char* kForgedStreet = "12 Main St; Apt 4";

// Every run of `doc` whose text is exactly `text` (or, with `within`,
// holds it), in page order.
inline std::vector<render::TextRun> RunsOf(const render::Document& doc, const std::string& text,
                                           bool within = false) {
  std::vector<render::TextRun> runs;
  for (const render::Page& page : doc.pages) {
    for (const render::DisplayItem& item : page.items) {
      const auto* run = std::get_if<render::TextRun>(&item);
      if (run != nullptr && (within ? run->text.find(text) != std::string::npos : run->text == text))
        runs.push_back(*run);
    }
  }
  return runs;
}

// `value` printed whole, in one cell: one run holds its text, and the
// pieces between its separators never stand alone as cells.
inline void ExpectWholeCell(const render::Document& doc, const std::string& value,
                            const std::string& report) {
  EXPECT_FALSE(RunsOf(doc, value, true).empty()) << report << ": \"" << value << "\" is not one cell";
  size_t start = 0;
  while (start <= value.size()) {
    size_t end = value.find_first_of("|;", start);
    if (end == std::string::npos) end = value.size();
    const std::string piece = value.substr(start, end - start);
    if (!piece.empty() && piece != value) {
      EXPECT_TRUE(RunsOf(doc, piece).empty()) << report << ": \"" << piece << "\" stands as its own cell";
    }
    start = end + 1;
  }
}

}  // namespace orv::testing
