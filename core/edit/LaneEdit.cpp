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

// The free row to claim. On a Track the Engine's four like their own slots, the others the slots behind.
int freeRow(const Project& p, int row, int target) {
  const Rows rows = rowsOf(row);
  const bool engine = target <= automation::ENGINE_4;
  for (int n = 0; n < rows.count; n++) {
    int slot = n;
    if (row >= 0 && row < firstBusRow) slot = engine ? (target + n) % rows.count : (4 + n) % rows.count;
    if (!laneInUse(p.lanes[rows.first + slot])) return rows.first + slot;
  }
  return -1;
}

bool onSong(double time) { return std::isfinite(time) && time >= 0 && time * 16 <= limits::lanePosition; }

// Runs an edit of an existing Lane's points; `refused` is what its false means.
template <class Edit>
Result onLane(Project& p, int row, int target, const char* refused, Edit edit) {
  const int lane = laneFor(p, row, target);
  if (lane < 0) return Result::failed("No such lane");
  return edit(lane) ? Result::done() : Result::failed(refused);
}

bool hasPoints(const Project& p, int lane, std::span<const int> points) {
  const int count = p.lanes[lane].count;
  return !points.empty() &&
         std::all_of(points.begin(), points.end(), [&](int i) { return i >= 0 && i < count; });
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
  if (const Result fits = checkTarget(p, row, target); !fits) return fits;
  lane = laneFor(p, row, target);
  if (lane >= 0) {
    if (p.lanes[lane].enabled) return Result::nothing();
    p.lanes[lane].enabled = 1;
    return Result::done();
  }
  lane = freeRow(p, row, target);
  if (lane < 0)
    return Result::failed(row == masterRow    ? "All twelve master lanes are in use"
                          : row < firstBusRow ? "All eight lanes of this track are in use"
                                              : "All eight lanes of this row are in use");
  p.lanes[lane].enabled = 1;
  p.lanes[lane].target = u8(target + 1);
  return Result::done();
}

Result drawLane(Project& p, int row, int target, double t0, double v0, double t1, double v1) {
  if (!onSong(t0) || !onSong(t1) || t1 < t0 || !std::isfinite(v0) || !std::isfinite(v1))
    return Result::failed("Invalid lane point");
  const bool fresh = laneFor(p, row, target) < 0;
  int lane = -1;
  if (const Result claimed = claimLane(p, row, target, lane); !claimed) return claimed;
  if (automation::writeSegment(p, lane, t0, t1, float(v0), float(v1))) return Result::done();
  if (fresh) clearLane(p, lane);
  return Result::failed("Project full");
}

Result clearLaneOf(Project& p, int row, int target) {
  return onLane(p, row, target, "No such lane", [&](int lane) {
    clearLane(p, lane);
    return true;
  });
}

Result addPoint(Project& p, int row, int target, double time, double value, int& index) {
  if (!std::isfinite(time) || time < 0 || !std::isfinite(value)) return Result::failed("Invalid lane point");
  if (!onSong(time)) return Result::failed("Past the Song's end");
  const bool fresh = laneFor(p, row, target) < 0;
  int lane = -1;
  if (const Result claimed = claimLane(p, row, target, lane); !claimed) return claimed;
  const u32 position = u32(std::lround(time * 16));
  const auto points = lanePoints(p, lane);
  const auto there =
      std::count_if(points.begin(), points.end(), [&](const LanePoint& q) { return q.position == position; });
  if (there >= 2) return Result::failed("Two points are on this time already");
  index = automation::insertPoint(p, lane, position, float(value));
  if (index >= 0) return Result::done();
  if (fresh) clearLane(p, lane);
  return Result::failed("Project full");
}

Result moveLanePoints(Project& p, int row, int target, std::span<const int> points, double deltaTime,
                      double deltaValue) {
  const int lane = laneFor(p, row, target);
  if (lane < 0 || !hasPoints(p, lane, points)) return Result::failed("No such point");
  if (!std::isfinite(deltaTime) || std::fabs(deltaTime) > 2e6 || !std::isfinite(deltaValue))
    return Result::failed("Invalid lane point");
  const bool moved =
      automation::movePoints(p, lane, points, i64(std::llround(deltaTime * 16)), float(deltaValue));
  return moved ? Result::done() : Result::nothing();
}

Result deleteLanePoints(Project& p, int row, int target, std::span<const int> points) {
  const int lane = laneFor(p, row, target);
  if (lane < 0 || !hasPoints(p, lane, points)) return Result::failed("No such point");
  return automation::deletePoints(p, lane, points) ? Result::done() : Result::failed("No such point");
}

Result setRest(Project& p, int row, int target, std::span<const int> set, bool rest) {
  const int lane = laneFor(p, row, target);
  if (lane < 0 || !hasPoints(p, lane, set)) return Result::failed("No such point");
  const auto before = lanePoints(p, lane);
  std::vector<LanePoint> points(before.begin(), before.end());
  bool changed = false;
  for (const int i : set) {
    LanePoint& point = points[size_t(i)];
    if (point.rest == rest) continue;
    // A span that sounds again takes up the value that led into it.
    point.value = rest || i == 0 ? 0 : points[size_t(i - 1)].value;
    point.rest = rest;
    changed = true;
  }
  if (!changed) return Result::nothing();
  return setLanePoints(p, lane, points.data(), int(points.size()))
             ? Result::done()
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
    bands[k] = std::clamp(base[k] + delta * share * share, -24.0f, 24.0f);
  }
}

}  // namespace synth::workspace
