// What breaks if moving, copying or clearing a Track forgets a store, or leaves bytes that mean nothing.
#include "core/model/Tracks.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Validate.h"
#include "support/RandomProject.h"

namespace synth {
namespace {

void expectValid(const Project& p) {
  std::string error;
  EXPECT_TRUE(validateProject(p, error)) << error;
}

template <class Rows>
auto rowsOf(const Rows& rows, int count, int track) {
  std::vector<std::decay_t<decltype(rows[0])>> out;
  for (int i = 0; i < count; i++)
    if (rows[i].track == track) {
      out.push_back(rows[i]);
      out.back().track = 0;
    }
  return out;
}

// All that one Track holds, without its number.
std::string contentOf(const Project& p, int track) {
  std::string bytes;
  auto add = [&](const auto& row) { bytes.append(reinterpret_cast<const char*>(&row), sizeof row); };
  for (auto& row : rowsOf(p.patterns, p.patternCount, track)) add(row);
  for (auto& row : rowsOf(p.clips, p.clipCount, track)) add(row);
  for (auto& row : rowsOf(p.notes, p.noteCount, track)) add(row);
  for (int s = 0; s < 8; s++) {
    const LaneRow& lane = p.lanes[laneRow(track, s)];
    for (int v : {int(lane.enabled), int(lane.target), int(lane.count)}) add(v);
    for (const LanePoint& point : lanePoints(p, laneRow(track, s))) add(point);
  }
  return bytes;
}

TEST(Tracks, EmptyToAnUntouchedArrangement) {
  auto p = test::randomProject(3);
  clearArrangement(*p);
  std::copy(std::begin(defaultProject().tracks), std::end(defaultProject().tracks), p->tracks);
  auto arenas = [](Project& q) { return reinterpret_cast<const char*>(&q.patternCount); };
  auto fresh = newProject();
  EXPECT_EQ(std::memcmp(arenas(*p), arenas(*fresh), offsetof(Project, fx1) - offsetof(Project, patternCount)),
            0);
  EXPECT_EQ(p->markerCount, 0);
}

TEST(Tracks, ClearOneAndLeaveTheOthers) {
  for (u32 seed = 0; seed < 8; seed++) {
    auto p = test::randomProject(seed);
    auto before = copyOf(*p);
    clearTrack(*p, 5, false);
    EXPECT_TRUE(rowsOf(p->patterns, p->patternCount, 5).empty() && rowsOf(p->notes, p->noteCount, 5).empty());
    for (int s = 40; s < 48; s++) EXPECT_EQ(p->lanes[s].count, before->lanes[s].count);
    clearTrack(*p, 5, true);
    EXPECT_FALSE(trackHasContent(*p, 5));
    for (int t = 0; t < 16; t++) EXPECT_TRUE(t == 5 || contentOf(*p, t) == contentOf(*before, t)) << t;
    expectValid(*p);
    clearTrack(*p, 16, true);
    clearTrack(*p, -1, true);
  }
}

TEST(Tracks, CopySoundNameAndContent) {
  for (u32 seed = 0; seed < 8; seed++) {
    auto p = test::randomProject(seed);
    auto before = copyOf(*p);
    EXPECT_TRUE(copyTrack(*p, 2, 9));
    EXPECT_TRUE(sameBytes(p->tracks[9], p->tracks[2]));
    for (int t = 0; t < 16; t++) EXPECT_TRUE(contentOf(*p, t) == contentOf(*before, t == 9 ? 2 : t)) << t;
    expectValid(*p);
    EXPECT_FALSE(copyTrack(*p, 2, 16) || copyTrack(*p, -1, 2));
  }
  auto p = makeBlank();
  for (u32 i = 0; i < 200; i++) addLoop(*p, 1, 4, i * 4, 0);
  auto before = copyOf(*p);
  EXPECT_FALSE(copyTrack(*p, 1, 2));
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Tracks, MoveByATable) {
  for (u32 seed = 0; seed < 8; seed++) {
    auto p = test::randomProject(seed);
    auto before = copyOf(*p);
    int map[16];
    for (int t = 0; t < 16; t++) map[t] = 15 - t;
    EXPECT_TRUE(remapTracks(*p, map));
    expectValid(*p);
    for (int t = 0; t < 16; t++) {
      EXPECT_TRUE(contentOf(*p, 15 - t) == contentOf(*before, t)) << t;
      const int source = before->tracks[t].duck_source;
      EXPECT_EQ(p->tracks[15 - t].duck_source, (15 - source / 9) * 9 + source % 9);
    }
    EXPECT_TRUE(remapTracks(*p, map));
    EXPECT_TRUE(sameBytes(*p, *before));
  }
}

TEST(Tracks, DropThoseThatTheTableDrops) {
  auto p = test::randomProject(4);
  p->tracks[0].duck_source = 3 * 9 + 4;
  p->tracks[1].duck_source = 5 * 9 + 4;
  int map[16];
  for (int t = 0; t < 16; t++) map[t] = t < 3 ? t : t == 3 ? -1 : t - 1;
  auto before = copyOf(*p);
  int twice[16] = {}, wild[16];
  std::copy(map, map + 16, wild);
  wild[0] = 16;
  EXPECT_FALSE(remapTracks(*p, twice) || remapTracks(*p, wild));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(remapTracks(*p, map));
  EXPECT_EQ(p->tracks[0].duck_source, 0);
  EXPECT_EQ(p->tracks[1].duck_source, 4 * 9 + 4);
  EXPECT_TRUE(sameBytes(p->tracks[15], starterTrack(15)));
  EXPECT_FALSE(trackHasContent(*p, 15));
  for (int t = 4; t < 16; t++) EXPECT_TRUE(contentOf(*p, t - 1) == contentOf(*before, t)) << t;
  expectValid(*p);
}

TEST(Tracks, ComeToOneFormFromAnyOrder) {
  for (u32 seed = 0; seed < 8; seed++) {
    auto p = test::randomProject(seed);
    auto shuffled = copyOf(*p);
    test::Random r(seed);
    auto shuffle = [&](auto* rows, int count) {
      for (int i = count - 1; i > 0; i--) std::swap(rows[i], rows[r.below(i + 1)]);
    };
    shuffle(shuffled->patterns, p->patternCount);
    shuffle(shuffled->clips, p->clipCount);
    shuffle(shuffled->notes, p->noteCount);
    // What stands behind the counts means nothing.
    shuffled->patterns[p->patternCount].id = 7;
    shuffled->clips[p->clipCount].start = 7;
    shuffled->notes[p->noteCount].velocity = 7;
    shuffled->lanePoints[p->lanePointCount].value = 7;
    shuffled->markers[p->markerCount].step = 7;
    canonical(*shuffled);
    EXPECT_TRUE(sameBytes(*shuffled, *p)) << seed;
  }
  auto up = makeBlank(), down = makeBlank();
  for (int i = 0; i < 20; i++) addPatternAt(*up, 4, i, i + 1);
  for (int i = 19; i >= 0; i--) addPatternAt(*down, 4, i, i + 1);
  EXPECT_TRUE(sameBytes(*up, *down));
}

}  // namespace
}  // namespace synth
