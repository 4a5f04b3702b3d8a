// What one listening measures of a sound. Seconds and dB unless a name says otherwise; what could not be
// measured keeps its default.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "analysis/Audio.h"
#include "analysis/Bands.h"
#include "base/Json.h"

namespace synth::analysis {

// What is known of the notes in the audio, in seconds; both may be empty.
struct Score {
  std::vector<double> noteOn, noteOff;
};

struct Features {
  double seconds = 0;
  double lufs = -70, lraLu = 0;
  double peakDbfs = -120, rmsDbfs = -120, crestDb = 0;
  std::array<double, bandCount> bandsDb{};  // relative to the whole spectrum
  std::vector<double> thirdOctaveDb;        // the same, one a centre
  double centroidHz = 0, centroidQ1Hz = 0, centroidQ3Hz = 0;
  double rolloffHz = 0;
  double flatness = 0;  // a ratio
  std::array<double, 13> mfcc{};
  double sideMidDb = -120, correlation = 1;
  std::array<double, 3> sideMidByBandDb{-120, -120, -120};
  std::vector<double> onsets;
  double onsetsPerS = 0;
  double tempoBpm = 0, tempoConfidence = 0;
  double attackMs = 0, decayMs = 0;
  int measuredHits = 0;
  double decay40Ms = 0, decay60Ms = 0;
  int measuredDecays = 0;
  double onsetShareDb = -120;
  double tail40Ms = 0, tail60Ms = 0;
  int measuredTails = 0;
  double centroidVariationOct = 0, levelVariationDb = 0, fluxDb = 0, heldS = 0;
  double spreadHz = 0, roughness = 0, inharmonicity = 0, harmonicToNoiseDb = 0;
  double monoLossDb = 0, lateEnergyDb = -120;
  std::array<double, 12> chroma{};  // shares of C..B, summing to 1
  std::string key;
  double keyStrength = 0;

  // One entry a frame, 100 a second; frame f is centred on sample 480 f.
  std::vector<float> levelDb;
  std::vector<float> novelty;                       // 0..1
  std::vector<std::array<float, 3>> bandLevelsDb;   // CoarseBands
  std::vector<std::array<float, 12>> chromaFrames;  // the largest is 1
  std::vector<std::array<float, melCount>> melDb;
  std::vector<float> centroidFrames;      // Hz, 0 in an inactive frame
  std::vector<float> centroidHighFrames;  // of the bins from 250 Hz on

  std::vector<double> envelopeMs;  // one a millisecond: 5 ms RMS of the middle

  std::vector<std::array<double, bandCount>> bandPower;  // one a frame: Bands
  std::vector<int> onsetFrames;                          // of `onsets`

  int frames() const { return int(levelDb.size()); }
};

// The share of the work that is done, 0..1; may be called from several threads at a time.
using Watch = std::function<void(double)>;

// Throws std::runtime_error for audio that no frame fits into: under 2048 samples.
void requireAFrame(const Audio& audio);

// Measures everything once. The tempo has no effect on the result, nor has the number of processors. Throws
// what requireAFrame() throws.
Features analyze(const Audio& audio, double tempoHint, const Score& score, const Watch& watch = {});

// How much of a sound the Send effects make: the energy of wet - dry over that of wet, in dB, floored at
// -120; over the shorter of the two.
double wetShareDb(const Audio& wet, const Audio& dry);

// The report. `bpm` gives the timeline's bars, 0 windows of two seconds; `detail` adds third octaves and
// onset times.
json::Json featuresJson(const Features& features, double bpm, bool detail);

}  // namespace synth::analysis
