// How fast and how deep the bands of a sound flutter between 20 and 150 Hz.
#pragma once

#include "analysis/Audio.h"

namespace synth::analysis {

// The mean fluctuation of six octave-spaced bands, weighted by their energy; 0 of silence.
double roughnessOf(const Audio& audio);

}  // namespace synth::analysis
