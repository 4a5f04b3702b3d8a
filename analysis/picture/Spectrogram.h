// Pictures of sound: spectrograms with octaves upwards and bars or seconds to the right, as PNG files.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/Audio.h"
#include "analysis/picture/Axes.h"
#include "analysis/picture/Canvas.h"
#include "analysis/picture/Ticks.h"

namespace synth::analysis {

struct PictureSettings {
  double fromS = 0;
  double toS = 0;                     // 0: the end of the longest audio, which is also the latest
  double fminHz = 30, fmaxHz = 8000;  // held within 10..24000
  double dbRange = 80;  // what is that much below the loudest cell of all panels, or more, is black
  int width = 0;        // of the whole picture in pixels, 120..16384; 0: 80 a second, 600..1800
  std::optional<BarLines> bars = {};  // seconds without
  int threads = 0;                    // 0: as many as there are cores; the picture does not depend on it
};

// A finished picture and where things are in it.
struct Picture {
  Canvas canvas;
  Axes axes;
  std::vector<Rect> plots;  // the panels from the top, `axes.columns` x `axes.rows` each
  double loudestDb;         // the level of the brightest colour
};

// One panel an audio below each other, all at one colour scale, each under its label (none for an empty or
// missing one). They show the middle signal. Throws std::runtime_error: "Nothing to draw" without audios or
// when all are empty, "--fmax must be above --fmin", "The time span is shorter than 50 ms".
Picture drawSpectrogram(std::span<const Audio* const> audios, std::span<const std::string> labels,
                        const PictureSettings& settings);

// Three panels: REFERENCE, RENDER and, from -24 (blue) to +24 dB (red), how far the render is above the
// reference, where either reaches into the colour scale. Throws the same.
Picture drawDifference(const Audio& reference, const Audio& render, const PictureSettings& settings);

// The same into a file; throws also "Cannot write " and the path.
void spectrogramImage(const std::string& path, std::span<const Audio* const> audios,
                      std::span<const std::string> labels, const PictureSettings& settings);
void differenceImage(const std::string& path, const Audio& reference, const Audio& render,
                     const PictureSettings& settings);

}  // namespace synth::analysis
