// Rendering all voices over a segment in passes: what moves, side by side; sources, voice by voice;
// filters, side by side; level, pan and declick; at last the sums, in slot order.
#include <algorithm>
#include <cmath>

#include "engine/Drums.h"
#include "engine/VoiceMotion.h"
#include "engine/VoicePool.h"
#include "engine/Voices.h"
#include "engine/dsp/Phase.h"
#include "engine/dsp/Random.h"
#include "engine/kinds/Kind.h"

namespace synth {
namespace {

using namespace dsp;

// ---- Pass 2: the source.

void addSubAndNoise(const EngineCore& core, Voice& v, const Block& inc, Block& mid, int n) {
  const Track& track = core.track(v.track);
  if (track.sub_level > 0) {
    Block half;
    for (int q = 0; q < segment / 4; q++) half.put(q, inc.at(q) * splat(0.5f));
    PhaseBlock phase;
    advance(v.subPhase, half, phase, n);
    for (int q = 0; q < quads(n); q++)
      mid.put(q, mid.at(q) + splat(track.sub_level * 0.6f) * sineAt(core.sine, phase.at(q)));
  }
  if (v.control.noise > 0)
    for (int i = 0; i < n; i++) mid[i] += v.control.noise * white(v.seed) * 0.5f;
}

// A voice that goes on while its Track changed its kind starts the new one from nothing, declicked.
void followKind(const EngineCore& core, Voice& v) {
  const u8 kind = core.track(v.track).engine;
  if (v.kind == kind) return;
  v.kind = kind;
  v.state = KindState{};
  v.state.seed = hash(v.seed ^ kind) | 1;
  v.fadeMid = v.lastMid;
  v.fadeSide = v.lastSide;
  v.fadeLeft = declickSamples;
}

// Returns whether the voice gives a side signal.
bool renderSource(EngineCore& core, Voice& v, const VoiceMotion& motion, Block& mid, Block& side) {
  const int n = core.clock.n;
  const Track& track = core.track(v.track);
  followKind(core, v);
  Block e[4];
  PhaseBlock phase;
  kinds::Run run;
  const Block& inc = motion.inc;
  run.incFlat = motion.incFlat;
  engineValues(core, v, motion, e, run.eFlat);

  const kinds::Render render = kinds::rendererOf(v.kind);
  if (!render) {
    mid.fill(0);
  } else {
    run.n = n;
    run.rate = float(core.rates.rate);
    run.sine = core.sine;
    run.inc = &inc;
    run.e = e;
    run.soft = v.control.soft;
    run.track = &track;
    run.clock = core.sampleClock;
    run.serial = v.serial;
    run.note = v.note;
    run.decay = v.coefficients.seconds[VoiceCoefficients::decaySeconds];
    run.hit = &v.hit;
    run.rift = &core.rift[&v - core.voices];
    run.mid = &mid;
    run.side = &side;
    run.phase = &phase;
    render(v.state, run);
  }
  const float soft = v.control.soft;
  const bool softened = render && soft < 1 && kinds::softens(v.kind);
  const f4 gain = splat(kinds::outputGain(v.kind) * track.osc_level);
  for (int q = 0; q < quads(n); q++) {
    f4 m = mid.at(q);
    if (softened) m = splat(soft) * m + splat((1 - soft) * 0.55f) * sineAt(core.sine, phase.at(q));
    mid.put(q, gain * m);
    if (run.stereo) side.put(q, gain * (softened ? splat(soft) : splat(1)) * side.at(q));
  }
  addSubAndNoise(core, v, inc, mid, n);
  return run.stereo;
}

// ---- Pass 3: filters, side by side.

void driveIntoSvf(Voice& v, Block& signal, int n) {
  const float d = v.svfDrive;
  if (d <= 0) return;
  const f4 in = splat(4 * d + 1), out = splat(1 / (1.5f * d + 1));
  for (int q = 0; q < quads(n); q++) signal.put(q, sat(clip(signal.at(q) * in, 4.5f)) * out);
}

struct FilterQueues {
  LadderChannel ladders[2 * voiceCount];
  SvfChannel svfs[2 * voiceCount];
  int ladderCount = 0, svfCount = 0;

  void add(Voice& v, Block& mid, Block& side, bool& stereo, int n) {
    if (v.control.filterType == 0) {
      ladders[ladderCount++] = {&mid, &v.ladderState[0], &v.ladder};
      if (!sideRuns(stereo, v.ladderState[1].rests(), side)) return;
      ladders[ladderCount++] = {&side, &v.ladderState[1], &v.ladder};
    } else {
      driveIntoSvf(v, mid, n);
      svfs[svfCount++] = {&mid, &v.svfState[0], &v.svf};
      if (!sideRuns(stereo, v.svfState[1].rests(), side)) return;
      driveIntoSvf(v, side, n);
      svfs[svfCount++] = {&side, &v.svfState[1], &v.svf};
    }
  }

  // The side takes part while it sounds or its filter still rings.
  static bool sideRuns(bool& stereo, bool rests, Block& side) {
    if (!stereo) {
      if (rests) return false;
      side.fill(0);
    }
    return stereo = true;
  }
};

// ---- Pass 4: level, click, pan, declick.

void applyLevel(const EngineCore& core, Voice& v, Block& mid, Block& side, const Block& amp, bool stereo,
                Block& velocity, int n) {
  const float va = v.control.velocityAmp;
  auto gainAt = [&](float value) {
    float g = value * 0.43f;
    if (va != 1) g *= (1 - va * (1 - value)) / std::max(value, 0.0001f);
    return g;
  };
  Block gain;
  const int mode = core.track(v.track).voice_mode;
  if (mode == 0 || v.velocity == v.targetVelocity) {
    velocity.fill(v.velocity);
    gain.fill(gainAt(v.velocity));
  } else {
    smooth(v.velocity, v.targetVelocity, core.rates.paramSmooth, velocity, n);
    for (int i = 0; i < segment; i++) gain[i] = gainAt(velocity[i]);
  }
  for (int q = 0; q < quads(n); q++) {
    const f4 g = gain.at(q) * amp.at(q);
    mid.put(q, mid.at(q) * g);
    if (stereo) side.put(q, side.at(q) * g);
  }
}

void addClick(const EngineCore& core, Voice& v, Block& mid, const Block& velocity, int n) {
  const float amount = core.track(v.track).click;
  for (int i = 0; i < n && v.clickLevel > 0.0001f; i++) {
    mid[i] += (velocity[i] * 0.6f + 0.4f) * v.clickLevel * amount *
              (white(v.clickSeed) * 0.35f + sineAt(core.sine, v.clickPhase) * 0.65f) * 0.5f;
    v.clickPhase += phaseStep(float(2600 / core.rates.rate));
    v.clickLevel *= core.rates.keyClick;
  }
}

// Two one-poles take the steps of the control rate out of what the LFOs do to level and place.
bool lfoSmooth(float& first, float& second, float target, float c, Block& out, int n) {
  if (first + (target - first) * c == first && second + (first - second) * c == second) {
    out.fill(second);
    return true;
  }
  for (int i = 0; i < n; i++) {
    first = flushed(first + (target - first) * c);
    out[i] = second = flushed(second + (first - second) * c);
  }
  for (int i = n; i < segment; i++) out[i] = second;
  return false;
}

// Returns whether the voice gives a side signal now.
bool place(const EngineCore& core, Voice& v, Block& mid, Block& side, bool stereo, int n) {
  Block gain, pan;
  lfoSmooth(v.lfoGain1, v.lfoGain2, v.control.lfoGain, core.rates.modSmooth, gain, n);
  const bool still = lfoSmooth(v.lfoPan1, v.lfoPan2, v.control.lfoPan, core.rates.modSmooth, pan, n);
  const bool panned = !still || v.lfoPan2 != 0 || v.unisonPan != 0;
  if (panned && !stereo) side.fill(0);
  const f4 unison = splat(v.unisonGain);
  for (int q = 0; q < quads(n); q++) {
    const f4 g = gain.at(q) * unison;
    const f4 m = mid.at(q) * g;
    mid.put(q, m);
    f4 s = stereo ? side.at(q) * g : splat(0);
    if (panned) s += m * clamp(pan.at(q) + splat(v.unisonPan), -1, 1) * splat(-0.85f);
    if (stereo || panned) side.put(q, s);
  }
  return stereo || panned;
}

void declick(Voice& v, Block& mid, Block& side, bool& stereo, int n) {
  if (v.fadeLeft > 0) {
    if (!stereo) side.fill(0);
    stereo = true;
    for (int i = 0; i < n && v.fadeLeft > 0; i++, v.fadeLeft--) {
      const float f = float(v.fadeLeft) / declickSamples;
      mid[i] = mid[i] * (1 - f) + f * v.fadeMid;
      side[i] = side[i] * (1 - f) + f * v.fadeSide;
    }
  }
  v.lastMid = mid[n - 1];
  v.lastSide = stereo ? side[n - 1] : 0;
}

// What is not a number is silence.
void keepFinite(Block& b, int n) {
  const f4 largest = splat(3.4e38f);
  for (int q = 0; q < quads(n); q++) b.put(q, onlyWhere(dsp::abs(b.at(q)) <= largest, b.at(q)));
}

void releaseOrphans(EngineCore& core) {
  for (Voice& v : core.voices) {
    if (!v.active || !v.ghost() || v.releasing) continue;
    const Voice& leader = core.voices[v.leader];
    if (!leader.active || leader.serial != v.leaderSerial) releaseVoice(core, v);
  }
}

}  // namespace

void renderVoices(EngineCore& core) {
  const int n = core.clock.n;
  SegmentMix& mix = core.mix;
  VoiceMotion motion[voiceCount];
  MotionQueue queue;
  FilterQueues filters;
  bool used[voiceCount] = {}, stereo[voiceCount] = {};
  releaseOrphans(core);
  const bool tick = onGrid(core);
  for (int i = 0; i < voiceCount; i++) {
    Voice& v = core.voices[i];
    if (!v.active) continue;
    used[i] = true;
    const bool first = v.sampleStart == core.sampleClock;
    if (tick) v.amp = flushed(v.amp);
    if (tick || first) controlVoice(core, v, first);
    if (!v.isPad) beginMotion(core, v, motion[i], queue);
  }
  runApproaches(queue.all, queue.count, n);
  for (int i = 0; i < voiceCount; i++) {
    Voice& v = core.voices[i];
    if (!used[i] || v.isPad) continue;
    finishMotion(core, v, motion[i]);
    stereo[i] = renderSource(core, v, motion[i], mix.voiceMid[i], mix.voiceSide[i]);
    filters.add(v, mix.voiceMid[i], mix.voiceSide[i], stereo[i], n);
  }
  runLadders(filters.ladders, filters.ladderCount, n, tick);
  runSvfs(filters.svfs, filters.svfCount, n, tick);

  for (int t = 0; t < limits::tracks; t++) mix.trackUsed[t] = false;
  for (int i = 0; i < voiceCount; i++) {
    if (!used[i]) continue;
    Voice& v = core.voices[i];
    Block &mid = mix.voiceMid[i], &side = mix.voiceSide[i];
    if (v.isPad) {
      renderHit(v, mid, side, n);
      stereo[i] = true;
    } else {
      Block velocity;
      applyLevel(core, v, mid, side, motion[i].amp, stereo[i], velocity, n);
      addClick(core, v, mid, velocity, n);
      stereo[i] = place(core, v, mid, side, stereo[i], n);
    }
    keepFinite(mid, n);
    if (stereo[i]) keepFinite(side, n);
    declick(v, mid, side, stereo[i], n);
    if (!v.isPad)
      for (int k = motion[i].end; k < n; k++) mid[k] = side[k] = 0;
    Block &trackMid = mix.trackL[v.track], &trackSide = mix.trackR[v.track];
    if (!mix.trackUsed[v.track]) {
      mix.trackUsed[v.track] = true;
      trackMid.fill(0);
      trackSide.fill(0);
    }
    for (int q = 0; q < quads(n); q++) {
      trackMid.put(q, trackMid.at(q) + mid.at(q));
      if (stereo[i]) trackSide.put(q, trackSide.at(q) + side.at(q));
    }
  }
}

}  // namespace synth
