// The macro commands as a user meets them.
#include "core/ProjectFile.h"
#include "support/Cli.h"
#include "support/PlainProject.h"

namespace synth::test {
namespace {

struct Song {
  TempFolder folder;
  std::string path = folder / "song.quorel";

  Song() {
    std::string error;
    EXPECT_TRUE(saveProject(*test::plainProject(), path, error)) << error;
    EXPECT_EQ(
        quorel({"project", "set", path, "cutoff=2000", "attack=0.01", "--track", "2", "--in-place"}).status,
        0);
  }
  Reply macro(Words words) const {
    words.insert(words.begin() + 1, path);
    words.insert(words.begin(), "macro");
    if (words[1] != "list") words.insert(words.end(), {"--track", "2", "--in-place"});
    return quorel(words);
  }
  Json listed() const { return macro({"list"}).at("data.tracks"); }
};

TEST(MacroCommands, OneWordMovesAWholeSound) {
  Song song;
  EXPECT_EQ(song.macro({"add", "distance"}).line("data.macro"),
            R"({"name":"DISTANCE","polarity":"uni","value":0,"targets":[]})");
  EXPECT_EQ(song.macro({"map", "DISTANCE", "cutoff", "-1"}).status, 0);
  EXPECT_EQ(song.macro({"map", "DISTANCE", "attack", "x4", "--window", "0.5..1"}).status, 0);
  EXPECT_EQ(song.macro({"map", "distance", "send_2", "0.4"}).status, 0);
  EXPECT_EQ(song.macro({"set", "DISTANCE", "1"}).status, 0);
  const Reply list = song.macro({"list"});
  EXPECT_EQ(list.count("data.tracks"), 1u);
  const Json& targets = list.at("data.tracks[0].macros[0].targets");
  ASSERT_EQ(targets.items().size(), 3u);
  EXPECT_EQ(
      json::compact(targets.items()[0]),
      R"({"key":"cutoff","label":"CUTOFF","amount":-1,"unit":"oct","shown":"-1 oct","value":2000,"now":1000})");
  EXPECT_EQ(list.string("data.tracks[0].macros[0].targets[1].shown"), "×4");
  EXPECT_EQ(list.line("data.tracks[0].macros[0].targets[1].window"), "[0.5,1]");
  EXPECT_NEAR(list.number("data.tracks[0].macros[0].targets[1].now"), 0.055, 0.001);
  EXPECT_EQ(list.string("data.tracks[0].macros[0].targets[2].shown"), "+0.4");

  EXPECT_EQ(song.macro({"rename", "MACRO_1", "FAR"}).string("data.macro.name"), "FAR");
  EXPECT_EQ(song.macro({"unmap", "FAR", "attack"}).count("data.macro.targets"), 2u);
  EXPECT_EQ(quorel({"project", "set", song.path, "FAR=0.25", "--track", "2", "--in-place"}).status, 0);
  EXPECT_EQ(quorel({"project", "set", song.path, "MACRO_1=0.5", "--track", "2", "--in-place"}).status, 0);
  EXPECT_EQ(song.macro({"list"}).number("data.tracks[0].macros[0].value"), 0.5);
  EXPECT_EQ(song.macro({"remove", "FAR"}).string("data.removed"), "FAR");
  EXPECT_EQ(song.macro({"list"}).line("data.tracks"), "[]");
}

TEST(MacroCommands, BipolarOnesHaveTwoSides) {
  Song song;
  EXPECT_EQ(song.macro({"add", "TILT", "--bipolar", "--value", "-0.5"}).number("data.macro.value"), -0.5);
  const Reply reply = song.macro({"map", "TILT", "cutoff", "1", "--down", "-2"});
  EXPECT_EQ(reply.number("data.macro.targets[0].amount_down"), -2);
  EXPECT_NEAR(reply.number("data.macro.targets[0].now"), 1000, 0.1);
  EXPECT_EQ(song.macro({"map", "TILT", "cutoff", "1"}).number("data.macro.targets[0].amount_down"), -1);
  const Reply plus = song.macro({"map", "TILT", "cutoff", "+0.5", "--down", "+0.25"});
  EXPECT_EQ(plus.number("data.macro.targets[0].amount"), 0.5);
  EXPECT_EQ(plus.number("data.macro.targets[0].amount_down"), 0.25);
  const Reply zero = song.macro({"map", "TILT", "insert_drive", "0"});
  EXPECT_NE(zero.line("data.macro.targets[1]").find("\"amount_down\":0,"), std::string::npos) << zero.text;
}

TEST(MacroCommands, AnEngineThatLacksATargetSaysWhichOne) {
  Song song;
  ASSERT_EQ(quorel({"project", "set", song.path, "engine=ANALOG", "--track", "2", "--in-place"}).status, 0);
  song.macro({"add", "BITE"});
  ASSERT_EQ(song.macro({"map", "BITE", "osc_b_level", "0.5"}).status, 0);
  const Words setting = {"project", "set", song.path, "engine=PERC", "--track", "2", "--in-place"};
  const Reply refused = quorel(setting);
  EXPECT_EQ(refused.code(), "invalid_project");
  EXPECT_EQ(
      refused.hint(),
      "BITE moves osc_b_level, which this sound does not have: quorel macro unmap FILE BITE osc_b_level "
      "--track 2 first");
  EXPECT_EQ(song.macro({"unmap", "BITE", "osc_b_level"}).status, 0);
  EXPECT_EQ(quorel(setting).status, 0);
}

TEST(MacroCommands, RefusalsChangeNothing) {
  Song song;
  ASSERT_EQ(song.macro({"add", "WARM"}).status, 0);
  const std::string before = readAll(song.path);
  const struct {
    Words words;
    const char *code, *message;
  } cases[] = {
      {{"add", "WARM"}, "invalid_macro", "The sound already has a Macro named WARM"},
      {{"add", "two words"}, "invalid_macro", "A Macro's name is one word of up to 12 letters"},
      {{"add", "X", "--value", "2"}, "usage", "--value must be a number 0..1, got 2"},
      {{"map", "WARM", "cutof", "1"}, "unknown_parameter", "Unknown parameter cutof"},
      {{"map", "WARM", "bpm", "1"}, "invalid_macro", "A Macro cannot move bpm on this track"},
      {{"map", "WARM", "cutoff", "much"}, "usage", "An amount is a number or ×N, got much"},
      {{"map", "WARM", "cutoff", "x2"}, "usage", "×N is for times: cutoff moves in oct"},
      {{"map", "WARM", "attack", "x0"}, "usage", "An amount is a number or ×N, got x0"},
      {{"map", "WARM", "cutoff", "1001"}, "invalid_macro", "The amount must be a number"},
      {{"map", "WARM", "cutoff", "1e300"}, "invalid_macro", "The amount must be a number"},
      {{"map", "WARM", "cutoff", "+-1"}, "usage", "An amount is a number or ×N, got +-1"},
      {{"map", "WARM", "warm", "1"}, "invalid_macro", "A Macro cannot move another Macro"},
      {{"map", "WARM", "cutoff", "1", "--window", "0..1.00000001"}, "invalid_macro", "A window is FROM..TO"},
      {{"unmap", "WARM", "cutoff", "--pad", "2"}, "invalid_macro", "cutoff takes no Pad"},
      {{"unmap", "WARM", "pad_decay"}, "invalid_macro", "pad_decay needs a Pad 0..7"},
      {{"unmap", "WARM", "pad_decay", "--pad", "2"},
       "invalid_macro",
       "Macro WARM does not move pad_decay on Pad 2"},
      {{"map", "WARM", "cutoff", "1", "--down", "1"}, "usage", "--down is for bipolar Macros"},
      {{"map", "WARM", "cutoff", "1", "--window", "0.5"}, "usage", "--window is A..B"},
      {{"map", "WARM", "cutoff", "1", "--window", "1..0"}, "invalid_macro", "A window is FROM..TO"},
      {{"map", "WARM", "cutoff", "1", "--pad", "3"}, "invalid_macro", "cutoff takes no Pad"},
      {{"unmap", "WARM", "cutoff"}, "invalid_macro", "Macro WARM does not move cutoff"},
      {{"set", "WARM", "1.5"}, "out_of_range", "A Macro's value is 0..1"},
      {{"set", "WRAM", "1"}, "unknown_macro", ""},
      {{"rename", "WARM", "CUTOFF"}, "invalid_macro", "A Macro's name is one word"},
  };
  for (const auto& c : cases) {
    const Reply reply = song.macro(c.words);
    EXPECT_EQ(reply.code(), c.code) << reply.text;
    EXPECT_EQ(reply.message().substr(0, std::string(c.message).size()), c.message);
  }
  EXPECT_EQ(song.macro({"set", "WRAM", "1"}).hint(), "Did you mean: WARM?");
  EXPECT_EQ(song.macro({"map", "WARM", "cutoff", "1001"}).hint(), "Range -1000..1000");
  EXPECT_EQ(song.macro({"set", "WARM", "1.5"}).hint(), "WARM cannot be 1.5");
  const Words setting = {"project", "set", song.path};
  expectRefusals("usage", setting,
                 {{{"WARM=-0.5", "--in-place"}, "WARM is a Macro of a track", "--track 2"},
                  {{"WARM=abc", "--track", "2", "--in-place"}, "A Macro's value is a number, got abc"},
                  {{"bpm=90", "--out", song.folder / "y.json"}, "The result is a project, not a spec"}});
  expectRefusals(
      "out_of_range", setting,
      {{{"WARM=-0.5", "--track", "2", "--in-place"}, "A Macro's value is 0..1", "WARM cannot be -0.5"}});
  writeAll(song.folder / "y.json", "{}");
  expectRefusals("invalid_project", {"macro", "add", song.folder / "y.json"},
                 {{{"X", "--track", "1", "--in-place"}, "Cannot load ", "quorel project build "}});
  EXPECT_EQ(quorel({"macro", "add", song.path, "X", "--in-place"}).message(), "macro add needs --track");
  EXPECT_EQ(readAll(song.path), before);
}

}  // namespace
}  // namespace synth::test
