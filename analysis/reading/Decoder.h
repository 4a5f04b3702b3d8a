// What turns an audio file into samples, a block at a time, at the file's own rate.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteSource.h"

namespace synth::analysis {

inline constexpr std::size_t blockFrames = 8192;

inline constexpr char notDecodable[] = "not an audio file this system can decode";
inline constexpr char decodingFailed[] = "decoding failed";

// Both sides hold the same number of samples.
struct StereoBlock {
  std::vector<float> left, right;

  std::size_t size() const { return left.size(); }
  void resize(std::size_t frames);
};

class Decoder {
 public:
  double rate = 0;           // Hz
  std::uint64_t frames = 0;  // how many there will be, as far as it is known; 0 when it is not
  bool exact = false;        // whether `frames` is more than an estimate

  virtual ~Decoder() = default;
  // The next frames, at most `blockFrames`: of more than two channels the first two, of one both sides.
  // False at the end; throws std::runtime_error when the file fails on the way.
  virtual bool read(StereoBlock& block) = 0;
};

// The first two channels of interleaved frames; one channel becomes both sides.
void takeStereo(const float* interleaved, std::size_t channels, std::size_t frames, StereoBlock& block);

// The decoder for the file of that name, whose bytes these are. Throws std::runtime_error when there is none.
std::unique_ptr<Decoder> openDecoder(const std::string& path, std::unique_ptr<ByteSource> bytes);

}  // namespace synth::analysis
