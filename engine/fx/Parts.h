// What the Send effects and the Track room are put together from.
#pragma once

#include <algorithm>

#include "engine/dsp/DelayLine.h"
#include "engine/dsp/LaneFilters.h"
#include "engine/dsp/Slew.h"
#include "engine/dsp/Svf.h"

namespace synth::fx {

// Two channels over a segment.
struct Stereo {
  dsp::Block l, r;
};

struct OnePole {
  float share = 1, y = 0;

  void set(double hz, double rate) {
    share = float(1 - math::exp(-2 * math::pi * std::min(hz, 0.45 * rate) / rate));
  }
  float low(float x) { return y += share * (x - y); }
  void low(dsp::Block& x, int n) {
    for (int i = 0; i < n; i++) x[i] = low(x[i]);
  }
  void flush() { y = dsp::flushed(y); }
};

// A two-pole filter over blocks.
struct TwoPole {
  dsp::SvfSetting setting;
  dsp::SvfState state;

  static constexpr float butterworth = 1.41421356f;
  void lowAt(double hz, double rate) {
    setting = dsp::SvfSetting::low(dsp::Svf::at(dsp::svfG(hz, rate), butterworth));
  }
  void highAt(double hz, double rate) {
    setting = dsp::SvfSetting::high(dsp::Svf::at(dsp::svfG(hz, rate), butterworth));
  }
  void run(dsp::Block& x, int n) {
    for (int i = 0; i < n; i++) {
      const dsp::SvfOut o = state.step(setting.f, x[i]);
      x[i] = setting.inputMix * x[i] + setting.bandMix * o.band + setting.lowMix * o.low;
    }
  }
  void clear() { state = {}; }
};

// An all-pass on a whole number of samples, at least a segment of them (Schroeder, 1962).
class Diffuser {
 public:
  void prepare(double seconds, double rate) {
    length_ = std::uint32_t(std::max(seconds * rate + 0.5, double(dsp::segment)));
    line_.prepare(length_);
  }
  std::size_t bytes() const { return line_.bytes(); }
  std::uint32_t length() const { return length_; }
  const dsp::DelayLine& line() const { return line_; }

  void run(dsp::Block& x, float g, const dsp::LineClock& clock, int n) {
    const dsp::f4 gain = dsp::splat(g);
    dsp::Block in;
    for (int q = 0; q < dsp::quads(n); q++) {
      const dsp::f4 d = line_.four(clock.now + 1 + std::uint32_t(4 * q) - length_), v = x.at(q) + gain * d;
      in.put(q, v);
      x.put(q, d - gain * v);
    }
    line_.put(clock.now + 1, in.v, n);
  }

 private:
  dsp::DelayLine line_;
  std::uint32_t length_ = dsp::segment;
};

// The fast Walsh-Hadamard transform of eight signals, scaled so that it keeps their energy.
inline void hadamard(dsp::f4 (&x)[8]) {
  for (int half = 1; half < 8; half *= 2)
    for (int i = 0; i < 8; i += 2 * half)
      for (int k = i; k < i + half; k++) {
        const dsp::f4 a = x[k], b = x[k + half];
        x[k] = a + b;
        x[k + half] = a - b;
      }
  for (dsp::f4& v : x) v *= dsp::splat(0.35355339f);
}

// Eight delay lines that feed each other: the late part of a large room (Jot and Chaigne, 1991). Each has a
// gain and a low pass of its own; the owner mixes what goes back in.
class Tank {
 public:
  static constexpr int lines = 8;

  // `seconds` are the lines at their longest, `swing` how far modulation reaches beyond.
  void prepare(const double (&seconds)[lines], double swing, double rate);
  void clear();
  std::size_t bytes() const;

  // Delays in samples for the next sixteen samples, gains and the low passes' share.
  void aim(const float (&delays)[lines], bool snap);
  void setGains(const float (&gains)[lines]);
  void setDamping(float share) { damping_ = share; }
  float damping() const { return damping_; }
  // The mean square of the gains: how much energy stays at each turn.
  float meanSquare() const { return meanSquare_; }

  // What comes out of the lines, damped: n samples of each.
  void read(dsp::Block (&y)[lines], int n);
  // What goes into them; the clock moves on.
  void write(const dsp::Block (&x)[lines], int n);
  void flush();

 private:
  dsp::DelayLine line_[lines];
  dsp::LineClock clock_;
  dsp::Ramp delay_[lines];
  alignas(16) float gain_[lines] = {}, low_[lines] = {};
  float damping_ = 1, meanSquare_ = 0;
};

// The decay of each line so that all of them fall by 60 dB in `seconds`.
inline float decayGain(float delay, double seconds, double rate) {
  return float(math::exp2(-9.96578428 * double(delay) / (rate * seconds)));  // 10^(-3 d / T)
}

// What n samples move an LFO by.
inline dsp::Phase lfoStep(double hz, double rate, int n = 1) { return dsp::phaseShift(float(hz * n / rate)); }

}  // namespace synth::fx
