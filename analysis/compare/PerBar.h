// Where along the bars a render differs from its reference.
#pragma once

#include "analysis/Features.h"

namespace synth::analysis {

// {about, rows, largest}: a row a bar from the downbeat on, a value a band in dB, null where both are quiet.
// bpm above 0.
json::Json bandsPerBar(const Features& reference, const Features& render, double bpm, double downbeat);

}  // namespace synth::analysis
