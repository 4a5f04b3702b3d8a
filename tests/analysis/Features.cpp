#include "analysis/Features.h"

#include <gtest/gtest.h>

#include "analysis/Envelope.h"
#include "support/Signals.h"

using namespace synth;
using namespace synth::analysis;
using namespace synth::test;

namespace {

Features listen(const Audio& audio, const Score& score = {}) { return analyze(audio, 0, score); }

Signal clicks(double spacing, int count, double decay) {
  Signal x = silence(spacing * count);
  const Signal hit = shaped(noise(0.5, decay), decay);
  for (int i = 0; i < count; i++) addAt(x, i * spacing, hit);
  return x;
}

}  // namespace

TEST(Features, TooShort) {
  try {
    listen(stereo(Signal(2047)));
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Audio shorter than 43 ms");
  }
  const Features f = listen(stereo(Signal(2048, 0.1f)));
  EXPECT_EQ(f.lufs, -70);
  EXPECT_EQ(f.lraLu, 0);
  EXPECT_EQ(f.frames(), 5);
}

TEST(Features, Silence) {
  const Features f = listen(stereo(silence(3)));
  EXPECT_EQ(f.peakDbfs, -200);
  EXPECT_EQ(f.tempoBpm, 0);
  EXPECT_TRUE(f.onsets.empty());
  for (double band : f.bandsDb) EXPECT_EQ(band, -200);
  EXPECT_EQ(f.key, "C major");
  EXPECT_EQ(f.keyStrength, 0);
  EXPECT_EQ(f.sideMidDb, -120);
  EXPECT_EQ(f.heldS, 0);
}

TEST(Features, ASineIsWhatItIs) {
  const Features f = listen(stereo(sine(1000, 0.5, 4)));
  EXPECT_NEAR(f.peakDbfs, -6.02, 0.01);
  EXPECT_NEAR(f.rmsDbfs, -9.03, 0.01);
  EXPECT_NEAR(f.bandsDb[3], 0, 0.01);
  EXPECT_LT(f.bandsDb[0], -50);
  EXPECT_NEAR(f.centroidHz, 1000, 60);
  EXPECT_NEAR(f.rolloffHz, 1000, 50);
  EXPECT_EQ(f.correlation, 1);
  EXPECT_EQ(f.sideMidDb, -60);
  EXPECT_GT(f.harmonicToNoiseDb, 25);
  EXPECT_LT(f.flatness, 1e-4);
  // Ten frames of each edge belong to no held sound; the rest does not move.
  EXPECT_NEAR(f.heldS, 3.6, 0.4);
  EXPECT_LT(f.levelVariationDb, 0.05);
  EXPECT_LT(f.centroidVariationOct, 0.005);
}

TEST(Features, NoiseIsFlatAndWide) {
  const Features f = listen({noise(0.3, 4, 1), noise(0.3, 4, 2)});
  EXPECT_GT(f.flatness, 0.4);
  EXPECT_NEAR(f.correlation, 0, 0.02);
  EXPECT_NEAR(f.sideMidDb, 0, 0.2);
  EXPECT_NEAR(f.centroidHz, 12000, 300);
  // White noise rises by 1 dB a third octave.
  EXPECT_NEAR(f.thirdOctaveDb[25] - f.thirdOctaveDb[22], 3, 0.3);
  const double sixth = std::exp2(1 / 6.0);
  EXPECT_NEAR(f.thirdOctaveDb[19], 10 * std::log10(2000 * (sixth - 1 / sixth) / 24000), 0.3);
  EXPECT_LT(f.harmonicToNoiseDb, 18);
}

TEST(Features, MotionFollowsTheSound) {
  // Its level swings by 6 dB three times a second, against one that stands.
  Signal moving = noise(0.3, 6, 3);
  for (size_t i = 0; i < moving.size(); i++)
    moving[i] *= float(amplitudeOf(3 * std::sin(2 * std::numbers::pi * 3 * double(i) / 48000) - 3));
  const Score held{{0}, {}};
  const Features still = listen(stereo(noise(0.3, 6, 3)), held), f = listen(stereo(moving), held);
  EXPECT_NEAR(f.levelVariationDb, 3 / std::sqrt(2), 0.4);
  EXPECT_LT(still.levelVariationDb, 0.6);
  // A tone that beats at 40 Hz is rough, a steady one smooth.
  Signal rough = sine(1000, 0.25, 3);
  addAt(rough, 0, sine(1040, 0.25, 3));
  EXPECT_GT(listen(stereo(rough)).roughness, 0.25);
  EXPECT_LT(listen(stereo(sine(1000, 0.25, 3))).roughness, 0.01);
}

TEST(Features, ClicksAreOnsetsInTempo) {
  const Features f = listen(stereo(clicks(0.5, 20, 0.08)));
  ASSERT_NEAR(double(f.onsets.size()), 19.5, 0.6);
  for (size_t i = 0; i < f.onsets.size(); i++)
    EXPECT_NEAR(std::fmod(f.onsets[i] + 0.1, 0.5), 0.1, 0.021) << f.onsets[i];
  EXPECT_NEAR(f.tempoBpm, 120, 0.5);
  EXPECT_GT(f.tempoConfidence, 0.5);
  ASSERT_EQ(f.onsetFrames.size(), f.onsets.size());
}

TEST(Features, EnvelopesOfKnownShape) {
  // Tones that rise in 20 ms and fall by 60 dB in 600 ms: by 20 dB in 200 ms.
  Signal x = silence(8);
  Score score;
  for (int i = 0; i < 8; i++) {
    addAt(x, i + 0.1, shaped(sine(440, 0.5, 0.85), 0.6, 0.02));
    score.noteOn.push_back(i + 0.1);
  }
  for (const Features& f : {listen(stereo(x), score), listen(stereo(x))}) {
    EXPECT_EQ(f.measuredHits, 8);
    EXPECT_NEAR(f.attackMs, 16, 4);
    EXPECT_NEAR(f.decayMs, 200, 15);
    EXPECT_NEAR(f.decay40Ms, 400, 15);
    EXPECT_NEAR(f.decay60Ms, 600, 15);
    EXPECT_EQ(f.measuredDecays, 8);
    EXPECT_LT(f.onsetShareDb, -5);
    // By 60 dB in 0.6 s: what is left after 150 ms is 15 dB down, and the rise takes a third of the rest.
    EXPECT_NEAR(f.lateEnergyDb, -13, 1);
  }
}

TEST(Features, TailsAfterKnownEnds) {
  Signal x = sine(440, 0.4, 1);
  append(x, shaped(sine(440, 0.4, 2), 1.2));
  Score score{{0}, {1.0}};
  Features f = listen(stereo(x), score);
  EXPECT_EQ(f.measuredTails, 1);
  EXPECT_NEAR(f.tail40Ms, 800, 15);
  EXPECT_NEAR(f.tail60Ms, 1200, 20);
  // Too early, too late, or before the audio: nothing is measured.
  for (double off : {0.01, 7.0, -1.0}) {
    score.noteOff = {off};
    EXPECT_EQ(listen(stereo(x), score).measuredTails, 0);
  }
  EXPECT_EQ(listen(stereo(x), {{9, 12}, {}}).measuredHits, 0);
  EXPECT_EQ(momentsOf({0.29})[0].ms, 290);
}

TEST(Features, ChordsGiveTheirKey) {
  // I, IV, V, I of D major and i, iv, v, i of A minor.
  auto chords = [](std::initializer_list<std::array<int, 3>> list) {
    Signal x;
    for (const auto& chord : list) {
      Signal part = silence(1);
      for (int note : chord)
        for (int harmonic : {1, 2, 3})
          addAt(part, 0, sine(440 * std::exp2((note - 69) / 12.0) * harmonic, 0.1 / harmonic, 1));
      append(x, part);
    }
    return stereo(x);
  };
  const Features major = listen(chords({{62, 66, 69}, {67, 71, 74}, {69, 73, 76}, {62, 66, 69}}));
  EXPECT_EQ(major.key, "D major");
  EXPECT_GT(major.keyStrength, 0.7);
  EXPECT_EQ(listen(chords({{57, 60, 64}, {62, 65, 69}, {64, 67, 71}, {57, 60, 64}})).key, "A minor");
  double all = 0;
  for (double share : major.chroma) all += share;
  EXPECT_NEAR(all, 1, 1e-9);
}

TEST(Features, WhatIsNoNumberHarmsNothing) {
  for (float bad : {HUGE_VALF, -HUGE_VALF, NAN, 3e38f}) {
    Signal x = clicks(0.4, 8, 0.1);
    for (size_t i = 20000; i < 20100; i++) x[i] = bad;
    const std::string text = json::compact(featuresJson(listen({x, noise(0.1, 3.2)}), 120, true));
    std::string error;
    json::parse(text, error);
    EXPECT_EQ(error, "");
  }
}

TEST(Features, WetShare) {
  const Audio dry = stereo(sine(300, 0.4, 1));
  Audio wet = dry;
  const Signal more = noise(0.04, 1);
  for (size_t i = 0; i < wet.size(); i++) wet.left[i] += more[i], wet.right[i] += more[i];
  EXPECT_NEAR(wetShareDb(wet, dry), 10 * std::log10(0.04 * 0.04 / 3 / (0.08 + 0.04 * 0.04 / 3)), 0.1);
  EXPECT_EQ(wetShareDb(dry, dry), -120);
  EXPECT_EQ(wetShareDb({}, dry), -120);
}

TEST(Features, TheTimelineHasItsWindows) {
  const Features f = listen(stereo(clicks(0.5, 40, 0.1)));
  auto timeline = [&](double bpm) { return *featuresJson(f, bpm, false).find("timeline"); };
  EXPECT_EQ(timeline(120).find("rows")->items().size(), 10u);
  EXPECT_EQ(timeline(120).find("window_s")->number(), 2);
  EXPECT_EQ(timeline(0).find("rows")->items().size(), 10u);
  // 40 windows would be too many: they double.
  EXPECT_EQ(timeline(400).find("window_s")->number(), 1.2);
  EXPECT_EQ(timeline(1e-300).find("rows")->items().size(), 1u);
  double onsets = 0;
  const json::Json rows = *timeline(97).find("rows");
  for (const json::Json& row : rows.items()) onsets += row.items()[6].number();
  EXPECT_EQ(onsets, double(f.onsets.size()));
}

TEST(Audio, ShiftAndMix) {
  const Audio a{{1, 2, 3, 4}, {5, 6, 7, 8}};
  EXPECT_EQ(shifted(a, 1.0 / 48000, 4).left, (Signal{0, 1, 2, 3}));
  EXPECT_EQ(shifted(a, -2.0 / 48000, 3).right, (Signal{7, 8, 0}));
  EXPECT_EQ(shifted(a, 1e300, 2).left, (Signal{0, 0}));
  EXPECT_EQ(shifted(a, 0, 0).size(), 0u);
  const Audio parts[] = {a, {{1}, {1}}};
  EXPECT_EQ(mixed(parts).left, (Signal{2, 2, 3, 4}));
  EXPECT_EQ(mixed({}).size(), 0u);
}
