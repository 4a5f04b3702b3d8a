// The small room that a Track may stand in: four delay lines that feed each other (Jot, 1991) behind
// two diffusers a side.
#pragma once

#include "engine/fx/Parts.h"

namespace synth {

class TrackRoom {
 public:
  struct Setting {
    float size = 0.4f, decay = 0.5f, damp = 0.4f, mix = 0;
  };

  void prepare(double rate);
  std::size_t bytes() const;
  // Every sixteen samples of the clock; `snap` takes the values at once.
  void tick(const Setting& setting, bool snap);
  // Whether it is mixed in or its tail still sounds; changes with a tick.
  bool runs() const { return runs_; }
  // In place.
  void process(dsp::Block& left, dsp::Block& right, int n);

  // Whether silence going in comes out as silence and leaves everything but the time as it is. Found out by
  // `listen`, which takes a while and is worth asking now and then when silence goes in.
  bool rests() const { return !runs_ || silent_; }
  void listen();
  // In place of `process` while it rests.
  void pass(int n);

 private:
  void passTime(int n);

  static constexpr int lines = 4;

  double rate_ = 48000;
  float perTick_ = 1;
  fx::Diffuser diffuser_[2][2];
  dsp::DelayLine line_[lines];
  dsp::LineClock clock_;
  dsp::Ramp delay_[lines];
  alignas(16) float gain_[lines] = {}, low_[lines] = {};
  float size_ = 0, decay_ = 0, damp_ = -1, lowShare_ = 1, level_ = 1;
  float mix_ = 0, mixShare_ = 1;
  dsp::Slew mixNow_;
  bool set_ = false, runs_ = false, silent_ = true;
  std::uint32_t quiet_ = 0;  // samples since the tail was last heard
};

}  // namespace synth
