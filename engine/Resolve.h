// Which value of a parameter counts at this moment: Macro, touch, Lock, Lane, then the Track's own.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// ---- Lanes.

// Finds the rows that are switched on, have a target and points; of several on one target the first wins.
void bindLanes(EngineCore& core);
// Reads every bound Lane over the coming segment. Rows that move get a value for each sample.
void readLanes(EngineCore& core);
// Brings Lanes, Tracks and buses up to date for this very sample, for events that fall on it.
void evaluateNow(EngineCore& core);
// Where the Lanes are read, in 1/16 Steps: at the current Step, or held just before a Song's end.
double lanePosition(const EngineCore& core);
// Forgets what the Lanes gave, for when they are not to be read.
void clearLanes(EngineCore& core);

// ---- Values.

// Targets of which a voice alone is moved: a Lock on one Note must not bend its neighbours.
inline constexpr u64 perVoiceTargets = [] {
  u64 mask = 0;
  for (int target :
       {automation::LFO_DEPTH, automation::LFO2_DEPTH, automation::DECAY, automation::PITCH_ENV,
        automation::PITCH_ENV_TIME, automation::ATTACK, automation::RELEASE, automation::NOISE_MIX})
    mask |= u64(1) << target;
  return mask;
}();

// A 0..1 of a Lane, Lock or touch in the target's own unit: ENGINE targets stay, PITCH is semitones.
float targetValue(int target, float normalized);
// Brings core.prepared up to date for the segment.
void prepareTracks(EngineCore& core);
// Brings core.busValue up to date; on the sixteen-sample grid and after commands.
void prepareBuses(EngineCore& core);
float busValue(const EngineCore& core, int target);

// The newest sounding Note's Locks on targets that act behind the voices; on the 32-sample grid.
void mergeLocks(EngineCore& core);

// A target as a voice sees it: moved by its Macros, else its own Lock unless a held touch replaces it.
inline float voiceParam(const EngineCore& core, const Voice& v, int target) {
  if (core.macros[v.track].mask >> target & 1 || v.macroMask)
    if (const u64 bit = u64(1) << target; (v.macroMask | core.macros[v.track].mask) & bit)
      return v.macroMask & bit ? v.macroValues[target] : core.macros[v.track].unlocked[target];
  if ((v.lockMask >> target & 1) && !hasValue(core.overrides.touch[v.track][target]))
    return v.lockValues[target];
  return core.prepared[v.track].value[target];
}

}  // namespace synth
