#include "core/edit/Reading.h"

#include <algorithm>

#include "base/Text.h"
#include "core/PitchNames.h"
#include "core/model/Clips.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/params/Targets.h"

namespace synth::workspace {

LoopRange resolveLoop(const Project& p, bool on) {
  if (!on) return {};
  if (p.loopEnd > p.loopStart) return {p.loopStart, p.loopEnd};
  LoopRange first;
  return sectionAt(p, 0, first.start, first.end) ? first : LoopRange{};
}

u32 totalSteps(const Project& p) { return std::max<u32>(songEnd(p), 16); }

double playheadStep(const PlayState& s) {
  if (!s.playing && s.countInLeft == 0) return -1;
  const double step = s.position + s.stepsSince - s.countInLeft;
  return step < 0 ? -1 : step;
}

std::vector<Span> spans(const Project& p, int track, int pattern) {
  std::vector<Span> out;
  for (const NoteRec& n : patternNotes(p, track, pattern)) {
    Span s;
    s.start = float(n.step) + float(n.nudge) / 128;
    s.end = s.start + float(std::max<int>(n.length, 1)) / 256;
    s.pitch = n.pitch;
    s.velocity = n.velocity;
    out.push_back(s);
  }
  return out;
}

// ---- Faults.

namespace {

// The most Notes that the editor lets start on one Step.
int capacity(const Track& t) {
  return isDrums(t) ? limits::slots : std::clamp<int>(t.polyphony, 4, limits::slots);
}

}  // namespace

std::string buildIssues(const Project& p) {
  for (int i = 0; i < p.clipCount; i++) {
    const ClipRec& clip = p.clips[i];
    if (patternNotes(p, clip.track, clip.pattern).empty())
      return text::print("Track %d pattern %d is played but holds no notes", int(clip.track),
                         int(clip.pattern));
  }
  for (int i = 0; i < p.noteCount; i++) {
    const NoteRec& n = p.notes[i];
    if (int(stepNotes(p, n.track, n.pattern, n.step).size()) > capacity(p.tracks[n.track]))
      return text::print("Track %d step %d: more notes start together than the editor allows", int(n.track),
                         int(n.step));
    if (n.nudge < -64 || n.nudge > 63)
      return text::print("Track %d step %d: nudge outside -64..63", int(n.track), int(n.step));
  }
  for (int row = 0; row < limits::tracks * limits::lanesPerOwner; row++) {
    const int track = row / limits::lanesPerOwner;
    if (isDrums(p.tracks[track]) && automation::isMacroTarget(p.lanes[row].target - 1))
      return text::print("Track %d lane %d: a macro lane on a Drums track", track,
                         row % limits::lanesPerOwner);
  }
  return "";
}

// ---- Chords.

namespace {

struct Chord {
  unsigned mask;  // bit n: n semitones above the root
  const char* suffix;
};
constexpr Chord chords[] = {
    {0x91, ""},    {0x89, "m"},     {0x49, "dim"},     {0x111, "aug"},   {0x85, "sus2"},   {0xa1, "sus4"},
    {0x491, "7"},  {0x891, "maj7"}, {0x489, "m7"},     {0x449, "m7b5"},  {0x249, "dim7"},  {0x291, "6"},
    {0x289, "m6"}, {0x95, "add9"},  {0x8d, "m(add9)"}, {0x485, "7sus2"}, {0x4a1, "7sus4"}, {0x495, "9"},
    {0x48d, "m9"}, {0x895, "maj9"}, {0x411, "7"},      {0x409, "m7"},    {0x811, "maj7"},  {0x81, "5"},
};

const Chord* chordOf(unsigned mask) {
  for (const Chord& c : chords)
    if (c.mask == mask) return &c;
  return nullptr;
}

}  // namespace

std::string chordName(const int* pitches, int count, bool flats) {
  if (count < 2) return "";
  unsigned classes = 0;
  for (int i = 0; i < count; i++) classes |= 1u << (((pitches[i] % 12) + 12) % 12);
  if ((classes & (classes - 1)) == 0) return "";
  const int lowest = *std::min_element(pitches, pitches + count), bass = ((lowest % 12) + 12) % 12;
  const auto& names = flats ? flatPitchClassNames : pitchClassNames;
  auto rotated = [&](int root) { return ((classes >> root) | (classes << (12 - root))) & 0xFFF; };
  // A root in the bass comes before every other reading.
  if (const Chord* c = chordOf(rotated(bass))) return std::string(names[bass]) + c->suffix;
  const Chord* best = nullptr;
  int bestRoot = 0;
  for (int root = 0; root < 12; root++) {
    if (!(classes >> root & 1)) continue;
    const Chord* c = chordOf(rotated(root));
    if (c && (!best || c < best)) {
      best = c;
      bestRoot = root;
    }
  }
  return best ? std::string(names[bestRoot]) + best->suffix + "/" + names[bass] : "";
}

// ---- Icons.

std::string trackIcon(const Project& p, int track, int role) {
  if (track < 0 || track >= limits::tracks) return "synth";
  const Track& t = p.tracks[track];
  if (isDrums(t)) return "drums";
  if (t.engine == SAMPLER) return "tape-reel";
  if (t.engine == VOICE) return "microphone";
  constexpr const char* byRole[] = {"bass", "lead", "synth", "keys", "keys", "drums", "synth", "synth"};
  if (role >= 0 && role < int(std::size(byRole))) return byRole[role];
  double sum = 0;
  int notes = 0, together = 0;
  for (int i = 0; i < p.noteCount; i++) {
    if (p.notes[i].track != track) continue;
    sum += p.notes[i].pitch + t.transpose;
    together += i > 0 && p.notes[i - 1].track == track && p.notes[i - 1].pattern == p.notes[i].pattern &&
                p.notes[i - 1].step == p.notes[i].step;
    notes++;
  }
  if (notes == 0) return "synth";
  // Low lines are basses; what plays chords are keys; what sings alone is a lead.
  if (sum / notes < 48) return "bass";
  if (together * 3 > notes) return "keys";
  return sum / notes >= 60 ? "lead" : "synth";
}

}  // namespace synth::workspace
