// Specs that name Presets: what a Track takes from one, what it keeps, and where the Presets come from.
#include "spec/Presets.h"

#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"
#include "core/sounds/Factory.h"
#include "core/sounds/Pins.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

TEST(SpecPresets, AreLoadedBeforeMacrosAndParamsAndLeaveTheMix) {
  auto p = built(R"({"tracks": [{"index": 2, "params": {"cutoff": 300, "GRIT": 0.5}, "preset": "808 glide",
                                 "engine_defaults": "FM", "name": "LOW"}]})");
  const Track& t = p->tracks[2];
  Track expected = starterTrack(2);
  ASSERT_TRUE(preset::applyFactory(expected, "808 GLIDE"));
  setName(expected.name, "LOW");
  expected.cutoff = 300;
  expected.macros[0].value = 0.5f;
  EXPECT_TRUE(sameBytes(t, expected));
  EXPECT_EQ(std::tuple(t.level, t.pan, t.origin), std::tuple(0.5f, -0.1f, 2));
  EXPECT_EQ(nameText(t.preset_name), "808 GLIDE");
}

TEST(SpecPresets, GiveWayToTheTracksOwnMacrosPinsAndShownName) {
  auto p = built(R"({"tracks": [{"index": 1, "preset": "808 GLIDE", "macros": [], "preset_name": ""},
                                {"index": 3, "preset": "FOUNDATION", "pins": null}]})");
  EXPECT_EQ(p->tracks[1].macroCount, 0);
  EXPECT_EQ(nameText(p->tracks[1].preset_name), "");
  EXPECT_EQ(p->tracks[3].pins.custom, 0);
}

TEST(SpecPresets, OfAKitMakeTheTrackOneAndBack) {
  auto p =
      built(R"({"tracks": [{"index": 5, "preset": "AFRO KIT", "origin": 7}, {"index": 0, "preset": "GLASS"}],
                     "pads": [{"index": 2, "track": 5, "params": {"pad_level": 0.1}}]})");
  std::string error;
  EXPECT_TRUE(validateProject(*p, error)) << error;
  EXPECT_TRUE(isDrums(p->tracks[5]) && !isDrums(p->tracks[0]));
  EXPECT_EQ(nameText(p->tracks[5].name), "SYNTH D");
  EXPECT_EQ(nameText(p->tracks[0].name), "DRUMS");
  EXPECT_EQ(std::tuple(p->tracks[5].origin, p->tracks[5].level, p->tracks[5].pad_level[2]),
            std::tuple(7, starterTrack(5).level, 0.1f));
  EXPECT_EQ(p->tracks[0].origin, 255);
}

TEST(SpecPresets, ComeFromWhateverResolvesThem) {
  const spec::PresetResolver before = spec::presetResolver();
  spec::presetResolver() = [](const std::string& name) -> std::optional<preset::Preset> {
    if (name != "MINE") return std::nullopt;
    preset::Preset mine;
    mine.name = "MINE";
    mine.values = {{"cutoff", -1, 123}};
    return mine;
  };
  EXPECT_EQ(built(R"({"tracks": [{"index": 1, "preset": "MINE"}]})")->tracks[1].cutoff, 123);
  EXPECT_EQ(verdictOn(parsed(R"({"tracks": [{"index": 1, "preset": "GLASS"}]})")).code, "unknown_preset");
  spec::presetResolver() = before;
  EXPECT_EQ(built(R"({"tracks": [{"index": 1, "preset": "GLASS"}]})")->tracks[1].engine, FM);
}

TEST(SpecPresets, TheOlderBaseHasItsOwnBassAndMaster) {
  auto p = built(R"({"base": "v5", "tracks": [{"index": 4, "v5_slot": 1, "params": {"cutoff": 900}}]})");
  std::string error;
  EXPECT_TRUE(validateProject(*p, error)) << error;
  EXPECT_EQ(nameText(p->tracks[1].preset_name), "FOUNDATION");
  EXPECT_EQ(nameText(p->tracks[4].name), "BASS");
  EXPECT_EQ(std::tuple(p->tracks[4].cutoff, p->tracks[4].level), std::tuple(900.0f, p->tracks[1].level));
  EXPECT_NE(p->comp_amount, makeBlank()->comp_amount);
  EXPECT_NE(p->fx2.hall_decay, makeBlank()->fx2.hall_decay);
}

}  // namespace
}  // namespace synth::test
