// WAV files: whatever the bytes say, they are refused with a text or give two sides of a length they can
// hold.
#include <cstdint>
#include <stdexcept>
#include <string>

#include "analysis/reading/ReadAudio.h"
#include "analysis/reading/Wav.h"
#include "base/Riff.h"

namespace {

using namespace synth;
using namespace synth::analysis;

void check(bool ok) {
  if (!ok) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto bytes = std::make_unique<MemoryBytes>(std::span(data, size));
  if (!isRiff(*bytes, "WAVE")) return 0;
  try {
    WavDecoder wav(std::move(bytes));
    check(wav.exact && wav.frames <= size && wav.rate >= 1000);
    const std::uint64_t promised = wav.frames;
    if (size <= 4096 && wav.rate <= 400000) {
      const Audio audio = decodeAll(wav);
      check(audio.left.size() == audio.right.size() &&
            double(audio.size()) <= double(promised) * 48000 / wav.rate);
      return 0;
    }
    std::uint64_t frames = 0;
    for (StereoBlock block; wav.read(block); frames += block.size())
      check(block.left.size() == block.right.size() && block.size() > 0 && block.size() <= blockFrames);
    check(frames == promised);
  } catch (const std::runtime_error& error) {
    check(!std::string(error.what()).empty());
  }
  return 0;
}
