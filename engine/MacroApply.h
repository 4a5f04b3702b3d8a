// What the Macros of the Tracks do while they play: the values they move, for the Track and for voices whose
// Notes lock a Macro of their own.
#pragma once

#include "core/params/Targets.h"
#include "core/sounds/MacroPlan.h"

namespace synth {

struct EngineCore;
struct Voice;

// The Macros of one Track as they stand.
struct TrackMacros {
  float current[limits::macros] = {};             // with the newest Note's Locks
  float open[limits::macros] = {};                // without
  u64 mask = 0;                                   // targets that some Macro moves away from its base
  float unlocked[automation::trackTargets] = {};  // what voices without Macro Locks read there
  // For each entry of the plan: what it was computed from.
  struct Seen {
    float base = 0, openBase = 0, current = 0, open = 0;
    bool known = false;
  } seen[macros::Plan::most];
  // For each entry of the plan: how far the Macros move it.
  float currentSums[macros::Plan::most] = {}, openSums[macros::Plan::most] = {};
  bool summed = false;
  bool live = false;  // the live copy of the Track is what counts
  u32 version = 0;    // counts the changes of what a voice's own values are made of, while live
};

// Brings the Macros of a Track up to date: on the 32-sample grid and when a value under them has changed.
void applyMacros(EngineCore& core, int track);
// After a new Project: nothing of the old one stays.
void resetMacros(EngineCore& core);
// The values of a voice whose Note locks Macros, or values that Macros move; every sixteen samples.
void applyVoiceMacros(EngineCore& core, Voice& voice);

}  // namespace synth
