// Locks: a parameter value pinned to one Note. `pitch` finds the Note on its Step; on a kit it is the Pad.
#pragma once

#include "core/Project.h"
#include "core/edit/Result.h"

namespace synth::workspace {

// The value is 0..1; a target that the Note locks already changes.
edit::Result setLock(Project& project, int track, int pattern, int step, int pitch, int target, double value);
// 0..1, or NaN where the Note does not lock the target.
double lockValue(const Project& project, int track, int pattern, int step, int pitch, int target);
bool hasLocks(const Project& project, int track, int pattern, int step);
bool clearLock(Project& project, int track, int pattern, int step, int pitch, int target);
// Clears the Locks of every Note on the Step.
bool clearLocks(Project& project, int track, int pattern, int step);

}  // namespace synth::workspace
