#include "core/sounds/MacroTravel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/Math.h"
#include "base/Text.h"
#include "core/params/Perceptual.h"

namespace synth::macros {

double travel(f32 amount, f32 amountDown, f32 from, f32 to, f32 value) {
  const f32 a = std::fabs(value);
  if (!(a > from)) return 0;
  const double share = a >= to ? 1 : (double(a) - from) / (double(to) - from);
  return share * (value < 0 ? amountDown : amount);
}

double offsetOf(const Track& track, u16 param, int pad, const f32 (&values)[limits::macros]) {
  double sum = 0;
  for (int m = 0; m < std::min<int>(track.macroCount, limits::macros); m++)
    for (int i = 0; i < std::min<int>(track.macros[m].targetCount, limits::macroTargets); i++) {
      const MacroTarget& t = track.macros[m].targets[i];
      if (t.param == param && t.pad == pad)
        sum += travel(t.amount, t.amount_down, t.window_from, t.window_to, values[m]);
    }
  return sum;
}

double offsetOf(const Track& track, u16 param, int pad) {
  f32 values[limits::macros] = {};
  for (int m = 0; m < limits::macros; m++) values[m] = track.macros[m].value;
  return offsetOf(track, param, pad, values);
}

f32 resulting(const Project& project, int track, const param::Info& info, int pad) {
  if (info.scope == param::ScopeProject) return info.get(project);
  const Track& t = project.tracks[std::clamp(track, 0, limits::tracks - 1)];
  const int at = info.scope == param::ScopePad ? std::clamp(pad, 0, limits::pads - 1) : 0;
  return perceptual::offset(info, info.get(t, at), offsetOf(t, info.id, at));
}

double amountFor(const param::Info& info, f32 base, double current, f32 wanted) {
  if (!std::isfinite(base) || !std::isfinite(current) || !std::isfinite(wanted) || !(info.max > info.min))
    return 0;
  wanted = std::clamp(wanted, info.min, info.max);
  const f32 now = perceptual::offset(info, base, current);
  if (now == wanted || std::nextafter(now, wanted) == wanted) return 0;
  const perceptual::Unit unit = perceptual::unitOf(info);
  const double lo = perceptual::toPerc(unit, info.min), hi = perceptual::toPerc(unit, info.max);
  const double b = perceptual::toPerc(unit, base), span = 0.01 * (hi - lo);
  double below = 2 * (lo - b) - span, above = 2 * (hi - b) + span, middle = 0;
  for (int round = 0; round < 60; round++) {
    middle = (below + above) / 2;
    (perceptual::offset(info, base, middle) < wanted ? below : above) = middle;
  }
  const double amount = middle - current;
  return std::fabs(amount) < 1e-5 ? 0 : amount;
}

std::string amountText(const param::Info& info, f32 amount) {
  if (perceptual::unitOf(info) == perceptual::Time) {
    // The shortest ratio whose logarithm is the amount; amounts next to 0, which no ratio hits, stay numbers.
    const double ratio = math::exp2(double(amount));
    for (int digits = 1; digits <= 17 && std::isfinite(ratio); digits++) {
      char buffer[32];
      std::snprintf(buffer, sizeof buffer, "%.*g", digits, ratio);
      const double printed = std::strtod(buffer, nullptr);
      if (const f32 back = f32(math::log2(printed)); std::memcmp(&back, &amount, sizeof back) == 0)
        return "×" + text::number(printed, false);
    }
  }
  return (amount > 0 ? "+" : "") + text::number(amount, true, 1e7);
}

std::string unitName(const param::Info& info) {
  switch (perceptual::unitOf(info)) {
    case perceptual::Octave: return "oct";
    case perceptual::Decibel:
    case perceptual::Level: return "dB";
    case perceptual::Time: return "×";
    default: return std::strcmp(info.unit, "%") == 0 ? "" : info.unit;
  }
}

}  // namespace synth::macros
