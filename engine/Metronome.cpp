#include "engine/Metronome.h"

#include "base/Math.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"

namespace synth {

void armClick(EngineCore& core, bool accent) {
  Metronome& m = core.click;
  m.tick = core.transport.tickOn;
  m.phase = 0;
  m.lastNoise = 0;
  m.seed = 7;
  m.frequency = accent ? 1800 : 1200;
  m.amplitude = !m.tick ? 0.13f : accent ? 0.1f : 0.06f;
}

void clickAtStep(EngineCore& core) {
  if (core.transport.metronomeOn && core.transport.step % 4 == 0)
    armClick(core, core.transport.step % 16 == 0);
}

void addMetronome(EngineCore& core, dsp::Block& left, dsp::Block& right, int n) {
  Metronome& m = core.click;
  for (int i = 0; i < n && m.amplitude > 1e-5f; i++) {
    float x;
    if (m.tick) {
      const float noise = float(dsp::lcg(m.seed)) / 2147483648.0f;
      x = m.amplitude * (noise - m.lastNoise);
      m.lastNoise = noise;
      m.amplitude *= core.rates.clickDecay;
    } else {
      x = m.amplitude * dsp::sineAt(core.sine, m.phase);
      m.phase = dsp::wrapped(m.phase + float(m.frequency / core.rates.rate));
      m.amplitude *= 0.995f;
    }
    left[i] += x;
    right[i] += x;
  }
}

}  // namespace synth
