// Numbers that approach a target exponentially, a sample at a time: envelopes and smoothers. Each alone is
// a chain of dependent operations; sixteen run side by side in the time of a few.
#pragma once

#include "engine/dsp/Lanes.h"

namespace synth::dsp {

// Each sample: value = target + (value - target) * keep. `out`, which may be null, receives the samples;
// those past the segment's end repeat the last one.
struct Approach {
  float* value;
  float target, keep;
  Block* out;
};

inline bool arrived(float value, float target, float keep) {
  return target + (value - target) * keep == value;
}

void runApproaches(const Approach* all, int count, int n);

}  // namespace synth::dsp
