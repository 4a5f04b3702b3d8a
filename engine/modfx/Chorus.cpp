#include <algorithm>

#include "engine/modfx/ModEffect.h"

namespace synth::modfx {

using namespace dsp;

namespace {

Phase slowStep(const Params& p) { return phaseStep(p.hz / p.rate); }
Phase flutterStep(const Params& p) { return phaseStep(std::min(14 * p.hz, 20.0f) / p.rate); }

}  // namespace

void Chorus::run(Lines& lines, const Params& p, Piece& x) {
  const f4 ms = splat(p.rate / 1000), middle = splat(7), swing = splat(3.2f * p.depth + 0.3f);
  const Phase step = phaseStep(p.hz / p.rate);
  lines.write(x);
  for (int q = 0; q < quads(x.n); q++) {
    const u4 at = lines.clock.after(q), turn = phasesFrom(phase, step, q);
    store(x.l + 4 * q, lines.l.read(at, ms * (middle + swing * sinePoly(turn))));
    store(x.r + 4 * q, lines.r.read(at, ms * (middle + swing * sinePoly(turn + quarterTurn))));
  }
  pass(p, x.n);
  lines.clock.advance(x.n);
}

void Chorus::pass(const Params& p, int n) { phase += u32(n) * phaseStep(p.hz / p.rate); }

void Ensemble::run(Lines& lines, const Params& p, Piece& x) {
  const f4 ms = splat(p.rate / 1000), middle = splat(6) * ms, half = splat(-0.5f), root = splat(0.8660254f);
  const f4 wide = splat(1.9f * p.depth) * ms, narrow = splat(0.22f * p.depth) * ms;
  const Phase step = slowStep(p), fastStep = flutterStep(p);
  lines.write(x);
  for (int q = 0; q < quads(x.n); q++) {
    const u4 at = lines.clock.after(q), one = phasesFrom(slow, step, q), two = phasesFrom(fast, fastStep, q);
    // The three phases of a turn, from one sine and one cosine.
    const f4 s = wide * sinePoly(one), c = wide * root * sinePoly(one + quarterTurn);
    const f4 t = narrow * sinePoly(two), d = narrow * root * sinePoly(two + quarterTurn);
    const f4 swing[3] = {s, half * s + c, half * s - c};
    const f4 shake[3] = {middle + t, middle + (half * t + d), middle + (half * t - d)};
    // The right channel lies a sixth of a turn later, where the left one's other two taps are mirrored.
    const f4 l = lines.l.read(at, shake[0] + swing[0]) + lines.l.read(at, shake[1] + swing[1]) +
                 lines.l.read(at, shake[2] + swing[2]);
    const f4 r = lines.r.read(at, shake[0] - swing[2]) + lines.r.read(at, shake[1] - swing[0]) +
                 lines.r.read(at, shake[2] - swing[1]);
    store(x.l + 4 * q, splat(0.5f) * l);
    store(x.r + 4 * q, splat(0.5f) * r);
  }
  pass(p, x.n);
  lines.clock.advance(x.n);
}

void Ensemble::pass(const Params& p, int n) {
  slow += u32(n) * slowStep(p);
  fast += u32(n) * flutterStep(p);
}

}  // namespace synth::modfx
