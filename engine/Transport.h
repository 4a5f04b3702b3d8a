// Playing, pausing, stopping, jumping and counting in.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// The length of the current Step in samples: swing makes even Steps longer and odd ones shorter.
double stepSamples(const EngineCore& core);
// At the start of a sample: goes to the next Step when this one is over.
void passStepBoundary(EngineCore& core);

void setPlaying(EngineCore& core, bool on);
void stopPlayback(EngineCore& core);
void setRecording(EngineCore& core, bool on);
void jumpTo(EngineCore& core, i32 marker);
void holdMarker(EngineCore& core, i32 marker, bool on);
void playFrom(EngineCore& core, i32 step);
void restorePaused(EngineCore& core, double position);
// What a flush with the stop flag does: as stopPlayback, without touching the voices.
void haltTransport(EngineCore& core);

// ---- Auditions.
void startAudition(EngineCore& core, int slot);
void stopAudition(EngineCore& core);
// Notes that are due; returns in how many samples the next one may be, at least 1.
u64 playAudition(EngineCore& core);

}  // namespace synth
