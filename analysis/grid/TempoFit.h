// Which tempo locks the onsets to sixteenths.
#pragma once

#include "analysis/grid/Grid.h"

namespace synth::analysis {

// The phase 0..P, P one sixteenth at that tempo, at which the onsets gather.
double sixteenthPhase(const std::vector<PreciseOnset>& onsets, double bpm);

// Fills tempo, its confidence, the alternatives and the triplet feel. `heard` is the tempo that the novelty
// repeats with, `known` the one that is told, 0 without.
void fitTempo(const std::vector<PreciseOnset>& onsets, double heard, double known, Grid& grid);

}  // namespace synth::analysis
