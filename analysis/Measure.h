// The few words that all analyses share: levels, bins, medians, rounding.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/Math.h"

namespace synth::analysis {

inline constexpr double silentDb = -200;

// A power in dB; at or under 1e-20, and for what is no number, -200.
inline double powerDb(double power) { return power > 1e-20 ? 10 * math::log10(power) : silentDb; }
inline double dbPower(double db) { return math::exp2(db * 0.33219280948873626); }

// What is no number counts as the largest, so that any list can be sorted.
inline bool below(double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; }
inline void sortNumbers(std::vector<double>& list) { std::sort(list.begin(), list.end(), below); }

// The element in the middle, the upper one of two; 0 of nothing.
inline double median(std::vector<double> list) {
  if (list.empty()) return 0;
  const auto middle = list.begin() + long(list.size() / 2);
  std::nth_element(list.begin(), middle, list.end(), below);
  return *middle;
}

// To so many decimals, halves away from zero, without a negative zero.
inline double rounded(double value, int decimals) {
  double scale = 1;
  for (int i = 0; i < decimals; i++) scale *= 10;
  return std::round(value * scale) / scale + 0.0;
}

// Sums whose order is fixed and leaves the compiler two independent pairs.
inline double sum(const double* x, int count) {
  double a = 0, b = 0, c = 0, d = 0;
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    a += x[i];
    b += x[i + 1];
    c += x[i + 2];
    d += x[i + 3];
  }
  for (; i < count; i++) a += x[i];
  return (a + c) + (b + d);
}
template <class A, class B>
double dot(const A* x, const B* y, int count) {
  double a = 0, b = 0, c = 0, d = 0;
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    a += double(x[i]) * double(y[i]);
    b += double(x[i + 1]) * double(y[i + 1]);
    c += double(x[i + 2]) * double(y[i + 2]);
    d += double(x[i + 3]) * double(y[i + 3]);
  }
  for (; i < count; i++) a += double(x[i]) * double(y[i]);
  return (a + c) + (b + d);
}

}  // namespace synth::analysis
