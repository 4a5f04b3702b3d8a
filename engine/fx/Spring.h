// A spring tank (Valimaki, Parker and Abel, 2010): two loops, each dispersed by a chain of all-passes whose
// delay of four samples is one vector.
#pragma once

#include "engine/fx/Parts.h"

namespace synth::fx {

class Spring {
 public:
  void prepare(double rate);
  void clear();
  std::size_t bytes() const { return loop_[0].line.bytes() + loop_[1].line.bytes(); }
  // n samples; what comes out belongs to the four samples before. `clock` is the sample clock.
  void run(const dsp::Block& in, dsp::Block& out, int n, std::uint64_t clock);

 private:
  static constexpr int stages = 24;
  struct Loop {
    dsp::DelayLine line;
    std::uint32_t length = 64;
    float gain = 0;
    dsp::f4 state[stages] = {};
  };
  void four();

  Loop loop_[2];
  dsp::LineClock clock_;
  TwoPole high_, low_;
  float in_[4] = {}, out_[4] = {};
};

}  // namespace synth::fx
