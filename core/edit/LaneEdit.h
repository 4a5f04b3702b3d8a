// Lanes by what they move. `row` is a Track 0..15, a bus 16..18 (Send I, Send II, Master), or -1 for the
// twelve master Lanes of the Performance effects; times are in Steps, values 0..1.
#pragma once

#include <span>

#include "core/Project.h"
#include "core/edit/Result.h"

namespace synth::workspace {

inline constexpr int masterRow = -1;

// The Lane row of 0..163 that carries a target, or -1.
int laneFor(const Project& project, int row, int target);
// The same, claiming a free one where none does; it is switched on.
edit::Result claimLane(Project& project, int row, int target, int& lane);

edit::Result drawLane(Project& project, int row, int target, double t0, double v0, double t1, double v1);
edit::Result clearLane(Project& project, int row, int target);
// Points are named by their places in the Lane, in any order.
edit::Result addPoint(Project& project, int row, int target, double time, double value, int& index);
edit::Result movePoints(Project& project, int row, int target, std::span<const int> points, double deltaTime,
                        double deltaValue);
edit::Result deletePoints(Project& project, int row, int target, std::span<const int> points);
// Turns the spans from these points to the next into rests, or back. A rest is a point of its own behind the
// one that keeps the value, and needs room beside it.
edit::Result setRest(Project& project, int row, int target, std::span<const int> points, bool rest);
edit::Result simplifyLane(Project& project, int row, int target, double from, double to, double timeScale,
                          double valueScale, double tolerance);

// Pulls ten band gains by `delta` dB at one band: the neighbours follow the less the further they stand.
// Bands of `mask` keep their gain; every gain stays within -24..24.
void bendEq(float (&bands)[10], const float (&base)[10], u32 mask, int band, float delta);

}  // namespace synth::workspace
