// Where a render goes.
#pragma once

#include "core/Project.h"

namespace synth {

// Any of the calls reports failure by throwing std::runtime_error.
class AudioSink {
 public:
  virtual ~AudioSink() = default;
  virtual void begin(u32 sampleRate, u64 totalFrames) = 0;
  // Two planes of at most 256 frames, within -1..1.
  virtual void write(const float* left, const float* right, unsigned frames) = 0;
  virtual void finish() = 0;
};

}  // namespace synth
