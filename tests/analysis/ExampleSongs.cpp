// The songs that come along are what a newcomer hears first: each is a whole song, at a good level, and shows
// what the instrument can do.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "analysis/Features.h"
#include "analysis/Hear.h"
#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "spec/Examples.h"

namespace synth::test {
namespace {

struct Means {
  int lanes = 0, moves = 0, locks = 0, macroLanes = 0, macroLocks = 0, sends = 0;
};

Means meansOf(const Project& p) {
  Means m;
  for (int row = 0; row < limits::lanes; row++) {
    if (!p.lanes[row].enabled || !p.lanes[row].count) continue;
    (row >= limits::firstMasterLane ? m.moves : m.lanes)++;
    m.macroLanes += row < limits::firstMasterLane && automation::isMacroTarget(p.lanes[row].target - 1);
  }
  for (int i = 0; i < p.noteCount; i++)
    for (const LockRec& lock : p.notes[i].locks) {
      m.locks += lock.target != 0;
      m.macroLocks += lock.target && automation::isMacroTarget(lock.target - 1);
    }
  bool fed[2] = {};
  for (int t = 0; t < p.track_count; t++) {
    fed[0] |= p.tracks[t].send_1 > 0;
    fed[1] |= p.tracks[t].send_2 > 0;
  }
  m.sends = (fed[0] && p.fx1.type != FX_OFF) + (fed[1] && p.fx2.type != FX_OFF);
  return m;
}

class ExampleSongs : public testing::TestWithParam<int> {};

TEST_P(ExampleSongs, AreWholeSongsAtAGoodLevel) {
  const auto song = spec::makeExample(GetParam());
  const std::string name(projectName(*song));
  const Means means = meansOf(*song);
  EXPECT_GE(song->markerCount, 4) << name;
  EXPECT_GE(means.lanes, 3) << name;
  EXPECT_GE(means.moves, 2) << name;
  EXPECT_GE(means.locks, 8) << name;
  EXPECT_GE(means.macroLanes + means.macroLocks, 1) << name;
  EXPECT_EQ(means.sends, 2) << name;
  EXPECT_GT(song->key_root, 1) << name << " has no key";
  const double seconds = songEnd(*song) * 60.0 / (double(song->bpm) * 4);
  EXPECT_TRUE(seconds >= 60 && seconds <= 150) << name << " lasts " << seconds << " s";

  const analysis::Features f = analysis::analyze(analysis::hear(*song, {}), 0, {});
  EXPECT_TRUE(f.lufs >= -16 && f.lufs <= -11) << name << " has " << f.lufs << " LUFS";
  EXPECT_LT(f.peakDbfs, -0.2) << name;
  EXPECT_TRUE(f.sideMidDb > -16 && f.sideMidDb < -3) << name << " has sides at " << f.sideMidDb;
}

INSTANTIATE_TEST_SUITE_P(Each, ExampleSongs, testing::Range(0, 6));

TEST(ExampleSongs, AreSixInDifferentStyles) {
  ASSERT_EQ(spec::exampleCount(), 6);
  std::set<std::string> names, styles;
  for (int i = 0; i < 6; i++) {
    const spec::ExampleInfo info = spec::exampleInfo(i);
    names.insert(info.name);
    styles.insert(info.description.substr(0, info.description.find(',')));
  }
  EXPECT_EQ(names.size(), 6u);
  EXPECT_EQ(styles.size(), 6u);
  const char* const fixtures[] = {"ION GARDEN", "PAPER WINDOWS", "NIGHT TRANSIT"};
  ASSERT_EQ(spec::fixtureCount(), 3);
  for (int i = 0; i < 3; i++) EXPECT_EQ(projectName(*spec::makeFixture(i)), fixtures[i]);
}

}  // namespace
}  // namespace synth::test
