// Hits of a Drums Track: starting them from the Pad's values, choking, and rendering them as voices.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

void startHit(EngineCore& core, int track, const Note& note, bool live, double gateEnd);
// Writes n samples of a Pad's voice.
void renderHit(Voice& voice, dsp::Block& mid, dsp::Block& side, int n);

}  // namespace synth
