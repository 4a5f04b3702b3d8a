// What breaks if a Project that no rule allows is saved or played, or a lawful one is refused.
#include "core/model/Validate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <utility>

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "support/PlainProject.h"

namespace synth {
namespace {

using P = Project&;
struct Fault {
  const char* message;
  void (*spoil)(P);
};

// Rows: Patterns (0,0) (1,0) (1,1 its front) (2,0) (3,0); Clips 0 and 1 on the kit 0, 2 on Track 1; Notes 0
// on the kit, 1 and 2 on Track 1; Lanes 8 (three points, a jump), 128 (one) and 152 (two).
ProjectPtr full() {
  auto p = test::plainProject();
  Note note;
  note.velocity = 100;
  note.pitch = 3;
  setNote(*p, 0, 0, 0, 3, note);
  note.locks[0] = {5, 0, 9};
  note.locks[1] = {20, 0, 9};
  note.locks[2] = {177, 0, 9};
  setNote(*p, 1, 0, 6, 0, note);
  setNote(*p, 1, 0, 7, 0, note);
  parkFront(*p, 1, 0, 4);
  ClipRec clip;
  clip.start = 16;
  addClip(*p, clip);
  const LanePoint points[] = {{0, 7, 0, 0}, {16, 0, 1, 0}, {16, 7, 0, 0}};
  setLanePoints(*p, 8, points, 3);
  setLanePoints(*p, 128, points, 1);
  setLanePoints(*p, 152, points, 2);
  p->lanes[8].target = 5;
  p->lanes[128].target = 81;
  p->lanes[152].target = 12;
  addMarker(*p, 0, "A");
  addMarker(*p, 16, "B");
  p->loopEnd = 16;
  p->tracks[2].pins.custom = p->tracks[2].pins.count = 1;
  p->tracks[2].pins.ids[0] = 1015;
  return p;
}

template <size_t N>
void expectFaults(const Fault (&faults)[N]) {
  auto lawful = full();
  for (size_t i = 0; i < N; i++) {
    auto p = copyOf(*lawful);
    faults[i].spoil(*p);
    std::string error;
    EXPECT_FALSE(validateProject(*p, error)) << "case " << i << ": " << faults[i].message;
    EXPECT_EQ(error, faults[i].message) << "case " << i;
  }
}

TEST(Validation, ChecksTheProjectsOwnValues) {
  const char* tempo = "Invalid tempo or swing";
  const char* master = "Invalid master or effects parameter";
  const char* send = "Invalid Send effect";
  const char* pins = "Invalid Pins";
  expectFaults({
      {tempo, [](P p) { p.bpm = 39.9f; }},
      {tempo, [](P p) { p.bpm = NAN; }},
      {tempo, [](P p) { p.swing = 0.76f; }},
      {tempo, [](P p) { p.swing = -INFINITY; }},
      {tempo, [](P p) { p.reserved0 = 1; }},
      {tempo, [](P p) { p.track_count = 0; }},
      {tempo, [](P p) { p.track_count = 17; }},
      {master, [](P p) { p.master = 1.01f; }},
      {master, [](P p) { p.fx_chain = NAN; }},
      {master, [](P p) { p.master_eq[9] = 12.1f; }},
      {master, [](P p) { p.comp_release = 0.01f; }},
      {master, [](P p) { p.limiter_ceiling = 0.4f; }},
      {master, [](P p) { p.humanize = -0.1f; }},
      {send, [](P p) { p.fx1.type = 7; }},
      {send, [](P p) { p.fx2.delay_sync = 16; }},
      {send, [](P p) { p.fx2.returnLevel = 2.1f; }},
      {send, [](P p) { p.fx1.chorus_preset = 5; }},
      {send, [](P p) { p.fx2.shimmer_decay = NAN; }},
      {"Project name must be terminated", [](P p) { std::memset(p.name, 'x', 64); }},
      {"Invalid key", [](P p) { p.key_root = 14; }},
      {"Invalid key", [](P p) { p.key_scale = 11; }},
      {pins, [](P p) { p.tracks[15].pins.count = 33; }},
      {pins, [](P p) { p.tracks[2].pins.custom = 2; }},
      {pins, [](P p) { p.tracks[2].pins.custom = 0; }},
      {pins, [](P p) { p.tracks[2].pins.ids[0] = 1016; }},
      {pins, [](P p) { p.tracks[2].pins.ids[0] = 999; }},
      {pins, [](P p) { p.tracks[2].pins.ids[1] = 114; }},
      {pins, [](P p) { p.busPins[2] = p.tracks[2].pins; }},
  });
}

TEST(Validation, ChecksEveryTrack) {
  const char* identity = "Invalid synth engine, track kind or scene";
  const char* engine = "Invalid Engine parameter";
  const char* preset = "Invalid Preset name";
  const char* drum = "Invalid drum parameter";
  const char* track = "Invalid track parameter";
  const char* voice = "Invalid articulation or timbre envelope";
  const char* sample = "Invalid sample reference";
  expectFaults({
      {identity, [](P p) { p.tracks[0].engine = 11; }},
      {identity, [](P p) { p.tracks[15].track_kind = 2; }},
      {identity, [](P p) { p.tracks[1].visual = 18; }},
      {engine, [](P p) { p.tracks[1].engine1 = 1.1f; }},
      {engine, [](P p) { p.tracks[1].engine4 = NAN; }},
      {preset, [](P p) { std::memset(p.tracks[1].preset_name, 'X', 24); }},
      {preset, [](P p) { std::memset(p.tracks[1].preset_name, 'X', 21); }},
      {preset, [](P p) { p.tracks[1].preset_name[0] = '\n'; }},
      {drum, [](P p) { p.tracks[1].pad_level[7] = 1.1f; }},
      {drum, [](P p) { p.tracks[1].pad_choke[3] = 5; }},
      {drum, [](P p) { p.tracks[1].pad_note[0] = 60.5f; }},
      {track, [](P p) { p.tracks[1].cutoff = 19; }},
      {track, [](P p) { p.tracks[1].mute = 2; }},
      {track, [](P p) { p.tracks[1].attack = 0; }},
      {track, [](P p) { p.tracks[1].lfo2_target = 9; }},
      {track, [](P p) { p.tracks[1].transpose = 0.5f; }},
      {track, [](P p) { p.tracks[1].duck_source = 144; }},
      {track, [](P p) { p.tracks[1].room_mix = NAN; }},
      {voice, [](P p) { p.tracks[1].voice_mode = 4; }},
      {voice, [](P p) { p.tracks[1].polyphony = 9; }},
      {voice, [](P p) { p.tracks[1].timbre_attack = 0; }},
      {"Track name too long", [](P p) { std::memset(p.tracks[1].name, 'X', 13); }},
      {"Track name too long", [](P p) { std::memset(p.tracks[1].name, 'X', 16); }},
      {sample, [](P p) { setName(p.tracks[1].sample_name, "TAKE"); }},
      {sample, [](P p) { p.tracks[1].sample_hash[0] = 1, std::memset(p.tracks[1].sample_name, 'X', 13); }},
      {sample, [](P p) { p.tracks[1].sample_root = 128; }},
      {sample, [](P p) { p.tracks[1].sample_tune = NAN; }},
      {"Invalid Macros", [](P p) { p.tracks[1].macroCount = 17; }},
  });
}

TEST(Validation, ChecksPatternsAndClips) {
  expectFaults({
      {"Arena over its ceiling", [](P p) { p.patternCount = 257; }},
      {"Arena over its ceiling", [](P p) { p.clipCount = 1025; }},
      {"Arena over its ceiling", [](P p) { p.noteCount = 16385; }},
      {"Arena over its ceiling", [](P p) { p.lanePointCount = 32769; }},
      {"Arena over its ceiling", [](P p) { p.markerCount = 65; }},
      {"Pattern arena tail not zero", [](P p) { p.patterns[255].length = 0; }},
      {"Clip arena tail not zero", [](P p) { p.clips[p.clipCount].start = 1; }},
      {"Note arena tail not zero", [](P p) { p.notes[16383].pitch = 0; }},
      {"Note arena tail not zero", [](P p) { p.notes[p.noteCount].locks[7].value = 1; }},
      {"Lane point arena tail not zero", [](P p) { p.lanePoints[32767].rest = 1; }},
      {"Marker arena tail not zero", [](P p) { p.markers[2].name[15] = 1; }},
      {"Invalid Pattern", [](P p) { p.patterns[4].track = 16; }},
      {"Invalid Pattern", [](P p) { p.patterns[0].isFront = 2; }},
      {"Invalid Pattern", [](P p) { p.patterns[2].frontId = 1; }},
      {"Invalid Pattern", [](P p) { p.patterns[0].length = 0; }},
      {"Invalid Pattern", [](P p) { p.patterns[0].length = 1025; }},
      {"Patterns out of order", [](P p) { std::swap(p.patterns[0], p.patterns[1]); }},
      {"Patterns out of order", [](P p) { p.patterns[2].id = 0; }},
      {"Invalid Clip", [](P p) { p.clips[4].track = 16; }},
      {"Invalid Clip", [](P p) { p.clips[0].repeats = 2; }},
      {"Invalid Clip", [](P p) { p.clips[0].reserved = 1; }},
      {"Invalid Clip", [](P p) { p.clips[0].length = 0; }},
      {"Invalid Clip", [](P p) { p.clips[1].start = 1048561; }},
      {"Invalid Clip", [](P p) { p.clips[1].start = 0xFFFFFFF0; }},
      {"Clip of a missing Pattern", [](P p) { p.clips[0].pattern = 9; }},
      {"Clip offset outside its Pattern", [](P p) { p.clips[0].offset = 16; }},
      {"Clip of a Pattern's front", [](P p) { p.clips[2].pattern = 1; }},
      {"Clip without Repeats past its loop", [](P p) { p.clips[0].offset = 1; }},
      {"Clips out of order", [](P p) { std::swap(p.clips[0], p.clips[1]); }},
      {"Clips out of order", [](P p) { p.clips[1].start = 0; }},
      {"Clips overlap", [](P p) { p.clips[1].start = 15; }},
      {"Pattern's front missing", [](P p) { p.patterns[1].frontId = 10; }},
      {"Pattern's front missing", [](P p) { p.patterns[3].frontId = 1; }},
      {"A front without its Pattern", [](P p) { p.patterns[1].frontId = 0; }},
      {"A front without its Pattern", [](P p) { addPatternAt(p, 1, 5, 4), p.patterns[3].frontId = 2; }},
      {"Pattern without a Clip", [](P p) { addPatternAt(p, 3, 9, 16); }},
  });
}

TEST(Validation, ChecksNotesAndLocks) {
  const char* missing = "Note of a missing Pattern";
  const char* note = "Invalid note or polyphony";
  const char* lock = "Invalid lock";
  expectFaults({
      {missing, [](P p) { p.notes[2].track = 16; }},
      {missing, [](P p) { p.notes[0].pattern = 9; }},
      {missing, [](P p) { p.notes[2].slot = 8; }},
      {missing, [](P p) { p.notes[2].step = 1024; }},
      {"Notes out of order", [](P p) { std::swap(p.notes[0], p.notes[1]); }},
      {"Notes out of order", [](P p) { p.notes[2].step = p.notes[1].step; }},
      {note, [](P p) { p.notes[1].velocity = 0; }},
      {note, [](P p) { p.notes[1].velocity = 128; }},
      {note, [](P p) { p.notes[1].pitch = 128; }},
      {note, [](P p) { p.notes[0].pitch = 8; }},
      {note, [](P p) { p.notes[1].nudge = -65; }},
      {note, [](P p) { p.notes[1].length = 0; }},
      {note, [](P p) { p.tracks[1].track_kind = DRUMS, p.notes[1].pitch = 60; }},
      {lock, [](P p) { p.notes[1].locks[1] = {}; }},
      {lock, [](P p) { p.notes[1].locks[7].value = 1; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 21; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 22; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 47; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 81; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 193; }},
      {lock, [](P p) { p.notes[1].locks[0].target = 20; }},
      {lock, [](P p) { p.notes[0].locks[0].target = 5; }},
      {lock, [](P p) { p.notes[0].locks[0].target = 177; }},
  });
}

TEST(Validation, ChecksLanesMarkersAndTheLoop) {
  const char* order = "Lane points out of order";
  const char* lane = "Invalid automation lane";
  const char* point = "Invalid lane point";
  expectFaults({
      {order, [](P p) { p.lanes[8].first = 1; }},
      {order, [](P p) { p.lanes[163].first = 0; }},
      {order, [](P p) { p.lanes[163].count = 1; }},
      {order, [](P p) { p.lanes[152].count = 1; }},
      {order, [](P p) { p.lanePoints[2].position = 15; }},
      {order, [](P p) { p.lanePoints[0].position = 16; }},
      {lane, [](P p) { p.lanes[8].target = 47; }},
      {lane, [](P p) { p.lanes[8].target = 176; }},
      {lane, [](P p) { p.lanes[8].target = 81; }},
      {lane, [](P p) { p.lanes[8].enabled = 2; }},
      {lane, [](P p) { p.lanes[128].target = 79; }},
      {lane, [](P p) { p.lanes[128].target = 122; }},
      {lane, [](P p) { p.lanes[136].target = 163; }},
      {lane, [](P p) { p.lanes[144].target = 64; }},
      {lane, [](P p) { p.lanes[144].target = 5; }},
      {"Invalid master lane", [](P p) { p.lanes[163].target = 13; }},
      {point, [](P p) { p.lanePoints[0].reserved = 1; }},
      {point, [](P p) { p.lanePoints[0].rest = 2; }},
      {point, [](P p) { p.lanePoints[0].rest = 1; }},
      {point, [](P p) { p.lanePoints[5].position = 16777217; }},
      {"Markers out of order", [](P p) { p.markers[1].step = 1048576; }},
      {"Markers out of order", [](P p) { p.markers[1].step = 0; }},
      {"Marker name too long", [](P p) { std::memset(p.markers[1].name, 'x', 13); }},
      {"Marker name too long", [](P p) { p.markers[0].name[0] = 0; }},
      {"Invalid Loop", [](P p) { p.loopStart = 16; }},
      {"Invalid Loop", [](P p) { p.loopStart = 17; }},
      {"Invalid Loop", [](P p) { p.loopEnd = 1048577; }},
  });
}

TEST(Validation, ReportsTheFirstRuleThatFails) {
  expectFaults({
      {"Invalid tempo or swing", [](P p) { p.loopStart = 17, p.tracks[0].engine = 11, p.bpm = 0; }},
      {"Invalid Pins", [](P p) { p.tracks[9].pins.custom = 2, p.tracks[0].engine = 11; }},
      {"Invalid drum parameter", [](P p) { p.tracks[3].cutoff = 0, p.tracks[3].pad_pan[0] = 2; }},
      {"Invalid sample reference",
       [](P p) { p.tracks[3].macroCount = 17, p.tracks[3].sample_name[0] = 'A'; }},
      {"Invalid Macros", [](P p) { p.tracks[3].macroCount = 17, p.patternCount = 300; }},
      {"Invalid Pattern", [](P p) { p.notes[0].velocity = 0, p.patterns[0].length = 0; }},
      {"Clips overlap", [](P p) { p.patterns[1].frontId = 0, p.clips[1].start = 15; }},
      {"Invalid note or polyphony", [](P p) { p.notes[1].locks[1] = {}, p.notes[2].velocity = 0; }},
      {"Invalid master lane", [](P p) { p.lanePoints[0].rest = 2, p.lanes[152].target = 13; }},
  });
}

TEST(Validation, AcceptsWhatTheRulesAllow) {
  const Fault lawful[] = {
      {"as it is", [](P) {}},
      {"a Clip up to the Song's end", [](P p) { p.clips[1].start = 1048560; }},
      {"a longer Clip that repeats", [](P p) { p.clips[1].length = 20, p.clips[1].repeats = 1; }},
      {"a loop up to the Song's end", [](P p) { p.loopEnd = 1048576; }},
      {"no loop", [](P p) { p.loopEnd = 0; }},
      {"a Note past its Pattern", [](P p) { p.notes[2].step = 900; }},
      {"Notes at their bounds",
       [](P p) {
         p.notes[1].nudge = -64, p.notes[2].nudge = 63, p.notes[1].length = 65535, p.notes[1].flags = 255;
       }},
      {"Locks of a kit",
       [](P p) {
         p.notes[0].locks[0] = {12, 0, 1}, p.notes[0].locks[1] = {18, 0, 1};
       }},
      {"the rate of an LFO on a Lane", [](P p) { p.lanes[8].target = 21; }},
      {"a Macro's Lane on a kit", [](P p) { p.lanes[0].target = 192; }},
      {"a Lane of an effect not loaded", [](P p) { p.lanes[128].target = 89; }},
      {"a point at the end of time", [](P p) { p.lanePoints[5].position = 16777216; }},
      {"a Sample on another Engine", [](P p) { p.tracks[1].sample_hash[31] = 1; }},
      {"an empty list of own Pins", [](P p) { p.busPins[0].custom = 1; }},
      {"lower-case names", [](P p) { p.tracks[1].name[0] = 'b', p.tracks[1].preset_name[0] = '~'; }},
      {"any tail of a kit's melodic values",
       [](P p) { p.tracks[0].engine = SAMPLER, p.tracks[0].cutoff = 20; }},
  };
  for (auto& c : lawful) {
    auto p = full();
    c.spoil(*p);
    std::string error;
    EXPECT_TRUE(validateProject(*p, error)) << c.message << ": " << error;
  }
}

}  // namespace
}  // namespace synth
