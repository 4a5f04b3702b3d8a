// 24-bit stereo WAV. The number of frames is known at the start, so the header is written once and final.
#pragma once

#include <string>

#include "base/AtomicFile.h"
#include "engine/AudioSink.h"

namespace synth {

class WavSink : public AudioSink {
 public:
  explicit WavSink(std::string path) : path_(std::move(path)) {}

  void begin(u32 sampleRate, u64 totalFrames) override;
  void write(const float* left, const float* right, unsigned frames) override;
  void finish() override;

 private:
  std::string path_;
  AtomicFile file_;
};

// A sample as a 24-bit whole number: +1 is 8388607, -1 is -8388608, without dither.
i32 to24Bit(float x);

}  // namespace synth
