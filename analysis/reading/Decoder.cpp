#include "analysis/reading/Decoder.h"

#include <stdexcept>

#include "analysis/reading/FfmpegDecoder.h"
#include "analysis/reading/SndfileDecoder.h"
#include "analysis/reading/Wav.h"
#include "base/Riff.h"

namespace synth::analysis {

void StereoBlock::resize(std::size_t frames) {
  left.resize(frames);
  right.resize(frames);
}

void takeStereo(const float* interleaved, std::size_t channels, std::size_t frames, StereoBlock& block) {
  block.resize(frames);
  const std::size_t second = channels > 1 ? 1 : 0;
  for (std::size_t i = 0; i < frames; i++) {
    block.left[i] = interleaved[i * channels];
    block.right[i] = interleaved[i * channels + second];
  }
}

std::unique_ptr<Decoder> openDecoder(const std::string& path, std::unique_ptr<ByteSource> bytes) {
  if (isRiff(*bytes, "WAVE")) return std::make_unique<WavDecoder>(std::move(bytes));
  if (auto decoder = SndfileDecoder::open(std::move(bytes))) return decoder;
  if (auto decoder = FfmpegDecoder::open(path)) return decoder;
  throw std::runtime_error(notDecodable);
}

}  // namespace synth::analysis
