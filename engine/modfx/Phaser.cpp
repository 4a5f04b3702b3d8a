#include <algorithm>

#include "engine/dsp/FastMath.h"
#include "engine/modfx/ModEffect.h"

namespace synth::modfx {

using namespace dsp;

void Phaser::tick(const Params& p) {
  const f4 swing = splat(0.5f) - splat(0.5f) * sinePoly(u4{phase, phase + quarterTurn, 0, 0} + quarterTurn);
  for (int ch = 0; ch < 2; ch++) {
    const float hz = 180 * exp2Fast(2.2016338f * p.tone + 4.5f * p.depth * swing[ch]);  // 4.6^tone
    const float g = tanPi(std::min(hz / p.rate, 0.45f)), wanted = (g - 1) / (g + 1);
    if (!started) shift[ch] = wanted;
    step[ch] = (wanted - shift[ch]) / tickLength;
    for (float& s : stage[ch]) s = flushed(s);
    last[ch] = flushed(last[ch]);
  }
  started = true;
}

void Phaser::run(const Params& p, Piece& x) {
  const f4 feedback = splat(0.9f * p.feedback), by = {step[0], step[1], 0, 0};
  f4 G = {shift[0], shift[1], 0, 0}, end = {last[0], last[1], 0, 0}, s[6];
  for (int k = 0; k < 6; k++) s[k] = f4{stage[0][k], stage[1][k], 0, 0};
  for (int i = 0; i < x.n; i++) {
    G += by;
    f4 y = f4{x.l[i], x.r[i], 0, 0} + feedback * end;
    for (f4& state : s) {
      const f4 in = y;
      y = G * in + state;
      state = in - G * y;
    }
    end = y;
    x.l[i] = y[0];
    x.r[i] = y[1];
  }
  for (int ch = 0; ch < 2; ch++) {
    shift[ch] = G[ch];
    last[ch] = end[ch];
    for (int k = 0; k < 6; k++) stage[ch][k] = s[k][ch];
  }
  phase += u32(x.n) * phaseStep(p.hz / p.rate);
}

bool Phaser::silent() const {
  for (int ch = 0; ch < 2; ch++) {
    if (last[ch] != 0) return false;
    for (float s : stage[ch])
      if (s != 0) return false;
  }
  return true;
}

void Phaser::pass(const Params& p, int n) {
  // Sample by sample, so that the sums round as they do when it runs.
  for (int ch = 0; ch < 2; ch++)
    for (int i = 0; i < n; i++) shift[ch] += step[ch];
  phase += u32(n) * phaseStep(p.hz / p.rate);
}

}  // namespace synth::modfx
