#include "engine/TrackEq.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"

namespace synth {
namespace {

using dsp::Biquad;

struct Angles {
  double cosine, sine;
};
Angles anglesAt(double hz, double rate) {
  const double w = 2 * math::pi * hz / rate;
  return {math::cos(w), math::sin(w)};
}

Biquad normalized(double b0, double b1, double b2, double a0, double a1, double a2) {
  return {float(b0 / a0), float(b1 / a0), float(b2 / a0), float(a1 / a0), float(a2 / a0)};
}

double amplitudeRoot(double db) { return math::exp2(db / 40 * 3.32192809488736235); }

// Shelves of slope 1.
Biquad lowShelf(double hz, double db, double rate) {
  const double A = amplitudeRoot(db), p = A + 1, m = A - 1;
  const auto [c, s] = anglesAt(hz, rate);
  const double beta = std::sqrt(2 * A) * s;
  return normalized(A * (p - m * c + beta), 2 * A * (m - p * c), A * (p - m * c - beta), p + m * c + beta,
                    -2 * (m + p * c), p + m * c - beta);
}

Biquad highShelf(double hz, double db, double rate) {
  const double A = amplitudeRoot(db), p = A + 1, m = A - 1;
  const auto [c, s] = anglesAt(hz, rate);
  const double beta = std::sqrt(2 * A) * s;
  return normalized(A * (p + m * c + beta), -2 * A * (m + p * c), A * (p + m * c - beta), p - m * c + beta,
                    2 * (m - p * c), p - m * c - beta);
}

// Peak of Q 0.8.
Biquad peak(double hz, double db, double rate) {
  const double A = amplitudeRoot(db);
  const auto [c, s] = anglesAt(hz, rate);
  const double alpha = s / 1.6;
  return normalized(1 + alpha * A, -2 * c, 1 - alpha * A, 1 + alpha / A, -2 * c, 1 - alpha / A);
}

}  // namespace

void designTrackEq(EngineCore& core, int t) {
  TrackState& s = core.tracks[t];
  const float* v = core.prepared[t].value;
  const float now[4] = {v[automation::EQ_LOW], v[automation::EQ_MID], v[automation::EQ_MID_FREQ],
                        v[automation::EQ_HIGH]};
  if (std::equal(now, now + 4, s.eqValues)) return;
  std::copy(now, now + 4, s.eqValues);
  const float gains[3] = {now[0], now[1], now[3]};
  for (int band = 0; band < 3; band++) {
    s.eqBand[band] = gains[band] != 0;
    if (!s.eqBand[band]) s.eqState[band][0] = s.eqState[band][1] = dsp::BiquadState{};
  }
  const double rate = core.rates.rate;
  s.eq[0] = lowShelf(110, now[0], rate);
  s.eq[1] = peak(std::min(double(now[2]), 0.45 * rate), now[1], rate);
  s.eq[2] = highShelf(std::min(6000.0, 0.4 * rate), now[3], rate);
}

void runTrackEqs(EngineCore& core, const bool (&works)[limits::tracks]) {
  for (int band = 0; band < 3; band++) {
    dsp::BiquadChannel channels[2 * limits::tracks];
    int count = 0;
    for (int t = 0; t < limits::tracks; t++) {
      TrackState& s = core.tracks[t];
      if (!works[t] || !s.eqBand[band]) continue;
      channels[count++] = {&core.mix.trackL[t], &s.eqState[band][0], &s.eq[band]};
      channels[count++] = {&core.mix.trackR[t], &s.eqState[band][1], &s.eq[band]};
    }
    dsp::runBiquads(channels, count, core.clock.n, onGrid(core));
  }
}

}  // namespace synth
