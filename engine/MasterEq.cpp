#include "engine/MasterEq.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"

namespace synth {
namespace {

constexpr int rounds = 4, fadeLength = 1024;
constexpr double mostGain = 24, mostInner = 40, leastProbe = 0.5;
constexpr double halfWidth = 0.5891751034759535;  // ln 2 / 2 times 1.7 octaves

double centre(int band) { return 1000 * math::exp2(double(band - 5)); }

struct Band {
  double b0, b1, b2, a1, a2;
};

Band peak(double hz, double db, double rate) {
  const double w = 2 * math::pi * hz / rate, s = math::sin(w),
               A = math::exp2(db * 0.0830482023721841);  // 10^(p/40)
  const double x = halfWidth * w / s, alpha = s * (math::exp(x) - math::exp(-x)) / 2, a0 = 1 + alpha / A;
  return {(1 + alpha * A) / a0, -2 * math::cos(w) / a0, (1 - alpha * A) / a0, -2 * math::cos(w) / a0,
          (1 - alpha / A) / a0};
}

// |H| in dB at the frequency whose cosine and double-angle cosine are given.
double magnitude(const Band& f, double c1, double c2) {
  const double up =
      f.b0 * f.b0 + f.b1 * f.b1 + f.b2 * f.b2 + 2 * (f.b0 * f.b1 + f.b1 * f.b2) * c1 + 2 * f.b0 * f.b2 * c2;
  const double down = 1 + f.a1 * f.a1 + f.a2 * f.a2 + 2 * (f.a1 + f.a1 * f.a2) * c1 + 2 * f.a2 * c2;
  return 10 * math::log10(up / down);
}

using Matrix = double[masterBands][masterBands + 1];

// Gaussian elimination with partial pivoting; false for a matrix that has no solution.
bool solve(Matrix& m, double (&x)[masterBands]) {
  for (int k = 0; k < masterBands; k++) {
    int pivot = k;
    for (int r = k + 1; r < masterBands; r++)
      if (std::fabs(m[r][k]) > std::fabs(m[pivot][k])) pivot = r;
    if (!(std::fabs(m[pivot][k]) > 1e-12)) return false;
    std::swap(m[k], m[pivot]);
    for (int r = k + 1; r < masterBands; r++) {
      const double f = m[r][k] / m[k][k];
      for (int c = k; c <= masterBands; c++) m[r][c] -= f * m[k][c];
    }
  }
  for (int k = masterBands - 1; k >= 0; k--) {
    double sum = m[k][masterBands];
    for (int c = k + 1; c < masterBands; c++) sum -= m[k][c] * x[c];
    x[k] = sum / m[k][k];
    if (!std::isfinite(x[k])) return false;
  }
  return true;
}

}  // namespace

double masterBandHz(int band, double rate) { return std::min(centre(band), 0.45 * rate); }

MasterEqDesign designMasterEq(const float (&gains)[masterBands], double rate) {
  MasterEqDesign d;
  double wanted[masterBands], c1[masterBands], c2[masterBands];
  for (int k = 0; k < masterBands; k++) {
    wanted[k] = std::isfinite(gains[k]) ? std::clamp(double(gains[k]), -mostGain, mostGain) : 0;
    d.flat &= wanted[k] == 0;
    d.gain[k] = wanted[k];
    // Seen where the filters stand: at low rates the upper centres lie beyond what can be heard.
    const double w = 2 * math::pi * masterBandHz(k, rate) / rate;
    c1[k] = math::cos(w);
    c2[k] = math::cos(2 * w);
  }
  if (d.flat) return d;
  for (int round = 0; round < rounds; round++) {
    Matrix m;
    for (int j = 0; j < masterBands; j++) {
      const double g = d.gain[j], p = std::fabs(g) >= leastProbe ? g : g < 0 ? -leastProbe : leastProbe;
      const Band f = peak(masterBandHz(j, rate), p, rate);
      for (int k = 0; k < masterBands; k++) m[k][j] = magnitude(f, c1[k], c2[k]) / p;
    }
    for (int k = 0; k < masterBands; k++) m[k][masterBands] = wanted[k];
    double x[masterBands];
    if (!solve(m, x)) break;
    for (int k = 0; k < masterBands; k++) d.gain[k] = std::clamp(x[k], -mostInner, mostInner);
  }
  for (int k = 0; k < masterBands; k++) {
    const Band f = peak(masterBandHz(k, rate), d.gain[k], rate);
    const double values[5] = {f.b0, f.b1, f.b2, f.a1, f.a2};
    std::copy(values, values + 5, d.band[k]);
  }
  return d;
}

void MasterEq::install(const MasterEqDesign& design, bool reset) {
  if (!reset && target_.flat && design.flat && !active_) return;
  target_ = design;
  if (reset) {
    std::copy(&design.band[0][0], &design.band[0][0] + masterBands * 5, &now_[0][0]);
    std::fill(z1_, z1_ + masterBands, d2{});
    std::fill(z2_, z2_ + masterBands, d2{});
    active_ = !design.flat;
    fading_ = 0;
    return;
  }
  if (!active_) {
    const MasterEqDesign nothing;
    std::copy(&nothing.band[0][0], &nothing.band[0][0] + masterBands * 5, &now_[0][0]);
  }
  for (int k = 0; k < masterBands; k++)
    for (int c = 0; c < 5; c++) step_[k][c] = (design.band[k][c] - now_[k][c]) / fadeLength;
  active_ = true;
  fading_ = fadeLength;
}

void MasterEq::process(dsp::Block& left, dsp::Block& right, int n, bool tick) {
  if (!active_) return;
  if (tick)
    for (auto* z : {z1_, z2_})
      for (int k = 0; k < masterBands; k++)
        for (int ch = 0; ch < 2; ch++)
          if (std::fabs(z[k][ch]) < 1e-30) z[k][ch] = 0;
  for (int i = 0; i < n; i++) {
    if (fading_ > 0) {
      fading_--;
      for (int k = 0; k < masterBands; k++)
        for (int c = 0; c < 5; c++) now_[k][c] = fading_ ? now_[k][c] + step_[k][c] : target_.band[k][c];
      if (fading_ == 0 && target_.flat) {
        active_ = false;
        std::fill(z1_, z1_ + masterBands, d2{});
        std::fill(z2_, z2_ + masterBands, d2{});
        return;
      }
    }
    d2 x = {double(left[i]), double(right[i])};
    for (int k = 0; k < masterBands; k++) {
      const double* f = now_[k];
      const d2 y = f[0] * x + z1_[k];
      z1_[k] = f[1] * x - f[3] * y + z2_[k];
      z2_[k] = f[2] * x - f[4] * y;
      x = y;
    }
    left[i] = float(x[0]);
    right[i] = float(x[1]);
  }
}

}  // namespace synth
