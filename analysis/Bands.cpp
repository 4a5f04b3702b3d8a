#include "analysis/Bands.h"

#include <algorithm>

#include "base/Math.h"

namespace synth::analysis {
namespace {

double melOf(double hz) { return 2595 * math::log10(1 + hz / 700); }
double hzOfMel(double mel) { return 700 * (math::pow(10.0, mel / 2595) - 1); }

std::array<MelFilter, melCount> makeMelFilters() {
  const double low = melOf(30), high = melOf(16000);
  auto edge = [&](int i) { return hzOfMel(low + (high - low) * i / (melCount + 1)); };
  std::array<MelFilter, melCount> filters;
  for (int m = 0; m < melCount; m++) {
    const double from = edge(m), centre = edge(m + 1), to = edge(m + 2);
    MelFilter& filter = filters[size_t(m)];
    filter = {0, centre, {}};
    for (int k = 1; k < frameBins; k++) {
      const double hz = k * binHz;
      const double weight = std::min((hz - from) / (centre - from), (to - hz) / (to - centre));
      if (weight <= 0) continue;
      if (filter.weights.empty()) filter.firstBin = k;
      filter.weights.push_back(float(weight));
    }
  }
  return filters;
}

}  // namespace

int binAt(double hz) { return std::clamp(int(hz * frameSize / 48000), 1, frameBins - 1); }

BinRange thirdOctaveBins(int index) {
  constexpr double sixth = 1.122462048309373;
  const double centre = ThirdOctaves[size_t(index)];
  return binsOf(centre / sixth, centre * sixth);
}

const std::array<MelFilter, melCount>& melFilters() {
  static const std::array<MelFilter, melCount> filters = makeMelFilters();
  return filters;
}

}  // namespace synth::analysis
