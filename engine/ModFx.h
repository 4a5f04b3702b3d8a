// The modulation effect of a Track: delays of a few milliseconds, moved by an LFO.
#pragma once

#include <memory>

#include "core/Project.h"
#include "engine/dsp/Block.h"

namespace synth {

class ModFx {
 public:
  enum Type : int { Off, Chorus, Ensemble, Flanger, Phaser, Vinyl };
  struct Setting {
    int type = Off;
    float rate = 0.5f, depth = 0.5f, feedback = 0, mix = 0.5f, tone = 0.5f;
    bool sideOnly = false;
  };

  void prepare(double rate);
  // Every eight samples, on the sample clock: moves the parameters towards the setting.
  void tick(const Setting& setting, bool snap);
  // In place; n samples within one tick.
  void process(float* left, float* right, int n, const float* sine);
  bool idle() const { return type_ == Off && gain_ == 0; }
  std::size_t bytes() const { return line_ ? sizeof(float) * 2 * lineSize_ : 0; }

 private:
  float read(int channel, float delay) const;
  void clear();

  double rate_ = 48000;
  std::unique_ptr<float[]> line_;
  u32 lineSize_ = 0, write_ = 0;
  int type_ = Off, wanted_ = Off;
  float gain_ = 0, gainStep_ = 0;
  float hz_ = 0.5f, depth_ = 0.5f, mix_ = 0.25f, smooth_ = 1;
  bool sideOnly_ = false;
  float phase_ = 0, phase2_ = 0;
};

}  // namespace synth
