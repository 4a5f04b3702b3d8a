// Three oscillators that correlated noise pushes about.
#include <algorithm>

#include "engine/dsp/Random.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {

using namespace dsp;

void renderSwarm(KindState& st, Run& run) {
  const Block& inc = *run.inc;
  SwarmState& s = st.swarm;
  Block fast, slow, stepB, stepC;
  for (int i = 0; i < run.n; i++) {
    const float n = white(st.seed);
    fast[i] = s.fast = flushed(s.fast + (n - s.fast) * (0.12f * run.e[0][i] + 0.003f));
    slow[i] = s.slow = flushed(s.slow + (n - s.slow) * 0.001f);
  }
  for (int i = run.n; i < segment; i++) fast[i] = slow[i] = 0;
  for (int q = 0; q < segment / 4; q++) {
    const f4 i = inc.at(q), detune = splat(0.026f) * run.e[3].at(q) + splat(0.0003f);
    stepB.put(q,
              clamp(i * (splat(1) - detune) + run.e[0].at(q) * i * slow.at(q) * splat(0.2f), 1e-6f, 0.45f));
    stepC.put(q, min(i * (detune + splat(1)), splat(0.45f)));
  }
  PhaseBlock b, c;
  advance(st.phaseA, inc, *run.phase, run.n);
  advance(st.phaseB, stepB, b, run.n);
  advance(st.phaseC, stepC, c, run.n);
  for (int q = 0; q < quads(run.n); q++) {
    const f4 a = fast.at(q), am = run.e[1].at(q);
    const f4 push = modulationRoom(inc.at(q)) * run.e[2].at(q) * a;
    const f4 sum = sineAt(run.sine, run.phase->at(q) + phaseShift(push)) + sineAt(run.sine, b.at(q)) +
                   sineAt(run.sine, c.at(q));
    const f4 g = splat(1) - splat(0.7f) * am + splat(2) * dsp::abs(a) * am;
    run.mid->put(q, splat(0.6f) * run.e[0].at(q) * a + g * sum * splat(0.26f));
  }
}

}  // namespace synth::kinds
