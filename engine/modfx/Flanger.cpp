// After Smith, Physical Audio Signal Processing: flanging.
#include <algorithm>

#include "engine/dsp/FastMath.h"
#include "engine/dsp/Saturate.h"
#include "engine/modfx/ModEffect.h"

namespace synth::modfx {

using namespace dsp;

void Flanger::tick(const Params& p) {
  for (float& y : low) y = flushed(y);
  if (lowTone == p.tone) return;
  lowTone = p.tone;
  const float hz = std::min(1500 * exp2Fast(3.3219281f * p.tone), 0.45f * p.rate);
  lowShare = 1 - exp2Fast(-9.0647203f * hz / p.rate);  // 2 pi / ln 2
}

void Flanger::run(Lines& lines, const Params& p, Piece& x) {
  const float ms = p.rate / 1000;
  const Phase step = phaseStep(p.hz / p.rate);
  alignas(16) float delay[2][tickLength];
  for (int q = 0; q < quads(x.n); q++) {
    const u4 turn = phasesFrom(phase, step, q);
    const f4 base = splat(0.25f * ms), range = splat(6.75f * p.depth * ms * 0.5f);
    store(delay[0] + 4 * q, base + range * (splat(1) - sinePoly(turn + quarterTurn)));
    store(delay[1] + 4 * q, base + range * (splat(1) - sinePoly(turn + 2 * quarterTurn)));
  }
  DelayLine* const line[2] = {&lines.l, &lines.r};
  float* const signal[2] = {x.l, x.r};
  for (int i = 0; i < x.n; i++) {
    const u32 number = lines.clock.now + 1;
    for (int ch = 0; ch < 2; ch++) {
      const float wet = line[ch]->read(number, std::max(delay[ch][i], 2.0f));
      low[ch] += lowShare * (wet - low[ch]);
      line[ch]->put(number, flushed(signal[ch][i] + p.feedback * sat(clip(low[ch], 3))));
      signal[ch][i] = wet;
    }
    lines.clock.advance(1);
  }
  pass(p, x.n);
}

void Flanger::pass(const Params& p, int n) { phase += u32(n) * phaseStep(p.hz / p.rate); }

}  // namespace synth::modfx
