// A small deterministic generator (splitmix64 seeding xoshiro256**), so the
// demo practice is the same on every platform and library version; the
// standard distributions are not, and are not used.
#pragma once

#include <cstdint>
#include <string_view>

namespace orv::practice {

class Random {
 public:
  explicit Random(uint64_t seed) {
    for (auto& s : state_) s = SplitMix(seed);
  }

  uint64_t Next() {
    const uint64_t result = Rotl(state_[1] * 5, 7) * 9;
    const uint64_t t = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= t;
    state_[3] = Rotl(state_[3], 45);
    return result;
  }

  // Uniform in [lo, hi], both ends included; lo when hi < lo.
  int64_t Range(int64_t lo, int64_t hi) {
    if (hi <= lo) return lo;
    const uint64_t span = static_cast<uint64_t>(hi - lo) + 1;
    return lo + static_cast<int64_t>(Next() % span);
  }

  // True with the given chance in percent.
  bool Percent(int chance) { return Range(0, 99) < chance; }

  template <typename T, size_t N>
  const T& Pick(const T (&items)[N]) {
    return items[Range(0, N - 1)];
  }

 private:
  static uint64_t SplitMix(uint64_t& x) {
    uint64_t z = (x += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  static uint64_t Rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }

  uint64_t state_[4];
};

}  // namespace orv::practice
