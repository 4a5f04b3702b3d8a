// Rendering all voices over a segment in passes: sources and envelopes voice by voice, filters side by
// side, then level, pan and declick; at last the sums, in slot order.
#include <algorithm>
#include <cmath>

#include "engine/Drums.h"
#include "engine/VoicePool.h"
#include "engine/Voices.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"
#include "engine/kinds/Kind.h"

namespace synth {
namespace {

using namespace dsp;

// Moves `value` towards `target` once a sample. True when it stood still all the while.
bool smooth(float& value, float target, float c, Block& out, int n) {
  if (value + (target - value) * c == value) {
    out.fill(value);
    return true;
  }
  for (int i = 0; i < n; i++) out[i] = value += (target - value) * c;
  for (int i = n; i < segment; i++) out[i] = value;
  return false;
}

// ---- Pass 1: pitch, envelopes, source.

// The phase step of each sample; true when it is the same throughout.
bool pitch(const EngineCore& core, Voice& v, Block& inc, int n) {
  const float rate = float(core.rates.rate);
  auto step = [&] { return std::min(v.frequency * v.detuneRatio * v.pitchRatio / rate, 0.45f); };
  const bool still =
      v.glideLeft == 0 && v.pitchRatio + (v.pitchTarget - v.pitchRatio) * 0.0625f == v.pitchRatio;
  if (still) {
    v.phaseInc = step();
    inc.fill(v.phaseInc);
    return true;
  }
  for (int i = 0; i < n; i++) {
    if (v.glideLeft > 0) {
      v.glideFrequency *= v.glideRatio;
      v.frequency = --v.glideLeft ? float(v.glideFrequency) : float(v.targetFrequency);
    }
    v.pitchRatio += (v.pitchTarget - v.pitchRatio) * 0.0625f;
    inc[i] = v.phaseInc = step();
  }
  for (int i = n; i < segment; i++) inc[i] = v.phaseInc;
  return false;
}

void envelopeStep(Envelope& e, float attack, float decay, float sustain, float release, float done) {
  switch (e.stage) {
    case Stage::Attack:
      e.level += attack;
      if (e.level >= 1) {
        e.level = 1;
        e.stage = Stage::Decay;
      }
      break;
    case Stage::Decay:
      e.level = sustain + (e.level - sustain) * decay;
      if (std::fabs(e.level - sustain) < 1e-5f) e.stage = Stage::Sustain;
      break;
    case Stage::Sustain: e.level = sustain; break;
    case Stage::Release:
      e.level *= release;
      if (e.level < done) {
        e.level = 0;
        e.stage = Stage::Idle;
      }
      break;
    case Stage::Idle: break;
  }
}

// The amp envelope and the contour; returns how many samples the voice still sounds.
int ampEnvelope(Voice& v, Block& amp, int n) {
  const Voice::Control& c = v.control;
  const float end = v.endsEarly ? 2e-5f : 1e-5f;
  for (int i = 0; i < n; i++) {
    switch (v.ampStage) {
      case Stage::Attack:
        v.amp += c.attackStep;
        v.contour = std::min(v.contour + c.contourStep, 0.9999f);
        if (v.amp >= 1) {
          v.amp = 1;
          v.ampStage = Stage::Decay;
          v.contour = -1;
        }
        break;
      case Stage::Release:
        v.amp *= c.rCoef;
        v.contour = std::min(v.contour * c.aDecay, -1e-6f);
        if (v.amp < end) {
          for (int k = i; k < segment; k++) amp[k] = 0;
          v.active = false;
          return i;
        }
        break;
      default:
        v.amp = c.sustain + (v.amp - c.sustain) * c.dCoef;
        v.contour = std::min(v.contour * c.aDecay, -1e-6f);
    }
    amp[i] = v.amp;
  }
  for (int i = n; i < segment; i++) amp[i] = 0;
  return n;
}

// engine1..engine4 of each sample, with LFO offsets and the timbre envelope.
void engineValues(const EngineCore& core, Voice& v, const Block& amp, Block (&e)[4], bool (&flat)[4], int n) {
  const Voice::Control& c = v.control;
  for (int k = 0; k < 4; k++) {
    flat[k] = smooth(v.engine[k], c.engineTarget[k], core.rates.paramSmooth, e[k], n);
    if (c.engineOffset[k] == 0) continue;
    for (int q = 0; q < segment / 4; q++) e[k].put(q, clamp(e[k].at(q) + splat(c.engineOffset[k]), 0, 1));
  }
  Block timbre;
  // A voice that has died away lets its timbre go as well.
  auto died = [&](int i) { return amp[i] < 1e-5f && v.ampStage != Stage::Attack; };
  const bool still = v.timbre.stage == Stage::Idle ||
                     (v.timbre.stage == Stage::Sustain && v.timbre.level == c.timbreSustain && !died(n - 1));
  for (int i = 0; i < n && !still; i++) {
    if (died(i) && v.timbre.stage != Stage::Idle) v.timbre.stage = Stage::Release;
    envelopeStep(v.timbre, c.timbreAttack, c.timbreDecay, c.timbreSustain, c.timbreRelease, 1e-6f);
    timbre[i] = v.timbre.level;
  }
  if (c.timbreAmount == 0) return;
  if (still)
    timbre.fill(v.timbre.level);
  else
    for (int i = n; i < segment; i++) timbre[i] = v.timbre.level;
  Block& target = e[c.timbreTarget];
  flat[c.timbreTarget] &= still;
  for (int q = 0; q < segment / 4; q++)
    target.put(q, clamp(target.at(q) + splat(c.timbreAmount) * timbre.at(q), 0, 1));
}

void addSubAndNoise(const EngineCore& core, Voice& v, const Block& inc, Block& mid, int n) {
  const Track& track = core.track(v.track);
  if (track.sub_level > 0) {
    Block phase;
    for (int i = 0; i < n; i++) {
      phase[i] = v.subPhase;
      v.subPhase = wrapped(v.subPhase + inc[i] * 0.5f);
    }
    for (int i = n; i < segment; i++) phase[i] = 0;
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
  v.fadeMid = v.lastMid;
  v.fadeSide = v.lastSide;
  v.fadeLeft = declickSamples;
}

// Returns whether the voice gives a side signal.
bool renderSource(EngineCore& core, Voice& v, Block& mid, Block& side, Block& amp, int n) {
  const Track& track = core.track(v.track);
  followKind(core, v);
  Block inc, e[4], phase;
  kinds::Run run;
  run.incFlat = pitch(core, v, inc, n);
  ampEnvelope(v, amp, n);
  engineValues(core, v, amp, e, run.eFlat, n);
  if (v.control.ownFilterEnv) {
    const Voice::Control& c = v.control;
    for (int i = 0; i < n; i++) {
      envelopeStep(v.filterEnv, c.filterAttack, c.filterDecay, c.filterSustain, c.filterRelease, 1e-20f);
    }
  }

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

// ---- Pass 2: filters, side by side.

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

// ---- Pass 3: level, click, pan, declick.

void applyLevel(const EngineCore& core, Voice& v, Block& mid, Block& side, const Block& amp, bool stereo,
                int n) {
  const float va = v.control.velocityAmp;
  auto gainAt = [&](float velocity) {
    float g = velocity * 0.43f;
    if (va != 1) g *= (1 - va * (1 - velocity)) / std::max(velocity, 0.0001f);
    return g;
  };
  Block gain;
  const int mode = core.track(v.track).voice_mode;
  if (mode == 0 || v.velocity == v.targetVelocity) {
    gain.fill(gainAt(v.velocity));
  } else {
    smooth(v.velocity, v.targetVelocity, core.rates.paramSmooth, gain, n);
    for (int i = 0; i < n; i++) gain[i] = gainAt(gain[i]);
  }
  for (int q = 0; q < quads(n); q++) {
    const f4 g = gain.at(q) * amp.at(q);
    mid.put(q, mid.at(q) * g);
    if (stereo) side.put(q, side.at(q) * g);
  }
}

void addClick(const EngineCore& core, Voice& v, Block& mid, int n) {
  const float amount = core.track(v.track).click, loud = v.velocity * 0.6f + 0.4f;
  for (int i = 0; i < n && v.clickLevel > 0.0001f; i++) {
    mid[i] += loud * v.clickLevel * amount *
              (white(v.seed) * 0.35f + sineAt(core.sine, v.clickPhase) * 0.65f) * 0.5f;
    v.clickPhase = wrapped(v.clickPhase + float(2600 / core.rates.rate));
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
    first += (target - first) * c;
    out[i] = second += (first - second) * c;
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
  FilterQueues filters;
  bool used[voiceCount] = {}, stereo[voiceCount] = {};
  releaseOrphans(core);
  const bool tick = (core.sampleClock & 15) == 0;
  for (int i = 0; i < voiceCount; i++) {
    Voice& v = core.voices[i];
    if (!v.active) continue;
    used[i] = true;
    const bool first = v.sampleStart == core.sampleClock;
    if (tick || first) controlVoice(core, v, first);
    if (v.isPad) continue;
    stereo[i] = renderSource(core, v, mix.voiceMid[i], mix.voiceSide[i], mix.voiceAmp[i], n);
    filters.add(v, mix.voiceMid[i], mix.voiceSide[i], stereo[i], n);
  }
  runLadders(filters.ladders, filters.ladderCount, n);
  runSvfs(filters.svfs, filters.svfCount, n);

  for (int t = 0; t < limits::tracks; t++) mix.trackUsed[t] = false;
  for (int i = 0; i < voiceCount; i++) {
    if (!used[i]) continue;
    Voice& v = core.voices[i];
    Block &mid = mix.voiceMid[i], &side = mix.voiceSide[i];
    if (v.isPad) {
      renderHit(v, mid, side, n);
      stereo[i] = true;
    } else {
      applyLevel(core, v, mid, side, mix.voiceAmp[i], stereo[i], n);
      addClick(core, v, mid, n);
      stereo[i] = place(core, v, mid, side, stereo[i], n);
    }
    keepFinite(mid, n);
    if (stereo[i]) keepFinite(side, n);
    declick(v, mid, side, stereo[i], n);
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
