#include "engine/VoicePool.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "core/sounds/Macros.h"
#include "engine/Resolve.h"
#include "engine/Sequencer.h"
#include "engine/Voices.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"

namespace synth::pool {
namespace {

constexpr int polyLegato = 3;

// The lowest goes first: releasing, quiet and old ones before others, never one of this very sample.
double score(const EngineCore& core, const Voice& v) {
  return (v.releasing ? 0 : 100) + (v.sampleStart == core.sampleClock ? 1000 : 0) + double(v.amp) * 4 +
         double(v.serial) * 1e-5;
}

int indexOf(const EngineCore& core, const Voice& v) { return int(&v - core.voices); }

template <class Accepts>
Voice* lowest(EngineCore& core, Accepts accepts) {
  Voice* best = nullptr;
  for (Voice& v : core.voices)
    if (v.active && accepts(v) && (!best || score(core, v) < score(core, *best))) best = &v;
  return best;
}

Voice* freeVoice(EngineCore& core) {
  for (Voice& v : core.voices)
    if (!v.active) return &v;
  return nullptr;
}

Voice* forPolyLegato(EngineCore& core, int t) {
  const int polyphony = core.track(t).polyphony;
  int sounding = 0, all = 0;
  for (const Voice& v : core.voices) {
    if (!v.active || v.track != t || v.ghost()) continue;
    all++;
    sounding += !v.releasing;
  }
  if (sounding >= polyphony) {
    Voice* oldest = nullptr;
    for (Voice& v : core.voices)
      if (v.sounding() && v.track == t && !v.ghost() && (!oldest || v.serial < oldest->serial)) oldest = &v;
    return oldest;
  }
  if (all < 2 * polyphony) return freeVoice(core);
  Voice* quietest = nullptr;
  for (Voice& v : core.voices)
    if (v.active && v.releasing && v.track == t && !v.ghost() && (!quietest || v.amp < quietest->amp))
      quietest = &v;
  return quietest;
}

// Keeps what a taken voice last gave, to fade it under the new one.
void reset(const EngineCore& core, Voice& v) {
  const bool cut = v.active;
  // A voice that began on this very sample has given nothing yet but what it took over itself.
  const bool fresh = v.sampleStart == core.sampleClock;
  const float mid = fresh ? v.fadeMid : v.lastMid, side = fresh ? v.fadeSide : v.lastSide;
  const int left = fresh ? v.fadeLeft : declickSamples;
  v = Voice{};
  if (!cut) return;
  v.fadeMid = mid;
  v.fadeSide = side;
  v.fadeLeft = left;
}

// The unison copies of a voice that is taken go on by themselves; releasing, they may be taken at once.
void releaseCopies(EngineCore& core, const Voice& leader) {
  if (!leader.active || leader.ghost()) return;
  const int index = indexOf(core, leader);
  for (Voice& v : core.voices)
    if (v.active && v.ghost() && v.leader == index && v.leaderSerial == leader.serial) releaseVoice(core, v);
}

// A generator never leaves 0, so it never starts there.
void seedNoise(Voice& v, u32 seed) {
  v.seed = seed ? seed : 1;
  v.clickSeed = dsp::hash(v.seed) | 1;
  v.state.seed = dsp::hash(v.seed ^ v.kind) | 1;
}

}  // namespace

float frequencyOf(int note) { return float(440 * math::exp2((note - 69) / 12.0)); }

Voice& allocate(EngineCore& core, int t) {
  const Track& track = core.track(t);
  const bool drums = isDrums(track);
  if (!drums && track.voice_mode == polyLegato)
    if (Voice* v = forPolyLegato(core, t)) return *v;
  auto own = [&](const Voice& v) { return v.track == t && !v.ghost() && !v.stolen; };
  const int limit = drums ? limits::pads : isMonoMode(track.voice_mode) ? 1 : track.polyphony;
  int held = 0;
  for (const Voice& v : core.voices) held += v.active && own(v);
  if (held >= limit)
    if (Voice* v = lowest(core, own)) return *v;
  if (Voice* v = freeVoice(core)) return *v;
  return *lowest(core, [](const Voice&) { return true; });
}

Voice& take(EngineCore& core, int t, const Note& note, bool live, double gateEnd) {
  Voice& v = allocate(core, t);
  releaseCopies(core, v);
  reset(core, v);
  v.active = true;
  v.track = u8(t);
  v.note = note.pitch;
  v.live = live;
  v.gateEnd = gateEnd;
  v.serial = ++core.voiceSerial;
  v.sampleStart = core.sampleClock;
  seedNoise(v, u32(v.serial) * 917u + 1288583u);
  v.velocity = v.targetVelocity = float(note.velocity) / 127.0f;
  return v;
}

void start(EngineCore& core, int t, const Note& note, bool live, double gateEnd) {
  const Track& track = core.track(t);
  Voice& v = take(core, t, note, live, gateEnd);
  v.kind = track.engine;
  v.frequency = frequencyOf(note.pitch);
  v.glideFrequency = v.targetFrequency = v.frequency;
  v.clickLevel = track.click > 0 ? 1 : 0;
  decodeLocks(core, v, note);
  applyVoiceMacros(core, v);
  for (int k = 0; k < 4; k++) v.engine[k] = voiceParam(core, v, automation::ENGINE_1 + k);
  v.pitchEnv = voiceParam(core, v, automation::PITCH_ENV);
  v.pitchEnvTime = std::max(voiceParam(core, v, automation::PITCH_ENV_TIME), 0.002f);
  for (int which = 0; which < 2; which++) v.lfoOffsetAtStart[which] = core.lfoOffset[t][which];
  v.cutoff = std::min(voiceParam(core, v, automation::CUTOFF), float(core.rates.rate * 0.42));

  const int count = std::clamp<int>(track.unison, 1, 4);
  const Voice base = v;
  const int leader = indexOf(core, v);
  for (int k = 0; k < count && count > 1; k++) {
    Voice* copy = k == 0 ? &core.voices[leader] : freeVoice(core);
    if (!copy)
      copy = lowest(
          core, [&](const Voice& o) { return o.track == t && o.releasing && indexOf(core, o) != leader; });
    if (!copy) continue;
    if (k > 0) {
      reset(core, *copy);
      const float fadeMid = copy->fadeMid, fadeSide = copy->fadeSide;
      const int fadeLeft = copy->fadeLeft;
      *copy = base;
      copy->fadeMid = fadeMid;
      copy->fadeSide = fadeSide;
      copy->fadeLeft = fadeLeft;
      copy->leader = leader;
      copy->leaderSerial = base.serial;
      copy->serial = ++core.voiceSerial;
      seedNoise(*copy, u32(copy->serial) * 733u + 5369127u);
      const u32 h = dsp::hash(u32(k) + u32(copy->serial) * 97u);
      copy->state.phaseA = (dsp::hash24(h) & 0xFFFFFF) << 8;
      copy->state.phaseB = copy->state.phaseC = copy->state.phaseD =
          copy->state.phaseA + dsp::phaseShift(0.37f);
    }
    const float s = 2 * float(k) / float(count - 1) - 1;
    copy->unisonGain = 1 / std::sqrt(float(count));
    copy->detuneRatio = float(math::exp2(track.unison_detune * 50 * s / 1200.0));
    copy->unisonPan = s * track.unison_spread;
  }
}

bool follows(const Voice& v, const Voice& leader, const EngineCore& core) {
  return v.active && v.leader == indexOf(core, leader) && v.leaderSerial == leader.serial;
}

void decodeLocks(EngineCore& core, Voice& v, const Note& note) {
  v.lockMask = 0;
  v.macroLockMask = 0;
  v.lockCounter = ++core.lockCounter;
  const Track& track = core.track(v.track);
  for (const LockRec& lock : note.locks) {
    if (!lock.target) break;
    const int target = lock.target - 1;
    const float value = float(lock.value) / 65535.0f;
    if (automation::isMacroTarget(target)) {
      const int slot = target - automation::firstMacroTarget;
      if (slot >= track.macroCount) continue;
      v.macroLockMask = u16(v.macroLockMask | 1u << slot);
      v.macroLocks[slot] = macros::fromNormalized(track.macros[slot].polarity, value);
    } else if (automation::isTrackTarget(target)) {
      v.lockMask |= u64(1) << target;
      v.lockValues[target] = targetValue(target, value);
    }
  }
}

void glideTo(EngineCore& core, Voice& v, float frequency) {
  const float seconds = voiceParam(core, v, automation::GLIDE);
  const float from = v.frequency;
  v.targetFrequency = frequency;
  if (seconds > 0 && from > 0 && from != frequency) {
    v.glideLeft = std::max(1, int(core.rates.rate * seconds));
    v.glideFrequency = from;
    v.glideRatio = math::exp2(math::log2(double(frequency) / from) / v.glideLeft);
  } else {
    v.glideLeft = 0;
    v.frequency = frequency;
  }
}

void beginRecordedKey(EngineCore& core, int t, int note, int velocity) {
  const Transport& tr = core.transport;
  if (!tr.recording || !tr.playing || tr.countInLeft) return;
  i32 step = tr.step;
  if (tr.stepPhase >= 0.5) {
    bool wrapped = false;
    const i32 next = nextStep(core, wrapped);
    if (next >= 0) step = next;
  }
  core.held[t][note] = {true, step, roomAtStep(core, t, step), u8(velocity), tr.songTime()};
}

void endRecordedKey(EngineCore& core, int t, int note) {
  HeldKey& key = core.held[t][note];
  if (!key.held) return;
  key.held = false;
  RecordedNote recorded;
  recorded.track = u8(t);
  recorded.step = std::max(key.step, 0);
  recorded.note.pitch = u8(note);
  recorded.note.velocity = key.velocity;
  const double steps =
      std::clamp(core.transport.songTime() - key.start, 0.0, double(std::max(key.maxLength, 1)));
  recorded.note.length = u16(std::clamp(std::round(256 * steps), 1.0, 65535.0));
  if (!core.recorded.push(recorded)) core.droppedRecorded++;
}

}  // namespace synth::pool
