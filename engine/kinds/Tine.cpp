// A struck fundamental with inharmonic metal modes that die away.
#include <algorithm>

#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

// Takes a partial out as its phase step nears half the sample rate.
float present(float step) { return std::clamp((0.46f - step) / 0.08f, 0.0f, 1.0f); }

}  // namespace

void renderTine(KindState& st, Run& run) {
  const Block& inc = *run.inc;
  advance(st.phaseA, inc, *run.phase, run.n);
  for (int i = 0; i < run.n; i++) {
    const float e1 = run.e[0][i], e4 = run.e[3][i];
    const float modulator = std::min(inc[i] * (2 + 0.76f * run.e[1][i]), 0.48f);
    const float tine = std::min(inc[i] * (4.03f + 1.1f * e4), 0.48f), bell = std::min(inc[i] * 6.79f, 0.48f);
    const float t = run.soft * st.strike;
    const float m = t * sineAt(run.sine, st.phaseB);
    const float bend = modulationRoom(inc[i]) * (1.2f * run.e[2][i] + 0.05f) * m * 0.25f;
    const float carrier = sineAt(run.sine, (*run.phase)[i] + phaseShift(bend));
    (*run.mid)[i] = 0.74f * carrier + 0.25f * e1 * present(modulator) * m +
                    0.18f * e4 * 0.5f * present(tine) * sineAt(run.sine, st.phaseC) * t +
                    0.18f * e4 / 3 * present(bell) * sineAt(run.sine, st.phaseD) * t;
    st.strike = flushed(st.strike * (1 - (7 * (1 - e1) + 2.5f) / run.rate));
    st.phaseB += phaseStep(modulator);
    st.phaseC += phaseStep(tine);
    st.phaseD += phaseStep(bell);
  }
}

}  // namespace synth::kinds
