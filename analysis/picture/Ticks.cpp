#include "analysis/picture/Ticks.h"

#include <algorithm>
#include <cmath>

#include "analysis/picture/PixelFont.h"
#include "base/Text.h"

namespace synth::analysis {
namespace {

constexpr double closestLines = 7, closestSeconds = 14, labelGap = 12;
// Beats bear numbers of their own where bars lie farther apart than this.
constexpr double beatLabelPixels = 56;

double labelPixels(const std::string& label) { return font::textWidth(label) + labelGap; }

long floored(long a, long b) { return a / b - (a % b < 0); }

std::string decimal(double value, int decimals) { return text::print("%.*f", decimals, value); }

}  // namespace

std::vector<Tick> barTicks(const Axes& axes, const BarLines& lines) {
  const double stepS = 15 / lines.bpm, stepPixels = stepS / axes.columnS();
  const auto bar = [](long step) { return floored(step, 16) + 1; };
  const auto firstStep = [&](double seconds) {
    return std::ceil((seconds - lines.downbeatS) / stepS - 1e-6);
  };
  const double first = firstStep(axes.fromS),
               last = std::ceil((axes.toS - lines.downbeatS) / stepS - 1e-6) - 1;
  // A tempo whose bars no picture could number.
  if (!(std::abs(first) < 1e12 && std::abs(last) < 1e12)) return {};

  long unit = 1;
  while (double(unit) * stepPixels < closestLines) unit *= unit < 16 ? 4 : 2;
  const double widest =
      std::max(labelPixels(std::to_string(bar(long(first)))), labelPixels(std::to_string(bar(long(last)))));
  long labelled = 16;
  while (double(labelled) * stepPixels < widest) labelled *= 2;
  const bool beatsToo = 4 * stepPixels >= beatLabelPixels;

  std::vector<Tick> ticks;
  for (long step = -floored(-long(first), unit) * unit; step <= long(last); step += unit) {
    Tick tick{lines.downbeatS + double(step) * stepS, TickWeight::Step, ""};
    if (step % 16 == 0)
      tick.weight = TickWeight::Bar;
    else if (step % 4 == 0)
      tick.weight = TickWeight::Beat;
    if (step % labelled == 0)
      tick.label = std::to_string(bar(step));
    else if (beatsToo && step % 4 == 0)
      tick.label = std::to_string(bar(step)) + "." + std::to_string((step - 16 * (bar(step) - 1)) / 4 + 1);
    ticks.push_back(std::move(tick));
  }
  return ticks;
}

std::vector<Tick> secondTicks(const Axes& axes) {
  // Each divides one of the later ones evenly, so that fine lines fall on coarse ones.
  struct Interval {
    double perSecond;  // how many in a second, or a second's part of one
    int decimals;
  };
  static constexpr Interval intervals[] = {
      {1000, 3}, {500, 3},      {200, 3},      {100, 2},       {50, 2},        {20, 2},
      {10, 1},   {5, 1},        {2, 1},        {1, 0},         {0.5, 0},       {0.2, 0},
      {0.1, 0},  {1 / 30.0, 0}, {1 / 60.0, 0}, {1 / 300.0, 0}, {1 / 600.0, 0}, {1 / 3600.0, 0}};
  const auto pixels = [&](const Interval& i) { return 1 / i.perSecond / axes.columnS(); };
  const auto spacious = [&](const Interval& i) {
    return pixels(i) >= labelPixels(decimal(axes.toS, i.decimals)) + 8;
  };
  const Interval* labelled = std::find_if(std::begin(intervals), std::end(intervals), spacious);
  if (labelled == std::end(intervals)) labelled--;
  const Interval* fine = labelled;
  for (const Interval* i = labelled; i-- > intervals && pixels(*i) >= closestSeconds;) {
    const double parts = i->perSecond / labelled->perSecond;
    if (std::abs(parts - std::floor(parts + 0.5)) < 1e-6) fine = i;
  }
  const long parts = long(std::floor(fine->perSecond / labelled->perSecond + 0.5));

  std::vector<Tick> ticks;
  for (long i = long(std::ceil(axes.fromS * fine->perSecond - 1e-6));
       double(i) / fine->perSecond < axes.toS - 1e-9; i++) {
    const double seconds = double(i) / fine->perSecond;
    const bool main = i % parts == 0;
    ticks.push_back({seconds, main ? TickWeight::Beat : TickWeight::Step,
                     main ? decimal(seconds, labelled->decimals) : ""});
  }
  return ticks;
}

}  // namespace synth::analysis
