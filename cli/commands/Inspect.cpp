// project inspect: a whole project at a glance.
#include "base/Text.h"
#include "cli/LoadAny.h"
#include "cli/PresetLookup.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "spec/Presets.h"
#include "spec/Rows.h"
#include "spec/Warnings.h"

namespace synth::cli::commands {
namespace {

// Whether the Track has moved away from the Preset that it names; a name that leads nowhere tells nothing.
bool presetChanged(const Project& p, int t) {
  const auto found = spec::presetResolver()(std::string(nameText(p.tracks[t].preset_name)));
  return found && !preset::matches(p, t, *found);
}

Json macrosOf(const Track& track) {
  Json list = Json::array();
  for (int m = 0; m < track.macroCount; m++)
    list.push(Json::object()
                  .add("name", nameText(track.macros[m].name))
                  .add("polarity", track.macros[m].polarity ? "bi" : "uni")
                  .add("value", track.macros[m].value));
  return list;
}

Json trackRow(const Project& p, int t) {
  const Track& track = p.tracks[t];
  int notes = 0;
  for (int i = 0; i < p.noteCount; i++) notes += p.notes[i].track == t;
  Json o = Json::object();
  o.add("index", t).add("name", nameText(track.name)).add("kind", isDrums(track) ? "DRUMS" : "MELODIC");
  if (!isDrums(track)) o.add("engine", synthKindName(track.engine));
  o.add("preset", nameText(track.preset_name));
  if (track.preset_name[0] && presetChanged(p, t)) o.add("preset_changed", true);
  o.add("macros", macrosOf(track)).add("notes", notes).add("clips", clipsOf(p, t).size());
  o.add("level", track.level).add("pan", track.pan);
  if (track.mute) o.add("mute", true);
  if (track.solo) o.add("solo", true);
  if (Json sample = spec::sampleSpec(track); !sample.isNull()) o.add("sample", std::move(sample));
  return o;
}

Json patternRow(const Project& p, const PatternRec& r) {
  const auto notes = patternNotes(p, r.track, r.id);
  int clips = 0, lowest = 127, highest = 0;
  for (const ClipRec& clip : clipsOf(p, r.track)) clips += clip.pattern == r.id;
  for (const NoteRec& n : notes) {
    lowest = std::min(lowest, int(n.pitch));
    highest = std::max(highest, int(n.pitch));
  }
  Json o = Json::object();
  o.add("track", int(r.track)).add("id", int(r.id)).add("length", int(r.length));
  o.add("notes", notes.size()).add("clips", clips);
  if (!notes.empty()) o.add("lowest", lowest).add("highest", highest);
  if (r.isFront) o.add("front", true);
  return o;
}

Json clipRow(const ClipRec& c) {
  Json o = Json::object();
  o.add("track", int(c.track)).add("at", double(c.start)).add("length", double(c.length));
  o.add("pattern", int(c.pattern));
  if (c.offset) o.add("offset", int(c.offset));
  o.add("repeats", bool(c.repeats));
  return o;
}

Json markerRow(const Project& p, const MarkerRec& m) {
  u32 start = 0, end = m.step;
  sectionAt(p, m.step, start, end);
  Json o = Json::object();
  o.add("at", double(m.step)).add("name", nameText(m.name)).add("end", double(end));
  return o;
}

Json laneOf(const Project& p, int row) {
  const int owner = row / limits::lanesPerOwner;
  Json spec = spec::laneSpec(p, row), o = Json::object();
  o.add("row", row >= limits::firstMasterLane ? Json("master")
               : owner < limits::tracks       ? Json(owner)
                                              : *spec.find("bus"));
  o.add("lane", *spec.find("lane")).add("target", *spec.find("target"));
  o.add("points", spec.find("points")->items().size()).add("enabled", p.lanes[row].enabled != 0);
  return o;
}

template <class One>
Json rows(int count, One one) {
  Json list = Json::array();
  for (int i = 0; i < count; i++) list.push(one(i));
  return list;
}

Json run(const Args& args) {
  auto project = loadAny(args.positionals[0]);
  const Project& p = *project;
  Json lanes = Json::array();
  for (int row = 0; row < limits::lanes; row++)
    if (laneInUse(p.lanes[row])) lanes.push(laneOf(p, row));
  Json o = Json::object();
  o.add("name", projectName(p)).add("bpm", p.bpm).add("track_count", int(p.track_count));
  o.add("song_steps", double(songEnd(p))).add("song_seconds", songEnd(p) * 60.0 / (double(p.bpm) * 4));
  o.add("tracks", rows(p.track_count, [&](int t) { return trackRow(p, t); }));
  o.add("patterns", rows(p.patternCount, [&](int i) { return patternRow(p, p.patterns[i]); }));
  o.add("clips", rows(p.clipCount, [&](int i) { return clipRow(p.clips[i]); }));
  o.add("markers", rows(p.markerCount, [&](int i) { return markerRow(p, p.markers[i]); }));
  o.add("lanes", std::move(lanes)).add("warnings", textList(spec::warningsOf(p)));
  return o;
}

}  // namespace

Command projectInspect() {
  return {
      "project inspect",
      "Summarize a project: tracks, Patterns, Clips, Markers with their Sections, Lanes in use, the Song's "
      "length, warnings.",
      {positional("input", "path.quorel, spec.json or @app", "the project").needed()},
      "{name, bpm, track_count, song_steps, song_seconds, tracks, patterns, clips, markers, lanes, warnings}",
      false,
      {"quorel project inspect song.quorel"},
      run};
}

}  // namespace synth::cli::commands
