// The drive curves of Tracks, drums and the Master.
#pragma once

#include <algorithm>
#include <cmath>

#include "engine/dsp/Saturate.h"
#include "engine/dsp/Sine.h"

namespace synth::drive {

enum Type : int { Soft, Tube, Hard, Fold };

// A drive of some amount as numbers that hold while the amount does. Below 2 % it blends with the dry
// sound, since the curves themselves do not start at unity and a Lane through 0 must not click.
struct Curve {
  int type = Soft;
  float gain = 1, scale = 1, blend = 0;
};

inline Curve curve(int type, float amount) {
  Curve c;
  c.type = type;
  c.blend = std::clamp(amount / 0.02f, 0.0f, 1.0f);
  c.gain = type == Fold ? 6 * amount + 1 : 24 * amount * amount + 1;
  const float bounded = std::min(c.gain, 4.0f), root = std::sqrt(c.gain);
  switch (type) {
    case Tube: c.scale = 1.1f / root; break;
    case Hard: c.scale = 1 / (bounded * 0.1f + 0.6f); break;
    case Fold: c.scale = 0.8f; break;
    default: c.scale = 1 / dsp::sat(bounded) * std::min(1.4f / root + 0.3f, 1.0f);
  }
  return c;
}

inline dsp::f4 tubeCurve(dsp::f4 y) {
  const dsp::f4 up = dsp::sat(dsp::min(y, dsp::splat(4.5f)));
  const dsp::f4 down = dsp::splat(1.1f) * dsp::sat(dsp::clip(dsp::splat(0.8f) * y, 4.5f));
  return dsp::select(y > dsp::splat(0), up, down);
}

inline dsp::f4 shape(const Curve& c, const float* sine, dsp::f4 x) {
  dsp::f4 y = x * dsp::splat(c.gain);
  switch (c.type) {
    case Tube: y = tubeCurve(y); break;
    case Hard: y = dsp::clip(y, 1); break;
    // sin(y pi / 4): an eighth of a cycle for y = 1.
    case Fold: y = dsp::sineAt(sine, dsp::wrapped(y * dsp::splat(0.125f))); break;
    default: y = dsp::sat(dsp::clip(y, 4.5f));
  }
  y *= dsp::splat(c.scale);
  return c.blend < 1 ? x + dsp::splat(c.blend) * (y - x) : y;
}

inline float shape(const Curve& c, const float* sine, float x) { return shape(c, sine, dsp::splat(x))[0]; }

}  // namespace synth::drive
