// How sounds rise, fall and ring: measured at known notes, or at the onsets that were found.
#pragma once

#include <vector>

#include "analysis/Features.h"

namespace synth::analysis {

// A place in time, on the grid of milliseconds and in samples.
struct Moment {
  long ms, sample;
};

// The known notes in order, or without them the onsets; what lies outside the audio is left out.
std::vector<Moment> hitsOf(const Features& features, const Score& score);
std::vector<Moment> momentsOf(const std::vector<double>& seconds);

// The energy of the middle up to each sample: n + 1 values.
std::vector<double> runningEnergy(const Audio& audio);

// RMS over `reach` samples to each side of each millisecond's middle, cut to the signal.
std::vector<double> envelopeOf(const std::vector<double>& energy, int reach);

// Asks for `envelopeMs`, made with a reach of 120.
void measureEnvelope(const std::vector<double>& energy, const Score& score, Features& features);

}  // namespace synth::analysis
