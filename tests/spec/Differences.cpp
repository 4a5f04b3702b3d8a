// What differs between two Projects: nothing for equal ones, and each changed thing by its path.
#include <set>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Lanes.h"
#include "core/model/Patterns.h"
#include "core/params/Registry.h"
#include "core/sounds/MacroEdit.h"
#include "spec/Diff.h"
#include "support/Cli.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

using Paths = std::multiset<std::string>;

Paths pathsOf(const Json& records) {
  Paths paths;
  for (const Json& record : records.items()) paths.insert(record.find("path")->string());
  return paths;
}

std::string pathOf(const param::Info& info, int track, int pad) {
  const std::string t = "tracks[" + std::to_string(track) + "].";
  if (info.scope == param::ScopeProject) return std::string("project.") + info.key;
  if (info.scope == param::ScopeTrack) return t + info.key;
  return t + "pads[" + std::to_string(pad) + "]." + info.key;
}

std::string diffOf(const std::string& before, const std::string& after) {
  return json::compact(spec::diffProjects(*built(before), *built(after)));
}

TEST(Differences, EqualProjectsHaveNone) {
  for (u32 seed = 1; seed <= 20; seed++) {
    auto p = randomProject(seed);
    EXPECT_EQ(json::compact(spec::diffProjects(*p, *copyOf(*p))), "[]");
  }
}

TEST(Differences, EachRowOfTheRegistryHasItsPath) {
  auto p = randomProject(3);
  Random r(5);
  for (const param::Info& info : param::all()) {
    const int i = r.below(info.instances()), pad = info.scope == param::ScopePad ? i % limits::pads : 0,
              t = info.scope == param::ScopePad ? i / limits::pads : i;
    auto changed = copyOf(*p);
    info.set(info.get(*p, t, pad) == info.min ? info.max : info.min, *changed, t, pad);
    const Json records = spec::diffProjects(*p, *changed);
    EXPECT_EQ(pathsOf(records), Paths{pathOf(info, t, pad)});
    EXPECT_EQ(valueAt(records, "[0].from").number(), double(info.get(*p, t, pad)));
    EXPECT_EQ(valueAt(records, "[0].to").number(), double(info.get(*changed, t, pad)));
    EXPECT_EQ(valueAt(records, "[0].shown").string(),
              param::formatted(info, info.get(*changed, t, pad), changed.get(), t));
  }
}

TEST(Differences, OfTwoRandomProjectsNameAllThatChanged) {
  for (u32 seed = 1; seed <= 15; seed++) {
    auto a = randomProject(seed), b = randomProject(seed + 100);
    const Paths found = pathsOf(spec::diffProjects(*a, *b));
    Paths expected;
    for (const param::Info& info : param::all())
      for (int i = 0; i < info.instances(); i++) {
        const bool ofPad = info.scope == param::ScopePad;
        const int t = ofPad ? i / limits::pads : i, pad = ofPad ? i % limits::pads : 0;
        if (info.get(*a, t, pad) != info.get(*b, t, pad)) expected.insert(pathOf(info, t, pad));
      }
    for (const Project* p : {a.get(), b.get()}) {
      const Project& other = p == a.get() ? *b : *a;
      for (int i = 0; i < p->patternCount; i++) {
        const PatternRec& r = p->patterns[i];
        if (patternIndex(other, r.track, r.id) < 0)
          expected.insert("patterns[" + std::to_string(r.track) + "/" + std::to_string(r.id) + "]");
      }
      for (int i = 0; i < p->markerCount; i++) {
        bool shared = false;
        for (int k = 0; k < other.markerCount; k++) shared |= other.markers[k].step == p->markers[i].step;
        if (!shared) expected.insert("markers[" + std::to_string(p->markers[i].step) + "]");
      }
    }
    for (const std::string& path : expected) EXPECT_EQ(found.count(path), 1u) << path;
    for (const std::string& path : found)
      if (path.starts_with("project.") && path != "project.loop") {
        EXPECT_EQ(expected.count(path), 1u) << path;
      }
    // The way back has as many records.
    EXPECT_EQ(found, pathsOf(spec::diffProjects(*b, *a)));
  }
}

TEST(Differences, AreWrittenInTheWordsOfASpec) {
  const std::string notes = R"({"patterns": [{"track": 1, "notes": [[0, 60, 100], [4, 62, 100]]}],
                                "clips": [{"track": 1, "at": 0, "pattern": 0}]})";
  EXPECT_EQ(diffOf("{}", notes),
            R"([{"path":"patterns[1/0]","added":{"track":1,"id":0,"notes":[[0,60,100],[4,62,100]]}},)"
            R"({"path":"clips[1@0]","added":{"track":1,"at":0,"pattern":0}}])");
  EXPECT_EQ(
      diffOf(notes,
             R"({"patterns": [{"track": 1, "length": 8, "notes": [[0, 60, 100], [4, 62, 90, 96, 3, 5, 8]]}],
                              "clips": [{"track": 1, "at": 0, "pattern": 0, "offset": 2, "length": 16}]})"),
      R"([{"path":"patterns[1/0].length","from":16,"to":8},)"
      R"({"path":"patterns[1/0].notes","removed":[4,62,100]},)"
      R"({"path":"patterns[1/0].notes","added":[4,62,90,96,3,5,8]},)"
      R"({"path":"clips[1@0].offset","from":0,"to":2},{"path":"clips[1@0].repeats","from":false,"to":true}])");
  EXPECT_EQ(
      diffOf(
          "{}",
          R"({"name": "A", "project": {"bpm": 90.1, "loop": [0, 4]}, "tracks": [{"index": 3, "name": "PAD"}],
                             "markers": [{"at": 4, "name": "Drop"}],
                             "lanes": [{"bus": "I", "target": "RETURN", "points": [[0.5, null], [1, 1]]}],
                             "master": [{"lane": 2, "target": "GAIN", "enabled": false, "points": []}]})"),
      R"([{"path":"name","from":"","to":"A"},{"path":"project.bpm","from":120,"to":90.1,"shown":"90.10"},)"
      R"({"path":"project.loop","from":null,"to":[0,4]},)"
      R"({"path":"tracks[3].name","from":)" +
          json::compact(Json(nameText(built("{}")->tracks[3].name))) +
          R"(,"to":"PAD"},)"
          R"({"path":"lanes[I/0]","added":{"bus":"I","lane":0,"target":"FX1_RETURN","points":[[0.5,null],[1,1]]}},)"
          R"({"path":"master[2]","added":{"lane":2,"target":"GAIN","enabled":false,"points":[]}},)"
          R"({"path":"markers[4]","added":{"at":4,"name":"Drop"}}])");
}

TEST(Differences, AMacroThatOnlyMovedItsPlaceIsNone) {
  auto p = built(R"({"tracks": [{"index": 1, "macros": [{"name": "A"}, {"name": "B"}], "pins": ["B", "pan"]}],
    "patterns": [{"track": 1, "notes": [[0, 60, 100]], "locks": [[0, "B", 1]]}],
    "clips": [{"track": 1, "at": 0, "pattern": 0}],
    "lanes": [{"track": 1, "target": "B", "points": [[0, 1]]}]})");
  auto other = copyOf(*p);
  macros::remove(*other, 1, 0);
  EXPECT_EQ(pathsOf(spec::diffProjects(*p, *other)), (Paths{"tracks[1].macros"}));
}

TEST(Differences, LocksMacrosPinsAndSamplesCount) {
  auto p = randomProject(11);
  auto touch = [&](auto change) {
    auto other = copyOf(*p);
    change(*other);
    const Paths paths = pathsOf(spec::diffProjects(*p, *other));
    return paths.size() == 1 ? *paths.begin() : std::to_string(paths.size()) + " records";
  };
  EXPECT_EQ(touch([](Project& o) { o.tracks[4].sample_hash[31] ^= 1; }), "tracks[4].sample");
  EXPECT_EQ(touch([](Project& o) { o.tracks[4].pins.custom ^= 1; }), "tracks[4].pins");
  EXPECT_EQ(touch([](Project& o) { o.tracks[4].macros[0].value += 0.125f; }), "tracks[4].macros");
  EXPECT_EQ(touch([](Project& o) { o.tracks[4].origin ^= 1; }), "tracks[4].origin");
  EXPECT_EQ(touch([](Project& o) { setName(o.tracks[4].preset_name, "OTHER"); }), "tracks[4].preset_name");
  EXPECT_EQ(touch([](Project& o) { o.busPins[MasterBus].custom ^= 1; }), "buses.MASTER");
  EXPECT_EQ(touch([](Project& o) { o.lanes[laneRow(2, 7)].enabled ^= 1; }), "lanes[2/7]");
  EXPECT_EQ(
      diffOf(
          R"({"patterns": [{"track": 1, "notes": [[0, 60, 100]]}], "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
          R"({"patterns": [{"track": 1, "notes": [[0, 60, 100]], "locks": [[0, "PAN", 1]]}],
                       "clips": [{"track": 1, "at": 0, "pattern": 0}]})"),
      R"([{"path":"patterns[1/0].notes","removed":[0,60,100]},{"path":"patterns[1/0].notes","added":)"
      R"({"step":0,"pitch":60,"velocity":100,"locks":[{"target":"PAN","value01":1}]}}])");
}

}  // namespace
}  // namespace synth::test
