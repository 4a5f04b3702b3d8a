// The segment: everything in the Engine runs over stretches of at most sixteen samples, cut at events.
#pragma once

#include <cstdint>

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

// All bits where sample `4 * quad + k` lies within the first n.
inline i4 within(int quad, int n) {
  const int left = n - 4 * quad;
  return i4{left, left, left, left} > i4{0, 1, 2, 3};
}

// Whether the first n samples are all exactly 0.
inline bool silent(const Block& b, int n) {
  i4 sounds = {};
  for (int q = 0; q < quads(n); q++) sounds |= (b.at(q) != splat(0)) & within(q, n);
  return !any(sounds);
}

// The largest magnitude of the first n samples.
inline float peakOf(const Block& b, int n) {
  f4 most = splat(0);
  for (int q = 0; q < quads(n); q++) most = max(most, onlyWhere(within(q, n), abs(b.at(q))));
  const f4 pair = max(most, __builtin_shufflevector(most, most, 2, 3, 0, 1));
  return pair[0] > pair[1] ? pair[0] : pair[1];
}

// How many of the last of n samples lie below `level` in both signals; n when all do.
inline int quietSince(const Block& l, const Block& r, float level, int n) {
  int i = n;
  while (i > 0 && std::fabs(l[i - 1]) < level && std::fabs(r[i - 1]) < level) i--;
  return n - i;
}
// A count of samples that stays where it is long before it would begin anew: an Engine may stand for days.
inline std::uint32_t counted(std::uint32_t quiet, int n) {
  return quiet < 0x40000000u ? quiet + std::uint32_t(n) : quiet;
}
// Goes on counting the samples since a signal was last above the level.
inline void countQuiet(std::uint32_t& quiet, const Block& l, const Block& r, float level, int n) {
  const int still = quietSince(l, r, level, n);
  quiet = counted(still == n ? quiet : 0, still);
}

}  // namespace synth::dsp
