// What belongs to a Track as a whole: clearing, copying and moving it, and the one stored form of a Project.
#pragma once

#include "core/Project.h"

namespace synth {

// Whether a Note of the Track exists, or one of its Lane rows is in use.
bool trackHasContent(const Project& project, int track);

// Empties the arenas and the Song loop; the sounds stay.
void clearArrangement(Project& project);
// Removes the Track's Patterns, Clips and Notes, and with `lanes` its Lanes too.
void clearTrack(Project& project, int track, bool lanes);
// Copies sound, name, Patterns, Clips, Notes and Lanes over another Track. False without room for them.
bool copyTrack(Project& project, int from, int to);
// Moves Tracks by a table: map[old] is the new place, or -1 to drop the Track. Freed rows become their
// starter sound; duck sources follow. False, changing nothing, when two go to one place.
bool remapTracks(Project& project, const int (&map)[limits::tracks]);

// Brings rows in any order to the one stored order, lays Lane points end to end and restores every unused
// row, so that equal content is equal bytes.
void canonical(Project& project);

}  // namespace synth
