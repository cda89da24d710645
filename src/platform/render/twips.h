// Twips: the length unit of the print surface, 1,440 to the inch.
//
// A strong type so that twips never mix with points, pixels or inches by
// accident. The value is a double because unit strings such as ".001in" give
// fractions of a twip; everything the reports read back is twips.
#pragma once

#include <compare>

namespace orv {

class Twips {
 public:
  static constexpr double kPerInch = 1440.0;
  static constexpr double kPerPoint = 20.0;
  static constexpr double kPerCm = 1440.0 / 2.54;

  constexpr Twips() = default;
  constexpr explicit Twips(double value) : value_(value) {}

  static constexpr Twips Inches(double in) { return Twips(in * kPerInch); }
  static constexpr Twips Points(double pt) { return Twips(pt * kPerPoint); }

  constexpr double value() const { return value_; }
  constexpr double points() const { return value_ / kPerPoint; }
  constexpr double inches() const { return value_ / kPerInch; }

  constexpr Twips operator-() const { return Twips(-value_); }
  constexpr Twips& operator+=(Twips o) {
    value_ += o.value_;
    return *this;
  }
  constexpr Twips& operator-=(Twips o) {
    value_ -= o.value_;
    return *this;
  }
  friend constexpr Twips operator+(Twips a, Twips b) { return Twips(a.value_ + b.value_); }
  friend constexpr Twips operator-(Twips a, Twips b) { return Twips(a.value_ - b.value_); }
  friend constexpr Twips operator*(Twips a, double k) { return Twips(a.value_ * k); }
  friend constexpr Twips operator*(double k, Twips a) { return Twips(a.value_ * k); }
  friend constexpr Twips operator/(Twips a, double k) { return Twips(a.value_ / k); }
  friend constexpr auto operator<=>(Twips a, Twips b) = default;

 private:
  double value_ = 0;
};

}  // namespace orv
