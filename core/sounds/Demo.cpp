#include "core/sounds/Demo.h"

#include <algorithm>
#include <cmath>

#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/music/KeyFinder.h"
#include "core/sounds/DemoPatterns.h"

namespace synth::preset {
namespace {

using compose::Scale;

constexpr int bar = 16;
constexpr double longSeconds = 4;

// The semitones from the key note to a degree of a seven-note scale; a scale of five gives the nearest of
// its notes.
int semitones(int degree, int root, Scale scale) {
  if (compose::scaleSize(scale) == 7) return compose::scaleInterval(scale, degree);
  const bool major = compose::scaleMask(0, scale) >> 4 & 1;
  const int wanted = compose::scaleInterval(major ? Scale::Major : Scale::Minor, degree);
  for (int away = 0;; away++)
    for (int s : {wanted - away, wanted + away})
      if (compose::inKey(((root + s) % 12 + 12) % 12, root, scale)) return s;
}

// Places degrees of the key in a register.
class Register {
 public:
  Register(const Range& range, int root, Scale scale) : range_(range), root_(root), scale_(scale) {
    tonic_ = range.centre + ((root - range.centre) % 12 + 12 + 6) % 12 - 6;
  }
  int pitch(int degree) const { return folded(tonic_ + semitones(degree, root_, scale_)); }
  // A triad's notes, each in the octave around the centre, so that chords follow each other closely.
  std::vector<int> chord(int degree) const {
    const int on = tonic_ + semitones(degree, root_, scale_);
    std::vector<int> notes;
    if (const auto triad = compose::triadOn(on, root_, scale_))
      for (int note : triad->notes) notes.push_back(near(note));
    return notes;
  }

 private:
  int folded(int pitch) const {
    while (pitch > range_.high) pitch -= 12;
    while (pitch < range_.low) pitch += 12;
    return pitch;
  }
  int near(int pitch) const {
    const int low = range_.centre - 6;
    return folded(low + ((pitch - low) % 12 + 12) % 12);
  }

  Range range_;
  int root_, tonic_;
  Scale scale_;
};

// A note that the Step has already is not played twice.
void addNote(Demo& demo, const DemoRow& row, int pitch) {
  for (const DemoNote& note : demo.notes)
    if (note.step == row.step && note.pitch == pitch) return;
  DemoNote note{row.step, int(std::lround(row.length * 256)), pitch, row.velocity, 0};
  if (row.kind == DemoRow::Slide || row.kind == DemoRow::AccentedSlide) note.flags |= Note::slideBit;
  if (row.kind == DemoRow::Accent || row.kind == DemoRow::AccentedSlide) note.flags |= Note::accentBit;
  demo.notes.push_back(note);
}

int longSteps(double tempo) { return std::clamp(int(std::lround(longSeconds * tempo * 4 / 60)), 1, 2 * bar); }

}  // namespace

const char* demoPatternName(DemoPattern pattern) {
  constexpr const char* names[demoPatterns] = {
      "bassline", "acid",     "boom",   "slow", "phrase", "chords", "keys", "stabs", "bells", "arp",
      "kick",     "backbeat", "groove", "hats", "clicks", "beat",   "long", "hit",   "bursts"};
  return names[std::min(int(pattern), demoPatterns - 1)];
}

DemoPattern demoPattern(const Preset& p) {
  auto of = [&](std::string_view family) { return p.family == family; };
  if (p.kind == DRUMS) return DemoPattern::Beat;
  switch (p.role) {
    case Role::Bass:
      return of("DEEP")   ? DemoPattern::Slow
             : of("808")  ? DemoPattern::Boom
             : of("ACID") ? DemoPattern::Acid
                          : DemoPattern::Bassline;
    case Role::Lead: return DemoPattern::Phrase;
    case Role::Pad: return DemoPattern::Chords;
    case Role::Keys:
      return of("STAB")                   ? DemoPattern::Stabs
             : of("BELL") || of("MALLET") ? DemoPattern::Bells
                                          : DemoPattern::Keys;
    case Role::Pluck: return DemoPattern::Arp;
    case Role::Perc:
      return of("KIT")     ? DemoPattern::Beat
             : of("KICK")  ? DemoPattern::Kick
             : of("SNARE") ? DemoPattern::Backbeat
             : of("METAL") ? DemoPattern::Hats
             : of("CLICK") ? DemoPattern::Clicks
                           : DemoPattern::Groove;
    case Role::Texture: return DemoPattern::Long;
    case Role::Fx: break;
  }
  return of("IMPACT") || of("MAGIC") ? DemoPattern::Hit
         : of("GLITCH") || of("ZAP") ? DemoPattern::Bursts
                                     : DemoPattern::Long;
}

Range range(const Preset& p) {
  constexpr Range rows[roles] = {{24, 48, 36}, {60, 84, 67}, {48, 72, 60}, {48, 72, 60},
                                 {48, 76, 60}, {36, 60, 48}, {48, 72, 60}, {48, 72, 60}};
  return p.kind == DRUMS ? Range{} : rows[std::min(int(p.role), roles - 1)];
}

void demoKey(const Project& p, int& root, Scale& scale) {
  if (compose::keySet(p, root, scale)) return;
  const ClipRec* first = nullptr;
  for (int i = 0; i < p.clipCount; i++) {
    const ClipRec& clip = p.clips[i];
    if (!isDrums(p.tracks[clip.track]) && !patternNotes(p, clip.track, clip.pattern).empty() &&
        (!first || clip.start < first->start))
      first = &clip;
  }
  compose::Scope scope;
  if (first) {
    scope.kind = compose::Scope::AllTracks;
    scope.track = first->track;
    scope.pattern = first->pattern;
    scope.tracks = 0xFFFF;
  }
  const compose::Key key = compose::analyze(p, scope);
  root = key.root;
  scale = key.scale;
}

Demo demo(const Preset& preset, int root, Scale scale, double tempo) {
  Demo out;
  out.pattern = demoPattern(preset);
  const Register place(range(preset), root, scale);
  auto play = [&](const DemoRow& row) {
    if (preset.kind == DRUMS) return addNote(out, row, row.degree);
    if (row.kind != DemoRow::Chord) return addNote(out, row, place.pitch(row.degree));
    for (int pitch : place.chord(row.degree)) addNote(out, row, pitch);
  };
  for (const DemoRow& row : demoRows(out.pattern)) play(row);
  // One long note.
  if (out.notes.empty()) play({0, f32(longSteps(tempo)), 0, 100});
  int end = 0;
  for (const DemoNote& note : out.notes) end = std::max(end, note.step * 256 + note.length);
  out.steps = out.pattern == DemoPattern::Hit || end > bar * 256 + 128 ? 2 * bar : bar;
  return out;
}

Demo demo(const Preset& preset, const Project& project) {
  int root = 0;
  Scale scale = Scale::Minor;
  if (preset.kind != DRUMS) demoKey(project, root, scale);
  return demo(preset, root, scale, project.bpm);
}

}  // namespace synth::preset
