#include "engine/dsp/LaneFilters.h"

#include <algorithm>

#include "engine/dsp/Saturate.h"

namespace synth::dsp {
namespace {

// Calls run(channels of one group, how many) for all.
template <class Channel, class Run>
void inGroups(const Channel* channels, int count, Run run) {
  for (int at = 0; at < count; at += laneGroup) run(channels + at, std::min(laneGroup, count - at));
}

template <class Channel>
void signals(const Channel* channels, int count, Block* (&blocks)[laneGroup]) {
  for (int c = 0; c < count; c++) blocks[c] = channels[c].signal;
}

void flushAll(LaneValue& values) {
  for (int q = 0; q < laneQuads; q++) values.put(q, flushed(values.at(q)));
}

// The four vectors of a group step through the samples together; `quadCount` of them hold channels.
template <int QuadCount>
void ladderGroup(LaneFrame& frame, LaneValue (&state)[4], const LaneValue& gains, const LaneValue& feedback,
                 const LaneValue& drives, int n) {
  f4 s1[QuadCount], s2[QuadCount], s3[QuadCount], s4[QuadCount], G[QuadCount], rest[QuadCount], k[QuadCount],
      input[QuadCount], inverse[QuadCount], output[QuadCount];
  for (int q = 0; q < QuadCount; q++) {
    s1[q] = state[0].at(q);
    s2[q] = state[1].at(q);
    s3[q] = state[2].at(q);
    s4[q] = state[3].at(q);
    G[q] = gains.at(q);
    k[q] = feedback.at(q);
    rest[q] = splat(1) - G[q];
    input[q] = drives.at(q) * splat(3) + splat(1);
    const f4 G2 = G[q] * G[q];
    inverse[q] = splat(1) / (k[q] * G2 * G2 + splat(1));
    output[q] = (k[q] * splat(0.35f) + splat(1)) / (drives.at(q) * splat(1.5f) + splat(1));
  }
  for (int i = 0; i < n; i++) {
    for (int q = 0; q < QuadCount; q++) {
      const f4 g = G[q], h = rest[q];
      const f4 S = h * (s4[q] + g * (s3[q] + g * (s2[q] + g * s1[q])));
      const f4 u = sat(clip((frame.v[i][q] * input[q] - k[q] * S) * inverse[q], 4.5f));
      // y = s + G (in - s) and the new state 2 y - s, as one multiply less on the critical path.
      f4 y = h * s1[q] + g * u;
      s1[q] = y + y - s1[q];
      f4 in = y;
      y = h * s2[q] + g * in;
      s2[q] = y + y - s2[q];
      in = y;
      y = h * s3[q] + g * in;
      s3[q] = y + y - s3[q];
      in = y;
      y = h * s4[q] + g * in;
      s4[q] = y + y - s4[q];
      frame.v[i][q] = y * output[q];
    }
  }
  for (int q = 0; q < QuadCount; q++) {
    state[0].put(q, s1[q]);
    state[1].put(q, s2[q]);
    state[2].put(q, s3[q]);
    state[3].put(q, s4[q]);
  }
}

template <int QuadCount>
void svfGroup(LaneFrame& frame, LaneValue& first, LaneValue& second, const LaneValue (&setting)[6], int n) {
  f4 ic1[QuadCount], ic2[QuadCount];
  for (int q = 0; q < QuadCount; q++) {
    ic1[q] = first.at(q);
    ic2[q] = second.at(q);
  }
  for (int i = 0; i < n; i++) {
    for (int q = 0; q < QuadCount; q++) {
      const f4 a1 = setting[0].at(q), a2 = setting[1].at(q), a3 = setting[2].at(q);
      const f4 x = frame.v[i][q], v3 = x - ic2[q];
      const f4 v1 = a1 * ic1[q] + a2 * v3;
      const f4 v2 = ic2[q] + a2 * ic1[q] + a3 * v3;
      ic1[q] = v1 + v1 - ic1[q];
      ic2[q] = v2 + v2 - ic2[q];
      frame.v[i][q] = setting[3].at(q) * x + setting[4].at(q) * v1 + setting[5].at(q) * v2;
    }
  }
  for (int q = 0; q < QuadCount; q++) {
    first.put(q, ic1[q]);
    second.put(q, ic2[q]);
  }
}

template <int QuadCount>
void biquadGroup(LaneFrame& frame, LaneValue& first, LaneValue& second, const LaneValue (&setting)[5],
                 int n) {
  f4 z1[QuadCount], z2[QuadCount];
  for (int q = 0; q < QuadCount; q++) {
    z1[q] = first.at(q);
    z2[q] = second.at(q);
  }
  for (int i = 0; i < n; i++) {
    for (int q = 0; q < QuadCount; q++) {
      const f4 x = frame.v[i][q];
      const f4 y = setting[0].at(q) * x + z1[q];
      z1[q] = setting[1].at(q) * x - setting[3].at(q) * y + z2[q];
      z2[q] = setting[2].at(q) * x - setting[4].at(q) * y;
      frame.v[i][q] = y;
    }
  }
  for (int q = 0; q < QuadCount; q++) {
    first.put(q, z1[q]);
    second.put(q, z2[q]);
  }
}

// Runs `group` for as many vectors as hold channels.
template <class Group>
void byQuads(int count, Group group) {
  switch (quads(count)) {
    case 1: group.template operator()<1>(); break;
    case 2: group.template operator()<2>(); break;
    case 3: group.template operator()<3>(); break;
    default: group.template operator()<4>();
  }
}

}  // namespace

void runLadders(const LadderChannel* channels, int count, int n, bool flush) {
  inGroups(channels, count, [n, flush](const LadderChannel* c, int size) {
    LaneFrame frame;
    Block* blocks[laneGroup];
    LaneValue state[4], gain, feedback, drive;
    signals(c, size, blocks);
    for (int lane = 0; lane < size; lane++) {
      for (int s = 0; s < 4; s++) state[s][lane] = c[lane].state->s[s];
      gain[lane] = c[lane].setting->G;
      feedback[lane] = c[lane].setting->k;
      drive[lane] = c[lane].setting->drive;
    }
    if (flush)
      for (LaneValue& s : state) flushAll(s);
    gather(frame, blocks, size, n);
    byQuads(size, [&]<int Q>() { ladderGroup<Q>(frame, state, gain, feedback, drive, n); });
    scatter(frame, blocks, size, n);
    for (int lane = 0; lane < size; lane++)
      for (int s = 0; s < 4; s++) c[lane].state->s[s] = state[s][lane];
  });
}

void runSvfs(const SvfChannel* channels, int count, int n, bool flush) {
  inGroups(channels, count, [n, flush](const SvfChannel* c, int size) {
    LaneFrame frame;
    Block* blocks[laneGroup];
    LaneValue first, second, setting[6];
    signals(c, size, blocks);
    for (int lane = 0; lane < size; lane++) {
      const SvfSetting& s = *c[lane].setting;
      first[lane] = c[lane].state->ic1;
      second[lane] = c[lane].state->ic2;
      const float values[] = {s.f.a1, s.f.a2, s.f.a3, s.inputMix, s.bandMix, s.lowMix};
      for (int k = 0; k < 6; k++) setting[k][lane] = values[k];
    }
    if (flush) {
      flushAll(first);
      flushAll(second);
    }
    gather(frame, blocks, size, n);
    byQuads(size, [&]<int Q>() { svfGroup<Q>(frame, first, second, setting, n); });
    scatter(frame, blocks, size, n);
    for (int lane = 0; lane < size; lane++) *c[lane].state = {first[lane], second[lane]};
  });
}

void runBiquads(const BiquadChannel* channels, int count, int n, bool flush) {
  inGroups(channels, count, [n, flush](const BiquadChannel* c, int size) {
    LaneFrame frame;
    Block* blocks[laneGroup];
    LaneValue first, second, setting[5];
    signals(c, size, blocks);
    for (int lane = 0; lane < size; lane++) {
      const Biquad& s = *c[lane].setting;
      first[lane] = c[lane].state->z1;
      second[lane] = c[lane].state->z2;
      const float values[] = {s.b0, s.b1, s.b2, s.a1, s.a2};
      for (int k = 0; k < 5; k++) setting[k][lane] = values[k];
    }
    if (flush) {
      flushAll(first);
      flushAll(second);
    }
    gather(frame, blocks, size, n);
    byQuads(size, [&]<int Q>() { biquadGroup<Q>(frame, first, second, setting, n); });
    scatter(frame, blocks, size, n);
    for (int lane = 0; lane < size; lane++) *c[lane].state = {first[lane], second[lane]};
  });
}

}  // namespace synth::dsp
