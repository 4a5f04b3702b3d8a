#include "analysis/Roughness.h"

#include <array>

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr int bands = 6;
using Lanes = std::array<double, bands>;
constexpr double centres[bands] = {250, 500, 1000, 2000, 4000, 8000};
constexpr double lowPass = 0.01944344385374308;    // a one-pole at 150 Hz
constexpr double highPass = 0.002614569920637133;  // a one-pole at 20 Hz
constexpr size_t settling = 4800;

// All six bands side by side, a sample at a time.
struct Bank {
  Lanes b{}, a1{}, a2{};  // band passes of 0 dB peak gain, b0 = -b2 = b
  Lanes y1{}, y2{};
  std::array<Lanes, 4> smooth{};
  Lanes follow{}, again{};
  Lanes level{}, flutter{}, energy{};
  double x1 = 0, x2 = 0;

  Bank() {
    for (size_t i = 0; i < bands; i++) {
      const double w = 2 * math::pi * centres[i] / sampleRate, alpha = math::sin(w) / 2.828;
      b[i] = alpha / (1 + alpha);
      a1[i] = -2 * math::cos(w) / (1 + alpha);
      a2[i] = (1 - alpha) / (1 + alpha);
    }
  }

  void run(double x, double counts) {
    const double step = x - x2;
    x2 = x1;
    x1 = x;
    for (size_t i = 0; i < bands; i++) {
      const double y = b[i] * step - a1[i] * y1[i] - a2[i] * y2[i];
      y2[i] = y1[i];
      y1[i] = y;
      const double square = y * y;
      smooth[0][i] += lowPass * (square - smooth[0][i]);
      smooth[1][i] += lowPass * (smooth[0][i] - smooth[1][i]);
      smooth[2][i] += lowPass * (smooth[1][i] - smooth[2][i]);
      smooth[3][i] += lowPass * (smooth[2][i] - smooth[3][i]);
      const double envelope = std::sqrt(smooth[3][i] > 0 ? smooth[3][i] : 0.0);
      follow[i] += highPass * (envelope - follow[i]);
      const double once = envelope - follow[i];
      again[i] += highPass * (once - again[i]);
      const double twice = once - again[i];
      level[i] += counts * envelope;
      flutter[i] += counts * (twice * twice);
      energy[i] += counts * square;
    }
  }

  // Ends tails before they become too small for the processor to be quick with.
  void settle() {
    for (Lanes* lanes : {&y1, &y2, &smooth[0], &smooth[1], &smooth[2], &smooth[3], &follow, &again})
      for (double& v : *lanes)
        if (std::fabs(v) < 1e-100) v = 0;
  }
};

}  // namespace

double roughnessOf(const Audio& audio) {
  Bank bank;
  for (size_t i = 0; i < audio.size(); i++) {
    bank.run(0.5 * (double(audio.left[i]) + double(audio.right[i])), i < settling ? 0.0 : 1.0);
    if (i % 4096 == 0) bank.settle();
  }
  if (audio.size() <= settling) return 0;
  const double count = double(audio.size() - settling);
  double total = 0, weight = 0;
  for (size_t i = 0; i < bands; i++) {
    const double mean = bank.level[i] / count;
    if (!(mean > 1e-12)) continue;
    total += std::sqrt(bank.flutter[i] / count) / mean * bank.energy[i];
    weight += bank.energy[i];
  }
  return weight > 0 ? total / weight : 0;
}

}  // namespace synth::analysis
