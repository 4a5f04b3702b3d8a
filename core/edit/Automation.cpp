#include "core/edit/Automation.h"

#include <algorithm>
#include <cmath>

#include "core/model/Lanes.h"

namespace synth::automation {
namespace {

using Points = std::vector<LanePoint>;

bool known(int lane) { return lane >= 0 && lane < limits::lanes; }

Points pointsOf(const Project& p, int lane) {
  const auto points = lanePoints(p, lane);
  return {points.begin(), points.end()};
}
bool store(Project& p, int lane, const Points& points) {
  return setLanePoints(p, lane, points.data(), int(points.size()));
}

u16 bits(float value) { return u16(std::lround(std::clamp(value, 0.0f, 1.0f) * 65535.0)); }

LanePoint pointAt(u32 position, float value) {
  LanePoint point;
  point.position = position;
  point.rest = std::isnan(value);
  if (!point.rest) point.value = bits(value);
  return point;
}

bool validSet(const Points& all, std::span<const int> points) {
  if (points.empty()) return false;
  for (size_t i = 0; i < points.size(); i++)
    if (points[i] < 0 || size_t(points[i]) >= all.size() || (i && points[i] <= points[i - 1])) return false;
  return true;
}

}  // namespace

bool setBreakpoints(Project& p, int lane, const double* times, const float* values, int count) {
  if (count < 0) return false;
  Points points;
  for (int i = 0; i < count; i++) {
    const double position = std::round(times[i] * 16);
    if (!(position >= 0 && position <= limits::lanePosition)) return false;
    points.push_back(pointAt(u32(position), values[i]));
  }
  return store(p, lane, points);
}

int insertPoint(Project& p, int lane, u32 time, float value) {
  if (!known(lane) || time > limits::lanePosition || !std::isfinite(value)) return -1;
  Points points = pointsOf(p, lane);
  auto at = std::upper_bound(points.begin(), points.end(), time,
                             [](u32 t, const LanePoint& point) { return t < point.position; });
  const long index = at - points.begin();
  if (index >= 2 && points[size_t(index - 2)].position == time) return -1;
  points.insert(at, pointAt(time, value));
  return store(p, lane, points) ? int(index) : -1;
}

// ---- Sets of points.

i64 clampShift(const Project& p, int lane, std::span<const int> set, i64 delta) {
  if (!known(lane)) return 0;
  const auto points = lanePoints(p, lane);
  if (!validSet({points.begin(), points.end()}, set)) return 0;
  i64 least = -i64(limits::lanePosition), most = limits::lanePosition;
  for (size_t i = 0; i < set.size(); i++) {
    const int at = set[i];
    const i64 position = points[size_t(at)].position;
    const bool leftMoves = i > 0 && set[i - 1] == at - 1;
    const bool rightMoves = i + 1 < set.size() && set[i + 1] == at + 1;
    const i64 left = at == 0 ? 0 : i64(points[size_t(at - 1)].position);
    const i64 right =
        size_t(at + 1) == points.size() ? i64(limits::lanePosition) : i64(points[size_t(at + 1)].position);
    if (!leftMoves || at == 0) least = std::max(least, left - position);
    if (!rightMoves || size_t(at + 1) == points.size()) most = std::min(most, right - position);
  }
  return std::clamp(delta, std::min<i64>(least, 0), std::max<i64>(most, 0));
}

bool movePoints(Project& p, int lane, std::span<const int> set, i64 delta, float value) {
  if (!known(lane) || !std::isfinite(value)) return false;
  Points points = pointsOf(p, lane);
  if (!validSet(points, set)) return false;
  const Points before = points;
  i64 shift = clampShift(p, lane, set, delta);
  // A point that would be the third on one time stops short of it.
  for (;; shift -= shift > 0 ? 1 : -1) {
    points = before;
    for (int at : set) {
      LanePoint& point = points[size_t(at)];
      point.position = u32(i64(point.position) + shift);
      if (!point.rest) point.value = bits(float(point.value) / 65535 + value);
    }
    if (store(p, lane, points) || shift == 0) break;
  }
  const auto after = lanePoints(p, lane);
  return !std::equal(before.begin(), before.end(), after.begin(),
                     [](const LanePoint& a, const LanePoint& b) { return sameBytes(a, b); });
}

bool deletePoints(Project& p, int lane, std::span<const int> set) {
  if (!known(lane)) return false;
  Points points = pointsOf(p, lane);
  if (!validSet(points, set)) return false;
  for (size_t i = set.size(); i-- > 0;) points.erase(points.begin() + set[i]);
  return store(p, lane, points);
}

// ---- Fewer points.

int thin(Project& p, int lane, double from, double to, float tolerance) {
  if (!known(lane) || !(from <= to) || !(tolerance >= 0)) return 0;
  Points points = pointsOf(p, lane);
  const size_t before = points.size();
  for (size_t i = 1; i + 1 < points.size();) {
    const LanePoint &left = points[i - 1], &here = points[i], &right = points[i + 1];
    const double at = here.position / 16.0;
    const bool jump = here.position == left.position || here.position == right.position;
    if (at < from || at > to || jump || left.rest || here.rest || right.rest) {
      i++;
      continue;
    }
    const double share = (double(here.position) - left.position) / (double(right.position) - left.position);
    const double expected = left.value + share * (double(right.value) - left.value);
    // A long smooth ramp bears more: its points stand a Step apart or further.
    const double allowed = tolerance * 65535.0 * (here.position - left.position >= 16 ? 2 : 1);
    if (std::fabs(here.value - expected) <= allowed)
      points.erase(points.begin() + long(i));
    else
      i++;
  }
  if (points.size() < before) store(p, lane, points);
  return int(before - points.size());
}

namespace {

struct Scale {
  double time, value;
};

// How far a point lies from the line between two others.
double distance(const LanePoint& point, const LanePoint& a, const LanePoint& b, Scale s) {
  const double ax = a.position * s.time, ay = a.value * s.value;
  const double bx = b.position * s.time - ax, by = b.value * s.value - ay;
  const double px = point.position * s.time - ax, py = point.value * s.value - ay;
  auto norm = [](double x, double y) { return std::sqrt(x * x + y * y); };
  const double length = norm(bx, by);
  if (length == 0) return norm(px, py);
  const double along = std::clamp((px * bx + py * by) / (length * length), 0.0, 1.0);
  return norm(px - along * bx, py - along * by);
}

// Marks what the shape between two kept points needs.
void keepShape(const Points& points, size_t first, size_t last, Scale scale, double tolerance,
               std::vector<bool>& keep) {
  std::vector<std::pair<size_t, size_t>> open = {{first, last}};
  while (!open.empty()) {
    const auto [a, b] = open.back();
    open.pop_back();
    double most = tolerance;
    size_t farthest = a;
    for (size_t i = a + 1; i < b; i++) {
      const double d = distance(points[i], points[a], points[b], scale);
      if (d > most) {
        most = d;
        farthest = i;
      }
    }
    if (farthest == a) continue;
    keep[farthest] = true;
    open.push_back({a, farthest});
    open.push_back({farthest, b});
  }
}

}  // namespace

int simplify(Project& p, int lane, double from, double to, double timeScale, double valueScale,
             double tolerance) {
  if (!known(lane) || !(from <= to) || !(timeScale > 0) || !(valueScale > 0) || !(tolerance >= 0)) return 0;
  const Points points = pointsOf(p, lane);
  auto inside = [&](const LanePoint& point) {
    return point.position / 16.0 >= from && point.position / 16.0 <= to;
  };
  std::vector<size_t> anchors;  // the ends of the stretch and everything that rests
  std::vector<bool> keep(points.size(), true);
  for (size_t i = 0; i < points.size(); i++) {
    if (!inside(points[i])) continue;
    const bool end = i == 0 || i + 1 == points.size() || !inside(points[i - 1]) || !inside(points[i + 1]);
    if (end || points[i].rest)
      anchors.push_back(i);
    else
      keep[i] = false;
  }
  const Scale scale{timeScale / 16, valueScale / 65535};
  for (size_t k = 0; k + 1 < anchors.size(); k++)
    keepShape(points, anchors[k], anchors[k + 1], scale, tolerance, keep);
  Points kept;
  for (size_t i = 0; i < points.size(); i++)
    if (keep[i]) kept.push_back(points[i]);
  if (kept.size() == points.size() || !store(p, lane, kept)) return 0;
  return int(points.size() - kept.size());
}

bool writeSegment(Project& p, int lane, double t0, double t1, float v0, float v1) {
  const bool finite = std::isfinite(t0) && std::isfinite(t1) && std::isfinite(v0) && std::isfinite(v1);
  if (!known(lane) || !finite || t0 < 0 || t1 < t0 || t1 > 1e12) return false;
  const double end = limits::lanePosition;
  u32 from = u32(std::min(std::round(t0 * 16), end)), to = u32(std::min(std::round(t1 * 16), end));
  if (to <= from) to = from + 1;
  if (to > limits::lanePosition) {
    to = u32(limits::lanePosition);
    from = to - 1;
  }
  const float before = laneValueBefore(p, lane, from / 16.0), after = laneValueAt(p, lane, to / 16.0);
  const Points points = pointsOf(p, lane);
  Points now;
  bool earlier = false;
  for (const LanePoint& point : points)
    if (point.position < from) {
      now.push_back(point);
      earlier = true;
    }
  auto differs = [](float a, float b) {
    return std::isnan(a) != std::isnan(b) || (!std::isnan(a) && bits(a) != bits(b));
  };
  const bool later =
      std::any_of(points.begin(), points.end(), [to](const LanePoint& q) { return q.position > to; });
  // The line that led here ends where it was; what follows goes on from where it will be.
  if (!points.empty() && (earlier || !std::isnan(before)) && differs(before, v0))
    now.push_back(pointAt(from, before));
  now.push_back(pointAt(from, v0));
  now.push_back(pointAt(to, v1));
  if (!points.empty() && (later || !std::isnan(after)) && differs(after, v1))
    now.push_back(pointAt(to, after));
  for (const LanePoint& point : points)
    if (point.position > to) now.push_back(point);
  return store(p, lane, now);
}

}  // namespace synth::automation
