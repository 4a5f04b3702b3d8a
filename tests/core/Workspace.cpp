// The checked edits of Tracks, Locks and Lanes: what each does, what each refuses, and that none of them
// ever leaves an invalid Project or a half-made change.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/edit/Automation.h"
#include "core/edit/LaneEdit.h"
#include "core/edit/LockEdit.h"
#include "core/edit/Workspace.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "core/params/Targets.h"
#include "support/PlainProject.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

using namespace workspace;

std::string errorOf(const Project& p) {
  std::string error;
  validateProject(p, error);
  return error;
}
std::string nameOf(const Project& p, int t) { return std::string(nameText(p.tracks[t].name)); }

TEST(Workspace, TracksComeAndGo) {
  auto p = plainProject();
  int index = -1;
  EXPECT_TRUE(addTrack(*p, MELODIC, index));
  EXPECT_EQ(index, 4);
  EXPECT_TRUE(addTrack(*p, DRUMS, index));
  EXPECT_EQ(nameOf(*p, index), "DRUMS 2");
  EXPECT_STREQ(addTrack(*p, 3, index).message, "No such track kind");
  while (p->track_count < 16) ASSERT_TRUE(addTrack(*p, MELODIC, index));
  EXPECT_STREQ(addTrack(*p, MELODIC, index).message, "All sixteen tracks are in use");
  EXPECT_EQ(errorOf(*p), "");

  TrackMap map;
  p->tracks[3].duck_source = 1;  // Track 0 ducks it
  const std::string third = nameOf(*p, 3);
  std::fill(std::begin(map), std::end(map), 99);
  EXPECT_STREQ(removeTracks(*p, 0, map).message, "Select a track to remove");
  EXPECT_EQ(map[15], 15) << "a refused edit moves no Track";
  EXPECT_STREQ(removeTracks(*p, 0xFFFF, map).message, "A project keeps at least one track");
  EXPECT_TRUE(removeTracks(*p, 1u << 0 | 1u << 2, map));
  EXPECT_EQ(p->track_count, 14);
  EXPECT_EQ(map[0], -1);
  EXPECT_EQ(map[1], 0);
  EXPECT_EQ(map[3], 1);
  EXPECT_EQ(nameOf(*p, 1), third);
  EXPECT_EQ(p->tracks[1].duck_source, 0) << "its source has gone";
  EXPECT_EQ(errorOf(*p), "");
}

TEST(Workspace, CopiesGoBehindTheirOriginalsWithAllTheyHold) {
  auto p = plainProject();
  TrackMap map;
  EXPECT_STREQ(duplicateTracks(*p, 0, map).message, "Select a track to duplicate");
  const int notes = p->noteCount, clips = trackClips(*p, 1);
  EXPECT_TRUE(duplicateTracks(*p, 1u << 1 | 1u << 2, map));
  EXPECT_EQ(p->track_count, 6);
  EXPECT_EQ(map[2], 3);
  EXPECT_EQ(map[3], 5);
  EXPECT_EQ(trackClips(*p, 2), clips);
  EXPECT_NE(nameOf(*p, 1), nameOf(*p, 2));
  EXPECT_GE(p->noteCount, notes);
  EXPECT_EQ(errorOf(*p), "");
  EXPECT_STREQ(duplicateTracks(*p, 0xFFFF, map).message, "") << "six more fit";
  const std::string before = projectBytes(*p);
  EXPECT_STREQ(duplicateTracks(*p, 0xFFFF, map).message, "Only sixteen tracks fit");
  EXPECT_TRUE(projectBytes(*p) == before);
}

TEST(Workspace, TracksMoveAsBlocksAndStopAtTheEnds) {
  auto p = plainProject();
  TrackMap map;
  for (int t = 0; t < 4; t++) setName(p->tracks[t].name, std::string(1, char('A' + t)));
  auto order = [&] { return nameOf(*p, 0) + nameOf(*p, 1) + nameOf(*p, 2) + nameOf(*p, 3); };
  EXPECT_STREQ(moveTracks(*p, 0, 1, map).message, "Select a track to move");
  EXPECT_TRUE(moveTracks(*p, 3, 1, map).changed);
  EXPECT_EQ(order(), "CABD");
  EXPECT_EQ(map[2], 0);
  EXPECT_TRUE(moveTracks(*p, 6, 9, map).changed);
  EXPECT_EQ(order(), "CDAB");
  EXPECT_FALSE(moveTracks(*p, 12, 1, map).changed);
  EXPECT_TRUE(moveTracks(*p, 12, std::numeric_limits<int>::min(), map).changed);
  EXPECT_EQ(order(), "ABCD");
  EXPECT_STREQ(renameTrack(*p, 16, "X").message, "No such track");
  EXPECT_STREQ(renameTrack(*p, 1, "  ").message, "A track needs a name");
  EXPECT_FALSE(renameTrack(*p, 1, "b").changed);
  EXPECT_TRUE(setTrackKind(*p, 2, DRUMS).changed);
  EXPECT_FALSE(setTrackKind(*p, 2, DRUMS).changed);
  EXPECT_STREQ(setTrackKind(*p, 2, 2).message, "No such track kind");
  EXPECT_EQ(errorOf(*p), "");
}

TEST(Workspace, PatternsChangeTheirLength) {
  auto p = plainProject();
  clearArrangement(*p);
  addLoop(*p, 1, 32, 0, 0);
  Note n;
  n.velocity = 100;
  setNote(*p, 1, 0, 20, 0, n);
  EXPECT_STREQ(setPatternLength(*p, 1, 0, 0, true).message, "Pattern length must be 1–1024 steps");
  EXPECT_STREQ(setPatternLength(*p, 1, 7, 16, true).message, "No such pattern");
  EXPECT_TRUE(setPatternLength(*p, 1, 0, 16, true).changed);
  EXPECT_EQ(patternExtent(*p, 1, 0), 21) << "kept, though not played";
  EXPECT_TRUE(setPatternLength(*p, 1, 0, 8, false).changed);
  EXPECT_EQ(patternExtent(*p, 1, 0), 0);
  EXPECT_EQ(clipIndex(*p, 1, 0), 0);
  EXPECT_EQ(clipIndex(*p, 1, 1), -1);
  EXPECT_EQ(errorOf(*p), "");
}

TEST(Workspace, LocksBelongToNotes) {
  auto p = plainProject();
  clearArrangement(*p);
  addLoop(*p, 1, 16, 0, 0);
  addLoop(*p, 0, 16, 0, 0);
  Note n;
  n.velocity = 100;
  n.pitch = 60;
  setNote(*p, 1, 0, 2, 0, n);
  n.pitch = 3;
  setNote(*p, 0, 0, 2, 3, n);
  EXPECT_STREQ(setLock(*p, 1, 0, 3, 60, automation::CUTOFF, 0.5).message, "A Lock belongs to a Note");
  EXPECT_STREQ(setLock(*p, 1, 0, 2, 61, automation::CUTOFF, 0.5).message, "A Lock belongs to a Note");
  EXPECT_STREQ(setLock(*p, 1, 0, 2, 60, automation::LFO_RATE, 0.5).message, "Invalid lock value");
  EXPECT_TRUE(setLock(*p, 1, 0, 2, 60, automation::firstMacroTarget, 0.5)) << "as files may hold";
  EXPECT_TRUE(clearLock(*p, 1, 0, 2, 60, automation::firstMacroTarget));
  EXPECT_TRUE(std::isnan(lockValue(*p, 1, 0, 2, 60, -1)));
  EXPECT_FALSE(clearLock(*p, 1, 0, 2, 60, -1));
  EXPECT_STREQ(setLock(*p, 1, 0, 2, 60, automation::CUTOFF, NAN).message, "Invalid lock value");
  EXPECT_STREQ(setLock(*p, 0, 0, 2, 3, automation::CUTOFF, 0.5).message, "A hit locks only PITCH and DECAY");
  EXPECT_TRUE(setLock(*p, 0, 0, 2, 3, automation::PITCH, 0.5));
  for (int target = 0; target < 8; target++) EXPECT_TRUE(setLock(*p, 1, 0, 2, 60, target, 0.25)) << target;
  EXPECT_STREQ(setLock(*p, 1, 0, 2, 60, automation::WIDTH, 0.5).message,
               "This Note holds eight Locks: clear one first");
  EXPECT_TRUE(setLock(*p, 1, 0, 2, 60, 3, 0.75).changed) << "one of the eight may change";
  EXPECT_FALSE(setLock(*p, 1, 0, 2, 60, 3, 0.75).changed);
  EXPECT_NEAR(lockValue(*p, 1, 0, 2, 60, 3), 0.75, 1e-4);
  EXPECT_TRUE(clearLock(*p, 1, 0, 2, 60, 0));
  EXPECT_TRUE(std::isnan(lockValue(*p, 1, 0, 2, 60, 0)));
  EXPECT_NEAR(lockValue(*p, 1, 0, 2, 60, 7), 0.25, 1e-4);
  EXPECT_EQ(errorOf(*p), "");
  EXPECT_TRUE(clearLocks(*p, 1, 0, 2));
  EXPECT_FALSE(hasLocks(*p, 1, 0, 2));
  EXPECT_FALSE(clearLocks(*p, 1, 0, 2));
}

TEST(Workspace, LanesAreClaimedAndDrawn) {
  auto p = plainProject();
  clearArrangement(*p);
  int lane = -1;
  EXPECT_TRUE(claimLane(*p, 1, automation::ENGINE_3, lane));
  EXPECT_EQ(lane, laneRow(1, 2));
  EXPECT_TRUE(claimLane(*p, 1, automation::CUTOFF, lane));
  EXPECT_EQ(lane, laneRow(1, 4));
  EXPECT_FALSE(claimLane(*p, 1, automation::CUTOFF, lane).changed);
  EXPECT_STREQ(claimLane(*p, 0, automation::ENGINE_1, lane).message,
               "A Drums track has no Engine parameters");
  EXPECT_STREQ(claimLane(*p, 1, automation::firstMacroTarget, lane).message, "No such lane");
  EXPECT_STREQ(claimLane(*p, 16, automation::firstBusTarget, lane).message, "No such lane");
  for (int target = 6; target < 12; target++) claimLane(*p, 1, target, lane);
  EXPECT_STREQ(claimLane(*p, 1, automation::WIDTH, lane).message, "All eight lanes of this track are in use");
  for (int target = 0; target < 12; target++) EXPECT_TRUE(claimLane(*p, masterRow, target, lane));
  EXPECT_EQ(errorOf(*p), "");

  EXPECT_TRUE(drawLane(*p, 2, automation::CUTOFF, 4, 0.2, 8, 0.8));
  EXPECT_TRUE(drawLane(*p, 2, automation::CUTOFF, 5, 1, 6, 1));
  const int row = laneFor(*p, 2, automation::CUTOFF);
  EXPECT_NEAR(laneValueAt(*p, row, 4.5), 0.275, 1e-3) << "what came before stays";
  EXPECT_EQ(laneValueAt(*p, row, 5.5), 1);
  EXPECT_NEAR(laneValueAt(*p, row, 7), 0.65, 1e-3) << "and what comes after";
  EXPECT_STREQ(drawLane(*p, 2, automation::CUTOFF, -1, 0, 1, 0).message, "Invalid lane point");
  EXPECT_STREQ(drawLane(*p, 2, automation::CUTOFF, 2, 0, 1, 0).message, "Invalid lane point");
  int index = -1;
  EXPECT_STREQ(addPoint(*p, 2, automation::CUTOFF, 1048577, 0.5, index).message, "Past the Song's end");
  EXPECT_TRUE(addPoint(*p, 2, automation::CUTOFF, 12, 0.5, index));
  EXPECT_TRUE(addPoint(*p, 2, automation::CUTOFF, 12, 0.1, index));
  EXPECT_STREQ(addPoint(*p, 2, automation::CUTOFF, 12, 0.1, index).message,
               "Two points are on this time already");
  const int set[] = {index};
  EXPECT_STREQ(setRest(*p, 2, automation::CUTOFF, set, true).message, "No room for more points");
  const int unsorted[] = {index, index - 1, index};
  EXPECT_TRUE(workspace::movePoints(*p, 2, automation::CUTOFF, unsorted, 3, 0.2).changed);
  EXPECT_NEAR(laneValueBefore(*p, row, 15), 0.7, 1e-3);
  EXPECT_NEAR(laneValueAt(*p, row, 15), 0.3, 1e-3);
  EXPECT_TRUE(workspace::deletePoints(*p, 2, automation::CUTOFF, set).changed);
  const int none[] = {99};
  EXPECT_STREQ(workspace::deletePoints(*p, 2, automation::CUTOFF, none).message, "No such point");
  EXPECT_STREQ(workspace::clearLane(*p, 2, automation::PAN).message, "No such lane");
  EXPECT_TRUE(workspace::clearLane(*p, 2, automation::CUTOFF).changed);
  EXPECT_EQ(errorOf(*p), "");
}

TEST(Workspace, PointsThinAndSimplifyKeepTheShape) {
  auto p = plainProject();
  std::vector<LanePoint> points;
  for (u32 i = 0; i <= 640; i++)
    points.push_back({i * 4, u16(32768 + 30000 * std::sin(double(i) / 60)), 0, 0});
  const auto curve = copyOf(*p);
  for (bool thinned : {true, false}) {
    p->lanes[0].enabled = p->lanes[0].target = 1;
    ASSERT_TRUE(setLanePoints(*p, 0, points.data(), int(points.size())));
    const int gone = thinned ? automation::thin(*p, 0, 0, 1000, 0.0002f)
                             : automation::simplify(*p, 0, 0, 1000, 0.01, 1, 0.002);
    EXPECT_GT(gone, 300) << thinned;
    EXPECT_EQ(p->lanes[0].count, int(points.size()) - gone);
    for (u32 i = 0; i <= 640; i++)
      EXPECT_NEAR(laneValueAt(*p, 0, i * 4 / 16.0), points[i].value / 65535.0, thinned ? 0.05 : 0.008) << i;
    EXPECT_EQ(errorOf(*p), "");
  }
  const LanePoint rests[] = {{0, 0, 0, 0}, {16, 0, 1, 0}, {32, 0, 0, 0}, {48, 0, 0, 0}, {64, 0, 0, 0}};
  setLanePoints(*p, 0, rests, 5);
  EXPECT_EQ(automation::thin(*p, 0, 0, 10, 1), 1) << "beside a rest nothing goes";
}

TEST(Workspace, ARestKeepsTheLineThatLeadsToIt) {
  auto p = plainProject();
  const LanePoint drawn[] = {{0, 0, 0, 0}, {64, 40000, 0, 0}, {128, 20000, 0, 0}, {192, 0, 1, 0}};
  const int row = laneRow(1, 4), target = automation::CUTOFF;
  int lane = -1;
  ASSERT_TRUE(claimLane(*p, 1, target, lane));
  ASSERT_EQ(lane, row);
  setLanePoints(*p, row, drawn, 4);
  const std::string before = projectBytes(*p);
  const int middle[] = {1}, two[] = {2, 1}, twin[] = {2}, alone[] = {3};
  EXPECT_TRUE(setRest(*p, 1, target, middle, true).changed);
  EXPECT_NEAR(laneValueAt(*p, row, 2), 20000 / 65535.0, 1e-6) << "the ramp";
  EXPECT_TRUE(std::isnan(laneValueAt(*p, row, 4)) && std::isnan(laneValueAt(*p, row, 7.9)));
  EXPECT_EQ(errorOf(*p), "");
  EXPECT_FALSE(setRest(*p, 1, target, middle, true).changed);
  EXPECT_TRUE(setRest(*p, 1, target, twin, false).changed);
  EXPECT_TRUE(projectBytes(*p) == before) << "by the rest";
  EXPECT_TRUE(setRest(*p, 1, target, two, true).changed);
  EXPECT_EQ(p->lanes[row].count, 6);
  const int values[] = {1, 3};
  EXPECT_TRUE(setRest(*p, 1, target, values, false).changed);
  EXPECT_TRUE(projectBytes(*p) == before) << "or by the points before them";
  EXPECT_TRUE(setRest(*p, 1, target, alone, false).changed);
  EXPECT_EQ(laneValueAt(*p, row, 13), laneValueAt(*p, row, 8)) << "a rest of its own goes on from before";
}

TEST(Workspace, ARefusedEditLeavesALaneSwitchedOff) {
  auto p = plainProject();
  int lane = -1, index = 5;
  ASSERT_TRUE(drawLane(*p, 1, automation::CUTOFF, 0, 0, 4, 1));
  ASSERT_TRUE(addPoint(*p, 1, automation::CUTOFF, 2, 0.5, index));
  ASSERT_TRUE(addPoint(*p, 1, automation::CUTOFF, 2, 0.5, index));
  p->lanes[laneFor(*p, 1, automation::CUTOFF)].enabled = 0;
  std::string before = projectBytes(*p);
  EXPECT_FALSE(addPoint(*p, 1, automation::CUTOFF, 2, 0.5, index));
  EXPECT_TRUE(projectBytes(*p) == before);
  std::vector<LanePoint> full(size_t(limits::lanePoints - p->lanePointCount));
  for (size_t i = 0; i < full.size(); i++) full[i].position = u32(i);
  ASSERT_TRUE(setLanePoints(*p, 0, full.data(), int(full.size())));
  before = projectBytes(*p);
  for (const int target : {int(automation::CUTOFF), int(automation::PAN)}) {
    EXPECT_STREQ(drawLane(*p, 1, target, 1, 0, 3, 1).message, "Project full");
    EXPECT_STREQ(addPoint(*p, 1, target, 3, 0.5, index).message, "Project full");
  }
  const int first[] = {0};
  EXPECT_STREQ(setRest(*p, 1, automation::CUTOFF, first, true).message, "No room for more points");
  EXPECT_TRUE(projectBytes(*p) == before);
  EXPECT_TRUE(drawLane(*p, 1, automation::CUTOFF, 0, 0, 4, 1)) << "fewer points than before";
  EXPECT_EQ(p->lanes[laneFor(*p, 1, automation::CUTOFF)].enabled, 1);
  // An Engine Lane whose own slot is taken leaves those of the others free.
  p->lanes[laneRow(2, 0)].target = automation::WIDTH + 1;
  ASSERT_TRUE(claimLane(*p, 2, automation::ENGINE_1, lane));
  EXPECT_EQ(lane, laneRow(2, 4));
}

TEST(Workspace, BandsBendByTheirNearness) {
  const float base[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 20};
  float bands[10] = {};
  bendEq(bands, base, 1u << 5, 4, 8);
  const float expected[10] = {0, 3, 6, 9, 12, 5, 10, 9, 8, 20};
  for (int k = 0; k < 10; k++) EXPECT_FLOAT_EQ(bands[k], expected[k]) << k;
  bendEq(bands, base, 0, 9, 8);
  EXPECT_EQ(bands[9], 24);
}

TEST(Workspace, PointsStayInTheirPlaces) {
  auto p = plainProject();
  const LanePoint points[] = {{16, 1000, 0, 0}, {32, 2000, 0, 0}, {64, 3000, 0, 0}};
  p->lanes[0].enabled = p->lanes[0].target = 1;
  setLanePoints(*p, 0, points, 3);
  const int middle[] = {1}, both[] = {0, 1};
  EXPECT_EQ(automation::clampShift(*p, 0, middle, 1000), 32);
  EXPECT_EQ(automation::clampShift(*p, 0, middle, -1000), -16);
  EXPECT_EQ(automation::clampShift(*p, 0, both, -1000), -16);
  EXPECT_EQ(automation::clampShift(*p, 0, both, 20), 20);
  EXPECT_EQ(automation::insertPoint(*p, 0, limits::lanePosition + 1, 0.5f), -1);
  EXPECT_EQ(automation::insertPoint(*p, 0, limits::lanePosition, 0.5f), 3);
  EXPECT_EQ(automation::insertPoint(*p, 0, 32, 0.5f), 2);
  EXPECT_EQ(automation::insertPoint(*p, 0, 32, 0.5f), -1);
  EXPECT_TRUE(automation::writeSegment(*p, 0, 3, 3, 0.5f, 0.5f)) << "at least one unit long";
  EXPECT_EQ(errorOf(*p), "");
}

TEST(Workspace, RandomEditsKeepTheProjectValidAndRefusalsKeepItsBytes) {
  Random r(23);
  auto p = randomProject(3);
  int n = 0, lane;
  TrackMap map;
  auto point = [&] { return std::vector<int>{r.below(6), r.between(6, 9)}; };
  for (; n < 2500; n++) {
    const std::string before = projectBytes(*p);
    const int t = r.between(-2, 19), target = r.chance(20) ? r.below(200) : r.below(46);
    const double a = r.chance(5) ? NAN : r.unit() * 200, b = a + r.unit() * 20;
    const u32 mask = r.next() & r.next() & 0xFFFF;
    edit::Result result;
    switch (r.below(15)) {
      case 0: result = addTrack(*p, r.below(3), lane); break;
      case 1: result = removeTracks(*p, mask & r.next(), map); break;
      case 2: result = duplicateTracks(*p, mask & r.next(), map); break;
      case 3: result = moveTracks(*p, mask, r.between(-3, 3), map); break;
      case 4: result = setTrackKind(*p, mask & r.next() & r.next(), r.below(3)); break;
      case 5: result = setPatternLength(*p, t, r.below(3), r.between(-1, 70), r.chance(50)); break;
      case 6: result = setLock(*p, t, r.below(3), r.below(20), r.between(0, 90), target, a / 200); break;
      case 7: result = claimLane(*p, t, target, lane); break;
      case 8:
      case 9: result = drawLane(*p, t, target, a, r.unit(), b, r.unit()); break;
      case 10: result = addPoint(*p, t, target, a, r.unit(), lane); break;
      case 11:
        result = workspace::movePoints(*p, t, target, point(), r.unit() * 20 - 10, r.unit() - 0.5);
        break;
      case 12: result = setRest(*p, t, target, point(), r.chance(50)); break;
      case 13: result = simplifyLane(*p, t, target, 0, a, 0.01, 1, 0.01); break;
      default: result = renameTrack(*p, t, r.chance(30) ? "" : "N" + std::to_string(r.below(99)));
    }
    ASSERT_EQ(errorOf(*p), "") << n;
    if (!result.changed) {
      ASSERT_TRUE(projectBytes(*p) == before) << n << " " << result.message;
    }
    if (!result.ok) {
      ASSERT_NE(std::string(result.message), "") << n;
    }
  }
}

}  // namespace
}  // namespace synth::test
