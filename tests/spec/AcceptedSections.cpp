// The forms in which values, Tracks, Pads, Clips, Lanes and Markers may be written, and what they become.
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "core/sounds/Pins.h"
#include "core/sounds/SendPresets.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

ProjectPtr withTrack(const std::string& keys) { return built(R"({"tracks": [{"index": 2, )" + keys + "}]}"); }

TEST(AcceptedSections, AnEmptySpecIsSixteenTracksWithoutAnArrangement) {
  auto p = built("{} // nothing");
  auto fresh = makeProject();
  EXPECT_EQ(p->track_count, 16);
  EXPECT_EQ(p->patternCount + p->clipCount + p->noteCount + p->markerCount, 0);
  EXPECT_EQ(std::memcmp(p->tracks, fresh->tracks, sizeof p->tracks), 0);
  for (const char* spec :
       {R"({"clip_offset": 7, "tracks": [], "project": {}})",
        R"({"patterns": [], "clips": [], "lanes": [], "master": [], "markers": [], "pads": []})"})
    EXPECT_TRUE(sameBytes(*p, *built(spec))) << spec;
}

TEST(AcceptedSections, LabelsMatchInAnyCaseAndNumbersStandForThem) {
  for (const char* value : {"\"LOWPASS\"", "\"lowpass\"", "\"LowPass\"", "1"})
    EXPECT_EQ(withTrack(R"("params": {"filter_type": )" + std::string(value) + "}")->tracks[2].filter_type,
              1);
  for (const char* value : {"\"FM\"", "\"fm\"", "1"})
    EXPECT_EQ(withTrack(R"("engine_defaults": )" + std::string(value))->tracks[2].engine, FM);
  EXPECT_EQ(built(R"({"project": {"key_root": "f#", "bpm": 93.5}})")->bpm, 93.5f);
  EXPECT_EQ(withTrack(R"("kind": "drums")")->tracks[2].track_kind, DRUMS);
}

TEST(AcceptedSections, KindIsItsDefaultSoundAndKeepsTheName) {
  for (const char* kind : {"DRUMS", "MELODIC"}) {
    auto p = withTrack(R"("kind": ")" + std::string(kind) + "\"");
    Track expected = defaultTrack(kind[0] == 'D' ? DRUMS : MELODIC);
    std::memcpy(expected.name, starterTrack(2).name, sizeof expected.name);
    EXPECT_TRUE(sameBytes(p->tracks[2], expected)) << kind;
  }
  EXPECT_EQ(nameText(withTrack(R"("name": "lead 2", "kind": "DRUMS")")->tracks[2].name), "LEAD 2");
}

TEST(AcceptedSections, TrackKindAmongTheParamsIsOneByte) {
  auto p = withTrack(R"("params": {"cutoff": 700, "track_kind": "DRUMS"})");
  Track expected = starterTrack(2);
  expected.cutoff = 700;
  expected.track_kind = DRUMS;
  EXPECT_TRUE(sameBytes(p->tracks[2], expected));
}

TEST(AcceptedSections, TrackKeysApplyInTheirOwnOrder) {
  auto p = withTrack(
      R"("preset_name": "Glass", "params": {"engine2": 0.25, "level": 0.5}, "engine_defaults": "TINE",
                        "origin": 7, "name": "keys", "kind": "MELODIC")");
  const Track& t = p->tracks[2];
  EXPECT_EQ(t.engine, TINE);
  EXPECT_EQ(t.engine2, 0.25f);
  EXPECT_EQ(t.level, 0.5f);
  EXPECT_EQ(t.origin, 7);
  EXPECT_EQ(nameText(t.name), "KEYS");
  EXPECT_EQ(nameText(t.preset_name), "GLASS");
  // Params apply as they stand; a Track may be listed again.
  auto twice =
      built(R"({"tracks": [{"index": 2, "params": {"cutoff": 500}}, {"index": 2, "params": {"pan": 1}}]})");
  EXPECT_EQ(twice->tracks[2].cutoff, 500);
  EXPECT_EQ(twice->tracks[2].pan, 1);
  // Macros that replace others take over the Pins of those of the same name.
  auto other =
      built(R"({"tracks": [{"index": 2, "macros": [{"name": "A"}, {"name": "B"}], "pins": ["A", "pan", "B"]},
                                    {"index": 2, "macros": [{"name": "C"}, {"name": "D"}, {"name": "B"}]}]})");
  EXPECT_EQ(pins::keys(other->tracks[2]), (pins::Keys{"pan", "B"}));
}

TEST(AcceptedSections, ProjectReadsTypesThenPresetsThenValues) {
  const std::string preset = sendfx::preset(FX_PLATE, 2);
  auto expected = makeBlank();
  sendfx::load(*expected, SendII, FX_PLATE, 2);
  expected->fx2.plate_damping = 0.125f;
  const std::string type = R"("fx2_type": "plate")", name = R"("fx2_plate_preset": ")" + preset + "\"",
                    value = R"("fx2_plate_damping": 0.125)";
  for (const std::string& members : {type + "," + name + "," + value, value + "," + name + "," + type,
                                     name + "," + value + "," + type, value + "," + type + "," + name})
    EXPECT_TRUE(sameBytes(*built(R"({"project": {)" + members + "}}"), *expected)) << members;
  // A number only names the preset: nothing is loaded, whatever the type.
  auto number = built(R"({"project": {"fx1_type": "HALL", "fx1_delay_preset": 3}})");
  EXPECT_EQ(number->fx1.delay_preset, 3);
  EXPECT_EQ(number->fx1.delay_feedback, makeBlank()->fx1.delay_feedback);
}

TEST(AcceptedSections, PadsGoToTheFirstKitOrTheirOwn) {
  auto p = built(R"({"tracks": [{"index": 5, "kind": "DRUMS"}],
                     "pads": [{"index": 3, "params": {"pad_tone": 0.25}}, {"index": 4, "track": 5, "params": {"pad_tone": 1}}]})");
  EXPECT_EQ(p->tracks[0].pad_tone[3], 0.25f);
  EXPECT_EQ(p->tracks[5].pad_tone[4], 1);
  EXPECT_EQ(p->tracks[5].pad_tone[3], 0.5f);
}

TEST(AcceptedSections, ClipsPlayOnePassUnlessTheySayMore) {
  struct Case {
    const char* keys;
    u32 length, offset;
    bool repeats;
  };
  constexpr Case cases[] = {
      {"", 12, 0, false},
      {R"(, "offset": 5)", 7, 5, false},
      {R"(, "length": 12)", 12, 0, false},
      {R"(, "length": 13)", 13, 0, true},
      {R"(, "length": 7, "offset": 5)", 7, 5, false},
      {R"(, "length": 8, "offset": 5)", 8, 5, true},
      {R"(, "length": 4, "repeats": true)", 4, 0, true},
      {R"(, "repeats": true)", 12, 0, true},
      {R"(, "length": 1048570)", 1048570, 0, true},
  };
  for (const Case& c : cases) {
    auto p =
        built(R"({"patterns": [{"track": 1, "length": 12}], "clips": [{"track": 1, "at": 6, "pattern": 0)" +
              std::string(c.keys) + "}]}");
    const ClipRec& clip = p->clips[0];
    EXPECT_EQ(clip.start, 6u);
    EXPECT_EQ(clip.length, c.length) << c.keys;
    EXPECT_EQ(clip.offset, c.offset) << c.keys;
    EXPECT_EQ(clip.repeats != 0, c.repeats) << c.keys;
  }
}

TEST(AcceptedSections, PatternsTakeTheNextFreeId) {
  auto p =
      built(R"({"patterns": [{"track": 1, "id": 1}, {"track": 1, "length": 3}, {"track": 1, "length": 5}],
                     "clips": [{"track": 1, "at": 0, "pattern": 0}, {"track": 1, "at": 16, "pattern": 1},
                               {"track": 1, "at": 32, "pattern": 2}]})");
  ASSERT_EQ(p->patternCount, 3);
  EXPECT_EQ(p->patterns[0].length, 3);
  EXPECT_EQ(p->patterns[1].length, 16);
  EXPECT_EQ(p->patterns[2].length, 5);
}

TEST(AcceptedSections, LanePointsRoundToSixteenthsJumpAndRest) {
  auto p = built(R"({"lanes": [{"track": 1, "lane": 3, "target": "cutoff", "points":
      [[0, 0.25], [1.03, 1], [1.04, 0], [2, 0.5], [2, 1], [3, null], [1048576, 0]]}]})");
  const int row = laneRow(1, 3);
  EXPECT_EQ(p->lanes[row].target, automation::CUTOFF + 1);
  EXPECT_EQ(p->lanes[row].enabled, 1);
  std::string found;
  for (const LanePoint& point : lanePoints(*p, row))
    found += std::to_string(point.position) + (point.rest ? "-" : "=") + std::to_string(point.value) + " ";
  EXPECT_EQ(found, "0=16384 16=65535 17=0 32=32768 32=65535 48-0 16777216=0 ");
  EXPECT_EQ(laneValueBefore(*p, row, 2), 0.5f + 0.5f / 65535);
  EXPECT_EQ(laneValueAt(*p, row, 2), 1);
  EXPECT_TRUE(std::isnan(laneValueAt(*p, row, 4)));
}

TEST(AcceptedSections, LanesOfTracksBusesAndTheMaster) {
  auto p = built(R"({"lanes": [{"track": 3, "target": "MACRO_2", "points": [[0, 1]]},
      {"track": 3, "target": null, "enabled": false, "points": [[0, 1]]}, {"track": 3, "lane": 7, "target": "PITCH", "points": []},
      {"bus": "ii", "target": "hall_decay", "points": []}, {"bus": "I", "target": "FX1_RETURN", "points": []},
      {"bus": "I", "target": "return", "points": []}, {"bus": "MASTER", "target": "master_eq_1k", "points": []},
      {"bus": "I", "target": "FX_CHAIN", "points": []}],
      "master": [{"target": "tape_stop", "points": [[0, 0]]}, {"lane": 11, "target": "CRUSH", "points": []}]})");
  auto lane = [&](int row) {
    const LaneRow& r = p->lanes[row];
    const std::string name = row >= limits::firstMasterLane ? automation::performanceEffectName(r.target - 1)
                             : r.target                     ? automation::targetName(r.target - 1)
                                                            : "";
    return name + (r.enabled ? "+" : "-") + std::to_string(r.count);
  };
  EXPECT_EQ(lane(laneRow(3, 0)), "MACRO_2+1");
  EXPECT_EQ(lane(laneRow(3, 1)), "-1");
  EXPECT_EQ(lane(laneRow(3, 7)), "PITCH+0");
  EXPECT_EQ(lane(laneRow(busOwner(SendII), 0)), "FX2_HALL_DECAY+0");
  EXPECT_EQ(lane(laneRow(busOwner(SendI), 0)), "FX1_RETURN+0");
  EXPECT_EQ(lane(laneRow(busOwner(SendI), 1)), "FX1_RETURN+0");
  EXPECT_EQ(lane(laneRow(busOwner(SendI), 2)), "FX_CHAIN+0");
  EXPECT_EQ(lane(laneRow(busOwner(MasterBus), 0)), "MASTER_EQ_1K+0");
  EXPECT_EQ(lane(masterLaneRow(0)), "TAPE_STOP+1");
  EXPECT_EQ(lane(masterLaneRow(11)), "CRUSH+0");
}

TEST(AcceptedSections, MarkersKeepTheirCaseAndTheLoopItsEnds) {
  auto p = built(
      R"({"name": "Caf\u00e9", "project": {"loop": [8, 24]}, "markers": [{"at": 16, "name": "Drop B"}, {"at": 0}]})");
  EXPECT_EQ(projectName(*p), "Caf\xC3\xA9");
  EXPECT_EQ(nameText(p->markers[1].name), "Drop B");
  EXPECT_EQ(p->markers[0].step, 0u);
  EXPECT_EQ(p->loopStart, 8u);
  EXPECT_EQ(p->loopEnd, 24u);
  EXPECT_EQ(built(R"({"project": {"loop": null}})")->loopEnd, 0u);
  for (const char* loop : {"[8]", "[8, 8]", "[9, 8]", "[0, 1048577]", "8", "[null, 8]"})
    EXPECT_NE(verdictOn(parsed(R"({"project": {"loop": )" + std::string(loop) + "}}")).message, "") << loop;
}

}  // namespace
}  // namespace synth::test
