#include "analysis/grid/Grid.h"

#include <gtest/gtest.h>

#include "support/DrumLoops.h"

using namespace synth;
using namespace synth::analysis;
using namespace synth::test;

namespace {

Features heard(const Signal& x) { return analyze(stereo(x), 0, {}); }

bool tempoNear(double bpm, double truth) { return std::fabs(bpm / truth - 1) < 0.04; }
bool octaveNear(double bpm, double truth) {
  for (double factor : {1.0, 2.0, 0.5, 3.0, 1.0 / 3})
    if (tempoNear(bpm * factor, truth)) return true;
  return false;
}
double barOff(const Grid& grid, double truth) {
  const double turns = (grid.downbeatS - truth) / grid.barS();
  return std::fabs(turns - std::round(turns)) * grid.barS();
}

std::string thrown(const Features& f) {
  try {
    fitGrid(f, 0, -1);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(Grid, TemposOfManyStyles) {
  int straight = 0, right = 0, loops = 0, octave = 0, told = 0;
  std::string missed;
  for (const LoopStyle& style : loopStyles)
    for (int i = 0; i < 5; i++) {
      const double bpm = style.slowest + (style.fastest - style.slowest) * i / 4;
      const Grid grid = fitGrid(heard(drumLoop(style, bpm, 4, 0.13)), 0, -1);
      const bool hit = tempoNear(grid.bpm, bpm);
      bool other = hit;
      for (const Grid::Alternative& a : grid.alternatives) other = other || tempoNear(a.bpm, bpm);
      loops++;
      octave += octaveNear(grid.bpm, bpm);
      told += other;
      if (style.feel != LoopStyle::Straight) continue;
      straight++;
      right += hit;
      if (!hit)
        missed +=
            std::string(style.name) + " " + std::to_string(bpm) + " as " + std::to_string(grid.bpm) + "\n";
    }
  EXPECT_GE(right, 0.9 * straight) << missed;
  EXPECT_GE(octave, 0.98 * loops) << missed;
  EXPECT_GE(told, 0.95 * loops) << missed;
}

TEST(Grid, BarOneOfBackbeats) {
  int loops = 0, right = 0;
  std::string missed;
  for (const LoopStyle& style : loopStyles) {
    if (!style.backbeat) continue;
    for (int i = 0; i < 4; i++)
      for (double before : {0.0, 0.4, 1.7}) {
        const double bpm = style.slowest + (style.fastest - style.slowest) * (i + 0.5) / 4;
        const Grid grid = fitGrid(heard(drumLoop(style, bpm, 5, before)), 0, -1);
        loops++;
        const bool hit = tempoNear(grid.bpm, bpm) && barOff(grid, before) < 0.03;
        right += hit;
        if (!hit)
          missed += std::string(style.name) + " " + std::to_string(bpm) + " after " + std::to_string(before) +
                    ": " + std::to_string(grid.bpm) + " at " + std::to_string(grid.downbeatS) + "\n";
      }
  }
  EXPECT_GE(right, 0.9 * loops) << missed;
}

TEST(Grid, PickUpsAndTriplets) {
  // Two snares before bar 1 change neither the tempo nor where its beats are.
  Signal x = silence(0.5);
  addAt(x, 0, snareHit(), 0.5);
  addAt(x, 0.25, snareHit(), 0.5);
  append(x, drumLoop(loopStyles[0], 120, 6));
  const Grid grid = fitGrid(heard(x), 0, -1);
  EXPECT_NEAR(grid.bpm, 120, 0.1);
  EXPECT_NEAR(std::remainder(grid.downbeatS, grid.barS() / 8), 0, 0.02);
  // Eighth triplets at 100 BPM: one of the tempi that fit is theirs.
  Signal triplets = silence(14.4);
  for (int i = 0; i < 72; i++) {
    addAt(triplets, i * 0.2, hatHit(), i % 3 ? 0.5 : 1);
    if (i % 6 == 0) addAt(triplets, i * 0.2, kickHit());
    if (i % 6 == 3) addAt(triplets, i * 0.2, snareHit());
  }
  const Grid three = fitGrid(heard(triplets), 0, -1);
  bool found = tempoNear(three.bpm, 100);
  for (const auto& other : three.alternatives) found = found || tempoNear(other.bpm, 100);
  EXPECT_TRUE(found) << three.bpm;
}

TEST(Grid, PreciseTempoAndBar) {
  for (double bpm : {84.37, 97.0, 120.0, 127.6, 133.33}) {
    const Grid grid = fitGrid(heard(drumLoop(loopStyles[0], bpm, 12, 0.25)), 0, -1);
    EXPECT_NEAR(grid.bpm, bpm, 0.05) << bpm;
    EXPECT_NEAR(grid.downbeatS, 0.25, 0.008) << bpm;
    EXPECT_EQ(grid.loopBars, 1);
  }
  // Told about, it moves within one percent.
  const Features f = heard(drumLoop(loopStyles[0], 127.6, 12));
  EXPECT_NEAR(fitGrid(f, 128, -1).bpm, 127.6, 0.05);
  EXPECT_EQ(fitGrid(f, 128, -1).tempoConfidence, 1);
  EXPECT_TRUE(fitGrid(f, 128, -1).alternatives.empty());
  const Grid told = fitGrid(f, 128, 5.5);
  EXPECT_NEAR(told.downbeatS, std::fmod(5.5, told.barS()), 0.0011);
  EXPECT_EQ(told.bar1Confidence, 1);
  EXPECT_NEAR(fitGrid(f, 1e-9, -1).bpm, 1, 0.011);
}

TEST(Grid, AlikeBeatsAreUncertain) {
  const LoopStyle four{"four", "x...x...x...x...", "................", "................", 124, 124};
  const Grid grid = fitGrid(heard(drumLoop(four, 124, 8)), 0, -1);
  EXPECT_NEAR(grid.bpm, 124, 0.1);
  EXPECT_LT(grid.bar1Confidence, 0.1);
  EXPECT_LT(grid.downbeatS, 0.02);
}

TEST(Grid, Loops) {
  // Two bars that differ; eight bars of them.
  Signal x;
  for (int i = 0; i < 5; i++) {
    append(x, drumLoop(loopStyles[0], 120, 1));
    append(x, drumLoop({"", "................", "..x...x...x..xxx", "x...............", 120, 120}, 120, 1));
  }
  const Features f = heard(x);
  EXPECT_EQ(fitGrid(f, 120, 0).loopBars, 2);
  EXPECT_GT(fitGrid(f, 120, 0).loopSimilarity, 0.8);
  // Of two bars only the loop of one can be told.
  const Grid two = fitGrid(heard(drumLoop(loopStyles[0], 100, 2)), 100, 0);
  EXPECT_EQ(two.loopBars, 1);
  const Grid once = fitGrid(heard(drumLoop(loopStyles[0], 80, 1)), 80, 0);
  EXPECT_EQ(once.loopBars, 0);
  EXPECT_EQ(once.loopSimilarity, 0);
}

TEST(Grid, Refusals) {
  EXPECT_EQ(thrown(heard(Signal(samplesOf(1.9), 0.1f))), "Audio too short to fit a grid (under 2 s)");
  Signal three = silence(4);
  for (int i = 0; i < 3; i++) addAt(three, 0.5 + i, snareHit());
  EXPECT_EQ(thrown(heard(three)), "Too few onsets to fit a grid");
  EXPECT_EQ(thrown(heard(silence(3))), "Too few onsets to fit a grid");
}

TEST(Grid, StepsAreWritten) {
  const LoopStyle style{"", "x.......x.......", "................", "x.x.x.x.x.x.x.x.", 120, 120};
  const Features f = heard(drumLoop(style, 120, 4));
  const Grid grid = fitGrid(f, 120, 0);
  const StepHits hits = stepHits(f, grid);
  EXPECT_EQ(hits.bars, 4);
  ASSERT_EQ(hits.steps.size(), 64u);
  const json::Json bars = *stepGridJson(hits, 2, 2).find("bars");
  ASSERT_EQ(bars.items().size(), 2u);
  EXPECT_EQ(bars.items()[0].find("bar")->number(), 2);
  EXPECT_EQ(bars.items()[0].find("low")->string(), "X... .... X... ....");
  EXPECT_EQ(bars.items()[0].find("high")->string(), "X.X. X.X. X.X. X.X.");
  EXPECT_TRUE(stepGridJson(hits, 5, 4).find("bars")->items().empty());
}
