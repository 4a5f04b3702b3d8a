// A synthesized drum played from notes.
#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/drums/Hit.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

double hertz(int note) { return 440 * math::exp2((note - 69) / 12.0); }

void strike(const Run& run) {
  drums::Setting s;
  s.model = run.track->perc_model;
  s.decay = float(std::clamp(math::log(double(run.decay) / 0.01) / 6.214608, 0.0, 1.0));
  s.tone = run.e[0][0];
  s.sweep = run.e[1][0];
  s.snap = run.e[2][0];
  s.drive = run.e[3][0];
  s.baseHz = float(hertz(std::clamp(run.note + int(run.track->transpose), 0, 126)));
  run.hit->start(s, run.serial, double(run.rate));
}

}  // namespace

void renderPerc(KindState& st, Run& run) {
  advance(st.phaseA, *run.inc, *run.phase, run.n);
  if (!st.struck) strike(run);
  st.struck = true;
  // Glide, fine tuning and envelopes reach the drum as a ratio to the note's own pitch.
  const f4 perHz = splat(run.rate / float(hertz(run.note + int(run.track->transpose))));
  Block ratio;
  for (int q = 0; q < segment / 4; q++) ratio.put(q, clamp(run.inc->at(q) * perHz, 0.0625f, 16));
  run.hit->render(run.mid->v, run.n, ratio.v);
}

}  // namespace synth::kinds
