// Reading WAV: integers of 8 to 32 bits, floats of 32 and 64.
#pragma once

#include "analysis/reading/Decoder.h"

namespace synth::analysis {

// What the chunks of a WAV tell; zeros where one is missing.
struct WavLayout {
  unsigned tag = 0, channels = 0, rate = 0, bits = 0;
  bool hasData = false;
  std::uint64_t dataAt = 0, dataBytes = 0;
};

// The bytes begin as a WAV does. Chunks that claim more than there is are cut; of several the last counts.
WavLayout wavLayout(ByteSource& bytes);

class WavDecoder final : public Decoder {
 public:
  // Throws std::runtime_error for what is no WAV that can be read.
  explicit WavDecoder(std::unique_ptr<ByteSource> bytes);
  bool read(StereoBlock& block) override;

 private:
  // `count` samples that stand `frameBytes` apart.
  using Convert = void (*)(const unsigned char* from, std::size_t frameBytes, std::size_t count, float* to);
  struct Encoding {
    unsigned tag, bits;
    Convert convert;
  };
  static const Encoding encodings[];

  std::unique_ptr<ByteSource> bytes_;
  WavLayout layout_;
  std::size_t sampleBytes_ = 0, frameBytes_ = 0;
  Convert convert_ = nullptr;
  std::uint64_t done_ = 0;
  std::vector<unsigned char> buffer_;
};

}  // namespace synth::analysis
