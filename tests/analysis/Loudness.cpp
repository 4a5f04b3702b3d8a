// Against the published test signals of EBU Tech 3341 and 3342 that can be made of tones, as their tables
// say.
#include "analysis/Loudness.h"

#include <gtest/gtest.h>

#include "analysis/Features.h"
#include "support/Signals.h"

using namespace synth;
using namespace synth::analysis;
using namespace synth::test;

namespace {

struct Part {
  double db, seconds;
};

// A 1 kHz tone on both sides whose level changes.
Audio tones(std::initializer_list<Part> parts) {
  Signal x;
  for (const Part& part : parts) append(x, sine(1000, amplitudeOf(part.db), part.seconds));
  return stereo(x);
}

}  // namespace

TEST(Loudness, IntegratedAsTech3341) {
  EXPECT_NEAR(loudnessOf(tones({{-23, 20}})).lufs, -23, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-33, 20}})).lufs, -33, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-36, 10}, {-23, 60}, {-36, 10}})).lufs, -23, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-72, 10}, {-36, 10}, {-23, 60}, {-36, 10}, {-72, 10}})).lufs, -23, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-26, 20}, {-20, 20.1}, {-26, 20}})).lufs, -23, 0.1);
}

TEST(Loudness, RangeAsTech3342) {
  EXPECT_NEAR(loudnessOf(tones({{-20, 20}, {-30, 20}})).lraLu, 10, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-20, 20}, {-15, 20}})).lraLu, 5, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-40, 20}, {-20, 20}})).lraLu, 20, 0.1);
  EXPECT_NEAR(loudnessOf(tones({{-50, 20}, {-35, 20}, {-20, 20}, {-35, 20}, {-50, 20}})).lraLu, 15, 0.1);
}

TEST(Loudness, BlocksNeedTheirLength) {
  EXPECT_EQ(loudnessOf(tones({{-20, 0.399}})).lufs, -70);
  EXPECT_NEAR(loudnessOf(tones({{-20, 0.4}})).lufs, -20, 0.2);
  EXPECT_EQ(loudnessOf(tones({{-20, 2}, {-40, 0.9}})).lraLu, 0);
  EXPECT_EQ(loudnessOf(stereo(silence(5))).lufs, -70);
}

TEST(Loudness, WhatFoldingToMonoTakes) {
  const Signal tone = sine(500, 0.25, 2);
  Signal turned = tone, other = sine(701, 0.25, 2);
  for (float& x : turned) x = -x;
  EXPECT_NEAR(loudnessOf(stereo(tone)).monoLossDb, 0, 1e-9);
  EXPECT_LT(loudnessOf({tone, turned}).monoLossDb, -50);
  EXPECT_NEAR(loudnessOf({tone, other}).monoLossDb, -3, 0.1);
  EXPECT_EQ(loudnessOf(stereo(silence(1))).monoLossDb, 0);
}
