// Random valid Projects and the small generator behind them; the same seed gives the same Project.
#pragma once

#include "core/Project.h"

namespace synth::test {

class Random {
 public:
  explicit Random(u32 seed) : state_(seed * 2654435761u + 12345u) {}
  u32 next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }
  int below(int n) { return int(next() % u32(n)); }
  int between(int lo, int hi) { return lo + below(hi - lo + 1); }
  bool chance(int percent) { return below(100) < percent; }
  float unit() { return float(next() >> 8) / 16777216.0f; }

 private:
  u32 state_;
};

// A valid Project that uses everything a file can hold: kits, Locks, fronts, all six kinds in both Sends,
// Lanes with jumps and rests, Macros, Pins, Markers, a loop.
ProjectPtr randomProject(u32 seed);
// A short random song for the Engine: bars of Notes on several Tracks with Locks and Lanes.
ProjectPtr randomSong(u32 seed);

}  // namespace synth::test
