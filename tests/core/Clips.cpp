// What breaks if Clips overlap, run past the Song, or a Note is written where no slot is.
#include "core/model/Clips.h"

#include <gtest/gtest.h>

#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Validate.h"

namespace synth {
namespace {

ClipRec clip(u32 start, u32 length, int offset = 0, int repeats = 0, int pattern = 0) {
  ClipRec c;
  c.track = 1;
  c.pattern = u16(pattern);
  c.start = start;
  c.length = length;
  c.offset = u16(offset);
  c.repeats = u8(repeats);
  return c;
}

// Track 1 with a Pattern 0 of 16 Steps that plays at 100.
ProjectPtr song() {
  auto p = makeBlank();
  addLoop(*p, 1, 16, 100, 0);
  return p;
}

TEST(Clips, AreRefusedWhereARuleWouldBreak) {
  auto p = song();
  addPatternAt(*p, 1, 7, 8);
  parkFront(*p, 1, 7, 2);
  auto before = copyOf(*p);
  ClipRec wrong = clip(0, 16);
  wrong.track = 16;
  EXPECT_FALSE(addClip(*p, wrong));
  for (const ClipRec& c :
       {clip(0, 0), clip(1048570, 7, 0, 1), clip(1048576, 1), clip(0xFFFFFFFF, 16), clip(0, 16, 16),
        clip(0, 20), clip(0, 13, 4), clip(0, 8, 0, 0, 3), clip(0, 2, 0, 0, 1), clip(0, 16, 0, 2)})
    EXPECT_FALSE(addClip(*p, c)) << c.start << " " << c.length;
  for (auto [start, length] : {std::pair(100u, 16u), {85u, 16u}, {115u, 1u}, {104u, 4u}, {0u, 200u}})
    EXPECT_FALSE(addClip(*p, clip(start, length, 0, 1))) << start;
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Clips, MayTouchAndMayRepeat) {
  auto p = song();
  EXPECT_TRUE(addClip(*p, clip(84, 16)));
  EXPECT_TRUE(addClip(*p, clip(116, 20, 0, 1)));
  EXPECT_TRUE(addClip(*p, clip(1048576 - 16, 16)));
  EXPECT_TRUE(addClip(*p, clip(0, 12, 4)));
  EXPECT_FALSE(addClip(*p, clip(12, 73, 0, 1)));
  EXPECT_EQ(trackClips(*p, 1), 5);
  EXPECT_EQ(songEnd(*p), 1048576u);
  EXPECT_TRUE(clipWraps(*p, p->clips[3]));
  EXPECT_FALSE(clipWraps(*p, p->clips[0]));
  std::string error;
  EXPECT_TRUE(validateArenas(*p, error)) << error;
}

TEST(Clips, FillTheirStoreAndNoMore) {
  auto p = song();
  for (u32 i = 1; i < 1024; i++) ASSERT_TRUE(addClip(*p, clip(100 + 16 * i, 16)));
  auto before = copyOf(*p);
  EXPECT_FALSE(addClip(*p, clip(0, 16)));
  EXPECT_EQ(addLoop(*p, 2, 16, 0, 0), -1);
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Clips, AreFoundByStep) {
  auto p = song();
  addClip(*p, clip(140, 10));
  addLoop(*p, 0, 16, 0, 0);
  const int first = 1, second = 2;
  EXPECT_EQ(clipAt(*p, 1, 99), -1);
  EXPECT_EQ(clipAt(*p, 1, 100), first);
  EXPECT_EQ(clipAt(*p, 1, 115), first);
  EXPECT_EQ(clipAt(*p, 1, 116), -1);
  EXPECT_EQ(clipFrom(*p, 1, 0), first);
  EXPECT_EQ(clipFrom(*p, 1, 110), first);
  EXPECT_EQ(clipFrom(*p, 1, 116), second);
  EXPECT_EQ(clipFrom(*p, 1, 150), -1);
  EXPECT_EQ(clipNear(*p, 1, 0), first);
  EXPECT_EQ(clipNear(*p, 1, 127), first);
  EXPECT_EQ(clipNear(*p, 1, 129), second);
  EXPECT_EQ(clipNear(*p, 1, 5000), second);
  EXPECT_EQ(clipNear(*p, 2, 0), -1);
  // The last row is not the last end.
  p->clips[0].length = 500;
  EXPECT_EQ(songEnd(*p), 500u);
}

TEST(Clips, KnowTheirPhase) {
  auto p = song();
  ClipRec c = clip(200, 40, 4, 1);
  EXPECT_EQ(clipPhase(*p, c, 214), 2);
  EXPECT_EQ(clipPhase(*p, c, 200), 4);
  EXPECT_EQ(clipPhase(*p, c, 239), 11);
  setPatternLengthKeepingPasses(*p, 1, 0, 1);
  EXPECT_EQ(clipPhase(*p, c, 214), 0);
  c.pattern = 99;
  EXPECT_EQ(clipPhase(*p, c, 214), 0);
}

TEST(Clips, TakeTheirPatternAlongWhenTheLastOneGoes) {
  auto p = song();
  addClip(*p, clip(0, 16));
  Note note;
  note.velocity = 1;
  setNote(*p, 1, 0, 0, 0, note);
  const int wrong[] = {0, 9}, one[] = {0}, both[] = {1, 0, 1};
  auto before = copyOf(*p);
  EXPECT_FALSE(removeClips(*p, wrong, 2));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(removeClips(*p, one, 1));
  EXPECT_EQ(patternIndex(*p, 1, 0), 0);
  p = copyOf(*before);
  EXPECT_TRUE(removeClips(*p, both, 3));
  EXPECT_TRUE(sameBytes(*p, *makeBlank()));
}

TEST(Clips, ComeWithTheirLoop) {
  auto p = song();
  EXPECT_EQ(addLoop(*p, 1, 8, 0, 3), 1);
  EXPECT_EQ(std::tuple(p->clips[0].length, p->clips[0].offset, p->clips[0].repeats), std::tuple(8u, 3, 1));
  auto before = copyOf(*p);
  EXPECT_EQ(addLoop(*p, 1, 16, 90, 0), -1);
  EXPECT_EQ(addLoop(*p, 1, 16, 1048570, 0), -1);
  EXPECT_EQ(addLoop(*p, 1, 16, 200, 16), -1);
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Notes, StayInTheirSlots) {
  auto p = song();
  Step step;
  for (int slot : {1, 6}) {
    step.notes[slot].velocity = 90;
    step.notes[slot].pitch = u8(40 + slot);
    step.notes[slot].locks[0] = {5, 0, 77};
  }
  EXPECT_TRUE(setStep(*p, 1, 0, 900, step));
  EXPECT_TRUE(sameBytes(stepAt(*p, 1, 0, 900), step));
  EXPECT_EQ(patternExtent(*p, 1, 0), 901);
  EXPECT_EQ(stepNotes(*p, 1, 0, 900)[1].slot, 6);
  EXPECT_EQ(step.freeSlot(false, 6), 0);
  EXPECT_EQ(step.freeSlot(true, 5), 5);
  EXPECT_EQ(step.freeSlot(true, 6), 0);
  auto before = copyOf(*p);
  EXPECT_FALSE(setStep(*p, 1, 0, 1024, step) || setStep(*p, 1, 0, -1, step) || setStep(*p, 1, 5, 0, step));
  EXPECT_FALSE(setNote(*p, 1, 0, 0, 8, step.notes[1]) || setNote(*p, 2, 0, 0, 0, step.notes[1]));
  EXPECT_TRUE(setSteps(*p, 9, 9, &step, 0));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(setNote(*p, 1, 0, 900, 6, Note{}));
  EXPECT_EQ(stepAt(*p, 1, 0, 900).count(), 1);
  EXPECT_TRUE(setStep(*p, 1, 0, 900, Step{}));
  EXPECT_TRUE(sameBytes(*p, *song()));
}

TEST(Notes, AreReplacedByTheRun) {
  auto p = song();
  std::vector<Step> run(4);
  for (Step& s : run) s.notes[2].velocity = 50;
  EXPECT_TRUE(setSteps(*p, 1, 0, run.data(), 4));
  setNote(*p, 1, 0, 9, 0, run[0].notes[2]);
  run[1] = {};
  EXPECT_TRUE(setSteps(*p, 1, 0, run.data(), 2));
  std::string steps;
  for (const NoteRec& n : patternNotes(*p, 1, 0)) steps += std::to_string(n.step) + " ";
  EXPECT_EQ(steps, "0 2 3 9 ");
}

TEST(Notes, FillTheirStoreAndNoMore) {
  auto p = song();
  addLoop(*p, 1, 16, 0, 0);
  std::vector<Step> all(1024);
  for (Step& s : all)
    for (Note& n : s.notes) n.velocity = 1;
  EXPECT_TRUE(setSteps(*p, 1, 0, all.data(), 1024) && setSteps(*p, 1, 1, all.data(), 1023));
  EXPECT_TRUE(setStep(*p, 1, 1, 1023, all[0]));
  EXPECT_EQ(p->noteCount, 16384);
  addLoop(*p, 2, 16, 0, 0);
  std::string error;
  EXPECT_TRUE(validateProject(*p, error)) << error;
  auto before = copyOf(*p);
  EXPECT_FALSE(setNote(*p, 2, 0, 0, 0, all[0].notes[0]));
  EXPECT_FALSE(setSteps(*p, 2, 0, all.data(), 16));
  EXPECT_EQ(clonePattern(*p, 1, 0), -1);
  EXPECT_TRUE(setStep(*p, 1, 1, 500, all[0]));
  EXPECT_TRUE(sameBytes(*p, *before));
}

}  // namespace
}  // namespace synth
