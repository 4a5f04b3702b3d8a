// Pictures as PNG files: 8 bits of red, green and blue a pixel, stored without compression.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace synth {

// Writes `height` rows of `width` pixels, top row first, three bytes a pixel, and replaces the file at once
// and whole. False with "Cannot write " and the path in `error`; also for a picture without pixels, for
// `rgb` of another length and for one past what a single chunk can hold (2 GB).
bool writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgb,
              std::string& error);

}  // namespace synth
