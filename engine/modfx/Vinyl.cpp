#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/Random.h"
#include "engine/modfx/ModEffect.h"

namespace synth::modfx {
namespace {

using namespace dsp;

float onePole(double hz, float rate) {
  return float(1 - math::exp(-2 * math::pi * std::min(hz, 0.49 * double(rate)) / double(rate)));
}

constexpr float hushSeconds = 0.05f;

}  // namespace

void Vinyl::run(Lines& lines, const Params& p, Piece& x) {
  const float ms = p.rate / 1000, m = p.mix;
  const float hz = std::clamp(p.hz, 0.02f, 10.0f);
  const Phase wowStep = phaseStep(hz / p.rate), flutterStep = phaseStep(std::max(11 * hz, 0.22f) / p.rate);
  if (tone != p.tone) {
    tone = p.tone;
    highShare = onePole(18000 * math::pow(1.0 / 6, double(tone)), p.rate);
    lowShare = onePole(20 * math::pow(12.5, double(tone)), p.rate);
    hissShare = onePole(6000, p.rate);
  }
  const float dust = std::min(std::fabs(p.feedback) / 0.95f, 1.0f);
  const float chance = (70 * dust * dust + 2) / p.rate, decay = 1 - std::min(2500 / p.rate, 1.0f);
  const float hissLevel = 0.012f * dust + 0.004f;
  const float fade = 1 / (hushSeconds * p.rate);

  lines.write(x);
  for (int q = 0; q < quads(x.n); q++) {
    const f4 swing = splat(1.45f) * sinePoly(phasesFrom(wow, wowStep, q)) +
                     splat(0.12f) * sinePoly(phasesFrom(flutter, flutterStep, q));
    const f4 delay = splat(ms) * (splat(3.5f) + splat(m * p.depth) * swing);
    const i4 whole = truncated(delay);
    const f4 f = delay - toFloats(whole);
    const u4 from = lines.clock.after(q) - (u4)whole;
    for (int ch = 0; ch < 2; ch++) {
      const DelayLine& line = ch ? lines.r : lines.l;
      float* out = (ch ? x.r : x.l) + 4 * q;
      for (int k = 0; k < 4; k++) {
        const f4 t = line.around(from[k], lines.clock.now);
        out[k] = t[2] + f[k] * (t[1] - t[2]);
      }
    }
  }
  for (int i = 0; i < x.n; i++) {
    noise = p.hush ? std::max(noise - fade, 0.0f) : std::min(noise + fade, 1.0f);
    if (std::fabs(white(seed)) < chance) {
      const float u = white(seed), w = white(seed), size = (0.6f * dust + 0.4f) * 3 * u * u;
      float(&level)[2] = std::fabs(w) > 0.9f ? pop : tick;
      const float scaled = &level == &pop ? 2.2f * size : size;
      level[0] += scaled * (0.5f + 0.5f * w);
      level[1] += scaled * (0.5f - 0.5f * w);
    }
    for (int ch = 0; ch < 2; ch++) {
      float& signal = (ch ? x.r : x.l)[i];
      const float delayed = signal;
      high[ch] = flushed(high[ch] + highShare * (delayed - high[ch]));
      low[ch] = flushed(low[ch] + lowShare * (high[ch] - low[ch]));
      tick[ch] = flushed(tick[ch] * decay);
      pop[ch] = flushed(pop[ch] * decay);
      tickOut[ch] = flushed(tickOut[ch] + 0.08f * (tick[ch] - tickOut[ch]));
      popOut[ch] = flushed(popOut[ch] + 0.02f * (pop[ch] - popOut[ch]));
      hiss[ch] += hissShare * (white(seed) - hiss[ch]);
      signal = delayed + m * (high[ch] - low[ch] - delayed) +
               m * 0.25f * noise * (tickOut[ch] + popOut[ch] + hissLevel * hiss[ch]);
    }
  }
  wow += u32(x.n) * wowStep;
  flutter += u32(x.n) * flutterStep;
  lines.clock.advance(x.n);
}

}  // namespace synth::modfx
