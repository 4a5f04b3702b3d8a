#include "analysis/grid/BarOne.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr int phases = 16;

// The largest value within two frames of a time; 0 outside.
double near(const std::vector<double>& curve, double seconds) {
  const long centre = std::lround(seconds * framesPerSecond);
  double most = 0;
  for (long i = std::max(centre - 2, 0L); i <= std::min(centre + 2, long(curve.size()) - 1); i++)
    most = std::max(most, curve[size_t(i)]);
  return most;
}

// A bar begins where the kick sits and the snare does not.
double barScore(const BandNovelty& novelty, double start, double beat) {
  const auto &low = novelty.bands[0], &mid = novelty.bands[1];
  const double t[4] = {start, start + beat, start + 2 * beat, start + 3 * beat};
  double all = 0;
  for (double at : t) all += near(novelty.all, at);
  return near(low, t[0]) + 0.5 * near(low, t[2]) + 0.7 * (near(mid, t[1]) + near(mid, t[3])) -
         0.3 * (near(low, t[1]) + near(low, t[3])) + 0.3 * all;
}

// Where the music begins: the first frame within 30 dB of the loudest, or the first strong onset.
double startOf(const Features& f, const std::vector<PreciseOnset>& onsets) {
  const float quiet = *std::max_element(f.levelDb.begin(), f.levelDb.end()) - 30;
  for (int i = 0; i < f.frames(); i++)
    if (f.levelDb[size_t(i)] > quiet) return double(i) / framesPerSecond;
  double most = 0;
  for (const PreciseOnset& onset : onsets) most = std::max(most, onset.strength);
  for (const PreciseOnset& onset : onsets)
    if (onset.strength > most / 2) return onset.seconds;
  return 0;
}

double circularDistance(double a, double b, double period) {
  const double turns = (a - b) / period;
  return std::fabs(turns - std::round(turns)) * period;
}

}  // namespace

void fitBarOne(const Features& f, const std::vector<PreciseOnset>& onsets, double phase, Grid& grid) {
  const double step = grid.stepS(), bar = grid.barS(), end = f.seconds;
  const BandNovelty novelty = bandNovelty(f);
  std::array<double, phases> scores{};
  for (int k = 0; k < phases; k++)
    for (int b = -4;; b++) {
      const double start = phase + k * step + b * bar;
      if (start >= end) break;
      if (start + bar >= 0) scores[size_t(k)] += barScore(novelty, start, 4 * step);
    }

  const double musicStart = startOf(f, onsets);
  auto away = [&](int k) { return circularDistance(phase + k * step, musicStart, bar); };
  int best = int(std::max_element(scores.begin(), scores.end()) - scores.begin());
  const int highest = best;
  // Of phases that are as likely the one where the music begins wins.
  for (int k = 0; k < phases; k++)
    if (k != highest && scores[size_t(k)] >= 0.92 * scores[size_t(best)] && away(k) + step / 2 < away(best))
      best = k;

  std::sort(scores.begin(), scores.end(), std::greater<>());
  if (scores[0] > 0) grid.bar1Confidence = std::clamp((scores[0] - scores[1]) / scores[0], 0.0, 1.0);
  double downbeat = std::fmod(phase + best * step, bar);
  // Just before a bar is that bar.
  if (bar - downbeat < 0.02) downbeat -= bar;
  grid.downbeatS = std::max(std::floor(downbeat * 1000 + 1e-6) / 1000, 0.0);
}

}  // namespace synth::analysis
