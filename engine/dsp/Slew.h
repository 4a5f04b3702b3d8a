// Parameters on their way to a target.
#pragma once

#include "base/Math.h"
#include "engine/dsp/Block.h"

namespace synth::dsp {

// 1 - exp(-n / (rate seconds)): how far a one-pole goes in n samples.
inline float share(double seconds, double rate, int n = 1) {
  return float(1 - math::exp(-n / (rate * seconds)));
}

// A number that approaches its target once a sample.
struct Slew {
  float now = 0;

  // True when it stood still all the while.
  bool run(float target, float c, Block& out, int n) {
    if (now + (target - now) * c == now) {
      out.fill(now);
      return true;
    }
    for (int i = 0; i < n; i++) out[i] = now = flushed(now + (target - now) * c);
    for (int i = n; i < segment; i++) out[i] = now;
    return false;
  }
};

// A number that goes on a line from one tick of sixteen samples to the next. Its samples are counted from
// the tick, so that cuts between leave no trace.
struct Ramp {
  float start = 0, step = 0, target = 0;
  int at = 0;  // samples since the tick

  float now() const { return at < segment ? start + step * float(at) : target; }
  void aim(float wanted, bool snap) {
    start = snap ? wanted : now();
    target = wanted;
    step = (target - start) * (1.0f / segment);
    at = 0;
  }
  bool stands() const { return step == 0; }
  f4 four(int quad) const {
    return splat(start) + splat(step) * (f4{1, 2, 3, 4} + splat(float(at + 4 * quad)));
  }
  void advance(int n) { at += n; }
};

}  // namespace synth::dsp
