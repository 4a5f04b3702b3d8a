// What the views read of a Project: its loop, its length, the Notes of a Pattern in time, its faults, and the
// names of chords.
#pragma once

#include <string>
#include <vector>

#include "core/Project.h"

namespace synth::workspace {

struct LoopRange {
  u32 start = 0, end = 0;

  bool any() const { return end > start; }
};
// The loop that plays: the Song's own, else the first Section; none when it is off or the Song is empty.
LoopRange resolveLoop(const Project& project, bool on);
// The Song's end, at least 16.
u32 totalSteps(const Project& project);

// Where the Engine stood when it was last heard of.
struct PlayState {
  bool playing = false;
  int countInLeft = 0;
  double position = 0;    // in Steps
  double stepsSince = 0;  // that have passed since
};
// Where to draw the playhead; -1 when nothing plays, or the count-in has not reached the Song.
double playheadStep(const PlayState& state);

// One sounding Note of a Pattern, in Steps.
struct Span {
  float start = 0, end = 0;
  u8 pitch = 0, velocity = 0;
};
std::vector<Span> spans(const Project& project, int track, int pattern);

// The first fault of the Project that the validator allows but a player would not expect; "" for none.
std::string buildIssues(const Project& project);

// "C", "Am7", "C/E" for sounding pitches; "" for fewer than two different ones or no known chord.
std::string chordName(const int* pitches, int count, bool flats);

// "drums", "tape-reel", "microphone", "bass", "keys", "lead" or "synth", by what a Track is and plays. A
// known Role of its sound (0..7, -1 for none) says it before the Notes do.
std::string trackIcon(const Project& project, int track, int role = -1);

}  // namespace synth::workspace
