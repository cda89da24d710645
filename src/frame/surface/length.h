// Lengths as the reports write them: a number of twips, or a string such as
// ".5in", "0.89in", "1.3cm", "0in" (unit in any case), or a digit string
// without a unit, which is twips.
#pragma once

#include <string>
#include <string_view>

#include "platform/render/twips.h"

namespace orv::frame {

// Parses a length string; throws SurfaceError for anything else, naming the
// string.
Twips ParseLength(std::string_view text);

// Accepts every form a report passes where the surface takes a length.
class Length {
 public:
  Length(Twips t) : twips_(t) {}
  Length(double twips) : twips_(twips) {}
  Length(int twips) : twips_(twips) {}
  Length(long twips) : twips_(double(twips)) {}
  Length(long long twips) : twips_(double(twips)) {}
  Length(const char* text) : twips_(ParseLength(text)) {}
  Length(const std::string& text) : twips_(ParseLength(text)) {}
  Length(std::string_view text) : twips_(ParseLength(text)) {}

  Twips twips() const { return twips_; }
  operator Twips() const { return twips_; }

 private:
  Twips twips_;
};

}  // namespace orv::frame
