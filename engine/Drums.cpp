#include "engine/Drums.h"

#include <algorithm>
#include <cmath>

#include "engine/VoicePool.h"
#include "engine/Voices.h"

namespace synth {
namespace {

constexpr float padFilterK = 1.804f;
constexpr float padLevel = 0.66f;

// Only PITCH and DECAY can be locked on a hit; both replace the Pad's own value.
void applyLocks(const Note& note, drums::Setting& s) {
  for (const LockRec& lock : note.locks) {
    if (!lock.target) break;
    const float value = float(lock.value) / 65535.0f;
    if (lock.target - 1 == automation::PITCH) s.pitch = std::trunc((value * 48 - 24) * 100) / 100;
    if (lock.target - 1 == automation::DECAY) s.decay = value;
  }
}

drums::Setting settingOf(const Track& t, int pad) {
  drums::Setting s;
  s.model = t.pad_model[pad];
  s.pitch = t.pad_pitch[pad];
  s.decay = t.pad_decay[pad];
  s.tone = t.pad_tone[pad];
  s.sweep = t.pad_sweep[pad];
  s.snap = t.pad_snap[pad];
  s.drive = t.pad_drive[pad];
  s.sweepTime = t.pad_sweep_time[pad];
  s.sweepHold = t.pad_sweep_hold[pad];
  s.hold = t.pad_hold[pad];
  s.tailDrift = t.pad_tail_drift[pad];
  s.tailTime = t.pad_tail_time[pad];
  s.drop = t.pad_drop[pad];
  s.dropTime = t.pad_drop_time[pad];
  if (t.pad_note[pad] >= 0) s.baseHz = pool::frequencyOf(int(t.pad_note[pad]));
  return s;
}

void choke(EngineCore& core, int t, int group) {
  const Track& track = core.track(t);
  for (Voice& v : core.voices)
    if (v.active && v.isPad && v.track == t && track.pad_choke[v.pad] == group)
      v.hit.fadeOut(std::max(1, int(core.rates.rate * 0.006)));
}

}  // namespace

void startHit(EngineCore& core, int t, const Note& note, bool live, double gateEnd) {
  const Track& track = core.track(t);
  const int pad = note.pitch;
  if (track.pad_choke[pad]) choke(core, t, track.pad_choke[pad]);
  drums::Setting setting = settingOf(track, pad);
  applyLocks(note, setting);

  Voice& v = pool::take(core, t, note, live, gateEnd);
  v.isPad = true;
  v.pad = u8(pad);
  v.amp = 1;
  v.hit.start(setting, v.serial, core.rates.rate);
  v.hitGateLeft = track.pad_gate[pad] > 0 ? i32(track.pad_gate[pad] * core.rates.rate) : -1;
  const double rate = core.rates.rate;
  v.hitHigh = track.pad_highpass[pad] > 20.5f;
  v.hitLow = track.pad_lowpass[pad] < 19999;
  v.hitFilter[0] = dsp::Svf::at(dsp::svfG(track.pad_highpass[pad], rate), padFilterK);
  v.hitFilter[1] = dsp::Svf::at(dsp::svfG(track.pad_lowpass[pad], rate), padFilterK);

  TrackState& state = core.tracks[t];
  state.padHits[pad] = u8((state.padHits[pad] + 1) % 10);
  state.padVelocity[pad] = note.velocity;
}

void renderHit(Voice& v, dsp::Block& mid, dsp::Block& side, int n) {
  int done = 0, lives = 0;
  while (done < n) {
    int part = n - done;
    if (v.hitGateLeft >= 0) {
      if (v.hitGateLeft == 0) {
        v.hit.release(0.02);
        v.hitGateLeft = -1;
      } else {
        part = std::min(part, int(v.hitGateLeft));
        v.hitGateLeft -= part;
      }
    }
    lives += v.hit.render(mid.v + done, part);
    done += part;
  }
  const float gain = v.hitLevel * v.velocity * padLevel;
  const float pan = v.hitPan * -0.85f;
  for (int q = 0; q < dsp::quads(n); q++) mid.put(q, mid.at(q) * dsp::splat(gain));
  if (v.hitHigh)
    for (int i = 0; i < lives; i++) {
      const dsp::SvfOut o = v.svfState[0].run(v.hitFilter[0], mid[i]);
      mid[i] -= v.hitFilter[0].k * o.band + o.low;
    }
  if (v.hitLow)
    for (int i = 0; i < lives; i++) mid[i] = v.svfState[1].run(v.hitFilter[1], mid[i]).low;
  v.hit.fade(mid.v, lives);
  for (int q = 0; q < dsp::quads(n); q++) side.put(q, dsp::splat(pan) * mid.at(q));
  v.amp = v.hit.level();
  if (v.hit.done()) v.active = false;
}

}  // namespace synth
