// The levels that a spectrogram shows: one for each column and row of its plane.
#pragma once

#include <vector>

#include "analysis/Audio.h"
#include "analysis/picture/Axes.h"

namespace synth::analysis {

struct Cells {
  int columns = 0, rows = 0;
  // Row after row from the top, in dB; a full-scale sine is 0, silence `silenceDb`.
  std::vector<float> db;

  float at(int column, int row) const {
    return db[std::size_t(row) * std::size_t(columns) + std::size_t(column)];
  }
};

inline constexpr float silenceDb = -160;

// The middle signal (left + right) / 2, also from around the plane's span. Hann windows run from 32768
// samples below 130 Hz, which part the notes of a bass, down to 4096 above 2080 Hz, which keep hits sharp,
// and change over within a third of an octave. Rows wider than a bin show the loudest within them, columns
// wider than half a window the loudest moment. The result does not depend on `threads` (1 or more).
Cells measureCells(const Audio& audio, const Axes& axes, int threads);

}  // namespace synth::analysis
