// The click of the metronome and of the count-in.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// Arms the click, higher on the accent.
void armClick(EngineCore& core, bool accent);
// At a Step: a click on each quarter while the metronome is on.
void clickAtStep(EngineCore& core);
// Adds the click to both channels.
void addMetronome(EngineCore& core, dsp::Block& left, dsp::Block& right, int n);

}  // namespace synth
