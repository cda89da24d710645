#include "platform/render/document_record.h"

#include <limits>
#include <stdexcept>

namespace orv::render {

CellRows::CellRows(std::initializer_list<std::initializer_list<std::string_view>> rows) {
  for (const auto& row : rows) {
    AddRow();
    for (const std::string_view cell : row) AddCell(cell);
  }
}

void CellRows::AddCell(std::string_view text) {
  // Offsets are 32 bits: four gigabytes of text in one table is far past
  // any document the surface could lay out.
  if (text_.size() + text.size() > std::numeric_limits<uint32_t>::max())
    throw std::length_error("a table's cells hold more text than a document can");
  cells_.emplace_back(uint32_t(text_.size()), uint32_t(text.size()));
  text_.append(text);
}

void CellRows::SetText(size_t r, size_t c, std::string_view text) {
  if (text_.size() + text.size() > std::numeric_limits<uint32_t>::max())
    throw std::length_error("a table's cells hold more text than a document can");
  cells_[row_starts_[r] + c] = {uint32_t(text_.size()), uint32_t(text.size())};
  text_.append(text);
}

bool operator==(const CellRows& a, const CellRows& b) {
  if (a.size() != b.size()) return false;
  for (size_t r = 0; r < a.size(); ++r) {
    if (a.Columns(r) != b.Columns(r)) return false;
    for (size_t c = 0; c < a.Columns(r); ++c)
      if (a.Text(r, c) != b.Text(r, c)) return false;
  }
  return true;
}

bool operator==(const CellRows& a, const std::vector<std::vector<std::string>>& b) {
  if (a.size() != b.size()) return false;
  for (size_t r = 0; r < a.size(); ++r) {
    if (a.Columns(r) != b[r].size()) return false;
    for (size_t c = 0; c < b[r].size(); ++c)
      if (a.Text(r, c) != b[r][c]) return false;
  }
  return true;
}

}  // namespace orv::render
