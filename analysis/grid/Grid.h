// The beat grid of audio: tempo, where bar 1 starts and how long the loop is, always in 4/4 with sixteen
// Steps a bar; and which of its Steps are hit.
#pragma once

#include <array>
#include <vector>

#include "analysis/Features.h"

namespace synth::analysis {

struct Grid {
  double bpm = 0;        // two decimals, truncated
  double downbeatS = 0;  // three decimals, truncated, not below 0
  double bar1Confidence = 0, tempoConfidence = 0;
  bool tripletFeel = false;
  int loopBars = 0;  // 0: no loop found
  double loopSimilarity = 0;
  struct Alternative {
    double bpm, relativeScore;
  };
  std::vector<Alternative> alternatives;

  double stepS() const { return 15 / bpm; }
  double barS() const { return 240 / bpm; }
};

// A bar of four minutes: what is slower is no tempo.
inline constexpr double slowestBpm = 1;

struct PreciseOnset {
  double seconds, strength;
};
// The onsets at the middle of the steepest rise of the envelope near them, to the millisecond.
std::vector<PreciseOnset> preciseOnsets(const Features& features);

// Fits the grid. A bpm of 0 or less and a negative downbeat are unknown; a known tempo is refined within
// 1 %. Throws std::runtime_error for audio too short or with too few onsets.
Grid fitGrid(const Features& features, double bpm, double downbeat);

// Low (kick, bass), mid (snare, keys) and high (hats, cymbals) onset strength, 0..1 each.
struct BandNovelty {
  std::array<std::vector<double>, 3> bands;
  std::vector<double> all;
};
BandNovelty bandNovelty(const Features& features);

struct StepHits {
  std::vector<std::array<float, 3>> steps;  // one a sixteenth from bar 1
  int bars = 0;
};
StepHits stepHits(const Features& features, const Grid& grid);

json::Json gridJson(const Grid& grid);
// Bars fromBar (from 1) and following, as far as there are any.
json::Json stepGridJson(const StepHits& hits, int fromBar, int bars);

}  // namespace synth::analysis
