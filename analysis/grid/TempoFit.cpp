#include "analysis/grid/TempoFit.h"

#include <cstdio>
#include <cstdlib>

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

struct Candidate {
  double ratio;  // to the first one
  double bpm, locking, fit, score = 0;
};

// The tempo of lo..hi at which the onsets lock to sixteenths best, and how well. Their phases turn evenly
// with the tempo, so each is a rotation from one step to the next.
class Scan {
 public:
  Scan(const std::vector<PreciseOnset>& onsets, double lo) {
    for (const PreciseOnset& onset : onsets) {
      const double start = turn(onset.seconds * lo / 15), step = turn(onset.seconds * stepBpm / 15);
      re_.push_back(onset.strength * math::cos(start));
      im_.push_back(onset.strength * math::sin(start));
      stepRe_.push_back(math::cos(step));
      stepIm_.push_back(math::sin(step));
      weight_ += onset.strength;
    }
  }
  // The locking at this step; then on to the next.
  double next() {
    double c = 0, s = 0;
    for (size_t i = 0; i < re_.size(); i++) {
      c += re_[i];
      s += im_[i];
    }
    for (size_t i = 0; i < re_.size(); i++) {
      const double re = re_[i] * stepRe_[i] - im_[i] * stepIm_[i];
      im_[i] = re_[i] * stepIm_[i] + im_[i] * stepRe_[i];
      re_[i] = re;
    }
    return weight_ > 0 ? std::sqrt(c * c + s * s) / weight_ : 0;
  }

  static constexpr double stepBpm = 0.005;

 private:
  static double turn(double turns) { return 2 * math::pi * (turns - std::floor(turns)); }

  std::vector<double> re_, im_, stepRe_, stepIm_;
  double weight_ = 0;
};

// The tempo around a centre that fits best, and how much better than by chance it does.
Candidate search(const std::vector<PreciseOnset>& onsets, double centre, double reach) {
  const double lo = centre * (1 - reach), hi = centre * (1 + reach);
  Candidate best{1, centre, -1, 0};
  Scan scan(onsets, lo);
  for (int k = 0; lo + k * Scan::stepBpm <= hi; k++) {
    const double value = scan.next();
    if (value > best.locking) best = {1, lo + k * Scan::stepBpm, value, 0};
  }
  const double period = 15 / best.bpm, phase = sixteenthPhase(onsets, best.bpm);
  const double tolerance = std::min(period / 4, 0.025), chance = 2 * tolerance / period;
  double on = 0, all = 0;
  for (const PreciseOnset& onset : onsets) {
    const double off = (onset.seconds - phase) / period;
    if (std::fabs(off - std::round(off)) * period <= tolerance) on += onset.strength;
    all += onset.strength;
  }
  best.fit = all > 0 ? (on / all - chance) / (1 - chance) : 0;
  return best;
}

double truncated(double value, double scale) { return std::floor(value * scale + 1e-6) / scale; }

std::vector<Candidate> candidatesOf(const std::vector<PreciseOnset>& onsets, double heard, double known) {
  if (known > 0) return {search(onsets, std::max(known, slowestBpm), 0.01)};
  constexpr double slowest = 60, fastest = 200, fallback = 120;
  std::vector<Candidate> out;
  double first = 0;
  for (double factor : {1.0, 2.0, 0.5, 1.5, 2.0 / 3, 4.0 / 3, 0.75}) {
    const double bpm = heard * factor;
    if (bpm < slowest || bpm > fastest) continue;
    if (out.empty()) first = bpm;
    out.push_back(search(onsets, bpm, 0.015));
    out.back().ratio = bpm / first;
  }
  if (out.empty()) out.push_back(search(onsets, fallback, 0.015));
  return out;
}

}  // namespace

double sixteenthPhase(const std::vector<PreciseOnset>& onsets, double bpm) {
  const double period = 15 / bpm;
  double c = 0, s = 0;
  for (const PreciseOnset& onset : onsets) {
    const double turns = onset.seconds / period, angle = 2 * math::pi * (turns - std::floor(turns));
    c += onset.strength * math::cos(angle);
    s += onset.strength * math::sin(angle);
  }
  const double phase = period * math::atan2(s, c) / (2 * math::pi);
  return phase < 0 ? phase + period : phase;
}

void fitTempo(const std::vector<PreciseOnset>& onsets, double heard, double known, Grid& grid) {
  std::vector<Candidate> list = candidatesOf(onsets, heard, known);
  double most = 1e-9;
  for (const Candidate& c : list) most = std::max(most, c.fit);
  const double firstFit = list[0].fit;
  const bool firstFits = firstFit >= 0.25 * most;
  for (size_t i = 0; i < list.size(); i++) {
    Candidate& c = list[i];
    c.score = c.fit / most - 0.5 * std::fabs(math::log2(c.bpm / 125));
    if (i == 0)
      c.score += firstFits ? 10 : c.fit >= 0.9 * most ? 5 : 0;
    else if (!firstFits && c.fit >= 0.9 * most)
      c.score += 5;
    const bool third = std::fabs(c.ratio - 1.5) <= 0.02 || std::fabs(c.ratio - 0.75) <= 0.02;
    if (firstFits && third && c.fit > 1.5 * firstFit) grid.tripletFeel = true;
    if (std::getenv("SYNTH_DEBUG_GRID"))
      std::fprintf(stderr, "candidate %.2f R %.3f fit %.3f\n", c.bpm, c.locking, c.fit);
  }
  std::stable_sort(list.begin(), list.end(),
                   [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
  grid.bpm = truncated(list[0].bpm, 100);
  auto relative = [&](const Candidate& c) {
    return list[0].score > 0 ? std::max(c.score / list[0].score, 0.0) : 0.0;
  };
  for (size_t i = 1; i < std::min<size_t>(list.size(), 4); i++)
    grid.alternatives.push_back({truncated(list[i].bpm, 100), relative(list[i])});
  grid.tempoConfidence =
      list.size() == 1 ? 1
                       : std::clamp(1 - (list[0].score > 0 ? list[1].score / list[0].score : 1), 0.0, 1.0);
}

}  // namespace synth::analysis
