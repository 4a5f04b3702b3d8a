// Running many independent channels of one kind of filter side by side: channels are gathered into groups
// of sixteen, four vectors that hide each other's latency, and computed sample by sample. The result of a
// channel is what it would be alone.
#pragma once

#include "engine/dsp/Block.h"

namespace synth::dsp {

inline constexpr int laneGroup = 16, laneQuads = laneGroup / 4;

// Sixteen channels' samples, transposed: [sample][channel].
struct LaneFrame {
  f4 v[segment][laneQuads];
};

// Channels that stand apart as Blocks, brought together and back. Missing ones read as silence.
inline void gather(LaneFrame& frame, Block* const* blocks, int count, int n) {
  for (int lane = 0; lane < laneGroup; lane += 4) {
    const Block* b[4];
    static constexpr Block silence = {};
    for (int k = 0; k < 4; k++) b[k] = lane + k < count ? blocks[lane + k] : &silence;
    for (int q = 0; q < quads(n); q++) {
      f4 r0 = b[0]->at(q), r1 = b[1]->at(q), r2 = b[2]->at(q), r3 = b[3]->at(q);
      transpose(r0, r1, r2, r3);
      frame.v[4 * q][lane / 4] = r0;
      frame.v[4 * q + 1][lane / 4] = r1;
      frame.v[4 * q + 2][lane / 4] = r2;
      frame.v[4 * q + 3][lane / 4] = r3;
    }
  }
}

inline void scatter(LaneFrame& frame, Block* const* blocks, int count, int n) {
  for (int lane = 0; lane < count; lane += 4) {
    for (int q = 0; q < quads(n); q++) {
      f4 r[4] = {frame.v[4 * q][lane / 4], frame.v[4 * q + 1][lane / 4], frame.v[4 * q + 2][lane / 4],
                 frame.v[4 * q + 3][lane / 4]};
      transpose(r[0], r[1], r[2], r[3]);
      for (int k = 0; k < 4 && lane + k < count; k++) blocks[lane + k]->put(q, r[k]);
    }
  }
}

// A per-channel number of a group, addressed by channel.
struct alignas(16) LaneValue {
  float v[laneGroup] = {};

  float& operator[](int lane) { return v[lane]; }
  f4 at(int quad) const { return *reinterpret_cast<const f4*>(v + 4 * quad); }
  void put(int quad, f4 x) { *reinterpret_cast<f4*>(v + 4 * quad) = x; }
};

}  // namespace synth::dsp
