// Notes of a Pattern, read and written Step by Step.
#pragma once

#include <span>

#include "core/Project.h"

namespace synth {

// What starts on one Step: a Note in each of eight slots, those of velocity 0 being empty.
struct Step {
  Note notes[limits::slots];

  int count() const {
    int n = 0;
    for (const Note& note : notes) n += note.velocity != 0;
    return n;
  }
  // The slot for a Note that names none: on a kit the slot of its Pad when that is free, else the first
  // free one; -1 when all eight are taken.
  int freeSlot(bool drums, int pad) const;
};

// The Notes of a Pattern in order, those past its length included; empty when there is none.
std::span<const NoteRec> patternNotes(const Project& project, int track, int id);
std::span<const NoteRec> stepNotes(const Project& project, int track, int id, int step);
Step stepAt(const Project& project, int track, int id, int step);
// The highest Step on which a Note starts, plus 1; 0 without Notes.
int patternExtent(const Project& project, int track, int id);

// Replaces what starts on a Step. False, changing nothing, for an unknown Pattern, a Step above 1023 or no
// room for the Notes.
bool setStep(Project& project, int track, int id, int step, const Step& value);
// Replaces one slot; a Note of velocity 0 empties it.
bool setNote(Project& project, int track, int id, int step, int slot, const Note& note);
// Replaces Steps 0..count-1 in one pass; Notes on later Steps stay.
bool setSteps(Project& project, int track, int id, const Step* steps, int count);

}  // namespace synth
