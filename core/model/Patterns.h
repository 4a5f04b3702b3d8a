// Patterns: finding, adding and cloning them, their parked fronts, and changing their length.
#pragma once

#include "core/Project.h"

namespace synth {

// The row of a Pattern, or -1; rows move when Patterns are added or removed, so hold ids and not rows.
int patternIndex(const Project& project, int track, int id);
// The length in Steps, 0 for a Pattern that does not exist.
int patternLength(const Project& project, int track, int id);
// The lowest id of the Track that is no front, or -1.
int firstPattern(const Project& project, int track);
// The smallest id not used on the Track.
int freePatternId(const Project& project, int track);
// The row of a Pattern's front, or -1.
int frontOf(const Project& project, int track, int id);

// Adds an empty Pattern, its length clamped to 1..1024, and returns its id; -1 when there is no room.
// The same edit must give it a Clip.
int addPattern(Project& project, int track, int length);
// The same with a given id, which must be free.
bool addPatternAt(Project& project, int track, int id, int length);
// A copy with the Notes and the front; the copy's id, or -1 when there is no room.
int clonePattern(Project& project, int track, int id);
// Removes a Pattern with its Notes and its front; its Clips are the caller's.
void removePattern(Project& project, int track, int id);

// Moves the first `steps` Steps of a Pattern into its front, creating it if needed. The front keeps them
// behind what it holds. Clips keep their place and begin as much earlier in the loop; the board moves them.
// False, changing nothing, when either would leave 1..1024 or there is no room.
bool parkFront(Project& project, int track, int id, int steps);
// Takes the last `steps` Steps of the front back; Steps that the front does not hold come as silence.
bool unparkFront(Project& project, int track, int id, int steps);

// Changes the loop length so that each Clip still plays as many passes, cut at the next Clip.
bool setPatternLengthKeepingPasses(Project& project, int track, int id, int length);

}  // namespace synth
