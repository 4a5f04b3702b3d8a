// Clips: where on the Song the Patterns play.
#pragma once

#include <span>

#include "core/Project.h"

namespace synth {

// The Clips of a Track, in order of their start.
std::span<const ClipRec> clipsOf(const Project& project, int track);
inline int trackClips(const Project& project, int track) { return int(clipsOf(project, track).size()); }
// Where the last Clip of all Tracks ends, 0 without Clips.
u32 songEnd(const Project& project);

// The row of the Clip that covers `step`, or -1.
int clipAt(const Project& project, int track, u32 step);
// The row of the first Clip that ends after `step`, or -1.
int clipFrom(const Project& project, int track, u32 step);
// The row of the Clip under `step`, else of the nearest one (the earlier of two equally near), or -1.
int clipNear(const Project& project, int track, u32 step);

// Whether the Clip runs around its Pattern's end.
bool clipWraps(const Project& project, const ClipRec& clip);
// The Step of the Pattern that plays at the Song's `step`.
int clipPhase(const Project& project, const ClipRec& clip, u32 step);
// The last Step after the Clip.
inline u32 clipEnd(const ClipRec& clip) { return clip.start + clip.length; }

// False, changing nothing, for a Clip that would break a rule: no such Pattern or a front, outside the
// Song, an offset outside the Pattern, past the loop without Repeats, or over another Clip of the Track.
bool addClip(Project& project, const ClipRec& clip);
// Removes Clips by rows; a Pattern whose last Clip goes is removed with its Notes and front.
bool removeClips(Project& project, const int* rows, int count);
// A Pattern and a Clip that plays it, both of `length` Steps; the Pattern's id, or -1.
int addLoop(Project& project, int track, int length, u32 at, int offset);

}  // namespace synth
