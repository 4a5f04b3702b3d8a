// Two oscillators that morph from sine through triangle and saw to pulse, free or one synced to the other.
#include <algorithm>

#include "engine/dsp/PolyBlep.h"
#include "engine/dsp/Sine.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

enum Shape : unsigned { SineShape = 1, Triangle = 2, Saw = 4, Square = 8, All = 15 };

// The shapes between which a wave position that stands still morphs.
unsigned shapesFor(float s) { return 3u << std::min(int(3 * s), 2); }

f4 triangle(f4 p) { return splat(1) - splat(4) * dsp::abs(p - splat(0.5f)); }
f4 saw(f4 p, f4 w) { return poly(p, w) - (splat(2) * p - splat(1)); }
f4 square(f4 p, f4 w) {
  const f4 half = select(p < splat(0.5f), p + splat(0.5f), p - splat(0.5f));
  return select(p < splat(0.5f), splat(1), splat(-1)) + poly(p, w) - poly(half, w);
}

// The wave at position s in 0..1; high notes move back to the sine rather than alias.
f4 morph(const float* sine, f4 p, f4 w, f4 s, unsigned needed) {
  const f4 x = splat(3) * s;
  const f4 high = w - splat(0.08f);
  const bool fades = any(high > splat(0));
  const f4 none = splat(0);
  const f4 x0 = needed & SineShape || fades ? sineAt(sine, p) : none;
  const f4 x1 = needed & Triangle ? triangle(p) : none;
  const f4 x2 = needed & Saw ? saw(p, w) : none;
  const f4 x3 = needed & Square ? square(p, w) : none;
  const i4 second = x >= splat(1), third = x >= splat(2);
  const f4 a = select(third, x2, select(second, x1, x0)), b = select(third, x3, select(second, x2, x1));
  const f4 i = select(third, splat(2), select(second, splat(1), splat(0)));
  f4 y = a + (b - a) * (x - i);
  if (fades) y += clamp(high / splat(0.3f), 0, 1) * (x0 - y);
  return y;
}

struct Phases {
  Block a, b, stepB;
};

void advance(KindState& st, const Run& run, Phases& out, bool sync) {
  for (int i = 0; i < segment; i++) {
    const float inc = (*run.inc)[i < run.n ? i : run.n - 1];
    const float detuned = inc * (0.012f * run.e[2][i] + 1);
    const float step = std::min(sync ? detuned : detuned * (2.5f * run.e[1][i] + 0.5f), 0.45f);
    out.a[i] = st.phaseA;
    out.b[i] = st.phaseB;
    out.stepB[i] = step;
    if (i >= run.n) continue;
    st.phaseA = wrapped(st.phaseA + inc);
    st.phaseB = wrapped(st.phaseB + step);
  }
}

// The synced oscillator restarts with its master. Its edges are corrected at its own wraps and, in
// proportion to where it was cut, at the master's.
f4 synced(const float* sine, f4 p, f4 inc, f4 e1, f4 e2, float soft) {
  const f4 one = splat(1);
  f4 s = one + min(splat(7) * e2, max(splat(0.4f) / inc - one, splat(0)));
  if (soft < 1) s = one + splat(soft) * (s - one);
  const f4 whole = toFloats(truncated(s));
  f4 rest = s - whole;
  rest = select(rest > splat(0), rest, one);
  const f4 turns = p * s, sp = wrapped(turns), ws = inc * s;
  const f4 edge = poly(p, inc);
  const f4 round = sineAt(sine, sp) - splat(0.5f) * sineAt(sine, wrapped(rest)) * edge;
  // The slave's own step counts only where it wraps by itself before the master cuts it.
  const f4 u = sp / ws, v = (sp - one) / ws;
  const f4 after = onlyWhere((sp < ws) & (turns >= one), splat(2) * u - u * u - one);
  const f4 before = onlyWhere((sp > one - ws) & ((one - sp) / s < one - p), v * v + splat(2) * v + one);
  const f4 sharp = splat(-0.8f) * ((splat(2) * sp - one) - (after + before) - rest * edge);
  f4 x = round + clamp(splat(1.5f) * e1, 0, 1) * (sharp - round);
  const f4 high = clamp((inc - splat(0.08f)) / splat(0.3f), 0, 1);
  if (any(high > splat(0))) x += high * (sineAt(sine, p) - x);
  return x;
}

}  // namespace

void renderAnalog(KindState& st, Run& run) {
  const bool sync = run.track->analog_mode == 1;
  const float level = run.track->osc_b_level, shapeB = run.track->osc_b_shape;
  const bool mirror = shapeB < 0;
  const float L = std::min(4 * level, 1.0f);
  const unsigned shapesA = run.eFlat[0] ? shapesFor(run.e[0][0]) : All;
  const unsigned shapesB = !mirror ? shapesFor(shapeB) : run.eFlat[0] ? shapesFor(1 - run.e[0][0]) : All;
  Phases phases;
  advance(st, run, phases, sync);

  bool wide = false;
  for (int i = 0; i < run.n; i++) wide |= run.e[3][i] > 0;
  run.stereo = wide;
  for (int q = 0; q < quads(run.n); q++) {
    const f4 p = phases.a.at(q), inc = run.inc->at(q), e1 = run.e[0].at(q), e2 = run.e[1].at(q);
    auto wave = [&](f4 phase) {
      return sync ? synced(run.sine, phase, inc, e1, e2, run.soft) : morph(run.sine, phase, inc, e1, shapesA);
    };
    const f4 a = wave(p);
    f4 b = splat(0);
    if (level > 0)
      b = morph(run.sine, phases.b.at(q), phases.stepB.at(q), mirror ? splat(1) - e1 : splat(shapeB),
                shapesB);
    const f4 bScaled = splat(level) * b;
    run.mid->put(q, (a + bScaled) * splat(0.42f));
    if (!wide) continue;
    // With B silent the width comes from a phase-shifted copy of A.
    f4 side = splat(L * 0.42f) * (a - bScaled);
    if (L < 1) side += splat((1 - L) * 0.32f) * (wave(wrapped(p + splat(0.17f))) - a);
    run.side->put(q, run.e[3].at(q) * side);
  }
  *run.phase = phases.a;
}

}  // namespace synth::kinds
