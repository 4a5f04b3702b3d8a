// Pitch that dissolves into noise, torn out of tune, cut into slices and played back at other speeds.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/Math.h"
#include "engine/dsp/FastMath.h"
#include "engine/dsp/Random.h"
#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

using namespace dsp;

constexpr u32 ringMask = RiftMemory::past - 1;

// Cuts a new slice out of what was played last.
void cutSlice(KindState& st, const Run& run, int i) {
  RiftState& s = st.rift;
  const float tear = run.e[1][i], shards = run.e[2][i], stretch = std::clamp(run.e[3][i], 0.0f, 1.0f);
  const float r = white(st.seed), size = std::fabs(r);
  s.tearTarget = tear * tear * r;
  s.clock = std::max(int(((1 - tear) * 0.23f + 0.024f) * run.rate * (0.65f * size + 0.65f)), 17);
  const int wanted = std::clamp(int(((1 - shards) * 0.061f + 0.009f) * run.rate * (0.35f * size + 0.65f)), 33,
                                RiftMemory::longest);
  s.length = int(std::min(u32(wanted), std::min(s.written, u32(RiftMemory::past))));
  const u32 from = (s.written - u32(s.length)) & ringMask;
  const u32 straight = std::min(u32(s.length), RiftMemory::past - from);
  std::memcpy(run.rift->slice, run.rift->ring + from, straight * sizeof(float));
  std::memcpy(run.rift->slice + straight, run.rift->ring, (u32(s.length) - straight) * sizeof(float));
  s.place = 0;
  s.speed = float(math::exp2(2.3 * double(stretch) * double(r)));
  if (0.5f * (white(st.seed) + 1) < std::min(stretch, 0.5f)) s.speed = -s.speed;
}

struct Slice {
  float value = 0, window = 0;
};

// The slice at its read place, and its sine window there; the place moves on.
Slice readSlice(KindState& st, const Run& run) {
  RiftState& s = st.rift;
  if (s.length < 33) return {};
  const float n = float(s.length);
  const int at = std::min(int(s.place), s.length - 1);
  const float f = s.place - float(at);
  const float a = run.rift->slice[at], b = run.rift->slice[at + 1 < s.length ? at + 1 : 0];
  const float window = std::fabs(sineOf(run.sine, 0.5f * s.place / n)) * 0.72f + 0.28f;
  s.place += s.speed;
  while (s.place >= n) s.place -= n;
  while (s.place < 0) s.place += n;
  if (s.place >= n) s.place = 0;  // what was just below 0 may have rounded up to n
  return {a + f * (b - a), window};
}

}  // namespace

void renderRift(KindState& st, Run& run) {
  RiftState& s = st.rift;
  const float inverse = 1 / run.rate;
  const float tearShare = std::min(90 * inverse, 1.0f), mixShare = std::min(500 * inverse, 1.0f);
  for (int i = 0; i < run.n; i++) {
    const float m = run.e[0][i], t = run.e[1][i], h = run.e[2][i];
    if (--s.clock <= 0) cutSlice(st, run, i);
    s.tear = flushed(s.tear + tearShare * (s.tearTarget - s.tear));
    const float tuned = (*run.inc)[i] * (s.tear != 0 ? exp2Fast(1.7f * s.tear) : 1);
    const float w = std::clamp(tuned, 1e-6f, 0.31f);
    const float share = std::clamp((16 * m + 2) * w, 0.003f, 0.65f);
    s.slow1 += (white(st.seed) - s.slow1) * share;
    s.slow2 += (s.slow1 - s.slow2) * 0.18f * share;
    const float band = (m + 1.6f) * (s.slow1 - s.slow2);
    const float fade = std::clamp((0.42f - w) / (8 * w + 0.06f), 0.0f, 1.0f);

    (*run.phase).v[i] = st.phaseA;
    const float bend = fade * (0.36f * m + 0.05f) * t * sineAt(run.sine, st.phaseB);
    const float pitch = sineAt(run.sine, st.phaseA + phaseShift(bend));
    st.phaseA += phaseStep(w);
    st.phaseB += phaseStep(std::min(w * (5.73f * t + 1.4142f), 0.43f));
    float y = (1.1f * m + 0.12f) * band + (0.78f - 0.61f * m) * pitch;

    s.hold += 1 - 0.965f * h;
    if (s.hold >= 1) {
      s.hold -= 1;
      const float levels = (1 - h) * (1 - h) * 496 + 16;
      s.held = std::trunc(levels * y) / levels;
    }
    y += h * (s.held - y) * 0.8f;
    run.rift->ring[s.written++ & ringMask] = y;

    const Slice slice = readSlice(st, run);
    s.mix = flushed(s.mix + ((s.length >= 33 ? 0.92f * h : 0) - s.mix) * mixShare);
    const float out = y * (1 - s.mix) + s.mix * slice.value * slice.window;
    (*run.side)[i] = 0.16f * t * band + 0.34f * s.mix * (slice.value - y);
    (*run.mid)[i] = out / (0.5f * std::fabs(out) + 1);
  }
  run.stereo = true;
}

}  // namespace synth::kinds
