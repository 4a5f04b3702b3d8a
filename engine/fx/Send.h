// One of the two Sends: which effect is heard, how it comes and goes, when it sleeps.
#pragma once

#include "engine/fx/SendEffect.h"

namespace synth::fx {

class Send {
 public:
  void prepare(double rate);
  std::size_t bytes() const;

  // The wet sound of a segment, scaled by `return`. `fx` are the values as they stand; `rests` says that the
  // transport stands, without which nothing falls asleep. `now` is the sample clock at the first sample.
  void run(const SendFx& fx, double bpm, const Stereo& in, Stereo& out, int n, u64 now, bool rests);

  bool sleeping() const { return sleeping_; }
  // Whether sound may still come out.
  bool tails() const { return !sleeping_ && type_ != FX_OFF; }
  float inPeak() const { return inPeak_; }
  float outPeak(int channel) const { return outPeak_[channel]; }
  int type() const { return type_; }

 private:
  int fade(float* gains, int n);
  void piece(const SendFx& fx, double bpm, const Stereo& in, Stereo& out, int from, int n, u64 now);
  void start(const SendFx& fx, double bpm);
  void duck(const SendFx& fx, const Stereo& in, Stereo& out, int n);
  void meter(const Stereo& in, const Stereo& out, int n);

  double rate_ = 48000;
  std::unique_ptr<SendEffect> effects_[FX_OFF];
  SendEffect* effect_ = nullptr;
  int type_ = FX_OFF, wanted_ = FX_OFF;
  float gain_ = 0, gainStep_ = 0;
  bool sleeping_ = true, begun_ = false;
  u32 quiet_ = 0;
  dsp::Slew return_;
  float returnShare_ = 1, env_ = 0, attack_ = 1, release_ = 1;
  float inPeak_ = 0, outPeak_[2] = {};
};

}  // namespace synth::fx
