// What breaks if a drawn Lane plays another value than it shows, or a Marker opens the wrong Section.
#include "core/model/Lanes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "core/Names.h"
#include "core/edit/Automation.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Markers.h"
#include "core/model/Validate.h"

namespace synth {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

// 0.2 at Step 1, rising to 0.6 at Step 2, where it jumps to 1; rests from 3 to 4, then 0 to 1 at Step 5.
const std::vector<LanePoint> drawn = {{16, 13107, 0, 0}, {32, 39321, 0, 0}, {32, 65535, 0, 0},
                                      {48, 0, 1, 0},     {64, 0, 0, 0},     {80, 65535, 0, 0}};

TEST(Lanes, ReadAsTheyAreDrawn) {
  auto p = makeBlank();
  EXPECT_TRUE(setLanePoints(*p, 9, drawn.data(), 6));
  const struct {
    double time, at, before;
  } cases[] = {{-5, 0.2, 0.2},  {0, 0.2, 0.2},     {1, 0.2, 0.2},      {1.25, 0.3, 0.3},
               {1.5, 0.4, 0.4}, {2, 1, 0.6},       {2.01, 1, 1},       {2.999, 1, 1},
               {3, none, 1},    {3.5, none, none}, {4, 0, none},       {4.5, 0.5, 0.5},
               {5, 1, 1},       {99, 1, 1},        {none, none, none}, {INFINITY, none, none}};
  for (auto& c : cases) {
    for (auto [got, want] :
         {std::pair(laneValueAt(*p, 9, c.time), c.at), {laneValueBefore(*p, 9, c.time), c.before}}) {
      EXPECT_EQ(std::isnan(got), std::isnan(want)) << c.time;
      if (!std::isnan(want)) {
        EXPECT_NEAR(got, want, 1e-6) << c.time;
      }
    }
    if (!std::isnan(c.at)) {
      EXPECT_EQ(laneValue(*p, 9, c.time, 0.9f), laneValueAt(*p, 9, c.time));
    }
  }
  EXPECT_EQ(laneValue(*p, 9, 3.5, 0.9f), 0.9f);
  EXPECT_EQ(laneValue(*p, 9, 3.5, 7), 1);
  EXPECT_EQ(laneValue(*p, 9, 3.5, -7), 0);
  EXPECT_EQ(laneValue(*p, 9, 3.5, f32(none)), 0);
  for (int row : {8, 10, -1, 164}) EXPECT_TRUE(std::isnan(laneValueAt(*p, row, 1))) << row;
}

TEST(Lanes, RestAtTheirEnds) {
  auto p = makeBlank();
  const LanePoint points[] = {
      {16, 0, 1, 0}, {32, 65535, 0, 0}, {48, 0, 1, 0}, {48, 32768, 0, 0}, {64, 0, 1, 0}};
  setLanePoints(*p, 163, points, 5);
  EXPECT_TRUE(std::isnan(laneValueAt(*p, 163, 0)));
  EXPECT_TRUE(std::isnan(laneValueAt(*p, 163, 1.5)));
  EXPECT_EQ(laneValueAt(*p, 163, 2.5), 1);
  EXPECT_EQ(laneValueBefore(*p, 163, 3), 1);
  EXPECT_NEAR(laneValueAt(*p, 163, 3), 0.5, 1e-5);
  EXPECT_TRUE(std::isnan(laneValueAt(*p, 163, 4)));
  EXPECT_TRUE(std::isnan(laneValueAt(*p, 163, 400)));
}

TEST(Lanes, ShareOnePoolInRowOrder) {
  auto p = makeBlank();
  EXPECT_TRUE(setLanePoints(*p, 100, drawn.data(), 6) && setLanePoints(*p, 3, drawn.data(), 2));
  EXPECT_TRUE(setLanePoints(*p, 50, drawn.data(), 4) && setLanePoints(*p, 3, drawn.data(), 5));
  EXPECT_EQ(std::tuple(p->lanes[50].first, p->lanes[100].first, p->lanePointCount), std::tuple(5, 9, 15));
  EXPECT_EQ(p->lanes[163].first, 15);
  EXPECT_EQ(lanePoints(*p, 100)[5].position, 80u);
  std::string error;
  EXPECT_TRUE(validateArenas(*p, error)) << error;
  auto before = copyOf(*p);
  const std::vector<LanePoint> bad[] = {
      {{16, 0, 0, 0}, {15, 0, 0, 0}},
      {{16, 0, 0, 0}, {16, 1, 0, 0}, {16, 2, 0, 0}},
      {{16777217, 0, 0, 0}},
  };
  for (auto& points : bad) EXPECT_FALSE(setLanePoints(*p, 3, points.data(), int(points.size())));
  std::vector<LanePoint> many(32768);
  for (u32 i = 0; i < 32768; i++) many[i].position = i;
  EXPECT_FALSE(setLanePoints(*p, 3, many.data(), 32768 - 9));
  EXPECT_FALSE(setLanePoints(*p, 164, many.data(), 1) || setLanePoints(*p, -1, many.data(), 1));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(setLanePoints(*p, 3, many.data(), 32768 - 10));
  EXPECT_TRUE(validateArenas(*p, error)) << error;
  p->lanes[3].target = 5;
  for (int row : {3, 50, 100, 999}) clearLane(*p, row);
  EXPECT_TRUE(sameBytes(*p, *makeBlank()));
}

TEST(Lanes, TakeBreakpointsInSteps) {
  auto p = makeBlank();
  const double times[] = {1, 2, 2, 3, 4, 5};
  const float values[] = {0.2f, 0.6f, 1, f32(none), -1, 2};
  EXPECT_TRUE(automation::setBreakpoints(*p, 9, times, values, 6));
  auto points = lanePoints(*p, 9);
  for (size_t i = 0; i < 6; i++) EXPECT_TRUE(sameBytes(points[i], drawn[i])) << i;
  const double falling[] = {2, 1}, wild[] = {none, -1}, end[] = {1048576, 1048577};
  auto before = copyOf(*p);
  for (auto* t : {falling, wild, wild + 1, end})
    EXPECT_FALSE(automation::setBreakpoints(*p, 9, t, values, t == wild + 1 ? 1 : 2));
  EXPECT_FALSE(automation::setBreakpoints(*p, 164, times, values, 1));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(automation::setBreakpoints(*p, 9, end, values, 1));
}

TEST(Markers, StandInOrderOneAStep) {
  auto p = makeBlank();
  EXPECT_TRUE(addMarker(*p, 64, "Verse two\xC3\xA9 and more"));
  EXPECT_TRUE(addMarker(*p, 16, ""));
  EXPECT_FALSE(addMarker(*p, 16, "again") || addMarker(*p, 1048576, "late"));
  EXPECT_TRUE(addMarker(*p, 1048575, "End"));
  EXPECT_EQ(nameText(p->markers[0].name), "MARKER 2");
  EXPECT_EQ(nameText(p->markers[1].name), "Verse two an");
  EXPECT_EQ(markerNamed(*p, "End"), 2);
  EXPECT_EQ(markerNamed(*p, "end"), -1);
  std::string error;
  EXPECT_TRUE(validateArenas(*p, error)) << error;
  for (u32 i = 3; i < 64; i++) EXPECT_TRUE(addMarker(*p, 1000 - i, "x"));
  auto before = copyOf(*p);
  EXPECT_FALSE(addMarker(*p, 1, "x"));
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Markers, OpenSectionsUpToTheNextOrTheEnd) {
  auto p = makeBlank();
  u32 start = 9, end = 9;
  EXPECT_FALSE(sectionAt(*p, 0, start, end));
  addLoop(*p, 3, 128, 0, 0);
  auto section = [&](u32 step) {
    EXPECT_TRUE(sectionAt(*p, step, start, end)) << step;
    return std::pair(start, end);
  };
  EXPECT_EQ(section(5), std::pair(0u, 128u));
  addMarker(*p, 32, "A");
  addMarker(*p, 64, "B");
  EXPECT_EQ(section(31), std::pair(0u, 32u));
  EXPECT_EQ(section(32), std::pair(32u, 64u));
  EXPECT_EQ(section(63), std::pair(32u, 64u));
  EXPECT_EQ(section(64), std::pair(64u, 128u));
  EXPECT_EQ(section(500), std::pair(64u, 128u));
  addMarker(*p, 128, "OUT");
  EXPECT_FALSE(sectionAt(*p, 128, start, end));
  EXPECT_EQ(section(127), std::pair(64u, 128u));
}

}  // namespace
}  // namespace synth
