// AAC at 256 kbps in an M4A file, by the ffmpeg program.
#pragma once

#include <string>

#include "base/AtomicFile.h"
#include "base/Process.h"
#include "engine/AudioSink.h"

namespace synth {

class FfmpegSink : public AudioSink {
 public:
  explicit FfmpegSink(std::string path) : path_(std::move(path)) {}

  static bool available();

  void begin(u32 sampleRate, u64 totalFrames) override;
  void write(const float* left, const float* right, unsigned frames) override;
  void finish() override;

 private:
  std::string path_;
  AtomicFile file_;
  Process encoder_;
};

}  // namespace synth
