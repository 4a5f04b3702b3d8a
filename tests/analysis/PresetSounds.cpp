// The factory's sounds keep what their names, Roles and tags promise: each is rendered and measured.
#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "analysis/Measure.h"
#include "base/Parallel.h"
#include "base/Text.h"
#include "core/sounds/Factory.h"
#include "support/PresetSound.h"

#include <gtest/gtest.h>

namespace synth::test {
namespace {

using preset::Preset;
using preset::Role;

struct Measured {
  const Preset* preset;
  PresetSound sound;
  std::vector<MacroSound> macros;

  bool tagged(const char* tag) const {
    return std::find(preset->tags.begin(), preset->tags.end(), tag) != preset->tags.end();
  }
};

// Sounds that play a Sample of the user's are silent without one.
std::vector<Measured> measureAll() {
  std::vector<Measured> all;
  for (const Preset& p : preset::factory())
    if (p.engine != SAMPLER) all.push_back({&p, {}, {}});
  std::vector<std::function<void()>> tasks;
  for (Measured& m : all)
    tasks.push_back([&m] {
      m.sound = soundOf(*m.preset);
      m.macros = macrosOf(*m.preset);
    });
  runAll(tasks);
  return all;
}

double medianOf(const std::vector<Measured>& all, const std::function<bool(const Measured&)>& belongs,
                const std::function<double(const Measured&)>& value) {
  std::vector<double> list;
  for (const Measured& m : all)
    if (belongs(m)) list.push_back(value(m));
  return analysis::median(list);
}

// These are older than the rules and stay as people know them.
const std::set<std::string> given = {"FOUNDATION", "808 GLIDE"};

TEST(PresetSounds, KeepTheirPromises) {
  const std::vector<Measured> all = measureAll();
  for (const Measured& m : all) {
    if (given.count(m.preset->name)) continue;
    for (const auto& list : {complaints(*m.preset, m.sound), complaints(*m.preset, m.macros)})
      for (const std::string& text : list) ADD_FAILURE() << m.preset->name << ": " << text;
  }

  auto tag = [](const char* name) { return [name](const Measured& m) { return m.tagged(name); }; };
  auto melodic = [](auto test) {
    return [test](const Measured& m) { return m.preset->kind != DRUMS && test(m); };
  };
  auto centroid = [](const Measured& m) { return m.sound.demo.centroidHz; };
  auto ring = [](const Measured& m) { return m.sound.ringS; };
  auto side = [](const Measured& m) { return m.sound.demo.sideMidDb; };
  auto flatness = [](const Measured& m) { return analysis::powerDb(m.sound.demo.flatness); };
  auto harmonic = [](const Measured& m) { return m.sound.demo.harmonicToNoiseDb; };
  auto attack = [](const Measured& m) { return m.sound.riseMs; };
  auto noisy = [](const Measured& m) { return m.preset->family == "NOISE"; };
  auto tonal = [](const Measured& m) { return m.preset->family != "NOISE" && m.preset->kind != DRUMS; };
  EXPECT_GE(medianOf(all, tag("BRIGHT"), centroid), 2 * medianOf(all, tag("DARK"), centroid));
  EXPECT_LT(medianOf(all, melodic(tag("SHORT")), ring), medianOf(all, melodic(tag("LONG")), ring) / 3);
  EXPECT_GE(medianOf(all, tag("WIDE"), side), medianOf(all, tag("MONO"), side) + 6);
  EXPECT_GT(medianOf(all, noisy, flatness), medianOf(all, tonal, flatness));
  EXPECT_LT(medianOf(all, tag("GLASSY"), harmonic), medianOf(all, tag("WARM"), harmonic));
  EXPECT_LT(medianOf(all, tag("METAL"), harmonic), medianOf(all, tag("WARM"), harmonic));
  EXPECT_LT(medianOf(all, melodic(tag("PUNCHY")), attack), medianOf(all, melodic(tag("SOFT")), attack));

  for (int role = 0; role < preset::roles; role++) {
    auto ofRole = [role](const Measured& m) { return int(m.preset->role) == role; };
    const double usual = medianOf(all, ofRole, [](const Measured& m) { return m.sound.demo.lufs; });
    for (const Measured& m : all)
      if (ofRole(m) && !given.count(m.preset->name)) {
        EXPECT_NEAR(m.sound.demo.lufs, usual, 4) << m.preset->name;
      }
  }
  constexpr double nearest = 0.5;
  for (size_t i = 0; i < all.size(); i++)
    for (size_t j = 0; j < i; j++)
      if (all[i].preset->role == all[j].preset->role) {
        EXPECT_GE(distance(all[i].sound, all[j].sound), nearest)
            << all[j].preset->name << " and " << all[i].preset->name;
      }
}

}  // namespace
}  // namespace synth::test
