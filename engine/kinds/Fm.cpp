// A carrier and a modulator with feedback; the index stays below what would fold at the Nyquist frequency.
#include <algorithm>

#include "engine/dsp/PolyBlep.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

// The modulator bends itself by its own last two samples, so it runs one sample at a time.
void feedBack(KindState& st, const Run& run, const PhaseBlock& phase, float soft, Block& m) {
  const float half = soft * 0.32f * 0.5f;
  for (int i = 0; i < run.n; i++) {
    const float bend = half * modulationRoom((*run.inc)[i]) * run.e[3][i] * (st.last1 + st.last2);
    m[i] = sineAt(run.sine, phase[i] + phaseShift(bend));
    st.last2 = st.last1;
    st.last1 = m[i];
  }
}

void runFree(KindState& st, const Run& run, const PhaseBlock& phase, Block& m) {
  for (int q = 0; q < quads(run.n); q++) m.put(q, sineAt(run.sine, phase.at(q)));
  st.last2 = run.n > 1 ? m[run.n - 2] : st.last1;
  st.last1 = m[run.n - 1];
}

}  // namespace

void renderFm(KindState& st, Run& run) {
  const float soft = std::min(run.soft, 1.0f);
  const Block& inc = *run.inc;
  Block steps, ratios, m = {};
  for (int q = 0; q < segment / 4; q++) {
    ratios.put(q, splat(4) * run.e[1].at(q) + splat(1));
    steps.put(q, min(inc.at(q) * ratios.at(q), splat(0.45f)));
  }
  PhaseBlock b;
  advance(st.phaseA, inc, *run.phase, run.n);
  advance(st.phaseB, steps, b, run.n);
  if (run.eFlat[3] && run.e[3][0] == 0)
    runFree(st, run, b, m);
  else
    feedBack(st, run, b, soft, m);
  for (int q = 0; q < quads(run.n); q++) {
    const f4 i = inc.at(q), e3 = run.e[2].at(q), inverse = splat(1) / i;
    // Carson's rule: the highest sideband of index I stands at 1 + ratio (1 + 1.51 I) times the carrier.
    const f4 most = ((splat(0.42f) * inverse - splat(1)) / ratios.at(q) - splat(1)) * splat(1 / 1.51f);
    const f4 wanted = splat(soft) * modulationRoom(i) * (splat(1.7f) * run.e[0].at(q) + splat(0.08f)) *
                      (splat(0.65f) * e3 + splat(0.35f));
    const f4 index = min(wanted, max(most, splat(0)));
    const u4 a = run.phase->at(q);
    f4 x = splat(0.72f) * sineAt(run.sine, a + phaseStep(splat(0.24f) * m.at(q) * index));
    if (any(e3 > splat(0))) {
      const f4 p = unit(a);
      x += splat(0.22f) * e3 * (p + p - splat(1) - poly(p, i, inverse));
    }
    run.mid->put(q, x);
  }
}

}  // namespace synth::kinds
