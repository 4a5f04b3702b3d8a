// The forms in which Patterns, Notes and Locks may be written, and the bytes that they become.
#include "core/ProjectFile.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/params/Targets.h"
#include "spec/Locks.h"
#include "spec/Rows.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

// A Pattern of the Track (0 is a kit) with these Notes and further keys, played once.
ProjectPtr withNotes(int track, const std::string& notes, const std::string& more = "") {
  const std::string t = std::to_string(track);
  return built(R"({"patterns": [{"track": )" + t + R"(, "notes": [)" + notes + "]" + more +
               R"(}], "clips": [{"track": )" + t + R"(, "at": 0, "pattern": 0}]})");
}

u16 lockOf(const Note& note, int target) {
  for (const LockRec& lock : note.locks)
    if (lock.target == target + 1) return lock.value;
  ADD_FAILURE() << "no Lock on target " << target;
  return 0;
}

TEST(AcceptedNotes, BothFormsMeanTheSame) {
  struct Case {
    int track;
    const char *array, *object;
  };
  constexpr Case cases[] = {
      {1, "[0, 60, 100]", R"({"step": 0, "pitch": 60})"},
      {1, "[0, 60, 100, 192, 0, 0, 16]", R"({"pitch": 60, "step": 0, "chance": 16, "ratchet": 1})"},
      {1, "[4, 60, 90, 300, -5, 7, 8]",
       R"({"step": 4, "pitch": 60, "velocity": 90, "length": 300, "nudge": -5, "slide": true, "accent": true,
           "ratchet": 2, "chance": 8})"},
      {1, "[1023, 127, 127, 65535, 63, 12, 1]",
       R"({"step": 1023, "pitch": 127, "velocity": 127, "length": 65535, "nudge": 63, "ratchet": 4, "chance": 1})"},
      {1, "[0, 60, 100, 1, -64, 2]",
       R"({"step": 0, "pitch": 60, "length": 1, "nudge": -64, "accent": true, "slide": false})"},
      {0, "[3, 5, 100]", R"({"step": 3, "pad": 5})"},
      {0, "[3, 5, 100]", R"({"step": 3, "pitch": 5})"},
  };
  for (const Case& c : cases)
    EXPECT_TRUE(sameBytes(*withNotes(c.track, c.array), *withNotes(c.track, c.object))) << c.array;
}

TEST(AcceptedNotes, FlagsAndChanceShareAByte) {
  auto flags = [](const std::string& note) { return int(withNotes(1, note)->notes[0].flags); };
  EXPECT_EQ(flags("[0, 60, 100, 192, 0, 7, 8]"), 0x87);
  EXPECT_EQ(flags("[0, 60, 100, 192, 0, 15, 1]"), 0x1F);
  EXPECT_EQ(flags("[0, 60, 100, 192, 0, 15, 16]"), 0x0F);
  EXPECT_EQ(flags("[0, 60, 100, 192, 0, 15]"), 0x0F);
  EXPECT_EQ(flags("[0, 60, 100]"), 0);
}

TEST(AcceptedNotes, SlotsAreThePadsOnKitsAndTheFirstFreeOnMelodicTracks) {
  auto slots = [](int track, const std::string& notes) {
    auto p = withNotes(track, notes);
    std::string found;
    for (const NoteRec& n : patternNotes(*p, track, 0))
      found += std::to_string(n.slot) + ":" + std::to_string(n.pitch) + " ";
    return found;
  };
  EXPECT_EQ(slots(0, "[0, 5, 100], [0, 2, 100]"), "2:2 5:5 ");
  EXPECT_EQ(slots(0, "[0, 5, 100], [0, 5, 90]"), "0:5 5:5 ");
  EXPECT_EQ(slots(0, R"({"step": 0, "pad": 1, "slot": 5}, [0, 5, 90])"), "0:5 5:1 ");
  EXPECT_EQ(slots(1, "[0, 64, 100], [0, 60, 100]"), "0:64 1:60 ");
  EXPECT_EQ(
      slots(1, R"({"step": 0, "pitch": 64, "slot": 0}, [0, 60, 100], {"step": 0, "pitch": 62, "slot": 7})"),
      "0:64 1:60 7:62 ");
}

TEST(AcceptedNotes, PatternLocksReachEveryNoteOfAStepOrThoseOfOnePitch) {
  auto p =
      withNotes(1, "[0, 60, 100], [0, 64, 100], [4, 60, 100]",
                R"(, "locks": [[0, "CUTOFF", 1], {"step": 0, "target": "PAN", "value": -1, "pitch": 64}])");
  const auto notes = patternNotes(*p, 1, 0);
  EXPECT_EQ(lockOf(notes[0].note(), automation::CUTOFF), 65535);
  EXPECT_EQ(notes[0].note().lockCount(), 1);
  EXPECT_EQ(lockOf(notes[1].note(), automation::CUTOFF), 65535);
  EXPECT_EQ(lockOf(notes[1].note(), automation::PAN), 0);
  EXPECT_EQ(notes[2].note().lockCount(), 0);
  auto kit = withNotes(0, "[0, 1, 100], [0, 2, 100]",
                       R"(, "locks": [{"step": 0, "pad": 2, "target": "DECAY", "value01": 0.25}])");
  EXPECT_EQ(patternNotes(*kit, 0, 0)[0].note().lockCount(), 0);
  EXPECT_EQ(lockOf(patternNotes(*kit, 0, 0)[1].note(), automation::DECAY), 16384);
}

TEST(AcceptedNotes, LockValuesInTheirUnitBecomeSixteenBits) {
  struct Case {
    int track;
    const char* lock;
    int bits;
  };
  constexpr Case cases[] = {
      {1, R"("PAN", "value": 0)", 32768},          {1, R"("pan", "value": -1)", 0},
      {1, R"("LEVEL", "value": 0.2)", 13107},      {1, R"("SEND_2", "value": 1)", 65535},
      {1, R"("CUTOFF", "value": 200)", 21845},     {1, R"("CUTOFF", "value": 20)", 0},
      {1, R"("CUTOFF", "value": 2000)", 43690},    {1, R"("ATTACK", "value": 5)", 65535},
      {1, R"("EQ_LOW", "value": 9)", 49151},       {1, R"("WIDTH", "value": 1)", 32768},
      {1, R"("GLIDE", "value": 2.5)", 32768},      {1, R"("DRIVE", "value": 1)", 65535},
      {1, R"("insert_drive", "value": 1)", 65535}, {1, R"("PITCH", "value": -24)", 0},
      {1, R"("PITCH", "value": 12)", 49151},       {1, R"("PITCH", "value": 0.5)", 33450},
      {0, R"("PITCH", "value": 24)", 65535},       {0, R"("DECAY", "value": 0.5)", 32768},
      {1, R"("ENGINE_2", "value01": 0.5)", 32768}, {1, R"("MACRO_16", "value": 0.2)", 13107},
      {1, R"("MACRO_1", "value01": 1)", 65535},    {1, R"("PITCH_ENV", "value": 24)", 49151},
      {1, R"("LFO_DEPTH", "value01": 0)", 0},      {1, R"("LOWPASS", "value": 2000)", 32768},
  };
  for (const Case& c : cases) {
    const std::string note = c.track ? R"({"step": 0, "pitch": 60)" : R"({"step": 0, "pad": 0)";
    auto p = withNotes(c.track, note + R"(, "locks": [{"target": )" + c.lock + "}]}");
    EXPECT_EQ(p->notes[0].locks[0].value, c.bits) << c.lock;
    EXPECT_EQ(p->notes[0].note().lockCount(), 1) << c.lock;
  }
}

TEST(AcceptedNotes, EveryLockValueSurvivesItsText) {
  for (int v = 0; v < 65536; v++) {
    const std::string text = json::compact(spec::value01(u16(v)));
    ASSERT_EQ(spec::fromValue01(parsed(text)), v) << text;
  }
}

TEST(AcceptedNotes, FrontsAreListedBeforeOrAfterAndNeedNoClip) {
  const std::string front = R"({"track": 1, "id": 9, "length": 2, "notes": [[0, 72, 80]]})",
                    owner = R"({"track": 1, "id": 4, "length": 6, "front": 9, "notes": [[1, 60, 90]]})",
                    clips = R"(], "clips": [{"track": 1, "at": 0, "pattern": 4}]})";
  auto before = built(R"({"patterns": [)" + front + "," + owner + clips);
  auto after = built(R"({"patterns": [)" + owner + "," + front + clips);
  EXPECT_TRUE(sameBytes(*before, *after));
  EXPECT_EQ(frontOf(*before, 1, 4), patternIndex(*before, 1, 9));
  EXPECT_EQ(verdictOn(parsed(R"({"patterns": [)" + front + "," + owner + clips)).message, "");
  for (const char* wrong : {"4", "7", "true"})
    EXPECT_EQ(verdictOn(parsed(R"({"patterns": [{"track": 1, "id": 4, "front": )" + std::string(wrong) + "}" +
                               clips))
                  .code,
              "invalid_spec")
        << wrong;
  // A front has neither a Clip nor a front, and belongs to one Pattern.
  EXPECT_NE(verdictOn(parsed(R"({"patterns": [)" + front + "," + owner +
                             R"(], "clips": [{"track": 1, "at": 0, "pattern": 9}]})"))
                .message,
            "");
  EXPECT_NE(verdictOn(parsed(R"({"patterns": [{"track": 1, "id": 9, "front": 4},)" + owner + clips)).message,
            "");
  EXPECT_NE(
      verdictOn(parsed(R"({"patterns": [{"track": 1, "id": 3, "front": 9},)" + front + "," + owner + clips))
          .message,
      "");
}

}  // namespace
}  // namespace synth::test
