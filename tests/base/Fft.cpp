// Transforms against the defining sum, against energy and against signals whose spectra are known.
#include "base/Fft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <thread>

#include "base/Math.h"

namespace synth {
namespace {

void fillNoise(Fft::Work& work, unsigned seed) {
  std::mt19937 random(seed);
  for (std::vector<double>* part : {&work.re, &work.im})
    for (double& x : *part) x = double(random()) / 4294967296.0 - 0.5;
}

TEST(Fft, IsTheDefiningSumForSmallSizes) {
  for (int n = 2; n <= 64; n *= 2) {
    const Fft fft(n);
    Fft::Work work(n);
    fillNoise(work, unsigned(n));
    const Fft::Work input = work;
    fft.forward(work);
    for (int k = 0; k < n; ++k) {
      double re = 0, im = 0;
      for (int t = 0; t < n; ++t) {
        const double angle = -2.0 * math::pi * ((t * k) % n) / n;
        re += input.re[t] * std::cos(angle) - input.im[t] * std::sin(angle);
        im += input.re[t] * std::sin(angle) + input.im[t] * std::cos(angle);
      }
      EXPECT_NEAR(work.re[k], re, 1e-13) << n << " bin " << k;
      EXPECT_NEAR(work.im[k], im, 1e-13) << n << " bin " << k;
    }
  }
}

TEST(Fft, KeepsEnergyAndComesBackForEverySize) {
  for (int n = 2; n <= 131072; n *= 2) {
    const Fft fft(n);
    Fft::Work work(n);
    fillNoise(work, 7);
    const Fft::Work input = work;
    fft.forward(work);
    double before = 0, after = 0, worst = 0;
    for (int k = 0; k < n; ++k) {
      before += input.re[k] * input.re[k] + input.im[k] * input.im[k];
      after += work.re[k] * work.re[k] + work.im[k] * work.im[k];
    }
    EXPECT_NEAR(after / n / before, 1.0, 1e-13) << n;
    fft.inverse(work);
    for (int k = 0; k < n; ++k)
      worst =
          std::max({worst, std::abs(work.re[k] / n - input.re[k]), std::abs(work.im[k] / n - input.im[k])});
    EXPECT_LT(worst, 2e-15) << n;
  }
}

TEST(Fft, PutsSinesOfLargeSizesIntoTheirBins) {
  for (int n : {2048, 4096, 65536}) {
    const Fft fft(n);
    for (int bin : {1, 3, n / 4, n / 2 - 1, n - 5}) {
      Fft::Work work(n);
      for (int t = 0; t < n; ++t) {
        const double angle = 2.0 * math::pi * double((long(t) * bin) % n) / n;
        work.re[t] = std::cos(angle);
        work.im[t] = std::sin(angle);
      }
      fft.forward(work);
      double rest = 0;
      for (int k = 0; k < n; ++k)
        if (k != bin) rest = std::max(rest, std::hypot(work.re[k], work.im[k]));
      EXPECT_NEAR(work.re[bin], n, 1e-9 * n);
      EXPECT_NEAR(work.im[bin], 0, 1e-9 * n);
      EXPECT_LT(rest, 1e-11 * n) << n << " bin " << bin;
    }
  }
}

TEST(Fft, SeparatesTwoRealSignals) {
  for (int n : {2, 4, 8, 2048}) {
    const Fft fft(n);
    Fft::Work pair(n);
    fillNoise(pair, 11);
    Fft::Work alone[2] = {Fft::Work(n), Fft::Work(n)};
    alone[0].re = pair.re;
    alone[1].re = pair.im;
    std::vector<double> power[2] = {std::vector<double>(n / 2 + 1), std::vector<double>(n / 2 + 1)};
    fft.powers(pair, power[0].data(), power[1].data());
    for (int s = 0; s < 2; ++s) {
      fft.forward(alone[s]);
      for (int k = 0; k <= n / 2; ++k)
        EXPECT_NEAR(power[s][k], alone[s].re[k] * alone[s].re[k] + alone[s].im[k] * alone[s].im[k],
                    1e-11 * n);
    }
  }
}

TEST(Fft, OneServesSeveralThreads) {
  const Fft fft(1024);
  Fft::Work works[3] = {Fft::Work(1024), Fft::Work(1024), Fft::Work(1024)};
  for (Fft::Work& work : works) fillNoise(work, 5);
  const auto often = [&](Fft::Work& work) {
    for (int i = 0; i < 101; ++i) {
      fft.forward(work);
      for (double& x : work.re) x /= 32.0;
      for (double& x : work.im) x /= 32.0;
    }
  };
  std::thread first([&] { often(works[0]); }), second([&] { often(works[1]); });
  often(works[2]);
  first.join();
  second.join();
  EXPECT_EQ(works[0].re, works[2].re);
  EXPECT_EQ(works[1].im, works[2].im);
}

TEST(Fft, RefusesOtherSizes) {
  for (int n : {-8, 0, 1, 3, 48, 2047}) EXPECT_THROW(Fft{n}, std::invalid_argument) << n;
}

}  // namespace
}  // namespace synth
