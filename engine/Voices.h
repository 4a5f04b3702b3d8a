// The pool of voices: taking, stealing, starting, gliding and letting go.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// Starts a Note by the rules of its Track's voice mode; `time` is its place in Song time, below 0 for now.
void startVoice(EngineCore& core, int track, const Note& note, bool live, double time);
// Before the Notes of a Step on a POLY LEGATO Track: leads voices to new pitches, makes room.
void preparePolyLegato(EngineCore& core, int track, const NoteRec* const (&notes)[limits::slots]);

// Lets a voice go, and the unison ghosts that follow it.
void releaseVoice(EngineCore& core, Voice& voice);
// Releases a voice that its Track can no longer play, a drum at the pace of the Track's release.
void abandonVoice(EngineCore& core, Voice& voice);
void allNotesOff(EngineCore& core);
// When a Track's mode changes to or from a mono mode: one voice stays, and it fades.
void monoCollapse(EngineCore& core, int track);

// Live keys.
void keyDown(EngineCore& core, int track, int note, int velocity);
void keyUp(EngineCore& core, int track, int note);
bool anyKeyHeld(const EngineCore& core, int track);

// Gate ends of sequenced Notes at this sample; returns the earliest one still to come, in Song time.
double endGates(EngineCore& core);

inline bool isMonoMode(int mode) { return mode == 1 || mode == 2; }
bool playsMono(const EngineCore& core, int track);

// Every sixteen samples of the clock, and at a voice's first sample.
void controlVoice(EngineCore& core, Voice& voice, bool first);
// Renders all voices over the segment and sums them into the Tracks' mid and side.
void renderVoices(EngineCore& core);

}  // namespace synth
