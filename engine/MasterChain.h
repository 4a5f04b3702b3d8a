// From the sum of the mix to the Engine's output.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

void prepareMaster(EngineCore& core);
// Takes core.mix.dryL/R and writes core.mix.outL/R.
void renderMaster(EngineCore& core);

}  // namespace synth
