// The melodic voice: tuning, levels, aliasing, filters, envelopes, stealing, unison, LFOs.
#include <gtest/gtest.h>

#include <cmath>

#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "engine/dsp/LaneFilters.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

// A held live note, rendered after `settle` seconds for `seconds`.
Audio held(const Project& p, int note, double seconds, double settle = 0.3, int velocity = 127,
           double rate = 48000) {
  Engine engine(rate);
  EXPECT_TRUE(engine.submitProject(p));
  engine.noteOn(0, note, velocity);
  renderFrames(engine, size_t(settle * rate));
  return renderFrames(engine, size_t(seconds * rate));
}

double hzOf(int note) { return 440 * std::exp2((note - 69) / 12.0); }

int activeVoices(Engine& engine) {
  Telemetry t;
  renderFrames(engine, 16);
  engine.readTelemetry(t);
  int n = 0;
  for (const VoiceView& v : t.voices) n += v.active;
  return n;
}

TEST(Voices, TheLadderIsTunedAndBounded) {
  using namespace dsp;
  for (double hz : {110.0, 1000.0, 8000.0, 15000.0}) {
    const double g = std::tan(M_PI * hz / 48000);
    LadderSetting setting{float(g / (1 + g)), 4.2f, 0};
    LadderState state;
    std::vector<float> out;
    Block block;
    for (int i = 0; i < 6000; i++) {
      for (int k = 0; k < segment; k++) block[k] = i == 0 && k == 0 ? 0.5f : 0;
      LadderChannel channel{&block, &state, &setting};
      runLadders(&channel, 1, segment, true);
      if (i >= 3000)
        for (int k = 0; k < segment; k++) out.push_back(block[k]);
    }
    // At full resonance it rings by itself, at its cutoff.
    EXPECT_GT(rms(out), 0.05) << hz;
    EXPECT_LT(peak(out), 2.5f);
    int crossings = 0;
    for (size_t i = 1; i < out.size(); i++) crossings += out[i - 1] < 0 && out[i] >= 0;
    EXPECT_NEAR(crossings * 48000.0 / double(out.size()) / hz, 1, 0.005) << hz;
  }
}

TEST(Voices, AJumpingCutoffStaysBounded) {
  using namespace dsp;
  LadderSetting settings[2];
  for (int i = 0; i < 2; i++) {
    const double g = std::tan(M_PI * (i ? 20000 : 20) / 48000);
    settings[i] = {float(g / (1 + g)), 4.2f, 1};
  }
  LadderState state;
  Block block;
  for (int i = 0; i < 20000; i++) {
    for (int k = 0; k < segment; k++) block[k] = (i * segment + k) % 100 < 50 ? 1.0f : -1.0f;
    LadderChannel channel{&block, &state, &settings[i & 1]};
    runLadders(&channel, 1, segment, true);
    for (int k = 0; k < segment; k++) ASSERT_LT(std::fabs(block[k]), 4);
  }
}

TEST(Voices, TheFilterTypesPassWhatTheyShould) {
  struct Case {
    int type;
    double low, high;  // dB at two octaves below and above the cutoff, at most or at least
  };
  for (const Case& c :
       {Case{0, -3, -30}, Case{1, -3, -18}, Case{2, -18, -3}, Case{3, -6, -6}, Case{4, -3, -3}}) {
    double level[2], open[2];
    for (int i = 0; i < 2; i++) {
      auto p = oneTrack(ANALOG);
      Track& t = p->tracks[0];
      t.engine1 = 0;
      t.engine4 = 0;
      t.sustain = 1;
      const int note = i ? 96 : 48;
      open[i] = rms(held(*p, note, 0.3).left);
      t.filter_type = u8(c.type);
      t.cutoff = float(hzOf(72));
      level[i] = rms(held(*p, note, 0.3).left);
    }
    const double low = toDb(level[0] / open[0]), high = toDb(level[1] / open[1]);
    EXPECT_TRUE(c.low > -5 ? low > c.low : low < c.low) << "type " << c.type << ": " << low << " dB";
    EXPECT_TRUE(c.high > -5 ? high > c.high : high < c.high) << "type " << c.type << ": " << high << " dB";
  }
}

TEST(Voices, PolyphonyStealsWithinTheTrack) {
  auto p = oneTrack(ANALOG);
  p->tracks[0].polyphony = 3;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  for (int n = 0; n < 10; n++) {
    engine.noteOn(0, 50 + n, 100);
    EXPECT_LE(activeVoices(engine), 3);
  }
  EXPECT_EQ(activeVoices(engine), 3);
}

TEST(Voices, StealingDoesNotClick) {
  auto p = oneTrack(ANALOG);
  p->tracks[0].polyphony = 1;
  p->tracks[0].engine1 = 0;
  p->tracks[0].attack = 0.02f;
  p->tracks[0].sustain = 1;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 45, 127);
  renderFrames(engine, 4800);
  float worst = 0, last = 0;
  bool first = true;
  for (int n = 0; n < 20; n++) {
    engine.noteOn(0, 45 + n % 5, 127);
    for (float x : renderFrames(engine, 1111).left) {
      if (!first) worst = std::max(worst, std::fabs(x - last));
      first = false;
      last = x;
    }
  }
  EXPECT_LT(worst, 0.01f) << "a sine at 0.2 moves by 0.004 a sample";
}

TEST(Voices, UnisonTakesCopiesAndTheyLetGoTogether) {
  auto p = oneTrack(ANALOG);
  p->tracks[0].unison = 4;
  p->tracks[0].release = 0.01f;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 60, 100);
  EXPECT_EQ(activeVoices(engine), 4);
  engine.noteOff(0, 60);
  renderFrames(engine, 4800);
  EXPECT_EQ(activeVoices(engine), 0);
}

TEST(Voices, TheAmpEnvelopeTakesItsTimes) {
  auto p = oneTrack(ANALOG);
  Track& t = p->tracks[0];
  t.engine1 = 0;
  t.attack = 0.1f;
  t.decay = 0.1f;
  t.sustain = 0.25f;
  const Audio a = held(*p, 81, 1, 0);
  const double half = rms(a.left, 2280, 2520), top = rms(a.left, 4740, 4860), end = rms(a.left, 43000, 48000);
  EXPECT_NEAR(half / top, 0.5, 0.03);
  EXPECT_NEAR(end / top, 0.25, 0.02);
  EXPECT_NEAR(rms(a.left, 9500, 9700) / top, 0.25 + 0.75 * std::exp(-1), 0.03);
}

TEST(Voices, KeyTrackingDoublesTheCutoffAnOctaveUp) {
  double level[2];
  for (int i = 0; i < 2; i++) {
    auto p = oneTrack(ANALOG);
    Track& t = p->tracks[0];
    t.engine1 = 0;
    t.engine4 = 0;
    t.filter_type = 1;
    t.cutoff = 400;
    t.key_track = 1;
    t.sustain = 1;
    level[i] = rms(held(*p, i ? 84 : 72, 0.3).left);
  }
  EXPECT_NEAR(level[0] / level[1], 1, 0.02);
}

TEST(Voices, AnLfoOnPitchSwingsAsFarAsItsDepth) {
  auto p = oneTrack(ANALOG);
  Track& t = p->tracks[0];
  t.lfo_depth = 0.5f;
  t.lfo_target = 1;
  t.lfo_rate = 2;
  Engine engine(48000);
  ASSERT_TRUE(engine.submitProject(*p));
  engine.noteOn(0, 69, 100);
  float lowest = 1e9f, highest = 0;
  Telemetry telemetry;
  for (int i = 0; i < 500; i++) {
    renderFrames(engine, 96);
    engine.readTelemetry(telemetry);
    lowest = std::min(lowest, telemetry.voices[0].frequency);
    highest = std::max(highest, telemetry.voices[0].frequency);
  }
  EXPECT_NEAR(12 * std::log2(highest / 440), 3, 0.05);
  EXPECT_NEAR(12 * std::log2(lowest / 440), -3, 0.05);
}

}  // namespace
}  // namespace synth::test
