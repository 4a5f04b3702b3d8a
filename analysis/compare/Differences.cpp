#include "analysis/compare/Differences.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

size_t thirdOctaveAt(double centre) {
  return size_t(std::find(ThirdOctaves.begin(), ThirdOctaves.end(), centre) - ThirdOctaves.begin());
}

bool isLossy(const Features& f) {
  const double top = f.thirdOctaveDb[thirdOctaveAt(20000)];
  return top < f.thirdOctaveDb[thirdOctaveAt(16000)] - 8 && top < f.thirdOctaveDb[thirdOctaveAt(12500)] - 11;
}

// From 8 to 12.5 kHz.
double lowAirDb(const Features& f) {
  double power = 0;
  for (double centre : {8000, 10000, 12500}) power += dbPower(f.thirdOctaveDb[thirdOctaveAt(centre)]);
  return powerDb(power);
}

void compareSpectra(const Features& reference, const Features& render, Differences& d) {
  for (size_t b = 0; b < bandCount; b++) d.bandsDb[b] = render.bandsDb[b] - reference.bandsDb[b];
  d.lossyReference = isLossy(reference);
  if (d.lossyReference) d.bandsDb[bandCount - 1] = lowAirDb(render) - lowAirDb(reference);
  double squares = 0;
  int counted = 0;
  for (size_t i = 0; i < ThirdOctaves.size(); i++) {
    const double difference = render.thirdOctaveDb[i] - reference.thirdOctaveDb[i];
    d.thirdOctaveDb.push_back(difference);
    if (ThirdOctaves[i] < 40 || ThirdOctaves[i] > 16000) continue;
    squares += std::min(difference * difference, 400.0);
    counted++;
  }
  d.thirdOctaveRmsDb = std::sqrt(squares / counted);
  if (reference.centroidHz > 0)
    d.centroidPct = 100 * (render.centroidHz - reference.centroidHz) / reference.centroidHz;
  double distance = 0;
  for (size_t k = 1; k < reference.mfcc.size(); k++)
    distance += (render.mfcc[k] - reference.mfcc[k]) * (render.mfcc[k] - reference.mfcc[k]);
  d.mfccDistance = std::sqrt(distance);
  d.flatnessDb = powerDb(render.flatness) - powerDb(reference.flatness);
}

// Pearson's, of the frames' levels in a coarse band, each at least -100 dB; 0 where one does not move.
double envelopeCorrelation(const Features& a, const Features& b, size_t band) {
  const int count = std::min(a.frames(), b.frames());
  if (count < 3) return 0;
  auto level = [&](const Features& f, int i) {
    return std::max(double(f.bandLevelsDb[size_t(i)][band]), -100.0);
  };
  double meanA = 0, meanB = 0;
  for (int i = 0; i < count; i++) {
    meanA += level(a, i);
    meanB += level(b, i);
  }
  meanA /= count;
  meanB /= count;
  double aa = 0, bb = 0, ab = 0;
  for (int i = 0; i < count; i++) {
    const double x = level(a, i) - meanA, y = level(b, i) - meanB;
    aa += x * x;
    bb += y * y;
    ab += x * y;
  }
  // What does not move may leave the rounding of its mean behind.
  constexpr double still = 1e-12;
  return aa > still * count && bb > still * count ? std::clamp(ab / std::sqrt(aa * bb), -1.0, 1.0) : 0;
}

// Pairs each reference onset with the nearest free one of the render within 50 ms.
void pairOnsets(const Features& reference, const Features& render, Differences& d) {
  constexpr int farthest = 5;  // frames
  std::vector<char> used(render.onsetFrames.size(), 0);
  int pairs = 0;
  size_t near = 0;  // both lists rise, so what is too early once is too early for the rest
  for (int frame : reference.onsetFrames) {
    int best = -1, distance = farthest;
    while (near < used.size() && render.onsetFrames[near] < frame - farthest) near++;
    for (size_t i = near; i < used.size() && render.onsetFrames[i] <= frame + farthest; i++) {
      const int away = std::abs(render.onsetFrames[i] - frame);
      if (used[i] || away > distance) continue;
      best = int(i);
      distance = away;
    }
    if (best < 0) {
      d.onsetsMissing.push_back(double(frame) / framesPerSecond);
    } else {
      used[size_t(best)] = 1;
      pairs++;
    }
  }
  const size_t both = reference.onsets.size() + render.onsets.size();
  d.onsetsExtra = int(render.onsets.size()) - pairs;
  d.onsetF1 = both ? 2.0 * pairs / double(both) : 1;
}

void compareTempi(const Features& reference, const Features& render, double bpm, Differences& d) {
  d.renderTempoBpm = bpm > 0 ? bpm : render.tempoBpm;
  d.referenceTempoBpm = reference.tempoBpm;
  if (!(d.renderTempoBpm > 0) || !(reference.tempoBpm > 0)) return;
  // Where both sound equally fast the estimate is off for both, not the render's tempo.
  constexpr double same = 0.005;
  if (bpm > 0 && std::fabs(render.tempoBpm / reference.tempoBpm - 1) < same) {
    d.referenceTempoBpm = bpm;
    return;
  }
  bool first = true;
  for (double ratio : {1.0, 2.0, 0.5, 1.5, 2.0 / 3}) {
    const double candidate = reference.tempoBpm * ratio;
    const double percent = 100 * (d.renderTempoBpm - candidate) / candidate;
    if (!first && !(std::fabs(percent) < std::fabs(d.tempoPct))) continue;
    first = false;
    d.tempoPct = percent;
    d.referenceTempoBpm = candidate;
  }
}

// The power of a window's frames, and their pitch classes weighted by it.
double windowChroma(const Features& f, int from, int to, std::array<double, 12>& chroma) {
  chroma = {};
  double total = 0;
  for (int i = from; i < to; i++) {
    const double power = dbPower(double(f.levelDb[size_t(i)]));
    total += power;
    for (size_t c = 0; c < 12; c++) chroma[c] += power * double(f.chromaFrames[size_t(i)][c]);
  }
  return total;
}

// The cosine of both sides' pitch classes in windows of half a second, weighted by the reference's power.
double chromaSimilarity(const Features& reference, const Features& render) {
  constexpr int window = 50;
  const int count = std::min(reference.frames(), render.frames());
  double cosines = 0, weight = 0;
  for (int from = 0; from + window <= count; from += window) {
    std::array<double, 12> a, b;
    const double power = windowChroma(reference, from, from + window, a);
    windowChroma(render, from, from + window, b);
    const double aa = dot(a.data(), a.data(), 12), bb = dot(b.data(), b.data(), 12);
    if (!(aa > 0)) continue;
    if (bb > 0) cosines += power * dot(a.data(), b.data(), 12) / std::sqrt(aa) / std::sqrt(bb);
    weight += power;
  }
  return weight > 0 ? std::min(cosines / weight, 1.0) : 1;
}

}  // namespace

Differences differencesOf(const Features& reference, const Features& render, double bpm, double loudnessLu) {
  Differences d;
  compareSpectra(reference, render, d);
  for (size_t band = 0; band < 3; band++)
    d.envelopeCorrelation[band] = envelopeCorrelation(reference, render, band);
  d.attackMs = render.attackMs - reference.attackMs;
  d.crestDb = render.crestDb - reference.crestDb;
  pairOnsets(reference, render, d);
  compareTempi(reference, render, bpm, d);
  d.chromaSimilarity = chromaSimilarity(reference, render);
  d.loudnessLu = loudnessLu;
  d.lraLu = render.lraLu - reference.lraLu;
  d.sideMidDb = render.sideMidDb - reference.sideMidDb;
  d.correlation = render.correlation - reference.correlation;
  return d;
}

Scores scoresOf(const Differences& d) {
  Scores s;
  s.spectralBalance = scoreOf(d.thirdOctaveRmsDb, 4);
  s.timbre = (scoreOf(d.centroidPct, 20) + scoreOf(d.mfccDistance, 25) + scoreOf(d.flatnessDb, 6)) / 3;
  const double together =
      (d.envelopeCorrelation[0] + d.envelopeCorrelation[1] + d.envelopeCorrelation[2]) / 3;
  s.envelope = (100 * std::max(together, 0.0) + scoreOf(d.attackMs, 15) + scoreOf(d.crestDb, 3)) / 3;
  s.rhythm = 80 * d.onsetF1 + 0.2 * scoreOf(d.tempoPct, 2);
  s.pitch = 100 * std::clamp((d.chromaSimilarity - 0.6) / 0.4, 0.0, 1.0);
  s.levelStereo = (scoreOf(d.loudnessLu, 2) + scoreOf(d.lraLu, 3) + scoreOf(d.sideMidDb, 3) +
                   scoreOf(d.correlation, 0.2)) /
                  4;
  s.overall = 0.25 * s.spectralBalance + 0.15 * s.timbre + 0.15 * s.envelope + 0.2 * s.rhythm +
              0.15 * s.pitch + 0.1 * s.levelStereo;
  return s;
}

}  // namespace synth::analysis
