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
constexpr float leastEqMove = 0.05f;  // dB
constexpr int masterTarget = automation::firstBusTarget, compTarget = masterTarget + 1,
              compReleaseTarget = masterTarget + 2, ceilingTarget = masterTarget + 3,
              saturationTarget = masterTarget + 4, firstBandTarget = masterTarget + 5,
              chainTarget = firstBandTarget + masterBands;

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

// The Master sleeps after a second of silence while the transport stands and no Send sounds on, on the
// sixteen-sample grid, and wakes with the first segment in which anything may sound.
bool asleep(EngineCore& core, int n) {
  Master& m = core.master;
  const bool standing = !core.transport.playing;
  if (!standing || !silent(core.mix.out.l, n) || !silent(core.mix.out.r, n)) {
    if (m.sleeping) m.quiet = 0;
    m.sleeping = false;
  } else if (onGrid(core)) {
    m.sleeping = m.quiet >= u32(core.rates.rate) && !core.sends[0].tails() && !core.sends[1].tails();
  }
  return m.sleeping;
}

// A touch or a Lane that moves a band by more than can be heard asks for a new design.
void followEq(EngineCore& core) {
  float gains[masterBands];
  bool moved = false;
  for (int band = 0; band < masterBands; band++) {
    gains[band] = busValue(core, firstBandTarget + band);
    moved |= std::fabs(gains[band] - core.master.eq.remembered[band]) > leastEqMove;
  }
  if (!moved) return;
  std::copy(gains, gains + masterBands, core.master.eq.remembered);
  core.master.eq.install(designMasterEq(gains, core.rates.rate), core.sampleClock == 0);
}

// Send I, as much of it as the chain takes into Send II, and that.
void runSends(EngineCore& core, int n) {
  SegmentMix& mix = core.mix;
  const bool rests = !core.transport.playing;
  const double bpm = double(core.project->bpm);
  fx::Stereo second;
  core.sends[0].run(core.sendNow[0], bpm, mix.send[0], mix.wet, n, core.sampleClock, rests);
  Block chain;
  core.master.chain.run(busValue(core, chainTarget), core.rates.sendSmooth, chain, n);
  if (chain[n - 1] != 0 || chain[0] != 0)
    for (int q = 0; q < quads(n); q++) {
      mix.send[1].l.put(q, mix.send[1].l.at(q) + mix.wet.l.at(q) * chain.at(q));
      mix.send[1].r.put(q, mix.send[1].r.at(q) + mix.wet.r.at(q) * chain.at(q));
    }
  core.sends[1].run(core.sendNow[1], bpm, mix.send[1], second, n, core.sampleClock, rests);
  for (int q = 0; q < quads(n); q++) {
    mix.wet.l.put(q, mix.wet.l.at(q) + second.l.at(q));
    mix.wet.r.put(q, mix.wet.r.at(q) + second.r.at(q));
  }
}

}  // namespace

void prepareMaster(EngineCore& core) {
  Master& m = core.master;
  m.lookahead = std::clamp(int(core.rates.rate * 0.0015), 8, Master::ringSize - 1);
  m.releaseCoefficient = float(math::exp(-1 / (core.rates.rate * 0.08)));
  m.dynamics.prepare(core.rates.rate);
  m.eq.forget();
}

void tickMaster(EngineCore& core) {
  const bool snap = core.sampleClock == 0;
  const Project& p = *core.project;
  const double evenStep = core.rates.rate * 15 / double(p.bpm) * 2 * double(p.swing);
  core.moves.tick({core.lanes.moves, core.lanes.moveBound}, double(p.bpm), evenStep, snap);
  core.master.dynamics.set(busValue(core, saturationTarget), busValue(core, compTarget),
                           busValue(core, compReleaseTarget));
  if ((core.sampleClock & 511) == 0) followEq(core);
  if (!snap) return;
  core.master.smooth = busValue(core, masterTarget);
  core.master.chain.now = busValue(core, chainTarget);
}

void renderMaster(EngineCore& core) {
  const int n = core.clock.n;
  SegmentMix& mix = core.mix;
  Master& m = core.master;
  core.moves.addNoise(mix.send, n);
  runSends(core, n);
  core.moves.mix(mix.dry, mix.wet, mix.out, n);
  addMetronome(core, mix.out.l, mix.out.r, n);
  core.moves.play(mix.out, core.clock.songTime, n);
  core.moves.advance(n);

  const float level = busValue(core, masterTarget);
  m.ceiling = busValue(core, ceilingTarget);
  Block gain;
  if (m.smooth + (level - m.smooth) * masterSlew == m.smooth) {
    gain.fill(m.smooth * masterGain);
  } else {
    for (int i = 0; i < n; i++)
      gain[i] = (m.smooth = flushed(m.smooth + (level - m.smooth) * masterSlew)) * masterGain;
    for (int i = n; i < segment; i++) gain[i] = 0;
  }
  if (asleep(core, n)) {
    mix.out.l.fill(0);
    mix.out.r.fill(0);
    for (int i = 0; i < n; i++)
      for (float& peak : m.outputPeak) peak = flushed(peak * 0.9995f);
    m.quiet = core.transport.playing ? 0 : counted(m.quiet, n);
    return;
  }
  m.eq.process(mix.out.l, mix.out.r, n, onGrid(core));
  m.dynamics.process(mix.out.l, mix.out.r, n, core.sine);
  for (int q = 0; q < quads(n); q++) {
    mix.out.l.put(q, mix.out.l.at(q) * gain.at(q));
    mix.out.r.put(q, mix.out.r.at(q) * gain.at(q));
  }
  limit(m, mix.out.l, mix.out.r, n);
  blockDc(m, mix.out.l, 0, n);
  blockDc(m, mix.out.r, 1, n);
  countQuiet(m.quiet, mix.out.l, mix.out.r, quietLevel, n);
  if (core.transport.playing) m.quiet = 0;
}

}  // namespace synth
