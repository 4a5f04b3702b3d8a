// What differs between a render and its reference, always render minus reference, and how much that is worth.
#pragma once

#include "analysis/Features.h"

namespace synth::analysis {

struct Differences {
  std::array<double, bandCount> bandsDb{};
  std::vector<double> thirdOctaveDb;
  double thirdOctaveRmsDb = 0;  // from 40 Hz to 16 kHz, each limited to 20 dB
  double centroidPct = 0;
  double mfccDistance = 0;
  double flatnessDb = 0;
  std::array<double, 3> envelopeCorrelation{};  // CoarseBands
  double attackMs = 0, crestDb = 0;
  double onsetF1 = 1;
  std::vector<double> onsetsMissing;  // seconds of the reference
  int onsetsExtra = 0;
  double tempoPct = 0, referenceTempoBpm = 0, renderTempoBpm = 0;
  double chromaSimilarity = 1;
  double loudnessLu = 0;  // before the levels are matched
  double lraLu = 0, sideMidDb = 0, correlation = 0;
  // The reference ends at about 16 kHz, as lossy files do; then "air" means 8 to 12.5 kHz.
  bool lossyReference = false;
};

// `bpm` is the render's tempo, 0 when it has to be heard. The render is matched in level to the reference,
// from which it differed by `loudnessLu`.
Differences differencesOf(const Features& reference, const Features& render, double bpm, double loudnessLu);

// 100 at 0, 50 at s.
inline double scoreOf(double x, double s) { return 100 / (1 + (x / s) * (x / s)); }

struct Scores {
  double spectralBalance, timbre, envelope, rhythm, pitch, levelStereo, overall;
};
Scores scoresOf(const Differences& differences);

}  // namespace synth::analysis
