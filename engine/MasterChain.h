// From the sum of the mix to the Engine's output.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

void prepareMaster(EngineCore& core);
// Every sixteen samples: what the Moves, the Sends and the Master read from their values.
void tickMaster(EngineCore& core);
// Takes core.mix.dry and core.mix.send and writes core.mix.out.
void renderMaster(EngineCore& core);

}  // namespace synth
