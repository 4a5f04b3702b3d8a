#include "engine/Sequencer.h"

#include <algorithm>
#include <cmath>

#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "engine/Metronome.h"
#include "engine/Resolve.h"
#include "engine/Voices.h"
#include "engine/dsp/Random.h"

namespace synth {
namespace {

constexpr i32 shortestSong = 16;
constexpr i32 emptyPatternRoom = 255;

using StepNotes = const NoteRec * [limits::slots];

i32 songSteps(const EngineCore& core) { return std::max<i32>(i32(core.index->songEnd), shortestSong); }

const ClipRec* clipUnder(const EngineCore& core, int t, i32 step) {
  const Project& p = *core.project;
  const ClipRec* from = p.clips + core.index->firstClip[t];
  const ClipRec* to = p.clips + core.index->firstClip[t + 1];
  auto next = std::partition_point(from, to, [&](const ClipRec& c) { return i64(c.start) <= step; });
  if (next == from || step >= i64(clipEnd(*(next - 1)))) return nullptr;
  return next - 1;
}

void notesAt(const EngineCore& core, int t, i32 step, StepNotes& out) {
  std::fill(std::begin(out), std::end(out), nullptr);
  const ClipRec* clip = clipUnder(core, t, step);
  if (!clip) return;
  const Project& p = *core.project;
  for (const NoteRec& note : stepNotes(p, t, clip->pattern, clipPhase(p, *clip, u32(step))))
    out[note.slot & 7] = &note;
}

// On a mono Track the lowest pitch of a Step sounds, the lowest slot of two the same.
bool selected(const EngineCore& core, int t, const StepNotes& notes, int slot) {
  if (!playsMono(core, t)) return true;
  for (int k = 0; k < limits::slots; k++) {
    if (!notes[k] || k == slot) continue;
    if (notes[k]->pitch < notes[slot]->pitch || (notes[k]->pitch == notes[slot]->pitch && k < slot))
      return false;
  }
  return true;
}

void trigger(EngineCore& core, int t, const Note& note) {
  for (int u = 0; u < core.trackCount(); u++) {
    const Track& track = core.track(u);
    if (!(core.prepared[u].value[automation::DUCK_AMOUNT] > 0)) continue;
    const bool whole = track.duck_source == t * 9;
    const bool pad = isDrums(core.track(t)) && track.duck_source == t * 9 + 1 + note.pitch;
    if (whole || pad) core.tracks[u].duckRising = true;
  }
}

void fire(EngineCore& core, int t, const Note& note, double time) {
  if (t >= core.trackCount()) return;
  startVoice(core, t, note, false, time);
  trigger(core, t, note);
}

void putPending(EngineCore& core, int t, const Note& note, double time) {
  for (PendingNote& p : core.pending) {
    if (p.active) continue;
    p = {true, u8(t), time, note};
    core.pendingCount++;
    return;
  }
}

bool chanceDrops(const Note& note, int t, int slot, u32 position) {
  const u32 c = note.flags >> 4;
  if (!c) return false;
  const u32 h = dsp::hash((u32(t) * 17 + u32(slot)) * 7919 + position * 131 + note.pitch);
  return (h & 15) < 16 - c;
}

// Chance, humanize, Accent and ratchet turn a Note into events around `base`, in Song time.
void schedule(EngineCore& core, int t, int slot, Note note, double base) {
  const double now = core.transport.songTime();
  const u32 position = u32(i64(base));
  if (chanceDrops(note, t, slot, position)) return;
  double d = note.nudge / 128.0;
  const float humanize = core.project->humanize;
  if (humanize > 0) {
    const u32 h = dsp::hash((u32(t) * 31 + u32(slot)) * 104729 + position * 977);
    d += double(humanize) * 0.06 * (h & 255) / 255.0;
    const float shift = humanize * 14 * (float(h >> 8 & 255) / 255 - 0.5f);
    note.velocity = u8(std::clamp(note.velocity + int(std::lround(shift)), 1, 127));
  }
  if (note.accent()) note.velocity = u8(std::min<int>(note.velocity, 107) + 20);
  const int hits = note.hits();
  if (hits == 1) {
    const double time = base + d;
    if (time <= now + 1e-9)
      fire(core, t, note, std::max(time, double(core.transport.position)));
    else
      putPending(core, t, note, time);
    return;
  }
  const int longest = int(double(256 / hits) * 0.7);
  note.length = u16(std::max(std::min<int>(longest, note.length), 8));
  for (int k = 0; k < hits; k++) {
    const double time = base + d + double(k) / hits;
    if (k == 0 && d <= 0 && time <= now + 1e-9)
      fire(core, t, note, std::max(time, double(core.transport.position)));
    else
      putPending(core, t, note, time);
  }
}

void triggerTrack(EngineCore& core, int t, bool first, i32 next) {
  const Transport& tr = core.transport;
  StepNotes notes, ahead;
  notesAt(core, t, tr.step, notes);
  const Track& track = core.track(t);
  if (!isDrums(track) && track.voice_mode == 3) preparePolyLegato(core, t, notes);
  for (int slot = 0; slot < limits::slots; slot++) {
    if (!notes[slot] || (!first && notes[slot]->nudge < 0) || !selected(core, t, notes, slot)) continue;
    Note note = notes[slot]->note();
    if (note.nudge == 0 && note.flags == 0 && !(core.project->humanize > 0)) {
      fire(core, t, note, double(tr.position));
      continue;
    }
    note.nudge = std::max<i8>(note.nudge, 0);
    schedule(core, t, slot, note, double(tr.position));
  }
  if (next < 0) return;
  notesAt(core, t, next, ahead);
  for (int slot = 0; slot < limits::slots; slot++)
    if (ahead[slot] && ahead[slot]->nudge < 0 && selected(core, t, ahead, slot))
      schedule(core, t, slot, ahead[slot]->note(), double(tr.position) + 1);
}

}  // namespace

void buildIndex(const Project& p, SongIndex& index) {
  index.songEnd = songEnd(p);
  int row = 0;
  for (int t = 0; t <= limits::tracks; t++) {
    while (row < p.clipCount && p.clips[row].track < t) row++;
    index.firstClip[t] = u16(row);
  }
  index.locks =
      std::any_of(p.notes, p.notes + p.noteCount, [](const NoteRec& n) { return n.locks[0].target; });
}

bool validMarker(const EngineCore& core, i32 marker) {
  return marker >= 0 && marker < core.project->markerCount;
}

void sectionAround(const EngineCore& core, i32 step, i32& start, i32& end) {
  const Project& p = *core.project;
  auto last = p.markers + p.markerCount;
  auto next = std::partition_point(p.markers, last, [&](const MarkerRec& m) { return i64(m.step) <= step; });
  start = next == p.markers ? 0 : i32((next - 1)->step);
  end = std::max(start + 1, next == last ? songSteps(core) : i32(next->step));
}

i32 nextStep(const EngineCore& core, bool& wrapped) {
  const Transport& tr = core.transport;
  const bool held = validMarker(core, tr.heldMarker);
  wrapped = false;
  i32 lo = 0, hi = songSteps(core);
  if (held) {
    sectionAround(core, i32(core.project->markers[tr.heldMarker].step), lo, hi);
  } else if (tr.loopOn && tr.loopEnd > tr.loopStart) {
    lo = std::clamp(tr.loopStart, 0, 0xFFFFF);
    hi = std::max(lo + 1, tr.loopEnd);
  }
  const bool outside = tr.step < lo || tr.step >= hi;
  if (validMarker(core, tr.pendingMarker)) {
    i32 start, end;
    sectionAround(core, tr.step, start, end);
    if (tr.step + 1 >= end || (!outside && tr.step + 1 >= hi)) {
      wrapped = true;
      return i32(core.project->markers[tr.pendingMarker].step);
    }
  }
  const bool loops = held || tr.loopOn;
  if (!outside) return tr.step + 1 < hi ? tr.step + 1 : loops ? lo : -1;
  if (tr.step + 1 < songSteps(core)) return tr.step + 1;
  return loops ? lo : -1;
}

void stepTrigger(EngineCore& core, bool first) {
  evaluateNow(core);
  endGates(core);
  bool ignored = false;
  const i32 next = nextStep(core, ignored);
  for (int t = 0; t < core.trackCount(); t++) triggerTrack(core, t, first, next);
  core.nextEvent = 0;
  clickAtStep(core);
}

double firePending(EngineCore& core) {
  double next = std::numeric_limits<double>::infinity();
  if (!core.pendingCount || !core.transport.playing) return next;
  const double due = core.transport.songTime() + 1e-9;
  for (PendingNote& p : core.pending) {
    if (!p.active) continue;
    if (p.time > due) {
      next = std::min(next, p.time - 1e-9);
      continue;
    }
    const PendingNote event = p;
    p.active = false;
    core.pendingCount--;
    fire(core, event.track, event.note, event.time);
  }
  return next;
}

i32 roomAtStep(const EngineCore& core, int t, i32 step) {
  const ClipRec* clip = clipUnder(core, t, step);
  if (!clip) return emptyPatternRoom;
  const Project& p = *core.project;
  return std::max(patternLength(p, t, clip->pattern) - clipPhase(p, *clip, u32(step)), 1);
}

}  // namespace synth
