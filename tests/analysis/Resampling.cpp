// Changing rates: the interpolation formula itself, what it does to tones, lengths and ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "analysis/reading/Resample.h"

namespace synth::analysis {
namespace {

constexpr double pi = 3.14159265358979323846;

std::vector<float> noise(size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<float> x(n);
  for (float& v : x) v = float(double(random()) / 2147483648.0 - 1);
  return x;
}

std::vector<float> sine(double hz, double rate, size_t n) {
  std::vector<float> x(n);
  for (size_t i = 0; i < n; i++) x[i] = float(0.5 * std::sin(2 * pi * hz * double(i) / rate));
  return x;
}

// One output sample by the formula, term by term.
double direct(const std::vector<float>& x, double fromRate, double toRate, size_t i) {
  const double c = std::min(toRate / fromRate, 1.0), h = 24 / c;
  const double t = double(i) * fromRate / toRate;
  const long first = std::max(0L, long(t - h)), last = std::min(long(x.size()) - 1, long(t + h));
  double sum = 0, weights = 0;
  for (long j = first; j <= last; j++) {
    const double d = double(j) - t, a = pi * c * 0.94 * d;
    const double w = (std::fabs(a) < 1e-9 ? 1 : std::sin(a) / a) *
                     (0.42 + 0.5 * std::cos(pi * d / h) + 0.08 * std::cos(2 * pi * d / h));
    weights += w;
    sum += w * double(x[size_t(j)]);
  }
  return weights > 0 ? sum / weights : 0;
}

TEST(Resampling, EveryRateFollowsTheFormula) {
  const std::pair<double, double> rates[] = {
      {44100, 48000},  {22050, 48000}, {32000, 48000},   {88200, 48000},    {96000, 48000},
      {192000, 48000}, {44099, 48000}, {44100.5, 48000}, {12345.67, 48000}, {1000, 48000},
      {655350, 48000}, {48000, 44100}, {48000, 1000},    {48000, 7000.25},  {48000, 47999.999}};
  for (const auto& [from, to] : rates)
    for (const size_t n : {1, 2, 30, 700, 5000}) {
      const std::vector<float> x = noise(n, unsigned(n)), y = resample(x, from, to);
      ASSERT_EQ(y.size(), size_t(double(n) * to / from)) << from << " to " << to;
      const size_t step = 1 + y.size() / 3000;
      for (size_t i = 0; i < y.size(); i += step)
        ASSERT_NEAR(y[i], direct(x, from, to, i), 1e-6) << from << " to " << to << ", " << i << " of " << n;
    }
}

TEST(Resampling, PiecesGiveWhatTheWholeGives) {
  std::mt19937 random(7);
  for (const double from : {44100.0, 48000.0, 96000.0, 44100.25, 2e6}) {
    const std::vector<float> left = noise(300000, 1), right = noise(300000, 2);
    Resampler resampler(from, 48000, 2);
    for (size_t at = 0; at < left.size();) {
      const size_t n = std::min<size_t>(left.size() - at, random() % 20000);
      const float* const piece[] = {left.data() + at, right.data() + at};
      resampler.push(piece, n);
      at += n;
    }
    resampler.finish();
    EXPECT_EQ(resampler.take(0), resample(left, from, 48000)) << from;
    EXPECT_EQ(resampler.take(1), resample(right, from, 48000)) << from;
  }
}

// A tone's gain and what else is there, both in dB, away from the ends.
struct Heard {
  double gain, rest;
};
Heard hear(const std::vector<float>& y, double hz, double rate) {
  double s = 0, c = 0;
  const size_t from = 1000, n = 24000;
  auto phase = [&](size_t i) { return 2 * pi * hz * double(i) / rate; };
  for (size_t i = from; i < from + n; i++) {
    s += 2 * double(y[i]) * std::sin(phase(i)) / double(n);
    c += 2 * double(y[i]) * std::cos(phase(i)) / double(n);
  }
  double rest = 0;
  for (size_t i = from; i < from + n; i++) {
    const double r = double(y[i]) - s * std::sin(phase(i)) - c * std::cos(phase(i));
    rest += 2 * r * r / double(n);
  }
  return {20 * std::log10(std::hypot(s, c) / 0.5), 10 * std::log10(rest / 0.25)};
}

TEST(Resampling, TonesPassAndImagesDoNot) {
  const std::tuple<double, double, double> kept[] = {
      {44100, 1000, -90}, {44100, 15000, -85}, {44100, 18000, -80},  {22050, 5000, -80},
      {96000, 1000, -90}, {96000, 18000, -85}, {192000, 10000, -90}, {32000, 12000, -80}};
  for (const auto& [rate, hz, floor] : kept) {
    const Heard heard = hear(resample(sine(hz, rate, size_t(rate)), rate, 48000), hz, 48000);
    EXPECT_NEAR(heard.gain, 0, 0.1) << hz << " Hz at " << rate;
    EXPECT_LT(heard.rest, floor) << hz << " Hz at " << rate;
  }
  // What the lower rate cannot hold is gone.
  for (const auto& [rate, hz] : {std::pair{96000.0, 26500.0}, {96000.0, 30000.0}, {192000.0, 70000.0}}) {
    const Heard heard = hear(resample(sine(hz, rate, size_t(rate)), rate, 48000), 1000, 48000);
    EXPECT_LT(std::max(heard.gain, heard.rest), -75) << hz << " Hz at " << rate;
  }
}

TEST(Resampling, EndsLengthsAndExtremes) {
  const std::vector<float> x = noise(500, 3);
  EXPECT_EQ(resample(x, 48000, 48000), x);
  EXPECT_TRUE(resample({}, 44100, 48000).empty());
  // A steady level stays one up to both ends.
  for (const double rate : {44100.0, 96000.0, 1000.0})
    for (const float y : resample(std::vector<float>(400, 0.75f), rate, 48000)) ASSERT_NEAR(y, 0.75, 1e-6);
  // Exact where a product of doubles would fall short of a whole number.
  for (size_t seconds = 1; seconds < 60; seconds += 7) {
    EXPECT_EQ(resample(std::vector<float>(1000 * seconds), 1000, 48000).size(), 48000 * seconds);
    EXPECT_EQ(resample(std::vector<float>(441 * seconds), 44100, 48000).size(), 480 * seconds);
    EXPECT_EQ(resample(std::vector<float>(441 * seconds - 1), 44100, 48000).size(), 480 * seconds - 2);
  }
  const std::vector<float> dense = resample(std::vector<float>(400000, 0.5f), 4294967295.0, 48000);
  ASSERT_EQ(dense.size(), 4u);
  for (const float y : dense) EXPECT_NEAR(y, 0.5, 1e-6);
}

}  // namespace
}  // namespace synth::analysis
