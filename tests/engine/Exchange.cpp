// The control side: Project slots, full rings, panic, touches, auditions, Telemetry, Sample slots.
#include <gtest/gtest.h>

#include <cmath>

#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

Telemetry telemetryOf(Engine& engine) {
  Telemetry t;
  EXPECT_TRUE(engine.readTelemetry(t));
  return t;
}

int sounding(const Telemetry& t) {
  int n = 0;
  for (const VoiceView& v : t.voices) n += v.active && !(v.flags & VoiceView::releasingFlag);
  return n;
}

void fillRing(Engine& engine) {
  for (int i = 0; i < 256; i++) engine.setMetronome(false);
}

TEST(Exchange, SampleRatesAreLimited) {
  for (auto [asked, used] :
       {std::pair{8000.0, 22050.0}, {NAN, 48000.0}, {1e9, 192000.0}, {44100.0, 44100.0}}) {
    Engine engine(asked);
    renderFrames(engine, 1000);
    const Telemetry t = telemetryOf(engine);
    EXPECT_NEAR(double(t.sampleClock) / t.seconds, used, 1e-6);
  }
}

TEST(Exchange, FourProjectSlots) {
  Engine engine(48000);
  auto p = makeProject();
  EXPECT_TRUE(engine.submitProject(*p));
  EXPECT_TRUE(engine.submitProject(*p));
  EXPECT_TRUE(engine.submitProject(*p));
  EXPECT_FALSE(engine.submitProject(*p)) << "one slot plays, three wait";
  renderFrames(engine, 16);
  EXPECT_TRUE(engine.submitProject(*p)) << "rendering frees what was replaced";
}

TEST(Exchange, AnInvalidProjectChangesNothing) {
  Engine engine(48000), undisturbed(48000);
  auto p = oneTrack(ANALOG), bad = copyOf(*p);
  bad->bpm = 1000;
  for (Engine* e : {&engine, &undisturbed}) {
    ASSERT_TRUE(e->submitProject(*p));
    e->noteOn(0, 60, 100);
    renderFrames(*e, 4800);
  }
  EXPECT_FALSE(engine.submitProject(*bad));
  EXPECT_TRUE(sameBytes(renderFrames(engine, 4800), renderFrames(undisturbed, 4800)));
}

TEST(Exchange, PanicWorksWithAFullRingAndSilencesLaterNotes) {
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*oneTrack(ANALOG)));
  engine.noteOn(0, 60, 100);
  renderFrames(engine, 480);
  EXPECT_EQ(sounding(telemetryOf(engine)), 1);
  for (int i = 0; i < 255; i++) engine.setMetronome(false);
  engine.noteOn(0, 64, 100);
  engine.panic();
  renderFrames(engine, 480);
  EXPECT_EQ(sounding(telemetryOf(engine)), 0);
}

TEST(Exchange, AStopLostToAFullRingStillStops) {
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*makeProject()));
  engine.playFrom(0);
  renderFrames(engine, 480);
  EXPECT_TRUE(telemetryOf(engine).playing);
  fillRing(engine);
  engine.setPlaying(false);
  renderFrames(engine, 480);
  const Telemetry t = telemetryOf(engine);
  EXPECT_FALSE(t.playing);
  EXPECT_EQ(t.droppedTotal, 1u);
  fillRing(engine);
  EXPECT_FALSE(engine.setTouch(0, 4, 0.5f, true));
  EXPECT_FALSE(engine.submitProject(*makeProject()));
}

TEST(Exchange, TouchesAreCheckedBeforeTheyAreQueued) {
  Engine engine(48000);
  EXPECT_FALSE(engine.setTouch(16, 20, 0.5f, true)) << "Track 16 takes bus targets alone";
  EXPECT_TRUE(engine.setTouch(16, 80, 0.5f, true));
  EXPECT_FALSE(engine.setTouch(0, 46, 0.5f, true));
  EXPECT_FALSE(engine.setTouch(0, 4, 1.5f, true));
  EXPECT_FALSE(engine.setTouch(0, 4, NAN, true));
  EXPECT_TRUE(engine.setTouch(0, 176, 0.5f, true));
}

TEST(Exchange, ATouchHoldsAndLetsGo) {
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*oneTrack(ANALOG)));
  const auto& cutoff = *automation::targetInfo(automation::CUTOFF);
  engine.setTouch(0, automation::CUTOFF, 0.25f, true);
  engine.setTouch(0, automation::PITCH, 0.75f, true);
  renderFrames(engine, 256);
  Telemetry t = telemetryOf(engine);
  EXPECT_FLOAT_EQ(t.resolved[0][automation::CUTOFF], param::fromNormalized(cutoff, 0.25f));
  EXPECT_FLOAT_EQ(t.resolved[0][automation::PITCH], 12);
  engine.setTouch(0, automation::CUTOFF, 0, false);
  renderFrames(engine, 256);
  EXPECT_FLOAT_EQ(telemetryOf(engine).resolved[0][automation::CUTOFF], 20000);
}

TEST(Exchange, AnAuditionPlaysAtMost64AndEnds) {
  Engine engine(48000);
  auto p = oneTrack(ANALOG);
  p->bpm = 240;
  ASSERT_TRUE(engine.submitProject(*p));
  Engine::Audition audition;
  audition.count = 70;
  for (int i = 0; i < 64; i++) audition.entries[i] = {u16(i), 128, u8(30 + i), 100};
  ASSERT_TRUE(engine.audition(audition));
  u32 notes = 0;
  u8 last = 0;
  for (int i = 0; i < 80; i++) {
    renderFrames(engine, 3000);
    const Telemetry t = telemetryOf(engine);
    notes = t.tracks[0].noteSerial;
    last = t.tracks[0].lastNote;
  }
  EXPECT_EQ(notes, 64u);
  EXPECT_EQ(last, 93);
  renderFrames(engine, 16);
  EXPECT_EQ(sounding(telemetryOf(engine)), 0);
  audition.track = 16;
  EXPECT_FALSE(engine.audition(audition));
}

TEST(Exchange, RenderOfNoFramesTakesCommandsAndNullBuffersDoNothing) {
  Engine engine(48000);
  engine.playFrom(3);
  float sample;
  engine.render(nullptr, &sample, 1);
  Telemetry t;
  EXPECT_FALSE(engine.readTelemetry(t));
  engine.render(&sample, &sample, 0);
  ASSERT_TRUE(engine.readTelemetry(t));
  EXPECT_TRUE(t.playing);
  EXPECT_EQ(t.step, 3);
  EXPECT_EQ(t.sampleClock, 0u);
}

TEST(Exchange, SampleSlotsHandOverAndComeBack) {
  Engine engine(48000);
  u8 hash[32] = {7}, none[32] = {};
  float* pcm = engine.sampleData(3, 1000);
  ASSERT_NE(pcm, nullptr);
  EXPECT_EQ(engine.sampleData(17, 10), nullptr);
  EXPECT_EQ(engine.sampleData(3, 0), nullptr);
  EXPECT_FALSE(engine.publishSample(3, none, 1000));
  EXPECT_FALSE(engine.publishSample(3, hash, 1001));
  EXPECT_TRUE(engine.publishSample(3, hash, 1000));
  EXPECT_EQ(engine.sampleSlot(hash), 3);
  EXPECT_EQ(engine.sampleData(3, 1000), nullptr) << "a published slot is the audio thread's";
  engine.retireSample(3);
  renderFrames(engine, 16);
  EXPECT_TRUE(engine.sampleSlotFree(3));
  EXPECT_EQ(engine.sampleSlot(hash), -1);
}

TEST(Exchange, ASampleThatATrackNamesIsNotRetired) {
  Engine engine(48000);
  auto p = oneTrack(SAMPLER);
  u8 hash[32] = {9};
  assignSample(p->tracks[0], hash, "TAKE", 60, 0);
  ASSERT_NE(engine.sampleData(0, 64), nullptr);
  ASSERT_TRUE(engine.publishSample(0, hash, 64));
  ASSERT_TRUE(engine.submitProject(*p));
  engine.retireSample(0);
  renderFrames(engine, 16);
  EXPECT_FALSE(engine.sampleSlotFree(0));
  ASSERT_TRUE(engine.submitProject(*oneTrack(ANALOG)));
  engine.retireSample(0);
  renderFrames(engine, 16);
  EXPECT_TRUE(engine.sampleSlotFree(0));
}

}  // namespace
}  // namespace synth::test
