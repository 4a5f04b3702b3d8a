// The three bands of a Track: shelves at 110 Hz and 6 kHz, and a peak between (RBJ cookbook filters).
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// Designs the bands anew when one of the four values moved; on the 32-sample grid and after commands.
void designTrackEq(EngineCore& core, int track);
// Runs the bands of all Tracks that have any, side by side.
void runTrackEqs(EngineCore& core, const bool (&works)[limits::tracks]);

}  // namespace synth
