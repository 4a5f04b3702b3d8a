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

// The middle signal (left + right) / 2. Hann windows of 32768 samples below 130 Hz, so that neighbouring
// notes of a bass part, down to 4096 above 2080 Hz, so that hits stay sharp; they change over within a third
// of an octave. Columns wider than half a window show the loudest moment within them. The result does not
// depend on `threads` (1 or more).
Cells measureCells(const Audio& audio, const Axes& axes, int threads);

}  // namespace synth::analysis
