// The signal chain of the Tracks behind their voices: level, filters, drive, crush, EQ, modulation, width,
// ducking, pan, and the sums into the mix.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// What the chain takes from the Project and the values as they stand; on the 32-sample grid and after
// commands. `snap` lets the levels take their targets at once.
void refreshTracks(EngineCore& core, bool snap);
// Runs all Tracks over the segment: core.mix.trackL/R hold mid and side and become left and right.
void renderTracks(EngineCore& core);

}  // namespace synth
