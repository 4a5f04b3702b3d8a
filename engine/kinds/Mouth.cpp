// A formant mouth over a clean sine body.
#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/PolyBlep.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Saturate.h"
#include "engine/dsp/Svf.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

constexpr float formants[5][3] = {
    {300, 870, 2240}, {500, 900, 2400}, {750, 1150, 2500}, {520, 1850, 2550}, {300, 2250, 3000}};
constexpr float damping[3] = {5.5f, 8, 9}, share[3] = {1, 0.75f, 0.35f};
constexpr float lowK = 1.4142135f;
constexpr int tickLength = 8;

// The vowel's three filters.
void setFormants(MouthState& m, double rate) {
  const float v = 4 * m.vowel;
  const int row = std::min(int(v), 3);
  const float x = v - float(row), narrow = 0.8f * m.bite + 0.7f;
  FormantBank& bank = m.formants;
  for (int k = 0; k < 3; k++) {
    const double low = formants[row][k], high = formants[row + 1][k];
    const Svf f = Svf::at(svfG(low * math::pow(high / low, double(x)), rate), 1 / (damping[k] * narrow));
    bank.a1[k] = f.a1;
    bank.a2[k] = f.a2;
    bank.a3[k] = f.a3;
    bank.gain[k] = f.k * share[k];
  }
}

void setLow(MouthState& m, double rate) {
  const double hz = std::clamp(2.5 * double(m.step) * rate, 90.0, 600.0);
  const Svf f = Svf::at(svfG(hz, rate), lowK);
  m.lowA1 = f.a1;
  m.lowA2 = f.a2;
  m.lowA3 = f.a3;
}

// Every eight samples of the clock: the filters follow what moves them.
void tick(MouthState& m, const Run& run, int i) {
  const double rate = double(run.rate);
  const float vowel = std::clamp(run.e[1][i], 0.0f, 1.0f);
  const float bite = std::clamp(run.soft * run.e[2][i], 0.0f, 1.0f);
  if (vowel != m.vowel || bite != m.bite) {
    m.vowel = vowel;
    m.bite = bite;
    setFormants(m, rate);
  }
  if (m.step != (*run.inc)[i]) {
    m.step = (*run.inc)[i];
    setLow(m, rate);
  }
  for (int k = 0; k < 3; k++) {
    m.formants.ic1[k] = flushed(m.formants.ic1[k]);
    m.formants.ic2[k] = flushed(m.formants.ic2[k]);
  }
  m.low1 = flushed(m.low1);
  m.low2 = flushed(m.low2);
  m.breath = flushed(m.breath);
}

// The three formants of one sample, summed.
float mouth(FormantBank& b, float u) {
  const f4 a1 = load(b.a1), a2 = load(b.a2), ic1 = load(b.ic1), ic2 = load(b.ic2);
  const f4 v3 = splat(u) - ic2, v1 = a1 * ic1 + a2 * v3, v2 = ic2 + a2 * ic1 + load(b.a3) * v3;
  store(b.ic1, v1 + v1 - ic1);
  store(b.ic2, v2 + v2 - ic2);
  const f4 out = load(b.gain) * v1;
  return out[0] + out[1] + out[2];
}

// The mouth driven into a growl, without its low end as far as it bites.
float growl(MouthState& m, float y, float bite, float drive) {
  const float w = 1.3f * (sat(clip(y, 3)) - sat(clip(0.15f * bite * drive, 3))) / std::sqrt(drive);
  const float v3 = w - m.low2;
  const float v1 = m.lowA1 * m.low1 + m.lowA2 * v3, low = m.low2 + m.lowA2 * m.low1 + m.lowA3 * v3;
  m.low1 = 2 * v1 - m.low1;
  m.low2 = 2 * low - m.low2;
  return w + bite * (-lowK * v1 - low);
}

}  // namespace

void renderVoice(KindState& st, Run& run) {
  const Block& inc = *run.inc;
  MouthState& m = st.mouth;
  advance(st.phaseC, inc, *run.phase, run.n);
  Block wet = {};
  for (int i = 0; i < run.n; i++) {
    if (m.step < 0 || ((run.clock + u64(i)) & (tickLength - 1)) == 0) tick(m, run, i);
    const float air = std::clamp(run.e[0][i], 0.0f, 1.0f),
                bite = std::clamp(run.soft * run.e[2][i], 0.0f, 1.0f);
    m.breath += (white(st.seed) - m.breath) * 0.35f;
    const float p = unit((*run.phase)[i]), saw = 2 * p - 1 - poly(p, inc[i]);
    const float u = air * m.breath * 1.1f + (1 - 0.55f * air) * saw;
    const float drive = 6 * bite * bite + 1.2f;
    const float y = (0.15f * bite + 3 * (0.04f * u + mouth(m.formants, u))) * drive;
    wet[i] = growl(m, y, bite, drive);
  }
  const f4 level = splat((0.65f * run.soft + 0.35f) * 0.9f);
  for (int q = 0; q < quads(run.n); q++)
    run.mid->put(q, splat(0.85f) * clamp(run.e[3].at(q), 0, 1) * sineAt(run.sine, run.phase->at(q)) +
                        level * wet.at(q));
}

}  // namespace synth::kinds
