#include "core/sounds/MacroEdit.h"

#include <algorithm>
#include <cmath>

#include "core/Names.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"

namespace synth::macros {
namespace {

bool known(const Project& p, int track, int slot) {
  return track >= 0 && track < limits::tracks && slot >= 0 && slot < p.tracks[track].macroCount;
}

// A name that may be given to a Macro, not counting the one at `own`; "" with the error.
std::string usableName(const Track& t, std::string_view name, int own, std::string& error) {
  const std::string clean = cleanName(name);
  if (clean.empty()) {
    error =
        "A Macro's name is one word of up to 12 letters, digits, _ or -, starting with a letter, and not a "
        "parameter's key: " +
        std::string(name);
    return "";
  }
  const int taken = find(t, clean);
  if (taken < 0 || taken == own) return clean;
  error = "The sound already has a Macro named " + clean;
  return "";
}

// Every Lane of the Track's rows that drives a Macro: change(row, slot) for each.
template <class Change>
void eachMacroLane(Project& p, int track, Change change) {
  for (int s = 0; s < limits::lanesPerOwner; s++) {
    const int row = laneRow(track, s), target = p.lanes[row].target - 1;
    if (automation::isMacroTarget(target)) change(row, target - automation::firstMacroTarget);
  }
}

template <class Change>
void eachNote(Project& p, int track, Change change) {
  for (int i = 0; i < p.noteCount; i++)
    if (p.notes[i].track == track) change(p.notes[i]);
}

int macroOf(const LockRec& lock) {
  const int target = lock.target - 1;
  return automation::isMacroTarget(target) ? target - automation::firstMacroTarget : -1;
}
u8 targetOf(int slot) { return u8(automation::firstMacroTarget + slot + 1); }

// Rewrites the Macro Locks of a Note: `place` gives a slot's new one, or -1 to drop it.
template <class Place>
void rewriteLocks(NoteRec& note, Place place) {
  int kept = 0;
  for (int i = 0; i < limits::locks; i++) {
    LockRec lock = note.locks[i];
    if (!lock.target) continue;
    if (const int slot = macroOf(lock); slot >= 0) {
      const int now = place(slot);
      if (now < 0) continue;
      lock.target = targetOf(now);
    }
    note.locks[kept++] = lock;
  }
  for (; kept < limits::locks; kept++) note.locks[kept] = LockRec{};
}

template <class Place>
void rewritePins(PinList& pins, Place place) {
  int kept = 0;
  for (int i = 0; i < pins.count; i++) {
    u16 id = pins.ids[i];
    if (id >= limits::firstMacroPin) {
      const int now = place(id - limits::firstMacroPin);
      if (now < 0) continue;
      id = u16(limits::firstMacroPin + now);
    }
    pins.ids[kept++] = id;
  }
  for (int i = kept; i < pins.count; i++) pins.ids[i] = 0;
  pins.count = u8(kept);
}

// Everything that names a Macro of the Track takes its new slot, or goes.
template <class Place>
void rewriteAll(Project& p, int track, Place place) {
  eachMacroLane(p, track, [&](int row, int slot) {
    const int now = place(slot);
    if (now < 0)
      clearLane(p, row);
    else
      p.lanes[row].target = targetOf(now);
  });
  eachNote(p, track, [&](NoteRec& note) { rewriteLocks(note, place); });
  rewritePins(p.tracks[track].pins, place);
}

int indexOf(const MacroRec& macro, u16 param, int pad) {
  for (int i = 0; i < macro.targetCount; i++)
    if (macro.targets[i].param == param && macro.targets[i].pad == pad) return i;
  return -1;
}

bool fits(f32 amount) { return std::isfinite(amount) && std::fabs(amount) <= largestAmount; }

}  // namespace

std::string refusal(const param::Info& info) {
  return "A Macro cannot move " + std::string(info.key) +
         " on this track: its targets are the sound's continuous values and the Sends";
}

int add(Project& p, int track, std::string_view name, bool bipolar, f32 value, std::string& error) {
  if (track < 0 || track >= limits::tracks) {
    error = "No track " + std::to_string(track);
    return -1;
  }
  Track& t = p.tracks[track];
  const std::string clean = usableName(t, name, -1, error);
  if (clean.empty()) return -1;
  if (t.macroCount >= limits::macros) {
    error = "A sound holds at most 16 Macros";
    return -1;
  }
  const int slot = t.macroCount++;
  MacroRec& macro = t.macros[slot];
  macro = MacroRec{};
  setName(macro.name, clean);
  macro.polarity = bipolar;
  macro.value = clampValue(bipolar, value);
  return slot;
}

bool rename(Project& p, int track, int slot, std::string_view name, std::string& error) {
  if (!known(p, track, slot)) {
    error = "No such Macro";
    return false;
  }
  const std::string clean = usableName(p.tracks[track], name, slot, error);
  if (clean.empty()) return false;
  setName(p.tracks[track].macros[slot].name, clean);
  return true;
}

bool remove(Project& p, int track, int slot) {
  if (!known(p, track, slot)) return false;
  Track& t = p.tracks[track];
  std::copy(t.macros + slot + 1, t.macros + t.macroCount, t.macros + slot);
  t.macros[--t.macroCount] = MacroRec{};
  rewriteAll(p, track, [slot](int old) { return old == slot ? -1 : old > slot ? old - 1 : old; });
  return true;
}

void prune(Project& p, int track) {
  if (track < 0 || track >= limits::tracks) return;
  const int count = p.tracks[track].macroCount;
  rewriteAll(p, track, [count](int slot) { return slot < count ? slot : -1; });
}

bool padFits(const param::Info& info, int pad, std::string& error) {
  const bool perPad = info.scope == param::ScopePad;
  if (perPad ? pad >= 0 && pad < limits::pads : pad < 0) return true;
  error = std::string(info.key) + (perPad ? " needs a Pad 0..7" : " takes no Pad");
  return false;
}

bool map(Project& p, int track, int slot, const param::Info& info, int pad, f32 amount, f32 amountDown,
         f32 from, f32 to, std::string& error) {
  auto refuse = [&](const std::string& why) {
    error = why;
    return false;
  };
  if (!known(p, track, slot)) return refuse("No such Macro");
  Track& t = p.tracks[track];
  MacroRec& macro = t.macros[slot];
  if (!targetable(info, t.track_kind, t.engine)) return refuse(refusal(info));
  if (!padFits(info, pad, error)) return false;
  if (!fits(amount)) return refuse("The amount must be a number");
  if (std::isnan(amountDown)) amountDown = -amount;
  if (!macro.polarity) amountDown = 0;
  // None of them is -0: an equal sound has equal bytes.
  for (f32* number : {&amount, &amountDown, &from}) *number += 0.0f;
  if (!fits(amountDown)) return refuse("The amount at -100 % must be a number");
  if (!(from >= 0 && from < to && to <= 1)) return refuse(badWindow);

  MacroTarget target;
  target.param = info.id;
  target.pad = u8(std::max(pad, 0));
  target.amount = amount;
  target.amount_down = amountDown;
  target.window_from = from;
  target.window_to = to;
  const int at = indexOf(macro, target.param, target.pad);
  if (at >= 0) {
    macro.targets[at] = target;
    return true;
  }
  if (macro.targetCount >= limits::macroTargets) return refuse("A Macro moves at most 16 parameters");
  macro.targets[macro.targetCount++] = target;
  return true;
}

bool unmap(Project& p, int track, int slot, const param::Info& info, int pad) {
  if (!known(p, track, slot)) return false;
  MacroRec& macro = p.tracks[track].macros[slot];
  const int at = indexOf(macro, info.id, std::max(pad, 0));
  if (at < 0) return false;
  std::copy(macro.targets + at + 1, macro.targets + macro.targetCount, macro.targets + at);
  macro.targets[--macro.targetCount] = MacroTarget{};
  return true;
}

bool setValue(Project& p, int track, int slot, f32 value) {
  if (!known(p, track, slot) || !std::isfinite(value)) return false;
  MacroRec& macro = p.tracks[track].macros[slot];
  macro.value = clampValue(macro.polarity, value);
  return true;
}

bool setBipolar(Project& p, int track, int slot, bool bipolar) {
  if (!known(p, track, slot) || bool(p.tracks[track].macros[slot].polarity) == bipolar) return false;
  MacroRec& macro = p.tracks[track].macros[slot];
  macro.polarity = bipolar;
  macro.value = clampValue(bipolar, macro.value);
  for (int i = 0; i < macro.targetCount; i++)
    macro.targets[i].amount_down = bipolar ? -macro.targets[i].amount + 0.0f : 0;
  auto moved = [bipolar](u16 stored) {
    const f32 value = fromNormalized(!bipolar, f32(stored) / 65535.0f);
    return u16(std::lround(double(toNormalized(bipolar, value)) * 65535));
  };
  eachMacroLane(p, track, [&](int row, int driven) {
    if (driven != slot) return;
    LanePoint* points = p.lanePoints + p.lanes[row].first;
    for (int i = 0; i < p.lanes[row].count; i++)
      if (!points[i].rest) points[i].value = moved(points[i].value);
  });
  eachNote(p, track, [&](NoteRec& note) {
    for (LockRec& lock : note.locks)
      if (macroOf(lock) == slot) lock.value = moved(lock.value);
  });
  return true;
}

namespace {

// The slot of a Macro of the old sound in the new one, or -1.
int sameName(const Track& now, const Track& old, int slot) {
  return slot < old.macroCount ? find(now, nameText(old.macros[slot].name)) : -1;
}

}  // namespace

void followLocks(NoteRec& note, const Track& now, const Track& old) {
  rewriteLocks(note, [&](int slot) { return sameName(now, old, slot); });
}

void followPins(Track& now, const Track& old) {
  rewritePins(now.pins, [&](int slot) { return sameName(now, old, slot); });
}

void follow(Project& p, int track, const Track& old) {
  if (track < 0 || track >= limits::tracks) return;
  const Track& now = p.tracks[track];
  eachMacroLane(p, track, [&](int row, int slot) {
    const int found = sameName(now, old, slot);
    if (found < 0)
      clearLane(p, row);
    else
      p.lanes[row].target = targetOf(found);
  });
  eachNote(p, track, [&](NoteRec& note) { followLocks(note, now, old); });
}

}  // namespace synth::macros
