// Eight drawbar partials through a rotary speaker.
#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/Random.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

constexpr int bars = 8, drumBars = 3, clickBar = 4;  // 16', 8' and 5 1/3' sound from the drum, the rest
                                                     // from the horn; 2 2/3' has the key's click
// Partials of a phase that runs an octave below the note.
constexpr u32 partials[bars] = {1, 2, 3, 4, 6, 8, 10, 12};

void registration(const Track& t, float type, float bass, float (&a)[bars]) {
  if (t.drawbar_custom) {
    const float custom[bars] = {t.drawbar_1, t.drawbar_2, t.drawbar_3, t.drawbar_4,
                                t.drawbar_5, t.drawbar_6, t.drawbar_7, t.drawbar_8};
    for (int k = 0; k < bars; k++) a[k] = 0.8f * custom[k];
    return;
  }
  const float drawn[bars] = {3 * bass * (0.2f * type + 0.1f),
                             (0.4f * bass + 0.8f) * (1 - 0.3f * type),
                             0.42f * type + 0.08f,
                             0.58f * type + 0.22f,
                             0.46f * type + 0.04f,
                             0.48f * type + 0.07f,
                             0.26f * type + 0.02f,
                             0.28f * type + 0.02f};
  std::copy(drawn, drawn + bars, a);
}

// The rotor's turns a second.
float rotorHz(float rotor) { return rotor < 0.01f ? 0 : float(6.3 * math::pow(double(rotor), 1.7) + 0.55); }

// How fast both parts of the speaker turn, sample by sample while the knob moves.
void turn(KindState& st, const Run& run, PhaseBlock& horn, PhaseBlock& drum) {
  Block hornStep, drumStep;
  float hz = rotorHz(run.e[2][0]);
  for (int i = 0; i < segment; i++) {
    if (!run.eFlat[2] && i > 0 && i < run.n) hz = rotorHz(run.e[2][i]);
    hornStep[i] = hz / run.rate;
    drumStep[i] = 0.83f * hz / run.rate;
  }
  OrganState& o = st.organ;
  if (!o.spins) {
    o.spins = true;
    const double turns = double(run.clock) * double(rotorHz(run.e[2][0])) / double(run.rate);
    o.horn = phaseShift(float(turns - std::floor(turns)));
    const double slower = 0.83 * turns;
    o.drum = phaseShift(float(slower - std::floor(slower)));
  }
  advance(o.horn, hornStep, horn, run.n);
  advance(o.drum, drumStep, drum, run.n);
}

// The key's contact, which dies away sample by sample.
void keyContact(KindState& st, const Run& run, Block& click, Block& noise) {
  OrganState& o = st.organ;
  const float clickFall = 1 - std::min(4 / run.rate, 1.0f), noiseFall = 1 - std::min(250 / run.rate, 1.0f);
  for (int i = 0; i < run.n; i++) {
    click[i] = o.click;
    o.click *= clickFall;
    noise[i] = 0;
    if (o.contact <= 1e-5f) continue;
    noise[i] = run.soft * run.e[3][i] * o.contact * white(st.seed) * 0.6f;
    o.contact *= noiseFall;
  }
}

}  // namespace

void renderOrgan(KindState& st, Run& run) {
  const Block& inc = *run.inc;
  Block half, click = {}, noise = {};
  for (int q = 0; q < segment / 4; q++) half.put(q, inc.at(q) * splat(0.5f));
  PhaseBlock horn, drum;
  advance(st.phaseA, half, *run.phase, run.n);
  turn(st, run, horn, drum);
  keyContact(st, run, click, noise);

  // One registration for the segment while the knobs stand, one for each sample while they move.
  float flat[bars];
  registration(*run.track, run.e[0][0], run.e[1][0], flat);
  const bool moving = !run.track->drawbar_custom && !(run.eFlat[0] && run.eFlat[1]);
  Block level[bars];
  for (int k = 0; k < bars; k++) level[k].fill(flat[k]);
  for (int i = 0; moving && i < run.n; i++) {
    registration(*run.track, run.e[0][i], run.e[1][i], flat);
    for (int k = 0; k < bars; k++) level[k][i] = flat[k];
  }

  const f4 soft = splat(std::min(run.soft, 1.0f)), half4 = splat(0.5f), one = splat(1);
  run.stereo = false;
  for (int q = 0; q < quads(run.n); q++) {
    const f4 depth = min(splat(4) * select(run.e[2].at(q) >= splat(0.01f), run.e[2].at(q), splat(0)), one);
    const f4 swing = sinePoly(horn.at(q));
    const u4 base = run.phase->at(q);
    // The Doppler shift is so many cycles of the partial: the same stretch of time for all of them.
    const u4 moved = base + phaseShift(half.at(q) * depth * splat(0.00018f * run.rate) * swing);
    f4 sums[2] = {splat(0), splat(0)};
    for (int k = 0; k < bars; k++) {
      const f4 ratio = splat(0.5f * float(partials[k]));
      const f4 present = clamp((splat(0.46f) - ratio * inc.at(q)) * splat(1 / 0.06f), 0, 1);
      f4 a = level[k].at(q);
      if (k >= 2) a *= soft;
      if (k == clickBar) a += soft * splat(0.55f) * run.e[3].at(q) * click.at(q);
      a *= present;
      if (!any(a > splat(0))) continue;
      sums[k >= drumBars] += a * sineAt(run.sine, (k >= clickBar ? moved : base) * partials[k]);
    }
    const f4 d = half4 * sinePoly(drum.at(q) + quarterTurn);
    const f4 h = half4 * sinePoly(horn.at(q) + quarterTurn);
    const f4 low = depth * splat(0.18f), high = depth * splat(0.42f);
    const f4 l = splat(0.34f) * (sums[0] * (one - (half4 - d) * low) + sums[1] * (one - (half4 - h) * high)) +
                 noise.at(q);
    const f4 r = splat(0.34f) * (sums[0] * (one - (half4 + d) * low) + sums[1] * (one - (half4 + h) * high)) +
                 noise.at(q);
    run.mid->put(q, half4 * (l + r));
    run.side->put(q, half4 * (r - l));
    run.stereo |= any(depth > splat(0));
  }
  if (!run.stereo) run.side->fill(0);
}

}  // namespace synth::kinds
