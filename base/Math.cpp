#include "base/Math.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace synth::math {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// The whole number nearest to x, for |x| < 2^51: adding 1.5 * 2^52 leaves no bits for a fraction.
double nearest(double x) { return (x + 0x1.8p52) - 0x1.8p52; }

// e^y for |y| <= ln2 / 2, by its Taylor series to y^13 (remainder below 2e-17).
double expSmall(double y) {
  double p = 1.0 / 6227020800.0;
  constexpr double inverse[] = {
      1.0 / 479001600, 1.0 / 39916800, 1.0 / 3628800, 1.0 / 362880, 1.0 / 40320, 1.0 / 5040, 1.0 / 720,
      1.0 / 120,       1.0 / 24,       1.0 / 6,       1.0 / 2,      1.0,         1.0};
  for (double c : inverse) p = p * y + c;
  return p;
}

// sin and cos on |x| <= pi / 4, by Taylor series to x^17 and x^16.
double sinSmall(double x) {
  const double z = x * x;
  double p = 1.0 / 355687428096000.0;
  constexpr double c[] = {-1.0 / 1307674368000.0,
                          1.0 / 6227020800.0,
                          -1.0 / 39916800,
                          1.0 / 362880,
                          -1.0 / 5040,
                          1.0 / 120,
                          -1.0 / 6,
                          1.0};
  for (double k : c) p = p * z + k;
  return x * p;
}

double cosSmall(double x) {
  const double z = x * x;
  double p = 1.0 / 20922789888000.0;
  constexpr double c[] = {-1.0 / 87178291200.0, 1.0 / 479001600, -1.0 / 3628800, 1.0 / 40320,
                          -1.0 / 720,           1.0 / 24,        -1.0 / 2,       1.0};
  for (double k : c) p = p * z + k;
  return p;
}

constexpr double largestAngle = 1e9;

struct Reduced {
  double rest;
  unsigned quadrant;
};

// x = quadrant * pi / 2 + rest, with pi / 2 in two parts (Cody and Waite, 1980).
Reduced reduced(double x) {
  const double n = nearest(x * (2.0 / pi));
  const double rest = (x - n * 1.57079632673412561417) - n * 6.07710050650619224932e-11;
  return {rest, unsigned(std::int64_t(n)) & 3u};
}

}  // namespace

double exp2(double x) {
  if (!(x < 1024)) return x >= 1024 ? infinity : notANumber;
  if (x < -1022) return 0;
  const double n = nearest(x);
  // In two factors at the top: 2^1024 is no double although 2^1023.9 is.
  const double last = n > 1023 ? 2 : 1;
  const double power = std::bit_cast<double>(std::uint64_t(std::int64_t(n) + (n > 1023 ? 1022 : 1023)) << 52);
  return expSmall((x - n) * ln2) * power * last;
}

double log2(double x) {
  if (!(x > 0)) return x == 0 ? -infinity : notANumber;
  if (x == infinity) return infinity;
  int shift = 0;
  if (x < std::numeric_limits<double>::min()) {
    x *= 0x1p54;
    shift = -54;
  }
  std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
  int exponent = int(bits >> 52) - 1023;
  double m = std::bit_cast<double>((bits & 0xFFFFFFFFFFFFFull) | 0x3FF0000000000000ull);
  if (m > 1.41421356237309504880) {
    m *= 0.5;
    exponent++;
  }
  // log(m) = 2 atanh((m - 1) / (m + 1)); the argument is at most 0.1716.
  const double s = (m - 1) / (m + 1), z = s * s;
  double p = 1.0 / 21;
  for (int k = 19; k >= 1; k -= 2) p = p * z + 1.0 / k;
  return double(exponent + shift) + 2 * s * p * (1 / ln2);
}

double exp(double x) {
  if (!(x > -700 && x < 709)) return x >= 709 ? infinity : x <= -700 ? 0 : notANumber;
  const double n = nearest(x / ln2);
  const double power = std::bit_cast<double>(std::uint64_t(std::int64_t(n) + 1023) << 52);
  const double rest = (x - n * 0.693147180369123816490) - n * 1.90821492927058770002e-10;
  return expSmall(rest) * power;
}

double log(double x) { return log2(x) * ln2; }
double log10(double x) { return log2(x) * 0.30102999566398119521; }

double pow(double x, double y) {
  if (x == 0) return y > 0 ? 0 : y == 0 ? 1 : infinity;
  return exp2(y * log2(x));
}

double tanh(double x) {
  if (std::fabs(x) > 20) return x > 0 ? 1 : -1;
  if (std::fabs(x) < 1e-5) return x;
  const double e = exp(2 * x);
  return (e - 1) / (e + 1);
}

double sin(double x) {
  if (!(std::fabs(x) < largestAngle)) return notANumber;
  const Reduced r = reduced(x);
  const double v = r.quadrant & 1 ? cosSmall(r.rest) : sinSmall(r.rest);
  return r.quadrant & 2 ? -v : v;
}

double cos(double x) {
  if (!(std::fabs(x) < largestAngle)) return notANumber;
  const Reduced r = reduced(x);
  const double v = r.quadrant & 1 ? sinSmall(r.rest) : cosSmall(r.rest);
  return (r.quadrant + 1) & 2 ? -v : v;
}

double tan(double x) {
  if (!(std::fabs(x) < largestAngle)) return notANumber;
  const Reduced r = reduced(x);
  const double s = sinSmall(r.rest), c = cosSmall(r.rest);
  return r.quadrant & 1 ? -c / s : s / c;
}

namespace {

// For 0 <= x <= 1: two half-angle steps leave at most tan(pi / 16) for the series.
double atanOf(double x) {
  for (int step = 0; step < 2; step++) x = x / (1 + std::sqrt(1 + x * x));
  const double square = x * x;
  double series = 0;
  for (int n = 25; n >= 1; n -= 2) series = 1.0 / n - square * series;
  return 4 * x * series;
}

}  // namespace

double atan2(double y, double x) {
  const double ax = std::fabs(x), ay = std::fabs(y);
  if (std::isnan(x) || std::isnan(y)) return NAN;
  if (ax == 0 && ay == 0) return 0;
  double angle = ax >= ay ? atanOf(ay / ax) : pi / 2 - atanOf(ax / ay);
  if (x < 0) angle = pi - angle;
  return y < 0 ? -angle : angle;
}

}  // namespace synth::math
