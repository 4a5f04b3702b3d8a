#include "core/model/Lanes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/model/Arena.h"

namespace synth {
namespace {

constexpr f32 none = std::numeric_limits<f32>::quiet_NaN();

f32 valueOf(const LanePoint& point) { return f32(point.value) / 65535.0f; }

f32 valueAround(const Project& p, int row, double time, bool pointCountsAsPast) {
  if (!std::isfinite(time) || row < 0 || row >= limits::lanes) return none;
  auto points = lanePoints(p, row);
  const double position = time * 16;
  auto it = std::partition_point(points.begin(), points.end(), [&](const LanePoint& point) {
    return pointCountsAsPast ? point.position <= position : point.position < position;
  });
  return readLane(points, size_t(it - points.begin()), position);
}

bool wellFormed(const LanePoint* points, int count) {
  for (int i = 0; i < count; i++) {
    const LanePoint& point = points[i];
    if (point.position > limits::lanePosition || point.reserved || point.rest > 1 ||
        (point.rest && point.value))
      return false;
    if (i && points[i].position < points[i - 1].position) return false;
    if (i > 1 && points[i].position == points[i - 2].position) return false;
  }
  return true;
}

}  // namespace

bool laneInUse(const LaneRow& row) { return row.enabled || row.target || row.count; }

std::span<const LanePoint> lanePoints(const Project& p, int row) {
  if (row < 0 || row >= limits::lanes) return {};
  return {p.lanePoints + p.lanes[row].first, p.lanes[row].count};
}

bool setLanePoints(Project& p, int row, const LanePoint* points, int count) {
  if (row < 0 || row >= limits::lanes || count < 0 || !wellFormed(points, count)) return false;
  LaneRow& lane = p.lanes[row];
  const int change = count - lane.count;
  if (p.lanePointCount + change > limits::lanePoints) return false;
  arena::replace(p.lanePoints, p.lanePointCount, lane.first, lane.count,
                 std::span<const LanePoint>(points, size_t(count)));
  lane.count = u16(count);
  for (int r = row + 1; r < limits::lanes; r++) p.lanes[r].first = u16(p.lanes[r].first + change);
  return true;
}

void clearLane(Project& p, int row) {
  if (row < 0 || row >= limits::lanes) return;
  setLanePoints(p, row, nullptr, 0);
  p.lanes[row].enabled = 0;
  p.lanes[row].target = 0;
}

f32 readLane(std::span<const LanePoint> points, size_t after, double position) {
  if (points.empty()) return none;
  if (after == 0) return points[0].rest ? none : valueOf(points[0]);
  const LanePoint& from = points[after - 1];
  if (after == points.size()) return from.rest ? none : valueOf(from);
  const LanePoint& to = points[after];
  if (to.position == from.position) return to.rest ? none : valueOf(to);
  if (from.rest) return none;
  if (to.rest) return valueOf(from);
  const double share = (position - from.position) / (double(to.position) - from.position);
  return f32((from.value + (double(to.value) - from.value) * share) / 65535.0);
}

f32 laneValueAt(const Project& p, int row, double time) { return valueAround(p, row, time, true); }
f32 laneValueBefore(const Project& p, int row, double time) { return valueAround(p, row, time, false); }

f32 laneValue(const Project& p, int row, double time, f32 fallback) {
  const f32 value = laneValueAt(p, row, time);
  if (!std::isnan(value)) return value;
  return std::isfinite(fallback) ? std::clamp(fallback, 0.0f, 1.0f) : 0;
}

}  // namespace synth
