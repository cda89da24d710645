#include "frame/surface/length.h"

#include <cctype>
#include <charconv>

#include "frame/surface/surface_error.h"

namespace orv::frame {

Twips ParseLength(std::string_view text) {
  const std::string_view original = text;
  auto bad = [&]() { return SurfaceError("Invalid length: \"" + std::string(original) + "\""); };
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
    text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
    text.remove_suffix(1);

  double per_unit = 1.0;  // no unit: twips
  auto ends_with_unit = [&](std::string_view unit) {
    if (text.size() < unit.size()) return false;
    for (size_t k = 0; k < unit.size(); ++k)
      if (std::tolower(static_cast<unsigned char>(text[text.size() - unit.size() + k])) != unit[k])
        return false;
    return true;
  };
  if (ends_with_unit("in")) {
    per_unit = Twips::kPerInch;
    text.remove_suffix(2);
  } else if (ends_with_unit("cm")) {
    per_unit = Twips::kPerCm;
    text.remove_suffix(2);
  }
  // The number stands directly before the unit: "0.5 in" is not a length.
  if (text.empty() || std::isspace(static_cast<unsigned char>(text.back()))) throw bad();

  bool negative = false;
  if (text.front() == '-') {
    negative = true;
    text.remove_prefix(1);
  }
  if (text.empty() ||
      !(std::isdigit(static_cast<unsigned char>(text.front())) || text.front() == '.'))
    throw bad();
  // from_chars takes neither a sign nor a leading "." without a digit before
  // it; a leading zero makes ".5" readable. Other numbers are read where
  // they stand: a sheet of labels gives thousands of positions.
  std::string with_zero;
  std::string_view digits = text;
  if (text.front() == '.') digits = with_zero.append("0").append(text);
  double value = 0;
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                   std::chars_format::fixed);
  if (ec != std::errc() || end != digits.data() + digits.size()) throw bad();
  return Twips((negative ? -value : value) * per_unit);
}

}  // namespace orv::frame
