// What breaks if Patterns, their fronts and their Notes lose each other, or a Clip plays another length.
#include "core/model/Patterns.h"

#include <gtest/gtest.h>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/model/Validate.h"

namespace synth {
namespace {

void expectValid(const Project& p) {
  std::string error;
  EXPECT_TRUE(validateProject(p, error)) << error;
}

Note hit(int pitch) {
  Note note;
  note.velocity = 100;
  note.pitch = u8(pitch);
  return note;
}

// Steps of a Pattern that hold a Note, as "pitch@step".
std::string played(const Project& p, int track, int id) {
  std::string text;
  for (const NoteRec& n : patternNotes(p, track, id))
    text += std::to_string(n.pitch) + "@" + std::to_string(n.step) + " ";
  return text;
}

// Track 1 with one Pattern of 16 Steps, a Note on every fourth and one past the end.
ProjectPtr song() {
  auto p = makeProject();
  for (int s : {0, 4, 8, 12, 20}) setNote(*p, 1, 0, s, 0, hit(60 + s));
  return p;
}

TEST(Patterns, TakeTheFirstFreeIdAndAClampedLength) {
  auto p = makeBlank();
  for (int id : {0, 1, 3, 7}) EXPECT_TRUE(addPatternAt(*p, 5, id, 16));
  EXPECT_FALSE(addPatternAt(*p, 5, 3, 16));
  EXPECT_EQ(freePatternId(*p, 5), 2);
  EXPECT_EQ(addPattern(*p, 5, 0), 2);
  EXPECT_EQ(addPattern(*p, 5, 2000), 4);
  EXPECT_EQ(addPattern(*p, 4, 8), 0);
  EXPECT_EQ(patternLength(*p, 5, 2), 1);
  EXPECT_EQ(patternLength(*p, 5, 4), 1024);
  EXPECT_EQ(patternLength(*p, 5, 6), 0);
  EXPECT_EQ(patternIndex(*p, 5, 7), 6);
  EXPECT_EQ(patternIndex(*p, 4, 7), -1);
  EXPECT_EQ(addPattern(*p, 16, 8), -1);
  EXPECT_EQ(addPattern(*p, -1, 8), -1);
  EXPECT_EQ(firstPattern(*p, 6), -1);
}

TEST(Patterns, FillTheirStoreAndNoMore) {
  auto full = makeBlank();
  for (int i = 0; i < 256; i++) ASSERT_EQ(addLoop(*full, i % 16, 16, u32(i / 16) * 16, 0), i / 16);
  expectValid(*full);
  auto before = copyOf(*full);
  EXPECT_EQ(addPattern(*full, 3, 16), -1);
  EXPECT_EQ(clonePattern(*full, 3, 0), -1);
  EXPECT_EQ(addLoop(*full, 3, 16, 5000, 0), -1);
  EXPECT_FALSE(parkFront(*full, 3, 0, 4));
  EXPECT_TRUE(sameBytes(*full, *before));
}

TEST(Patterns, ParkAFrontAndTakeItBack) {
  auto p = song();
  auto before = copyOf(*p);
  EXPECT_TRUE(parkFront(*p, 1, 0, 5));
  EXPECT_EQ(played(*p, 1, 0), "68@3 72@7 80@15 ");
  const int front = frontOf(*p, 1, 0);
  ASSERT_GE(front, 0);
  EXPECT_EQ(p->patterns[front].isFront, 1);
  EXPECT_EQ(std::pair(patternLength(*p, 1, 0), int(p->patterns[front].length)), std::pair(11, 5));
  EXPECT_EQ(played(*p, 1, p->patterns[front].id), "60@0 64@4 ");
  EXPECT_EQ(firstPattern(*p, 1), 0);
  expectValid(*p);
  EXPECT_TRUE(parkFront(*p, 1, 0, 4));
  EXPECT_EQ(played(*p, 1, p->patterns[frontOf(*p, 1, 0)].id), "60@0 64@4 68@8 ");
  EXPECT_TRUE(unparkFront(*p, 1, 0, 7));
  EXPECT_EQ(played(*p, 1, 0), "64@2 68@6 72@10 80@18 ");
  EXPECT_EQ(patternLength(*p, 1, 0), 14);
  expectValid(*p);
  EXPECT_TRUE(unparkFront(*p, 1, 0, 2));
  EXPECT_EQ(frontOf(*p, 1, 0), -1);
  // Notes and Patterns are back; what becomes of the Clip is the caller's.
  for (auto* q : {p.get(), before.get()}) q->clips[1] = {};
  EXPECT_TRUE(sameBytes(*p, *before));
}

TEST(Patterns, RefuseFrontsThatDoNotFit) {
  auto p = song();
  addPattern(*p, 2, 1000);
  auto before = copyOf(*p);
  for (int steps : {0, -1, 16, 17}) EXPECT_FALSE(parkFront(*p, 1, 0, steps)) << steps;
  EXPECT_FALSE(parkFront(*p, 1, 9, 4) || unparkFront(*p, 1, 9, 4) || unparkFront(*p, 1, 0, 0));
  EXPECT_FALSE(unparkFront(*p, 1, 0, 1009));
  EXPECT_TRUE(sameBytes(*p, *before));
  EXPECT_TRUE(parkFront(*p, 2, 1, 900));
  const int front = p->patterns[frontOf(*p, 2, 1)].id;
  EXPECT_FALSE(parkFront(*p, 2, front, 1));
  EXPECT_FALSE(unparkFront(*p, 2, front, 1));
  // Steps that the front never held come back as silence.
  EXPECT_TRUE(unparkFront(*p, 2, 1, 924));
  EXPECT_EQ(patternLength(*p, 2, 1), 1024);
  // A front holds 1024 Steps at most.
  EXPECT_TRUE(parkFront(*p, 2, 1, 1023));
  setPatternLengthKeepingPasses(*p, 2, 1, 20);
  EXPECT_FALSE(parkFront(*p, 2, 1, 2));
  EXPECT_TRUE(parkFront(*p, 2, 1, 1));
}

TEST(Patterns, TakeTheirFrontAlong) {
  auto p = song();
  parkFront(*p, 1, 0, 5);
  const int copy = clonePattern(*p, 1, 0);
  ASSERT_EQ(copy, 2);
  const int frontCopy = p->patterns[frontOf(*p, 1, copy)].id;
  EXPECT_EQ(frontCopy, 3);
  EXPECT_EQ(played(*p, 1, copy), played(*p, 1, 0));
  EXPECT_EQ(played(*p, 1, frontCopy), "60@0 64@4 ");
  ClipRec clip;
  clip.track = 1;
  clip.pattern = u16(copy);
  clip.start = 100;
  clip.length = 11;
  EXPECT_TRUE(addClip(*p, clip));
  expectValid(*p);
  const int row = clipAt(*p, 1, 100);
  EXPECT_TRUE(removeClips(*p, &row, 1));
  EXPECT_EQ(patternIndex(*p, 1, copy), -1);
  EXPECT_EQ(patternIndex(*p, 1, frontCopy), -1);
  expectValid(*p);
  EXPECT_EQ(clonePattern(*p, 1, 99), -1);
}

TEST(Patterns, KeepTheirPassesWhenTheLengthChanges) {
  auto p = makeBlank();
  addPatternAt(*p, 0, 0, 16);
  auto clip = [&](u32 start, u32 length, int offset) {
    ClipRec c;
    c.start = start;
    c.length = length;
    c.offset = u16(offset);
    c.repeats = clipWraps(*p, c);
    EXPECT_TRUE(addClip(*p, c));
  };
  clip(0, 32, 0);
  clip(40, 8, 6);
  clip(100, 24, 12);
  clip(1048560, 16, 0);
  EXPECT_FALSE(setPatternLengthKeepingPasses(*p, 0, 1, 8));
  EXPECT_TRUE(setPatternLengthKeepingPasses(*p, 0, 0, 24));
  // Two passes of 24 would be 48, but the next Clip stands at 40; the last one ends with the Song.
  const u32 lengths[] = {40, 12, 36, 16};
  for (int i = 0; i < 4; i++) EXPECT_EQ(p->clips[i].length, lengths[i]) << i;
  EXPECT_EQ(p->clips[2].offset, 12);
  expectValid(*p);
  EXPECT_TRUE(setPatternLengthKeepingPasses(*p, 0, 0, 5));
  EXPECT_EQ(p->clips[1].length, 3u);
  EXPECT_EQ(std::pair(int(p->clips[1].offset), int(p->clips[1].repeats)), std::pair(1, 0));
  EXPECT_EQ(std::pair(int(p->clips[2].offset), int(p->clips[2].repeats)), std::pair(2, 1));
  expectValid(*p);
}

}  // namespace
}  // namespace synth
