// A document for the renderers' tests: two pages of two sizes holding every
// kind of item they paint, in Tahoma as the reports set it.
#pragma once

#include <memory>
#include <string>

#include "platform/render/display_list.h"

namespace orv::render {

inline constexpr const char* kTahoma = "/usr/share/wine/fonts/tahoma.ttf";

// A run of 12-point text at (x, top) in twips, 2,000 twips wide.
inline TextRun At(std::string text, double x, double top, uint16_t font = 0) {
  TextRun r;
  r.text = std::move(text);
  r.font = font;
  r.size_pt = 12;
  r.x = Twips(x);
  r.top = Twips(top);
  r.baseline = Twips(top + 240);
  r.width = Twips(2000);
  return r;
}

inline Document SampleDocument() {
  Document d;
  d.name = "Relev\xC3\xA9 de compte";
  d.identity.method = "rptStatements";
  d.identity.arguments = {{"PatientIDs", "12"}};
  d.identity.user = "desk";
  d.identity.today = "2026-11-20";
  d.identity.program = "orvenda-reports";
  d.identity.version = "0.1";
  d.fonts.push_back({"Tahoma", kTahoma, false, false, false, false});
  d.fonts.push_back({"Tahoma", kTahoma, true, false, true, false});  // emboldened
  Page p1{Twips(12240), Twips(15840), {}};
  p1.items.push_back(At("\xC3\x89tat de compte", 1440, 1440, 1));
  p1.items.push_back(At("D\xC3\xA9p\xC3\xB4t \xC3\xA0 la banque", 1440, 2000));
  TextRun underlined = At("Balance due", 6000, 2000);
  underlined.underline = true;
  p1.items.push_back(underlined);
  // A run clipped to its left half: "Visible" shows, "Hiddenpart" lies
  // past the clip.
  TextRun clipped = At("Visible Hiddenpart", 1440, 3000);
  clipped.clip = Box{Twips(1440), Twips(3000), Twips(900), Twips(300)};
  p1.items.push_back(clipped);
  TextRun turned = At("Upwards", 9000, 9000);
  turned.angle = 900;
  p1.items.push_back(turned);
  p1.items.push_back(Line{Twips(1440), Twips(2500), Twips(10800), Twips(2500), Twips(0), {}, true});
  auto logo = std::make_shared<Image>();
  logo->width = 2;
  logo->height = 2;
  logo->pixels = {0xFFFF0000u, 0x80008000u, 0xFF0000FFu, 0x00000000u};
  p1.items.push_back(Picture{{Twips(1440), Twips(4000), Twips(1440), Twips(1440)}, logo});
  Page p2{Twips(15840), Twips(12240), {}};
  p2.items.push_back(At("Second page", 1440, 1440));
  p2.items.push_back(Picture{{Twips(1440), Twips(4000), Twips(1440), Twips(1440)}, logo});
  d.pages = {p1, p2};
  return d;
}

}  // namespace orv::render
