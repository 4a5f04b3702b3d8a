// Mistakes in a spec's sections and values: what is said, under which code, with which hint.
#include "core/params/Registry.h"
#include "support/Cli.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

// The params of one melodic Track, so that a case shows only what is wrong.
std::string withParams(const std::string& params) {
  return R"({"tracks": [{"index": 2, "params": {)" + params + "}}]}";
}

TEST(SpecMistakes, TopLevel) {
  expectMistakes("invalid_spec", "", "",
                 {{"[]", "Expected an object in the spec"},
                  {"7", "Expected an object in the spec"},
                  {R"({"base": "v4"})", "Unknown base (only \"v5\")"},
                  {R"({"base": 5})", "Unknown base (only \"v5\")"},
                  {R"({"name": 5})", "\"name\" is a string of up to 63 bytes"},
                  {R"({"name": "0123456789012345678901234567890123456789012345678901234567890123"})",
                   "\"name\" is a string of up to 63 bytes"},
                  {R"({"name": "A\u0000B"})", "\"name\" is a string of up to 63 bytes"},
                  {R"({"project": []})", "Expected an object in project"}});
  expectMistakes("unknown_key", "", "",
                 {{R"({"tempo": 120})", "Unknown key 'tempo' in the spec",
                   "Keys: base, name, project, tracks, pads, patterns, clips, lanes, master, markers, buses, "
                   "clip_offset"},
                  {R"({"traks": []})", "Unknown key 'traks' in the spec", "Did you mean: tracks?"},
                  {R"({"Name": "A"})", "Unknown key 'Name' in the spec", "Did you mean: name"}});
  EXPECT_EQ(
      verdictOn(
          parsed(
              R"({"name": "012345678901234567890123456789012345678901234567890123456789012", "clip_offset": {}})"))
          .message,
      "");
}

TEST(SpecMistakes, KeysOfTheRegistry) {
  expectMistakes(
      "unknown_parameter", "", "",
      {{R"({"project": {"tempo": 120}})", "Unknown project parameter tempo",
        "List them with: quorel params --scope project"},
       {R"({"project": {"Bpm": 120}})", "Unknown project parameter Bpm", "Did you mean: bpm"},
       {R"({"tracks": [{"index": 1, "params": {"cutof": 900}}]})", "Unknown track parameter cutof",
        "Did you mean: cutoff"},
       {R"({"pads": [{"index": 0, "params": {"pad_tonee": 1}}]})", "Unknown pad parameter pad_tonee",
        "Did you mean: pad_tone"},
       {R"({"project": {"cutoff": 900}})",
        "Parameter cutoff is a track parameter, used in the tracks section",
        "Put it in a \"tracks\" entry's \"params\""},
       {R"({"project": {"pad_tone": 0.5}})",
        "Parameter pad_tone is a pad parameter, used in the pads section", "Put it in a \"pads\" entry"},
       {R"({"tracks": [{"index": 1, "params": {"bpm": 100}}]})",
        "Parameter bpm is a project parameter, used in the project section", "Put it in \"project\""},
       {R"({"pads": [{"index": 0, "params": {"bpm": 100}}]})",
        "Parameter bpm is a project parameter, used in the project section", "Put it in \"project\""}});
  const std::string swell = R"({"tracks": [{"index": 1, "macros": [{"name": "SWELL"}], "params": {)";
  expectMistakes("unknown_parameter", swell, "}}]}",
                 {{R"("SWEL": 0.5)", "Unknown track parameter SWEL", "Did you mean: SWELL"},
                  {R"("CUTOFF": 900)", "Unknown track parameter CUTOFF", "Did you mean: cutoff"},
                  {R"("MACRO_2": 0.5)", "Unknown track parameter MACRO_2", ""},
                  {R"("XQZW": 0.5)", "Unknown track parameter XQZW", "is a Macro of the sound"}});
  EXPECT_EQ(verdictOn(parsed(swell + R"("MACRO_1": 0.5}}]})")).message, "");
  EXPECT_EQ(verdictOn(parsed(withParams("\"SWELL\": 0.5"))).code, "unknown_parameter");
}

TEST(SpecMistakes, Values) {
  expectMistakes("unknown_option", R"({"tracks": [{"index": 2, "params": {)", "}}]}",
                 {{R"("filter_type": "lopass")", "Unknown option 'lopass' for filter_type",
                   "Options: LOWPASS, LADDER, HIGHPASS, BANDPASS, NOTCH"},
                  {R"("voice_mode": "?")", "Unknown option '?' for voice_mode",
                   "Options: POLY, RETRIGGER, LEGATO, POLY LEGATO"}});
  expectMistakes("invalid_spec", R"({"tracks": [{"index": 2, "params": {)", "}}]}",
                 {{R"("cutoff": "900")", "cutoff takes a number, not \"900\"", "Range 20..20000 Hz"},
                  {R"("polyphony": "all")", "polyphony takes a number, not \"all\"", "Range 1..8"},
                  {R"("cutoff": true)", "Expected a number or option for cutoff"},
                  {R"("cutoff": null)", "Expected a number or option for cutoff"},
                  {R"("filter_type": [1])", "Expected a number or option for filter_type"}});
  expectMistakes("out_of_range", R"({"tracks": [{"index": 2, "params": {)", "}}]}",
                 {{R"("cutoff": 19.9)", "Out of range: cutoff=19.9", "Range 20..20000 Hz"},
                  {R"("cutoff": 20000.5)", "Out of range: cutoff=20000.5", "Range 20..20000 Hz"},
                  {R"("cutoff": 1e300)", "Out of range: cutoff=1e+300", "Range 20..20000 Hz"},
                  {R"("cutoff": -1e300)", "Out of range: cutoff=-1e+300", "Range 20..20000 Hz"},
                  {R"("polyphony": 2.5)", "Out of range: polyphony=2.5", "Range 1..8, integer"},
                  {R"("transpose": -49)", "Out of range: transpose=-49", "Range -48..48 st, integer"},
                  {R"("engine": 11)", "Out of range: engine=11", "Range 0..10, integer"},
                  {R"("filter_type": -1)", "Out of range: filter_type=-1", "Range 0..4, integer"},
                  {R"("mod_feedback": 0.951)", "Out of range: mod_feedback=0.951", "Range -0.95..0.95"}});
  // The bound itself is a 32-bit float: its decimal text is in range.
  EXPECT_EQ(verdictOn(parsed(withParams(R"("mod_feedback": 0.95)"))).message, "");
}

TEST(SpecMistakes, SendPresets) {
  expectMistakes("unknown_option", "", "",
                 {{R"({"project": {"fx1_type": "HALL", "fx1_delay_preset": "DUB"}})",
                   "fx1_delay_preset names no HALL preset: DUB", "Set fx1_type first"},
                  {R"({"project": {"fx1_delay_preset": "DUBB"}})",
                   "fx1_delay_preset names no DELAY preset: DUBB", "Did you mean: DUB"},
                  {R"({"project": {"fx2_type": "OFF", "fx2_hall_preset": "DUB"}})",
                   "fx2_hall_preset names no OFF preset: DUB", "Set fx2_type first"}});
  expectMistakes("out_of_range", "", "",
                 {{R"({"project": {"fx1_delay_preset": 8}})", "Out of range: fx1_delay_preset=8",
                   "Range 0..7, integer"}});
}

TEST(SpecMistakes, TracksAndPads) {
  expectMistakes(
      "invalid_spec", "", "",
      {{R"({"tracks": [3]})", "Expected an object in tracks[0]"},
       {R"({"tracks": [{}]})", "tracks[0] needs \"index\""},
       {R"({"tracks": [{"index": 1}, {"index": "1"}]})", "\"index\" in tracks[1] must be a number"},
       {R"({"tracks": [{"index": 1, "params": []}]})", "Expected an object in tracks[0].params"},
       {R"({"pads": [{"track": 0}]})", "pads[0] needs \"index\""},
       {R"({"pads": [{"index": 0, "track": 1}]})", "Pads need a Drums track",
        R"(Give the pad a "track", or make one {"index": n, "kind": "DRUMS"})"},
       {R"({"tracks": [{"index": 0, "kind": "MELODIC"}], "pads": [{"index": 0}]})", "Pads need a Drums track",
        R"(Give the pad a "track", or make one {"index": n, "kind": "DRUMS"})"}});
  expectMistakes(
      "out_of_range", "", "",
      {{R"({"tracks": [{"index": 16}]})", "\"index\" in tracks[0] must be an integer 0..15, got 16"},
       {R"({"tracks": [{"index": -1}]})", "\"index\" in tracks[0] must be an integer 0..15, got -1"},
       {R"({"tracks": [{"index": 1.5}]})", "\"index\" in tracks[0] must be an integer 0..15, got 1.5"},
       {R"({"tracks": [{"index": 1, "kind": 2}]})", "Out of range: track_kind=2", "Range 0..1"},
       {R"({"tracks": [{"index": 1, "origin": 256}]})",
        "\"origin\" in tracks[0] must be an integer 0..255, got 256"},
       {R"({"pads": [{"index": 8}]})", "\"index\" in pads[0] must be an integer 0..7, got 8"}});
  expectMistakes("unknown_key", "", "",
                 {{R"({"tracks": [{"index": 1, "volume": 1}]})", "Unknown key 'volume' in tracks[0]"},
                  {R"({"pads": [{"index": 0, "pad_tone": 0.5}]})", "Unknown key 'pad_tone' in pads[0]",
                   "Keys: index, track, params"}});
  expectMistakes("unknown_option", "", "",
                 {{R"({"tracks": [{"index": 1, "kind": "PIANO"}]})", "Unknown option 'PIANO' for track_kind",
                   "Options: "},
                  {R"({"tracks": [{"index": 1, "engine_defaults": "ANALOGUE"}]})",
                   "Unknown option 'ANALOGUE' for engine", "Options: ANALOG, "}});
  for (const char* name : {"\"THIRTEEN CHRS\"", "\"H\\u00e9\"", "5", "null"})
    EXPECT_EQ(verdictOn(parsed(R"({"tracks": [{"index": 1, "name": )" + std::string(name) + "}]}")).code,
              "invalid_spec")
        << name;
}

TEST(SpecMistakes, PlacesStandAtTheEndOfTheHint) {
  struct Case {
    const char *spec, *end;
  };
  constexpr Case cases[] = {
      {R"({"tracks": [{"index": 1}, {"index": 2, "params": {"cutoff": 1}}]})", " (in tracks[1].params)"},
      {R"({"tracks": [{"index": 1, "params": {"filter_type": "X"}}]})", " (in tracks[0].params)"},
      {R"({"pads": [{"index": 0}, {"index": 1, "params": {"pad_tone": 2}}]})", " (in pads[1].params)"},
      {R"({"patterns": [{"track": 1, "notes": [[0, 60, 90], [1, 60]]}]})", " (in patterns[0].notes[1])"},
      {R"({"patterns": [{"track": 1}, {"track": 1, "notes": [{"step": 0, "pad": 1}]}]})",
       " (in patterns[1].notes[0])"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.spec);
    const std::string hint = verdictOn(parsed(c.spec)).hint;
    EXPECT_TRUE(hint.ends_with(c.end)) << hint;
    EXPECT_EQ(hint.find("(in "), hint.rfind("(in ")) << hint;
  }
}

TEST(SpecMistakes, SoundsSayWhatIsWrongWithTheirMacrosAndPins) {
  auto track = [](const std::string& rest) { return parsed(R"({"tracks": [{"index": 1, )" + rest + "}]}"); };
  auto macro = [&](const std::string& rest) {
    return track(R"("macros": [{"name": "SWELL", )" + rest + "}]");
  };
  const struct {
    Json spec;
    const char* message;
  } cases[] = {
      {track(R"("macros": 3)"), "\"macros\" is an array of {\"name\", \"polarity\", \"value\", \"targets\"}"},
      {track(R"("macros": [{"value": 1}])"), "A Macro's name is a string"},
      {track(R"("macros": [{"name": "CUTOFF"}])"),
       "Macro CUTOFF: Macro names are single words, unique in the sound, not a parameter key"},
      {track(R"("macros": [{"name": "A"}, {"name": " a "}])"),
       "Macro  a : Macro names are single words, unique in the sound, not a parameter key"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1}, {"key": "cutoff", "amount": 2}])"),
       "Macro SWELL: moves cutoff twice"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1e300}])"),
       "Macro SWELL: The amount must be a number"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1, "window": [0, 1.00000001]}])"),
       "Macro SWELL: A window is FROM..TO with 0 <= FROM < TO <= 1"},
      {track(R"("macros": [{"name": "A"}, {"name": "A"}])"),
       "Macro A: Macro names are single words, unique in the sound, not a parameter key"},
      {macro(R"("polarity": "both")"), "Macro SWELL: A Macro's \"polarity\" is \"uni\" or \"bi\""},
      {macro(R"("value": 2)"), "Macro SWELL: SWELL = 2 is outside 0..1"},
      {macro(R"("polarity": "bi", "value": -2)"), "Macro SWELL: SWELL = -2 is outside -1..1"},
      {macro(R"("targets": 3)"), "Macro SWELL: A Macro's \"targets\" is an array"},
      {macro(R"("targets": [{"amount": 1}])"), "Macro SWELL: A Macro target's key is a registry key"},
      {macro(R"("targets": [{"key": "cutof", "amount": 1}])"),
       "Macro SWELL: Unknown parameter cutof in Macro SWELL"},
      {macro(R"("targets": [{"key": "cutoff"}])"), "Macro SWELL: The amount must be a number"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1001}])"),
       "Macro SWELL: The amount must be a number"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1, "amount_down": 1}])"),
       "Macro SWELL: A unipolar Macro has no \"amount_down\""},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1, "window": [0.5]}])"),
       "Macro SWELL: A window is [from, to] on the Macro's travel"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1, "window": [0.5, 0.5]}])"),
       "Macro SWELL: A window is FROM..TO with 0 <= FROM < TO <= 1"},
      {macro(R"("targets": [{"key": "level", "amount": 1}])"),
       "Macro SWELL: A Macro cannot move level on this track: its targets are the sound's continuous values "
       "and the "
       "Sends"},
      {macro(R"("targets": [{"key": "cutoff", "amount": 1, "pad": 3}])"), "Macro SWELL: cutoff takes no Pad"},
      {track(R"("pins": ["pad_tone"])"),
       "Pin pad_tone is not a parameter this track lists or one of its Macros"},
      {parsed(R"({"buses": [{"bus": "I", "pins": ["hall_decay"]}]})"),
       "Pin hall_decay is not a value of bus I"},
      {parsed(R"({"buses": [{"bus": "III", "pins": []}]})"),
       "\"bus\" in buses[0] is \"I\", \"II\" or \"MASTER\""},
      {track(R"("sample": {})"), ""},
      {track(R"("sample": {"hash": "12"})"), ""},
      {track(R"("v5_slot": 3)"), "\"v5_slot\" needs \"base\": \"v5\""},
      {track(R"("preset": "GLAS")"), "No Preset named GLAS"},
      {track(R"("preset": 4)"), "\"preset\" in tracks[0] is a Preset's name"},
      {parsed(R"({"base": "v5", "tracks": [{"index": 2, "v5_slot": 16}]})"),
       "\"v5_slot\" in tracks[0] must be an integer 0..15, got 16"},
  };
  for (const auto& c : cases) {
    const Verdict verdict = verdictOn(c.spec);
    EXPECT_NE(verdict.message, "") << json::compact(c.spec);
    if (*c.message) {
      EXPECT_EQ(verdict.message, c.message);
    }
  }
  EXPECT_EQ(verdictOn(macro(R"("targets": [{"key": "cutof", "amount": 1}])")).hint.substr(0, 21),
            "Did you mean: cutoff?");
  EXPECT_NE(verdictOn(track(R"("preset": "GLAS")")).hint.find("Did you mean: GLASS"), std::string::npos);
  EXPECT_EQ(verdictOn(track(R"("preset": "GLAS")")).code, "unknown_preset");
  EXPECT_EQ(verdictOn(track(R"("macros": [], "pins": null, "sample": null)")).message, "");
  const Verdict foreign = verdictOn(parsed(R"({"tracks": [{"index": 1, "macros": [{"name": "BITE", "targets":
    [{"key": "osc_b_level", "amount": 1}]}]}, {"index": 1, "params": {"engine": "PERC"}}]})"));
  EXPECT_EQ(foreign.message, "The spec builds an invalid project: Invalid Macro target of BITE");
  EXPECT_NE(foreign.hint.find("BITE moves osc_b_level"), std::string::npos) << foreign.hint;
  EXPECT_EQ(verdictOn(track(R"("macros": [{"name": "swell", "polarity": "bi", "targets": [{"key": "cutoff",
    "amount": 2}]}], "params": {"SWELL": -0.5}, "pins": ["SWELL", "cutoff"])"))
                .message,
            "");
}

// The Nth value inside a JSON value, counting from the outside.
Json* nodeOf(Json& json, int& n) {
  if (n-- == 0) return &json;
  if (json.isArray())
    for (Json& item : json.items())
      if (Json* found = nodeOf(item, n)) return found;
  if (json.isObject())
    for (Json::Member& member : json.members())
      if (Json* found = nodeOf(member.value, n)) return found;
  return nullptr;
}

TEST(SpecMistakes, AnyValueInAnyPlaceBuildsAValidProjectOrIsRefused) {
  const Json whole = parsed(R"({
    "name": "A", "clip_offset": 0, "buses": [], "project": {"bpm": 100, "fx1_type": "DELAY", "loop": [0, 8]},
    "tracks": [{"index": 1, "kind": "MELODIC", "name": "B", "origin": 2, "engine_defaults": "FM", "params": {"cutoff": 9e2},
                "preset": "GLASS", "preset_name": "C", "macros": [], "pins": null, "sample": null}],
    "pads": [{"index": 1, "track": 0, "params": {"pad_tone": 0.5}}],
    "patterns": [{"track": 1, "id": 3, "length": 8, "front": 5, "notes": [[0, 60, 100, 192, 0, 3, 9], {"step": 1, "pitch": 60,
                  "slide": true, "ratchet": 2, "chance": 3, "slot": 1, "locks": [{"target": "CUTOFF", "value": 300}]}],
                  "locks": [[0, "PAN", 0.5], {"step": 1, "target": "LEVEL", "value01": 1, "pitch": 60}]}, {"track": 1, "id": 5}],
    "clips": [{"track": 1, "at": 4, "pattern": 3, "length": 9, "offset": 1, "repeats": true}],
    "lanes": [{"track": 1, "lane": 2, "target": "CUTOFF", "enabled": false, "points": [[0, 0.5], [3.25, null]]},
              {"bus": "I", "target": "RETURN", "points": []}],
    "master": [{"lane": 1, "target": "LOWPASS", "points": [[0, 1]]}], "markers": [{"at": 4, "name": "Drop"}]})");
  ASSERT_EQ(verdictOn(whole).message, "");
  const Json values[] = {Json(),
                         Json(true),
                         Json(0),
                         Json(-1),
                         Json(7.5),
                         Json(1e300),
                         Json(65536),
                         Json(""),
                         Json("CUTOFF"),
                         Json("\x01\xC3\xA9"),
                         Json::array(),
                         Json::object(),
                         parsed("[[0, 0]]"),
                         parsed("[null]"),
                         parsed("[{}]")};
  int places = 0;
  for (;; places++) {
    for (const Json& value : values) {
      Json spec = whole;
      int n = places;
      Json* node = nodeOf(spec, n);
      if (!node) break;
      *node = value;
      const Verdict verdict = verdictOn(spec);  // anything but a refusal ends the test
      EXPECT_TRUE(verdict.message.empty() || !verdict.code.empty()) << json::compact(spec);
    }
    Json spec = whole;
    int n = places;
    if (!nodeOf(spec, n)) break;
  }
  EXPECT_GT(places, 100);
}

}  // namespace
}  // namespace synth::test
