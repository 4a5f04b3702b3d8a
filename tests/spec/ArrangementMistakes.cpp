// Mistakes in Patterns, Notes, Locks, Clips, Lanes and Markers: what is said, under which code.
#include "support/Cli.h"

namespace synth::test {
namespace {

// A Pattern's Notes and one Note's Locks, open at the place of the mistake. No Clip is needed: Notes are read
// before.
const std::string melodicNotes = R"({"patterns": [{"track": 1, "notes": [)",
                  kitNotes = R"({"patterns": [{"track": 0, "notes": [)", notesEnd = "]}]}",
                  melodicLocks = melodicNotes + R"({"step": 0, "pitch": 60, "locks": [)",
                  kitLocks = kitNotes + R"({"step": 0, "pad": 0, "locks": [)", locksEnd = "]}" + notesEnd;

std::string repeated(const std::string& item, int times) {
  std::string out;
  for (int i = 0; i < times; i++) out += (i ? ", " : "") + item;
  return out;
}

TEST(ArrangementMistakes, Patterns) {
  expectMistakes("invalid_spec", R"({"patterns": )", "}",
                 {{R"([{"notes": []}])", "patterns[0] needs \"track\""},
                  {R"([{"track": 1}, {"track": 1, "id": 0}])", "Track 1 has two patterns with id 0"},
                  {R"([{"track": 1, "notes": [[0, 60, 100]]}])", "Pattern 0 of track 1 has no clip",
                   "Every pattern needs a clip (a pattern no clip plays is gone)"},
                  {R"([{"track": 1, "notes": [3]}])", "Expected an object in patterns[0].notes[0]"}});
  expectMistakes(
      "unknown_key", R"({"patterns": )", "}",
      {{R"([{"track": 1, "notse": []}])", "Unknown key 'notse' in patterns[0]", "Did you mean: notes"}});
  expectMistakes(
      "out_of_range", R"({"patterns": )", "}",
      {{R"([{"track": 1, "length": 0}])", "\"length\" in patterns[0] must be an integer 1..1024, got 0"},
       {R"([{"track": 1, "length": 1025}])",
        "\"length\" in patterns[0] must be an integer 1..1024, got 1025"}});
}

TEST(ArrangementMistakes, NotesOfMelodicTracks) {
  constexpr const char* arrayForm = "A note array is [step, pitch, velocity, length, nudge, flags, chance]";
  constexpr const char* objectHint = "Locks go in the object form's \"locks\"";
  constexpr const char* flags = "Note flags are Slide, Accent and ratchet bits; Chance has its own field";
  expectMistakes(
      "invalid_spec", melodicNotes, notesEnd,
      {{"[0, 60]", arrayForm, objectHint},
       {"[]", arrayForm, objectHint},
       {"[0, 60, 100, 192, 0, 0, 16, 0]", arrayForm, objectHint},
       {R"([0, 60, 100, [{"target": "CUTOFF"}]])", arrayForm, objectHint},
       {"[0, 60, 100, 192, 0, 16]", flags},
       {"[0, 60, 100, 192, 0, 300]", flags},
       {R"({"pitch": 60})", "patterns[0].notes[0] needs \"step\""},
       {R"({"step": 0})", "A note needs \"pitch\" (or \"pad\" on Drums)"},
       {R"({"step": 0, "pitch": 60, "pad": 1})", "A note has \"pitch\" or \"pad\", not both"},
       {R"({"step": 0, "pad": 1})", "\"pad\" is for notes on Drums tracks; track 1 is melodic",
        "Use \"pitch\" (MIDI note number)"},
       {R"({"step": 0, "pitch": "C3"})", "\"pitch\" in patterns[0].notes[0] must be a number"},
       {R"({"step": 0, "pitch": 60, "slide": 1})", "\"slide\" in patterns[0].notes[0] must be true or false"},
       {R"({"step": 0, "pitch": 60, "locks": {}})",
        "A note's \"locks\" is an array of {\"target\", \"value\"}"},
       {R"({"step": 0, "pitch": 60, "locks": [3]})",
        "A note's \"locks\" is an array of {\"target\", \"value\"}"},
       {R"({"step": 4, "pitch": 60, "slot": 2}, {"step": 4, "pitch": 62, "slot": 2})",
        "Note slot 2 on track 1 step 4 is taken"},
       {repeated("[3, 60, 100]", 9), "More than eight notes start on track 1 step 3"}});
  expectMistakes(
      "out_of_range", melodicNotes, notesEnd,
      {{"[1024, 60, 100]", "\"step\" in patterns[0].notes[0] must be an integer 0..1023, got 1024"},
       {"[0, 128, 100]", "\"pitch\" in patterns[0].notes[0] must be an integer 0..127, got 128"},
       {"[0, 60, 100, 192, 0, -1]", "\"flags\" in patterns[0].notes[0] must be an integer 0..15, got -1"},
       {"[0, 60, 100, 192, 0, 0, 17]",
        "\"chance\" in patterns[0].notes[0] must be an integer 1..16, got 17"}});
  for (const char* range :
       {"[-1, 60, 100]", "[0.5, 60, 100]", "[0, 60, 0]", "[0, 60, 128]", "[0, 60, 100, 0]",
        "[0, 60, 100, 65536]", "[0, 60, 100, 192, 64]", "[0, 60, 100, 192, -65]",
        "[0, 60, 100, 192, 0, 0, 0]", R"({"step": 0, "pitch": 60, "ratchet": 5})",
        R"({"step": 0, "pitch": 60, "ratchet": 0})", R"({"step": 0, "pitch": 60, "chance": 0})",
        R"({"step": 0, "pitch": 60, "slot": 8})"})
    EXPECT_EQ(verdictOn(parsed(melodicNotes + range + notesEnd)).code, "out_of_range") << range;
}

TEST(ArrangementMistakes, NotesOfKits) {
  expectMistakes("out_of_range", kitNotes, notesEnd,
                 {{"[0, 8, 100]", "Drum notes play pads 0..7; got 8"},
                  {"[0, -1, 100]", "Drum notes play pads 0..7; got -1"},
                  {R"({"step": 0, "pad": -1})", "Drum notes play pads 0..7; got -1"},
                  {R"({"step": 0, "pitch": 60})", "Drum notes play pads 0..7; got 60"},
                  {R"({"step": 0, "pad": 200})", "Drum notes play pads 0..7; got 200"}});
}

TEST(ArrangementMistakes, LocksOfMelodicTracks) {
  constexpr const char* form = "A lock has \"value\" (in the target's unit) or \"value01\"";
  constexpr const char* lane = "The LFO rates run per Track: use a Lane";
  expectMistakes("unknown_target", melodicLocks, locksEnd,
                 {{R"({"target": "XYZZY", "value": 1})", "Unknown lane/lock target XYZZY",
                   "List them with: quorel targets"},
                  {R"({"target": "CUTOF", "value": 1})", "Unknown lane/lock target CUTOF", "CUTOFF"},
                  {R"({"target": "MACRO_17", "value01": 1})", "Unknown lane/lock target MACRO_17"}});
  expectMistakes(
      "invalid_spec", melodicLocks, locksEnd,
      {{R"({"value": 1})", "A lock needs a target"},
       {R"({"target": "CUTOFF"})", form},
       {R"({"target": "CUTOFF", "value": 300, "value01": 0.5})", form},
       {R"({"target": "ENGINE_1", "value": 0.5})", "This target takes value01"},
       {R"({"target": "LFO_RATE", "value": 4})", "A Note cannot lock LFO_RATE", lane},
       {R"({"target": "LFO2_RATE", "value01": 1})", "A Note cannot lock LFO2_RATE", lane},
       {R"({"target": "CUTOFF", "value01": 1}, {"target": "CUTOFF", "value01": 0})",
        "Track 1 step 0: CUTOFF is locked twice on one Note"},
       {R"({"target": "MACRO_1", "value01": 1}, {"target": "MACRO_2", "value01": 1}, {"target": "MACRO_3", "value01": 1},
           {"target": "MACRO_4", "value01": 1}, {"target": "MACRO_5", "value01": 1}, {"target": "MACRO_6", "value01": 1},
           {"target": "PAN", "value01": 1}, {"target": "WIDTH", "value01": 1}, {"target": "PITCH", "value01": 1})",
        "At most eight Locks per Note"}});
  expectMistakes(
      "unknown_key", melodicLocks, locksEnd,
      {{R"({"target": "CUTOFF", "amount": 1})", "Unknown key 'amount' in patterns[0].notes[0].locks[0]"}});
  expectMistakes(
      "out_of_range", melodicLocks, locksEnd,
      {{R"({"target": "CUTOFF", "value01": 1.5})", "value01 is 0..1"},
       {R"({"target": "CUTOFF", "value01": -0.01})", "value01 is 0..1"},
       {R"({"target": "CUTOFF", "value": 30000})", "Out of range: CUTOFF=30000", "Range 20..20000"},
       {R"({"target": "CUTOFF", "value": 1e300})", "Out of range: CUTOFF=1e+300", "Range 20..20000"},
       {R"({"target": "PITCH", "value": 25})", "Out of range: PITCH=25", "Range -24..24"},
       {R"({"target": "MACRO_1", "value": 1.5})", "A Macro's value is 0..1"}});
}

TEST(ArrangementMistakes, LocksOfKits) {
  constexpr const char* two = "A hit locks PITCH and DECAY (its Pad's)";
  expectMistakes("invalid_spec", kitLocks, locksEnd,
                 {{R"({"target": "CUTOFF", "value01": 0.5})", two},
                  {R"({"target": "PAN", "value": 0.5})", two},
                  {R"({"target": "MACRO_1", "value01": 0.5})", two},
                  {R"({"target": "LFO_RATE", "value01": 0.5})", two}});
  expectMistakes("out_of_range", kitLocks, locksEnd,
                 {{R"({"target": "PITCH", "value": 24.5})", "PITCH lock is -24..24 semitones"},
                  {R"({"target": "DECAY", "value": 1.5})", "A hit's DECAY lock is 0..1 (its Pad's decay)"}});
}

TEST(ArrangementMistakes, PatternLocksFindTheirNotes) {
  constexpr const char* order = "List the notes before the locks, or put \"locks\" in the note";
  expectMistakes(
      "invalid_spec",
      R"({"patterns": [{"track": 1, "notes": [{"step": 0, "pitch": 60, "locks": [{"target": "PAN", "value": 1}]}], "locks": [)",
      "]}]}",
      {{R"([4, "CUTOFF", 0.5])", "A Lock belongs to a Note: no Note starts on track 1 step 4", order},
       {R"([900, "CUTOFF", 0.5])", "A Lock belongs to a Note: no Note starts on track 1 step 900", order},
       {R"({"step": 0, "pitch": 61, "target": "CUTOFF", "value": 300})",
        "A Lock belongs to a Note: no Note of pitch 61 starts on track 1 step 0", order},
       {R"({"step": 0, "target": "PAN", "value": 0})", "Track 1 step 0: PAN is locked twice on one Note"},
       {R"([0, "LFO_RATE", 0.5])", "A Note cannot lock LFO_RATE"},
       {R"({"step": 0, "value": 0})", "A lock needs a target"}});
  expectMistakes(
      "unknown_target",
      R"({"patterns": [{"track": 1, "notes": [{"step": 0, "pitch": 60, "locks": [{"target": "PAN", "value": 1}]}], "locks": [)",
      "]}]}", {{R"([0, "XYZZY", 0.5])", "Unknown lane/lock target XYZZY"}});
  expectMistakes(
      "out_of_range",
      R"({"patterns": [{"track": 1, "notes": [{"step": 0, "pitch": 60, "locks": [{"target": "PAN", "value": 1}]}], "locks": [)",
      "]}]}", {{R"([0, "CUTOFF", 2])", "value01 is 0..1"}});
  for (const char* form : {R"([0, "CUTOFF"])", R"([0, 5, 0.5])", R"([0, "CUTOFF", 0.5, 60])", "5"})
    EXPECT_EQ(verdictOn(parsed(R"({"patterns": [{"track": 1, "notes": [[0, 60, 9]], "locks": [)" +
                               std::string(form) + "]}]}"))
                  .code,
              "invalid_spec")
        << form;
}

TEST(ArrangementMistakes, Clips) {
  expectMistakes(
      "invalid_spec", R"({"patterns": [{"track": 1}], "clips": [)", "]}",
      {{R"({"at": 0, "pattern": 0})", "clips[0] needs \"track\""},
       {R"({"track": 1, "pattern": 0})", "clips[0] needs \"at\""},
       {R"({"track": 1, "at": 0})", "clips[0] needs \"pattern\""},
       {R"({"track": 1, "at": 8, "pattern": 3})",
        "Clip at 8 on track 1 names pattern 3, which the track does not have",
        "List the track's patterns in \"patterns\""},
       {R"({"track": 2, "at": 8, "pattern": 0})",
        "Clip at 8 on track 2 names pattern 0, which the track does not have"},
       {R"({"track": 1, "at": 0, "pattern": 0}, {"track": 1, "at": 15, "pattern": 0})",
        "Clip at 15 on track 1 overlaps another clip of the track", "Clips of one track never overlap"},
       {R"({"track": 1, "at": 15, "pattern": 0}, {"track": 1, "at": 0, "pattern": 0})",
        "Clip at 0 on track 1 overlaps another clip of the track", "Clips of one track never overlap"},
       {R"({"track": 1, "at": 0, "pattern": 0, "repeats": 1})", "A clip's \"repeats\" is true or false"}});
  expectMistakes("out_of_range", R"({"patterns": [{"track": 1}], "clips": [)", "]}",
                 {{R"({"track": 1, "at": 1048576, "pattern": 0})",
                   "\"at\" in clips[0] must be an integer 0..1048575, got 1048576"},
                  {R"({"track": 1, "at": 0, "pattern": 0, "offset": 16})",
                   "\"offset\" in clips[0] must be an integer 0..15, got 16"},
                  {R"({"track": 1, "at": 0, "pattern": 0, "length": 0})",
                   "\"length\" in clips[0] must be an integer 1..1048576, got 0"},
                  {R"({"track": 1, "at": 1048575, "pattern": 0})", "The Song ends by Step 1048576"}});
  EXPECT_EQ(verdictOn(parsed(R"({"patterns": [{"track": 1}],
                                 "clips": [{"track": 1, "at": 0, "pattern": 0, "length": 17, "repeats": false}]})"))
                .code,
            "invalid_spec");
}

TEST(ArrangementMistakes, Lanes) {
  constexpr const char* points = "lanes[0] needs \"points\": [[step, value01], ...] (Song steps)";
  expectMistakes(
      "invalid_spec", R"({"lanes": [)", "]}",
      {{R"({"track": 1, "target": "CUTOFF"})", points},
       {R"({"track": 1, "target": "CUTOFF", "points": 3})", points},
       {R"({"track": 1, "points": []})", "lanes[0] needs \"target\""},
       {R"({"track": 1, "target": "CUTOFF", "points": [[0]]})", "A lane point is [step, value01]"},
       {R"({"track": 1, "target": "CUTOFF", "points": [0]})", "A lane point is [step, value01]"},
       {R"({"track": 1, "target": "CUTOFF", "points": [[null, 1]]})", "A lane point is [step, value01]"},
       {R"({"track": 1, "target": "CUTOFF", "points": [[4, 0], [3, 0]]})",
        "Lane points go forward in steps"}});
  expectMistakes(
      "unknown_target", R"({"lanes": [)", "]}",
      {{R"({"track": 1, "target": "XYZZY", "points": []})", "Unknown lane/lock target XYZZY",
        "List them with: quorel targets"},
       {R"({"track": 1, "target": "RETURN", "points": []})", "Unknown lane/lock target RETURN"},
       {R"({"bus": "I", "target": "CUTOFF", "points": []})", "Unknown bus lane target CUTOFF"},
       {R"({"bus": "II", "target": "FX1_RETURN", "points": []})", "Unknown bus lane target FX1_RETURN"},
       {R"({"bus": "I", "target": "MACRO_1", "points": []})", "Unknown bus lane target MACRO_1"}});
  expectMistakes("out_of_range", R"({"lanes": [)", "]}",
                 {{R"({"track": 1, "target": "CUTOFF", "points": [[-1, 1]]})",
                   "Lane points lie on the Song: 0..1048575 Steps"},
                  {R"({"track": 1, "target": "CUTOFF", "points": [[1e300, 1]]})",
                   "Lane points lie on the Song: 0..1048575 Steps"},
                  {R"({"track": 1, "target": "CUTOFF", "points": [[0, 1.1]]})",
                   "Lane values are 0..1 (null: the lane rests)"},
                  {R"({"track": 1, "lane": 8, "target": "CUTOFF", "points": []})",
                   "\"lane\" in lanes[0] must be an integer 0..7, got 8"}});
  for (const char* lane :
       {R"({"target": "CUTOFF", "points": []})",
        R"({"track": 1, "bus": "I", "target": "CUTOFF", "points": []})",
        R"({"bus": "IV", "target": "RETURN", "points": []})",
        R"({"bus": 1, "target": "RETURN", "points": []})", R"({"track": 1, "target": 4, "points": []})",
        R"({"track": 1, "target": "CUTOFF", "points": [[4, 0], [4, 1], [4, 0.5]]})"})
    EXPECT_EQ(verdictOn(parsed(R"({"lanes": [)" + std::string(lane) + "]}")).code, "invalid_spec") << lane;
}

TEST(ArrangementMistakes, FullLaneRowsAreNotOverwritten) {
  const std::string lane = R"({"track": 1, "target": "CUTOFF", "points": [[0, 1]]})",
                    bus = R"({"bus": "II", "target": "RETURN", "points": [[0, 1]]})",
                    move = R"({"target": "GAIN", "points": [[0, 1]]})";
  EXPECT_EQ(verdictOn(parsed(R"({"lanes": [)" + repeated(lane, 8) + "," + repeated(bus, 8) + "]}")).message,
            "");
  EXPECT_EQ(verdictOn(parsed(R"({"lanes": [)" + repeated(lane, 9) + "]}")).code, "invalid_spec");
  EXPECT_EQ(verdictOn(parsed(R"({"lanes": [)" + repeated(bus, 9) + "]}")).code, "invalid_spec");
  EXPECT_EQ(verdictOn(parsed(R"({"master": [)" + repeated(move, 12) + "]}")).message, "");
  EXPECT_EQ(verdictOn(parsed(R"({"master": [)" + repeated(move, 13) + "]}")).code, "invalid_spec");
}

TEST(ArrangementMistakes, MasterLanesAndMarkers) {
  expectMistakes(
      "unknown_target", "", "",
      {{R"({"master": [{"target": "CUTOFF", "points": []}]})", "Unknown master lane target CUTOFF"}});
  expectMistakes(
      "invalid_spec", "", "",
      {{R"({"master": [{"target": "GAIN"}]})",
        "master[0] needs \"points\": [[step, value01], ...] (Song steps)"},
       {R"({"markers": [{"name": "A"}]})", "markers[0] needs \"at\""},
       {R"({"markers": [{"at": 0, "name": 5}]})", "A marker name is a string"},
       {R"({"markers": [{"at": 0, "name": ""}]})", "A marker name has at least one character", "Leave"},
       {R"({"markers": [{"at": 4, "name": "A"}, {"at": 4, "name": "B"}]})", "Two markers at Step 4"}});
  expectMistakes("out_of_range", "", "",
                 {{R"({"master": [{"lane": 12, "target": "GAIN", "points": []}]})",
                   "\"lane\" in master[0] must be an integer 0..11, got 12"},
                  {R"({"markers": [{"at": 1048576, "name": "A"}]})",
                   "\"at\" in markers[0] must be an integer 0..1048575, got 1048576"}});
}

TEST(ArrangementMistakes, FullStores) {
  std::string patterns, clips, markers, notes, points;
  for (int i = 0; i < 256; i++) patterns += R"({"track": 1}, )";
  for (int i = 0; i < 1024; i++)
    clips += R"({"track": 1, "pattern": 0, "length": 1, "at": )" + std::to_string(i) + "}, ";
  for (int i = 0; i < 64; i++) markers += R"({"at": )" + std::to_string(i) + "}, ";
  for (int i = 0; i < 1024; i++)
    for (int n = 0; n < 8; n++) notes += "[" + std::to_string(i) + ", 60, 100], ";
  for (int i = 0; i < 32768; i++) points += "[" + std::to_string(i) + ", 0], ";
  notes.resize(notes.size() - 2);
  const std::string pattern = R"({"track": 1, "notes": [)" + notes + "]}";
  const std::string cases[][3] = {
      {R"({"patterns": [)" + patterns + R"({"track": 2}]})", "Too many Patterns", "A Project holds 256"},
      {R"({"patterns": [{"track": 1}], "clips": [)" + clips + R"({"track": 1, "pattern": 0, "at": 4000}]})",
       "Too many clips", "A Project holds 1024"},
      {R"({"markers": [)" + markers + R"({"at": 99}]})", "Too many markers", "A Project holds 64"},
      {R"({"patterns": [)" + pattern + "," + pattern + R"(, {"track": 2, "notes": [[0, 60, 1]]}]})",
       "Too many notes", "A Project holds 16384"},
      {R"({"lanes": [{"track": 1, "target": "PAN", "points": [)" + points + "[32768, 0]]}]}",
       "Too many lane points", "The Project holds 32768 in all"}};
  for (const auto& [spec, message, hint] : cases) {
    const Verdict verdict = verdictOn(parsed(spec));
    EXPECT_EQ(verdict.code, "invalid_spec");
    EXPECT_EQ(verdict.message, message);
    EXPECT_NE(verdict.hint.find(hint), std::string::npos) << verdict.hint;
  }
}

}  // namespace
}  // namespace synth::test
