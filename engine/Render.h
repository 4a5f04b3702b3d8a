// One call of the audio thread: commands, then segments up to the end of the buffer.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

void renderBlock(EngineCore& core, float* left, float* right, unsigned frames);

// ---- Commands.

// Takes what is queued; true when there was anything.
bool drainCommands(EngineCore& core);

}  // namespace synth
