#include "core/model/Patterns.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/model/Arena.h"
#include "core/model/Clips.h"
#include "core/model/Notes.h"

namespace synth {
namespace {

bool before(const PatternRec& row, int track, int id) {
  return row.track != track ? row.track < track : row.id < id;
}

int lowerBound(const Project& p, int track, int id) {
  auto end = p.patterns + p.patternCount;
  auto it =
      std::partition_point(p.patterns, end, [&](const PatternRec& row) { return before(row, track, id); });
  return int(it - p.patterns);
}

// The Notes of a Pattern moved by `shift` Steps and given to another Pattern id.
std::vector<NoteRec> shifted(std::span<const NoteRec> notes, int id, int shift, int from, int to) {
  std::vector<NoteRec> out;
  for (NoteRec note : notes) {
    if (note.step < from || note.step >= to) continue;
    const int step = note.step + shift;
    if (step < 0 || step >= limits::patternLength) continue;
    note.pattern = u16(id);
    note.step = u16(step);
    out.push_back(note);
  }
  return out;
}

// A Clip whose Pattern became shorter: its offset lies in the loop, and it repeats where it runs past it.
void fitIntoLoop(const Project& p, ClipRec& clip, int offset) {
  clip.offset = u16(offset % patternLength(p, clip.track, clip.pattern));
  if (clipWraps(p, clip)) clip.repeats = 1;
}

void replaceNotes(Project& p, int track, int id, std::span<const NoteRec> fresh) {
  auto old = patternNotes(p, track, id);
  const size_t at = size_t(old.data() - p.notes);
  arena::replace(p.notes, p.noteCount, at, old.size(), fresh);
}

}  // namespace

int patternIndex(const Project& p, int track, int id) {
  const int at = lowerBound(p, track, id);
  return at < p.patternCount && p.patterns[at].track == track && p.patterns[at].id == id ? at : -1;
}

int patternLength(const Project& p, int track, int id) {
  const int at = patternIndex(p, track, id);
  return at < 0 ? 0 : p.patterns[at].length;
}

int firstPattern(const Project& p, int track) {
  for (int i = lowerBound(p, track, 0); i < p.patternCount && p.patterns[i].track == track; i++)
    if (!p.patterns[i].isFront) return p.patterns[i].id;
  return -1;
}

int freePatternId(const Project& p, int track) {
  int id = 0;
  for (int i = lowerBound(p, track, 0); i < p.patternCount && p.patterns[i].track == track; i++)
    if (p.patterns[i].id == id) id++;
  return id;
}

int frontOf(const Project& p, int track, int id) {
  const int at = patternIndex(p, track, id);
  return at < 0 || !p.patterns[at].frontId ? -1 : patternIndex(p, track, p.patterns[at].frontId - 1);
}

bool addPatternAt(Project& p, int track, int id, int length) {
  if (track < 0 || track >= limits::tracks || id < 0 || id > 65535 || p.patternCount >= limits::patterns)
    return false;
  const int at = lowerBound(p, track, id);
  if (at < p.patternCount && p.patterns[at].track == track && p.patterns[at].id == id) return false;
  arena::open(p.patterns, p.patternCount, size_t(at), 1);
  PatternRec row;
  row.track = u8(track);
  row.id = u16(id);
  row.length = u16(std::clamp(length, 1, limits::patternLength));
  p.patterns[at] = row;
  return true;
}

int addPattern(Project& p, int track, int length) {
  if (track < 0 || track >= limits::tracks) return -1;
  const int id = freePatternId(p, track);
  return addPatternAt(p, track, id, length) ? id : -1;
}

int clonePattern(Project& p, int track, int id) {
  const int source = patternIndex(p, track, id), front = frontOf(p, track, id);
  if (source < 0) return -1;
  const int frontId = front < 0 ? -1 : p.patterns[front].id;
  const int frontLength = front < 0 ? 0 : p.patterns[front].length;
  const size_t notes =
      patternNotes(p, track, id).size() + (front < 0 ? 0 : patternNotes(p, track, frontId).size());
  if (p.noteCount + notes > limits::notes || p.patternCount + (front < 0 ? 1 : 2) > limits::patterns)
    return -1;
  const int copy = addPattern(p, track, p.patterns[source].length);
  if (copy < 0) return -1;
  replaceNotes(p, track, copy, shifted(patternNotes(p, track, id), copy, 0, 0, limits::patternLength));
  if (frontId >= 0) {
    const int copiedFront = addPattern(p, track, frontLength);
    p.patterns[patternIndex(p, track, copiedFront)].isFront = 1;
    p.patterns[patternIndex(p, track, copy)].frontId = u16(copiedFront + 1);
    replaceNotes(p, track, copiedFront,
                 shifted(patternNotes(p, track, frontId), copiedFront, 0, 0, limits::patternLength));
  }
  return copy;
}

void removePattern(Project& p, int track, int id) {
  const int front = frontOf(p, track, id);
  if (front >= 0) {
    const int frontId = p.patterns[front].id;
    replaceNotes(p, track, frontId, {});
    arena::erase(p.patterns, p.patternCount, size_t(front), 1);
  }
  const int at = patternIndex(p, track, id);
  if (at < 0) return;
  replaceNotes(p, track, id, {});
  arena::erase(p.patterns, p.patternCount, size_t(at), 1);
}

bool parkFront(Project& p, int track, int id, int steps) {
  int row = patternIndex(p, track, id), front = frontOf(p, track, id);
  if (row < 0 || p.patterns[row].isFront || steps < 1 || steps >= p.patterns[row].length) return false;
  const int held = front < 0 ? 0 : p.patterns[front].length;
  if (held + steps > limits::patternLength) return false;
  int frontId = front < 0 ? freePatternId(p, track) : p.patterns[front].id;
  if (front < 0 && (frontId >= 65535 || !addPatternAt(p, track, frontId, steps))) return false;

  auto head = shifted(patternNotes(p, track, id), frontId, held, 0, steps);
  auto rest = shifted(patternNotes(p, track, id), id, -steps, steps, limits::patternLength);
  auto kept = shifted(patternNotes(p, track, frontId), frontId, 0, 0, held);
  kept.insert(kept.end(), head.begin(), head.end());
  replaceNotes(p, track, id, rest);
  replaceNotes(p, track, frontId, kept);

  row = patternIndex(p, track, id);
  front = patternIndex(p, track, frontId);
  p.patterns[row].length = u16(p.patterns[row].length - steps);
  p.patterns[row].frontId = u16(frontId + 1);
  p.patterns[front].isFront = 1;
  p.patterns[front].length = u16(held + steps);
  for (int i = 0; i < p.clipCount; i++) {
    ClipRec& clip = p.clips[i];
    if (clip.track == track && clip.pattern == id) fitIntoLoop(p, clip, std::max(clip.offset - steps, 0));
  }
  return true;
}

bool unparkFront(Project& p, int track, int id, int steps) {
  const int row = patternIndex(p, track, id), front = frontOf(p, track, id);
  if (row < 0 || p.patterns[row].isFront || steps < 1 ||
      p.patterns[row].length + steps > limits::patternLength)
    return false;
  const int frontId = front < 0 ? -1 : p.patterns[front].id;
  const int held = front < 0 ? 0 : p.patterns[front].length;
  const int from = std::max(held - steps, 0);
  for (const NoteRec& note : patternNotes(p, track, id))
    if (note.step + steps >= limits::patternLength) return false;

  auto notes = front < 0 ? std::vector<NoteRec>{}
                         : shifted(patternNotes(p, track, frontId), id, steps - held, from, held);
  auto own = shifted(patternNotes(p, track, id), id, steps, 0, limits::patternLength);
  notes.insert(notes.end(), own.begin(), own.end());
  if (front >= 0) {
    auto kept = shifted(patternNotes(p, track, frontId), frontId, 0, 0, from);
    replaceNotes(p, track, frontId, kept);
  }
  replaceNotes(p, track, id, notes);
  PatternRec& pattern = p.patterns[patternIndex(p, track, id)];
  pattern.length = u16(pattern.length + steps);
  if (front < 0) return true;
  if (from > 0) {
    p.patterns[patternIndex(p, track, frontId)].length = u16(from);
  } else {
    pattern.frontId = 0;
    arena::erase(p.patterns, p.patternCount, size_t(patternIndex(p, track, frontId)), 1);
  }
  return true;
}

bool setPatternLengthKeepingPasses(Project& p, int track, int id, int length) {
  const int row = patternIndex(p, track, id);
  if (row < 0 || length < 1 || length > limits::patternLength) return false;
  const int old = p.patterns[row].length;
  p.patterns[row].length = u16(length);
  for (int i = 0; i < p.clipCount; i++) {
    ClipRec& clip = p.clips[i];
    if (clip.track != track || clip.pattern != id) continue;
    const double passes = double(clip.length) / old;
    u32 limit = limits::songSteps;
    if (i + 1 < p.clipCount && p.clips[i + 1].track == track) limit = p.clips[i + 1].start;
    const u32 wanted = u32(std::max(1.0, std::round(passes * length)));
    clip.length = std::min(wanted, limit - clip.start);
    fitIntoLoop(p, clip, clip.offset % length);
  }
  return true;
}

}  // namespace synth
