#include "core/edit/LockEdit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/params/Targets.h"

namespace synth::workspace {
namespace {

using edit::Result;

bool addressed(const Project& p, int track, int pattern, int step, int pitch) {
  if (track < 0 || track >= limits::tracks || patternIndex(p, track, pattern) < 0) return false;
  return step >= 0 && step < limits::patternLength && (!isDrums(p.tracks[track]) || pitch < limits::pads);
}

int slotOf(const Step& step, int pitch) {
  for (int slot = 0; slot < limits::slots; slot++)
    if (step.notes[slot].velocity && step.notes[slot].pitch == pitch) return slot;
  return -1;
}

int lockOf(const Note& note, int target) {
  for (int i = 0; target >= 0 && i < limits::locks; i++)
    if (note.locks[i].target == target + 1) return i;
  return -1;
}

}  // namespace

Result setLock(Project& p, int track, int pattern, int step, int pitch, int target, double value) {
  if (!addressed(p, track, pattern, step, pitch)) return Result::failed("A Lock belongs to a Note");
  const bool drums = isDrums(p.tracks[track]);
  if (drums && !automation::lockable(target, true)) return Result::failed("A hit locks only PITCH and DECAY");
  if (!automation::lockable(target, drums)) return Result::failed("Invalid lock value");
  Step now = stepAt(p, track, pattern, step);
  const int slot = slotOf(now, pitch);
  if (slot < 0) return Result::failed("A Lock belongs to a Note");
  if (step >= patternLength(p, track, pattern)) return Result::failed("Step outside the pattern");
  if (!std::isfinite(value)) return Result::failed("Invalid lock value");
  Note& note = now.notes[slot];
  int at = lockOf(note, target);
  if (at < 0) at = note.lockCount();
  if (at >= limits::locks) return Result::failed("This Note holds eight Locks: clear one first");
  const LockRec lock{u8(target + 1), 0, u16(std::lround(std::clamp(value, 0.0, 1.0) * 65535))};
  if (sameBytes(note.locks[at], lock)) return Result::nothing();
  note.locks[at] = lock;
  return setNote(p, track, pattern, step, slot, note) ? Result::done() : Result::failed("Project full");
}

double lockValue(const Project& p, int track, int pattern, int step, int pitch, int target) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  if (!addressed(p, track, pattern, step, pitch)) return none;
  const Step now = stepAt(p, track, pattern, step);
  const int slot = slotOf(now, pitch), at = slot < 0 ? -1 : lockOf(now.notes[slot], target);
  return at < 0 ? none : now.notes[slot].locks[at].value / 65535.0;
}

bool hasLocks(const Project& p, int track, int pattern, int step) {
  for (const NoteRec& note : stepNotes(p, track, pattern, step))
    if (note.locks[0].target) return true;
  return false;
}

bool clearLock(Project& p, int track, int pattern, int step, int pitch, int target) {
  if (!addressed(p, track, pattern, step, pitch)) return false;
  const Step now = stepAt(p, track, pattern, step);
  const int slot = slotOf(now, pitch);
  if (slot < 0) return false;
  Note note = now.notes[slot];
  const int at = lockOf(note, target);
  if (at < 0) return false;
  // The others close up, so that the first empty Lock ends the list.
  std::copy(note.locks + at + 1, note.locks + limits::locks, note.locks + at);
  note.locks[limits::locks - 1] = LockRec{};
  return setNote(p, track, pattern, step, slot, note);
}

bool clearLocks(Project& p, int track, int pattern, int step) {
  if (!hasLocks(p, track, pattern, step)) return false;
  Step now = stepAt(p, track, pattern, step);
  for (Note& note : now.notes) std::fill(std::begin(note.locks), std::end(note.locks), LockRec{});
  return setStep(p, track, pattern, step, now);
}

}  // namespace synth::workspace
