// What a voice computes every sixteen samples: coefficients, LFOs, cutoff and pitch.
#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/Lfo.h"
#include "engine/Resolve.h"
#include "engine/VoiceCoefficients.h"
#include "engine/Voices.h"
#include "engine/dsp/FastMath.h"

namespace synth {
namespace {

using namespace automation;

enum LfoTarget : int {
  ToCutoff,
  ToPitch,
  ToAmp,
  ToPan,
  ToEngine1,
  ToEngine2,
  ToEngine3,
  ToEngine4,
  ToResonance
};

constexpr float filterDamping = 1.96f, ladderFeedback = 4.2f;

// The sum of what both LFOs move.
struct Modulation {
  float octaves = 0, semitones = 0, gain = 1, pan = 0, resonance = 0, engine[4] = {};

  void add(int target, float d, float v) {
    switch (target) {
      case ToCutoff: octaves += 2 * d * v; break;
      case ToPitch: semitones += 12 * d * d * v; break;
      case ToAmp: gain *= 1 - d * (0.5f * v + 0.5f); break;
      case ToPan: pan += d * v; break;
      case ToResonance: resonance += 0.5f * d * v; break;
      default:
        if (target >= ToEngine1 && target <= ToEngine4) engine[target - ToEngine1] += 0.5f * d * v;
    }
  }
};

Modulation modulate(EngineCore& core, Voice& v, const Track& track) {
  Modulation m;
  const float depth1 = voiceParam(core, v, LFO_DEPTH);
  float depth2 = voiceParam(core, v, LFO2_DEPTH);
  if (depth2 != 0 && track.lfo2_fade > 0) {
    const double t = double(core.sampleClock - v.sampleStart) * core.rates.period;
    depth2 *= float(std::min(t / track.lfo2_fade, 1.0));
  }
  v.lfoValue[0] = depth1 != 0 ? lfo::valueOf(core, v, 0) : 0;
  v.lfoValue[1] = depth2 != 0 ? lfo::valueOf(core, v, 1) : 0;
  if (depth1 != 0) m.add(track.lfo_target, depth1, v.lfoValue[0]);
  if (depth2 != 0) m.add(track.lfo2_target, depth2, v.lfoValue[1]);
  return m;
}

void controlEnvelopes(EngineCore& core, Voice& v, const Track& track) {
  Voice::Control& c = v.control;
  const VoiceCoefficients& k = coefficientsOf(core, v);
  c.attackStep = k.attackStep;
  c.dCoef = k.decay;
  c.aDecay = k.contourDecay;
  c.rCoef = v.stolen || v.endsEarly ? std::min(k.release, core.rates.fastRelease) : k.release;
  c.contourStep = k.contourStep;
  c.sustain = track.sustain;
  // A voice that has died away lets its timbre go as well.
  if (v.amp < 1e-5f && v.ampStage != Stage::Attack && v.timbre.stage != Stage::Idle)
    v.timbre.stage = Stage::Release;
  c.timbreAttack = k.timbreAttack;
  c.timbreDecay = k.timbreDecay;
  c.timbreRelease = k.timbreRelease;
  c.timbreSustain = track.timbre_sustain;
  c.timbreAmount = track.timbre_amount;
  c.timbreTarget = track.timbre_target & 3;
  c.ownFilterEnv = track.filter_adsr;
  c.filterAttack = k.filterAttack;
  c.filterDecay = k.filterDecay;
  c.filterRelease = k.filterRelease;
  c.filterSustain = track.filter_sustain;
}

void controlFilter(EngineCore& core, Voice& v, const Track& track, const Modulation& m, bool first) {
  const float rate = float(core.rates.rate);
  float octaves = m.octaves;
  const float amount = voiceParam(core, v, FILTER_ENV);
  if (amount != 0)
    octaves += amount * 4 * (v.control.ownFilterEnv ? v.filterEnv.level : std::fabs(v.contour));
  if (track.velocity_brightness > 0) octaves += track.velocity_brightness * 4 * (v.velocity - 1);
  if (track.key_track > 0) {
    if (v.keyHz != v.frequency) {
      v.keyHz = v.frequency;
      v.keyOctaves = float(math::log2(double(v.frequency) / 261.63));
    }
    octaves += track.key_track * v.keyOctaves;
  }
  float hz = voiceParam(core, v, CUTOFF);
  if (octaves != 0) hz *= dsp::exp2Fast(octaves);
  hz = std::clamp(hz, 20.0f, rate * 0.42f);
  if (first) v.cutoff = std::min(v.cutoff, rate * 0.42f);
  v.cutoff += (hz - v.cutoff) * 0.22f;

  const float resonance = std::clamp(voiceParam(core, v, RESONANCE) + m.resonance, 0.0f, 1.0f);
  const float g = dsp::tanPi(std::clamp(v.cutoff, 10.0f, rate * 0.45f) / rate);
  v.control.filterType = track.filter_type;
  if (track.filter_type == 0) {
    v.ladder = {g / (1 + g), ladderFeedback * resonance, track.filter_drive};
    return;
  }
  const dsp::Svf f = dsp::Svf::at(g, 2 - filterDamping * resonance);
  switch (track.filter_type) {
    case 2: v.svf = dsp::SvfSetting::high(f); break;
    case 3: v.svf = dsp::SvfSetting::band(f); break;
    case 4: v.svf = dsp::SvfSetting::notch(f); break;
    default: v.svf = dsp::SvfSetting::low(f);
  }
  v.svfDrive = track.filter_drive;
}

void controlPitch(EngineCore& core, Voice& v, const Track& track, const Modulation& m, bool first) {
  float semitones = track.transpose + track.fine * 0.01f + voiceParam(core, v, PITCH) + m.semitones;
  if (v.pitchEnv != 0) {
    const double t = double(core.sampleClock - v.sampleStart) * core.rates.period;
    semitones += v.pitchEnv * dsp::exp2Fast(float(-t / (v.pitchEnvTime * math::ln2)));
  }
  v.pitchTarget = semitones == 0 ? 1 : dsp::exp2Fast(semitones / 12);
  if (first) v.pitchRatio = v.pitchTarget;
}

void controlHit(EngineCore& core, Voice& v) {
  const Track& track = core.track(v.track);
  v.hitLevel = track.pad_level[v.pad];
  v.hitPan = track.pad_pan[v.pad];
}

}  // namespace

void controlVoice(EngineCore& core, Voice& v, bool first) {
  if (v.isPad) return controlHit(core, v);
  const Track& track = core.track(v.track);
  Voice::Control& c = v.control;
  applyVoiceMacros(core, v);
  const Modulation m = modulate(core, v, track);
  controlEnvelopes(core, v, track);
  controlFilter(core, v, track, m, first);
  controlPitch(core, v, track, m, first);
  for (int k = 0; k < 4; k++) {
    c.engineTarget[k] = voiceParam(core, v, ENGINE_1 + k);
    c.engineOffset[k] = m.engine[k];
  }
  const float b = track.velocity_brightness;
  c.soft = b > 0 ? 1 - b * (1 - v.velocity) : 1;
  c.noise = voiceParam(core, v, NOISE_MIX);
  c.velocityAmp = track.velocity_amp;
  c.lfoGain = m.gain;
  c.lfoPan = m.pan;
  if (first) {
    v.lfoGain1 = v.lfoGain2 = m.gain;
    v.lfoPan1 = v.lfoPan2 = m.pan;
  }
}

}  // namespace synth
