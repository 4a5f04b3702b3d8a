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

// Four at once; `inverse` is 1 / step. Mostly no sample is near a step, and then nothing is computed.
inline f4 poly(f4 t, f4 step, f4 inverse) {
  const f4 one = splat(1);
  const i4 behind = t<step, ahead = t> one - step;
  if (!any(behind | ahead)) return splat(0);
  const f4 u = t * inverse, w = (t - one) * inverse;
  const f4 after = (u + u) - u * u - one, before = w * w + (w + w) + one;
  return select(behind, after, onlyWhere(ahead, before));
}

}  // namespace synth::dsp
