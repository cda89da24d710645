#include "platform/render/renderer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/render/sample_document.h"
#include "support/shell.h"

namespace orv::render {
namespace {

namespace fs = std::filesystem;

using orv::testing::Shell;

std::string TempPath(const std::string& name) {
  return orv::testing::TempPath("orv_render_", name);
}

TEST(Renderer, PngHasThePageSizeAtTheResolution) {
  const Document d = SampleDocument();
  const std::string png = TempPath("page1.png");
  RenderPng(d, 1, 96, png);
  std::ifstream in(png, std::ios::binary);
  char head[24];
  ASSERT_TRUE(in.read(head, sizeof head));
  auto be32 = [&](int at) {
    return uint32_t(uint8_t(head[at])) << 24 | uint32_t(uint8_t(head[at + 1])) << 16 |
           uint32_t(uint8_t(head[at + 2])) << 8 | uint8_t(head[at + 3]);
  };
  EXPECT_EQ(std::string(head + 1, 3), "PNG");
  EXPECT_EQ(be32(16), 816u);   // 8.5 in at 96 dpi
  EXPECT_EQ(be32(20), 1056u);  // 11 in
  fs::remove(png);
}

TEST(Renderer, BadRequestsRaiseAndWriteNothing) {
  const Document d = SampleDocument();
  Document bad_font = d;
  bad_font.pages[0].items.push_back(At("x", 0, 0, 7));
  Document missing_file = d;
  missing_file.fonts[0].file = "/nonexistent/font.ttf";
  struct Case {
    const char* name;
    std::function<void()> call;
  } cases[] = {
      {"page 0", [&] { RenderPng(d, 0, 96, TempPath("x.png")); }},
      {"page past the end", [&] { RenderPng(d, 3, 96, TempPath("x.png")); }},
      {"zero dpi", [&] { RenderPng(d, 1, 0, TempPath("x.png")); }},
      {"range reversed", [&] { RenderPdf(d, TempPath("x.pdf"), 2, 1); }},
      {"range past the end", [&] { RenderPdf(d, TempPath("x.pdf"), 1, 3); }},
      {"empty document", [&] { RenderPdf(Document{}, TempPath("x.pdf")); }},
      {"unknown font index", [&] { RenderPdf(bad_font, TempPath("x.pdf")); }},
      {"missing font file", [&] { RenderPng(missing_file, 1, 72, TempPath("x.png")); }},
      {"unwritable path", [&] { RenderPng(d, 1, 72, "/nonexistent/dir/x.png"); }},
  };
  for (const auto& c : cases) {
    EXPECT_THROW(c.call(), ReportError) << c.name;
  }
  fs::remove(TempPath("x.png"));
  fs::remove(TempPath("x.pdf"));
}

}  // namespace
}  // namespace orv::render
