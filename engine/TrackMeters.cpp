#include "engine/TrackMeters.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace synth {
namespace {

using namespace dsp;

constexpr float peakFall = 0.9995f;        // a sample, of the peaks
constexpr float energyFall = 1 - 0.0005f;  // of the mean squares
constexpr float quietLevel = 1e-7f;

// Powers of a fall from the fifteenth to the zeroth, then zeros: read from 16 - n on, they weigh the
// samples of a segment by how long ago they were at its end.
struct Weights {
  float v[2 * segment] = {};
  float all[segment + 1];  // fall^n

  constexpr explicit Weights(float fall) {
    all[0] = 1;
    for (int n = 1; n <= segment; n++) all[n] = all[n - 1] * fall;
    for (int i = 0; i < segment; i++) v[i] = all[segment - 1 - i];
  }
  f4 at(int quad, int n) const { return load(v + segment - n + 4 * quad); }
};
constexpr Weights peakWeights{peakFall}, energyWeights{energyFall};

float sum(f4 v) { return (v[0] + v[1]) + (v[2] + v[3]); }

float followPeak(float peak, const Block& x, int n) {
  Block weighted;
  for (int q = 0; q < quads(n); q++) weighted.put(q, x.at(q) * peakWeights.at(q, n));
  return flushed(std::max(peak * peakWeights.all[n], peakOf(weighted, n)));
}

void writeScope(EngineCore& core, int t, const Block* middle) {
  for (int i = int(-core.sampleClock & 7); i < core.clock.n; i += 8)
    core.view.scope[t][((core.sampleClock + u64(i)) >> 3) % 120] = middle ? (*middle)[i] : 0;
}

}  // namespace

void meterEnergy(EngineCore& core, int t, const Block& l, const Block& r) {
  TrackState& s = core.tracks[t];
  const int n = core.clock.n;
  alignas(16) float shifted[segment + 4];  // the middle behind the last sample of the segment before
  Block middle;
  shifted[0] = s.lastMid;
  for (int q = 0; q < quads(n); q++) {
    middle.put(q, (l.at(q) + r.at(q)) * splat(0.5f));
    store(shifted + 1 + 4 * q, middle.at(q));
  }
  f4 energy = splat(0), edge = splat(0);
  for (int q = 0; q < quads(n); q++) {
    const f4 w = energyWeights.at(q, n), step = middle.at(q) - load(shifted + 4 * q);
    energy += onlyWhere(within(q, n), w * middle.at(q) * middle.at(q));
    edge += onlyWhere(within(q, n), w * step * step);
  }
  const float keep = energyWeights.all[n], share = 1 - energyFall;
  s.energy = flushed(s.energy * keep + sum(energy) * share);
  s.edge = flushed(s.edge * keep + sum(edge) * share);
  s.lastMid = middle[n - 1];
  writeScope(core, t, &middle);
}

void meterPeaks(EngineCore& core, int t, const Block& l, const Block& r) {
  TrackState& s = core.tracks[t];
  s.peakL = followPeak(s.peakL, l, core.clock.n);
  s.peakR = followPeak(s.peakR, r, core.clock.n);
}

void fadeMeters(EngineCore& core, int t) {
  TrackState& s = core.tracks[t];
  const int n = core.clock.n;
  s.peakL = flushed(s.peakL * peakWeights.all[n]);
  s.peakR = flushed(s.peakR * peakWeights.all[n]);
  s.energy = flushed(s.energy * energyWeights.all[n]);
  s.edge = flushed(s.edge * energyWeights.all[n]);
  s.lastMid = 0;
  writeScope(core, t, nullptr);
}

void countQuiet(const EngineCore& core, u32& quiet, const Block& l, const Block& r, int n) {
  if (core.transport.playing)
    quiet = 0;
  else
    dsp::countQuiet(quiet, l, r, quietLevel, n);
}

}  // namespace synth
