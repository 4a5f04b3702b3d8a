#include "engine/Lfo.h"

#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"

namespace synth::lfo {
namespace {

enum Shape : int { SineShape, Triangle, SawDown, SawUp, Square, SampleAndHold, SmoothRandom };

// One LFO's settings of a Track.
struct Setting {
  int shape, sync, retrigger, target;
  float phase, rate;
};

Setting settingOf(const Track& t, int which) {
  return which ? Setting{t.lfo2_shape,          t.lfo2_sync,  t.lfo2_retrigger,
                         automation::LFO2_RATE, t.lfo2_phase, t.lfo2_rate}
               : Setting{t.lfo_shape,          t.lfo_sync,  t.lfo_retrigger,
                         automation::LFO_RATE, t.lfo_phase, t.lfo_rate};
}

float randomAt(i64 k, u32 seed) {
  return float(dsp::hash24(dsp::hash(u32(k) * 0x9E3779B1u ^ seed))) * 0x1p-23f - 1;
}

}  // namespace

double syncCyclesPerStep(int option) {
  constexpr double cycles[] = {0,       1.0 / 64, 1.0 / 32, 1.0 / 16, 1.0 / 8,  1.0 / 4, 3.0 / 8, 1.0 / 2,
                               3.0 / 4, 1,        1.5,      2,        1.0 / 12, 1.0 / 6, 1.0 / 3, 2.0 / 3};
  return option >= 0 && option < 16 ? cycles[option] : 0;
}

float shapeValue(int shape, double cycles, u32 seed, const float* sine) {
  i64 whole = i64(cycles);
  if (double(whole) > cycles) whole--;
  const float p = float(cycles - double(whole));
  switch (shape) {
    case Triangle: return 1 - 4 * std::fabs(p - 0.5f);
    case SawDown: return 1 - 2 * p;
    case SawUp: return 2 * p - 1;
    case Square: return p < 0.5f ? 1 : -1;
    case SampleAndHold: return randomAt(whole, seed);
    case SmoothRandom: {
      const float a = randomAt(whole, seed), b = randomAt(whole + 1, seed);
      return a + p * p * (3 - 2 * p) * (b - a);
    }
    default: return dsp::sineOf(sine, p);
  }
}

float valueOf(const EngineCore& core, const Voice& v, int which) {
  // The stored rate: what a Macro, a Lock or a Lane adds to it is in the offset, which does not jump.
  const Setting s = settingOf(core.storedTrack(v.track), which);
  const u64 since = s.retrigger ? core.sampleClock - v.sampleStart : core.sampleClock;
  double cycles;
  if (s.sync) {
    const double steps = core.transport.playing && !s.retrigger
                             ? core.transport.songTime()
                             : double(since) * core.rates.period * core.project->bpm / 15;
    cycles = syncCyclesPerStep(s.sync) * steps;
  } else {
    cycles = double(s.rate) * double(since) * core.rates.period;
  }
  cycles += s.phase + core.lfoOffset[v.track][which];
  if (s.retrigger) cycles -= v.lfoOffsetAtStart[which];
  return shapeValue(s.shape, cycles, u32(v.track) + (which ? 0x5678u : 0x1234u), core.sine);
}

void advanceOffsets(EngineCore& core, int n) {
  for (int t = 0; t < core.trackCount(); t++) {
    const Track& track = core.storedTrack(t);
    const Prepared& now = core.prepared[t];
    for (int which = 0; which < 2; which++) {
      const Setting s = settingOf(track, which);
      const double stored = s.sync ? syncCyclesPerStep(s.sync) * core.project->bpm / 15 : double(s.rate);
      const bool moving = now.moving >> s.target & 1;
      if (!moving && now.value[s.target] == s.rate) continue;
      for (int i = 0; i < n; i++) {
        const double rate = moving ? double((*now.lane[s.target])[i]) : double(now.value[s.target]);
        if (rate == double(s.rate)) continue;
        core.lfoOffset[t][which] += (rate - stored) / core.rates.rate;
      }
    }
  }
}

void resetOffsets(EngineCore& core) {
  for (auto& track : core.lfoOffset) track[0] = track[1] = 0;
}

}  // namespace synth::lfo
