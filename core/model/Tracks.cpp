#include "core/model/Tracks.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "core/model/Arena.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"

namespace synth {
namespace {

struct Lane {
  LaneRow row;
  std::vector<LanePoint> points;
};

std::vector<Lane> takeLanes(const Project& p) {
  std::vector<Lane> lanes(limits::lanes);
  for (int r = 0; r < limits::lanes; r++) {
    auto points = lanePoints(p, r);
    lanes[size_t(r)] = {p.lanes[r], {points.begin(), points.end()}};
  }
  return lanes;
}

void layLanes(Project& p, const std::vector<Lane>& lanes) {
  size_t next = 0;
  for (int r = 0; r < limits::lanes; r++) {
    const Lane& lane = lanes[size_t(r)];
    p.lanes[r] = lane.row;
    p.lanes[r].first = u16(next);
    p.lanes[r].count = u16(lane.points.size());
    std::copy(lane.points.begin(), lane.points.end(), p.lanePoints + next);
    next += lane.points.size();
  }
  p.lanePointCount = u16(next);
  arena::fillTail(p.lanePoints, next);
}

template <class Row>
void dropTrack(std::vector<Row>& rows, int track) {
  std::erase_if(rows, [&](const Row& row) { return row.track == track; });
}

// The rows of `to` replaced by copies of those of `from`.
template <class Row>
std::vector<Row> withCopies(const Row* rows, size_t count, int from, int to) {
  std::vector<Row> out(rows, rows + count);
  dropTrack(out, to);
  for (size_t i = 0; i < count; i++)
    if (rows[i].track == from) {
      out.push_back(rows[i]);
      out.back().track = u8(to);
    }
  return out;
}

template <class Row, class Count, size_t N>
void store(Row (&rows)[N], Count& count, const std::vector<Row>& fresh) {
  std::copy(fresh.begin(), fresh.end(), rows);
  count = Count(fresh.size());
}

}  // namespace

bool trackHasContent(const Project& p, int track) {
  if (track < 0 || track >= limits::tracks) return false;
  for (int i = 0; i < p.noteCount; i++)
    if (p.notes[i].track == track) return true;
  for (int s = 0; s < limits::lanesPerOwner; s++)
    if (laneInUse(p.lanes[laneRow(track, s)])) return true;
  return false;
}

void clearArrangement(Project& p) {
  p.patternCount = p.clipCount = p.noteCount = p.lanePointCount = 0;
  p.markerCount = 0;
  arena::fillTail(p.patterns, 0);
  arena::fillTail(p.clips, 0);
  arena::fillTail(p.notes, 0);
  arena::fillTail(p.lanes, 0);
  arena::fillTail(p.lanePoints, 0);
  arena::fillTail(p.markers, 0);
  p.loopStart = p.loopEnd = 0;
}

void clearTrack(Project& p, int track, bool lanes) {
  if (track < 0 || track >= limits::tracks) return;
  auto own = [&](const auto& row) { return row.track == track; };
  arena::removeIf(p.notes, p.noteCount, own);
  arena::removeIf(p.clips, p.clipCount, own);
  arena::removeIf(p.patterns, p.patternCount, own);
  if (lanes)
    for (int s = 0; s < limits::lanesPerOwner; s++) clearLane(p, laneRow(track, s));
}

bool copyTrack(Project& p, int from, int to) {
  if (from < 0 || from >= limits::tracks || to < 0 || to >= limits::tracks) return false;
  if (from == to) return true;
  auto patterns = withCopies(p.patterns, p.patternCount, from, to);
  auto clips = withCopies(p.clips, p.clipCount, from, to);
  auto notes = withCopies(p.notes, p.noteCount, from, to);
  auto lanes = takeLanes(p);
  size_t points = 0;
  for (int s = 0; s < limits::lanesPerOwner; s++)
    lanes[size_t(laneRow(to, s))] = lanes[size_t(laneRow(from, s))];
  for (const Lane& lane : lanes) points += lane.points.size();
  if (patterns.size() > limits::patterns || clips.size() > limits::clips || notes.size() > limits::notes ||
      points > limits::lanePoints)
    return false;
  p.tracks[to] = p.tracks[from];
  store(p.patterns, p.patternCount, patterns);
  store(p.clips, p.clipCount, clips);
  store(p.notes, p.noteCount, notes);
  layLanes(p, lanes);
  canonical(p);
  return true;
}

bool remapTracks(Project& p, const int (&map)[limits::tracks]) {
  bool taken[limits::tracks] = {};
  for (int to : map) {
    if (to < -1 || to >= limits::tracks || (to >= 0 && taken[to])) return false;
    if (to >= 0) taken[to] = true;
  }
  auto old = std::vector<Track>(p.tracks, p.tracks + limits::tracks);
  auto lanes = takeLanes(p), oldLanes = lanes;
  for (int t = 0; t < limits::tracks; t++) {
    if (!taken[t]) p.tracks[t] = starterTrack(t);
    for (int s = 0; s < limits::lanesPerOwner; s++) lanes[size_t(laneRow(t, s))] = {};
  }
  for (int t = 0; t < limits::tracks; t++) {
    if (map[t] < 0) continue;
    Track& track = p.tracks[map[t]];
    track = old[size_t(t)];
    const int source = map[track.duck_source / 9];
    track.duck_source = source < 0 ? 0 : u8(source * 9 + track.duck_source % 9);
    for (int s = 0; s < limits::lanesPerOwner; s++)
      lanes[size_t(laneRow(map[t], s))] = oldLanes[size_t(laneRow(t, s))];
  }
  layLanes(p, lanes);
  auto dropped = [&](const auto& row) { return map[row.track] < 0; };
  arena::removeIf(p.patterns, p.patternCount, dropped);
  arena::removeIf(p.clips, p.clipCount, dropped);
  arena::removeIf(p.notes, p.noteCount, dropped);
  for (int i = 0; i < p.patternCount; i++) p.patterns[i].track = u8(map[p.patterns[i].track]);
  for (int i = 0; i < p.clipCount; i++) p.clips[i].track = u8(map[p.clips[i].track]);
  for (int i = 0; i < p.noteCount; i++) p.notes[i].track = u8(map[p.notes[i].track]);
  canonical(p);
  return true;
}

void canonical(Project& p) {
  auto sort = [](auto* rows, size_t count, auto key) {
    std::stable_sort(rows, rows + count, [&](auto& a, auto& b) { return key(a) < key(b); });
  };
  sort(p.patterns, p.patternCount, [](const PatternRec& r) { return std::tuple(r.track, r.id); });
  sort(p.clips, p.clipCount, [](const ClipRec& r) { return std::tuple(r.track, r.start); });
  sort(p.notes, p.noteCount, [](const NoteRec& r) { return std::tuple(r.track, r.pattern, r.step, r.slot); });
  sort(p.markers, p.markerCount, [](const MarkerRec& r) { return r.step; });
  layLanes(p, takeLanes(p));
  arena::fillTail(p.patterns, p.patternCount);
  arena::fillTail(p.clips, p.clipCount);
  arena::fillTail(p.notes, p.noteCount);
  arena::fillTail(p.markers, p.markerCount);
}

}  // namespace synth
