#include "core/params/Perceptual.h"

#include <algorithm>
#include <cstring>

#include "base/Math.h"

namespace synth::perceptual {
namespace {

// 10^(-24/20) and its complement to 1: they map 0..1 on -24 dB..0 dB.
constexpr double levelFloor = 0.063095726, levelSpan = 0.93690425;
constexpr double timeFloor = 0.005;
constexpr double kneeShare = 0.15;

double fromPerc(Unit unit, double y) {
  switch (unit) {
    case Time: return std::max(math::exp2(y) - timeFloor, 0.0);
    case Level: return std::max((math::fromDb(y) - levelFloor) / levelSpan, 0.0);
    case Octave: return math::exp2(y);
    default: return y;
  }
}

}  // namespace

Unit unitOf(const param::Info& info) {
  for (const char* key : {"lfo_depth", "lfo2_depth", "pad_level"})
    if (std::strcmp(info.key, key) == 0) return Level;
  if (std::strcmp(info.unit, "s") == 0 && info.min >= 0) return Time;
  if (info.curve == param::Logarithmic && info.min > 0 && std::strcmp(info.unit, "Hz") == 0) return Octave;
  return std::strcmp(info.unit, "dB") == 0 ? Decibel : Own;
}

double toPerc(Unit unit, double value) {
  switch (unit) {
    case Time: return math::log2(std::max(value, 0.0) + timeFloor);
    case Level: return 20 * math::log10(std::max(value, 0.0) * levelSpan + levelFloor);
    case Octave: return math::log2(std::max(value, 1e-9));
    default: return value;
  }
}

f32 offset(const param::Info& info, f32 value, double amount) {
  if (amount == 0) return value;
  const Unit unit = unitOf(info);
  const double a = toPerc(unit, info.min), b = toPerc(unit, info.max), x = toPerc(unit, value);
  double y = x + amount;
  if (y >= x) {
    const double k = std::max(x, b - (b - a) * kneeShare), r = b - k;
    if (y > k) y = r > 0 ? k + r * math::tanh((y - k) / r) : std::max(x, std::min(y, k));
  } else {
    const double k = std::min(x, a + (b - a) * kneeShare), r = k - a;
    if (y < k) y = r > 0 ? k - r * math::tanh((k - y) / r) : std::min(x, std::max(y, k));
  }
  if (y == x) return value;
  return std::clamp(f32(fromPerc(unit, y)), info.min, info.max);
}

}  // namespace synth::perceptual
