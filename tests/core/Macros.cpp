// What breaks if a Macro takes a name that means something else, or a malformed one reaches the Engine.
#include "core/sounds/Macros.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"

namespace synth::macros {
namespace {

TEST(Macros, CleanTheirNames) {
  EXPECT_EQ(cleanName(" wob-ble_2\t"), "WOB-BLE_2");
  EXPECT_EQ(cleanName("ABCDEFGHIJKL"), "ABCDEFGHIJKL");
  EXPECT_EQ(cleanName("A"), "A");
  for (const char* bad : {"", "  ", "ABCDEFGHIJKLM", "2FAST", "_X", "-X", "TWO WORDS", "A.B", "\xC3\x84H",
                          // Parameters, targets and the Macros' own target names.
                          "cutoff", "BPM", "Pitch", "DRIVE", "ENGINE_1", "engine1", "MACRO_1", "macro_16"})
    EXPECT_EQ(cleanName(bad), "") << bad;
  EXPECT_EQ(cleanName("MACRO_17"), "MACRO_17");
}

TEST(Macros, ReadAValueFromALanesScale) {
  EXPECT_EQ(fromNormalized(false, 0.25f), 0.25f);
  EXPECT_EQ(fromNormalized(true, 0.25f), -0.5f);
  EXPECT_EQ(fromNormalized(true, 1), 1);
  // The two 16-bit values around the centre are the centre.
  for (int v : {32767, 32768}) EXPECT_EQ(fromNormalized(true, f32(v) / 65535.0f), 0) << v;
  for (int v : {32766, 32769}) EXPECT_NE(fromNormalized(true, f32(v) / 65535.0f), 0) << v;
  EXPECT_EQ(fromNormalized(false, NAN), 0);
  EXPECT_EQ(fromNormalized(false, INFINITY), 0);
  EXPECT_EQ(fromNormalized(true, NAN), -1);
  EXPECT_EQ(fromNormalized(true, 7), 1);
  EXPECT_EQ(toNormalized(true, NAN), 0.5f);
  EXPECT_EQ(toNormalized(false, NAN), 0);
  EXPECT_EQ(toNormalized(true, -0.5f), 0.25f);
  EXPECT_EQ(toNormalized(false, -0.5f), 0);
  EXPECT_EQ(clampValue(true, -3), -1);
  EXPECT_EQ(clampValue(false, -3), 0);
  EXPECT_EQ(clampValue(true, INFINITY), 0);
  for (bool bipolar : {false, true}) EXPECT_FALSE(std::signbit(clampValue(bipolar, -0.0f)));
  EXPECT_FALSE(std::signbit(fromNormalized(false, -0.0f)));
}

TEST(Macros, MoveContinuousSoundValuesAndTheSends) {
  auto may = [](const char* key, int kind, int engine) {
    return targetable(*param::find(key), kind, engine);
  };
  for (const char* key : {"cutoff", "send_1", "send_2", "trim", "engine1", "room_mix"})
    EXPECT_TRUE(may(key, MELODIC, ANALOG)) << key;
  for (const char* key :
       {"bpm", "fx1_return", "level", "pan", "mute", "duck_amount", "osc_b_shape", "filter_type", "unison",
        "transpose", "pad_pitch", "drawbar_1", "sample_tune", "engine"})
    EXPECT_FALSE(may(key, MELODIC, ANALOG)) << key;
  EXPECT_TRUE(may("drawbar_1", MELODIC, ORGAN) && may("sample_tune", MELODIC, SAMPLER));
  EXPECT_TRUE(may("pad_pitch", DRUMS, ANALOG) && may("pad_drop_time", DRUMS, ANALOG) &&
              may("trim", DRUMS, ANALOG));
  for (const char* key : {"cutoff", "pad_sweep_time", "pad_model", "pad_note", "level"})
    EXPECT_FALSE(may(key, DRUMS, ANALOG)) << key;
}

Track withTwo() {
  Track t = defaultTrack(MELODIC);
  t.macroCount = 2;
  setName(t.macros[0].name, "ONE");
  setName(t.macros[1].name, "TWO");
  t.macros[0].targetCount = 2;
  t.macros[0].targets[0].param = param::find("cutoff")->id;
  t.macros[0].targets[0].amount = 1000;
  t.macros[0].targets[1].param = param::find("send_1")->id;
  t.macros[0].targets[1].window_from = 0.25f;
  t.macros[1].polarity = 1;
  t.macros[1].value = -1;
  return t;
}

TEST(Macros, AreRefusedWhenMalformed) {
  const struct {
    const char* message;
    std::function<void(Track&)> spoil;
  } cases[] = {
      {"Invalid Macros", [](Track& t) { t.macroCount = 17; }},
      {"Invalid Macro name", [](Track& t) { t.macros[1].name[0] = 0; }},
      {"Invalid Macro name", [](Track& t) { t.macros[1].name[0] = 't'; }},
      {"Invalid Macro name", [](Track& t) { setName(t.macros[1].name, "CUTOFF"); }},
      {"Invalid Macro TWO", [](Track& t) { t.macros[1].polarity = 2; }},
      {"Invalid Macro TWO", [](Track& t) { t.macros[1].targetCount = 17; }},
      {"Invalid Macro TWO", [](Track& t) { t.macros[1].value = -1.01f; }},
      {"Invalid Macro ONE", [](Track& t) { t.macros[0].value = -0.01f; }},
      {"Invalid Macro ONE", [](Track& t) { t.macros[0].value = NAN; }},
      {"Invalid Macro TWO", [](Track& t) { t.macros[1].value = -0.0f; }},
      {"Two Macros named ONE", [](Track& t) { setName(t.macros[1].name, "ONE"); }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].param = 9999; }},
      {"Invalid Macro target of ONE",
       [](Track& t) { t.macros[0].targets[0].param = param::find("level")->id; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].pad = 1; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].amount = 1000.1f; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].amount = NAN; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].amount_down = -1; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].amount_down = -0.0f; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].amount = -0.0f; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].window_from = 1; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].window_from = -0.0f; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].window_from = -0.1f; }},
      {"Invalid Macro target of ONE", [](Track& t) { t.macros[0].targets[0].window_to = 1.1f; }},
      {"Macro arena tail not zero", [](Track& t) { t.macros[0].targets[2].window_to = 0; }},
      {"Macro arena tail not zero", [](Track& t) { t.macros[2].value = 0.5f; }},
  };
  std::string error;
  EXPECT_TRUE(valid(withTwo(), error)) << error;
  for (auto& c : cases) {
    auto p = makeProject();
    p->tracks[15] = withTwo();
    EXPECT_TRUE(validateProject(*p, error)) << error;
    c.spoil(p->tracks[15]);
    EXPECT_FALSE(valid(p->tracks[15], error));
    EXPECT_EQ(error, c.message);
    EXPECT_FALSE(validateProject(*p, error));
    EXPECT_EQ(error, c.message);
  }
}

TEST(Macros, AreFoundByNameInAnyCase) {
  const Track t = withTwo();
  EXPECT_EQ(find(t, "two"), 1);
  EXPECT_EQ(find(t, "ONE"), 0);
  EXPECT_EQ(find(t, "THREE"), -1);
  EXPECT_EQ(find(t, ""), -1);
  EXPECT_EQ(name(t, 1), "TWO");
  EXPECT_EQ(name(t, 2) + name(t, -1), "");
}

}  // namespace
}  // namespace synth::macros
