#include "core/model/Notes.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "core/model/Arena.h"
#include "core/model/Patterns.h"

namespace synth {
namespace {

std::span<const NoteRec> rowsBetween(const Project& p, int track, int id, int from, int to) {
  auto key = [](const NoteRec& n) { return std::tuple(int(n.track), int(n.pattern), int(n.step)); };
  auto end = p.notes + p.noteCount;
  auto first =
      std::partition_point(p.notes, end, [&](auto& n) { return key(n) < std::tuple(track, id, from); });
  auto last = std::partition_point(first, end, [&](auto& n) { return key(n) < std::tuple(track, id, to); });
  return {first, last};
}

void append(std::vector<NoteRec>& rows, int track, int id, int step, const Step& value) {
  for (int slot = 0; slot < limits::slots; slot++) {
    if (!value.notes[slot].velocity) continue;
    NoteRec row;
    row.track = u8(track);
    row.pattern = u16(id);
    row.step = u16(step);
    row.slot = u8(slot);
    row.setNote(value.notes[slot]);
    rows.push_back(row);
  }
}

bool replace(Project& p, std::span<const NoteRec> old, std::span<const NoteRec> fresh) {
  if (p.noteCount - old.size() + fresh.size() > limits::notes) return false;
  arena::replace(p.notes, p.noteCount, size_t(old.data() - p.notes), old.size(), fresh);
  return true;
}

}  // namespace

int Step::freeSlot(bool drums, int pad) const {
  if (drums && pad >= 0 && pad < limits::slots && !notes[pad].velocity) return pad;
  for (int slot = 0; slot < limits::slots; slot++)
    if (!notes[slot].velocity) return slot;
  return -1;
}

std::span<const NoteRec> patternNotes(const Project& p, int track, int id) {
  return rowsBetween(p, track, id, 0, limits::patternLength);
}

std::span<const NoteRec> stepNotes(const Project& p, int track, int id, int step) {
  return rowsBetween(p, track, id, step, step + 1);
}

Step stepAt(const Project& p, int track, int id, int step) {
  Step value;
  for (const NoteRec& row : stepNotes(p, track, id, step)) value.notes[row.slot & 7] = row.note();
  return value;
}

int patternExtent(const Project& p, int track, int id) {
  auto notes = patternNotes(p, track, id);
  return notes.empty() ? 0 : notes.back().step + 1;
}

bool setStep(Project& p, int track, int id, int step, const Step& value) {
  if (patternIndex(p, track, id) < 0 || step < 0 || step >= limits::patternLength) return false;
  std::vector<NoteRec> rows;
  append(rows, track, id, step, value);
  return replace(p, stepNotes(p, track, id, step), rows);
}

bool setNote(Project& p, int track, int id, int step, int slot, const Note& note) {
  if (slot < 0 || slot >= limits::slots) return false;
  Step value = stepAt(p, track, id, step);
  value.notes[slot] = note;
  return setStep(p, track, id, step, value);
}

bool setSteps(Project& p, int track, int id, const Step* steps, int count) {
  if (count < 1) return true;
  if (patternIndex(p, track, id) < 0 || count > limits::patternLength) return false;
  std::vector<NoteRec> rows;
  for (int step = 0; step < count; step++) append(rows, track, id, step, steps[step]);
  return replace(p, rowsBetween(p, track, id, 0, count), rows);
}

}  // namespace synth
