// A carrier and a modulator with feedback; the index stays below what would fold at the Nyquist frequency.
#include <algorithm>

#include "engine/dsp/PolyBlep.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {

using namespace dsp;

void renderFm(KindState& st, Run& run) {
  const float soft = std::min(run.soft, 1.0f);
  const Block& inc = *run.inc;
  advance(st.phaseA, inc, *run.phase, run.n);
  for (int i = 0; i < run.n; i++) {
    const float e1 = run.e[0][i], e3 = run.e[2][i], e4 = run.e[3][i];
    const float ratio = 4 * run.e[1][i] + 1, room = modulationRoom(inc[i]);
    // Carson's rule: the highest sideband of index I stands at 1 + ratio (1 + 1.51 I) times the carrier.
    const float most = ((0.42f / inc[i] - 1) / ratio - 1) / 1.51f;
    const float index =
        std::min(soft * room * (1.7f * e1 + 0.08f) * (0.65f * e3 + 0.35f), std::max(most, 0.0f));
    const float bend = soft * room * e4 * 0.32f * 0.5f * (st.last1 + st.last2);
    const float m = sineAt(run.sine, st.phaseB + phaseShift(bend));
    st.last2 = st.last1;
    st.last1 = m;
    const Phase a = (*run.phase)[i];
    const float c = sineAt(run.sine, a + phaseShift(0.24f * m * index));
    const float p = unit(a), saw = (2 * p - 1) - poly(p, inc[i]);
    (*run.mid)[i] = 0.72f * c + 0.22f * e3 * saw;
    st.phaseB += phaseStep(std::min(inc[i] * ratio, 0.45f));
  }
}

}  // namespace synth::kinds
