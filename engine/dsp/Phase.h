// Oscillator phases as 32-bit fractions of a cycle: they wrap by themselves, never round up to a whole
// cycle, and adding is associative, so a stretch of samples may be computed side by side.
#pragma once

#include <cstdint>

#include "engine/dsp/Block.h"
#include "engine/dsp/Sine.h"

namespace synth::dsp {

typedef std::uint32_t u4 __attribute__((vector_size(16)));
using Phase = std::uint32_t;

inline constexpr float phaseScale = 4294967296.0f;

// A phase step of -0.5..0.5 cycles; a phase shift of any moderate size.
inline Phase phaseStep(float cycles) { return Phase(std::int32_t(cycles * phaseScale)); }
inline Phase phaseShift(float cycles) { return Phase(std::int64_t(cycles * phaseScale)); }
// A phase shift of any moderate size: whole turns are dropped before it is turned into a fraction.
inline u4 phaseShift(f4 cycles) {
  const f4 rest = cycles - toFloats(truncated(cycles));
  return (u4)truncated(rest * splat(2147483648.0f)) << 1;
}
inline u4 phaseStep(f4 cycles) { return (u4)truncated(cycles * splat(phaseScale)); }

// The phase in 0..1.
inline float unit(Phase p) { return float(std::int32_t(p >> 8)) * 0x1p-24f; }
inline f4 unit(u4 p) { return toFloats((i4)(p >> 8)) * splat(0x1p-24f); }

inline constexpr int sineShift = 21;  // 32 bits less the eleven that index 2048 entries
inline constexpr Phase sineRest = (Phase(1) << sineShift) - 1;

inline float sineAt(const float* table, Phase p) {
  const Phase i = p >> sineShift;
  return table[i] + (table[i + 1] - table[i]) * (float(std::int32_t(p & sineRest)) * 0x1p-21f);
}

inline f4 sineAt(const float* table, u4 p) {
  const u4 i = p >> sineShift;
  const f4 fraction = toFloats((i4)(p & sineRest)) * splat(0x1p-21f);
  const float *t0 = table + i[0], *t1 = table + i[1], *t2 = table + i[2], *t3 = table + i[3];
  const f4 a = {t0[0], t1[0], t2[0], t3[0]}, b = {t0[1], t1[1], t2[1], t3[1]};
  return a + (b - a) * fraction;
}

// sin(2 pi p) by a polynomial on the quarter turn that p folds into; for LFOs, which read no table.
inline f4 sinePoly(u4 p) {
  i4 v = (i4)p;
  const i4 fold = (i4)((u4)v ^ ((u4)v << 1)) >> 31;
  v = (i4)(((u4)v ^ (u4)fold) - (u4)fold + ((u4)fold & 0x80000000u));
  const f4 x = toFloats(v) * splat(1.46291808e-9f), z = x * x;  // 2 pi / 2^32
  return x * (splat(1) +
              z * (splat(-0.16666667f) +
                   z * (splat(0.008333334f) + z * (splat(-0.0001984127f) + z * splat(2.7557319e-6f)))));
}
inline float sinePoly(Phase p) { return sinePoly(u4{p, p, p, p})[0]; }
inline constexpr Phase quarterTurn = 0x40000000u;

// The phases of a segment.
struct alignas(16) PhaseBlock {
  Phase v[segment + 4];

  u4 at(int quad) const { return *reinterpret_cast<const u4*>(v + 4 * quad); }
  Phase operator[](int i) const { return v[i]; }
};

// The phase before each sample; `phase` moves on by n samples of `inc` cycles each.
inline void advance(Phase& phase, const Block& inc, PhaseBlock& out, int n) {
  Phase steps[segment];
  for (int q = 0; q < segment / 4; q++) {
    const u4 s = phaseStep(inc.at(q));
    __builtin_memcpy(steps + 4 * q, &s, sizeof s);
  }
  Phase p = phase;
  for (int i = 0; i < segment; i++) {
    out.v[i] = p;
    p += steps[i];
  }
  out.v[segment] = p;
  phase = out.v[n];
}

}  // namespace synth::dsp
