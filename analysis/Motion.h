// How a held sound moves: its brightness, its level and its spectrum, between a hit's attack and its end.
#pragma once

#include "analysis/Spectra.h"

namespace synth::analysis {

// Asks for the frames' arrays and the onsets.
void measureMotion(const Spectra& spectra, const Score& score, Features& features);

}  // namespace synth::analysis
