// Band-limited steps by polynomial residuals (Valimaki and Huovilainen, 2007).
#pragma once

#include "engine/dsp/F4.h"

namespace synth::dsp {

// The residual of a step at phase 0 for an oscillator that moves by `step` cycles a sample.
inline float poly(float t, float step) {
  if (t < step) {
    const float u = t / step;
    return 2 * u - u * u - 1;
  }
  if (t > 1 - step) {
    const float u = (t - 1) / step;
    return u * u + 2 * u + 1;
  }
  return 0;
}

inline f4 poly(f4 t, f4 step) {
  const f4 one = splat(1), two = splat(2);
  const f4 u = t / step, w = (t - one) / step;
  const f4 after = two * u - u * u - one, before = w * w + two * w + one;
  return select(t < step, after, onlyWhere(t > one - step, before));
}

}  // namespace synth::dsp
