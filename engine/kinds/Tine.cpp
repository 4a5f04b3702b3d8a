// A struck fundamental with inharmonic metal modes that die away.
#include <algorithm>

#include "engine/dsp/Sine.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

// Takes a partial out as its phase step nears half the sample rate.
float present(float step) { return std::clamp((0.46f - step) / 0.08f, 0.0f, 1.0f); }

}  // namespace

void renderTine(KindState& st, Run& run) {
  const dsp::Block& inc = *run.inc;
  for (int i = 0; i < run.n; i++) {
    const float e1 = run.e[0][i], e4 = run.e[3][i];
    const float modulator = std::min(inc[i] * (2 + 0.76f * run.e[1][i]), 0.48f);
    const float tine = std::min(inc[i] * (4.03f + 1.1f * e4), 0.48f), bell = std::min(inc[i] * 6.79f, 0.48f);
    const float t = run.soft * st.strike;
    const float m = t * dsp::sineAt(run.sine, st.phaseB);
    const float bend = modulationRoom(inc[i]) * (1.2f * run.e[2][i] + 0.05f) * m * 0.25f;
    const float carrier = dsp::sineOf(run.sine, st.phaseA + bend);
    (*run.phase)[i] = st.phaseA;
    (*run.mid)[i] = 0.74f * carrier + 0.25f * e1 * present(modulator) * m +
                    0.18f * e4 * 0.5f * present(tine) * dsp::sineAt(run.sine, st.phaseC) * t +
                    0.18f * e4 / 3 * present(bell) * dsp::sineAt(run.sine, st.phaseD) * t;
    st.strike = dsp::flushed(st.strike * (1 - (7 * (1 - e1) + 2.5f) / run.rate));
    st.phaseA = dsp::wrapped(st.phaseA + inc[i]);
    st.phaseB = dsp::wrapped(st.phaseB + modulator);
    st.phaseC = dsp::wrapped(st.phaseC + tine);
    st.phaseD = dsp::wrapped(st.phaseD + bell);
  }
}

}  // namespace synth::kinds
