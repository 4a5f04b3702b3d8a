// How voices are taken from the pool and set up.
#pragma once

#include "engine/EngineCore.h"

namespace synth::pool {

float frequencyOf(int note);

// A free voice, or one stolen by the Track's rules. A voice taken while it sounds keeps its last output,
// which fades over 64 samples.
Voice& allocate(EngineCore& core, int track);
// Takes a voice and gives it its identity; everything else is as new.
Voice& take(EngineCore& core, int track, const Note& note, bool live, double gateEnd);
// Starts a melodic voice with its unison ghosts.
void start(EngineCore& core, int track, const Note& note, bool live, double gateEnd);

// Whether `voice` is a unison ghost of `leader`.
bool follows(const Voice& voice, const Voice& leader, const EngineCore& core);
// Reads the Note's Locks into the voice.
void decodeLocks(EngineCore& core, Voice& voice, const Note& note);
// Moves to a frequency at once, or along the Track's GLIDE.
void glideTo(EngineCore& core, Voice& voice, float frequency);

// Recording of live keys: begins on the nearest Step, ends as a RecordedNote.
void beginRecordedKey(EngineCore& core, int track, int note, int velocity);
void endRecordedKey(EngineCore& core, int track, int note);

}  // namespace synth::pool
