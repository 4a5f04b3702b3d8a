#include "analysis/compare/Align.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr int widest = 100;  // frames
constexpr int lagCount = 2 * widest + 1;

// sum over i of x[i] y[i + lag], as far as both reach.
template <class T>
double correlationAt(const std::vector<T>& x, const std::vector<T>& y, int lag) {
  const int from = std::max(0, -lag), to = std::min(int(x.size()), int(y.size()) - lag);
  return from < to ? dot(x.data() + from, y.data() + from + lag, to - from) : 0;
}

struct Coarse {
  int lag = 0;
  double confidence = 0;
};

Coarse coarse(const Features& reference, const Features& render) {
  std::vector<double> c(lagCount);
  for (int k = 0; k < lagCount; k++)
    c[size_t(k)] = correlationAt(render.novelty, reference.novelty, k - widest);
  int best = widest;
  double bestWeighted = 0;
  for (int k = 0; k < lagCount; k++) {
    const double weighted = c[size_t(k)] * (1 - 0.3 * std::abs(k - widest) / widest);
    if (!(weighted > bestWeighted)) continue;
    best = k;
    bestWeighted = weighted;
  }
  double second = 0;
  for (int k = 0; k < lagCount; k++)
    if (std::abs(k - best) > 5) second = std::max(second, c[size_t(k)]);
  const double top = c[size_t(best)], mean = sum(c.data(), lagCount) / lagCount;
  // The lag is chosen by the weighted values and judged by the plain ones, so a farther one may be higher.
  const double confidence = top > mean ? std::clamp((top - second) / (top - mean), 0.0, 1.0) : 0;
  return {best - widest, std::round(100 * confidence) / 100};
}

}  // namespace

Alignment align(const Features& reference, const Features& render) {
  if (reference.onsets.empty() || render.onsets.empty()) return {0, true, 0};
  const Coarse found = coarse(reference, render);
  const int milliseconds = 10 * found.lag;
  double most = -1;
  int offset = milliseconds;
  for (int delta = -12; delta <= 12; delta++) {
    const double s = correlationAt(render.envelopeMs, reference.envelopeMs, milliseconds + delta);
    if (!(s > most)) continue;
    most = s;
    offset = milliseconds + delta;
  }
  return {offset / 1000.0, true, found.confidence};
}

}  // namespace synth::analysis
