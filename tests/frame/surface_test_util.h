// Readers of the print surface's display list for the surface tests.
#pragma once

#include <string>
#include <vector>

#include "frame/surface/surface.h"

namespace orv::frame::testing {

inline std::vector<render::TextRun> Runs(const render::Page& page) {
  std::vector<render::TextRun> out;
  for (const auto& item : page.items)
    if (auto t = std::get_if<render::TextRun>(&item)) out.push_back(*t);
  return out;
}

inline std::vector<render::Line> Lines(const render::Page& page) {
  std::vector<render::Line> out;
  for (const auto& item : page.items)
    if (auto l = std::get_if<render::Line>(&item)) out.push_back(*l);
  return out;
}

inline std::vector<render::FilledRect> Fills(const render::Page& page) {
  std::vector<render::FilledRect> out;
  for (const auto& item : page.items)
    if (auto f = std::get_if<render::FilledRect>(&item)) out.push_back(*f);
  return out;
}

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

}  // namespace orv::frame::testing
