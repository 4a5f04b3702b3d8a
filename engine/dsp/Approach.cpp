#include "engine/dsp/Approach.h"

#include <algorithm>

namespace synth::dsp {
namespace {

template <int QuadCount>
void group(LaneFrame& frame, LaneValue& values, const LaneValue& targets, const LaneValue& keeps, int n) {
  f4 y[QuadCount], t[QuadCount], k[QuadCount];
  for (int q = 0; q < QuadCount; q++) {
    y[q] = values.at(q);
    t[q] = targets.at(q);
    k[q] = keeps.at(q);
  }
  for (int i = 0; i < n; i++)
    for (int q = 0; q < QuadCount; q++) {
      y[q] = t[q] + (y[q] - t[q]) * k[q];
      frame.v[i][q] = y[q];
    }
  for (int i = n; i < segment; i++)
    for (int q = 0; q < QuadCount; q++) frame.v[i][q] = y[q];
  for (int q = 0; q < QuadCount; q++) values.put(q, y[q]);
}

}  // namespace

void runApproaches(const Approach* all, int count, int n) {
  Block unwanted;
  for (int at = 0; at < count; at += laneGroup) {
    const Approach* a = all + at;
    const int size = std::min(laneGroup, count - at);
    LaneFrame frame;
    LaneValue values, targets, keeps;
    Block* blocks[laneGroup];
    bool wanted = false;
    for (int lane = 0; lane < size; lane++) {
      values[lane] = *a[lane].value;
      targets[lane] = a[lane].target;
      keeps[lane] = a[lane].keep;
      blocks[lane] = a[lane].out ? a[lane].out : &unwanted;
      wanted |= a[lane].out != nullptr;
    }
    switch (quads(size)) {
      case 1: group<1>(frame, values, targets, keeps, n); break;
      case 2: group<2>(frame, values, targets, keeps, n); break;
      case 3: group<3>(frame, values, targets, keeps, n); break;
      default: group<4>(frame, values, targets, keeps, n);
    }
    if (wanted) scatter(frame, blocks, size, segment);
    for (int lane = 0; lane < size; lane++) *a[lane].value = values[lane];
  }
}

}  // namespace synth::dsp
