// The transport as a player meets it: start, pause, stop, jump, loop, count-in, the Song's end.
#include <gtest/gtest.h>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr int stepFrames = 6000;  // a Step at 120 BPM and 48 kHz

class TransportTest : public ::testing::Test {
 protected:
  Engine engine{48000};
  Telemetry t{};

  void SetUp() override {
    auto p = oneTrack(ANALOG);
    addLoop(*p, 0, 16, 0, 0);
    addLoop(*p, 0, 16, 16, 0);
    addLoop(*p, 0, 16, 32, 0);
    addMarker(*p, 0, "A");
    addMarker(*p, 16, "B");
    addMarker(*p, 32, "C");
    ASSERT_TRUE(engine.submitProject(*p));
  }
  void steps(double n) {
    float nothing;
    if (n == 0) engine.render(&nothing, &nothing, 0);
    renderFrames(engine, size_t(n * stepFrames));
    engine.readTelemetry(t);
  }
};

TEST_F(TransportTest, PauseContinuesWithinTheStepAndStopReturns) {
  engine.playFrom(4);
  steps(2.5);
  EXPECT_EQ(t.step, 6);
  engine.setPlaying(false);
  steps(1);
  EXPECT_EQ(t.step, 6);
  EXPECT_NEAR(t.stepPhase, 0.5, 1e-6);
  EXPECT_TRUE(t.paused && !t.stopped);
  engine.setPlaying(true);
  steps(1);
  EXPECT_NEAR(t.position, 7.5, 1e-6);
  engine.stopPlayback();
  steps(0);
  EXPECT_EQ(t.step, 4);
  EXPECT_EQ(t.startStep, 4);
  engine.stopPlayback();
  steps(0);
  EXPECT_EQ(t.startStep, 0) << "a second stop returns to the top";
}

TEST_F(TransportTest, TheSongEndsByItselfAndStartsAnew) {
  engine.setPlaying(true);
  steps(50);
  EXPECT_FALSE(t.playing);
  EXPECT_TRUE(t.stopped);
  EXPECT_EQ(t.songEndCount, 1u);
  EXPECT_EQ(t.step, 0);
  engine.setPlaying(true);
  steps(3.5);
  EXPECT_NEAR(t.position, 3.5, 1e-5);
}

TEST_F(TransportTest, StopAtStopsAfterItsStepOnce) {
  engine.stopAt(1);
  engine.playFrom(0);
  steps(0.9);
  EXPECT_TRUE(t.playing);
  steps(0.3);
  EXPECT_FALSE(t.playing);
  engine.playFrom(0);
  steps(4);
  EXPECT_TRUE(t.playing) << "a stop counts for one playFrom";
  engine.stopAt(0);
  engine.playFrom(0);
  steps(4);
  EXPECT_TRUE(t.playing) << "0 means none";
}

TEST_F(TransportTest, JumpsWaitForTheEndOfTheSection) {
  engine.playFrom(2);
  engine.jumpTo(2);
  steps(13.9);
  EXPECT_EQ(t.step, 15);
  steps(0.2);
  EXPECT_EQ(t.step, 32);
  EXPECT_EQ(t.pendingMarker, -1);
  engine.setPlaying(false);
  engine.jumpTo(1);
  steps(0);
  EXPECT_EQ(t.step, 16) << "a standing transport jumps at once";
  engine.jumpTo(9);
  steps(0);
  EXPECT_EQ(t.step, 16);
}

TEST_F(TransportTest, LoopsAndHeldSections) {
  engine.setLoop({1, 4, 8});
  engine.setPlaying(true);
  steps(0.5);
  EXPECT_EQ(t.step, 4) << "a start moves into the loop";
  steps(4);
  EXPECT_EQ(t.step, 4);
  engine.holdMarker(1, true);
  steps(20);
  EXPECT_GE(t.step, 16);
  EXPECT_LT(t.step, 32);
  steps(40);
  EXPECT_GE(t.step, 16);
  EXPECT_LT(t.step, 32);
}

TEST_F(TransportTest, CountInsComeBeforeTheFirstStep) {
  engine.setRecording(true);
  engine.setCountIn(true);
  engine.setPlaying(true);
  steps(15.5);
  EXPECT_EQ(t.countInLeft, 1);
  EXPECT_EQ(t.countInQuarters, 1);
  steps(1);
  EXPECT_EQ(t.countInLeft, 0);
  EXPECT_NEAR(t.position, 0.5, 1e-6);
  engine.stopPlayback();
  engine.countIn(0, true);
  engine.playFrom(8);
  steps(0.5);
  EXPECT_EQ(t.step, 8) << "no count-in asked for";
  engine.countIn(4, false);
  engine.playFrom(8);
  steps(4.5);
  EXPECT_NEAR(t.position, 8.5, 1e-6);
}

TEST_F(TransportTest, ARestoredPositionContinuesFromItsPlace) {
  engine.restorePausedTransport(9.25);
  steps(0);
  EXPECT_EQ(t.step, 9);
  EXPECT_NEAR(t.stepPhase, 0.25, 1e-12);
  EXPECT_FALSE(t.playing);
  engine.restorePausedTransport(-1);
  steps(0);
  EXPECT_EQ(t.step, 9);
}

TEST_F(TransportTest, SwingMakesEvenStepsLonger) {
  auto p = oneTrack(ANALOG);
  addLoop(*p, 0, 16, 0, 0);
  p->swing = 0.75f;
  ASSERT_TRUE(engine.submitProject(*p));
  engine.playFrom(0);
  steps(1.49);
  EXPECT_EQ(t.step, 0);
  steps(0.02);
  EXPECT_EQ(t.step, 1);
  steps(0.5);
  EXPECT_EQ(t.step, 2);
}

TEST_F(TransportTest, KeysAreRecordedOnTheNearestStep) {
  engine.setRecording(true);
  engine.playFrom(0);
  steps(2.25);
  engine.noteOn(0, 60, 90);
  steps(1.5);
  engine.noteOff(0, 60);
  steps(0.85);
  engine.noteOn(0, 62, 100);
  steps(0.1);
  engine.setRecording(false);
  steps(0);
  RecordedNote a, b, none;
  ASSERT_TRUE(engine.pollRecorded(a));
  ASSERT_TRUE(engine.pollRecorded(b));
  EXPECT_FALSE(engine.pollRecorded(none));
  EXPECT_EQ(a.step, 2);
  EXPECT_EQ(a.note.pitch, 60);
  EXPECT_EQ(a.note.velocity, 90);
  EXPECT_EQ(a.note.length, 384);
  EXPECT_EQ(b.step, 5) << "past the middle of a Step the next one counts";
}

}  // namespace
}  // namespace synth::test
