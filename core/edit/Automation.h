// Editing the points of a Lane. Lanes are rows 0..163; times are in Steps and values 0..1 unless a line says
// otherwise. A refused edit changes nothing.
#pragma once

#include <span>
#include <vector>

#include "core/Project.h"

namespace synth::automation {

// Replaces a row's points by a list; times round to 1/16 Step, a NaN value is a rest. False for times that
// fall, three on one place, or too many points.
bool setBreakpoints(Project& project, int lane, const double* times, const float* values, int count);

// Adds a point at a time in 1/16 Steps, behind those at or before it; its index. -1 past 2^24, for a value
// that is not finite, where two points stand on that time, and without room.
int insertPoint(Project& project, int lane, u32 time, float value);

// How far a set of points (rising indices) may move by `delta` 1/16 Steps without crossing the points
// outside the set, the Song's start or its end.
i64 clampShift(const Project& project, int lane, std::span<const int> points, i64 delta);
// Moves the set by clampShift of `delta`, and its values by `value`, limited to 0..1. False when nothing
// moved.
bool movePoints(Project& project, int lane, std::span<const int> points, i64 delta, float value);
bool deletePoints(Project& project, int lane, std::span<const int> points);

// Takes out recorded points that lie on the line between their neighbours, within `tolerance` of the range;
// the number taken out.
int thin(Project& project, int lane, double from, double to, float tolerance);
// Reduces a stretch to the points that its shape needs (Ramer, 1972; Douglas and Peucker, 1973): how far a
// point lies off is measured on time * timeScale and value * valueScale. The number taken out.
int simplify(Project& project, int lane, double from, double to, double timeScale, double valueScale,
             double tolerance);

// Draws a line from (t0, v0) to (t1, v1). What the Lane read just before and just after stays, with jumps.
// False for numbers that are not finite or fall, and without room.
bool writeSegment(Project& project, int lane, double t0, double t1, float v0, float v1);

}  // namespace synth::automation
