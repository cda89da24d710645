// The text of a document as a reader takes it in, line by line.
#pragma once

#include <string>

#include "platform/render/display_list.h"

namespace orv::render {

// The text of a document, page by page: each line of text runs that share a
// baseline, left to right, pages separated by a form feed. What the ".txt"
// output holds and what tests read.
std::string DocumentText(const Document& doc);

}  // namespace orv::render
