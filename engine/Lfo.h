// Low-frequency oscillators: where they stand and what they give.
#pragma once

#include "engine/EngineCore.h"

namespace synth::lfo {

// Cycles a Step for an option of the sync rows; 0 for FREE.
double syncCyclesPerStep(int option);

// The value -1..1 of a shape at so many cycles; random shapes draw from `seed`.
float shapeValue(int shape, double cycles, u32 seed, const float* sine);

// The value of LFO 0 or 1 for a voice at this sample.
float valueOf(const EngineCore& core, const Voice& voice, int which);

// Every segment: an overridden rate must not jump the phase, so its difference is summed up, in cycles.
void advanceOffsets(EngineCore& core, int n);
void resetOffsets(EngineCore& core);

}  // namespace synth::lfo
