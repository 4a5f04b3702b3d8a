// The filters that run in groups of channels: ladder, state variable and biquad. The caller fills one
// entry a channel; states are read before and written back after. With `flush` tiny states become 0
// first: callers ask for it on the sixteen-sample grid, which is often enough to stay out of denormals.
#pragma once

#include "engine/dsp/Lanes.h"
#include "engine/dsp/Svf.h"

namespace synth::dsp {

// Four-pole ladder with zero-delay feedback (Zavalishin, 2012), saturated at its input.
struct LadderSetting {
  float G = 0;      // g / (1 + g)
  float k = 0;      // feedback, 4.2 at full resonance
  float drive = 0;  // 0..1
};
struct LadderState {
  float s[4] = {};
  bool rests() const { return s[0] == 0 && s[1] == 0 && s[2] == 0 && s[3] == 0; }
};
struct LadderChannel {
  Block* signal;
  LadderState* state;
  const LadderSetting* setting;
};
void runLadders(const LadderChannel* channels, int count, int n, bool flush);

// One output of a state variable filter: inputMix * x + bandMix * band + lowMix * low.
struct SvfSetting {
  Svf f;
  float inputMix = 0, bandMix = 0, lowMix = 1;

  static SvfSetting low(Svf f) { return {f, 0, 0, 1}; }
  static SvfSetting high(Svf f) { return {f, 1, -f.k, -1}; }
  static SvfSetting band(Svf f) { return {f, 0, f.k, 0}; }
  static SvfSetting notch(Svf f) { return {f, 1, -f.k, 0}; }
};
struct SvfChannel {
  Block* signal;
  SvfState* state;
  const SvfSetting* setting;
};
void runSvfs(const SvfChannel* channels, int count, int n, bool flush);

// Transposed direct form II; a0 is 1.
struct Biquad {
  float b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
};
struct BiquadState {
  float z1 = 0, z2 = 0;
  bool rests() const { return z1 == 0 && z2 == 0; }
};
struct BiquadChannel {
  Block* signal;
  BiquadState* state;
  const Biquad* setting;
};
void runBiquads(const BiquadChannel* channels, int count, int n, bool flush);

}  // namespace synth::dsp
