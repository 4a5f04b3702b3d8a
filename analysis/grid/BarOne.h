// Which of the sixteen sixteenths begins the bar.
#pragma once

#include "analysis/grid/Grid.h"

namespace synth::analysis {

// Fills the downbeat and its confidence from the tempo, the sixteenths' phase and where kick and snare sit.
void fitBarOne(const Features& features, const std::vector<PreciseOnset>& onsets, double phase, Grid& grid);

}  // namespace synth::analysis
