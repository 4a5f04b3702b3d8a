#include "analysis/Audio.h"

#include <algorithm>
#include <cmath>

namespace synth::analysis {

Audio shifted(const Audio& audio, double seconds, std::size_t length) {
  Audio out{std::vector<float>(length), std::vector<float>(length)};
  const double samples = std::round(seconds * sampleRate);
  if (!(std::fabs(samples) < 1e15)) return out;
  const long delay = long(samples);
  const long from = std::max(0L, delay), to = std::min(long(length), long(audio.size()) + delay);
  if (from >= to) return out;
  std::copy_n(audio.left.begin() + (from - delay), to - from, out.left.begin() + from);
  std::copy_n(audio.right.begin() + (from - delay), to - from, out.right.begin() + from);
  return out;
}

Audio mixed(std::span<const Audio> parts) {
  std::size_t length = 0;
  for (const Audio& part : parts) length = std::max(length, part.size());
  Audio out{std::vector<float>(length), std::vector<float>(length)};
  for (const Audio& part : parts)
    for (std::size_t i = 0; i < part.size(); i++) {
      out.left[i] += part.left[i];
      out.right[i] += part.right[i];
    }
  return out;
}

}  // namespace synth::analysis
