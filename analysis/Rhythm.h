// Where something begins, and how fast it goes on.
#pragma once

#include "analysis/Spectra.h"

namespace synth::analysis {

// The rise from frame to frame of the mel bands first..last-1, over what lies 80 dB under the loudest band
// of the file; as it comes, one value a frame.
std::vector<double> melRise(const Features& features, int first, int last);

// Fills `novelty`, the onsets and the tempo.
void measureRhythm(const Spectra& spectra, Features& features);

}  // namespace synth::analysis
