// Two oscillators that morph from sine through triangle and saw to pulse, free or one synced to the other.
#include <algorithm>

#include "engine/dsp/PolyBlep.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

// A wave's phase over four samples, with what the shapes need of it.
struct Wave {
  u4 phase;
  f4 p, step, inverse;

  Wave(u4 at, f4 by) : phase(at), p(unit(at)), step(by), inverse(splat(1) / by) {}
};

f4 sine(const float* table, const Wave& w) { return sineAt(table, w.phase); }
f4 triangle(const Wave& w) { return splat(1) - splat(4) * dsp::abs(w.p - splat(0.5f)); }
f4 saw(const Wave& w) { return poly(w.p, w.step, w.inverse) - (w.p + w.p - splat(1)); }
f4 square(const Wave& w) {
  const i4 first = w.p < splat(0.5f);
  const f4 half = w.p + select(first, splat(0.5f), splat(-0.5f));
  return select(first, splat(1), splat(-1)) + poly(w.p, w.step, w.inverse) - poly(half, w.step, w.inverse);
}

// The two shapes between which position x = 3 s lies, mixed.
template <int Index>
f4 between(const float* table, const Wave& w, f4 x) {
  const f4 a = Index == 0 ? sine(table, w) : Index == 1 ? triangle(w) : saw(w);
  const f4 b = Index == 0 ? triangle(w) : Index == 1 ? saw(w) : square(w);
  return a + (b - a) * (x - splat(Index));
}

int indexOf(float s) { return std::min(int(3 * s), 2); }

// The shapes between which the wave lies over the whole segment, or -1 when it moves across one.
int indexOf(const Block& s, bool flat) {
  if (flat) return indexOf(s[0]);
  f4 lowest = s.at(0), highest = s.at(0);
  for (int q = 1; q < segment / 4; q++) {
    lowest = min(lowest, s.at(q));
    highest = max(highest, s.at(q));
  }
  const int low = indexOf(std::min({lowest[0], lowest[1], lowest[2], lowest[3]}));
  return low == indexOf(std::max({highest[0], highest[1], highest[2], highest[3]})) ? low : -1;
}

// The wave at position s in 0..1; `index` says between which shapes, -1 that it moves across them. High
// notes go back to the sine rather than alias.
f4 morph(const float* table, const Wave& w, f4 s, int index) {
  const f4 x = splat(3) * s;
  f4 y;
  switch (index) {
    case 0: y = between<0>(table, w, x); break;
    case 1: y = between<1>(table, w, x); break;
    case 2: y = between<2>(table, w, x); break;
    default:
      y = select(x >= splat(2), between<2>(table, w, x),
                 select(x >= splat(1), between<1>(table, w, x), between<0>(table, w, x)));
  }
  const f4 high = w.step - splat(0.08f);
  if (any(high > splat(0))) y += clamp(high / splat(0.3f), 0, 1) * (sine(table, w) - y);
  return y;
}

// The synced oscillator restarts with its master. Its edges are corrected at its own wraps and, in
// proportion to where it was cut, at the master's.
f4 synced(const float* table, const Wave& w, f4 e1, f4 e2, float soft) {
  const f4 one = splat(1), p = w.p;
  f4 s = one + min(splat(7) * e2, max(splat(0.4f) / w.step - one, splat(0)));
  if (soft < 1) s = one + splat(soft) * (s - one);
  f4 rest = s - toFloats(truncated(s));
  rest = select(rest > splat(0), rest, one);
  const f4 turns = p * s, sp = wrapped(turns), ws = w.step * s;
  const f4 edge = poly(p, w.step, w.inverse);
  const f4 round = dsp::sineAt(table, sp) - splat(0.5f) * dsp::sineAt(table, wrapped(rest)) * edge;
  // The slave's own step counts only where it wraps by itself before the master cuts it.
  const f4 u = sp / ws, v = (sp - one) / ws;
  const f4 after = onlyWhere((sp < ws) & (turns >= one), splat(2) * u - u * u - one);
  const f4 before = onlyWhere((sp > one - ws) & ((one - sp) / s < one - p), v * v + splat(2) * v + one);
  const f4 sharp = splat(-0.8f) * ((splat(2) * sp - one) - (after + before) - rest * edge);
  f4 x = round + clamp(splat(1.5f) * e1, 0, 1) * (sharp - round);
  const f4 high = clamp((w.step - splat(0.08f)) / splat(0.3f), 0, 1);
  if (any(high > splat(0))) x += high * (sine(table, w) - x);
  return x;
}

// The second oscillator's phase steps.
void stepsOfB(const Run& run, bool sync, Block& steps) {
  const f4 cents = splat(0.012f), one = splat(1), most = splat(0.45f);
  for (int q = 0; q < segment / 4; q++) {
    f4 step = run.inc->at(q) * (cents * run.e[2].at(q) + one);
    if (!sync) step *= splat(2.5f) * run.e[1].at(q) + splat(0.5f);
    steps.put(q, min(step, most));
  }
}

bool anyAbove(const Block& b, float limit, int n) {
  for (int i = 0; i < n; i++)
    if (b[i] > limit) return true;
  return false;
}

}  // namespace

void renderAnalog(KindState& st, Run& run) {
  const bool sync = run.track->analog_mode == 1;
  const float level = run.track->osc_b_level, shapeB = run.track->osc_b_shape;
  const bool mirror = shapeB < 0;
  const float L = std::min(4 * level, 1.0f);
  Block waveB, stepB;
  for (int q = 0; q < segment / 4; q++) waveB.put(q, mirror ? splat(1) - run.e[0].at(q) : splat(shapeB));
  const int indexA = indexOf(run.e[0], run.eFlat[0]);
  const int indexB = indexOf(waveB, run.eFlat[0] || !mirror);
  PhaseBlock a, b;
  advance(st.phaseA, *run.inc, a, run.n);
  stepsOfB(run, sync, stepB);
  advance(st.phaseB, stepB, b, run.n);

  run.stereo = run.eFlat[3] ? run.e[3][0] > 0 : anyAbove(run.e[3], 0, run.n);
  for (int q = 0; q < quads(run.n); q++) {
    const f4 inc = run.inc->at(q), e1 = run.e[0].at(q), e2 = run.e[1].at(q);
    auto wave = [&](u4 phase) {
      const Wave w(phase, inc);
      return sync ? synced(run.sine, w, e1, e2, run.soft) : morph(run.sine, w, e1, indexA);
    };
    const f4 first = wave(a.at(q));
    f4 second = splat(0);
    if (level > 0) second = splat(level) * morph(run.sine, Wave(b.at(q), stepB.at(q)), waveB.at(q), indexB);
    run.mid->put(q, (first + second) * splat(0.42f));
    if (!run.stereo) continue;
    // With B silent the width comes from a phase-shifted copy of A.
    f4 side = splat(L * 0.42f) * (first - second);
    if (L < 1) side += splat((1 - L) * 0.32f) * (wave(a.at(q) + phaseShift(0.17f)) - first);
    run.side->put(q, run.e[3].at(q) * side);
  }
  *run.phase = a;
}

}  // namespace synth::kinds
