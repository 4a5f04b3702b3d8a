// The twelve Performance effects that a player throws over the whole mix. They start and end by the values
// of their Lanes alone, so an export plays them as well.
#pragma once

#include <memory>

#include "engine/dsp/Slew.h"
#include "engine/dsp/Svf.h"
#include "engine/fx/Parts.h"

namespace synth {

struct EngineCore;

// The moves as they read now: NaN for none, and whether a Lane is bound to each.
struct MoveValues {
  const float* value;
  const bool* bound;
};

class Moves {
 public:
  enum Index : int {
    Lowpass,
    Highpass,
    Repeat,
    TapeStop,
    SpinBack,
    Gate,
    Gain,
    BoostI,
    BoostII,
    Washout,
    Noise,
    Crush
  };

  void prepare(double rate);
  std::size_t bytes() const { return 2 * sizeof(float) * ringSize_; }

  // Every sixteen samples: filters and ramps. `stepSamples` is the length of an even Step.
  void tick(const MoveValues& moves, double bpm, double stepSamples, bool snap);

  // What both boosts and the washout add to every Track's Sends, over the segment.
  bool boosts(int send) const { return !boost_[send].stands() || boost_[send].target != 0; }
  dsp::f4 boost(int send, int quad) const { return boost_[send].four(quad); }

  // The riser: into both Sends, and kept for the mix.
  void addNoise(fx::Stereo (&sends)[2], int n);
  // Thins the dry mix and the wet one's lows; adds up dry, wet and noise.
  void mix(fx::Stereo& dry, fx::Stereo& wet, fx::Stereo& out, int n);
  // Crush to gain; `songTime` in Steps of each sample.
  void play(fx::Stereo& x, const double* songTime, int n);
  // At a segment's end.
  void advance(int n);

 private:
  struct Filter {
    dsp::Svf f;
    dsp::SvfState state[2];
  };

  // Whether a Move asks to sound by its value. What runs is decided at ticks, so that cuts leave no trace.
  bool active(int move) const;
  float value(int move) const { return value_[move]; }
  void crush(fx::Stereo& x, int n);
  void sweep(fx::Stereo& x, Filter& filter, float& mix, bool rises, bool high, int n);
  void playBuffer(fx::Stereo& x, int n);
  int activeBuffer() const;
  void holdLast();
  void readRepeat(float& l, float& r);
  void readTape(float& l, float& r);
  void readSpin(float& l, float& r);
  double newest() const;
  void ringAt(double place, float& l, float& r) const;
  void gate(fx::Stereo& x, const double* songTime, int n);

  struct Free {
    void operator()(float* p) const { std::free(p); }
  };

  double rate_ = 48000, bpm_ = 120, stepSamples_ = 6000;
  float value_[12];
  bool bound_[12] = {};
  float ramp_ = 0;

  dsp::Ramp boost_[2], gain_;
  // Noise.
  float noiseEnv_ = 0, noiseShare_ = 0;
  std::uint32_t seed_[2] = {0x1234567u, 0x89ABCDEu};
  Filter noise_;
  fx::Stereo riser_;
  bool noiseOn_ = false;
  // Washout.
  bool washoutOn_ = false;
  float washoutDry_ = 1, washoutTarget_ = 1;
  Filter washout_;
  // Crush and the two filters.
  bool crushOn_ = false, lowpassOn_ = false, highpassOn_ = false;
  float crushValue_ = 0, crushMix_ = 0, lowpassMix_ = 0, highpassMix_ = 0;
  float crushPhase_[2] = {}, held_[2] = {}, crushStep_ = 1, crushLevels_ = 65536, crushGain_ = 1;
  Filter crush_, lowpass_, highpass_;
  // The rings of the last four seconds.
  std::unique_ptr<float[], Free> ring_[2];
  std::uint32_t ringSize_ = 0, write_ = 0;
  bool bufferOn_ = false;
  int playing_ = -1;  // the buffer Move that sounds
  std::uint32_t repeatLength_ = 0, repeatStart_ = 0, repeatIndex_ = 0, repeatWanted_ = 64;
  double read_ = 0;
  float fadeIn_ = 1;
  Filter tape_;
  float last_[2] = {}, tail_[2] = {}, tailGain_ = 0, tailStep_ = 0;
  // Gate.
  float gateSmooth_ = 1;
};

}  // namespace synth
