#include "spec/Patterns.h"

#include <algorithm>

#include "base/Text.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "spec/Locks.h"

namespace synth::spec {
namespace {

constexpr int defaultVelocity = 100, defaultLength = 192, mostFlags = 15;

// A Pattern while it is read: its Steps, stored in one go when all Notes and Locks are known.
struct Draft {
  const Project& project;
  int track, id;
  std::vector<Step> steps;

  const Track& sound() const { return project.tracks[track]; }
  bool drums() const { return isDrums(sound()); }
  std::string place(int step) const {
    return "track " + std::to_string(track) + " step " + std::to_string(step);
  }
  Step& at(int step) {
    if (steps.size() <= size_t(step)) steps.resize(size_t(step) + 1);
    return steps[size_t(step)];
  }
  void put(int step, int slot, const Note& note) {
    Step& here = at(step);
    if (slot >= 0 && here.notes[slot].velocity)
      throw SpecError("Note slot " + std::to_string(slot) + " on " + place(step) + " is taken");
    if (slot < 0) slot = here.freeSlot(drums(), note.pitch);
    if (slot < 0) throw SpecError("More than eight notes start on " + place(step));
    here.notes[slot] = note;
  }
};

// A pitch, or on Drums a Pad.
int pitchOf(const Draft& draft, const Json& value, const std::string& what) {
  if (!draft.drums()) return integer(value, what, 0, 127);
  if (value.isNumber() && !(value.number() >= 0 && value.number() < limits::pads))
    throw SpecError(Fault::OutOfRange,
                    "Drum notes play pads 0..7; got " + text::number(value.number(), false));
  return integer(value, what, 0, limits::pads - 1);
}

void setFlags(Note& note, int flags, int chance) {
  note.flags = u8(flags | (chance == 16 ? 0 : chance << 4));
}

void readNoteArray(Draft& draft, const Json::Items& items, const std::string& where) {
  const bool numbers =
      std::all_of(items.begin(), items.end(), [](const Json& item) { return item.isNumber(); });
  if (items.size() < 3 || items.size() > 7 || !numbers)
    throw SpecError("A note array is [step, pitch, velocity, length, nudge, flags, chance]",
                    "Locks go in the object form's \"locks\"");
  auto item = [&](size_t i, const char* name, int lo, int hi, int fallback) {
    return i < items.size() ? integer(items[i], whatOf(name, where), lo, hi) : fallback;
  };
  Note note;
  const int step = item(0, "step", 0, limits::patternLength - 1, 0);
  note.pitch = u8(pitchOf(draft, items[1], whatOf("pitch", where)));
  note.velocity = u8(item(2, "velocity", 1, 127, defaultVelocity));
  note.length = u16(item(3, "length", 1, 65535, defaultLength));
  note.nudge = i8(item(4, "nudge", -64, 63, 0));
  if (items.size() > 5 && items[5].number() > mostFlags)
    throw SpecError("Note flags are Slide, Accent and ratchet bits; Chance has its own field");
  const int flags = item(5, "flags", 0, mostFlags, 0);
  setFlags(note, flags, item(6, "chance", 1, 16, 16));
  draft.put(step, -1, note);
}

int pitchOrPad(const Draft& draft, const Json& object, const std::string& where) {
  const Json *pitch = object.find("pitch"), *pad = object.find("pad");
  if (pitch && pad) throw SpecError("A note has \"pitch\" or \"pad\", not both");
  if (!pitch && !pad) throw SpecError("A note needs \"pitch\" (or \"pad\" on Drums)");
  if (pad && !draft.drums())
    throw SpecError(
        "\"pad\" is for notes on Drums tracks; track " + std::to_string(draft.track) + " is melodic",
        "Use \"pitch\" (MIDI note number)");
  return pitchOf(draft, pad ? *pad : *pitch, whatOf(pad ? "pad" : "pitch", where));
}

void readNoteLocks(Draft& draft, Note& note, int step, const Json& locks, const std::string& where) {
  const std::string form = "A note's \"locks\" is an array of {\"target\", \"value\"}";
  size_t n = 0;
  for (const Json& lock : list(locks, form)) {
    const std::string place = placeOf(where + ".locks", n++);
    if (!lock.isObject()) throw SpecError(form);
    checkKeys(lock, place, {"target", "value", "value01"});
    const Json* name = lock.find("target");
    if (!name || !name->isString()) throw SpecError("A lock needs a target");
    const int target = trackTarget(draft.sound(), name->string());
    addLock(note, draft.sound(), target, name->string(),
            lockValue(draft.sound(), target, name->string(), lock),
            "Track " + std::to_string(draft.track) + " step " + std::to_string(step));
  }
}

void readNoteObject(Draft& draft, const Json& object, const std::string& where) {
  checkKeys(object, where,
            {"step", "pitch", "pad", "velocity", "length", "nudge", "slide", "accent", "ratchet", "chance",
             "locks", "slot"});
  Note note;
  const int step = requiredInteger(object, "step", where, 0, limits::patternLength - 1);
  note.pitch = u8(pitchOrPad(draft, object, where));
  note.velocity = u8(integerAt(object, "velocity", where, 1, 127, defaultVelocity));
  note.length = u16(integerAt(object, "length", where, 1, 65535, defaultLength));
  note.nudge = i8(integerAt(object, "nudge", where, -64, 63, 0));
  int flags = (integerAt(object, "ratchet", where, 1, 4, 1) - 1) << 2;
  if (const Json* slide = object.find("slide"))
    flags |= boolean(*slide, whatOf("slide", where)) ? Note::slideBit : 0;
  if (const Json* accent = object.find("accent"))
    flags |= boolean(*accent, whatOf("accent", where)) ? Note::accentBit : 0;
  setFlags(note, flags, integerAt(object, "chance", where, 1, 16, 16));
  if (const Json* locks = object.find("locks")) readNoteLocks(draft, note, step, *locks, where);
  draft.put(step, integerAt(object, "slot", where, 0, limits::slots - 1, -1), note);
}

// [step, "TARGET", value01] or an object: a Lock on every Note of a Step, or on the one of a pitch.
void readPatternLock(Draft& draft, const Json& lock, const std::string& where) {
  int step, pitch = -1;
  std::string name;
  u16 value = 0;
  int target;
  if (lock.isArray()) {
    const Json::Items& items = lock.items();
    if (items.size() != 3 || !items[1].isString())
      throw SpecError("A pattern lock is [step, \"TARGET\", value01] or an object, in " + where);
    step = integer(items[0], whatOf("step", where), 0, limits::patternLength - 1);
    name = items[1].string();
    target = trackTarget(draft.sound(), name);
    value = fromValue01(items[2]);
  } else {
    checkKeys(lock, where, {"step", "target", "value", "value01", "pitch", "pad"});
    step = requiredInteger(lock, "step", where, 0, limits::patternLength - 1);
    const Json* stated = lock.find("target");
    if (!stated || !stated->isString()) throw SpecError("A lock needs a target");
    name = stated->string();
    target = trackTarget(draft.sound(), name);
    value = lockValue(draft.sound(), target, name, lock);
    if (lock.find("pitch") || lock.find("pad")) pitch = pitchOrPad(draft, lock, where);
  }
  bool found = false;
  if (size_t(step) < draft.steps.size())
    for (Note& note : draft.steps[size_t(step)].notes) {
      if (!note.velocity || (pitch >= 0 && note.pitch != pitch)) continue;
      addLock(note, draft.sound(), target, name, value,
              "Track " + std::to_string(draft.track) + " step " + std::to_string(step));
      found = true;
    }
  if (!found)
    throw SpecError("A Lock belongs to a Note: no Note " +
                        (pitch >= 0 ? "of pitch " + std::to_string(pitch) + " " : "") + "starts on " +
                        draft.place(step),
                    "List the notes before the locks, or put \"locks\" in the note");
}

int readPatternRow(Project& p, const Json& object, const std::string& where) {
  const int track = requiredInteger(object, "track", where, 0, limits::tracks - 1);
  const int id = integerAt(object, "id", where, 0, 65535, freePatternId(p, track));
  if (p.patternCount >= limits::patterns)
    throw SpecError("Too many Patterns", "A Project holds " + std::to_string(limits::patterns));
  if (patternIndex(p, track, id) >= 0)
    throw SpecError("Track " + std::to_string(track) + " has two patterns with id " + std::to_string(id));
  const int length = integerAt(object, "length", where, 1, limits::patternLength, 16);
  addPatternAt(p, track, id, length);
  return id;
}

// Returns the Pattern's id.
int readPattern(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"track", "id", "length", "notes", "locks", "front"});
  const int id = readPatternRow(p, object, where);
  Draft draft{p, requiredInteger(object, "track", where, 0, limits::tracks - 1), id, {}};
  if (const Json* notes = object.find("notes")) {
    size_t n = 0;
    for (const Json& note : list(*notes, whatOf("notes", where) + " is an array of notes")) {
      const std::string place = placeOf(where + ".notes", n++);
      inPlace(place, [&] {
        if (note.isArray())
          readNoteArray(draft, note.items(), place);
        else
          readNoteObject(draft, note, place);
      });
    }
  }
  if (const Json* locks = object.find("locks")) {
    size_t n = 0;
    for (const Json& lock : list(*locks, whatOf("locks", where) + " is an array of locks")) {
      const std::string place = placeOf(where + ".locks", n++);
      inPlace(place, [&] { readPatternLock(draft, lock, place); });
    }
  }
  if (!setSteps(p, draft.track, id, draft.steps.data(), int(draft.steps.size())))
    throw SpecError("Too many notes", "A Project holds " + std::to_string(limits::notes));
  return id;
}

// "front" names the Pattern that holds this one's parked head; it may be listed before or after.
void linkFront(Project& p, const Json& object, const std::string& where, int id) {
  const Json* front = object.find("front");
  if (!front || front->isNull()) return;
  const int track = requiredInteger(object, "track", where, 0, limits::tracks - 1);
  const int frontId = integer(*front, whatOf("front", where), 0, 65534);
  const int row = patternIndex(p, track, frontId), owner = patternIndex(p, track, id);
  if (row < 0 || frontId == id)
    throw SpecError("\"front\" in " + where + " names pattern " + std::to_string(frontId) +
                    ", which the track does not have");
  if (p.patterns[row].isFront || p.patterns[row].frontId || p.patterns[owner].isFront)
    throw SpecError("Pattern " + std::to_string(frontId) + " of track " + std::to_string(track) +
                    " is the front of one pattern and has none of its own");
  p.patterns[row].isFront = 1;
  p.patterns[owner].frontId = u16(frontId + 1);
}

}  // namespace

void readPatterns(Project& p, const Json& section) {
  const Json::Items& items = list(section, "\"patterns\" is an array of patterns");
  std::vector<int> ids;
  for (size_t i = 0; i < items.size(); i++)
    inPlace(placeOf("patterns", i), [&] { ids.push_back(readPattern(p, items[i], placeOf("patterns", i))); });
  for (size_t i = 0; i < items.size(); i++) linkFront(p, items[i], placeOf("patterns", i), ids[i]);
}

}  // namespace synth::spec
