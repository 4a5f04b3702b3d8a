// What breaks if any mix of edits leaves the stores unsorted, untiled or with stale rows behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "core/ProjectFile.h"
#include "core/edit/Workspace.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "support/RandomProject.h"

namespace synth {
namespace {

class Player {
 public:
  explicit Player(u32 seed) : r_(seed) {}

  // One random edit; whether it says that it was done.
  bool edit(int kind) {
    const int t = r_.between(r_.chance(3) ? -1 : 0, r_.chance(3) ? 16 : 6);
    switch (kind) {
      case 0: return addLoop(p(), t, r_.between(1, 40), u32(r_.below(1500)), r_.below(8)) >= 0;
      case 1: return cloneAndPlay(t);
      case 2: return addClip(p(), randomClip(t));
      case 3: return removeSome();
      case 4: return setStep(p(), t, id(t), r_.between(-1, 1025), randomStep(t));
      case 5: return setNote(p(), t, id(t), r_.below(40), r_.between(-1, 8), randomNote(t));
      case 6: return setRun(t);
      case 7: return parkFront(p(), t, id(t), r_.between(0, 20));
      case 8: return unparkFront(p(), t, id(t), r_.between(0, 20));
      case 9: return setPatternLengthKeepingPasses(p(), t, id(t), r_.between(0, 60));
      case 10: return drawLane();
      case 11: clearLane(p(), r_.between(-1, 164)); return true;
      case 12:
        return addMarker(p(), u32(r_.chance(5) ? 1048576 : r_.below(400)), r_.chance(20) ? "" : "Part");
      case 13: clearTrack(p(), t, r_.chance(50)); return true;
      case 14: return copyTrack(p(), t, r_.between(-1, 6));
      case 15: return moveTracks();
      case 16: return workspace::switchTrackKind(p(), t, r_.between(-1, 2));
      default: canonical(p()); return false;
    }
  }
  Project& p() { return *project_; }
  int below(int n) { return r_.below(n); }

 private:
  int id(int track) {
    std::vector<int> ids = {r_.below(5)};
    for (int i = 0; i < p().patternCount; i++)
      if (p().patterns[i].track == track) ids.push_back(p().patterns[i].id);
    return ids[size_t(r_.below(int(ids.size())))];
  }
  ClipRec randomClip(int track) {
    ClipRec clip;
    clip.track = u8(track);
    clip.pattern = u16(id(track));
    clip.start = u32(r_.chance(3) ? 1048560 : r_.below(2000));
    clip.length = u32(r_.below(40));
    clip.offset = u16(r_.below(12));
    clip.repeats = u8(r_.chance(50));
    return clip;
  }
  bool cloneAndPlay(int track) {
    const int copy = clonePattern(p(), track, id(track));
    if (copy < 0) return false;
    ClipRec clip;
    clip.track = u8(track);
    clip.pattern = u16(copy);
    clip.start = songEnd(p());
    clip.length = u32(patternLength(p(), track, copy));
    if (p().patterns[patternIndex(p(), track, copy)].isFront || !addClip(p(), clip))
      removePattern(p(), track, copy);
    return true;
  }
  bool removeSome() {
    std::vector<int> rows;
    for (int n = r_.between(1, 4); n > 0; n--) rows.push_back(r_.below(std::max<int>(p().clipCount, 1)));
    if (r_.chance(5)) rows.push_back(p().clipCount);
    return removeClips(p(), rows.data(), int(rows.size()));
  }
  Note randomNote(int track) {
    Note note;
    const bool kit = track >= 0 && track < 16 && isDrums(p().tracks[track]);
    note.velocity = u8(r_.chance(20) ? 0 : r_.between(1, 127));
    note.pitch = u8(r_.below(kit ? 8 : 128));
    note.flags = u8(r_.below(256));
    if (r_.chance(30)) note.locks[0] = {u8(kit ? 12 : 5), 0, u16(r_.below(65536))};
    return note;
  }
  Step randomStep(int track) {
    Step step;
    for (int n = r_.below(5); n > 0; n--) step.notes[r_.below(8)] = randomNote(track);
    return step;
  }
  bool setRun(int track) {
    std::vector<Step> steps(size_t(r_.between(1, 30)));
    for (Step& step : steps) step = randomStep(track);
    return setSteps(p(), track, id(track), steps.data(), int(steps.size()));
  }
  bool drawLane() {
    std::vector<LanePoint> points(size_t(r_.below(12)));
    u32 position = 0;
    for (LanePoint& point : points)
      point.position = position += u32(r_.below(3)) - (r_.chance(2) && position ? 1 : 0);
    return setLanePoints(p(), r_.between(-1, 164), points.data(), int(points.size()));
  }
  bool moveTracks() {
    int map[16];
    for (int i = 0; i < 16; i++) map[i] = i;
    for (int i = 6; i > 0; i--) std::swap(map[i], map[r_.below(i + 1)]);
    if (r_.chance(30)) map[r_.below(7)] = -1;
    if (r_.chance(10)) map[3] = map[4];
    return remapTracks(p(), map);
  }

  test::Random r_;
  ProjectPtr project_ = makeProject();
};

TEST(StoreInvariants, HoldAfterEveryEditAndRefusalsChangeNothing) {
  constexpr int kinds = 18;
  int done[kinds] = {}, refused[kinds] = {};
  for (u32 seed = 1; seed <= 4; seed++) {
    Player player(seed);
    auto before = newProject();
    for (int i = 0; i < 1000; i++) {
      // The last five undo much at once, so they come seldom.
      const int kind = player.below(100) < 94 ? player.below(13) : player.below(kinds);
      std::memcpy(static_cast<void*>(before.get()), &player.p(), sizeof(Project));
      const bool ok = player.edit(kind);
      (ok ? done : refused)[kind]++;
      std::string error;
      ASSERT_TRUE(validateProject(player.p(), error))
          << error << " by edit " << kind << ", " << seed << ":" << i;
      if (!ok) {
        ASSERT_TRUE(sameBytes(player.p(), *before)) << "by edit " << kind << ", " << seed << ":" << i;
      }
    }
    std::string error;
    EXPECT_TRUE(readProjectImage(projectImage(player.p()), *before, error)) << error;
    EXPECT_TRUE(sameBytes(player.p(), *before));
  }
  for (int kind = 0; kind < kinds - 1; kind++) {
    EXPECT_GT(done[kind], 0) << kind;
    EXPECT_TRUE(refused[kind] > 0 || kind == 11 || kind >= 13) << kind;
  }
}

}  // namespace
}  // namespace synth
