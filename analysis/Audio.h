// What the analyses listen to: stereo at 48 kHz.
#pragma once

#include <span>
#include <vector>

namespace synth::analysis {

inline constexpr int sampleRate = 48000;

// Both sides always hold the same number of samples.
struct Audio {
  std::vector<float> left, right;

  std::size_t size() const { return left.size(); }
  double seconds() const { return double(size()) / sampleRate; }
};

// Exactly `length` samples of the input delayed by `seconds`, to the nearest sample; negative advances it.
// What falls outside is silence.
Audio shifted(const Audio& audio, double seconds, std::size_t length);

// The sum, as long as the longest; nothing for nothing.
Audio mixed(std::span<const Audio> parts);

}  // namespace synth::analysis
