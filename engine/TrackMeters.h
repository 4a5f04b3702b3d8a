// What the screen shows of a Track's level. Nothing here changes a sample of the sound.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// Before the pan: how loud the Track plays, how bright, and its wave.
void meterEnergy(EngineCore& core, int track, const dsp::Block& l, const dsp::Block& r);
// Behind it: the peaks of what goes to the mix.
void meterPeaks(EngineCore& core, int track, const dsp::Block& l, const dsp::Block& r);
// The same for a segment of silence.
void fadeMeters(EngineCore& core, int track);

// Counts the samples since the signal was last above hearing; while the transport plays it stays 0.
void countQuiet(const EngineCore& core, u32& quiet, const dsp::Block& l, const dsp::Block& r, int n);

}  // namespace synth
