// The plane of a spectrogram: seconds from left to right, octaves from bottom to top.
#pragma once

#include "base/Math.h"

namespace synth::analysis {

// The span is above 0, and 0 < fminHz < fmaxHz.
struct Axes {
  double fromS = 0, toS = 1;
  double fminHz = 30, fmaxHz = 8000;
  int columns = 1, rows = 1;

  double columnS() const { return (toS - fromS) / columns; }
  double octaves() const { return math::log2(fmaxHz / fminHz); }
  // Pixels from the left and from the top, of points inside and outside.
  double x(double seconds) const { return (seconds - fromS) / columnS(); }
  double y(double hz) const { return rows * math::log2(fmaxHz / hz) / octaves(); }
  // The frequency at a height; the middle of row r lies at r + 0.5.
  double hz(double height) const { return fmaxHz * math::exp2(-octaves() * height / rows); }
};

}  // namespace synth::analysis
