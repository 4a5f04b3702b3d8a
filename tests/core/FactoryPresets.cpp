// Every factory Preset's file is whole: read without a warning, in its canonical form, in its place, of a
// sound that differs from its Engine's plain one.
#include "core/sounds/Factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "base/Text.h"
#include "core/SynthKinds.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"
#include "support/TempFolder.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;
using namespace preset;

const std::string folder = QUOREL_SOURCE_DIR "/data/presets/";

// The names that songs and guides rely on, in the order of their files.
std::vector<std::string> promisedNames() {
  std::vector<std::string> names;
  std::string text = readAll(folder + "names.txt");
  for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
    names.push_back(text.substr(at, text.find('\n', at) - at));
  return names;
}

std::vector<std::string> filesPresent() {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".preset") files.push_back(entry.path().filename().string());
  std::sort(files.begin(), files.end());
  return files;
}

TEST(FactoryPresets, AreReadWithoutAWarningAndStandInTheirCanonicalForm) {
  std::set<std::string> texts;
  for (const std::string& file : filesPresent()) {
    const std::string text = readAll(folder + file);
    Preset p;
    std::vector<std::string> warnings;
    std::string error;
    ASSERT_TRUE(parse(text, p, warnings, error)) << file << ": " << error;
    EXPECT_EQ(text::joined(warnings, "\n"), "") << file;
    EXPECT_EQ(write(p), text) << file;
    EXPECT_EQ(slug(p.name) + ".preset", file);
    EXPECT_FALSE(p.family.empty()) << file;
    EXPECT_FALSE(p.tags.empty()) << file;
    EXPECT_FALSE(p.values.empty()) << file;
    EXPECT_TRUE(texts.insert(text.substr(text.find("engine = "))).second) << file << " sounds like another";

    auto project = makeProject();
    Project& song = *project;
    const int track = p.kind == DRUMS ? 0 : 1;
    ASSERT_TRUE(apply(song, track, p));
    EXPECT_TRUE(validateProject(song, error)) << file << ": " << error;
    EXPECT_TRUE(matches(song, track, p)) << file;
  }
}

TEST(FactoryPresets, AreThePromisedOnesInTheOrderOfTheirFiles) {
  std::vector<std::string> names, files;
  for (const Preset& p : factory()) {
    names.push_back(p.name);
    files.push_back(slug(p.name) + ".preset");
  }
  EXPECT_EQ(names.size(), 235u);
  EXPECT_EQ(names, promisedNames());
  EXPECT_EQ(files, filesPresent());
}

TEST(FactoryPresets, AreSpreadOverRolesAndEngines) {
  const std::map<std::string, int> spread = {
      {"role BASS", 41}, {"role LEAD", 29},    {"role PAD", 31}, {"role KEYS", 34}, {"role PLUCK", 24},
      {"role PERC", 22}, {"role TEXTURE", 23}, {"role FX", 31},  {"ANALOG", 120},   {"FM", 26},
      {"PERC", 13},      {"DRUMS", 12},        {"ORGAN", 11},    {"TINE", 11},      {"WAVETABLE", 9},
      {"VOICE", 9},      {"MACHINE", 7},       {"SAMPLER", 6},   {"RIFT", 6},       {"SWARM", 5}};
  std::map<std::string, int> counts;
  for (const Preset& p : factory()) {
    counts[std::string("role ") + roleName(p.role)]++;
    counts[engineName(p)]++;
    EXPECT_TRUE(p.engine != SAMPLER || settingsOnly(p)) << p.name;
  }
  EXPECT_EQ(counts, spread);
}

TEST(FactoryPresets, AreFoundByName) {
  for (const Preset& p : factory()) EXPECT_EQ(findFactory(text::lower(p.name)), &p);
  EXPECT_EQ(findFactory("FOUNDATION AND MORE OF IT"), nullptr);
  EXPECT_EQ(findFactory("808-GLIDE"), nullptr);  // its file's name is not its own
  EXPECT_EQ(findFactory(""), nullptr);
}

TEST(FactoryPresets, GiveATrackItsPinsBack) {
  Track t = defaultTrack(MELODIC);
  ASSERT_TRUE(applyFactory(t, "Foundation"));
  const PinList own = t.pins;
  EXPECT_EQ(own.count, 8);
  EXPECT_EQ(t.engine3, 0.096618354f);
  t.pins = PinList{};
  EXPECT_TRUE(pinsFromName(t));
  EXPECT_TRUE(sameBytes(t.pins, own));
  ASSERT_TRUE(applyFactory(t, "808 GLIDE"));
  t.pins = own;
  EXPECT_TRUE(pinsFromName(t));
  EXPECT_EQ(t.pins.custom, 0);
  t.engine = FM;
  t.pins = own;
  EXPECT_FALSE(pinsFromName(t) || applyFactory(t, "NO SUCH SOUND"));
  EXPECT_TRUE(sameBytes(t.pins, own));
}

}  // namespace
}  // namespace synth::test
