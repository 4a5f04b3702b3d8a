// MP3 at 320 kbps, by LAME.
#pragma once

#include <string>
#include <vector>

#include "base/AtomicFile.h"
#include "engine/AudioSink.h"

struct lame_global_struct;

namespace synth {

class Mp3Sink : public AudioSink {
 public:
  explicit Mp3Sink(std::string path) : path_(std::move(path)) {}
  ~Mp3Sink() override;

  static bool available();

  void begin(u32 sampleRate, u64 totalFrames) override;
  void write(const float* left, const float* right, unsigned frames) override;
  void finish() override;

 private:
  void append(int size);

  std::string path_;
  AtomicFile file_;
  lame_global_struct* lame_ = nullptr;
  std::vector<unsigned char> buffer_;
};

}  // namespace synth
