// When Notes sound: nudge, chance, ratchet, Accent, humanize, gates, voice modes, Locks and Lanes.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <vector>

#include "core/edit/Automation.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr double step = 6000;  // frames at 120 BPM and 48 kHz

ProjectPtr bar(int clips = 1) {
  auto p = oneTrack(ANALOG);
  p->tracks[0].attack = 0.001f;
  const int id = addLoop(*p, 0, 16, 0, 0);
  ClipRec& clip = p->clips[0];
  clip.length = u32(16 * clips);
  clip.repeats = clips > 1;
  EXPECT_EQ(id, 0);
  return p;
}

void put(Project& p, int at, int pitch, u8 flags = 0, i8 nudge = 0, int slot = 0, u8 velocity = 100,
         u16 length = 128) {
  Note n;
  n.pitch = u8(pitch);
  n.velocity = velocity;
  n.flags = flags;
  n.nudge = nudge;
  n.length = length;
  ASSERT_TRUE(setNote(p, 0, 0, at, slot, n));
}

struct Onset {
  u64 sample;
  int note, velocity;
};

// Every start of a Note on Track 0, to the sample, by watching Telemetry after each sample.
std::vector<Onset> onsets(const Project& p, double steps) {
  Engine engine(48000);
  EXPECT_TRUE(engine.submitProject(p));
  engine.setPlaying(true);
  std::vector<Onset> out;
  u32 serial = 0;
  float l, r;
  Telemetry t;
  for (u64 i = 0; i < u64(steps * step); i++) {
    engine.render(&l, &r, 1);
    engine.readTelemetry(t);
    if (t.tracks[0].noteSerial != serial) out.push_back({i, t.tracks[0].lastNote, t.tracks[0].lastVelocity});
    serial = t.tracks[0].noteSerial;
  }
  return out;
}

TEST(Sequencer, NotesStartOnTheirSampleWithSwingAndNudge) {
  auto p = bar();
  p->swing = 0.6f;
  put(*p, 0, 60, 0, -64);
  put(*p, 1, 62);
  put(*p, 2, 64, 0, 32);
  put(*p, 3, 65, 0, -64);
  const auto on = onsets(*p, 4);
  ASSERT_EQ(on.size(), 4u);
  EXPECT_EQ(on[0].sample, 0u) << "nothing came before the start to play it early";
  EXPECT_NEAR(double(on[1].sample), 1.2 * step, 1);
  EXPECT_NEAR(double(on[2].sample), 2 * step + 1.2 * step * 0.25, 1);
  EXPECT_NEAR(double(on[3].sample), 2 * step + 1.2 * step * 0.5, 1)
      << "half a Step early, in the Step before";
}

TEST(Sequencer, RatchetAndAccent) {
  auto p = bar();
  put(*p, 0, 60, 2 << 2);
  put(*p, 4, 60, Note::accentBit, 0, 0, 120);
  put(*p, 8, 60, Note::accentBit, 0, 0, 60);
  const auto on = onsets(*p, 10);
  ASSERT_EQ(on.size(), 5u);
  EXPECT_NEAR(double(on[1].sample), step / 3, 1);
  EXPECT_NEAR(double(on[2].sample), step * 2 / 3, 1);
  EXPECT_EQ(on[3].velocity, 127);
  EXPECT_EQ(on[4].velocity, 80);
}

TEST(Sequencer, ChanceIsDrawnAnewEachPassAndRepeatsInARender) {
  auto p = bar(24);
  for (int s = 0; s < 16; s += 4) put(*p, s, 60 + s, 8 << 4);
  p->bpm = 240;
  Engine a(48000), b(48000);
  u32 counts[2] = {};
  Engine* engines[] = {&a, &b};
  std::set<u32> perPass;
  for (int e = 0; e < 2; e++) {
    ASSERT_TRUE(engines[e]->submitProject(*p));
    engines[e]->setPlaying(true);
    u32 before = 0;
    for (int pass = 0; pass < 24; pass++) {
      renderFrames(*engines[e], 48000);
      Telemetry t;
      engines[e]->readTelemetry(t);
      if (e == 0) perPass.insert(t.tracks[0].noteSerial - before);
      before = counts[e] = t.tracks[0].noteSerial;
    }
  }
  EXPECT_EQ(counts[0], counts[1]);
  EXPECT_GT(counts[0], 33u);
  EXPECT_LT(counts[0], 63u) << "about half of 96";
  EXPECT_GE(perPass.size(), 3u);
}

TEST(Sequencer, HumanizeOnlyDelays) {
  auto p = bar();
  for (int s = 0; s < 16; s++) put(*p, s, 60);
  p->humanize = 1;
  int moved = 0;
  for (const Onset& on : onsets(*p, 16)) {
    const double off = std::fmod(double(on.sample), step);
    EXPECT_LE(off, 0.06 * step + 1);
    moved += off > 1;
    EXPECT_NEAR(on.velocity, 100, 8);
  }
  EXPECT_GT(moved, 8);
}

TEST(Sequencer, AMonoTrackPlaysTheLowestNoteOfAStep) {
  auto p = bar();
  p->tracks[0].voice_mode = 1;
  put(*p, 0, 67, 0, 0, 0);
  put(*p, 0, 60, 0, 0, 1);
  put(*p, 0, 60, 0, 0, 2, 50);
  const auto on = onsets(*p, 2);
  ASSERT_EQ(on.size(), 1u);
  EXPECT_EQ(on[0].note, 60);
  EXPECT_EQ(on[0].velocity, 100) << "of two the same the lower slot";
}

TEST(Sequencer, LegatoKeepsTheVoiceAndGlides) {
  auto p = bar();
  p->tracks[0].voice_mode = 2;
  p->tracks[0].glide = 0.1f;
  put(*p, 0, 48, 0, 0, 0, 100, 512);
  put(*p, 1, 60, 0, 0, 0, 100, 512);
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.setPlaying(true);
  renderFrames(engine, size_t(step + 2400));
  Telemetry t;
  engine.readTelemetry(t);
  int voices = 0;
  float hz = 0;
  for (const VoiceView& v : t.voices)
    if (v.active) {
      voices++;
      hz = v.frequency;
    }
  EXPECT_EQ(voices, 1);
  EXPECT_NEAR(12 * std::log2(hz / 130.8128), 6, 0.05) << "half way after half the glide time";
}

TEST(Sequencer, GatesEndNotesAfterTheirLength) {
  auto p = bar();
  p->tracks[0].release = 0.01f;
  p->tracks[0].sustain = 1;
  put(*p, 0, 60, 0, 0, 0, 127, 512);
  const Audio a = renderProject(*p, 0.5);
  EXPECT_GT(rms(a.left, size_t(step), size_t(1.9 * step)), 0.01);
  EXPECT_LT(rms(a.left, size_t(2 * step + 1500), size_t(2 * step + 5000)), 1e-4);
}

TEST(Sequencer, NotesPastThePatternsLengthDoNotPlay) {
  auto p = bar(2);
  put(*p, 20, 60);
  EXPECT_TRUE(onsets(*p, 32).empty());
}

TEST(Sequencer, ALockHoldsForItsNoteAndALaneForTheRest) {
  auto p = bar();
  const double times[] = {0, 16};
  const float values[] = {0.5f, 0.5f};
  ASSERT_TRUE(automation::setBreakpoints(*p, laneRow(0, 0), times, values, 2));
  p->lanes[0].enabled = 1;
  p->lanes[0].target = u8(automation::PAN + 1);
  Note n;
  n.pitch = 60;
  n.velocity = 100;
  n.length = 256;
  n.locks[0] = {u8(automation::PAN + 1), 0, 65535};
  ASSERT_TRUE(setNote(*p, 0, 0, 4, 0, n));
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.setPlaying(true);
  Telemetry t;
  std::vector<float> pan;
  for (int s = 0; s < 10; s++) {
    renderFrames(engine, size_t(step));
    engine.readTelemetry(t);
    pan.push_back(t.resolved[0][automation::PAN]);
  }
  EXPECT_NEAR(pan[2], 0, 1e-4);
  EXPECT_NEAR(pan[4], 1, 1e-4);
  EXPECT_NEAR(pan[8], 0, 1e-4);
}

TEST(Sequencer, LanesMoveSampleBySampleAndHoldAtTheSongsEnd) {
  auto p = bar();
  const double times[] = {0, 8, 8, 16};
  const float values[] = {0, 1, 0.25f, 0.75f};
  ASSERT_TRUE(automation::setBreakpoints(*p, laneRow(0, 0), times, values, 4));
  p->lanes[0].enabled = 1;
  p->lanes[0].target = u8(automation::LEVEL + 1);
  put(*p, 0, 60);
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.setPlaying(true);
  Telemetry t;
  auto levelAt = [&](double steps) {
    renderFrames(engine, size_t(steps * step));
    engine.readTelemetry(t);
    return t.resolved[0][automation::LEVEL];
  };
  EXPECT_NEAR(levelAt(4), 0.5f, 0.001);
  EXPECT_NEAR(levelAt(3.9), 0.9875f, 0.001);
  EXPECT_NEAR(levelAt(0.2), 0.25625f, 0.001);
  EXPECT_NEAR(levelAt(10), 0.75f, 0.001) << "the value just before the end stays";
  engine.setAutomationPlayback(false);
  EXPECT_FLOAT_EQ(levelAt(0.1), 0.64f) << "without automation the Track's own";
}

}  // namespace
}  // namespace synth::test
