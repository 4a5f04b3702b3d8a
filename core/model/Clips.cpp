#include "core/model/Clips.h"

#include <algorithm>
#include <vector>

#include "core/model/Arena.h"
#include "core/model/Patterns.h"

namespace synth {

std::span<const ClipRec> clipsOf(const Project& p, int track) {
  auto end = p.clips + p.clipCount;
  auto from = std::partition_point(p.clips, end, [&](const ClipRec& c) { return c.track < track; });
  auto to = std::partition_point(from, end, [&](const ClipRec& c) { return c.track == track; });
  return {from, to};
}

u32 songEnd(const Project& p) {
  u32 end = 0;
  for (int i = 0; i < p.clipCount; i++) end = std::max(end, clipEnd(p.clips[i]));
  return end;
}

int clipFrom(const Project& p, int track, u32 step) {
  for (const ClipRec& clip : clipsOf(p, track))
    if (clipEnd(clip) > step) return int(&clip - p.clips);
  return -1;
}

int clipAt(const Project& p, int track, u32 step) {
  const int row = clipFrom(p, track, step);
  return row >= 0 && p.clips[row].start <= step ? row : -1;
}

int clipNear(const Project& p, int track, u32 step) {
  int best = -1;
  u32 bestDistance = 0;
  for (const ClipRec& clip : clipsOf(p, track)) {
    const u32 distance = step < clip.start       ? clip.start - step
                         : step >= clipEnd(clip) ? step - clipEnd(clip) + 1
                                                 : 0;
    if (best >= 0 && distance >= bestDistance) continue;
    best = int(&clip - p.clips);
    bestDistance = distance;
  }
  return best;
}

bool clipWraps(const Project& p, const ClipRec& clip) {
  return clip.offset + clip.length > u32(patternLength(p, clip.track, clip.pattern));
}

int clipPhase(const Project& p, const ClipRec& clip, u32 step) {
  const int length = patternLength(p, clip.track, clip.pattern);
  if (length <= 1) return 0;
  const i32 phase = i32((i64(clip.offset) + i64(step) - i64(clip.start)) % length);
  return phase < 0 ? phase + length : phase;
}

bool addClip(Project& p, const ClipRec& clip) {
  if (clip.track >= limits::tracks || clip.length == 0 || clip.repeats > 1 || clip.reserved) return false;
  if (clip.start >= limits::songSteps || clip.length > limits::songSteps - clip.start) return false;
  if (p.clipCount >= limits::clips) return false;
  const int pattern = patternIndex(p, clip.track, clip.pattern);
  if (pattern < 0 || p.patterns[pattern].isFront || clip.offset >= p.patterns[pattern].length) return false;
  if (!clip.repeats && clip.offset + clip.length > p.patterns[pattern].length) return false;
  auto own = clipsOf(p, clip.track);
  auto next =
      std::partition_point(own.begin(), own.end(), [&](const ClipRec& c) { return c.start < clip.start; });
  if (next != own.end() && next->start < clipEnd(clip)) return false;
  if (next != own.begin() && clipEnd(*(next - 1)) > clip.start) return false;
  const size_t at = size_t(own.data() - p.clips) + size_t(next - own.begin());
  arena::open(p.clips, p.clipCount, at, 1);
  p.clips[at] = clip;
  return true;
}

bool removeClips(Project& p, const int* rows, int count) {
  std::vector<bool> gone(p.clipCount, false);
  for (int i = 0; i < count; i++) {
    if (rows[i] < 0 || rows[i] >= p.clipCount) return false;
    gone[size_t(rows[i])] = true;
  }
  std::vector<ClipRec> removed;
  for (int i = 0; i < p.clipCount; i++)
    if (gone[size_t(i)]) removed.push_back(p.clips[i]);
  size_t row = 0;
  arena::removeIf(p.clips, p.clipCount, [&](const ClipRec&) { return bool(gone[row++]); });
  for (const ClipRec& clip : removed) {
    auto own = clipsOf(p, clip.track);
    if (std::none_of(own.begin(), own.end(), [&](const ClipRec& c) { return c.pattern == clip.pattern; }))
      removePattern(p, clip.track, clip.pattern);
  }
  return true;
}

int addLoop(Project& p, int track, int length, u32 at, int offset) {
  const int id = addPattern(p, track, length);
  if (id < 0) return -1;
  ClipRec clip;
  clip.track = u8(track);
  clip.pattern = u16(id);
  clip.start = at;
  clip.length = u32(std::max(length, 1));
  clip.offset = u16(std::clamp(offset, 0, 65535));
  clip.repeats = clipWraps(p, clip);
  if (addClip(p, clip)) return id;
  removePattern(p, track, id);
  return -1;
}

}  // namespace synth
