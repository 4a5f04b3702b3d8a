// Whole Projects written as specs: what is stored comes back byte for byte, in whatever order it is listed.
#include <algorithm>
#include <map>

#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
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

TEST(RoundTrip, EveryProjectComesBackFromItsSpec) {
  for (u32 seed = 1; seed <= 150; seed++)
    expectRebuilds(*randomProject(seed), "seed " + std::to_string(seed));
  for (int i = 0; i < spec::exampleCount(); i++)
    expectRebuilds(*spec::makeExample(i), spec::exampleInfo(i).name);
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
