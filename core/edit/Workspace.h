// The small checked edits of Tracks that every front end shares. A refused edit changes no byte and says
// why; masks hold one bit for each of the sixteen Tracks.
#pragma once

#include <string_view>

#include "core/Project.h"
#include "core/edit/Result.h"

namespace synth::workspace {

using edit::Result;
using TrackMap = int[limits::tracks];  // where each Track went, -1 for a removed one

// A Track of a kind behind the others; `index` receives its place.
Result addTrack(Project& project, int kind, int& index);
// Takes Tracks away with their Patterns, Clips and Lanes; the others move up.
Result removeTracks(Project& project, u32 mask, TrackMap& map);
// Copies Tracks with all they hold, each behind its original.
Result duplicateTracks(Project& project, u32 mask, TrackMap& map);
// Moves Tracks by `delta` places, as far as there is room.
Result moveTracks(Project& project, u32 mask, int delta, TrackMap& map);
Result renameTrack(Project& project, int track, std::string_view name);

// Makes a Track of another kind: its sound becomes that kind's default, keeping the name unless it is a
// default one. Its Patterns go, and Lanes that no longer apply. False, changing nothing, when the Track
// has that kind already or there is no such Track or kind.
bool switchTrackKind(Project& project, int track, int kind);
// The same for every Track of a mask.
Result setTrackKind(Project& project, u32 mask, int kind);

// The row of the Clip of a Track that starts exactly there, or -1.
int clipIndex(const Project& project, int track, u32 start);
// Changes a loop's length; its Clips play as many passes. Without keepNotes the Notes behind the end go.
Result setPatternLength(Project& project, int track, int pattern, int length, bool keepNotes);

}  // namespace synth::workspace
