#include <algorithm>
#include <cstring>
#include <tuple>
#include <vector>

#include "core/model/Lanes.h"
#include "core/model/Patterns.h"
#include "core/model/Validate.h"
#include "core/params/Targets.h"

namespace synth {
namespace {

template <class Row, size_t N>
bool tailIsDefault(const Row (&rows)[N], size_t from) {
  const Row fresh;
  for (size_t i = from; i < N; i++)
    if (std::memcmp(&rows[i], &fresh, sizeof(Row)) != 0) return false;
  return true;
}

const char* countFault(const Project& p) {
  if (p.patternCount > limits::patterns || p.clipCount > limits::clips || p.noteCount > limits::notes ||
      p.lanePointCount > limits::lanePoints || p.markerCount > limits::markers)
    return "Arena over its ceiling";
  if (!tailIsDefault(p.patterns, p.patternCount)) return "Pattern arena tail not zero";
  if (!tailIsDefault(p.clips, p.clipCount)) return "Clip arena tail not zero";
  if (!tailIsDefault(p.notes, p.noteCount)) return "Note arena tail not zero";
  if (!tailIsDefault(p.lanePoints, p.lanePointCount)) return "Lane point arena tail not zero";
  if (!tailIsDefault(p.markers, p.markerCount)) return "Marker arena tail not zero";
  return nullptr;
}

const char* patternFault(const Project& p) {
  for (int i = 0; i < p.patternCount; i++) {
    const PatternRec& r = p.patterns[i];
    if (r.track >= limits::tracks || r.isFront > 1 || (r.isFront && r.frontId) || r.length < 1 ||
        r.length > limits::patternLength)
      return "Invalid Pattern";
  }
  for (int i = 1; i < p.patternCount; i++) {
    const PatternRec &a = p.patterns[i - 1], &b = p.patterns[i];
    if (std::tuple(a.track, a.id) >= std::tuple(b.track, b.id)) return "Patterns out of order";
  }
  return nullptr;
}

// Sets `played[row]` for each Pattern row that has a Clip.
const char* clipFault(const Project& p, std::vector<bool>& played) {
  for (int i = 0; i < p.clipCount; i++) {
    const ClipRec& c = p.clips[i];
    if (c.track >= limits::tracks || c.repeats > 1 || c.reserved || c.length == 0 ||
        c.start >= limits::songSteps || c.length > limits::songSteps - c.start)
      return "Invalid Clip";
    const int row = patternIndex(p, c.track, c.pattern);
    if (row < 0) return "Clip of a missing Pattern";
    if (c.offset >= p.patterns[row].length) return "Clip offset outside its Pattern";
    if (p.patterns[row].isFront) return "Clip of a Pattern's front";
    if (!c.repeats && c.offset + c.length > p.patterns[row].length)
      return "Clip without Repeats past its loop";
    played[size_t(row)] = true;
  }
  for (int i = 1; i < p.clipCount; i++) {
    const ClipRec &a = p.clips[i - 1], &b = p.clips[i];
    if (std::tuple(a.track, a.start) >= std::tuple(b.track, b.start)) return "Clips out of order";
    if (a.track == b.track && a.start + a.length > b.start) return "Clips overlap";
  }
  return nullptr;
}

const char* frontFault(const Project& p, const std::vector<bool>& played) {
  std::vector<int> owners(p.patternCount, 0);
  for (int i = 0; i < p.patternCount; i++) {
    const PatternRec& r = p.patterns[i];
    if (!r.frontId) continue;
    const int front = patternIndex(p, r.track, r.frontId - 1);
    if (front < 0 || !p.patterns[front].isFront) return "Pattern's front missing";
    owners[size_t(front)]++;
  }
  for (int i = 0; i < p.patternCount; i++)
    if (p.patterns[i].isFront && owners[size_t(i)] != 1) return "A front without its Pattern";
  for (int i = 0; i < p.patternCount; i++)
    if (!p.patterns[i].isFront && !played[size_t(i)]) return "Pattern without a Clip";
  return nullptr;
}

bool locksHold(const NoteRec& note, bool drums) {
  bool ended = false;
  for (int i = 0; i < limits::locks; i++) {
    const LockRec& lock = note.locks[i];
    if (lock.reserved) return false;
    if (!lock.target) {
      ended = true;
      if (lock.value) return false;
      continue;
    }
    if (ended || !automation::lockable(lock.target - 1, drums)) return false;
    for (int k = 0; k < i; k++)
      if (note.locks[k].target == lock.target) return false;
  }
  return true;
}

bool patternOfNoteExists(const Project& p, const NoteRec& note, int& row) {
  auto fits = [&](int r) {
    return r >= 0 && r < p.patternCount && p.patterns[r].track == note.track &&
           p.patterns[r].id == note.pattern;
  };
  if (!fits(row)) row = patternIndex(p, note.track, note.pattern);
  return fits(row);
}

const char* noteFault(const Project& p) {
  int row = -1;
  for (int i = 0; i < p.noteCount; i++) {
    const NoteRec& n = p.notes[i];
    if (n.track >= limits::tracks || n.slot >= limits::slots || n.step >= limits::patternLength ||
        !patternOfNoteExists(p, n, row))
      return "Note of a missing Pattern";
  }
  auto place = [](const NoteRec& n) { return std::tuple(n.track, n.pattern, n.step, n.slot); };
  for (int i = 1; i < p.noteCount; i++)
    if (place(p.notes[i - 1]) >= place(p.notes[i])) return "Notes out of order";
  for (int i = 0; i < p.noteCount; i++) {
    const NoteRec& n = p.notes[i];
    const bool drums = isDrums(p.tracks[n.track]);
    if (n.velocity < 1 || n.velocity > 127 || n.pitch > (drums ? limits::pads - 1 : 127) || n.nudge < -64 ||
        n.nudge > 63 || !n.length)
      return "Invalid note or polyphony";
  }
  for (int i = 0; i < p.noteCount; i++)
    if (!locksHold(p.notes[i], isDrums(p.tracks[p.notes[i].track]))) return "Invalid lock";
  return nullptr;
}

bool rowsTileThePoints(const Project& p) {
  u32 next = 0;
  for (const LaneRow& row : p.lanes) {
    if (row.first != (next & 0xFFFF)) return false;
    next += row.count;
    if (next > p.lanePointCount) return false;
  }
  if (next != p.lanePointCount) return false;
  for (const LaneRow& row : p.lanes) {
    const LanePoint* points = p.lanePoints + row.first;
    for (int i = 1; i < row.count; i++) {
      if (points[i].position < points[i - 1].position) return false;
      if (i > 1 && points[i].position == points[i - 2].position) return false;
    }
  }
  return true;
}

bool targetHolds(const LaneRow& lane, int row) {
  if (lane.enabled > 1) return false;
  if (!lane.target) return true;
  const int target = lane.target - 1, owner = row / limits::lanesPerOwner;
  if (owner < limits::tracks) return automation::isTrackTarget(target) || automation::isMacroTarget(target);
  return automation::isBusTarget(target) && automation::busOf(target) == owner - limits::tracks;
}

const char* laneFault(const Project& p) {
  if (!rowsTileThePoints(p)) return "Lane points out of order";
  for (int r = 0; r < limits::firstMasterLane; r++)
    if (!targetHolds(p.lanes[r], r)) return "Invalid automation lane";
  for (int r = limits::firstMasterLane; r < limits::lanes; r++)
    if (p.lanes[r].enabled > 1 || p.lanes[r].target > automation::performanceEffects)
      return "Invalid master lane";
  for (int i = 0; i < p.lanePointCount; i++) {
    const LanePoint& point = p.lanePoints[i];
    if (point.reserved || point.rest > 1 || (point.rest && point.value) ||
        point.position > limits::lanePosition)
      return "Invalid lane point";
  }
  return nullptr;
}

const char* markerFault(const Project& p) {
  for (int i = 0; i < p.markerCount; i++)
    if (p.markers[i].step >= limits::songSteps || (i && p.markers[i].step <= p.markers[i - 1].step))
      return "Markers out of order";
  for (int i = 0; i < p.markerCount; i++) {
    const char(&name)[16] = p.markers[i].name;
    const size_t length = strnlen(name, sizeof name);
    if (!length || length > limits::shortName) return "Marker name too long";
    if (!std::all_of(name, name + length, [](char c) { return c >= 32 && c <= 126; }) ||
        !std::all_of(name + length, name + sizeof name, [](char c) { return c == 0; }))
      return "Invalid character in a name";
  }
  return nullptr;
}

}  // namespace

bool validateArenas(const Project& p, std::string& error) {
  const char* fault = countFault(p);
  std::vector<bool> played(fault ? 0 : p.patternCount, false);
  if (!fault) fault = patternFault(p);
  if (!fault) fault = clipFault(p, played);
  if (!fault) fault = frontFault(p, played);
  if (!fault) fault = noteFault(p);
  if (!fault) fault = laneFault(p);
  if (!fault) fault = markerFault(p);
  if (!fault && (p.loopStart || p.loopEnd) && (p.loopStart >= p.loopEnd || p.loopEnd > limits::songSteps))
    fault = "Invalid Loop";
  if (fault) error = fault;
  return !fault;
}

}  // namespace synth
