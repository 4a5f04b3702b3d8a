#include "core/music/KeyFinder.h"

#include <algorithm>
#include <set>

#include "core/model/Notes.h"
#include "core/model/Patterns.h"

namespace synth::compose {
namespace {

// How much each scale has to be ahead of the plainest, so that the rarer ones do not win on a near tie.
constexpr double bias[scales] = {0, 0, 0, 0.012, 0.015, 0.03, 0.03, 0.012, 0.07, 0.03, 0.04, 0.02};
constexpr int lowNote = 52;

}  // namespace

void KeyProfile::add(const Note& note, int step) {
  double weight = (note.velocity / 127.0 + 0.4) * (std::min(note.length / 256.0, 8.0) + 0.3);
  if (step % 4 == 0) weight *= 1.35;
  if (note.pitch < lowNote) weight *= 1.4;
  classes_[note.pitch % 12] += weight;
  if (note.pitch < lowNote) bass_[note.pitch % 12] += weight;
  total_ += weight;
}

double KeyProfile::score(int root, Scale scale) const {
  const u16 mask = scaleMask(root, scale);
  double sum = 0;
  for (int c = 0; c < 12; c++) sum += classes_[c] * (mask >> c & 1 ? 1 : -1.8);
  return sum + classes_[root] * 0.16 + bass_[root] * 0.18 + classes_[(root + 7) % 12] * 0.04 -
         total_ * bias[int(scale)];
}

Key KeyProfile::best(int root, int scale) const {
  Key key;
  if (total_ <= 0) {
    if (root >= 0) key.root = root % 12;
    if (scale > 0 && scale < scales) key.scale = Scale(scale);
    return key;
  }
  double first = -1e300, second = -1e300;
  for (int r = 0; r < 12; r++)
    for (int s = int(Scale::Major); s < scales; s++) {
      if ((root >= 0 && r != root % 12) || (scale > 0 && s != scale)) continue;
      const double now = score(r, Scale(s));
      if (now > first) {
        second = first;
        first = now;
        key.root = r;
        key.scale = Scale(s);
      } else {
        second = std::max(second, now);
      }
    }
  key.confidence = f32(std::clamp((first - second) / (0.35 * total_), 0.0, 1.0));
  double inside = 0;
  for (int c = 0; c < 12; c++)
    if (inKey(c, key.root, key.scale)) inside += classes_[c];
  key.share = f32(inside / total_);
  return key;
}

void addPattern(KeyProfile& profile, const Project& p, int track, int pattern) {
  if (track < 0 || track >= limits::tracks || isDrums(p.tracks[track])) return;
  const int length = patternLength(p, track, pattern);
  for (const NoteRec& note : patternNotes(p, track, pattern))
    if (note.step < length) profile.add(note.note(), note.step);
}

Analysis analyze(const Project& p, const Scope& scope, int root, Scale scale) {
  KeyProfile profile;
  Timeline map;
  timelineMap(p, scope, map);
  Analysis out;
  out.steps = scopeLength(p, scope);
  const u16 tracks = scopeTracks(p, scope);
  for (int t = 0; t < limits::tracks; t++) {
    if (!(tracks >> t & 1)) continue;
    out.tracks++;
    if (isDrums(p.tracks[t])) continue;
    std::set<std::pair<u16, i16>> seen;
    for (int at = 0; at < out.steps; at++) {
      const i16 step = map.step[t][at];
      if (step < 0 || !seen.emplace(map.pattern[t][at], step).second) continue;
      for (const NoteRec& note : stepNotes(p, t, map.pattern[t][at], step))
        if (scope.kind != Scope::Notes || scope.selected[t][step] >> note.slot & 1)
          profile.add(note.note(), step);
    }
  }
  static_cast<Key&>(out) = profile.best(root, int(scale));
  return out;
}

bool keySet(const Project& p, int& root, Scale& scale) {
  if (p.key_root < 2) return false;
  root = (p.key_root - 2) % 12;
  scale = Scale(p.key_scale + 1);
  return true;
}

void projectKey(const Project& p, int& root, Scale& scale, u16 mask) {
  if (keySet(p, root, scale)) return;
  KeyProfile profile;
  for (int i = 0; i < p.patternCount; i++)
    if (mask >> p.patterns[i].track & 1 && !p.patterns[i].isFront)
      addPattern(profile, p, p.patterns[i].track, p.patterns[i].id);
  const Key key = profile.best();
  root = key.root;
  scale = key.scale;
}

}  // namespace synth::compose
