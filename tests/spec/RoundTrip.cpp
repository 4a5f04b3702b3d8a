// Whole Projects written as specs: what is stored comes back byte for byte, in whatever order it is listed.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>

#include "core/ProjectFile.h"
#include "core/edit/Workspace.h"
#include "core/model/Defaults.h"
#include "core/model/Markers.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "core/params/Registry.h"
#include "core/sounds/Factory.h"
#include "core/sounds/Pins.h"
#include "spec/Examples.h"
#include "spec/Export.h"
#include "support/Cli.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

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

// Compares a Project with what its spec, sparse or full, printed in either way, builds.
void expectRebuilds(const Project& p, const std::string& name) {
  for (bool full : {false, true}) {
    const Json spec = spec::toSpec(p, full);
    std::string error;
    ASSERT_TRUE(spec::rebuilds(p, spec, error)) << name << (full ? " in full: " : ": ") << error;
    for (const std::string& text : {json::compact(spec), json::pretty(spec)})
      ASSERT_TRUE(projectBytes(*built(text)) == projectBytes(p)) << name;
  }
}

// A project as people make them: sounds from Presets, some of them changed, Tracks of other kinds and
// Engines.
void edit(Project& p, Random& r) {
  const int t = r.below(limits::tracks), pad = r.below(limits::pads);
  const auto& presets = preset::factory();
  const auto& rows = param::all();
  switch (r.below(10)) {
    case 0:
    case 1: preset::apply(p, t, presets[size_t(r.below(int(presets.size())))]); break;
    case 2: setSynthKind(p.tracks[t], r.below(11)); break;
    case 3: workspace::switchTrackKind(p, t, r.below(2)); break;
    case 4:
      if (p.tracks[t].macroCount) p.tracks[t].macros[r.below(p.tracks[t].macroCount)].value = r.unit();
      break;
    case 5: pins::pin(p.tracks[t], rows[size_t(r.below(int(rows.size())))].key); break;
    case 6:
      pins::setBusType(p, r.below(2), r.below(7));
      pins::pinBus(p, r.below(3), rows[size_t(r.below(int(rows.size())))].key);
      break;
    case 7: p.tracks[t].name[r.below(3)] = char('a' + r.below(26)); break;
    case 8: addMarker(p, u32(r.below(64)), r.chance(50) ? "Verse" : "drop"); break;
    default: {
      const param::Info& info = rows[size_t(r.below(int(rows.size())))];
      const std::string_view key = info.key;
      if (key == "track_kind" || key == "engine") break;  // they have operations of their own
      const f32 value = info.min + (info.max - info.min) * r.unit();
      info.set(info.whole() ? std::round(value) : value, p, t, pad);
    }
  }
}

TEST(RoundTrip, WhatPeopleMakeComesBackAndIsSaidInFewWords) {
  Random r(2026);
  for (int song = 0; song < 60; song++) {
    auto p = song % 3 == 0 ? spec::makeExample(0) : makeProject();
    for (int edits = r.below(40); edits > 0; edits--) edit(*p, r);
    canonical(*p);
    std::string error;
    ASSERT_TRUE(validateProject(*p, error)) << error;
    expectRebuilds(*p, "song " + std::to_string(song));
  }
  // A Preset with one change is the Preset and one key.
  auto p = makeBlank();
  preset::apply(*p, 5, *preset::findFactory("NEON"));
  p->tracks[5].cutoff = 999;
  EXPECT_EQ(json::compact(spec::toSpec(*p, false)),
            R"({"tracks":[{"index":5,"preset":"NEON","params":{"cutoff":999}}]})");
  EXPECT_EQ(json::compact(spec::toSpec(*makeBlank(), false)), "{}");
}

// As many random projects as the seconds in QUOREL_SOAK_SECONDS allow, two unless told.
TEST(RoundTrip, Soak) {
  const char* told = std::getenv("QUOREL_SOAK_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(told ? std::atoi(told) : 2);
  Random r(told ? u32(std::chrono::steady_clock::now().time_since_epoch().count()) : 1);
  while (std::chrono::steady_clock::now() < end) {
    const u32 seed = r.next();
    auto p = randomProject(seed);
    Random edits(seed);
    if (edits.chance(50)) edit(*p, edits);
    canonical(*p);
    std::string error;
    if (validateProject(*p, error)) expectRebuilds(*p, "seed " + std::to_string(seed));
  }
}

TEST(RoundTrip, EveryProjectComesBackFromItsSpec) {
  for (u32 seed = 1; seed <= 150; seed++)
    expectRebuilds(*randomProject(seed), "seed " + std::to_string(seed));
  for (int i = 0; i < spec::exampleCount(); i++)
    expectRebuilds(*spec::makeExample(i), spec::exampleInfo(i).name);
  for (int i = 0; i < spec::fixtureCount(); i++)
    expectRebuilds(*spec::makeFixture(i), "fixture " + std::to_string(i));
  expectRebuilds(*makeProject(), "a new project");
}

TEST(RoundTrip, TheOrderOfRowsDoesNotCount) {
  Random r(7);
  for (u32 seed = 1; seed <= 40; seed++) {
    auto p = randomProject(seed);
    Json spec = spec::toSpec(*p, true);
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
