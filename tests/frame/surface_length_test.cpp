#include <gtest/gtest.h>

#include "frame/surface/color.h"
#include "frame/surface/length.h"
#include "frame/surface/surface_error.h"

namespace orv::frame {
namespace {

TEST(SurfaceLength, UnitStringsAndNumbersAreTwips) {
  struct Case {
    const char* text;
    double twips;
  } cases[] = {
      {"1in", 1440}, {"0.89in", 1281.6}, {"0in", 0},         {".8In", 1152}, {"1.3cm", 737.00787},
      {"1CM", 566.92913}, {"0", 0},     {"300", 300}, {" .2in ", 288},   {"-.5in", -720},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(ParseLength(c.text).value(), c.twips, 1e-4) << c.text;
  }
  EXPECT_EQ(Length(std::string("0.2in")).twips(), Twips(288));
}

TEST(SurfaceLength, UnusableStringsRaiseAReportError) {
  for (const char* bad : {"", "in", "abc", "1 in", "1inch", "1.2.3in", "1mm", "--1in", "1e3"}) {
    try {
      ParseLength(bad);
      ADD_FAILURE() << "accepted \"" << bad << "\"";
    } catch (const ReportError& e) {
      EXPECT_EQ(e.number(), kErrInvalidProcedureCall);
      EXPECT_NE(std::string(e.what()).find(bad), std::string::npos) << e.what();
    }
  }
}

TEST(SurfaceColor, LowByteIsRedAndSystemColoursAreGreys) {
  struct Case {
    uint32_t value;
    render::Rgb rgb;
  } cases[] = {
      {0, {0, 0, 0}},
      {16777215, {255, 255, 255}},
      {255, {255, 0, 0}},
      {12169126, {166, 175, 185}},
      {RGB(1, 2, 3), {1, 2, 3}},
      {2147483663u, {212, 212, 212}},
      {2147483664u, {128, 128, 128}},
  };
  for (const auto& c : cases) EXPECT_EQ(ToRgb(c.value), c.rgb) << c.value;
}

}  // namespace
}  // namespace orv::frame
