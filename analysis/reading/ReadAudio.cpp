#include "analysis/reading/ReadAudio.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "analysis/reading/Resample.h"

namespace synth::analysis {
namespace {

std::uint64_t longest(const Decoder& decoder) { return std::uint64_t(longestSeconds * decoder.rate); }

// Stores what the decoder gives, if it gives no more than `store` frames; the rest is only counted into
// `frames`, so that a sound too long to take is refused before it fills the memory.
std::optional<Audio> collect(Decoder& decoder, std::uint64_t store, std::uint64_t& frames) {
  const char* const tooLong = "longer than an hour";
  if (decoder.exact && decoder.frames > longest(decoder)) throw std::runtime_error(tooLong);
  Resampler resampler(decoder.rate, sampleRate, 2);
  resampler.expect(std::min(decoder.frames, store));
  frames = 0;
  for (StereoBlock block; decoder.read(block);) {
    frames += block.size();
    if (frames > longest(decoder)) throw std::runtime_error(tooLong);
    const float* const sides[] = {block.left.data(), block.right.data()};
    if (frames <= store) resampler.push(sides, block.size());
  }
  if (frames > store) return std::nullopt;
  resampler.finish();
  return Audio{resampler.take(0), resampler.take(1)};
}

// How far to store a sound before its length is certain.
std::uint64_t storeAtFirst(const Decoder& decoder) {
  const std::uint64_t most = longest(decoder);
  return decoder.exact ? most : std::max(most / 2, std::min(most, decoder.frames));
}

std::unique_ptr<FileBytes> open(const std::string& path) {
  std::unique_ptr<FileBytes> file = FileBytes::open(path);
  if (!file) throw std::runtime_error("Cannot read " + path);
  return file;
}

}  // namespace

Audio decodeAll(Decoder& decoder) {
  std::uint64_t frames;
  return *collect(decoder, longest(decoder), frames);
}

Audio readAudio(const std::string& path) {
  std::unique_ptr<FileBytes> file = open(path);
  try {
    std::unique_ptr<Decoder> decoder = openDecoder(path, std::move(file));
    std::uint64_t frames;
    if (std::optional<Audio> audio = collect(*decoder, storeAtFirst(*decoder), frames))
      return std::move(*audio);
    // It went on for longer than it told; now it is known to end in time.
    file = open(path);
    decoder = openDecoder(path, std::move(file));
    decoder->frames = frames;
    return decodeAll(*decoder);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

}  // namespace synth::analysis
