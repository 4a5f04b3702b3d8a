// Where a picture's time axis is divided and what stands there.
#pragma once

#include <string>
#include <vector>

#include "analysis/picture/Axes.h"

namespace synth::analysis {

// Bars of four beats and sixteen Steps; bar 1 starts at the downbeat.
struct BarLines {
  double bpm = 120;
  double downbeatS = 0;
};

enum class TickWeight { Step, Beat, Bar };

struct Tick {
  double seconds;
  TickWeight weight;
  std::string label;  // empty for most
};

// Each from left to right, none outside the plane. Divisions that would lie closer than a few pixels are
// left out, the finest first; labels keep their own width and more from each other.
std::vector<Tick> barTicks(const Axes& axes, const BarLines& lines);
std::vector<Tick> secondTicks(const Axes& axes);

}  // namespace synth::analysis
