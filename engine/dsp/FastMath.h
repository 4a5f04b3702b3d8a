// Single-precision functions for the control rate, accurate to about 1e-7 and short in latency. Plain
// arithmetic, so every build computes the same bits.
#pragma once

#include <bit>
#include <cstdint>

#include "engine/dsp/F4.h"

namespace synth::dsp {

// 2^x for -126 <= x <= 127 (clamped), by a Taylor polynomial of degree 6 in Estrin's order.
inline float exp2Fast(float x) {
  x = x < -126 ? -126 : x > 127 ? 127 : x;
  const float n = (x + 12582912.0f) - 12582912.0f, f = x - n, f2 = f * f;
  const float low = 1.0f + f * 0.69314718f, mid = 0.24022651f + f * 0.05550411f;
  const float high = (0.00961813f + f * 0.00133336f) + f2 * 0.00015404f;
  const float p = low + f2 * (mid + f2 * high);
  return p * std::bit_cast<float>((std::int32_t(n) + 127) << 23);
}

inline f4 exp2Fast(f4 x) {
  x = clamp(x, -126, 127);
  const f4 n = (x + splat(12582912.0f)) - splat(12582912.0f), f = x - n, f2 = f * f;
  const f4 low = splat(1) + f * splat(0.69314718f), mid = splat(0.24022651f) + f * splat(0.05550411f);
  const f4 high = (splat(0.00961813f) + f * splat(0.00133336f)) + f2 * splat(0.00015404f);
  return (low + f2 * (mid + f2 * high)) * asFloats((truncated(n) + 127) << 23);
}

// log2(x) for normal x > 0, by a series in (m - 1) / (m + 1) of the mantissa m around 1.
inline f4 log2Fast(f4 x) {
  const i4 bits = asBits(x);
  // Mantissas above the root of 2 count to the next octave, so that m lies in 0.707..1.414.
  const i4 exponent = (bits - 0x3F3504F3) >> 23;
  const f4 m = asFloats(bits - (exponent << 23));
  const f4 t = (m - splat(1)) / (m + splat(1)), z = t * t;
  const f4 series =
      splat(2.8853901f) +
      z * (splat(0.9617967f) + z * (splat(0.5770780f) + z * (splat(0.4121986f) + z * splat(0.3205989f))));
  return toFloats(exponent) + t * series;
}

// tan(pi x) for 0 <= x <= 0.45, by its fifth Pade approximant on an eighth of a turn.
inline float tanPi(float x) {
  const bool steep = x > 0.25f;
  const float t = 3.14159265f * (steep ? 0.5f - x : x), z = t * t;
  const float numerator = t * (945 + z * (z - 105)), denominator = 945 + z * (15 * z - 420);
  return steep ? denominator / numerator : numerator / denominator;
}

}  // namespace synth::dsp
