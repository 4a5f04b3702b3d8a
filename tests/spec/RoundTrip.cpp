// Whole Projects written as specs: what is stored comes back byte for byte, in whatever order it is listed.
#include <algorithm>
#include <map>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Lanes.h"
#include "core/params/Registry.h"
#include "core/sounds/Pins.h"
#include "spec/Arrangement.h"
#include "spec/Rows.h"
#include "support/Cli.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

Json paramsOf(const Project& p, param::Scope scope, int t = 0, int pad = 0) {
  Json params = Json::object();
  for (const param::Info& info : param::all())
    if (info.scope == scope) params.add(info.key, info.get(p, t, pad));
  return params;
}

// Everything that a spec can say of a Project, spelled out. Pins that a sound does not list are taken away
// first: a spec refuses them.
Json specOf(Project& p) {
  Json tracks = Json::array(), pads = Json::array(), patterns = Json::array(), clips = Json::array(),
       lanes = Json::array(), master = Json::array(), markers = Json::array();
  Json buses = Json::array();
  for (int bus : {SendI, SendII, MasterBus}) {
    if (p.busPins[bus].custom) pins::setBusKeys(p, bus, pins::busKeys(p, bus));
    buses.push(std::move(
        Json::object().add("bus", spec::busKey(bus)).add("pins", spec::pinsSpec(p.busPins[bus], nullptr))));
  }
  for (int t = 0; t < limits::tracks; t++) {
    Track& track = p.tracks[t];
    if (track.pins.custom) pins::setKeys(track, pins::keys(track));
    Json o = Json::object();
    o.add("index", t).add("kind", int(track.track_kind)).add("engine_defaults", int(track.engine));
    o.add("origin", int(track.origin)).add("params", paramsOf(p, param::ScopeTrack, t));
    o.add("name", nameText(track.name)).add("preset_name", nameText(track.preset_name));
    o.add("macros", spec::macrosSpec(track)).add("pins", spec::pinsSpec(track.pins, &track));
    if (const Json sample = spec::sampleSpec(track); !sample.isNull()) o.add("sample", sample);
    tracks.push(std::move(o));
    for (int pad = 0; pad < limits::pads && isDrums(track); pad++) {
      Json row = Json::object();
      row.add("track", t).add("index", pad).add("params", paramsOf(p, param::ScopePad, t, pad));
      pads.push(std::move(row));
    }
  }
  for (int i = 0; i < p.patternCount; i++) patterns.push(spec::patternSpec(p, i));
  for (int i = 0; i < p.clipCount; i++) clips.push(spec::clipSpec(p, p.clips[i]));
  for (int row = 0; row < limits::lanes; row++)
    if (laneInUse(p.lanes[row]))
      (row < limits::firstMasterLane ? lanes : master).push(spec::laneSpec(p, row));
  for (int i = 0; i < p.markerCount; i++) markers.push(spec::markerSpec(p.markers[i]));
  Json project = paramsOf(p, param::ScopeProject), o = Json::object();
  if (p.loopEnd) project.add("loop", Json::array().push(double(p.loopStart)).push(double(p.loopEnd)));
  o.add("name", projectName(p)).add("project", std::move(project)).add("tracks", std::move(tracks));
  o.add("pads", std::move(pads)).add("patterns", std::move(patterns)).add("clips", std::move(clips));
  return std::move(o.add("lanes", std::move(lanes))
                       .add("master", std::move(master))
                       .add("markers", std::move(markers))
                       .add("buses", std::move(buses)));
}

// Pad values of Tracks that are no kits cannot be said in a spec; both sides show their defaults.
void forgetHiddenPads(Project& p) {
  const Track none;
  for (Track& track : p.tracks)
    for (const param::Info& info : param::all())
      for (int pad = 0; pad < limits::pads && info.scope == param::ScopePad && !isDrums(track); pad++)
        info.set(info.get(none, pad), track, pad);
}

void shuffle(Random& r, Json::Items& items) {
  for (size_t i = items.size(); i > 1; i--) std::swap(items[i - 1], items[size_t(r.below(int(i)))]);
}

// Notes of different Steps in another order, those of one Step in the same.
void shuffleNotes(Random& r, Json& pattern) {
  if (!pattern.find("notes")) return;
  std::map<double, u32> rank;
  auto step = [](const Json& note) {
    return (note.isArray() ? note.items()[0] : *note.find("step")).number();
  };
  for (Json::Member& member : pattern.members()) {
    if (member.key != "notes") continue;
    for (const Json& note : member.value.items()) rank[step(note)] = r.next();
    std::stable_sort(member.value.items().begin(), member.value.items().end(),
                     [&](const Json& a, const Json& b) { return rank[step(a)] < rank[step(b)]; });
  }
}

TEST(RoundTrip, EveryProjectComesBackFromItsSpec) {
  for (u32 seed = 1; seed <= 60; seed++) {
    auto p = randomProject(seed);
    Json spec = specOf(*p);
    forgetHiddenPads(*p);
    // Through text as well: every number must print so that it reads back.
    for (const std::string& text : {json::compact(spec), json::pretty(spec)}) {
      auto again = built(text);
      forgetHiddenPads(*again);
      ASSERT_TRUE(projectBytes(*again) == projectBytes(*p)) << "seed " << seed;
    }
  }
}

TEST(RoundTrip, TheOrderOfRowsDoesNotCount) {
  Random r(7);
  for (u32 seed = 1; seed <= 40; seed++) {
    auto p = randomProject(seed);
    Json spec = specOf(*p);
    const std::string bytes = projectBytes(*spec::build(spec));
    for (Json::Member& section : spec.members()) {
      if (section.value.isArray()) shuffle(r, section.value.items());
      if (section.key == "patterns")
        for (Json& pattern : section.value.items()) shuffleNotes(r, pattern);
    }
    std::reverse(spec.members().begin(), spec.members().end());
    ASSERT_TRUE(projectBytes(*spec::build(spec)) == bytes) << "seed " << seed;
  }
}

}  // namespace
}  // namespace synth::test
