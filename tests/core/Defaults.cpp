// What breaks if a new document, a new Track or a switched sound does not begin where it should.
#include "core/model/Defaults.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/edit/Workspace.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "support/PlainProject.h"

namespace synth {
namespace {

TEST(Defaults, MakeADocumentOfFourEmptyLoops) {
  std::string error;
  auto p = makeProject();
  EXPECT_TRUE(validateProject(*p, error)) << error;
  EXPECT_TRUE(validateProject(defaultProject(), error)) << error;
  EXPECT_TRUE(validateProject(*makeBlank(), error)) << error;
  EXPECT_EQ(p->track_count, 4);
  EXPECT_EQ(std::tuple(p->patternCount, p->clipCount, p->noteCount, songEnd(*p)), std::tuple(4, 4, 0, 16u));
  for (int t = 0; t < 4; t++) {
    EXPECT_EQ(firstPattern(*p, t), 0);
    EXPECT_EQ(trackClips(*p, t), 1);
  }
  EXPECT_EQ(defaultProject().track_count, 16);
  EXPECT_EQ(defaultProject().tracks[3].origin, 255);
  EXPECT_TRUE(sameBytes(*p, *makeProject()));
}

TEST(Defaults, GiveEachStarterSlotItsNameAndOrigin) {
  const char* names[] = {"DRUMS",   "BASS",    "SYNTH A", "SYNTH B", "SYNTH C", "SYNTH D",
                         "SYNTH E", "SYNTH F", "SYNTH G", "SYNTH H", "SYNTH I", "SYNTH J",
                         "SYNTH K", "SYNTH L", "SYNTH M", "SYNTH N"};
  auto p = makeProject();
  for (int i = 0; i < 16; i++) {
    EXPECT_EQ(nameText(p->tracks[i].name), names[i]);
    EXPECT_EQ(p->tracks[i].origin, i);
    EXPECT_EQ(isDrums(p->tracks[i]), i == 0);
    EXPECT_TRUE(sameBytes(originTrack(p->tracks[i]), starterTrack(i)));
  }
  EXPECT_TRUE(sameBytes(starterTrack(-1), starterTrack(0)) && sameBytes(starterTrack(99), starterTrack(15)));
  EXPECT_TRUE(sameBytes(originTrack(defaultTrack(DRUMS)), defaultTrack(DRUMS)));
  Track drums = defaultTrack(DRUMS);
  drums.track_kind = MELODIC;
  EXPECT_TRUE(sameBytes(drums, defaultTrack(MELODIC)));
}

TEST(Defaults, MixTheStarters) {
  auto p = makeProject();
  EXPECT_EQ(std::tuple(p->tracks[1].level, p->tracks[1].send_1, p->tracks[1].send_2),
            std::tuple(0.3f, 0.12f, 0.03f));
}

TEST(Defaults, FindAFreeName) {
  auto p = makeProject();
  EXPECT_EQ(freeTrackName(*p, "lead"), "LEAD");
  EXPECT_EQ(freeTrackName(*p, "Bass"), "BASS 2");
  setName(p->tracks[3].name, "BASS 2");
  EXPECT_EQ(freeTrackName(*p, "BASS"), "BASS 3");
  setName(p->tracks[2].name, "A LONG NAME!");
  EXPECT_EQ(freeTrackName(*p, "A long name! and more"), "A LONG NAM 2");
  // Only active Tracks count.
  EXPECT_EQ(freeTrackName(*p, "SYNTH C"), "SYNTH C");
}

TEST(Defaults, InferTheTracksThatAreUsed) {
  auto p = makeProject();
  EXPECT_EQ(inferTrackCount(*p), 1);
  Note note;
  note.velocity = 100;
  setNote(*p, 2, 0, 3, 0, note);
  EXPECT_EQ(inferTrackCount(*p), 3);
  p->tracks[7].cutoff = 400;
  EXPECT_EQ(inferTrackCount(*p), 8);
  p->lanes[laneRow(11, 7)].enabled = 1;
  EXPECT_TRUE(trackHasContent(*p, 11));
  EXPECT_EQ(inferTrackCount(*p), 12);
  EXPECT_FALSE(trackHasContent(*p, 16) || trackHasContent(*p, 12));
}

TEST(Defaults, SwitchTheEngineAndKeepTheRestOfTheSound) {
  Track t = test::plainProject()->tracks[2];
  t.engine1 = 0.9f;
  t.cutoff = 300;
  t.drawbar_3 = 0.1f;
  setName(t.preset_name, "SOMETHING");
  t.pins.custom = t.pins.count = 1;
  t.pins.ids[0] = 114;
  t.macroCount = 1;
  setName(t.macros[0].name, "MOVE");
  Track want = t;
  for (int kind : {-1, 11, 99}) setSynthKind(t, kind);
  EXPECT_TRUE(sameBytes(t, want));
  setSynthKind(t, ORGAN);
  want.engine = ORGAN;
  want.engine1 = want.engine2 = want.engine3 = want.engine4 = 0.5f;
  setName(want.preset_name, "");
  want.pins = PinList{};
  want.macros[0] = MacroRec{};
  want.macroCount = 0;
  EXPECT_TRUE(sameBytes(t, want));
}

TEST(Defaults, AssignAndClearSamples) {
  Track t;
  u8 hash[32] = {1, 2, 3};
  assignSample(t, hash, "vocal chop long", 200, -500);
  EXPECT_EQ(nameText(t.sample_name), "VOCAL CHOP L");
  EXPECT_EQ(std::tuple(t.sample_root, t.sample_tune, t.sample_hash[2]), std::tuple(127, -100.0f, 3));
  clearSample(t);
  EXPECT_EQ(std::tuple(t.sample_root, t.sample_tune, t.sample_hash[0]), std::tuple(0, 0.0f, 0));
  EXPECT_EQ(nameText(t.sample_name), "");
}

TEST(Defaults, SetAnLfoToAReadyMadeMovement) {
  Track t;
  t.lfo_sync = t.lfo2_sync = 4;
  t.lfo_phase = 0.3f;
  applyLfoQuick(t, 0, LfoQuick::Wobble);
  applyLfoQuick(t, 1, LfoQuick::Vibrato);
  EXPECT_EQ(std::tuple(t.lfo_shape, t.lfo_target, t.lfo_sync, t.lfo_rate, t.lfo_depth, t.lfo_phase),
            std::tuple(1, 0, 0, 2.0f, 0.6f, 0.3f));
  EXPECT_EQ(std::tuple(t.lfo2_shape, t.lfo2_target, t.lfo2_sync, t.lfo2_rate, t.lfo2_depth),
            std::tuple(0, 1, 0, 5.5f, 0.2f));
  EXPECT_STREQ(lfoQuickName(LfoQuick::Drift), "DRIFT");
}

TEST(Defaults, CleanNamesOnTheirWayIn) {
  Track t;
  setName(t.name, "\tsynth \xC3\xA9~ long name  ");
  EXPECT_EQ(nameText(t.name), "SYNTH ~ LONG");
  setName(t.name, "a  ");
  EXPECT_TRUE(std::all_of(t.name + 1, t.name + 16, [](char c) { return c == 0; }));
  setName(t.preset_name, "abcdefghijklmnopqrstuvw");
  EXPECT_EQ(nameText(t.preset_name), "ABCDEFGHIJKLMNOPQRST");
  auto p = newProject();
  EXPECT_TRUE(setProjectName(*p, std::string(63, 'x')));
  EXPECT_FALSE(setProjectName(*p, std::string(64, 'y')) || setProjectName(*p, std::string("a\0b", 3)));
  EXPECT_EQ(projectName(*p), std::string(63, 'x'));
  EXPECT_TRUE(setProjectName(*p, "") && sameBytes(*p, defaultProject()));
  EXPECT_EQ(sendName(*p, SendI), "SEND I · DELAY");
  EXPECT_STREQ(padName(defaultTrack(DRUMS), 2), "CLOSED HAT");
}

TEST(Defaults, MakeATrackOfTheOtherKind) {
  auto p = makeProject();
  p->lanes[laneRow(1, 0)] = {1, 5, 0, 0};
  p->lanes[laneRow(1, 1)] = {1, 7, 0, 0};
  EXPECT_FALSE(workspace::switchTrackKind(*p, 1, MELODIC) || workspace::switchTrackKind(*p, 16, DRUMS) ||
               workspace::switchTrackKind(*p, 1, 2));
  EXPECT_TRUE(workspace::switchTrackKind(*p, 1, DRUMS));
  EXPECT_TRUE(isDrums(p->tracks[1]));
  EXPECT_EQ(trackClips(*p, 1), 0);
  // CUTOFF goes, LEVEL stays; a default name becomes the kind's.
  EXPECT_EQ(p->lanes[laneRow(1, 0)].target, 0);
  EXPECT_EQ(p->lanes[laneRow(1, 1)].target, 7);
  EXPECT_EQ(nameText(p->tracks[1].name).substr(0, 5), "DRUMS");
  setName(p->tracks[1].name, "MY KIT");
  EXPECT_TRUE(workspace::switchTrackKind(*p, 1, MELODIC));
  EXPECT_EQ(nameText(p->tracks[1].name), "MY KIT");
  std::string error;
  EXPECT_TRUE(validateProject(*p, error)) << error;
}

}  // namespace
}  // namespace synth
