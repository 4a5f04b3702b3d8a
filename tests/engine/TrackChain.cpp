// The chain behind the voices: level, pan, filters, drive, EQ, width, ducking, mute and solo.
#include <gtest/gtest.h>

#include <cmath>

#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "engine/Drive.h"
#include "engine/ModFx.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

// A held sine through the Track's chain.
class TrackChain : public ::testing::Test {
 protected:
  ProjectPtr p = oneTrack(ANALOG);
  Track& track = p->tracks[0];

  void SetUp() override {
    track.engine1 = 0;
    track.engine4 = 0;
    track.sustain = 1;
  }
  Audio sine(int note, double seconds = 0.4) {
    Engine engine(48000);
    EXPECT_TRUE(engine.submitProject(*p));
    engine.noteOn(0, note, 100);
    renderFrames(engine, 24000);
    return renderFrames(engine, size_t(seconds * 48000));
  }
  double db(int note) { return toDb(rms(sine(note).left)); }
};

TEST_F(TrackChain, LevelTrimAndPan) {
  const double base = db(69);
  track.level = 0.32f;
  EXPECT_NEAR(db(69) - base, -6.02, 0.05);
  track.trim = 6;
  EXPECT_NEAR(db(69) - base, -0.02, 0.06);
  track.pan = 1;
  const Audio right = sine(69);
  EXPECT_LT(peak(right.left), 1e-4f);
  EXPECT_NEAR(toDb(rms(right.right)) - base, 3, 0.1);
}

TEST_F(TrackChain, TheEqReachesItsGains) {
  const double low = db(24), mid = db(83), high = db(127);
  track.eq_low = 12;
  track.eq_mid = -9;
  track.eq_mid_freq = 987.77f;
  track.eq_high = 6;
  EXPECT_NEAR(db(24) - low, 12, 1);
  EXPECT_NEAR(db(83) - mid, -9, 0.6);
  EXPECT_NEAR(db(127) - high, 6, 0.6);
}

TEST_F(TrackChain, HighAndLowCut) {
  const double base = db(69);
  track.highpass = 440;
  EXPECT_NEAR(db(69) - base, -4.6, 0.4) << "k 1.706: 1 / k at its frequency";
  EXPECT_LT(db(45) - base, -20);
  track.highpass = 20;
  track.lowpass = 440;
  EXPECT_NEAR(db(69) - base, -4.6, 0.4);
  EXPECT_LT(db(93) - base, -20);
}

TEST_F(TrackChain, WidthAndMonoBelow) {
  track.unison = 3;
  track.unison_spread = 1;
  auto sideDb = [&] {
    const Audio a = sine(48);
    std::vector<float> side(a.size());
    for (size_t i = 0; i < side.size(); i++) side[i] = (a.left[i] - a.right[i]) / 2;
    return toDb(rms(side));
  };
  const double base = sideDb();
  track.width = 2;
  EXPECT_NEAR(sideDb() - base, 6.02, 0.1);
  track.width = 0;
  EXPECT_LT(sideDb(), base - 60);
  track.width = 1;
  track.mono_below = 1000;
  EXPECT_LT(sideDb(), base - 12);
}

TEST_F(TrackChain, LanesThatNobodyReadsMayHoldAnything) {
  // A vector's unused lanes go through the same table as the used ones.
  for (float wild : {6.7e21f, -6.7e21f, 3e38f, INFINITY, -INFINITY, NAN})
    for (int type : {drive::Soft, drive::Tube, drive::Hard, drive::Fold}) {
      const dsp::f4 y =
          drive::shape(drive::curve(type, 0.7f), dsp::sineTable(), dsp::f4{0.5f, wild, wild, wild});
      EXPECT_TRUE(std::isfinite(y[0])) << type;
    }
}

TEST_F(TrackChain, DriveStartsWithoutAStep) {
  const float* sineTable = dsp::sineTable();
  for (int type = 0; type < 4; type++)
    for (float x : {-0.8f, -0.1f, 0.1f, 0.8f}) {
      float last = x;
      for (float amount = 0.0005f; amount <= 1; amount += 0.0005f) {
        const float y = drive::shape(drive::curve(type, amount), sineTable, x);
        EXPECT_LT(std::fabs(y - last), 0.06f) << "type " << type << " amount " << amount;
        EXPECT_LE(std::fabs(y), 1.6f);
        last = y;
      }
    }
}

TEST_F(TrackChain, MutesAndSolosAreSmoothAndAuditionsAreHeard) {
  auto two = copyOf(*p);
  two->track_count = 2;
  two->tracks[1] = two->tracks[0];
  two->tracks[1].solo = 1;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 45, 127);
  renderFrames(engine, 24000);
  ASSERT_TRUE(engine.submitProject(*two));
  const Audio fading = renderFrames(engine, 24000);
  float worst = 0;
  for (size_t i = 1; i < fading.size(); i++)
    worst = std::max(worst, std::fabs(fading.left[i] - fading.left[i - 1]));
  EXPECT_LT(worst, 0.01f);
  EXPECT_LT(rms(fading.left, 20000), 1e-5);
  Engine::Audition audition;
  audition.count = 1;
  audition.entries[0] = {0, 1024, 60, 100};
  ASSERT_TRUE(engine.audition(audition));
  EXPECT_GT(rms(renderFrames(engine, 12000).left, 6000), 1e-3)
      << "the auditioning Track is heard though not soloed";
}

TEST_F(TrackChain, DuckingFollowsNoteStartsEvenOfAMutedSource) {
  p->track_count = 2;
  p->tracks[1] = p->tracks[0];
  p->tracks[1].mute = 1;
  addLoop(*p, 1, 16, 0, 0);
  Note n;
  n.pitch = 60;
  n.velocity = 100;
  setNote(*p, 1, 0, 4, 0, n);
  track.duck_source = 9;
  track.duck_amount = 0.8f;
  track.duck_release = 0.05f;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 69, 100);
  renderFrames(engine, 24000);
  engine.setPlaying(true);
  const Audio a = renderFrames(engine, 60000);
  const double before = rms(a.left, 12000, 23900), ducked = rms(a.left, 24150, 24400),
               after = rms(a.left, 45000, 60000);
  EXPECT_NEAR(ducked / before, 0.22, 0.06);
  EXPECT_NEAR(after / before, 1, 0.02);
}

TEST_F(TrackChain, ChorusAndEnsembleWidenAndChangeTypeWithoutAClick) {
  for (int type : {ModFx::ChorusType, ModFx::EnsembleType}) {
    track.mod_type = u8(type);
    track.mod_mix = 1;
    const Audio a = sine(69, 1);
    double side = 0;
    for (size_t i = 0; i < a.size(); i++) side += std::pow(a.left[i] - a.right[i], 2);
    EXPECT_GT(std::sqrt(side / double(a.size())), 0.1 * rms(a.left)) << type;
  }
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 45, 127);
  renderFrames(engine, 24000);
  float worst = 0, last = 0;
  bool first = true;
  for (int type : {1, 2, 0, 2, 1}) {
    track.mod_type = u8(type);
    ASSERT_TRUE(engine.submitProject(*p));
    for (float x : renderFrames(engine, 9600).left) {
      if (!first) worst = std::max(worst, std::fabs(x - last));
      first = false;
      last = x;
    }
  }
  EXPECT_LT(worst, 0.012f);
}

TEST_F(TrackChain, LanesOnEveryTargetMakeNoClick) {
  // The steepest a smooth Lane makes the output move, against the steadiest sound there is.
  for (int target = 6; target < 46; target++) {
    if (target == 11 || (target >= 25 && target <= 28) || target == 17) continue;
    auto song = copyOf(*p);
    addLoop(*song, 0, 16, 0, 0);
    Note n;
    n.pitch = 45;
    n.velocity = 100;
    n.length = 4096;
    setNote(*song, 0, 0, 0, 0, n);
    LanePoint points[] = {{0, 0, 0, 0}, {64, 65535, 0, 0}, {128, 0, 0, 0}};
    song->lanes[0].count = 3;
    std::copy(points, points + 3, song->lanePoints);
    song->lanePointCount = 3;
    for (int r = 1; r < limits::lanes; r++) song->lanes[r].first = 3;
    song->lanes[0].enabled = 1;
    song->lanes[0].target = u8(target + 1);
    const Audio a = renderProject(*song, 1);
    ASSERT_GT(a.size(), 0u) << target;
    float worst = 0;
    for (size_t i = 2400; i < a.size(); i++)
      worst = std::max(worst, std::fabs(a.left[i] - 2 * a.left[i - 1] + a.left[i - 2]));
    const bool coarse = target == 30 || target == 31 || target == 32 || target == 12;  // noise, crush, drive
    EXPECT_LT(worst, coarse ? 0.3f : 0.004f) << "target " << target;
  }
}

// A record that spins makes noise between the notes, but not on a Track that is not to be heard.
TEST_F(TrackChain, AMutedTracksVinylIsSilent) {
  track.mod_type = 5;
  track.mod_mix = 1;
  track.mod_feedback = 0.9f;
  addLoop(*p, 0, 16, 0, 0);
  const double spinning = rms(renderProject(*p, 1).left, 24000);
  EXPECT_GT(toDb(spinning), -60);
  track.mute = 1;
  EXPECT_LT(toDb(rms(renderProject(*p, 1).left, 24000)), -120);
}

}  // namespace
}  // namespace synth::test
