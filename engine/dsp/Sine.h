// The sine that every oscillator reads: 2048 entries, linear interpolation.
#pragma once

#include "engine/dsp/F4.h"

namespace synth::dsp {

inline constexpr int sineSize = 2048;
// 2049 floats; the last is the guard point of the interpolation. Built once for the process.
const float* sineTable();

// sin(2 pi p) for p in 0..1; a phase that rounded up to 1 reads as 0.
inline float sineAt(const float* table, float p) {
  const float x = p * sineSize;
  int i = int(x);
  if (i >= sineSize) return table[0];
  return table[i] + (table[i + 1] - table[i]) * (x - float(i));
}

// The fraction of a phase, 0 where it rounds to 1.
inline float wrapped(float p) {
  p -= float(int(p));
  if (p < 0) p += 1;
  return p >= 1 ? 0 : p;
}

// sin(2 pi p) for any p of moderate size.
inline float sineOf(const float* table, float p) { return sineAt(table, wrapped(p)); }

// Four phases in 0..1 at once.
inline f4 sineAt(const float* table, f4 p) {
  const f4 x = p * splat(sineSize);
  i4 i = truncated(x);
  const f4 fraction = x - toFloats(i);
  i &= i < i4{sineSize, sineSize, sineSize, sineSize};
  const f4 a = {table[i[0]], table[i[1]], table[i[2]], table[i[3]]};
  const f4 b = {table[i[0] + 1], table[i[1] + 1], table[i[2] + 1], table[i[3] + 1]};
  return a + (b - a) * fraction;
}

inline f4 wrapped(f4 p) {
  p -= toFloats(truncated(p));
  p = select(p < splat(0), p + splat(1), p);
  // What rounds up to 1 is 0, and so is what was too large to have a fraction: lanes that nobody reads may
  // hold anything, but must not lead out of the table.
  return onlyWhere((p >= splat(0)) & (p < splat(1)), p);
}

}  // namespace synth::dsp
