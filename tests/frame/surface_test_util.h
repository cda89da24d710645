// Readers of the print surface's display list, and the set-up the surface tests share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/surface/surface.h"

namespace orv::frame::testing {

// The items of one kind on a page, in drawing order.
template <class Item>
std::vector<Item> ItemsOf(const render::Page& page) {
  std::vector<Item> out;
  for (const auto& item : page.items)
    if (auto i = std::get_if<Item>(&item)) out.push_back(*i);
  return out;
}

inline std::vector<render::TextRun> Runs(const render::Page& page) { return ItemsOf<render::TextRun>(page); }
inline std::vector<render::Line> Lines(const render::Page& page) { return ItemsOf<render::Line>(page); }
inline std::vector<render::FilledRect> Fills(const render::Page& page) { return ItemsOf<render::FilledRect>(page); }

inline std::vector<std::string> Texts(const render::Page& page) {
  std::vector<std::string> out;
  for (const auto& r : Runs(page)) out.push_back(r.text);
  return out;
}

// The first run whose text is `text`; fails the test if there is none.
inline render::TextRun RunOf(const render::Page& page, const std::string& text) {
  for (const auto& r : Runs(page))
    if (r.text == text) return r;
  ADD_FAILURE() << "no run \"" << text << "\" on the page";
  return {};
}

// A surface with a document open on letter paper, Tahoma 10 point.
inline void Open(PrintSurface& s) {
  s.FontName("Tahoma");
  s.FontSize(10);
  s.StartDoc();
}

// A print surface that starts with its document open, as Open leaves it.
struct OpenSurface : PrintSurface {
  OpenSurface() { Open(*this); }
};

// The footer the reports stamp on every page once the body is laid out:
// the date left, who printed it centred, "Page p of n" right.
inline void StampFooters(PrintSurface& s, const std::string& printed_by) {
  for (int p = 1; p <= s.PageCount(); ++p) {
    s.StartOverlay(p, false);
    EXPECT_EQ(s.CurrentPage(), p) << "an overlay draws on its own page";
    s.CurrentY(s.PageHeight() - s.MarginBottom());
    s.FontSize(8);
    s.CurrentX(s.MarginLeft());
    s.TextAlign(0);
    s.InlineText("Nov/23/2026");
    s.TextAlign(1);
    s.InlineText(printed_by);
    s.TextAlign(2);
    s.InlineText("Page " + std::to_string(p) + " of " + std::to_string(s.PageCount()));
    s.EndOverlay();
  }
}

}  // namespace orv::frame::testing
