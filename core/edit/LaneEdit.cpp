#include "core/edit/LaneEdit.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/edit/Automation.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"

namespace synth::workspace {
namespace {

using edit::Result;

constexpr int firstBusRow = limits::tracks, busRows = 3;

struct Rows {
  int first = 0, count = 0;
};
Rows rowsOf(int row) {
  if (row == masterRow) return {limits::firstMasterLane, limits::masterLanes};
  return {laneRow(row, 0), limits::lanesPerOwner};
}
bool known(int row) { return row == masterRow || (row >= 0 && row < firstBusRow + busRows); }

Result checkTarget(const Project& p, int row, int target) {
  const Result none = Result::failed("No such lane");
  if (!known(row)) return none;
  if (row == masterRow)
    return target >= 0 && target < automation::performanceEffects ? Result::nothing() : none;
  if (row >= firstBusRow) {
    const bool fits = automation::isBusTarget(target) && automation::busOf(target) == row - firstBusRow;
    return fits ? Result::nothing() : none;
  }
  const Track& track = p.tracks[row];
  if (isDrums(track) && target >= automation::ENGINE_1 && target <= automation::ENGINE_4)
    return Result::failed("A Drums track has no Engine parameters");
  if (automation::isMacroTarget(target))
    return target - automation::firstMacroTarget < track.macroCount ? Result::nothing() : none;
  return automation::isTrackTarget(target) && automation::laneable(target, isDrums(track)) ? Result::nothing()
                                                                                           : none;
}

// The free row to claim. On a Track the Engine's four have their own slots and the others the slots behind;
// they take those of others only when their own are gone.
int freeRow(const Project& p, int row, int target) {
  const Rows rows = rowsOf(row);
  auto freeOf = [&](int slot) { return !laneInUse(p.lanes[rows.first + slot]); };
  const bool track = row >= 0 && row < firstBusRow;
  if (track && target <= automation::ENGINE_4 && freeOf(target)) return rows.first + target;
  for (int n = 0; n < rows.count; n++) {
    const int slot = track ? (4 + n) % rows.count : n;
    if (freeOf(slot)) return rows.first + slot;
  }
  return -1;
}

// The row that carries the target, or the one that it may have; nothing is changed yet.
Result placeOf(const Project& p, int row, int target, int& lane) {
  if (const Result fits = checkTarget(p, row, target); !fits) return fits;
  lane = laneFor(p, row, target);
  if (lane < 0) lane = freeRow(p, row, target);
  if (lane >= 0) return Result::nothing();
  return Result::failed(row == masterRow    ? "All twelve master lanes are in use"
                        : row < firstBusRow ? "All eight lanes of this track are in use"
                                            : "All eight lanes of this row are in use");
}

void take(Project& p, int lane, int target) {
  p.lanes[lane].enabled = 1;
  p.lanes[lane].target = u8(target + 1);
}

bool onSong(double time) { return std::isfinite(time) && time >= 0 && time * 16 <= limits::lanePosition; }

// A set of points in rising order, each once; empty when one of them does not exist.
std::vector<int> chosen(const Project& p, int lane, std::span<const int> points) {
  std::vector<int> set(points.begin(), points.end());
  std::sort(set.begin(), set.end());
  set.erase(std::unique(set.begin(), set.end()), set.end());
  if (lane < 0 || set.empty() || set.front() < 0 || set.back() >= p.lanes[lane].count) set.clear();
  return set;
}

bool together(std::span<const LanePoint> points, size_t i, size_t k) {
  return i < points.size() && k < points.size() && points[i].position == points[k].position;
}
// Whether the point ends at a rest of the same time.
bool hasTwin(std::span<const LanePoint> points, size_t i) {
  return together(points, i, i + 1) && !points[i].rest && points[i + 1].rest;
}

}  // namespace

int laneFor(const Project& p, int row, int target) {
  if (!known(row) || target < 0) return -1;
  const Rows rows = rowsOf(row);
  for (int lane = rows.first; lane < rows.first + rows.count; lane++)
    if (p.lanes[lane].target == target + 1) return lane;
  return -1;
}

Result claimLane(Project& p, int row, int target, int& lane) {
  if (const Result placed = placeOf(p, row, target, lane); !placed) return placed;
  if (p.lanes[lane].enabled && p.lanes[lane].target == target + 1) return Result::nothing();
  take(p, lane, target);
  return Result::done();
}

Result drawLane(Project& p, int row, int target, double t0, double v0, double t1, double v1) {
  if (!onSong(t0) || !onSong(t1) || t1 < t0 || !std::isfinite(v0) || !std::isfinite(v1))
    return Result::failed("Invalid lane point");
  int lane = -1;
  if (const Result placed = placeOf(p, row, target, lane); !placed) return placed;
  if (!automation::writeSegment(p, lane, t0, t1, float(v0), float(v1))) return Result::failed("Project full");
  take(p, lane, target);
  return Result::done();
}

Result clearLane(Project& p, int row, int target) {
  const int lane = laneFor(p, row, target);
  if (lane < 0) return Result::failed("No such lane");
  synth::clearLane(p, lane);
  return Result::done();
}

Result addPoint(Project& p, int row, int target, double time, double value, int& index) {
  if (!std::isfinite(time) || time < 0 || !std::isfinite(value)) return Result::failed("Invalid lane point");
  if (!onSong(time)) return Result::failed("Past the Song's end");
  int lane = -1;
  if (const Result placed = placeOf(p, row, target, lane); !placed) return placed;
  const u32 position = u32(std::lround(time * 16));
  const auto points = lanePoints(p, lane);
  const auto there =
      std::count_if(points.begin(), points.end(), [&](const LanePoint& q) { return q.position == position; });
  if (there >= 2) return Result::failed("Two points are on this time already");
  const int at = automation::insertPoint(p, lane, position, float(value));
  if (at < 0) return Result::failed("Project full");
  index = at;
  take(p, lane, target);
  return Result::done();
}

Result movePoints(Project& p, int row, int target, std::span<const int> points, double deltaTime,
                  double deltaValue) {
  const int lane = laneFor(p, row, target);
  const std::vector<int> set = chosen(p, lane, points);
  if (set.empty()) return Result::failed("No such point");
  if (!std::isfinite(deltaTime) || std::fabs(deltaTime) > 2e6 || !std::isfinite(deltaValue))
    return Result::failed("Invalid lane point");
  const bool moved =
      automation::movePoints(p, lane, set, i64(std::llround(deltaTime * 16)), float(deltaValue));
  return moved ? Result::done() : Result::nothing();
}

Result deletePoints(Project& p, int row, int target, std::span<const int> points) {
  const int lane = laneFor(p, row, target);
  const std::vector<int> set = chosen(p, lane, points);
  const bool gone = !set.empty() && automation::deletePoints(p, lane, set);
  return gone ? Result::done() : Result::failed("No such point");
}

namespace {

// The point, followed by a rest at its time, so that the line that leads to it stays. False where two points
// stand there already.
bool addResting(std::span<const LanePoint> before, size_t i, std::vector<LanePoint>& now) {
  now.push_back(before[i]);
  if (before[i].rest || hasTwin(before, i)) return true;
  if (together(before, i, i + 1) || (i && together(before, i, i - 1))) return false;
  now.push_back({before[i].position, 0, 1, 0});
  return true;
}

// The point without the rest: one that stands for itself takes up the value that led into it.
void addSounding(std::span<const LanePoint> before, size_t i, std::vector<LanePoint>& now) {
  const LanePoint& point = before[i];
  if (!point.rest)
    now.push_back(point);
  else if (i == 0 || !hasTwin(before, i - 1))
    now.push_back({point.position, i ? before[i - 1].value : u16(0), 0, 0});
}

}  // namespace

Result setRest(Project& p, int row, int target, std::span<const int> points, bool rest) {
  const int lane = laneFor(p, row, target);
  const std::vector<int> set = chosen(p, lane, points);
  if (set.empty()) return Result::failed("No such point");
  const auto before = lanePoints(p, lane);
  std::vector<LanePoint> now;
  for (size_t i = 0; i < before.size(); i++) {
    const bool asked = std::binary_search(set.begin(), set.end(), int(i));
    const bool twinOfAsked =
        i && hasTwin(before, i - 1) && std::binary_search(set.begin(), set.end(), int(i) - 1);
    if (rest && asked) {
      if (!addResting(before, i, now)) return Result::failed("No room for more points");
    } else if (!rest && (asked || twinOfAsked)) {
      addSounding(before, i, now);
    } else {
      now.push_back(before[i]);
    }
  }
  const bool same = std::equal(before.begin(), before.end(), now.begin(), now.end(),
                               [](const LanePoint& a, const LanePoint& b) { return sameBytes(a, b); });
  if (same) return Result::nothing();
  return setLanePoints(p, lane, now.data(), int(now.size())) ? Result::done()
                                                             : Result::failed("No room for more points");
}

Result simplifyLane(Project& p, int row, int target, double from, double to, double timeScale,
                    double valueScale, double tolerance) {
  const int lane = laneFor(p, row, target);
  if (lane < 0) return Result::failed("No such lane");
  return automation::simplify(p, lane, from, to, timeScale, valueScale, tolerance) > 0 ? Result::done()
                                                                                       : Result::nothing();
}

void bendEq(float (&bands)[10], const float (&base)[10], u32 mask, int band, float delta) {
  for (int k = 0; k < 10; k++) {
    bands[k] = base[k];
    if (mask >> k & 1) continue;
    const float away = float(std::abs(k - band)), share = std::max(0.0f, 1 - away / 4);
    bands[k] = std::clamp(base[k] + delta * share, -24.0f, 24.0f);
  }
}

}  // namespace synth::workspace
