#include "analysis/Measure.h"
#include "analysis/Rhythm.h"
#include "analysis/grid/Grid.h"

namespace synth::analysis {
namespace {

// Divides by the 95th percentile and limits to 1.
std::vector<double> evened(std::vector<double> curve) {
  if (curve.empty()) return curve;
  std::vector<double> sorted = curve;
  sortNumbers(sorted);
  const double most = sorted[size_t(double(sorted.size() - 1) * 0.95)];
  if (most > 0)
    for (double& v : curve) v /= most;
  for (double& v : curve) v = std::min(v, 1.0);
  return curve;
}

// The filters whose centre lies in low..high.
std::vector<double> noveltyOf(const Features& features, double low, double high) {
  int first = 0, last = 0;
  for (const MelFilter& filter : melFilters()) {
    first += filter.centreHz < low;
    last += filter.centreHz < high;
  }
  return melRise(features, first, last);
}

}  // namespace

std::vector<PreciseOnset> preciseOnsets(const Features& f) {
  std::vector<PreciseOnset> out;
  const long size = long(f.envelopeMs.size());
  for (int frame : f.onsetFrames) {
    const long m = long(frame) * 10;
    long best = -1;
    double steepest = -1;
    for (long u = std::max(m - 25, 2L); u <= std::min(m + 12, size - 1); u++) {
      const double rise = f.envelopeMs[size_t(u)] - f.envelopeMs[size_t(u - 2)];
      if (!(rise > steepest)) continue;
      steepest = rise;
      best = u;
    }
    const size_t at = size_t(std::min(frame, f.frames() - 1));
    out.push_back({double(best < 0 ? m : best - 1) / 1000, double(f.novelty[at])});
  }
  return out;
}

BandNovelty bandNovelty(const Features& f) {
  BandNovelty out;
  out.bands = {evened(noveltyOf(f, 0, 130)), evened(noveltyOf(f, 150, 700)), evened(noveltyOf(f, 6000, 1e9))};
  out.all = evened({f.novelty.begin(), f.novelty.end()});
  return out;
}

}  // namespace synth::analysis
