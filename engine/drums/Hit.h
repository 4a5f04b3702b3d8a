// One hit of a synthesized drum: thirteen models over a common frame of envelope, pitch and noise. Pads
// and the PERC engine play it.
#pragma once

#include "core/Project.h"
#include "engine/Drive.h"
#include "engine/dsp/Phase.h"
#include "engine/dsp/Svf.h"

namespace synth::drums {

enum Model : int {
  KICK,
  SNARE,
  CLAP,
  CLOSED_HAT,
  OPEN_HAT,
  TOM,
  RIM,
  COWBELL,
  SHAKER,
  CYMBAL,
  ZAP,
  CONGA,
  NOISE,
  models
};

// What is fixed when the hit starts; units are those of the Pad values.
struct Setting {
  int model = KICK;
  float pitch = 0, decay = 0.5f, tone = 0.5f, sweep = 0.5f, snap = 0.5f, drive = 0;
  float sweepTime = 0, sweepHold = 0, hold = 0;
  float tailDrift = 0, tailTime = 0.3f, drop = 0, dropTime = 0.3f;
  float baseHz = 0;  // tunes pitched models; 0 keeps the model's own pitch
};

// An exponential from 1 towards 0.
struct Decay {
  float value = 1, coefficient = 0;
};

struct OnePole {
  float c = 1, y = 0;
};

class Hit {
 public:
  // The serial seeds the noise: every hit sounds a little different, and one render repeats exactly.
  void start(const Setting& setting, u64 serial, double rate);
  // Writes n samples, at most a segment, with zeros where the hit has died away. `ratios`, if not null,
  // are pitch ratios on top of the hit's own. Returns how many samples the hit lived through.
  int render(float* out, int n, const float* ratios = nullptr);
  // What fadeOut() takes away, to be applied behind any filter so that none rings past the end. Returns how
  // many samples the hit lived through; the others become zeros.
  int fade(float* x, int n);
  // Lets the hit fall by 60 dB in `seconds`, if that is faster than it falls by itself.
  void release(double seconds);
  // Fades linearly to silence over `samples`; see fade().
  void fadeOut(int samples);

  float level() const;
  float pitchRatio() const { return base_; }
  bool done() const { return done_; }

  // What the models get: a stretch that no tick of the hit cuts, at most sixteen samples.
  struct Stretch {
    int n = 0, held = 0;         // samples in all, and those before the envelope begins to fall
    u32 age = 0;                 // in samples at its start
    dsp::Block A, at, r, noise;  // envelope, attack, pitch ratio, white noise
  };

 private:
  friend struct Recipes;

  void tick(float ratio);
  float semitonesAt(double t) const;
  void fill(Stretch& s, const float* ratios);
  void renderStretch(float* out, int n, const float* ratios);
  bool spent() const;

  Setting s_;
  double rate_ = 48000;
  u32 age_ = 0, seed_ = 1;
  float env_ = 1, envCoefficient_ = 0, attackStep_ = 1;
  i32 holdLeft_ = 0;  // samples until the envelope falls
  Decay sweep_;
  i32 sweepHoldLeft_ = 0;
  float sweepAmount_ = 0, base_ = 1, baseStep_ = 0;  // pitch ratio at the last tick, and its step a sample
  float gate_ = 1, gateCoefficient_ = 1;
  i32 fadeLeft_ = -1, fadeTotal_ = 1;
  bool done_ = true;
  drive::Curve drive_;
  // The models' own memory.
  float f0_ = 50;
  int hands_ = 0;  // of a clap, so far
  dsp::Phase phase_[6] = {};
  Decay decay_[3];
  OnePole pole_[2];
  dsp::Svf filter_[3];
  dsp::SvfState state_[3];
};

}  // namespace synth::drums
