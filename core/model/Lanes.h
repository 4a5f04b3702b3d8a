// Lanes: rows of drawn automation over one pool of points, and how a row reads at a time.
#pragma once

#include <span>

#include "core/Project.h"

namespace synth {

// The row of slot 0..7 of an owner: a Track 0..15, or 16 + a Bus.
inline int laneRow(int owner, int slot) { return owner * limits::lanesPerOwner + slot; }
inline int masterLaneRow(int slot) { return limits::firstMasterLane + slot; }
inline int busOwner(int bus) { return limits::tracks + bus; }
// Whether a row is switched on, has a target or has points.
bool laneInUse(const LaneRow& row);

std::span<const LanePoint> lanePoints(const Project& project, int row);
// Replaces a row's points, which must not lie in the Project itself. False, changing nothing, for a row that
// does not exist, positions that fall or stand three times, positions past the Song, or more points than the
// pool holds.
bool setLanePoints(Project& project, int row, const LanePoint* points, int count);
// Switches a row off and removes its target and points.
void clearLane(Project& project, int row);

// How points read at a position in 1/16 Steps when `after` is the number of points that lie before it: the
// first value before them, the last behind, linear between, flat into a rest, NaN while the Lane rests.
f32 readLane(std::span<const LanePoint> points, size_t after, double position);

// The row's value 0..1 at a time in Steps; NaN where it has none. At a jump the later point rules.
f32 laneValueAt(const Project& project, int row, double time);
// The same, but just before that time: at a jump the earlier point rules.
f32 laneValueBefore(const Project& project, int row, double time);
// laneValueAt, or where that is NaN `fallback` limited to 0..1.
f32 laneValue(const Project& project, int row, double time, f32 fallback);

}  // namespace synth
