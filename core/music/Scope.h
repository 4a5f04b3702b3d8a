// What part of the music a look at it, or a change of it, is about; and the line of time on which everything
// in that part stands side by side.
#pragma once

#include "core/Project.h"

namespace synth::compose {

struct Scope {
  enum Kind : u8 {
    Notes,     // the selected Notes of a Pattern
    Range,     // Steps from..to of a Pattern
    Clip,      // a whole Pattern
    AllTracks  // several Tracks, for as long as the first Clip of the Pattern plays; without one, the Song
  };

  Kind kind = Clip;
  i32 pattern = -1, track = 0;                              // a Pattern by its id
  i32 from = -1, to = 0;                                    // Steps, both included; -1 and 0 when not used
  u16 tracks = 0;                                           // of AllTracks: bit n for Track n
  u8 selected[limits::tracks][limits::patternLength] = {};  // of Notes: the slots of each Step
};

// Bit n for each Track that the Scope is about.
u16 scopeTracks(const Project& project, const Scope& scope);
// The length of its line of time in Steps, at most 1024; 0 when there is no such Pattern or range.
int scopeLength(const Project& project, const Scope& scope);

// For each Track and Step of the line: which Step of which Pattern plays there; -1 where none does.
struct Timeline {
  i16 step[limits::tracks][limits::patternLength];
  u16 pattern[limits::tracks][limits::patternLength];
};
void timelineMap(const Project& project, const Scope& scope, Timeline& map);

}  // namespace synth::compose
