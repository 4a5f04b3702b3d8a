#include "core/music/Scope.h"

#include <algorithm>

#include "core/model/Clips.h"
#include "core/model/Patterns.h"

namespace synth::compose {
namespace {

struct Span {
  u32 from = 0, to = 0;
};

// Where on the Song several Tracks are looked at.
Span songSpan(const Project& p, const Scope& scope) {
  Span span{0, songEnd(p)};
  if (isTrack(scope.track))
    for (const ClipRec& clip : clipsOf(p, scope.track))
      if (clip.pattern == scope.pattern) {
        span = {clip.start, clipEnd(clip)};
        break;
      }
  span.to = std::min(span.to, span.from + u32(limits::patternLength));
  return span;
}

// Steps of the one Pattern.
Span patternSpan(const Project& p, const Scope& scope) {
  const int length = isTrack(scope.track) ? patternLength(p, scope.track, scope.pattern) : 0;
  if (scope.kind != Scope::Range) return {0, u32(length)};
  if (scope.from < 0 || scope.to < scope.from || scope.to >= length) return {};
  return {u32(scope.from), u32(scope.to) + 1};
}

}  // namespace

u16 scopeTracks(const Project& p, const Scope& scope) {
  if (scope.kind == Scope::AllTracks) return scope.tracks;
  const Span span = patternSpan(p, scope);
  return span.to > span.from ? u16(1u << scope.track) : u16(0);
}

int scopeLength(const Project& p, const Scope& scope) {
  const Span span = scope.kind == Scope::AllTracks ? songSpan(p, scope) : patternSpan(p, scope);
  return int(span.to - span.from);
}

void timelineMap(const Project& p, const Scope& scope, Timeline& map) {
  std::fill(&map.step[0][0], &map.step[0][0] + limits::tracks * limits::patternLength, i16(-1));
  std::fill(&map.pattern[0][0], &map.pattern[0][0] + limits::tracks * limits::patternLength, u16(0));
  auto put = [&](int track, u32 at, int step, u16 pattern) {
    map.step[track][at] = i16(step);
    map.pattern[track][at] = pattern;
  };
  if (scope.kind != Scope::AllTracks) {
    const Span span = patternSpan(p, scope);
    for (u32 s = span.from; s < span.to; s++) put(scope.track, s - span.from, int(s), u16(scope.pattern));
    return;
  }
  const Span span = songSpan(p, scope);
  for (int t = 0; t < limits::tracks; t++) {
    if (!(scope.tracks >> t & 1)) continue;
    for (const ClipRec& clip : clipsOf(p, t))
      for (u32 s = std::max(clip.start, span.from); s < std::min(clipEnd(clip), span.to); s++)
        put(t, s - span.from, clipPhase(p, clip, s), clip.pattern);
  }
}

}  // namespace synth::compose
