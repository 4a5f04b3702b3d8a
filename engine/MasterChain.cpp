#include "engine/MasterChain.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/Metronome.h"
#include "engine/Resolve.h"

namespace synth {
namespace {

using namespace dsp;

constexpr float masterSlew = 0.003f, masterGain = 1.25f, quietLevel = 1e-7f;
constexpr u32 ringMask = Master::ringSize - 1;
constexpr int masterTarget = automation::firstBusTarget, ceilingTarget = automation::firstBusTarget + 3;

// The running maximum over the last `lookahead` frames and the one that leaves the delay now: peaks that a
// later, larger one outlives are dropped at once, so the head is always the maximum.
float windowPeak(Master& m, float peak) {
  while (m.peakTail != m.peakHead && m.peaks[(m.peakTail - 1) & ringMask] <= peak) m.peakTail--;
  m.peaks[m.peakTail & ringMask] = peak;
  m.places[m.peakTail & ringMask] = m.write;
  m.peakTail++;
  if (m.write - m.places[m.peakHead & ringMask] > u32(m.lookahead)) m.peakHead++;
  return m.peaks[m.peakHead & ringMask];
}

// A look-ahead limiter: the gain falls as soon as a peak enters the window, before it leaves the delay.
void limit(Master& m, Block& l, Block& r, int n) {
  const float c = m.ceiling;
  for (int i = 0; i < n; i++) {
    const float peak = windowPeak(m, std::max(std::fabs(l[i]), std::fabs(r[i])));
    const float target = peak > c ? c / peak : 1;
    m.gain = target < m.gain ? target : m.gain * m.releaseCoefficient + target * (1 - m.releaseCoefficient);
    m.delayL[m.write & ringMask] = l[i];
    m.delayR[m.write & ringMask] = r[i];
    const u32 at = (m.write - u32(m.lookahead)) & ringMask;
    m.write++;
    l[i] = clip(m.delayL[at] * m.gain, c);
    r[i] = clip(m.delayR[at] * m.gain, c);
  }
}

void blockDc(Master& m, Block& x, int channel, int n) {
  const float limit = std::min(m.ceiling, 1.0f);
  for (int i = 0; i < n; i++) {
    const float y = flushed(x[i] - m.x1[channel] + 0.9987f * m.y1[channel]);
    m.x1[channel] = x[i];
    m.y1[channel] = y;
    x[i] = clip(y, limit);
    m.outputPeak[channel] = std::max(m.outputPeak[channel] * 0.9995f, std::fabs(x[i]));
  }
}

bool quiet(const Block& l, const Block& r, int i) {
  return std::fabs(l[i]) < quietLevel && std::fabs(r[i]) < quietLevel;
}

// The Master sleeps after a second of silence while the transport stands, on the sixteen-sample grid, and
// wakes with the first segment in which anything may sound.
bool asleep(EngineCore& core, int n) {
  Master& m = core.master;
  const bool standing = !core.transport.playing;
  if (!standing || !silent(core.mix.outL, n) || !silent(core.mix.outR, n)) {
    m.sleeping = false;
  } else if (onGrid(core)) {
    m.sleeping = m.quiet >= u32(core.rates.rate);
  }
  return m.sleeping;
}

}  // namespace

void prepareMaster(EngineCore& core) {
  Master& m = core.master;
  m.lookahead = std::clamp(int(core.rates.rate * 0.0015), 8, Master::ringSize - 1);
  m.releaseCoefficient = float(math::exp(-1 / (core.rates.rate * 0.08)));
}

void renderMaster(EngineCore& core) {
  const int n = core.clock.n;
  SegmentMix& mix = core.mix;
  Master& m = core.master;
  mix.outL = mix.dryL;
  mix.outR = mix.dryR;
  addMetronome(core, mix.outL, mix.outR, n);

  const float level = busValue(core, masterTarget);
  m.ceiling = busValue(core, ceilingTarget);
  Block gain;
  if (m.smooth + (level - m.smooth) * masterSlew == m.smooth) {
    gain.fill(m.smooth * masterGain);
  } else {
    for (int i = 0; i < n; i++) gain[i] = (m.smooth += (level - m.smooth) * masterSlew) * masterGain;
    for (int i = n; i < segment; i++) gain[i] = 0;
  }
  if (asleep(core, n)) {
    mix.outL.fill(0);
    mix.outR.fill(0);
    for (int i = 0; i < n; i++)
      for (float& peak : m.outputPeak) peak = flushed(peak * 0.9995f);
    m.quiet = core.transport.playing ? 0 : m.quiet + u32(n);
    return;
  }
  for (int q = 0; q < quads(n); q++) {
    mix.outL.put(q, mix.outL.at(q) * gain.at(q));
    mix.outR.put(q, mix.outR.at(q) * gain.at(q));
  }
  limit(m, mix.outL, mix.outR, n);
  blockDc(m, mix.outL, 0, n);
  blockDc(m, mix.outR, 1, n);
  for (int i = 0; i < n; i++) m.quiet = quiet(mix.outL, mix.outR, i) ? m.quiet + 1 : 0;
  if (core.transport.playing) m.quiet = 0;
}

}  // namespace synth
