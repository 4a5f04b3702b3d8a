#include "support/RandomProject.h"

#include <algorithm>
#include <vector>

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/Macros.h"

namespace synth::test {
namespace {

f32 randomValue(Random& r, const param::Info& info) { return param::fromNormalized(info, r.unit()); }

void randomValues(Random& r, Project& p, int percent) {
  for (const param::Info& info : param::all()) {
    if (std::string_view(info.key) == "track_kind") continue;
    for (int i = 0; i < info.instances(); i++) {
      if (!r.chance(percent)) continue;
      if (info.scope == param::ScopePad)
        info.set(randomValue(r, info), p, i / limits::pads, i % limits::pads);
      else
        info.set(randomValue(r, info), p, i);
    }
  }
}

void randomMacros(Random& r, Track& track) {
  const int count = r.below(4);
  for (MacroRec& macro : track.macros) macro = MacroRec{};
  for (int m = 0; m < count; m++) {
    MacroRec& macro = track.macros[m];
    setName(macro.name, "MOVE-" + std::to_string(m));
    macro.polarity = u8(r.below(2));
    macro.value = macro.polarity ? r.unit() * 2 - 1 : r.unit();
    for (const param::Info& info : param::all()) {
      if (macro.targetCount >= 4 || !r.chance(8)) continue;
      if (!macros::targetable(info, track.track_kind, track.engine)) continue;
      MacroTarget& target = macro.targets[macro.targetCount++];
      target.param = info.id;
      target.pad = info.scope == param::ScopePad ? u8(r.below(limits::pads)) : 0;
      target.amount = r.unit() * 4 - 2;
      target.amount_down = macro.polarity ? r.unit() * 4 - 2 : 0;
      if (r.chance(30)) {
        target.window_from = r.unit() * 0.5f;
        target.window_to = target.window_from + 0.25f;
      }
    }
  }
  track.macroCount = u8(count);
}

void randomPins(Random& r, PinList& pins, bool ofTrack) {
  pins = PinList{};
  if (!r.chance(30)) return;
  pins.custom = 1;
  pins.count = u8(r.below(6));
  for (int i = 0; i < pins.count; i++)
    pins.ids[i] =
        ofTrack && r.chance(20) ? u16(limits::firstMacroPin + r.below(16)) : param::info(r.below(264)).id;
}

Note randomNote(Random& r, const Track& track, bool plain) {
  Note note;
  note.pitch = u8(isDrums(track) ? r.below(limits::pads) : r.between(30, 90));
  note.velocity = u8(r.between(1, 127));
  if (plain) return note;
  note.length = u16(r.chance(50) ? r.between(16, 1024) : 192);
  note.nudge = i8(r.chance(30) ? r.between(-64, 63) : 0);
  note.flags = u8(r.chance(30) ? r.below(256) : 0);
  if (!r.chance(30)) return note;
  int locks = 0;
  for (int tries = 0; tries < 4; tries++) {
    int target = isDrums(track) ? (r.chance(50) ? automation::PITCH : automation::DECAY) : r.below(46);
    if (!isDrums(track) && track.macroCount && r.chance(30))
      target = automation::firstMacroTarget + r.below(track.macroCount);
    bool used = !automation::lockable(target, isDrums(track));
    for (int i = 0; i < locks; i++) used |= note.locks[i].target == target + 1;
    if (used) continue;
    note.locks[locks].target = u8(target + 1);
    note.locks[locks++].value = u16(r.below(65536));
  }
  return note;
}

void randomPattern(Random& r, Project& p, int t, u32& at) {
  const int length = r.chance(70) ? 16 * r.between(1, 3) : r.between(1, 64);
  const int id = addPattern(p, t, length);
  if (id < 0) return;
  std::vector<Step> steps(size_t(length) + (r.chance(10) ? 8u : 0u));
  for (Step& step : steps) {
    const int notes = r.chance(35) ? r.between(1, 3) : 0;
    for (int n = 0; n < notes; n++) {
      const Note note = randomNote(r, p.tracks[t], false);
      const int slot =
          r.chance(85) ? step.freeSlot(isDrums(p.tracks[t]), note.pitch) : r.below(limits::slots);
      if (slot >= 0) step.notes[slot] = note;
    }
  }
  setSteps(p, t, id, steps.data(), int(steps.size()));
  ClipRec clip;
  clip.track = u8(t);
  clip.pattern = u16(id);
  for (int copies = r.between(1, 2); copies > 0; copies--) {
    clip.start = at + u32(r.chance(30) ? r.below(20) : 0);
    clip.offset = u16(r.chance(20) ? r.below(length) : 0);
    clip.length = u32(r.chance(50) ? length - clip.offset : r.between(1, length * 2));
    clip.repeats = clipWraps(p, clip) || r.chance(20);
    if (addClip(p, clip)) at = clipEnd(clip);
  }
  if (trackClips(p, t) == 0 || firstPattern(p, t) < 0) return;
  bool played = false;
  for (const ClipRec& c : clipsOf(p, t)) played |= c.pattern == id;
  if (!played)
    removePattern(p, t, id);
  else if (length > 8 && r.chance(15) && clip.offset == 0)
    parkFront(p, t, id, 1);
}

std::vector<LanePoint> randomPoints(Random& r, u32 end) {
  std::vector<LanePoint> points;
  u32 position = 0;
  for (int n = r.between(1, 8); n > 0; n--) {
    LanePoint point;
    position = std::min<u32>(position + u32(r.below(int(end) * 4 + 1)), limits::lanePosition);
    point.position = position;
    const size_t size = points.size();
    if (size > 1 && points[size - 1].position == position && points[size - 2].position == position) continue;
    point.rest = r.chance(10);
    point.value = point.rest ? 0 : u16(r.below(65536));
    points.push_back(point);
  }
  return points;
}

void setLane(Project& p, int row, int target, const std::vector<LanePoint>& points) {
  setLanePoints(p, row, points.data(), int(points.size()));
  p.lanes[row].enabled = 1;
  p.lanes[row].target = u8(target + 1);
}

void randomLanes(Random& r, Project& p, int percent) {
  const u32 end = std::max<u32>(songEnd(p), 16);
  for (int row = 0; row < limits::lanes; row++) {
    if (!r.chance(percent)) continue;
    int target;
    const int owner = row / limits::lanesPerOwner;
    if (row >= limits::firstMasterLane) {
      target = r.below(automation::performanceEffects);
    } else if (owner < limits::tracks) {
      target = r.chance(90) ? r.below(46) : automation::firstMacroTarget + r.below(16);
    } else {
      do target = automation::firstBusTarget + r.below(automation::busTargets);
      while (automation::busOf(target) != owner - limits::tracks);
    }
    setLane(p, row, target, randomPoints(r, end));
    p.lanes[row].enabled = r.chance(90);
  }
}

}  // namespace

ProjectPtr randomProject(u32 seed) {
  Random r(seed);
  auto project = makeProject();
  Project& p = *project;
  clearArrangement(p);
  setProjectName(p, "Random \xC3\xA9 " + std::to_string(seed));
  randomValues(r, p, 15);
  for (int t = 0; t < limits::tracks; t++) {
    Track& track = p.tracks[t];
    if (r.chance(20)) track.track_kind = u8(!track.track_kind);
    track.origin = u8(r.chance(20) ? 255 : t);
    if (r.chance(30)) setName(track.name, "TRACK " + std::to_string(r.below(1000)));
    if (r.chance(20)) setName(track.preset_name, "SOME PRESET");
    randomMacros(r, track);
    randomPins(r, track.pins, true);
    if (r.chance(20)) {
      for (u8& b : track.sample_hash) b = u8(r.below(256));
      setName(track.sample_name, "TAKE");
    }
    u32 at = u32(r.below(32));
    for (int n = r.below(4); n > 0; n--) randomPattern(r, p, t, at);
  }
  for (PinList& pins : p.busPins) randomPins(r, pins, false);
  randomLanes(r, p, 12);
  for (int n = r.below(6); n > 0; n--) addMarker(p, u32(r.below(300)), "Part " + std::to_string(n));
  if (r.chance(40)) {
    p.loopStart = u32(r.below(64));
    p.loopEnd = p.loopStart + u32(r.between(1, 64));
  }
  return project;
}

// Two Macros that move whatever they may.
void addMacros(Random& r, Project& p, int t) {
  const Track& track = p.tracks[t];
  std::vector<const param::Info*> movable;
  for (const param::Info& info : param::all())
    if (macros::targetable(info, track.track_kind, track.engine)) movable.push_back(&info);
  std::string error;
  for (const char* name : {"FIRST", "SECOND"}) {
    const int slot = macros::add(p, t, name, r.chance(50), r.unit(), error);
    for (int n = r.between(1, 4); n > 0 && slot >= 0; n--) {
      const param::Info& info = *movable[size_t(r.below(int(movable.size())))];
      macros::map(p, t, slot, info, info.scope == param::ScopePad ? r.below(limits::pads) : -1,
                  2 * r.unit() - 1, 2 * r.unit() - 1, 0.5f * r.unit(), 1 - 0.4f * r.unit(), error);
    }
  }
}

ProjectPtr randomSong(u32 seed) {
  Random r(seed);
  auto project = makeProject();
  Project& p = *project;
  clearArrangement(p);
  p.track_count = 6;
  p.bpm = f32(r.between(80, 200));
  p.swing = 0.5f + 0.25f * r.unit();
  p.humanize = r.chance(30) ? r.unit() : 0;
  for (int t = 0; t < p.track_count; t++) {
    Track& track = p.tracks[t];
    if (t > 0) setSynthKind(track, r.below(SAMPLER));
    for (const param::Info& info : param::all())
      if (info.scope == param::ScopeTrack && !info.mix && r.chance(35) &&
          std::string_view(info.key) != "engine" && std::string_view(info.key) != "track_kind")
        info.set(randomValue(r, info), track);
    track.voice_mode = u8(r.below(4));
    track.polyphony = u8(r.between(1, 8));
    track.unison = u8(r.chance(30) ? r.between(2, 4) : 1);
    track.trim = 0;
    track.duck_amount = r.chance(30) ? r.unit() : 0;
    track.send_1 = r.chance(50) ? r.unit() : 0;
    track.send_2 = r.chance(50) ? r.unit() : 0;
    track.room_mix = r.chance(30) ? r.unit() : 0;
    track.mod_type = u8(r.below(6));
    for (int pad = 0; pad < limits::pads; pad++) {
      for (const param::Info& info : param::all())
        if (info.scope == param::ScopePad && r.chance(30)) info.set(randomValue(r, info), track, pad);
      track.pad_model[pad] = u8(r.below(13));
      track.pad_choke[pad] = u8(r.below(3));
      track.pad_gate[pad] = r.chance(30) ? r.unit() * 0.2f : 0;
    }
    if (r.chance(50)) addMacros(r, p, t);
    const int id = addLoop(p, t, 16, 0, 0);
    for (int s = 0; s < 16; s++)
      for (int n = r.chance(45) ? r.between(1, 2) : 0; n > 0; n--) {
        Step step = stepAt(p, t, id, s);
        const Note note = randomNote(r, track, false);
        const int slot = step.freeSlot(isDrums(track), note.pitch);
        if (slot >= 0) setNote(p, t, id, s, slot, note);
      }
    for (int lane = 0; lane < 3; lane++)
      if (r.chance(60)) setLane(p, laneRow(t, lane), r.below(46), randomPoints(r, 16));
    for (int m = 0; m < track.macroCount; m++)
      if (r.chance(50)) setLane(p, laneRow(t, 3 + m), automation::firstMacroTarget + m, randomPoints(r, 16));
  }
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeProject && r.chance(50) &&
        (std::string_view(info.key).starts_with("fx") || std::string_view(info.key).starts_with("comp") ||
         std::string_view(info.key).starts_with("master_eq") || std::string_view(info.key) == "saturation"))
      info.set(randomValue(r, info), p);
  if (r.chance(50)) setLane(p, laneRow(busOwner(MasterBus), 0), 64, randomPoints(r, 16));
  for (int bus : {SendI, SendII})
    for (int target = 65; target < 162; target++)
      if (r.chance(4) && automation::busHolds(p, bus, *automation::targetInfo(target)))
        setLane(p, laneRow(busOwner(bus), 0), target, randomPoints(r, 16));
  for (int move = 0; move < automation::performanceEffects; move++)
    if (r.chance(30)) setLane(p, limits::firstMasterLane + move, move, randomPoints(r, 16));
  return project;
}

}  // namespace synth::test
