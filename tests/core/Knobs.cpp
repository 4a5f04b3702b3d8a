// Knobs, what views read, and the selection of Clips.
#include "core/edit/Knobs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "core/ProjectFile.h"
#include "core/edit/LockEdit.h"
#include "core/edit/Reading.h"
#include "core/edit/Selection.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroEdit.h"
#include "support/PlainProject.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

int rowKnob(const char* key) { return knobs::firstParameter + param::find(key)->id; }

TEST(Knobs, MoveTheirTargets) {
  auto p = plainProject();
  const struct {
    int code, target;
  } melodic[] = {{11, automation::CUTOFF},
                 {12, automation::RESONANCE},
                 {13, automation::ATTACK},
                 {14, automation::DECAY},
                 {16, automation::RELEASE},
                 {17, automation::FILTER_ENV},
                 {18, automation::LFO_RATE},
                 {19, automation::LFO_DEPTH},
                 {40, automation::LEVEL},
                 {41, automation::PAN},
                 {42, automation::SEND_1},
                 {43, automation::SEND_2},
                 {60, automation::ENGINE_1},
                 {63, automation::ENGINE_4},
                 {75, automation::GLIDE},
                 {15, -1},
                 {99, -1},
                 {80, -1}};
  for (const auto& k : melodic) EXPECT_EQ(knobs::target(*p, k.code, 1), k.target) << k.code;
  EXPECT_EQ(knobs::target(*p, 11, 0), -1) << "a kit has no such knob";
  EXPECT_EQ(knobs::target(*p, 40, 0), automation::LEVEL);
  EXPECT_EQ(knobs::target(*p, rowKnob("width"), 1), automation::WIDTH);
  EXPECT_EQ(knobs::target(*p, rowKnob("filter_type"), 1), -1);
  EXPECT_EQ(knobs::target(*p, rowKnob("master"), 18), automation::firstBusTarget);
  std::string error;
  macros::add(*p, 1, "WARM", true, 0, error);
  EXPECT_EQ(knobs::target(*p, 80, 1), automation::firstMacroTarget);
  EXPECT_EQ(knobs::trackValue(*p, 80, 1, -1), 0.5f) << "a bipolar Macro's centre";
  EXPECT_TRUE(knobs::setTrackValue(*p, 80, 1, -1, 0.25f));
  EXPECT_EQ(p->tracks[1].macros[0].value, -0.5f);
  EXPECT_EQ(knobs::trackValue(*p, 80, 1, -1), knobs::toLane(automation::firstMacroTarget, 0.25f));
  EXPECT_TRUE(knobs::setTrackValue(*p, 80, 1, -1, -7));
  EXPECT_EQ(p->tracks[1].macros[0].value, -1);
  EXPECT_TRUE(knobs::setTrackValue(*p, 11, 1, -1, 1e9f));
  EXPECT_EQ(knobs::trackValue(*p, 11, 1, -1), 20000);
  EXPECT_FALSE(knobs::setTrackValue(*p, 11, 1, -1, NAN));
  for (int target = 0; target < automation::trackTargets; target++)
    for (float v : {0.0f, 0.25f, 1.0f}) {
      const float value = knobs::fromLane(target, v);
      EXPECT_NEAR(knobs::toLane(target, value), v, 0.02f) << target;
    }
  EXPECT_EQ(knobs::fromLane(automation::PITCH, 0.5f), 0);
  EXPECT_EQ(knobs::fromLane(automation::PITCH, 1), 24);
}

TEST(Knobs, RecordGesturesIntoLanes) {
  auto p = plainProject();
  EXPECT_FALSE(knobs::lane(*p, 11, 1));
  EXPECT_TRUE(knobs::record(*p, 11, 1, 0, 4, 0.2, 0.9));
  EXPECT_TRUE(knobs::lane(*p, 11, 1));
  EXPECT_NEAR(laneValueAt(*p, knobs::automationLane(*p, 11, 1), 2), 0.55, 1e-3);
  EXPECT_STREQ(knobs::record(*p, 11, 1, 4, 0, 0, 0).message, "Invalid recording segment");
  EXPECT_STREQ(knobs::record(*p, 11, 1, NAN, 0, 0, 0).message, "Invalid recording segment");
  EXPECT_STREQ(knobs::record(*p, 15, 1, 0, 1, 0, 0).message, "No such lane");
  EXPECT_TRUE(knobs::clearAutomation(*p, 11, 1));
  EXPECT_EQ(knobs::automationLane(*p, 11, 1), -1);
}

TEST(Knobs, LockAllSelectedNotesOrNone) {
  auto p = plainProject();
  clearArrangement(*p);
  addLoop(*p, 1, 16, 0, 0);
  Note n;
  n.velocity = 100;
  for (int step : {0, 4}) setNote(*p, 1, 0, step, 0, n);
  const knobs::NoteAt both[] = {{0, 0, 60}, {0, 4, 60}}, missing[] = {{0, 0, 60}, {0, 5, 60}};
  const auto before = copyOf(*p);
  EXPECT_STREQ(knobs::setLocks(*p, *before, 18, 1, both, 4).message, "This knob cannot lock notes");
  EXPECT_STREQ(knobs::setLocks(*p, *before, 11, 1, {}, 4).message, "Select notes to lock");
  EXPECT_STREQ(knobs::setLocks(*p, *before, 11, 1, both, NAN).message, "Invalid lock value");
  EXPECT_FALSE(knobs::setLocks(*p, *before, 11, 1, missing, 900));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(knobs::setLocks(*p, *before, 11, 1, both, 900).changed);
  EXPECT_TRUE(knobs::setLocks(*p, *before, 11, 1, both, 1200).changed)
      << "the drag goes on from where it began";
  const knobs::LockView view = knobs::lockView(*p, 11, 1, both);
  EXPECT_TRUE(view.all);
  EXPECT_NEAR(view.lowest, 1200, 1);
  EXPECT_EQ(view.lowest, view.highest);
  EXPECT_TRUE(knobs::patternLocked(*p, 11, 1, 0));
  EXPECT_TRUE(knobs::clearLocks(*p, 11, 1, both).changed);
  EXPECT_FALSE(knobs::patternLocked(*p, 11, 1, 0));
  // All of one knob's Locks at once leave those of another, in a list without gaps.
  EXPECT_STREQ(knobs::clearAllLocks(*p, 18, 1).message, "This knob cannot lock notes");
  EXPECT_STREQ(knobs::clearAllLocks(*p, 11, 1).message, "This knob has no lock");
  const auto unlocked = copyOf(*p);
  EXPECT_TRUE(knobs::setLocks(*p, *unlocked, 11, 1, both, 900));
  const auto once = copyOf(*p);
  EXPECT_TRUE(knobs::setLocks(*p, *once, 12, 1, both, 0.5f));
  EXPECT_TRUE(knobs::anyLocked(*p, 11, 1));
  EXPECT_FALSE(knobs::anyLocked(*p, 11, 2));
  EXPECT_TRUE(knobs::clearAllLocks(*p, 11, 1).changed);
  EXPECT_FALSE(knobs::anyLocked(*p, 11, 1));
  EXPECT_TRUE(knobs::lockView(*p, 12, 1, both).all);
  std::string error;
  EXPECT_TRUE(validateProject(*p, error)) << error;
  EXPECT_EQ(knobs::lockKind(*p, rowKnob("pad_pitch"), 0), knobs::PitchLock);
  EXPECT_EQ(knobs::lockKind(*p, rowKnob("pad_tone"), 0), knobs::NoLock);
  EXPECT_EQ(knobs::lockNormalized(knobs::PitchLock, automation::PITCH, -24), 0);
  EXPECT_EQ(knobs::lockNormalized(knobs::PitchLock, automation::PITCH, 24), 1);
}

TEST(Knobs, ARecorderStartsStopsAndBeginsAnewWithTheLoop) {
  knobs::Recorder r;
  auto at = [](bool playing, double position) { return knobs::Transport{playing, position, 0}; };
  EXPECT_EQ(r.advance(true, false, at(false, 0)), knobs::Recorder::Nothing);
  EXPECT_EQ(r.advance(true, false, at(true, 0)), knobs::Recorder::Start);
  EXPECT_EQ(r.advance(true, false, at(true, 15)), knobs::Recorder::Nothing);
  EXPECT_EQ(r.advance(true, true, at(true, 0.5)), knobs::Recorder::Nothing) << "held over the loop";
  EXPECT_EQ(r.advance(true, false, at(true, 14)), knobs::Recorder::Nothing);
  EXPECT_EQ(r.advance(true, false, at(true, 0.5)), knobs::Recorder::Restart);
  EXPECT_EQ(r.advance(false, false, at(true, 1)), knobs::Recorder::Stop);
  EXPECT_FALSE(knobs::cycleStart(at(true, 3), at(false, 0)));
  EXPECT_NEAR(knobs::pulse(0), 0.509, 0.001);
  EXPECT_NEAR(knobs::pulse(0.2), 1, 1e-9);
  EXPECT_NEAR(knobs::pulse(4.2), 1, 1e-9);
  EXPECT_NEAR(knobs::pulse(3.99), 0.509, 0.001);
}

TEST(Reading, NamesChords) {
  auto name = [](std::vector<int> pitches, bool flats = false) {
    return workspace::chordName(pitches.data(), int(pitches.size()), flats);
  };
  EXPECT_EQ(name({60, 64, 67}), "C");
  EXPECT_EQ(name({64, 67, 72}), "C/E");
  EXPECT_EQ(name({60, 67}), "C5");
  EXPECT_EQ(name({60, 72}), "");
  EXPECT_EQ(name({60}), "");
  EXPECT_EQ(name({57, 60, 64, 67}), "Am7");
  EXPECT_EQ(name({60, 64, 67, 69}), "C6");
  EXPECT_EQ(name({63, 67, 70}, true), "Eb");
  EXPECT_EQ(name({63, 67, 70}), "D#");
  EXPECT_EQ(name({55, 59, 62, 65}), "G7");
  EXPECT_EQ(name({60, 61, 62}), "");
}

TEST(Reading, LoopsLengthsAndFaults) {
  auto p = plainProject();
  clearArrangement(*p);
  EXPECT_EQ(workspace::totalSteps(*p), 16u);
  EXPECT_FALSE(workspace::resolveLoop(*p, true).any());
  addLoop(*p, 1, 64, 0, 0);
  addMarker(*p, 32, "B");
  EXPECT_EQ(workspace::resolveLoop(*p, true).end, 32u);
  p->loopStart = 8;
  p->loopEnd = 24;
  EXPECT_EQ(workspace::resolveLoop(*p, true).start, 8u);
  EXPECT_FALSE(workspace::resolveLoop(*p, false).any());
  EXPECT_EQ(workspace::buildIssues(*p), "Track 1 pattern 0 is played but holds no notes");
  Note n;
  n.velocity = 100;
  n.length = 512;
  n.nudge = -64;
  setNote(*p, 1, 0, 4, 0, n);
  EXPECT_EQ(workspace::buildIssues(*p), "");
  const auto spans = workspace::spans(*p, 1, 0);
  ASSERT_EQ(spans.size(), 1u);
  EXPECT_EQ(spans[0].start, 3.5f);
  EXPECT_EQ(spans[0].end, 5.5f);
  EXPECT_EQ(workspace::playheadStep({false, 0, 4, 0}), -1);
  EXPECT_EQ(workspace::playheadStep({true, 0, 4, 0.5}), 4.5);
  EXPECT_EQ(workspace::playheadStep({false, 8, 4, 0}), -1);
  EXPECT_EQ(workspace::trackIcon(*p, 0), "drums");
  EXPECT_EQ(workspace::trackIcon(*p, 16), "synth");
  EXPECT_EQ(workspace::trackIcon(*p, 0, 0), "drums") << "a kit is one whatever its Role";
  EXPECT_EQ(workspace::trackIcon(*p, 2, 0), "bass");
  p->tracks[1].engine = VOICE;
  EXPECT_EQ(workspace::trackIcon(*p, 1), "microphone");
}

TEST(Selection, KeepsClipsThatAreThere) {
  auto p = plainProject();
  clearArrangement(*p);
  addLoop(*p, 1, 16, 0, 0);
  addLoop(*p, 2, 16, 32, 0);
  workspace::Selection s;
  u32 start = 0, end = 0;
  EXPECT_FALSE(s.span(*p, start, end));
  s.select(*p, {1, 0}, false);
  s.select(*p, {2, 32}, true);
  s.select(*p, {2, 33}, true);
  EXPECT_EQ(s.keys().size(), 2u);
  EXPECT_TRUE(s.span(*p, start, end));
  EXPECT_EQ(start, 0u);
  EXPECT_EQ(end, 48u);
  s.select(*p, {1, 0}, true);
  EXPECT_FALSE(s.contains({1, 0}));
  const int rows[] = {1};
  removeClips(*p, rows, 1);
  s.sanitize(*p);
  EXPECT_TRUE(s.keys().empty());
}

}  // namespace
}  // namespace synth::test
