#include "analysis/Rhythm.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

void measureNovelty(const Spectra& spectra, Features& f) {
  const std::vector<double> rise = melRise(f, 0, melCount);
  double most = 0;
  for (int i = 1; i < f.frames(); i++)
    if (spectra.active(i)) most = std::max(most, rise[size_t(i)]);
  f.novelty.assign(size_t(f.frames()), 0);
  if (!(most > 0)) return;
  for (int i = 1; i < f.frames(); i++)
    if (spectra.active(i)) f.novelty[size_t(i)] = float(rise[size_t(i)] / most);
}

// Peaks of the novelty that stand out of the tenth of a second around them.
void findOnsets(Features& f) {
  const int frames = f.frames();
  if (frames > 4) {
    int last = -100;
    for (int i = 1; i <= frames - 4; i++) {
      const double here = double(f.novelty[size_t(i)]);
      bool peak = true;
      for (int k = std::max(0, i - 3); k <= i + 3 && peak; k++) peak = here >= double(f.novelty[size_t(k)]);
      if (!peak) continue;
      double mean = 0;
      const int from = std::max(0, i - 10);
      for (int k = from; k <= i + 3; k++) mean += double(f.novelty[size_t(k)]);
      mean /= i + 3 - from + 1;
      if (here <= mean + 0.06 || i - last <= 2) continue;
      last = i;
      f.onsetFrames.push_back(i);
      f.onsets.push_back(double(i) / framesPerSecond);
    }
  }
  f.onsetsPerS = double(f.onsets.size()) / std::max(f.seconds, 1e-9);
}

// Autocorrelation of the novelty, with one preference for 120 BPM (log-normal, 0.9 octaves).
void findTempo(Features& f) {
  constexpr int shortest = 25, longest = 129;
  std::vector<double> x(f.novelty.begin(), f.novelty.end());
  const int n = int(x.size());
  const double mean = sum(x.data(), n) / n;
  for (double& v : x) v -= mean;
  const double energy = dot(x.data(), x.data(), n);
  if (!(energy > 0)) return;
  std::array<double, longest + 2> r{};
  int best = 0;
  double bestScore = 0;
  for (int lag = shortest; lag <= longest; lag++) {
    if (lag < n) r[size_t(lag)] = dot(x.data(), x.data() + lag, n - lag);
    const double octaves = math::log2(6000.0 / lag / 120) / 0.9;
    const double score = r[size_t(lag)] * math::exp(-0.5 * octaves * octaves);
    if (score > bestScore) {
      bestScore = score;
      best = lag;
    }
  }
  if (best <= shortest || best >= longest) return;
  const double before = r[size_t(best - 1)], at = r[size_t(best)], after = r[size_t(best + 1)];
  const double bend = before + after - 2 * at;
  const double offset = bend != 0 ? std::clamp(0.5 * (before - after) / bend, -0.5, 0.5) : 0;
  f.tempoBpm = 6000 / (best + offset);
  f.tempoConfidence = at / energy;
}

}  // namespace

std::vector<double> melRise(const Features& f, int first, int last) {
  float loudest = -200;
  for (const auto& mel : f.melDb)
    for (float level : mel) loudest = std::max(loudest, level);
  const float floor = loudest - 80;
  std::vector<double> rise(f.melDb.size());
  for (size_t i = 1; i < f.melDb.size(); i++)
    for (size_t m = size_t(first); m < size_t(last); m++)
      rise[i] += double(std::max(0.0f, std::max(f.melDb[i][m], floor) - std::max(f.melDb[i - 1][m], floor)));
  return rise;
}

void measureRhythm(const Spectra& spectra, Features& features) {
  measureNovelty(spectra, features);
  findOnsets(features);
  findTempo(features);
}

}  // namespace synth::analysis
