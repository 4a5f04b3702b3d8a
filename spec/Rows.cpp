#include "spec/Rows.h"

#include "core/Names.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/params/Targets.h"
#include "spec/Arrangement.h"

namespace synth::spec {
namespace {

constexpr int defaultLength = 192;

Json noteArray(const NoteRec& n, const Note& note) {
  const int values[] = {n.step, n.pitch, n.velocity, n.length, n.nudge, n.flags & 15, note.chance()};
  constexpr int defaults[] = {-1, -1, -1, defaultLength, 0, 0, 16};
  size_t count = 7;
  while (count > 3 && values[count - 1] == defaults[count - 1]) count--;
  Json array = Json::array();
  for (size_t i = 0; i < count; i++) array.push(values[i]);
  return array;
}

Json noteObject(const Track& track, const NoteRec& n, const Note& note, bool ownSlot) {
  Json o = Json::object();
  o.add("step", int(n.step))
      .add(isDrums(track) ? "pad" : "pitch", int(n.pitch))
      .add("velocity", int(n.velocity));
  if (n.length != defaultLength) o.add("length", int(n.length));
  if (n.nudge) o.add("nudge", int(n.nudge));
  if (note.slide()) o.add("slide", true);
  if (note.accent()) o.add("accent", true);
  if (note.hits() > 1) o.add("ratchet", note.hits());
  if (note.chance() != 16) o.add("chance", note.chance());
  if (note.lockCount()) {
    Json locks = Json::array();
    for (int i = 0; i < note.lockCount(); i++)
      locks.push(Json::object()
                     .add("target", targetText(track, note.locks[i].target - 1))
                     .add("value01", value01(note.locks[i].value)));
    o.add("locks", std::move(locks));
  }
  if (ownSlot) o.add("slot", int(n.slot));
  return o;
}

std::string hex(const u8 (&bytes)[32]) {
  std::string out;
  for (u8 b : bytes) {
    out += "0123456789abcdef"[b >> 4];
    out += "0123456789abcdef"[b & 15];
  }
  return out;
}

}  // namespace

Json value01(u16 value) { return Json(float(double(value) / 65535)); }

std::string targetText(const Track& track, int target) {
  const int slot = target - automation::firstMacroTarget;
  if (automation::isMacroTarget(target) && slot < track.macroCount)
    return std::string(nameText(track.macros[slot].name));
  return automation::targetName(target);
}

Json noteSpec(const Project& p, const NoteRec& n, bool ownSlot) {
  const Note note = n.note();
  return note.lockCount() || ownSlot ? noteObject(p.tracks[n.track], n, note, ownSlot) : noteArray(n, note);
}

Json patternSpec(const Project& p, int row) {
  const PatternRec& r = p.patterns[row];
  Json o = Json::object();
  o.add("track", int(r.track)).add("id", int(r.id));
  if (r.length != 16) o.add("length", int(r.length));
  if (r.frontId) o.add("front", r.frontId - 1);
  Json notes = Json::array();
  Step seen;
  int step = -1;
  for (const NoteRec& n : patternNotes(p, r.track, r.id)) {
    if (n.step != step) seen = Step{};
    step = n.step;
    const bool drums = isDrums(p.tracks[n.track]);
    notes.push(noteSpec(p, n, seen.freeSlot(drums, n.pitch) != n.slot));
    seen.notes[n.slot] = n.note();
  }
  if (!notes.items().empty()) o.add("notes", std::move(notes));
  return o;
}

Json clipSpec(const Project& p, const ClipRec& c) {
  const int loop = patternLength(p, c.track, c.pattern);
  Json o = Json::object();
  o.add("track", int(c.track)).add("at", double(c.start)).add("pattern", int(c.pattern));
  if (int(c.length) != loop - c.offset) o.add("length", double(c.length));
  if (c.offset) o.add("offset", int(c.offset));
  if (c.repeats != (c.offset + c.length > u32(loop))) o.add("repeats", bool(c.repeats));
  return o;
}

Json laneSpec(const Project& p, int row) {
  const LaneRow& lane = p.lanes[row];
  Json o = Json::object();
  const int target = lane.target - 1;
  std::string name;
  if (row >= limits::firstMasterLane) {
    o.add("lane", row - limits::firstMasterLane);
    name = automation::performanceEffectName(target);
  } else {
    const int owner = row / limits::lanesPerOwner;
    if (owner < limits::tracks)
      o.add("track", owner);
    else
      o.add("bus", busKey(owner - limits::tracks));
    o.add("lane", row % limits::lanesPerOwner);
    if (lane.target)
      name = owner < limits::tracks ? targetText(p.tracks[owner], target) : automation::targetName(target);
  }
  o.add("target", lane.target ? Json(name) : Json());
  if (!lane.enabled) o.add("enabled", false);
  Json points = Json::array();
  for (const LanePoint& point : lanePoints(p, row))
    points.push(Json::array().push(point.position / 16.0).push(point.rest ? Json() : value01(point.value)));
  return o.add("points", std::move(points)), o;
}

Json markerSpec(const MarkerRec& m) {
  return std::move(Json::object().add("at", double(m.step)).add("name", nameText(m.name)));
}

Json pinsSpec(const PinList& pins, const Track* track) {
  if (!pins.custom) return {};
  Json keys = Json::array();
  for (int i = 0; i < pins.count; i++) {
    const u16 id = pins.ids[i];
    const int slot = id - limits::firstMacroPin;
    if (const param::Info* info = param::find(id))
      keys.push(info->key);
    else if (track && slot >= 0 && slot < track->macroCount)
      keys.push(nameText(track->macros[slot].name));
    else
      keys.push("MACRO_" + std::to_string(slot + 1));
  }
  return keys;
}

Json sampleSpec(const Track& track) {
  bool none = true;
  for (u8 b : track.sample_hash) none &= b == 0;
  if (none) return {};
  Json o = Json::object();
  o.add("hash", hex(track.sample_hash)).add("name", nameText(track.sample_name));
  return o;
}

Json macrosSpec(const Track& track) {
  Json list = Json::array();
  for (int m = 0; m < track.macroCount; m++) {
    const MacroRec& macro = track.macros[m];
    Json targets = Json::array();
    for (int k = 0; k < macro.targetCount; k++) {
      const MacroTarget& t = macro.targets[k];
      const param::Info* info = param::find(t.param);
      Json o = Json::object();
      o.add("key", info ? info->key : "");
      if (info && info->scope == param::ScopePad) o.add("pad", int(t.pad));
      o.add("amount", t.amount);
      if (macro.polarity && t.amount_down != -t.amount) o.add("amount_down", t.amount_down);
      if (t.window_from != 0 || t.window_to != 1)
        o.add("window", Json::array().push(t.window_from).push(t.window_to));
      targets.push(std::move(o));
    }
    Json o = Json::object();
    o.add("name", nameText(macro.name));
    if (macro.polarity) o.add("polarity", "bi");
    o.add("value", macro.value).add("targets", std::move(targets));
    list.push(std::move(o));
  }
  return list;
}

}  // namespace synth::spec
