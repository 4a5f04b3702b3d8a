// Locks in specs: their targets by name and their values in the target's unit or as 0..1.
#pragma once

#include "core/model/Notes.h"
#include "spec/Keys.h"

namespace synth::spec {

// The number of a Track's target: a target's name, a Macro of the sound, or MACRO_1 .. MACRO_16.
int trackTarget(const Track& track, const std::string& name);
// The sixteen bits that a lock's "value" or "value01" stands for.
u16 lockValue(const Track& track, int target, const std::string& name, const Json& lock);
u16 fromValue01(const Json& value);
// Adds the Lock; `place` begins the messages about this Note ("Track 1 step 4").
void addLock(Note& note, const Track& track, int target, const std::string& name, u16 value,
             const std::string& place);

}  // namespace synth::spec
