// A carrier and a modulator with feedback; the index stays below what would fold at the Nyquist frequency.
#include <algorithm>

#include "engine/dsp/PolyBlep.h"
#include "engine/dsp/Sine.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {

void renderFm(KindState& st, Run& run) {
  const float soft = std::min(run.soft, 1.0f);
  const dsp::Block& inc = *run.inc;
  for (int i = 0; i < run.n; i++) {
    const float e1 = run.e[0][i], e3 = run.e[2][i], e4 = run.e[3][i];
    const float ratio = 4 * run.e[1][i] + 1, room = modulationRoom(inc[i]);
    // Carson's rule: the highest sideband of index I stands at 1 + ratio (1 + 1.51 I) times the carrier.
    const float most = ((0.42f / inc[i] - 1) / ratio - 1) / 1.51f;
    const float index =
        std::min(room * (1.7f * e1 + 0.08f) * (0.65f * e3 + 0.35f), std::max(most, 0.0f)) * soft;
    const float bend = soft * room * e4 * 0.32f * 0.5f * (st.last1 + st.last2);
    const float m = dsp::sineOf(run.sine, st.phaseB + bend);
    st.last2 = st.last1;
    st.last1 = m;
    const float c = dsp::sineOf(run.sine, st.phaseA + 0.24f * m * index);
    const float saw = (2 * st.phaseA - 1) - dsp::poly(st.phaseA, inc[i]);
    (*run.phase)[i] = st.phaseA;
    (*run.mid)[i] = 0.72f * c + 0.22f * e3 * saw;
    st.phaseA = dsp::wrapped(st.phaseA + inc[i]);
    st.phaseB = dsp::wrapped(st.phaseB + std::min(inc[i] * ratio, 0.45f));
  }
}

}  // namespace synth::kinds
