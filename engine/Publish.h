// Filling and handing over the Telemetry snapshot.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

void publishTelemetry(EngineCore& core);

}  // namespace synth
