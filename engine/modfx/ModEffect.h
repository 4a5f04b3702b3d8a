// What the modulation effects of a Track share: their parameters as they stand between two ticks, and the
// stretch of at most eight samples that they work on.
#pragma once

#include "core/Project.h"
#include "engine/dsp/DelayLine.h"

namespace synth::modfx {

inline constexpr int tickLength = 8;

struct Params {
  float rate = 48000;  // of the samples
  float hz = 0.5f, depth = 0.5f, feedback = 0, tone = 0.5f;
  float mix = 0.5f;   // 0..1, as the Track has it
  bool hush = false;  // what makes noise by itself is to fall silent
};

// Dry in, wet out. Samples past n are finite and unused.
struct alignas(16) Piece {
  int n = 0;
  float l[tickLength], r[tickLength];

  dsp::f4 left(int quad) const { return dsp::load(l + 4 * quad); }
  dsp::f4 right(int quad) const { return dsp::load(r + 4 * quad); }
};

// The two delay lines that the effects share.
struct Lines {
  dsp::DelayLine l, r;
  dsp::LineClock clock;

  bool silent() const { return l.silent() && r.silent(); }
  void write(const Piece& x) {
    l.put(clock.now + 1, x.l, x.n);
    r.put(clock.now + 1, x.r, x.n);
  }
};

// The phases of four samples, `step` apart.
inline dsp::u4 phasesFrom(dsp::Phase first, dsp::Phase step, int quad) {
  const dsp::Phase p = first + u32(4 * quad) * step;
  return dsp::u4{p, p + step, p + 2 * step, p + 3 * step};
}

// What an effect does while it rests, with silence coming in and none of it sounding: only time goes by, and
// the next sound finds it as if it had run. Its lines' clock is moved by whoever asks for that.
struct Chorus {
  dsp::Phase phase = 0;
  void run(Lines& lines, const Params& p, Piece& x);
  void pass(const Params& p, int n);
};

// Three taps a channel, a third of a turn apart, on a slow and a fast LFO: a string machine.
struct Ensemble {
  dsp::Phase slow = 0, fast = 0;
  void run(Lines& lines, const Params& p, Piece& x);
  void pass(const Params& p, int n);
};

// A short delay swept by a raised cosine, fed back through a low pass.
struct Flanger {
  dsp::Phase phase = 0;
  float low[2] = {}, lowTone = -1, lowShare = 1;
  void tick(const Params& p);
  void run(Lines& lines, const Params& p, Piece& x);
  bool silent() const { return low[0] == 0 && low[1] == 0; }
  void pass(const Params& p, int n);
};

// Six first-order all-passes a side.
struct Phaser {
  dsp::Phase phase = 0;
  float shift[2] = {}, step[2] = {};  // the all-passes' coefficient, on a line between ticks
  float stage[2][6] = {}, last[2] = {};
  bool started = false;
  void tick(const Params& p);
  void run(const Params& p, Piece& x);
  bool silent() const;
  void pass(const Params& p, int n);
};

// Wow, flutter, a worn band, dust and hiss.
struct Vinyl {
  dsp::Phase wow = 0, flutter = 0;
  u32 seed = 0x2545F491u;
  float high[2] = {}, low[2] = {}, hiss[2] = {};
  float tick[2] = {}, tickOut[2] = {}, pop[2] = {}, popOut[2] = {};
  float noise = 0;  // comes with the first sound, and fades where the Track falls asleep
  float tone = -1, highShare = 1, lowShare = 0, hissShare = 1;
  void run(Lines& lines, const Params& p, Piece& x);
};

}  // namespace synth::modfx
