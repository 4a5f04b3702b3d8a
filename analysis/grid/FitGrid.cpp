#include <stdexcept>

#include "analysis/Measure.h"
#include "analysis/grid/BarOne.h"
#include "analysis/grid/TempoFit.h"

namespace synth::analysis {
namespace {

constexpr int stepsABar = 16;
using BarVector = std::array<double, 3 * stepsABar>;

double correlation(const BarVector& a, const BarVector& b) {
  const int n = int(a.size());
  const double meanA = sum(a.data(), n) / n, meanB = sum(b.data(), n) / n;
  double ab = 0, aa = 0, bb = 0;
  for (size_t i = 0; i < a.size(); i++) {
    ab += (a[i] - meanA) * (b[i] - meanB);
    aa += (a[i] - meanA) * (a[i] - meanA);
    bb += (b[i] - meanB) * (b[i] - meanB);
  }
  return aa > 0 && bb > 0 ? ab / std::sqrt(aa * bb) : 0;
}

// The levels of the coarse bands at each sixteenth of each whole bar.
std::vector<BarVector> barVectors(const Features& f, const Grid& grid) {
  std::vector<BarVector> bars(size_t(std::max((f.seconds - grid.downbeatS) / grid.barS(), 0.0)));
  for (size_t b = 0; b < bars.size(); b++)
    for (size_t s = 0; s < stepsABar; s++) {
      const double at = grid.downbeatS + double(b * stepsABar + s) * grid.stepS();
      const size_t frame = size_t(std::min(std::lround(at * framesPerSecond), long(f.frames()) - 1));
      for (size_t band = 0; band < 3; band++)
        bars[b][3 * s + band] = std::max(double(f.bandLevelsDb[frame][band]), -90.0);
    }
  return bars;
}

void findLoop(const Features& f, Grid& grid) {
  const std::vector<BarVector> bars = barVectors(f, grid);
  for (size_t length : {1u, 2u, 4u, 8u}) {
    if (bars.size() < 2 * length) return;
    double similarity = 0;
    for (size_t b = 0; b + length < bars.size(); b++) similarity += correlation(bars[b], bars[b + length]);
    similarity /= double(bars.size() - length);
    if (similarity > 0.8) {
      grid.loopBars = int(length);
      grid.loopSimilarity = similarity;
      return;
    }
    grid.loopSimilarity = std::max(grid.loopSimilarity, similarity);
  }
}

}  // namespace

Grid fitGrid(const Features& f, double bpm, double downbeat) {
  constexpr int fewestFrames = 200;
  constexpr size_t fewestOnsets = 4;
  if (f.frames() < fewestFrames) throw std::runtime_error("Audio too short to fit a grid (under 2 s)");
  const std::vector<PreciseOnset> onsets = preciseOnsets(f);
  if (onsets.size() < fewestOnsets) throw std::runtime_error("Too few onsets to fit a grid");
  Grid grid;
  fitTempo(onsets, f.tempoBpm, bpm, grid);
  fitBarOne(f, onsets, sixteenthPhase(onsets, grid.bpm), grid);
  if (downbeat >= 0) {
    grid.downbeatS = std::floor(std::fmod(downbeat, grid.barS()) * 1000 + 1e-6) / 1000;
    grid.bar1Confidence = 1;
  }
  findLoop(f, grid);
  return grid;
}

}  // namespace synth::analysis
