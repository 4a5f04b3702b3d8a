// Macros while they play: by their own value, a touch, a Lane or a Note's Lock, on the Track and on Pads.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/MacroTravel.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr f32 mirror = std::numeric_limits<f32>::quiet_NaN();

class MacroSound : public ::testing::Test {
 protected:
  ProjectPtr p = oneTrack(ANALOG);
  Track& track = p->tracks[0];
  std::string error;

  void SetUp() override {
    track.engine1 = 0.7f;
    track.sustain = 1;
    track.cutoff = 8000;
    track.attack = 0.001f;
    ASSERT_EQ(macros::add(*p, 0, "DARK", false, 0, error), 0);
    map("cutoff", -5);
  }
  void map(const char* key, f32 amount, int pad = -1, int slot = 0) {
    ASSERT_TRUE(macros::map(*p, 0, slot, *param::find(key), pad, amount, mirror, 0, 1, error)) << error;
  }
  void note(int step, int pitch, int length, int lockTarget = -1, u16 lockValue = 0) {
    if (!p->patternCount) addLoop(*p, 0, 16, 0, 0);
    Note n;
    n.pitch = u8(pitch);
    n.velocity = 100;
    n.length = u16(length);
    if (lockTarget >= 0) n.locks[0] = {u8(lockTarget + 1), 0, lockValue};
    setNote(*p, 0, 0, step, stepAt(*p, 0, 0, step).freeSlot(isDrums(track), pitch), n);
  }
  // How bright: the energy of a first difference against all.
  static double brightness(const std::vector<float>& x, size_t from = 0, size_t to = ~size_t(0)) {
    double all = 1e-20, steps = 0;
    for (size_t i = from + 1; i < std::min(to, x.size()); i++) {
      all += double(x[i]) * x[i];
      steps += double(x[i] - x[i - 1]) * (x[i] - x[i - 1]);
    }
    return std::sqrt(steps / all);
  }
  float resolved(Engine& engine, int target) {
    renderFrames(engine, 64);
    Telemetry t;
    engine.readTelemetry(t);
    return t.resolved[0][target];
  }
};

TEST_F(MacroSound, AValueMovesItsTargetsAndZeroMovesNone) {
  auto plain = copyOf(*p);
  for (MacroRec& m : plain->tracks[0].macros) m = MacroRec{};
  plain->tracks[0].macroCount = 0;
  note(0, 48, 2048);
  addLoop(*plain, 0, 16, 0, 0);
  setNote(*plain, 0, 0, 0, 0, stepAt(*p, 0, 0, 0).notes[0]);
  EXPECT_TRUE(sameBytes(renderProject(*p, 0.5), renderProject(*plain, 0.5))) << "at 0 a Macro is not there";
  macros::setValue(*p, 0, 0, 1);
  Engine engine(48000);
  engine.submitProject(*p);
  const float expected = macros::resulting(*p, 0, *param::find("cutoff"), -1);
  EXPECT_NEAR(resolved(engine, automation::CUTOFF), expected, 0.01f);
  EXPECT_LT(expected, 300);
  EXPECT_LT(brightness(renderProject(*p, 0.5).left), 0.3 * brightness(renderProject(*plain, 0.5).left));
}

TEST_F(MacroSound, ATouchHoldsAndLetsGo) {
  Engine engine(48000);
  engine.submitProject(*p);
  engine.noteOn(0, 48, 100);
  EXPECT_EQ(resolved(engine, automation::CUTOFF), 8000);
  engine.setTouch(0, automation::firstMacroTarget, 1, true);
  EXPECT_LT(resolved(engine, automation::CUTOFF), 300);
  engine.setTouch(0, automation::CUTOFF, 1, true);
  EXPECT_NEAR(resolved(engine, automation::CUTOFF) / 625, 1, 0.3) << "the Macro moves the touched value";
  engine.setTouch(0, automation::CUTOFF, 1, false);
  engine.setTouch(0, automation::firstMacroTarget, 1, false);
  EXPECT_EQ(resolved(engine, automation::CUTOFF), 8000);
}

TEST_F(MacroSound, ALaneMovesItAndRestsLeaveTheOwnValue) {
  note(0, 48, 4096);
  const LanePoint points[] = {{0, 0, 0, 0}, {8 * 16, 65535, 0, 0}, {12 * 16, 0, 1, 0}};
  ASSERT_TRUE(setLanePoints(*p, 0, points, 3));
  p->lanes[0].enabled = 1;
  p->lanes[0].target = u8(automation::firstMacroTarget + 1);
  const Audio a = renderProject(*p, 2);
  EXPECT_LT(brightness(a.left, 44000, 47000), 0.35 * brightness(a.left, 1000, 4000));
  EXPECT_GT(brightness(a.left, 78000, 90000), 2 * brightness(a.left, 44000, 47000)) << "the Lane rests";
}

TEST_F(MacroSound, ALockBelongsToItsNoteAlone) {
  // A low locked Note and a high free one together: the free one stays bright.
  const int macro = automation::firstMacroTarget;
  note(0, 36, 2048, macro, 65535);
  const double locked = brightness(renderProject(*p, 0.5).left);
  note(0, 84, 2048);
  const double both = brightness(renderProject(*p, 0.5).left);
  auto free = copyOf(*p);
  macros::setValue(*free, 0, 0, 1);
  const double dark = brightness(renderProject(*free, 0.5).left);
  EXPECT_GT(both, 2 * dark) << "the free Note is not darkened";
  EXPECT_LT(locked, both);
  // What lies behind the voices follows the newest Note that holds a Lock.
  map("width", -1);
  Engine engine(48000);
  engine.submitProject(*p);
  EXPECT_EQ(resolved(engine, automation::WIDTH), track.width);
  engine.setPlaying(true);
  renderFrames(engine, 4800);
  EXPECT_LT(resolved(engine, automation::WIDTH), track.width - 0.5f);
}

TEST_F(MacroSound, ANoteWithALockStillFollowsLanesAndTouches) {
  // Another Macro's target is swept by a Lane while the Note holds a Lock of 0, and while it dies away.
  ASSERT_EQ(macros::add(*p, 0, "OTHER", false, 0, error), 1);
  map("resonance", 0.5f, -1, 1);
  track.release = 4;
  const LanePoint points[] = {{0, 65535, 0, 0}, {16 * 8, 20000, 0, 0}};
  ASSERT_TRUE(setLanePoints(*p, 0, points, 2));
  p->lanes[0].enabled = 1;
  p->lanes[0].target = u8(automation::CUTOFF + 1);
  auto fall = [&](u16 length, int slot, u16 lock, size_t from) {
    const auto before = copyOf(*p);
    note(0, 48, length, automation::firstMacroTarget + slot, lock);
    const Audio a = renderProject(*p, 1.2);
    *p = *before;
    return brightness(a.left, from, from + 2400) / brightness(a.left, 48000, 52800);
  };
  EXPECT_GT(fall(16 * 256, 0, 0, 4800), 2) << "a Lock that moves nothing";
  EXPECT_GT(fall(16 * 256, 1, 0, 4800), 2) << "nor its target's neighbours";
  EXPECT_GT(fall(2 * 256, 0, 3000, 14400), 1.5) << "in its release";

  note(0, 48, 16 * 256, automation::firstMacroTarget, 0);
  p->lanes[0].enabled = 0;
  Engine engine(48000);
  engine.submitProject(*p);
  engine.setPlaying(true);
  const double open = brightness(renderFrames(engine, 9600).left, 4800);
  engine.setTouch(0, automation::CUTOFF, 0.4f, true);
  EXPECT_LT(brightness(renderFrames(engine, 9600).left, 4800), 0.5 * open);
}

TEST_F(MacroSound, ATouchOnTheTracksOwnValueStandsAboveALock) {
  macros::setValue(*p, 0, 0, 0.01f);
  track.cutoff = param::fromNormalized(*param::find("cutoff"), 0.75f);
  note(0, 48, 4096, automation::CUTOFF, 12000);
  Engine engine(48000);
  engine.submitProject(*p);
  engine.setPlaying(true);
  const double locked = brightness(renderFrames(engine, 9600).left, 4800);
  engine.setTouch(0, automation::CUTOFF, 0.75f, true);
  EXPECT_GT(brightness(renderFrames(engine, 9600).left, 4800), 2 * locked);
}

TEST_F(MacroSound, ALockedDecayLeavesTheOtherNotesOfAChordAlone) {
  track.sustain = 0;
  track.decay = 2;
  map("decay", 0.05f);
  macros::setValue(*p, 0, 0, 0.01f);
  note(0, 72, 4096);
  const double alone = sineLevel(renderProject(*p, 0.6).left, 523.25, 48000, 19200, 28800);
  note(0, 43, 4096, automation::DECAY, 0);
  const double chord = sineLevel(renderProject(*p, 0.6).left, 523.25, 48000, 19200, 28800);
  EXPECT_GT(alone, 0.005);
  EXPECT_NEAR(toDb(chord / alone), 0, 1);
}

TEST_F(MacroSound, ValuesWithoutATargetAndPadsFollowToo) {
  map("sub_level", 0.8f);
  note(0, 60, 2048);
  const double before = sineLevel(renderProject(*p, 0.5).left, 130.81, 48000);
  macros::setValue(*p, 0, 0, 1);
  EXPECT_GT(sineLevel(renderProject(*p, 0.5).left, 130.81, 48000), 4 * before + 1e-3);

  auto kit = oneKit();
  ASSERT_EQ(macros::add(*kit, 0, "TIGHT", false, 0, error), 0);
  ASSERT_TRUE(macros::map(*kit, 0, 0, *param::find("pad_decay"), 3, -0.4f, mirror, 0, 1, error)) << error;
  addLoop(*kit, 0, 16, 0, 0);
  for (int pad : {3, 1}) {
    Note n;
    n.pitch = u8(pad);
    n.velocity = 100;
    setNote(*kit, 0, 0, pad == 3 ? 0 : 8, pad, n);
  }
  const Audio open = renderProject(*kit, 2);
  macros::setValue(*kit, 0, 0, 1);
  const Audio tight = renderProject(*kit, 2);
  EXPECT_LT(rms(tight.left, 2400, 12000), 0.5 * rms(open.left, 2400, 12000));
  EXPECT_NEAR(toDb(rms(tight.left, 48000) / rms(open.left, 48000)), 0, 0.5) << "the other Pad is untouched";
}

TEST_F(MacroSound, TheRateOfAnLfoDoesNotJumpInPhase) {
  track.lfo_target = 3;
  track.lfo_depth = 0.8f;
  track.lfo_rate = 2;
  track.engine1 = 0;
  map("lfo_rate", 1);
  Engine engine(48000);
  engine.submitProject(*p);
  engine.noteOn(0, 60, 100);
  renderFrames(engine, 48000 * 3 + 1234);
  const Audio before = renderFrames(engine, 480);
  engine.setTouch(0, automation::firstMacroTarget, 0.6f, true);
  const Audio after = renderFrames(engine, 480);
  auto balance = [](const Audio& a) { return rms(a.left) / (rms(a.left) + rms(a.right)); };
  EXPECT_NEAR(balance(before), balance(after), 0.06);
}

}  // namespace
}  // namespace synth::test
