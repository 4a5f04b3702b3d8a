#include "engine/VoiceMotion.h"

#include <algorithm>
#include <cmath>

namespace synth {
namespace {

using namespace dsp;

constexpr float pitchSlew = 0.0625f, nearSustain = 1e-5f, contourFloor = -1e-6f;

// The coefficients of one envelope.
struct EnvelopeSetting {
  float attack, decay, sustain, release;
  float end;  // a release ends below this
};

EnvelopeSetting timbreOf(const Voice::Control& c) {
  return {c.timbreAttack, c.timbreDecay, c.timbreSustain, c.timbreRelease, 1e-6f};
}
EnvelopeSetting filterOf(const Voice::Control& c) {
  return {c.filterAttack, c.filterDecay, c.filterSustain, c.filterRelease, 1e-20f};
}

// One sample of an envelope, with its stages.
void stepEnvelope(Envelope& e, const EnvelopeSetting& s) {
  switch (e.stage) {
    case Stage::Attack:
      e.level += s.attack;
      if (e.level < 1) break;
      e.level = 1;
      e.stage = Stage::Decay;
      break;
    case Stage::Decay:
      e.level = s.sustain + (e.level - s.sustain) * s.decay;
      if (std::fabs(e.level - s.sustain) < nearSustain) e.stage = Stage::Sustain;
      break;
    case Stage::Sustain: e.level = s.sustain; break;
    case Stage::Release:
      // In the form of an approach to 0, so that both ways give the same bits.
      e.level = 0.0f + (e.level - 0.0f) * s.release;
      if (e.level >= s.end) break;
      e.level = 0;
      e.stage = Stage::Idle;
      break;
    case Stage::Idle: break;
  }
}

void runEnvelope(Envelope& e, const EnvelopeSetting& s, Block* out, int n) {
  for (int i = 0; i < n; i++) {
    stepEnvelope(e, s);
    if (out) (*out)[i] = e.level;
  }
  if (out)
    for (int i = n; i < segment; i++) (*out)[i] = e.level;
}

// Queues an envelope that stays in its stage, or runs it; true when queued. `flat` says that it stands.
bool beginEnvelope(Envelope& e, const EnvelopeSetting& s, Block* out, float& before, bool& flat,
                   MotionQueue& queue, int n) {
  flat = e.stage == Stage::Idle || (e.stage == Stage::Sustain && e.level == s.sustain);
  if (flat) {
    if (out) out->fill(e.level);
    return false;
  }
  if (e.stage == Stage::Attack || e.stage == Stage::Sustain) {
    runEnvelope(e, s, out, n);
    return false;
  }
  before = e.level;
  const bool decays = e.stage == Stage::Decay;
  queue.add(e.level, decays ? s.sustain : 0, decays ? s.decay : s.release, out);
  return true;
}

// An envelope whose stage ended within the segment is run once more, stage by stage.
void finishEnvelope(Envelope& e, const EnvelopeSetting& s, Block* out, float before, int n) {
  const bool ended = e.stage == Stage::Decay ? std::fabs(e.level - s.sustain) < nearSustain : e.level < s.end;
  if (!ended) return;
  e.level = before;
  runEnvelope(e, s, out, n);
}

// ---- The amp envelope and the contour, which falls once the attack is over.

void silence(Block& b, int from) {
  for (int i = from; i < segment; i++) b[i] = 0;
}

void fallContour(Voice& v, int n) {
  for (int i = 0; i < n && v.contour < contourFloor; i++) v.contour *= v.control.aDecay;
  v.contour = std::min(v.contour, contourFloor);
}

void attack(Voice& v, Block& amp, int n) {
  const Voice::Control& c = v.control;
  int i = 0;
  for (; i < n && v.ampStage == Stage::Attack; i++) {
    v.amp += c.attackStep;
    v.contour = std::min(v.contour + c.contourStep, 0.9999f);
    if (v.amp >= 1) {
      v.amp = 1;
      v.ampStage = Stage::Decay;
      v.contour = -1;
    }
    amp[i] = v.amp;
  }
  if (v.ampStage == Stage::Decay) fallContour(v, n - i);
  for (; i < n; i++) amp[i] = v.amp = c.sustain + (v.amp - c.sustain) * c.dCoef;
  silence(amp, n);
}

void beginAmp(Voice& v, VoiceMotion& m, MotionQueue& queue, int n) {
  const Voice::Control& c = v.control;
  m.ampRuns = false;
  if (v.ampStage == Stage::Attack) return attack(v, m.amp, n);
  fallContour(v, n);
  const bool releases = v.ampStage == Stage::Release;
  const float target = releases ? 0 : c.sustain, keep = releases ? c.rCoef : c.dCoef;
  if (!releases && arrived(v.amp, target, keep)) return m.amp.fill(v.amp);
  m.ampBefore = v.amp;
  m.ampRuns = true;
  queue.add(v.amp, target, keep, &m.amp);
}

void finishAmp(Voice& v, VoiceMotion& m, int n) {
  const float end = v.endsEarly ? 2e-5f : 1e-5f;
  if (!m.ampRuns || v.ampStage != Stage::Release || v.amp >= end) return;
  v.active = false;
  int i = 0;
  while (i < n && m.amp[i] >= end) i++;
  silence(m.amp, i);
  m.end = i;
}

// ---- Pitch.

void glide(const EngineCore& core, Voice& v, VoiceMotion& m, int n) {
  const float perHz = v.detuneRatio / float(core.rates.rate);
  for (int i = 0; i < n; i++) {
    if (v.glideLeft > 0) {
      v.glideFrequency *= v.glideRatio;
      v.frequency = --v.glideLeft ? float(v.glideFrequency) : float(v.targetFrequency);
    }
    m.inc[i] = std::min(v.frequency * perHz * m.ratio[i], 0.45f);
  }
  for (int i = n; i < segment; i++) m.inc[i] = m.inc[n - 1];
}

void phaseSteps(const EngineCore& core, const Voice& v, VoiceMotion& m) {
  const f4 base = splat(v.frequency * (v.detuneRatio / float(core.rates.rate))), most = splat(0.45f);
  for (int q = 0; q < segment / 4; q++) m.inc.put(q, min(base * m.ratio.at(q), most));
}

}  // namespace

bool smooth(float& value, float target, float c, Block& out, int n) {
  if (value + (target - value) * c == value) {
    out.fill(value);
    return true;
  }
  for (int i = 0; i < n; i++) out[i] = value = flushed(value + (target - value) * c);
  for (int i = n; i < segment; i++) out[i] = value;
  return false;
}

void beginMotion(const EngineCore& core, Voice& v, VoiceMotion& m, MotionQueue& queue) {
  const int n = core.clock.n;
  beginAmp(v, m, queue, n);
  Block* timbre = v.control.timbreAmount != 0 ? &m.timbre : nullptr;
  m.timbreRuns = beginEnvelope(v.timbre, timbreOf(v.control), timbre, m.timbreBefore, m.timbreFlat, queue, n);
  m.filterRuns = false;
  bool ignored;
  if (v.control.ownFilterEnv)
    m.filterRuns =
        beginEnvelope(v.filterEnv, filterOf(v.control), nullptr, m.filterBefore, ignored, queue, n);
  m.ratioRuns = !arrived(v.pitchRatio, v.pitchTarget, 1 - pitchSlew);
  if (m.ratioRuns)
    queue.add(v.pitchRatio, v.pitchTarget, 1 - pitchSlew, &m.ratio);
  else
    m.ratio.fill(v.pitchRatio);
}

void finishMotion(const EngineCore& core, Voice& v, VoiceMotion& m) {
  const int n = core.clock.n;
  finishAmp(v, m, n);
  if (m.timbreRuns) finishEnvelope(v.timbre, timbreOf(v.control), &m.timbre, m.timbreBefore, n);
  if (m.filterRuns) finishEnvelope(v.filterEnv, filterOf(v.control), nullptr, m.filterBefore, n);
  m.incFlat = v.glideLeft == 0 && !m.ratioRuns;
  if (v.glideLeft > 0)
    glide(core, v, m, n);
  else
    phaseSteps(core, v, m);
}

void engineValues(const EngineCore& core, Voice& v, const VoiceMotion& m, Block (&e)[4], bool (&flat)[4]) {
  const Voice::Control& c = v.control;
  for (int k = 0; k < 4; k++) {
    flat[k] = smooth(v.engine[k], c.engineTarget[k], core.rates.paramSmooth, e[k], core.clock.n);
    if (c.engineOffset[k] == 0) continue;
    for (int q = 0; q < segment / 4; q++) e[k].put(q, clamp(e[k].at(q) + splat(c.engineOffset[k]), 0, 1));
  }
  if (c.timbreAmount == 0) return;
  Block& target = e[c.timbreTarget];
  flat[c.timbreTarget] &= m.timbreFlat;
  for (int q = 0; q < segment / 4; q++)
    target.put(q, clamp(target.at(q) + splat(c.timbreAmount) * m.timbre.at(q), 0, 1));
}

}  // namespace synth
