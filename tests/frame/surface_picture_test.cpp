#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"
#include "platform/render/renderer.h"
#include "support/shell.h"

namespace orv::frame {
namespace {

namespace fs = std::filesystem;

std::string Temp(const std::string& name) {
  return orv::testing::TempPath("orv_picture_", name);
}

// A 40 x 20 picture, left half red and right half blue.
void WritePng(const std::string& path) {
  cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 40, 20);
  cairo_t* cr = cairo_create(s);
  cairo_set_source_rgb(cr, 1, 0, 0);
  cairo_rectangle(cr, 0, 0, 20, 20);
  cairo_fill(cr);
  cairo_set_source_rgb(cr, 0, 0, 1);
  cairo_rectangle(cr, 20, 0, 20, 20);
  cairo_fill(cr);
  cairo_destroy(cr);
  cairo_surface_write_to_png(s, path.c_str());
  cairo_surface_destroy(s);
}

uint32_t Rgb(const render::Image& img, int x, int y) {
  return img.pixels[size_t(y) * img.width + x] & 0xFFFFFF;
}

TEST(SurfacePicture, PngAndJpegDecodeToTheSamePixels) {
  const std::string png = Temp("office.png");
  WritePng(png);
  const PictureImage a = LoadPicture(png);
  ASSERT_EQ(a->width, 40);
  ASSERT_EQ(a->height, 20);
  EXPECT_EQ(Rgb(*a, 5, 10), 0xFF0000u);
  EXPECT_EQ(Rgb(*a, 35, 10), 0x0000FFu);

  // A JPEG of the same picture, made by poppler from a one-page PDF of it.
  PrintSurface s;
  s.StartDoc();
  s.PictureLeft(0);
  s.PictureTop(0);
  s.PictureRight(s.PageWidth());
  s.PictureBottom(s.PageHeight());
  s.Picture(a);
  s.EndDoc();
  const std::string pdf = Temp("office.pdf"), jpg_base = Temp("office");
  render::RenderPdf(s.Document(), pdf);
  ASSERT_EQ(std::system(("pdftoppm -jpeg -r 10 -singlefile " + pdf + " " + jpg_base).c_str()), 0);
  const PictureImage b = LoadPicture(jpg_base + ".jpg");
  EXPECT_EQ(b->width, 85);  // 8.5 in at 10 dpi
  EXPECT_EQ(b->height, 110);
  const uint32_t left = Rgb(*b, 20, 55), right = Rgb(*b, 65, 55);
  EXPECT_GT(left >> 16 & 0xFF, 200u) << std::hex << left;
  EXPECT_LT(left & 0xFF, 60u) << std::hex << left;
  EXPECT_GT(right & 0xFF, 200u) << std::hex << right;
  for (const auto& f : {png, pdf, jpg_base + ".jpg"}) fs::remove(f);
}

TEST(SurfacePicture, UnreadableFilesRaise) {
  struct Case {
    const char* name;
    std::string bytes;
  } cases[] = {
      {"empty", ""},
      {"text", "not a picture"},
      {"truncated JPEG", std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF", 10)},
      {"truncated PNG", std::string("\x89PNG\r\n\x1a\n\x00\x00", 10)},
  };
  for (const auto& c : cases) {
    const std::string path = Temp("bad");
    std::ofstream(path, std::ios::binary) << c.bytes;
    EXPECT_THROW(LoadPicture(path), SurfaceError) << c.name;
    fs::remove(path);
  }
  EXPECT_THROW(LoadPicture("/nonexistent/OfficePicture.jpg"), SurfaceError);
}

}  // namespace
}  // namespace orv::frame
