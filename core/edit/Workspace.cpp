#include "core/edit/Workspace.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"

namespace synth::workspace {
namespace {

bool isDefaultName(std::string_view name) {
  // A number behind it makes no difference: "DRUMS 2", "SYNTH A 2".
  const size_t blank = name.rfind(' ');
  const bool numbered = blank != name.npos && blank + 1 < name.size() &&
                        name.find_first_not_of("0123456789", blank + 1) == name.npos;
  if (numbered) name = name.substr(0, blank);
  for (int i = 0; i < limits::tracks; i++)
    if (name == starterTrackName(i)) return true;
  return name.empty();
}

// "DRUMS", "DRUMS 2" ...; a melodic Track takes the first free of "SYNTH A" .. "SYNTH N".
std::string freeDefaultName(const Project& p, int kind) {
  if (kind == DRUMS) return freeTrackName(p, "DRUMS");
  for (int i = 2; i < limits::tracks; i++)
    if (freeTrackName(p, starterTrackName(i)) == starterTrackName(i)) return starterTrackName(i);
  return freeTrackName(p, "SYNTH A");
}

void dropForeignLanes(Project& p, int track) {
  for (int s = 0; s < limits::lanesPerOwner; s++) {
    const int row = laneRow(track, s), target = p.lanes[row].target - 1;
    // The new sound has no Macros, and a kit takes fewer targets.
    if (p.lanes[row].target &&
        (automation::isMacroTarget(target) || !automation::laneable(target, isDrums(p.tracks[track]))))
      clearLane(p, row);
  }
}

}  // namespace

bool switchTrackKind(Project& p, int track, int kind) {
  if (track < 0 || track >= limits::tracks || kind < MELODIC || kind > DRUMS ||
      p.tracks[track].track_kind == kind)
    return false;
  const std::string name(nameText(p.tracks[track].name));
  clearTrack(p, track, false);
  p.tracks[track] = defaultTrack(TrackKind(kind));
  if (isDefaultName(name))
    setName(p.tracks[track].name, freeDefaultName(p, kind));
  else
    setName(p.tracks[track].name, name);
  dropForeignLanes(p, track);
  return true;
}

namespace {

bool chosen(u32 mask, int track) { return mask >> track & 1; }
u32 activeOf(const Project& p, u32 mask) { return mask & ((1u << p.track_count) - 1); }
int countOf(u32 mask) { return __builtin_popcount(mask); }

void keepAll(TrackMap& map) {
  for (int t = 0; t < limits::tracks; t++) map[t] = t;
}

// Duplicating may run out of room half way: the work is done on a copy.
bool duplicated(Project& p, u32 mask, TrackMap& map) {
  auto work = copyOf(p);
  int next = 0;
  for (int t = 0; t < limits::tracks; t++) {
    map[t] = next < limits::tracks ? next : -1;
    next += chosen(mask, t) ? 2 : 1;
  }
  if (!remapTracks(*work, map)) return false;
  work->track_count = u8(p.track_count + countOf(mask));
  for (int t = 0; t < limits::tracks; t++) {
    if (!chosen(mask, t)) continue;
    if (!copyTrack(*work, map[t], map[t] + 1)) return false;
    const std::string name(nameText(p.tracks[t].name));
    setName(work->tracks[map[t] + 1].name, "");
    setName(work->tracks[map[t] + 1].name, freeTrackName(*work, name.empty() ? "TRACK" : name));
  }
  std::memcpy(static_cast<void*>(&p), work.get(), sizeof p);
  return true;
}

}  // namespace

Result addTrack(Project& p, int kind, int& index) {
  if (kind != MELODIC && kind != DRUMS) return Result::failed("No such track kind");
  if (p.track_count >= limits::tracks) return Result::failed("All sixteen tracks are in use");
  index = p.track_count;
  const std::string name = freeDefaultName(p, kind);
  clearTrack(p, index, true);
  p.tracks[index] = defaultTrack(TrackKind(kind));
  setName(p.tracks[index].name, name);
  p.track_count++;
  return Result::done();
}

Result removeTracks(Project& p, u32 mask, TrackMap& map) {
  keepAll(map);
  mask = activeOf(p, mask);
  if (!mask) return Result::failed("Select a track to remove");
  if (countOf(mask) >= p.track_count) return Result::failed("A project keeps at least one track");
  int next = 0;
  for (int t = 0; t < limits::tracks; t++) map[t] = chosen(mask, t) ? -1 : next++;
  if (!remapTracks(p, map)) return Result::failed("No such track");
  p.track_count = u8(p.track_count - countOf(mask));
  return Result::done();
}

Result duplicateTracks(Project& p, u32 mask, TrackMap& map) {
  keepAll(map);
  mask = activeOf(p, mask);
  if (!mask) return Result::failed("Select a track to duplicate");
  if (p.track_count + countOf(mask) > limits::tracks) return Result::failed("Only sixteen tracks fit");
  if (duplicated(p, mask, map)) return Result::done();
  keepAll(map);
  return Result::failed("Project full");
}

Result moveTracks(Project& p, u32 mask, int delta, TrackMap& map) {
  keepAll(map);
  mask = activeOf(p, mask);
  if (!mask) return Result::failed("Select a track to move");
  int order[limits::tracks];
  for (int t = 0; t < limits::tracks; t++) order[t] = t;
  const int count = p.track_count;
  bool moved = false;
  for (int n = std::abs(std::clamp(delta, -count, count)); n > 0; n--)
    for (int i = 1; i < count; i++) {
      // Towards the front from the front on, towards the end from the end on, so that a block stays one.
      const int at = delta < 0 ? i : count - 1 - i, to = delta < 0 ? at - 1 : at + 1;
      if (!chosen(mask, order[at]) || chosen(mask, order[to])) continue;
      std::swap(order[at], order[to]);
      moved = true;
    }
  if (!moved) return Result::nothing();
  for (int t = 0; t < limits::tracks; t++) map[order[t]] = t;
  remapTracks(p, map);
  return Result::done();
}

Result renameTrack(Project& p, int track, std::string_view name) {
  if (track < 0 || track >= limits::tracks) return Result::failed("No such track");
  char clean[sizeof p.tracks[0].name] = {};
  setName(clean, name);
  if (!clean[0]) return Result::failed("A track needs a name");
  if (std::memcmp(clean, p.tracks[track].name, sizeof clean) == 0) return Result::nothing();
  std::memcpy(p.tracks[track].name, clean, sizeof clean);
  return Result::done();
}

Result setTrackKind(Project& p, u32 mask, int kind) {
  mask = activeOf(p, mask);
  if (!mask) return Result::failed("Select a track");
  if (kind != MELODIC && kind != DRUMS) return Result::failed("No such track kind");
  bool changed = false;
  for (int t = 0; t < limits::tracks; t++)
    if (chosen(mask, t)) changed |= switchTrackKind(p, t, kind);
  return changed ? Result::done() : Result::nothing();
}

int clipIndex(const Project& p, int track, u32 start) {
  const int row = clipAt(p, track, start);
  return row >= 0 && p.clips[row].start == start ? row : -1;
}

Result setPatternLength(Project& p, int track, int pattern, int length, bool keepNotes) {
  if (length < 1 || length > limits::patternLength)
    return Result::failed("Pattern length must be 1–1024 steps");
  if (patternIndex(p, track, pattern) < 0) return Result::failed("No such pattern");
  const auto before = copyOf(p);
  if (!setPatternLengthKeepingPasses(p, track, pattern, length)) return Result::failed("Project full");
  for (int step = length; !keepNotes && step < patternExtent(p, track, pattern); step++)
    if (!stepNotes(p, track, pattern, step).empty()) setStep(p, track, pattern, step, Step{});
  return sameBytes(*before, p) ? Result::nothing() : Result::done();
}

}  // namespace synth::workspace
