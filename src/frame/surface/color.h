// Colours as the reports pass them: a 32-bit value with red in the low byte,
// green next and blue above. A value with the high bit set names a system
// colour; the two that reports use map to fixed greys.
#pragma once

#include <cstdint>

#include "platform/render/display_list.h"

namespace orv::frame {

constexpr uint32_t kSystemButtonFace = 0x8000000F;    // 2147483663
constexpr uint32_t kSystemButtonShadow = 0x80000010;  // 2147483664

// Reports build colours with the host language's RGB function.
constexpr uint32_t RGB(int r, int g, int b) {
  return uint32_t(r & 0xFF) | uint32_t(g & 0xFF) << 8 | uint32_t(b & 0xFF) << 16;
}

constexpr render::Rgb ToRgb(uint32_t color) {
  if (color == kSystemButtonFace) return {212, 212, 212};
  if (color == kSystemButtonShadow) return {128, 128, 128};
  // Other system colours have no meaning on paper; they print as text
  // colour does by default.
  if (color & 0x80000000u) return {0, 0, 0};
  return {uint8_t(color & 0xFF), uint8_t(color >> 8 & 0xFF), uint8_t(color >> 16 & 0xFF)};
}

}  // namespace orv::frame
