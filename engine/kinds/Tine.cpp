// A struck fundamental with inharmonic metal modes that die away.
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

constexpr float highest = 0.48f;  // phase step of a partial

// Takes a partial out as its phase step nears half the sample rate.
f4 present(f4 step) { return clamp((splat(0.46f) - step) * splat(12.5f), 0, 1); }

Block partial(const Block& inc, f4 (*ratio)(f4 e), const Block& e) {
  Block step;
  for (int q = 0; q < segment / 4; q++) step.put(q, min(inc.at(q) * ratio(e.at(q)), splat(highest)));
  return step;
}

}  // namespace

void renderTine(KindState& st, Run& run) {
  const Block &inc = *run.inc, &tone = run.e[0], &metal = run.e[3];
  const Block modulator = partial(
      inc, [](f4 e) { return splat(2) + splat(0.76f) * e; }, run.e[1]);
  const Block tine = partial(
      inc, [](f4 e) { return splat(4.03f) + splat(1.1f) * e; }, metal);
  const Block bell = partial(
      inc, [](f4) { return splat(6.79f); }, metal);
  PhaseBlock b, c, d;
  advance(st.phaseA, inc, *run.phase, run.n);
  advance(st.phaseB, modulator, b, run.n);
  advance(st.phaseC, tine, c, run.n);
  advance(st.phaseD, bell, d, run.n);
  Block strike;
  for (int i = 0; i < run.n; i++) {
    strike[i] = st.strike;
    st.strike = flushed(st.strike * (1 - (7 * (1 - tone[i]) + 2.5f) / run.rate));
  }
  for (int q = 0; q < quads(run.n); q++) {
    const f4 t = splat(run.soft) * strike.at(q), m = t * sineAt(run.sine, b.at(q));
    const f4 bend =
        modulationRoom(inc.at(q)) * (splat(1.2f) * run.e[2].at(q) + splat(0.05f)) * m * splat(0.25f);
    f4 x = splat(0.74f) * sineAt(run.sine, run.phase->at(q) + phaseStep(bend)) +
           splat(0.25f) * tone.at(q) * present(modulator.at(q)) * m;
    const f4 level = splat(0.18f) * metal.at(q) * t;
    if (any(level > splat(0)))
      x += level * (splat(0.5f) * present(tine.at(q)) * sineAt(run.sine, c.at(q)) +
                    splat(1.0f / 3) * present(bell.at(q)) * sineAt(run.sine, d.at(q)));
    run.mid->put(q, x);
  }
}

}  // namespace synth::kinds
