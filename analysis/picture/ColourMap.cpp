#include "analysis/picture/ColourMap.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace synth::analysis {
namespace {

struct Stop {
  double at;
  Colour colour;
};

constexpr Stop levels[] = {
    {0.00, {0x05, 0x06, 0x0F}}, {0.25, {0x2B, 0x1A, 0x66}}, {0.50, {0x8C, 0x2A, 0x7C}},
    {0.70, {0xE0, 0x56, 0x3C}}, {0.88, {0xFB, 0xB8, 0x4A}}, {1.00, {0xFF, 0xFD, 0xE8}},
};

// Dark up to the middle, so that small differences do not shout.
constexpr Stop differences[] = {
    {-1.0, {0x4A, 0xA8, 0xFF}}, {-0.5, {0x16, 0x3E, 0xA0}}, {0.0, {0x05, 0x06, 0x0F}},
    {0.5, {0xA0, 0x1C, 0x26}},  {1.0, {0xFF, 0x62, 0x4A}},
};

Colour between(std::span<const Stop> stops, double x) {
  if (!(x > stops.front().at)) return stops.front().colour;
  for (std::size_t i = 1; i < stops.size(); i++) {
    const Stop &a = stops[i - 1], &b = stops[i];
    if (x > b.at) continue;
    const double t = (x - a.at) / (b.at - a.at);
    const auto mix = [t](std::uint8_t from, std::uint8_t to) {
      return std::uint8_t(std::floor(from + (double(to) - from) * t + 0.5));
    };
    return {mix(a.colour.red, b.colour.red), mix(a.colour.green, b.colour.green),
            mix(a.colour.blue, b.colour.blue)};
  }
  return stops.back().colour;
}

}  // namespace

Colour levelColour(double level) { return between(levels, level); }
Colour differenceColour(double difference) { return between(differences, difference); }

}  // namespace synth::analysis
