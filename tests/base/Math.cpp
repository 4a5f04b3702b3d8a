// What breaks if our own elementary functions stray from the true ones, or stumble at their ends.
#include "base/Math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/RandomProject.h"

namespace synth {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// How far apart, in units of the last place of the true value.
double ulps(double got, double want) {
  if (got == want) return 0;
  const double size = std::fabs(want);
  return std::fabs(got - want) / (std::nextafter(size, infinity) - size);
}

template <class F, class G>
void expectNear(const char* name, F ours, G theirs, double lo, double hi, double most) {
  test::Random r(3);
  double worst = 0, at = 0;
  for (int i = 0; i < 100000; i++) {
    const double x = lo + (hi - lo) * (r.next() / 4294967296.0 + r.next() / 18446744073709551616.0);
    const double off = ulps(ours(x), theirs(x));
    if (!(off <= worst)) worst = off, at = x;
  }
  EXPECT_LE(worst, most) << name << " at " << at;
}

#define NEAR(f, lo, hi, most) \
  expectNear(                 \
      #f, [](double x) { return math::f(x); }, [](double x) { return std::f(x); }, lo, hi, most)

TEST(Math, StaysWithinAFewUnitsInTheLastPlace) {
  NEAR(exp2, -30, 30, 4);
  NEAR(exp2, -1020, 1020, 4);
  NEAR(exp, -20, 20, 4);
  NEAR(exp, -690, 700, 4);
  NEAR(log2, 1e-9, 2, 4);
  NEAR(log2, 0.9, 1.1, 4);
  NEAR(log2, 1, 1e9, 4);
  NEAR(log, 1e-9, 100, 4);
  NEAR(log10, 1e-9, 1e9, 4);
  NEAR(sin, -10, 10, 4);
  NEAR(cos, -10, 10, 4);
  NEAR(tan, -1.5, 1.5, 6);
  NEAR(sin, -1e6, 1e6, 8);
  NEAR(cos, -1e6, 1e6, 8);
  NEAR(tanh, 0.1, 25, 8);
}

TEST(Math, FindsAngles) {
  for (int i = -180; i <= 180; i++) {
    const double angle = i * math::pi / 180;
    for (double r : {1e-9, 1.0, 3e7})
      EXPECT_NEAR(math::atan2(r * std::sin(angle), r * std::cos(angle)),
                  std::atan2(r * std::sin(angle), r * std::cos(angle)), 2e-15)
          << i;
  }
  EXPECT_EQ(math::atan2(0, 0), 0);
  EXPECT_EQ(math::atan2(0, -1), math::pi);
  EXPECT_TRUE(std::isnan(math::atan2(NAN, 1)));
}

TEST(Math, RaisesPowersAsWellAsItsLogarithmAllows) {
  test::Random r(5);
  for (int i = 0; i < 50000; i++) {
    const double x = std::exp(r.unit() * 14 - 7), y = r.unit() * 8 - 4;
    ASSERT_LE(ulps(math::pow(x, y), std::pow(x, y)), 4 + 2 * std::fabs(y * std::log2(x))) << x << " " << y;
  }
}

TEST(Math, IsRightAsAFloatEverywhere) {
  test::Random r(9);
  auto off = [](float got, double want) { return std::fabs(got - want) / std::max(std::fabs(want), 1e-30); };
  for (int i = 0; i < 50000; i++) {
    const double small = std::ldexp(r.unit() - 0.5, -r.below(40));
    for (double v : {double(r.unit() * 40 - 20), small}) {
      ASSERT_LE(off(float(math::exp(v)), std::exp(v)), 6e-8) << v;
      ASSERT_LE(off(float(math::sin(v)), std::sin(v)), 6e-8) << v;
      ASSERT_LE(off(float(math::tanh(v)), std::tanh(v)), 6e-8) << v;
    }
  }
}

TEST(Math, IsExactWhereTheAnswerIs) {
  for (int n = -1022; n < 1024; n++) {
    ASSERT_EQ(math::exp2(double(n)), std::ldexp(1.0, n)) << n;
    ASSERT_EQ(math::log2(std::ldexp(1.0, n)), n);
  }
  EXPECT_EQ(math::log2(0x1p-1070), -1070);
  EXPECT_EQ(math::pow(2.0, 10.0), 1024);
  EXPECT_EQ(math::sin(0.0), 0);
  EXPECT_EQ(math::cos(0.0), 1);
  EXPECT_EQ(math::tan(0.0), 0);
  EXPECT_EQ(math::exp(0.0), 1);
  EXPECT_EQ(math::tanh(0.0), 0);
  EXPECT_EQ(math::fromDb(0), 1);
  EXPECT_LE(ulps(math::fromDb(-6), std::pow(10.0, -0.3)), 4);
  EXPECT_NEAR(math::sin(math::pi), std::sin(math::pi), 1e-25);
}

TEST(Math, KeepsItsWordAtTheEnds) {
  EXPECT_EQ(math::exp2(-1022.5), 0);
  EXPECT_EQ(math::exp2(-infinity), 0);
  EXPECT_EQ(math::exp2(1024.0), infinity);
  for (double x : {1023.25, 1023.5, 1023.75, 1023.9999}) EXPECT_LE(ulps(math::exp2(x), std::exp2(x)), 4) << x;
  EXPECT_EQ(math::log2(0.0), -infinity);
  EXPECT_EQ(math::log2(infinity), infinity);
  EXPECT_EQ(math::pow(0.0, 2.0), 0);
  EXPECT_EQ(math::pow(0.0, 0.0), 1);
  EXPECT_EQ(math::tanh(infinity), 1);
  EXPECT_EQ(math::tanh(-infinity), -1);
  const double none = std::nan("");
  for (double v : {math::exp2(none), math::log2(none), math::log2(-1.0), math::exp(none), math::tanh(none),
                   math::sin(none), math::sin(1e9), math::cos(-1e9), math::tan(infinity)})
    EXPECT_TRUE(std::isnan(v));
}

}  // namespace
}  // namespace synth
