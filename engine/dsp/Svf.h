// The two-pole state variable filter in trapezoidal (TPT) form (Zavalishin, 2012; Simper, 2013).
#pragma once

#include <algorithm>

#include "base/Math.h"
#include "engine/dsp/F4.h"

namespace synth::dsp {

// Coefficients of one setting; k is the damping, 1/Q.
struct Svf {
  float k = 1, a1 = 1, a2 = 0, a3 = 0;

  static Svf at(float g, float k) {
    Svf s;
    s.k = k;
    s.a1 = 1 / (g * (g + k) + 1);
    s.a2 = g * s.a1;
    s.a3 = g * s.a2;
    return s;
  }
};

// tan(pi f / rate), the frequency kept within 10 Hz .. 0.45 rate.
inline float svfG(double hz, double rate) {
  return float(math::tan(math::pi * std::clamp(hz, 10.0, rate * 0.45) / rate));
}

struct SvfOut {
  float low, band;
};

// One channel's memory. high = x - k * band - low.
struct SvfState {
  float ic1 = 0, ic2 = 0;

  SvfOut run(const Svf& f, float x) {
    const SvfOut out = step(f, x);
    flush();
    return out;
  }
  // Without the flush, for loops that flush now and then.
  SvfOut step(const Svf& f, float x) {
    const float v3 = x - ic2;
    const float v1 = f.a1 * ic1 + f.a2 * v3;
    const float v2 = ic2 + f.a2 * ic1 + f.a3 * v3;
    ic1 = 2 * v1 - ic1;
    ic2 = 2 * v2 - ic2;
    return {v2, v1};
  }
  void flush() {
    ic1 = flushed(ic1);
    ic2 = flushed(ic2);
  }
  bool rests() const { return ic1 == 0 && ic2 == 0; }
};

}  // namespace synth::dsp
