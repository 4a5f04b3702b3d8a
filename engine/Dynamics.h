// The Master's saturation and compressor.
#pragma once

#include "engine/Drive.h"
#include "engine/dsp/Block.h"

namespace synth {

class MasterDynamics {
 public:
  void prepare(double rate);
  // The values of `saturation`, `comp_amount` and `comp_release` as they stand; every sixteen samples.
  void set(float saturation, float amount, float release);
  void process(dsp::Block& left, dsp::Block& right, int n, const float* sine);

  // The smallest gain since it was last asked for; 1 while nothing is compressed.
  float takeSmallestGain();

 private:
  void compress(dsp::Block& left, dsp::Block& right, int n);

  double rate_ = 48000;
  drive::Curve curve_;
  float saturation_ = 0, amount_ = 0, release_ = -1;
  float attackKeep_ = 0, releaseKeep_ = 0, threshold_ = 0, inverseRatio_ = 1, makeup_ = 1, blend_ = 0;
  float level_ = 0, smallest_ = 1;
};

}  // namespace synth
