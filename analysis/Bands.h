// How the analyses divide the spectrum of their frames: bands, third octaves and mel filters.
#pragma once

#include <array>
#include <vector>

namespace synth::analysis {

inline constexpr int frameSize = 2048, frameHop = 480, frameBins = frameSize / 2 + 1;
inline constexpr int framesPerSecond = 100;
inline constexpr double binHz = 48000.0 / frameSize;

// The bin of an edge: truncated, within 1..1024. Sums include the bins of both edges.
int binAt(double hz);
struct BinRange {
  int first, last;
  int count() const { return last - first + 1; }
};
inline BinRange binsOf(double lowHz, double highHz) { return {binAt(lowHz), binAt(highHz)}; }

struct Band {
  const char* name;
  double low, high;
};
inline constexpr std::array<Band, 7> Bands{{{"sub", 20, 60},
                                            {"bass", 60, 250},
                                            {"low_mid", 250, 500},
                                            {"mid", 500, 2000},
                                            {"high_mid", 2000, 4000},
                                            {"presence", 4000, 8000},
                                            {"air", 8000, 20000}}};
inline constexpr int bandCount = int(Bands.size());

// The three coarse bands of stereo width, envelopes and the timeline.
inline constexpr std::array<Band, 3> CoarseBands{
    {{"low", 20, 250}, {"mid", 250, 4000}, {"high", 4000, 20000}}};

inline constexpr std::array<double, 30> ThirdOctaves{
    25,  31.5, 40,   50,   63,   80,   100,  125,  160,  200,  250,  315,   400,   500,   630,
    800, 1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};
inline constexpr int thirdOctaveCount = int(ThirdOctaves.size());
BinRange thirdOctaveBins(int index);

// 64 triangles, equally spaced in mel = 2595 log10(1 + f / 700) from 30 Hz to 16 kHz.
inline constexpr int melCount = 64;
struct MelFilter {
  int firstBin;
  double centreHz;
  std::vector<float> weights;
};
// Built on first use; safe to call from any thread.
const std::array<MelFilter, melCount>& melFilters();

}  // namespace synth::analysis
