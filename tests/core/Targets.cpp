// What breaks if a target number changes its meaning: every stored Lock and Lane moves something else.
#include "core/params/Targets.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "base/Text.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/model/Defaults.h"

namespace synth::automation {
namespace {

std::string keyOf(int target) { return targetInfo(target) ? targetInfo(target)->key : ""; }

TEST(Targets, KeepTheirNumbers) {
  std::istringstream names(
      "ENGINE_1 ENGINE_2 ENGINE_3 ENGINE_4 CUTOFF RESONANCE LEVEL PAN SEND_1 SEND_2 FILTER_ENV PITCH DRIVE "
      "MOD_MIX LFO_DEPTH LFO2_DEPTH HIGHPASS DECAY WIDTH GLIDE LFO_RATE LFO2_RATE MOD_RATE MOD_DEPTH "
      "MOD_FEEDBACK PITCH_ENV PITCH_ENV_TIME ATTACK RELEASE LOWPASS NOISE_MIX CRUSH_BITS CRUSH_RATE EQ_LOW "
      "EQ_MID EQ_MID_FREQ EQ_HIGH MOD_TONE TRIM MONO_BELOW DUCK_AMOUNT DUCK_RELEASE ROOM_SIZE ROOM_DECAY "
      "ROOM_DAMP ROOM_MIX");
  std::string name;
  for (int t = 0; t < 46; t++) {
    names >> name;
    EXPECT_EQ(targetName(t), name);
    EXPECT_EQ(trackTargetNamed(name), t);
    EXPECT_EQ(trackTargetNamed(text::lower(name)), t);
    if (t == PITCH) continue;
    EXPECT_EQ(targetOf(*targetInfo(t)), t);
    EXPECT_EQ(trackTargetNamed(keyOf(t)), t);
  }
  EXPECT_EQ(keyOf(0) + keyOf(3) + keyOf(12), "engine1engine4insert_drive");
  EXPECT_EQ(targetInfo(PITCH), nullptr);
  for (int m = 0; m < 16; m++) EXPECT_EQ(trackTargetNamed("Macro_" + std::to_string(m + 1)), 176 + m);
  EXPECT_EQ(targetName(191), "MACRO_16");
  for (int t : {-1, 46, 63, 162, 175, 192, 255}) EXPECT_EQ(targetName(t), "") << t;
  for (const char* wrong : {"", "MACRO_0", "MACRO_17", "SUSTAIN", "FX1_RETURN"})
    EXPECT_EQ(trackTargetNamed(wrong), -1) << wrong;
}

TEST(Targets, KeepTheBusNumbers) {
  const std::pair<int, const char*> fixed[] = {{64, "master"},
                                               {65, "comp_amount"},
                                               {68, "saturation"},
                                               {69, "master_eq_31"},
                                               {78, "master_eq_16k"},
                                               {79, "fx_chain"},
                                               {80, "fx1_return"},
                                               {81, "fx1_delay_time"},
                                               {87, "fx1_delay_duck"},
                                               {88, "fx1_hall_decay"},
                                               {95, "fx1_hall_high_cut"},
                                               {96, "fx1_chorus_rate"},
                                               {100, "fx1_chorus_low_cut"},
                                               {101, "fx1_tape_rate"},
                                               {106, "fx1_tape_spring"},
                                               {107, "fx1_plate_decay"},
                                               {109, "fx1_plate_damping"},
                                               {113, "fx1_plate_gate"},
                                               {114, "fx1_shimmer_decay"},
                                               {120, "fx1_shimmer_freeze"},
                                               {121, "fx2_return"},
                                               {122, "fx2_delay_time"},
                                               {129, "fx2_hall_decay"},
                                               {137, "fx2_chorus_rate"},
                                               {142, "fx2_tape_rate"},
                                               {148, "fx2_plate_decay"},
                                               {155, "fx2_shimmer_decay"},
                                               {161, "fx2_shimmer_freeze"}};
  for (auto [t, key] : fixed) EXPECT_EQ(keyOf(t), key) << t;
  for (int t = 64; t <= 161; t++) {
    EXPECT_EQ(busOf(t), t < 79 ? MasterBus : t < 121 ? SendI : SendII) << t;
    EXPECT_EQ(targetName(t), text::upper(keyOf(t)));
    EXPECT_EQ(targetOf(*targetInfo(t)), t);
    EXPECT_EQ(busTargetNamed(busOf(t), targetName(t)), t);
    EXPECT_EQ(busTargetNamed((busOf(t) + 1) % 3, targetName(t)), -1);
    // Rows stand in the order of the registry.
    if (busOf(t) == busOf(t - 1) && t != 80) {
      EXPECT_LT(targetInfo(t - 1), targetInfo(t)) << t;
    }
  }
  EXPECT_EQ(busTargetNamed(SendII, "Hall_Decay"), 129);
  EXPECT_EQ(busTargetNamed(SendI, "return"), 80);
  int without = 0;
  for (const param::Info& row : param::all())
    without += row.scope == param::ScopeProject && !row.whole() && targetOf(row) < 0;
  // bpm, swing, humanize and plate_diffusion twice.
  EXPECT_EQ(without, 5);
}

TEST(Targets, SayWhatALockAndALaneMayMove) {
  int locks = 0;
  for (int t = -1; t < 256; t++) {
    locks += lockable(t, false);
    EXPECT_EQ(lockable(t, true), t == 11 || t == 17) << t;
    EXPECT_EQ(laneable(t, false), (t >= 0 && t < 46) || (t >= 176 && t < 192)) << t;
    const bool any = t >= 0 && t < 46 && targetInfo(t) && targetInfo(t)->applies == param::AnyTrack;
    EXPECT_EQ(laneable(t, true), any || (t >= 176 && t < 192)) << t;
  }
  EXPECT_EQ(locks, 44 + 16);
  EXPECT_TRUE(lockable(GLIDE, false));
  EXPECT_FALSE(lockable(LFO_RATE, false) || lockable(LFO2_RATE, false));
}

TEST(Targets, HoldOnABusWhatItsEffectHasNow) {
  auto p = newProject();
  auto holds = [&](int bus, const char* key) { return busHolds(*p, bus, *param::find(key)); };
  for (const char* key :
       {"master", "comp_amount", "comp_release", "saturation", "limiter_ceiling", "master_eq_8k"})
    EXPECT_TRUE(holds(MasterBus, key)) << key;
  for (const char* key : {"humanize", "bpm", "fx_chain", "fx1_return", "level"})
    EXPECT_FALSE(holds(MasterBus, key)) << key;
  EXPECT_TRUE(holds(SendI, "fx_chain") && holds(SendI, "fx1_type") && holds(SendI, "fx1_return"));
  EXPECT_TRUE(holds(SendI, "fx1_delay_time") && holds(SendII, "fx2_hall_size"));
  for (const char* key : {"fx1_hall_size", "fx2_delay_time", "fx2_return", "master"})
    EXPECT_FALSE(holds(SendI, key)) << key;
  EXPECT_FALSE(holds(SendII, "fx_chain"));
  EXPECT_EQ(busTarget(*p, SendII, *param::find("fx2_hall_decay")), 129);
  EXPECT_EQ(busTarget(*p, SendII, *param::find("fx2_plate_decay")), -1);
  EXPECT_EQ(busTarget(*p, SendI, *param::find("fx1_type")), -1);
  p->fx1.type = FX_OFF;
  EXPECT_FALSE(holds(SendI, "fx1_delay_time"));
  EXPECT_TRUE(holds(SendI, "fx1_return"));
  EXPECT_EQ(busName(*p, SendI), "SEND I · OFF");
  EXPECT_EQ(busName(*p, SendII), "SEND II · HALL");
  EXPECT_EQ(busName(*p, MasterBus), "MASTER");
}

TEST(Targets, RestOnTheStoredValues) {
  auto p = makeProject();
  Track& t = p->tracks[1];
  t.engine1 = 0.3f;
  t.cutoff = 632.4555f;
  t.macroCount = 1;
  t.macros[0].polarity = 1;
  setName(t.macros[0].name, "MOVE");
  EXPECT_EQ(targetBaseline(*p, 1, ENGINE_1), 0.3f);
  EXPECT_EQ(targetBaseline(*p, 1, PITCH), 0.5f);
  EXPECT_NEAR(targetBaseline(*p, 1, CUTOFF), 0.5, 1e-6);
  EXPECT_EQ(targetBaseline(*p, 1, 176), 0.5f);
  EXPECT_NEAR(targetBaseline(*p, 1, 64), 0.85, 1e-6);
  EXPECT_EQ(baseline(t, 4), 0);
  t.engine1 = std::numeric_limits<f32>::quiet_NaN();
  EXPECT_EQ(baseline(t, 0), 0);
  EXPECT_EQ(masterBaseline(0), 1);
  EXPECT_EQ(masterBaseline(6), 0.5f);
  for (int i : {-1, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12}) EXPECT_EQ(masterBaseline(i), 0) << i;
}

TEST(Targets, AreLabelledForTheReader) {
  auto p = makeProject();
  p->tracks[1].macroCount = 1;
  setName(p->tracks[1].macros[0].name, "MOVE");
  EXPECT_EQ(targetLabel(*p, 1, ENGINE_2), engineParamName(ANALOG, 1));
  EXPECT_EQ(targetLabel(*p, 0, ENGINE_2), "ENGINE 2");
  EXPECT_EQ(targetLabel(*p, 1, 176), "MOVE");
  EXPECT_EQ(targetLabel(*p, 1, 177), "MACRO 2");
  EXPECT_EQ(targetLabel(*p, 1, CUTOFF), "CUTOFF");
  EXPECT_EQ(targetLabel(*p, 1, PITCH), "PITCH");
  const char* moves[] = {"LOWPASS", "HIGHPASS", "REPEAT",   "TAPE_STOP", "SPIN_BACK", "GATE",
                         "GAIN",    "BOOST_I",  "BOOST_II", "WASHOUT",   "NOISE",     "CRUSH"};
  for (int i = 0; i < 12; i++) {
    EXPECT_STREQ(performanceEffectName(i), moves[i]);
    EXPECT_EQ(performanceEffectNamed(text::lower(moves[i])), i);
  }
  EXPECT_STREQ(performanceEffectName(12), "");
  EXPECT_EQ(performanceEffectNamed("FLANGER"), -1);
}

}  // namespace
}  // namespace synth::automation
