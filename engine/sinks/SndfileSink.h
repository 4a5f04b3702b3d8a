// AIFF and FLAC in 24 bits, by libsndfile.
#pragma once

#include <string>

#include "base/AtomicFile.h"
#include "engine/AudioFormats.h"

namespace synth {

class SndfileSink : public AudioSink {
 public:
  SndfileSink(AudioFormat format, std::string path) : format_(format), path_(std::move(path)) {}
  ~SndfileSink() override;

  static bool available();

  void begin(u32 sampleRate, u64 totalFrames) override;
  void write(const float* left, const float* right, unsigned frames) override;
  void finish() override;

 private:
  AudioFormat format_;
  std::string path_;
  AtomicFile file_;
  void* encoder_ = nullptr;
};

}  // namespace synth
