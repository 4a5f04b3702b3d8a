// The parameter list: its rows, what is inactive and why, and how fast it is searched.
#include "core/sounds/ParamList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "core/sounds/Layers.h"
#include "core/sounds/MacroEdit.h"

namespace synth::test {
namespace {

using namespace paramlist;

int codeOf(const char* key) { return param::find(key)->id; }

TEST(ParamList, HasWhatTheSoundHasInGroups) {
  auto p = makeProject();
  std::string error;
  macros::add(*p, 1, "WARM", false, 0, error);
  for (int engine = ANALOG; engine <= SAMPLER; engine++) {
    setSynthKind(p->tracks[2], engine);
    std::set<std::string> keys, groups;
    std::string last;
    for (const Row& row : rows(*p, 2)) {
      EXPECT_TRUE(keys.insert(row.key).second) << row.key << " twice";
      EXPECT_TRUE(pins::valid(p->tracks[2], row.key)) << row.key;
      EXPECT_NE(row.label, "") << row.key;
      EXPECT_TRUE(row.group == last || groups.insert(row.group).second) << row.group << " in two places";
      last = row.group;
    }
    EXPECT_EQ(keys.count("drawbar_1"), size_t(engine == ORGAN));
    EXPECT_EQ(keys.count("osc_b_level"), size_t(engine == ANALOG));
    EXPECT_EQ(keys.count("sample_mode"), size_t(engine == SAMPLER));
    EXPECT_EQ(keys.count("mute"), 0u);
    EXPECT_EQ(keys.count("pad_tone"), 0u);
  }
  EXPECT_EQ(rows(*p, 1)[0].group, "MACROS");
  EXPECT_EQ(rows(*p, 1)[0].code(), limits::firstMacroPin);
  std::set<std::string> kit;
  for (const Row& row : rows(*p, 0)) kit.insert(row.group);
  for (const char* group : {"PAD TONE", "PAD SWEEP", "PAD GATE", "PAD MIX"})
    EXPECT_EQ(kit.count(group), 1u) << group;
  EXPECT_EQ(kit.count("LFO 1"), 0u);
  EXPECT_TRUE(rows(*p, 16).empty());
  p->fx1.type = FX_HALL;
  for (const Row& row : busRows(*p, SendI))
    EXPECT_EQ(row.key.find("fx1_delay"), std::string::npos) << row.key;
}

TEST(ParamList, SaysWhyARowDoesNothing) {
  auto p = makeProject();
  Track& t = p->tracks[1];
  t = defaultTrack(MELODIC);
  const struct {
    const char *row, *key, *badge;
    void (*cure)(Track&);
  } cases[] = {
      {"osc_b_shape", "osc_b_level", "OSC B OFF", [](Track& x) { x.osc_b_level = 0.5f; }},
      {"lfo_rate", "lfo_depth", "NO DEPTH", [](Track& x) { x.lfo_depth = 0.5f; }},
      {"lfo2_shape", "lfo2_depth", "NO DEPTH", [](Track& x) { x.lfo2_depth = 0.5f; }},
      {"timbre_decay", "timbre_amount", "NO TIMBRE", [](Track& x) { x.timbre_amount = -0.5f; }},
      {"unison_detune", "unison", "1 VOICE", [](Track& x) { x.unison = 2; }},
      {"pitch_env_time", "pitch_env", "NO P.ENV", [](Track& x) { x.pitch_env = -12; }},
      {"glide", "voice_mode", "POLY", [](Track& x) { x.voice_mode = 3; }},
      {"poly_glide_mode", "glide", "NO GLIDE", [](Track& x) { x.glide = 0.1f; }},
      {"filter_decay", "filter_adsr", "AUTO", [](Track& x) { x.filter_adsr = 1; }},
      {"eq_mid_freq", "eq_mid", "NO MID", [](Track& x) { x.eq_mid = 3; }},
      {"mod_depth", "mod_type", "OFF", [](Track& x) { x.mod_type = 1; }},
      {"room_size", "room_mix", "NO MIX", [](Track& x) { x.room_mix = 0.2f; }},
      {"insert_drive_type", "insert_drive", "NO DRIVE", [](Track& x) { x.insert_drive = 0.2f; }},
      {"duck_release", "duck_amount", "NO DUCK", [](Track& x) { x.duck_amount = 0.2f; }},
  };
  for (const auto& c : cases) {
    const Inactive why = inactive(*p, 1, codeOf(c.row), -1);
    EXPECT_EQ(why.key, c.key) << c.row;
    EXPECT_EQ(why.badge, c.badge) << c.row;
    EXPECT_EQ(inactiveTip(*p, 1, codeOf(c.row), why).substr(0, 19), "Does nothing while ") << c.row;
    EXPECT_FALSE(inactive(*p, 1, codeOf(c.key), -1)) << c.key << " itself can be turned up";
    c.cure(t);
    EXPECT_FALSE(inactive(*p, 1, codeOf(c.row), -1)) << c.row;
  }
  t.lfo_sync = 3;
  EXPECT_EQ(inactive(*p, 1, codeOf("lfo_rate"), -1).badge, "SYNCED");
  t.lfo_depth = 0;
  p->lanes[laneRow(1, 0)].enabled = 1;
  p->lanes[laneRow(1, 0)].target = u8(automation::LFO_DEPTH + 1);
  const LanePoint points[] = {{0, 9000, 0, 0}};
  setLanePoints(*p, laneRow(1, 0), points, 1);
  EXPECT_FALSE(inactive(*p, 1, codeOf("lfo_shape"), -1)) << "a Lane moves the depth";

  // So does a Macro, by its own value or by what moves it.
  std::string macroError;
  const f32 mirror = std::numeric_limits<f32>::quiet_NaN();
  ASSERT_EQ(macros::add(*p, 1, "SPACE", false, 0, macroError), 0);
  t.room_mix = 0;
  ASSERT_TRUE(macros::map(*p, 1, 0, *param::find("room_mix"), -1, 0.5f, mirror, 0, 1, macroError));
  EXPECT_EQ(inactive(*p, 1, codeOf("room_size"), -1).badge, "NO MIX");
  macros::setValue(*p, 1, 0, 0.5f);
  EXPECT_FALSE(inactive(*p, 1, codeOf("room_size"), -1));
  macros::setValue(*p, 1, 0, 0);
  p->lanes[laneRow(1, 0)].target = u8(automation::firstMacroTarget + 1);
  EXPECT_FALSE(inactive(*p, 1, codeOf("room_size"), -1));
  macros::remove(*p, 1, 0);

  setSynthKind(t, ORGAN);
  EXPECT_EQ(inactive(*p, 1, codeOf("drawbar_3"), -1).badge, "TYPE");
  t.drawbar_custom = 1;
  EXPECT_EQ(inactive(*p, 1, codeOf("engine1"), -1).badge, "BARS");
  EXPECT_EQ(inactive(*p, 0, codeOf("pad_tail_time"), 2).badge, "NO DRIFT");
  p->fx2.delay_sync = 5;
  EXPECT_EQ(busInactive(*p, SendII, codeOf("fx2_delay_time")).key, "fx2_delay_sync");
  std::string error;
  macros::add(*p, 1, "WARM", false, 0, error);
  const Inactive macro = inactive(*p, 1, limits::firstMacroPin, -1);
  EXPECT_EQ(macro.badge, "NO TARGETS");
  EXPECT_EQ(inactiveTip(*p, 1, limits::firstMacroPin, macro), "Moves nothing yet: it has no targets");
}

TEST(ParamList, FindsRowsByTheirNamesAndByOtherWords) {
  auto p = makeProject();
  auto found = [&](const char* query) {
    const std::vector<Row> list = rows(*p, 1);
    std::vector<search::Match> matches;
    for (const Row& row : list) matches.push_back(match(row, query));
    std::vector<std::string> keys;
    for (int i : search::shown(matches)) keys.push_back(list[size_t(i)].key);
    return keys;
  };
  EXPECT_EQ(found("cutoff")[0], "cutoff");
  EXPECT_EQ(found("portamento"), (std::vector<std::string>{"glide"}));
  EXPECT_EQ(found("resnance")[0], "resonance");
  EXPECT_EQ(found("cutfof")[0], "cutoff");
  const auto sidechain = found("sidechain");
  EXPECT_EQ(sidechain.size(), 3u);
  EXPECT_TRUE(found("qqqq").empty());
  auto finds = [&](const char* query, const char* key) {
    const auto keys = found(query);
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  };
  EXPECT_TRUE(finds("cut", "cutoff")) << "LOW CUT does not hide it";
  EXPECT_TRUE(finds("cut", "highpass"));
  EXPECT_EQ(found("Low Cut"), (std::vector<std::string>{"highpass"})) << "a whole label";
  EXPECT_EQ(found("lfo rate"), (std::vector<std::string>{"lfo_rate"})) << "a whole key";
  EXPECT_EQ(found("").size(), rows(*p, 1).size());
}

TEST(ParamList, KnowsTheValueOfThePlainSound) {
  auto p = makeProject();
  p->tracks[1].cutoff = 300;
  EXPECT_EQ(layers::defaultValue(*p, 1, "cutoff", -1), 20000);
  EXPECT_EQ(layers::defaultValue(*p, 0, "pad_decay", 3), defaultTrack(DRUMS).pad_decay[3]);
}

TEST(Layers, ArePagesThatTogetherHoldTheList) {
  auto p = makeProject();
  for (int track : {0, 1}) {
    size_t rows = 0;
    for (const std::string& page : layers::pages(*p, track)) {
      const int count = layers::count(*p, page, track);
      EXPECT_GT(count, 0) << page;
      for (int i = 0; i < count; i++) {
        Row row;
        ASSERT_TRUE(layers::layer(*p, page, track, i, row));
        EXPECT_EQ(row.group, page);
        EXPECT_EQ(layers::find(*p, page, track, row.key), i) << row.key;
      }
      rows += size_t(count);
    }
    EXPECT_EQ(rows, paramlist::rows(*p, track).size());
  }
  Row row;
  EXPECT_FALSE(layers::layer(*p, "FILTER", 1, -1, row) || layers::layer(*p, "FILTER", 1, 99, row));
  EXPECT_EQ(layers::find(*p, "FILTER", 1, "pad_tone"), -1);
  EXPECT_TRUE(layers::pages(*p, 16).empty());
}

}  // namespace
}  // namespace synth::test
