// The Master: equalizer, saturation, compressor, limiter, and the Moves that are thrown over the mix.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "engine/Dynamics.h"
#include "engine/MasterEq.h"
#include "engine/Moves.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr int segment = dsp::segment;
constexpr float none = std::numeric_limits<float>::quiet_NaN();

// The gain in dB that an equalizer gives a sine.
double eqGain(const MasterEqDesign& design, double hz, double rate) {
  MasterEq eq;
  eq.install(design, true);
  std::vector<float> out;
  for (int at = 0; at < int(rate); at += segment) {
    dsp::Block l, r;
    for (int i = 0; i < segment; i++) l[i] = r[i] = 0.01f * float(std::sin(2 * M_PI * hz * (at + i) / rate));
    eq.process(l, r, segment, true);
    out.insert(out.end(), l.v, l.v + segment);
  }
  return toDb(sineLevel(out, hz, rate, size_t(rate / 2), out.size()) / 0.01);
}

TEST(MasterEq, MeetsItsGainsAtTheCentres) {
  const float curves[][10] = {{0, 0, 0, 0, 0, 24, 0, 0, 0, 0},
                              {6, -6, 6, -6, 6, -6, 6, -6, 6, -6},
                              {12, 9, 6, 3, 0, -3, -6, -9, -12, -12},
                              {0, 0, 0, 0, 0, 0, 0, 0, 12, 12}};
  for (double rate : {44100.0, 48000.0, 96000.0})
    for (const auto& gains : curves) {
      const MasterEqDesign design = designMasterEq(gains, rate);
      for (int band = 0; band < 10; band++)
        EXPECT_NEAR(eqGain(design, masterBandHz(band, rate), rate), gains[band], 0.1)
            << rate << " band " << band;
    }
}

TEST(MasterEq, LowRatesAndWildGainsStaySane) {
  const float gains[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 12};
  for (double rate : {22050.0, 32000.0}) {
    const MasterEqDesign design = designMasterEq(gains, rate);
    for (double hz : {100.0, 1000.0, 4000.0})
      EXPECT_NEAR(eqGain(design, hz, rate), 0, 6) << rate << " " << hz;
  }
  const float wild[10] = {none, 99, -99, INFINITY, 0, 24, -24, 24, -24, 24};
  for (const auto& band : designMasterEq(wild, 48000).band)
    for (double c : band) EXPECT_TRUE(std::isfinite(c));
}

TEST(MasterEq, AFlatOneIsNotThereAndAChangeFades) {
  const float flat[10] = {}, bent[10] = {0, 0, 0, 6, 0, 0, -6, 0, 0, 0};
  MasterEq eq;
  eq.install(designMasterEq(flat, 48000), true);
  EXPECT_FALSE(eq.active());
  eq.install(designMasterEq(bent, 48000), false);
  float last = 0, worst = 0;
  auto run = [&](int frames) {
    for (int at = 0; at < frames; at += segment) {
      dsp::Block l, r;
      for (int i = 0; i < segment; i++)
        l[i] = r[i] = 0.5f * float(std::sin(2 * M_PI * 250 * (at + i) / 48000.0));
      eq.process(l, r, segment, true);
      for (int i = 0; i < segment; i++) {
        worst = std::max(worst, std::fabs(l[i] - last));
        last = l[i];
      }
    }
  };
  run(48000);
  eq.install(designMasterEq(flat, 48000), false);
  run(48000);
  EXPECT_LT(worst, 0.04f);  // a sine of 250 Hz at +6 dB steps by 0.033
  EXPECT_FALSE(eq.active());
}

TEST(MasterDynamics, CompressesByItsRatioAndMakesUp) {
  auto gain = [](float amount, float level) {
    MasterDynamics d;
    d.prepare(48000);
    d.set(0, amount, 0.1f);
    dsp::Block l, r;
    for (int at = 0; at < 48000; at += segment) {
      l.fill(level);
      r.fill(-level);
      d.process(l, r, segment, dsp::sineTable());
    }
    return toDb(l[0] / level);
  };
  for (float amount : {0.3f, 1.0f}) {
    const double threshold = -4 - 22 * amount, slope = 1 - 1 / (3 * amount + 1.5);
    const double makeup = slope * threshold * -0.45;
    EXPECT_NEAR(gain(amount, 0.001f), makeup, 0.01);
    EXPECT_NEAR(gain(amount, 1), makeup + slope * threshold, 0.05);
  }
  EXPECT_EQ(gain(0, 1), 0);
}

TEST(MasterDynamics, SaturationBoundsAndFlattensTheLowerHalfHarder) {
  MasterDynamics d;
  d.prepare(48000);
  d.set(1, 0, 0.1f);
  dsp::Block up, down;
  up.fill(0.6f);
  down.fill(-0.6f);
  d.process(up, down, segment, dsp::sineTable());
  EXPECT_LT(up[0], 1);
  EXPECT_NE(std::fabs(up[0]), std::fabs(down[0]));
}

// ---- Moves.

struct Throw {
  Moves moves;
  float values[12];
  bool bound[12] = {}, allBound = false;
  u64 clock = 0;
  double bpm = 120;
  float last = 0, worst = 0;

  Throw() {
    moves.prepare(48000);
    std::fill(values, values + 12, none);
  }
  // A sine of `hz` at 0.5 through the Moves.
  std::vector<float> run(double seconds, double hz = 200) {
    std::vector<float> out;
    const u64 end = clock + u64(seconds * 48000) / segment * segment;
    for (; clock < end; clock += segment) {
      for (int m = 0; m < 12; m++) bound[m] = allBound || values[m] == values[m];
      moves.tick({values, bound}, bpm, 48000 * 15 / bpm, clock == 0);
      fx::Stereo dry, wet, sends[2], x;
      double time[segment + 1];
      for (int i = 0; i < segment; i++) {
        dry.l[i] = dry.r[i] = 0.5f * float(std::sin(2 * M_PI * hz * double(clock + u64(i)) / 48000));
        wet.l[i] = wet.r[i] = 0;
        for (auto& s : sends) s.l[i] = s.r[i] = 0;
        time[i] = double(clock + u64(i)) / (48000 * 15 / bpm);
      }
      moves.addNoise(sends, segment);
      moves.mix(dry, wet, x, segment);
      moves.play(x, time, segment);
      moves.advance(segment);
      for (int i = 0; i < segment; i++) {
        if (clock) worst = std::max(worst, std::fabs(x.l[i] - last));
        last = x.l[i];
      }
      out.insert(out.end(), x.l.v, x.l.v + segment);
    }
    return out;
  }
};

TEST(Moves, WithoutValuesTheMixPassesUntouched) {
  Throw t;
  const auto out = t.run(0.2);
  for (size_t i = 0; i < out.size(); i++)
    ASSERT_EQ(out[i], 0.5f * float(std::sin(2 * M_PI * 200 * double(i) / 48000))) << i;
}

TEST(Moves, EnterAndLeaveWithoutAClick) {
  const float on[12] = {0.3f, 0.6f, 0.6f, 0.7f, 0.5f, 0.3f, 0.2f, 1, 1, 1, 0.0f, 0.2f};
  for (int move = 0; move < 12; move++) {
    if (move == Moves::Noise || move == Moves::Crush) continue;  // they are made of edges
    Throw t;
    t.run(1);
    for (int turn = 0; turn < 2; turn++) {
      t.values[move] = on[move];
      t.run(0.51);
      t.values[move] = none;
      t.run(0.23);
    }
    // The sine itself steps by 0.013; a gate's edge and a fast tape by some more.
    EXPECT_LT(t.worst, 0.05f) << move;
    EXPECT_NEAR(rms(t.run(0.5)), 0.5 / std::sqrt(2.0), 0.001) << move << " has gone";
  }
}

TEST(Moves, DoWhatTheirNamesSay) {
  auto level = [](int move, float value, double hz) {
    Throw t;
    t.values[move] = value;
    t.run(0.5, hz);
    return toDb(rms(t.run(0.5, hz)) / (0.5 / std::sqrt(2.0)));
  };
  EXPECT_LT(level(Moves::Lowpass, 0.3f, 5000), -30);
  EXPECT_GT(level(Moves::Lowpass, 0.9f, 500), -1);
  EXPECT_LT(level(Moves::Highpass, 0.8f, 200), -30);
  EXPECT_NEAR(level(Moves::Gain, 0.5f, 200), 0, 1e-6);
  EXPECT_LT(level(Moves::Gain, 0, 200), -120);
  EXPECT_NEAR(level(Moves::Gate, 0.5f, 200), -3, 0.5);
  EXPECT_LT(level(Moves::TapeStop, 1, 200), -60);
  EXPECT_NEAR(level(Moves::Washout, 1, 200), -3.01, 0.05);
  Throw noise;
  noise.values[Moves::Noise] = 1;
  noise.run(0.3, 0);
  EXPECT_GT(rms(noise.run(0.3, 0)), 0.05);
}

TEST(Moves, ARepeatRepeats) {
  Throw t;
  t.allBound = true;
  t.run(1, 333.3);
  t.values[Moves::Repeat] = 1;  // half a Step: 3000 samples at 120 BPM
  const auto out = t.run(1, 500.1);
  for (size_t i = 6000; i + 3000 < out.size(); i += 97) EXPECT_NEAR(out[i], out[i + 3000], 1e-6) << i;
}

TEST(Moves, ASpinGoesBackwardsAndStartsOver) {
  Throw t;
  t.allBound = true;
  t.run(4.2);
  t.values[Moves::SpinBack] = 0.2f;  // one sample back each sample
  const auto out = t.run(1, 200);
  EXPECT_NEAR(rms(out, 4800), 0.5 / std::sqrt(2.0), 0.02);
  t.values[Moves::SpinBack] = 1;
  const auto fast = t.run(6, 200);
  EXPECT_GT(rms(fast, 200000), 0.2) << "after the ring is used up it starts over";
}

// A sine that plays for a second into both Sends.
ProjectPtr steadySong() {
  auto p = oneTrack(ANALOG);
  Track& t = p->tracks[0];
  t.engine1 = 0;
  t.engine4 = 0;
  t.sustain = 1;
  t.send_1 = t.send_2 = 0.7f;
  addLoop(*p, 0, 16, 0, 0);
  Note n;
  n.pitch = 45;
  n.velocity = 100;
  n.length = 4096;
  setNote(*p, 0, 0, 0, 0, n);
  p->fx1.type = p->fx2.type = FX_OFF;
  p->fx_chain = 0;
  return p;
}

// The sharpest bend of a signal: a click bends it far more than any tone of that pitch does.
float sharpest(const Audio& a) {
  float worst = 0;
  for (size_t i = 2400; i < a.size(); i++)
    worst = std::max(worst, std::fabs(a.left[i] - 2 * a.left[i - 1] + a.left[i - 2]));
  return worst;
}

TEST(Master, LanesOnEveryBusTargetMakeNoClick) {
  const char* const prefixes[] = {"delay_", "tape_", "hall_", "plate_", "shimmer_", "chorus_"};
  std::string unheard;
  for (int target = automation::firstBusTarget; target <= automation::lastBusTarget; target++) {
    const std::string key = automation::targetInfo(target)->key;
    auto song = steadySong();
    int bus = MasterBus;
    if (key.starts_with("fx1_")) bus = SendI;
    if (key.starts_with("fx2_")) bus = SendII;
    for (int type = 0; type < FX_OFF; type++)
      if (key.substr(std::min<size_t>(4, key.size())).starts_with(prefixes[type]))
        sendFx(*song, bus).type = u8(type);
    if (key == "fx_chain" || key.ends_with("_return")) song->fx1.type = song->fx2.type = FX_CHORUS;
    if (key == "fx_chain") bus = SendI;
    song->fx1.delay_sync = song->fx2.delay_sync = 0;
    const LanePoint points[] = {{0, 0, 0, 0}, {64, 65535, 0, 0}, {128, 0, 0, 0}};
    const int row = laneRow(busOwner(bus), 0);
    std::copy(points, points + 3, song->lanePoints);
    song->lanePointCount = 3;
    song->lanes[row].count = 3;
    song->lanes[row].enabled = 1;
    song->lanes[row].target = u8(target + 1);
    for (int r = row + 1; r < limits::lanes; r++) song->lanes[r].first = 3;
    const Audio a = renderProject(*song, 1.2);
    ASSERT_GT(a.size(), 0u) << key;
    song->lanes[row].enabled = 0;
    if (sameBytes(a, renderProject(*song, 1.2))) unheard += key + " ";
    // A delay whose time is swept plays what it holds at up to one and a half times its speed.
    EXPECT_LT(sharpest(a), key.ends_with("gate") ? 0.02f : 0.006f) << key;
  }
  EXPECT_EQ(unheard, "comp_release limiter_ceiling ") << "the tone lies below threshold and ceiling";
}

TEST(Master, NoSettingPassesTheCeiling) {
  auto p = oneTrack(ANALOG);
  Track& track = p->tracks[0];
  track.engine1 = 1;
  track.sustain = 1;
  track.trim = 24;
  track.unison = 4;
  p->saturation = 1;
  p->comp_amount = 1;
  for (int band : {0, 5, 9}) p->master_eq[band] = 12;
  p->master = 1;
  for (float ceiling : {0.5f, 0.95f, 1.0f}) {
    p->limiter_ceiling = ceiling;
    Engine engine(48000);
    ASSERT_TRUE(engine.submitProject(*p));
    for (int note : {36, 48, 60, 64, 67}) engine.noteOn(0, note, 127);
    const Audio a = renderFrames(engine, 48000);
    EXPECT_LE(peak(a.left), ceiling);
    EXPECT_GT(peak(a.left), 0.5f * ceiling);
  }
}

}  // namespace
}  // namespace synth::test
