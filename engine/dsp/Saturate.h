// The soft clipper of the whole Engine, a rational approximation of tanh.
#pragma once

#include "engine/dsp/F4.h"

namespace synth::dsp {

template <class F>
inline F sat(F u) {
  return u * (u * u + 27.0f) / (9.0f * u * u + 27.0f);
}
inline float clip(float x, float limit) { return x > limit ? limit : x < -limit ? -limit : x; }
inline f4 clip(f4 x, float limit) { return clamp(x, -limit, limit); }

}  // namespace synth::dsp
