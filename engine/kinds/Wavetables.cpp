#include "engine/kinds/Wavetables.h"

#include <cmath>
#include <vector>

#include "base/Math.h"

namespace synth::kinds {
namespace {

constexpr int partials = 32;

struct Partial {
  double level, phase;
};

// Partial k of a surface; `q` is the position along its table, 0..1.
Partial partialOf(int table, double q, int k) {
  const double n = k;
  switch (table) {
    case 0: return {k == 1 ? 1 : math::pow(n, -((1 - q) * 1.8 + 1.1)), 0};
    case 1:
      if (k == 1) return {1, 0.7 * q};
      return {(k % 2 ? 1 : 0.65 * q + 0.08) / math::pow(1.1, n), 0.7 * q * (k % 3)};
    case 2: {
      if (k == 1) return {0.6, 0};
      const double away = (n - (9 * q + 2)) / 2.5;
      return {math::exp(-away * away) / std::sqrt(n), 0};
    }
    default:
      if (k == 1) return {0.55 * math::cos(2 * q + 0.5) + 0.45, 0.3 * q};
      return {(0.55 * math::cos(n * (2 * q + 0.5)) + 0.45) / math::pow(n, 1.3), 0.3 * q * n};
  }
}

class Atlas {
 public:
  Atlas() : v_(size_t(tableGrid * tableGrid * tableMips * tableStride)) {
    double sine[tableSize];
    for (int m = 0; m < tableSize; m++) sine[m] = math::sin(2 * math::pi * m / tableSize);
    for (int i = 0; i < tableGrid; i++)
      for (int j = 0; j < tableGrid; j++)
        for (int mip = 0; mip < tableMips; mip++) fill(at(i, j, mip), i, j / 3.0, mip, sine);
  }
  float* at(int i, int j, int mip) {
    return v_.data() + ((i * tableGrid + j) * tableMips + mip) * tableStride;
  }

 private:
  static void fill(float* out, int table, double q, int mip, const double (&sine)[tableSize]) {
    double sum[tableSize] = {};
    const int most = mip == tableMips - 1 ? 1 : partials >> mip;
    for (int k = 1; k <= most; k++) {
      const Partial p = partialOf(table, q, k);
      const double s = p.level * math::cos(p.phase), c = p.level * math::sin(p.phase);
      for (int m = 0; m < tableSize; m++)
        sum[m] += s * sine[k * m % tableSize] + c * sine[(k * m + tableSize / 4) % tableSize];
    }
    for (int m = 0; m < tableSize; m++) out[m] = float(0.48 * sum[m]);
    out[tableSize] = out[0];
  }

  std::vector<float> v_;
};

}  // namespace

const float* wavetable(int table, int position, int mip) {
  static Atlas* const atlas = new Atlas;
  return atlas->at(table, position, mip);
}

}  // namespace synth::kinds
