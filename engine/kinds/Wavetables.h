// The atlas of harmonic contours that WAVETABLE reads: a grid of four by four surfaces, each in six
// versions with fewer and fewer partials.
#pragma once

namespace synth::kinds {

inline constexpr int tableSize = 256, tableStride = tableSize + 1, tableMips = 6, tableGrid = 4;

// Entry 0 of one surface: 257 floats, the last a copy of the first. Built once for the process.
const float* wavetable(int table, int position, int mip);

}  // namespace synth::kinds
