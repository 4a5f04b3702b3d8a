// The segment: everything in the Engine runs over stretches of at most sixteen samples, cut at events.
#pragma once

#include "engine/dsp/F4.h"

namespace synth::dsp {

inline constexpr int segment = 16;

// One signal over a segment. Passes may compute all sixteen; what lies past the segment's end is unused.
struct alignas(16) Block {
  float v[segment];

  float& operator[](int i) { return v[i]; }
  float operator[](int i) const { return v[i]; }
  f4 at(int quad) const { return *reinterpret_cast<const f4*>(v + 4 * quad); }
  void put(int quad, f4 x) { *reinterpret_cast<f4*>(v + 4 * quad) = x; }
  void fill(float x) {
    for (int q = 0; q < segment / 4; q++) put(q, splat(x));
  }
};

inline constexpr int quads(int n) { return (n + 3) / 4; }

// Whether the first n samples are all exactly 0.
inline bool silent(const Block& b, int n) {
  for (int i = 0; i < n; i++)
    if (b[i] != 0) return false;
  return true;
}

}  // namespace synth::dsp
