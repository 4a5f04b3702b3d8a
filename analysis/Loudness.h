// Loudness after ITU-R BS.1770-4 and loudness range after EBU Tech 3342.
#pragma once

#include "analysis/Audio.h"

namespace synth::analysis {

struct Loudness {
  double lufs = -70;      // gated, integrated
  double lraLu = 0;       // loudness range
  double monoLossDb = 0;  // what folding to mono takes, floored at -60
};

Loudness loudnessOf(const Audio& audio);

// The integrated loudness alone; -70 under 0.4 s.
double integratedLufs(const Audio& audio);

}  // namespace synth::analysis
