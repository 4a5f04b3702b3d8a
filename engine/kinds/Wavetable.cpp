// A scan over an atlas of harmonic contours, its phase warped by a second oscillator.
#include <algorithm>

#include "engine/dsp/FastMath.h"
#include "engine/kinds/Kind.h"
#include "engine/kinds/Wavetables.h"

namespace synth::kinds {
namespace {

using namespace dsp;

// A place between two neighbours of the grid or of the mips.
struct Between {
  i4 low, high;
  f4 share;

  Between(f4 x, int last) : low(truncated(x)), high(low), share(x - toFloats(low)) {
    for (int k = 0; k < 4; k++) high[k] = std::min(low[k] + 1, last);
  }
};

f4 mix(f4 a, f4 b, f4 share) { return a + (b - a) * share; }

// Four reads of one surface each, linear between entries.
f4 readTables(const i4& table, const i4& position, const i4& mip, u4 phase) {
  const u4 index = phase >> 24;
  const f4 f = toFloats((i4)(phase & 0x00FFFFFFu)) * splat(0x1p-24f);
  f4 a, b;
  for (int k = 0; k < 4; k++) {
    const float* t = wavetable(table[k], position[k], mip[k]) + index[k];
    a[k] = t[0];
    b[k] = t[1];
  }
  return mix(a, b, f);
}

f4 readMips(const i4& table, const i4& position, const Between& mip, u4 phase) {
  const f4 low = readTables(table, position, mip.low, phase);
  if (!any(mip.share > splat(0))) return low;
  return mix(low, readTables(table, position, mip.high, phase), mip.share);
}

f4 readPositions(const i4& table, const Between& position, const Between& mip, u4 phase) {
  const f4 low = readMips(table, position.low, mip, phase);
  if (!any(position.share > splat(0))) return low;
  return mix(low, readMips(table, position.high, mip, phase), position.share);
}

}  // namespace

void renderWavetable(KindState& st, Run& run) {
  const Block& inc = *run.inc;
  Block step;
  for (int q = 0; q < segment / 4; q++) {
    const f4 e4 = run.e[3].at(q);
    step.put(q, min(inc.at(q) * (splat(3) * e4 * e4 + splat(1)), splat(0.45f)));
  }
  PhaseBlock b;
  advance(st.phaseA, inc, *run.phase, run.n);
  advance(st.phaseB, step, b, run.n);
  for (int q = 0; q < quads(run.n); q++) {
    const f4 i = inc.at(q), e4 = run.e[3].at(q), drift = splat(3) * e4 * e4 + splat(1);
    const f4 warp = splat(0.14f) * modulationRoom(i) * run.e[2].at(q);
    // The mip follows the fastest the phase moves, the warp included.
    const f4 speed = i * (splat(1) + splat(12.566371f) * warp * drift) * splat(160);
    const Between mip(clamp(log2Fast(max(speed, splat(1))), 0, 5), tableMips - 1);
    const Between table(clamp(splat(3) * run.e[0].at(q), 0, 3), tableGrid - 1);
    const Between position(clamp(splat(3) * run.e[1].at(q), 0, 3), tableGrid - 1);
    const u4 phase = run.phase->at(q) + phaseStep(warp * sineAt(run.sine, b.at(q)));
    f4 x = readPositions(table.low, position, mip, phase);
    if (any(table.share > splat(0))) x = mix(x, readPositions(table.high, position, mip, phase), table.share);
    run.mid->put(q, x);
  }
}

}  // namespace synth::kinds
