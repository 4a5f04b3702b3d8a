// How far a render must be moved to lie on its reference.
#pragma once

#include "analysis/Features.h"

namespace synth::analysis {

struct Alignment {
  double offsetS = 0;  // by which the render must be delayed
  bool automatic = false;
  double confidence = 0;  // 0..1; near 0 where the music repeats within a second
};

// By the onsets' cross-correlation within a second each way, then by the envelopes' to the millisecond.
// Without onsets the offset is 0 and so is the confidence.
Alignment align(const Features& reference, const Features& render);

}  // namespace synth::analysis
