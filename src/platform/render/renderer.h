// Painting the print surface's display list: a PDF file of a document or a
// range of its pages, and a PNG of one page through cairo.
//
// The renderers only paint. Positions, line breaks and page breaks were all
// settled by the layout; text is drawn with the same font files the layout
// measured, without hinting or kerning, so it lands where it was measured.
#pragma once

#include <string>
#include <vector>

#include "common/errors.h"
#include "platform/render/display_list.h"

namespace orv::render {

class RenderError : public ReportError {
 public:
  explicit RenderError(const std::string& what) : ReportError(kErrInvalidProcedureCall, what) {}
};

// Writes pages `first` to `last` (from 1; 0 as `last` means the last page) of
// `doc` to a PDF file, one PDF page per page at its own size, with the
// program's own writer (pdf_renderer.h); ORVENDA_PDF_ENGINE=cairo in the
// environment writes it through cairo's PDF surface instead.
void RenderPdf(const Document& doc, const std::string& path, int first = 1, int last = 0);

// Where the renderers set the glyphs of `run`, in points from the page's
// left edge: the start of each glyph, then the end of the last one. Both
// renderers use these positions, so a test can hold them to the layout's.
std::vector<double> GlyphEdges(const Document& doc, const TextRun& run);

// Writes page `page` (from 1) of `doc` to a PNG file at `dpi` dots per inch
// on a white ground.
void RenderPng(const Document& doc, int page, double dpi, const std::string& path);

}  // namespace orv::render
