// Struck and scraped material: two banks of six modes, excited by noise.
#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Saturate.h"
#include "engine/dsp/Svf.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

constexpr int modes = 6, tickLength = 16;
constexpr double ratios[modes] = {1, 1.58, 2.13, 2.72, 3.51, 4.63};

// Mode k of the left channel is lane k, of the right one lane six + k.
void setModes(MachineState& s, double rate) {
  const double hz = double(s.step) * rate;
  const float metal = s.metal, spread = 0.035f * s.spread;
  const float Q = 260 * metal * metal + 2.5f, shape = 0.65f * metal + 0.35f;
  float weight = 1;
  for (int k = 0; k < modes; k++, weight *= shape) {
    for (int ch = 0; ch < 2; ch++) {
      const double detune = ch == 0 ? 1 : k == 0 ? 1 - double(spread) : 1 + 1.3 * double(spread);
      const double f = hz * ratios[k] * detune;
      const float room = float(std::clamp((rate / 2 - f) / (0.15 * rate / 2), 0.0, 1.0));
      const Svf v = Svf::at(svfG(f, rate), 1 / Q);
      const int lane = ch * modes + k;
      FormantBank& b = s.modes[lane / 4];
      b.a1[lane % 4] = v.a1;
      b.a2[lane % 4] = v.a2;
      b.a3[lane % 4] = v.a3;
      b.gain[lane % 4] = v.k * weight * room;
    }
  }
  // Unit-peak band passes on white noise grow with the root of their width: this takes it back.
  s.gain = float(0.22 * std::sqrt(double(Q) * rate / std::max(hz, 1.0)));
}

// Every sixteen samples of the clock: the modes follow what moves them.
void tick(KindState& st, const Run& run, int i) {
  MachineState& s = st.machine;
  const float metal = std::clamp(run.e[0][i], 0.0f, 1.0f), spread = std::clamp(run.e[3][i], 0.0f, 1.0f);
  const float step = (*run.inc)[i];
  if (metal != s.metal || spread != s.spread || step != s.step) {
    s.metal = metal;
    s.spread = spread;
    s.step = step;
    setModes(s, double(run.rate));
  }
  for (FormantBank& b : s.modes)
    for (int k = 0; k < 4; k++) {
      b.ic1[k] = flushed(b.ic1[k]);
      b.ic2[k] = flushed(b.ic2[k]);
    }
  s.friction = flushed(s.friction);
  st.strike = flushed(st.strike);
  for (float& y : s.soft) y = flushed(y);
}

struct Channels {
  float l, r;
};

Channels ring(MachineState& s, Channels in) {
  const f4 input[3] = {splat(in.l), {in.l, in.l, in.r, in.r}, splat(in.r)};
  f4 out[3];
  for (int k = 0; k < 3; k++) {
    FormantBank& b = s.modes[k];
    const f4 a1 = load(b.a1), a2 = load(b.a2), ic1 = load(b.ic1), ic2 = load(b.ic2);
    const f4 v3 = input[k] - ic2, v1 = a1 * ic1 + a2 * v3, v2 = ic2 + a2 * ic1 + load(b.a3) * v3;
    store(b.ic1, v1 + v1 - ic1);
    store(b.ic2, v2 + v2 - ic2);
    out[k] = load(b.gain) * v1;
  }
  return {out[0][0] + out[0][1] + out[0][2] + out[0][3] + out[1][0] + out[1][1],
          out[1][2] + out[1][3] + out[2][0] + out[2][1] + out[2][2] + out[2][3]};
}

// A new grain of friction: how large, and when the next one comes.
void newGrain(KindState& st, const Run& run, int i) {
  MachineState& s = st.machine;
  const float x = white(st.seed), e2 = run.e[1][i];
  s.grainSize = 0.55f * std::fabs(x) + 0.45f;
  s.grainRate = std::max((*run.inc)[i] * run.rate * (0.45f * e2 * e2 + 0.025f) * (0.35f * x + 1), 0.5f);
  s.friction = 1;
}

}  // namespace

void renderMachine(KindState& st, Run& run) {
  MachineState& s = st.machine;
  advance(st.phaseA, *run.inc, *run.phase, run.n);
  const float inverse = 1 / run.rate;
  for (int i = 0; i < run.n; i++) {
    const bool begins = s.step < 0;
    if (begins || ((run.clock + u64(i)) & (tickLength - 1)) == 0) tick(st, run, i);
    if (begins) newGrain(st, run, i);
    const float e2 = run.e[1][i], e3 = run.e[2][i], apart = std::clamp(run.e[3][i], 0.0f, 1.0f);
    const float first = white(st.seed), second = first + apart * (white(st.seed) - first);
    s.grain += s.grainRate * inverse;
    if (s.grain >= 1) {
      s.grain -= 1;
      newGrain(st, run, i);
    }
    const float rub = e2 * (s.grainSize * s.friction * 1.3f + 0.22f);
    s.friction *= 1 - std::min(5 * s.grainRate * inverse, 1.0f);

    const float hit = run.soft * (0.9f * e3 + 0.55f) * st.strike * 6.4f, tone = 0.96f * e3 * e3 + 0.04f;
    st.strike *= 1 - std::min((900 * e3 + 160) * inverse, 1.0f);
    s.soft[0] += (first - s.soft[0]) * tone;
    s.soft[1] += (second - s.soft[1]) * tone;
    const Channels struck = {hit * s.soft[0], hit * s.soft[1]};
    const Channels rung = ring(s, {struck.l + rub * first, struck.r + rub * second});
    const float l = sat(clip(s.gain * rung.l + 0.12f * e3 * struck.l, 3));
    const float r = sat(clip(s.gain * rung.r + 0.12f * e3 * struck.r, 3));
    (*run.mid)[i] = 0.5f * (l + r);
    (*run.side)[i] = 0.5f * (l - r);
  }
  run.stereo = true;
}

}  // namespace synth::kinds
