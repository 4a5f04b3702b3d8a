// Drum models and Pads: each makes the sound its name says, and each control does what it says.
#include <gtest/gtest.h>

#include <cmath>

#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "engine/drums/Hit.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

using namespace drums;

std::vector<float> hit(const Setting& setting, double seconds = 1, u64 serial = 1) {
  Hit h;
  h.start(setting, serial, 48000);
  std::vector<float> x(size_t(seconds * 48000));
  h.render(x.data(), int(x.size()));
  return x;
}

Setting model(int m) {
  Setting s;
  s.model = m;
  return s;
}

// Seconds until the hit stays below a thousandth of its peak.
double length(const std::vector<float>& x) {
  const float floor = peak(x) / 1000;
  size_t last = 0;
  for (size_t i = 0; i < x.size(); i++)
    if (std::fabs(x[i]) > floor) last = i;
  return double(last) / 48000;
}

// The share of energy above a frequency, by a one-pole split.
double brightness(const std::vector<float>& x, double hz = 2000) {
  const double c = 1 - std::exp(-2 * M_PI * hz / 48000);
  double low = 0, high = 0, all = 0;
  for (float v : x) {
    low += c * (v - low);
    high += (v - low) * (v - low);
    all += double(v) * v;
  }
  return high / all;
}

TEST(Drums, EveryModelIsLoudBoundedAndWithoutDc) {
  for (int m = 0; m < models; m++) {
    const auto x = hit(model(m), 4);
    EXPECT_GT(peak(x), 0.3f) << m;
    EXPECT_LT(peak(x), 1.5f) << m;
    double sum = 0;
    for (float v : x) sum += v;
    EXPECT_LT(std::fabs(sum / double(x.size())), 0.01) << m;
    Setting full = model(m);
    full.decay = full.tone = full.sweep = full.snap = full.drive = full.drop = full.sweepTime = 1;
    full.tailDrift = 12;
    EXPECT_LT(peak(hit(full, 1)), 2.2f) << m;
  }
}

TEST(Drums, HatsAndCymbalsAreBrightKicksAndTomsAreNot) {
  for (int m : {CLOSED_HAT, OPEN_HAT, CYMBAL, SHAKER}) EXPECT_GT(brightness(hit(model(m))), 0.6) << m;
  for (int m : {KICK, TOM, CONGA}) EXPECT_LT(brightness(hit(model(m))), 0.2) << m;
  EXPECT_LT(length(hit(model(CLOSED_HAT), 4)), 0.3 * length(hit(model(OPEN_HAT), 4)));
}

TEST(Drums, NoHitEndsWhileItIsHeard) {
  for (int model = 0; model < models; model++)
    for (float decay : {0.0f, 0.1f, 0.5f}) {
      Setting s;
      s.model = model;
      s.decay = decay;
      s.snap = 1;
      std::vector<float> x = hit(s, 6);
      while (!x.empty() && x.back() == 0) x.pop_back();
      ASSERT_GT(x.size(), 100u) << model;
      float last = 0;
      for (size_t i = x.size() - 8; i < x.size(); i++) last = std::max(last, std::fabs(x[i]));
      EXPECT_LT(last, 2e-3f * peak(x)) << model << " decay " << decay;
    }
}

TEST(Drums, AGateEndsAHitThatIsStillHeld) {
  for (int model : {int(KICK), int(RIM), int(CLOSED_HAT)}) {
    Setting s;
    s.model = model;
    s.decay = 0.1f;
    s.hold = 0.3f;
    Hit h;
    h.start(s, 1, 48000);
    std::vector<float> x(24000);
    for (size_t at = 0; at < x.size(); at += 16) {
      if (at == 480) h.release(0.02);
      h.render(x.data() + at, 16);
    }
    EXPECT_LT(rms(x, 4800), 1e-3 * rms(x, 0, 480) + 1e-9) << model;
  }
}

TEST(Drums, PitchDecayToneAndSnapDoWhatTheySay) {
  for (int m : {KICK, SNARE, TOM, RIM, COWBELL, CONGA, OPEN_HAT}) {
    Setting lo = model(m), hi = lo;
    lo.decay = 0.3f;
    hi.decay = 0.7f;
    EXPECT_GT(length(hit(hi, 4)), 2 * length(hit(lo, 4))) << "decay of " << m;
  }
  for (int m : {KICK, SNARE, TOM, RIM, COWBELL, NOISE, CLAP}) {
    Setting lo = model(m), hi = lo;
    lo.tone = 0;
    hi.tone = 1;
    EXPECT_GT(brightness(hit(hi), 1200), brightness(hit(lo), 1200)) << "tone of " << m;
  }
  for (int m : {KICK, SNARE, TOM, RIM, ZAP, CONGA}) {
    Setting lo = model(m), hi = lo;
    lo.snap = 0;
    hi.snap = 1;
    EXPECT_GT(rms(hit(hi), 0, 96), 1.1 * rms(hit(lo), 0, 96)) << "snap of " << m;
  }
}

TEST(Drums, APitchedTailIsTunedInSemitones) {
  auto crossings = [](const std::vector<float>& x, size_t from, size_t to) {
    int n = 0;
    for (size_t i = from + 1; i < to; i++) n += x[i - 1] < 0 && x[i] >= 0;
    return double(n) / (double(to - from) / 48000);
  };
  Setting s = model(TOM);
  s.sweep = s.tone = s.snap = 0;
  s.decay = 0.8f;
  const double base = crossings(hit(s), 4800, 28800);
  EXPECT_NEAR(base, 105, 3);
  s.pitch = 12;
  EXPECT_NEAR(crossings(hit(s), 4800, 28800) / base, 2, 0.05);
  s.pitch = 0;
  s.tailDrift = -12;
  s.tailTime = 0.05f;
  EXPECT_NEAR(crossings(hit(s), 19200, 43200) / base, 0.5, 0.05);
  s.tailDrift = 0;
  s.baseHz = 220;
  EXPECT_NEAR(crossings(hit(s), 4800, 28800), 220, 4);
}

TEST(Drums, HitsDifferByTheirSerialAndRepeat) {
  EXPECT_EQ(hit(model(SNARE), 0.1, 5), hit(model(SNARE), 0.1, 5));
  EXPECT_NE(hit(model(SNARE), 0.1, 5), hit(model(SNARE), 0.1, 6));
  EXPECT_EQ(hit(model(13), 0.1), hit(model(KICK), 0.1)) << "a number past the models is the kick";
}

class Kit : public ::testing::Test {
 protected:
  ProjectPtr p = oneKit();
  Track& track = p->tracks[0];

  Audio play(std::initializer_list<std::pair<int, int>> hits, u16 length = 192, double seconds = 1) {
    auto song = copyOf(*p);
    addLoop(*song, 0, 16, 0, 0);
    for (auto [step, pad] : hits) {
      Note n;
      n.pitch = u8(pad);
      n.velocity = 110;
      n.length = length;
      EXPECT_TRUE(setNote(*song, 0, 0, step, pad, n));
    }
    return renderProject(*song, seconds);
  }
};

TEST_F(Kit, AChokedPadFadesInSixMilliseconds) {
  track.pad_model[2] = CYMBAL;
  track.pad_model[3] = RIM;
  track.pad_level[3] = 0;
  const Audio choked = play({{0, 2}, {2, 3}});
  EXPECT_LT(rms(choked.left, 12000 + 400, 16000), 1e-3);
  track.pad_choke[3] = 2;
  const Audio other = play({{0, 2}, {2, 3}});
  EXPECT_GT(rms(other.left, 12000 + 400, 16000), 5e-3) << "another group";
  track.pad_choke[3] = 0;
  EXPECT_GT(rms(play({{0, 2}, {2, 3}}).left, 12000 + 400, 16000), 5e-3) << "no group";
}

TEST_F(Kit, AHitPlaysOutUnlessItsPadHasAGate) {
  track.pad_model[0] = CYMBAL;
  EXPECT_TRUE(sameBytes(play({{0, 0}}, 16), play({{0, 0}}, 2000)));
  track.pad_gate[0] = 0.1f;
  const Audio gated = play({{0, 0}});
  EXPECT_GT(rms(gated.left, 3000, 4800), 1e-3);
  EXPECT_LT(rms(gated.left, 8000, 12000), 1e-4);
}

TEST_F(Kit, LocksRetuneAndShortenOneHit) {
  track.pad_model[0] = TOM;
  track.pad_sweep[0] = 0;
  auto song = copyOf(*p);
  addLoop(*song, 0, 16, 0, 0);
  Note n;
  n.velocity = 110;
  n.pitch = 0;
  n.locks[0] = {u8(automation::PITCH + 1), 0, 49152};
  n.locks[1] = {u8(automation::DECAY + 1), 0, 6554};
  setNote(*song, 0, 0, 0, 0, n);
  const Audio locked = renderProject(*song, 1), plain = play({{0, 0}});
  EXPECT_LT(rms(locked.left, 14400, 24000), 0.05 * rms(plain.left, 14400, 24000));
  EXPECT_GT(sineLevel(locked.left, 210, 48000, 0, 4800), 3 * sineLevel(plain.left, 210, 48000, 0, 4800));
}

TEST_F(Kit, PadsArePannedAndFiltered) {
  track.pad_pan[0] = -1;
  const Audio left = play({{0, 0}});
  EXPECT_GT(rms(left.left), 5 * rms(left.right));
  track.pad_pan[0] = 0;
  const double open = rms(play({{0, 0}}).left);
  track.pad_highpass[0] = 1000;
  EXPECT_LT(rms(play({{0, 0}}).left), 0.3 * open);
}

}  // namespace
}  // namespace synth::test
