// Warnings: what the editor would not have made is named, what is usual is not; the songs that come along.
#include "cli/Guides.h"
#include "spec/Examples.h"
#include "spec/Warnings.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

std::string warningsIn(const std::string& spec) {
  std::string all;
  for (const std::string& warning : spec::warningsOf(*built(spec))) all += warning + "\n";
  return all;
}

// A song of one bar of these Notes on a Track, with further sections and keys of Track 1.
std::string song(int track, const std::string& notes, const std::string& more = "") {
  const std::string t = std::to_string(track);
  return R"({"patterns": [{"track": )" + t + R"(, "notes": [)" + notes + R"(]}], "clips": [{"track": )" + t +
         R"(, "at": 0, "pattern": 0}])" + more + "}";
}

std::string withParams(const std::string& params) {
  return R"(, "tracks": [{"index": 1, "params": {)" + params + "}}]";
}

TEST(Advice, NamesWhatIsOddAndOnlyThat) {
  const std::string chord = "[0, 60, 100], [0, 64, 100]", tune = "[0, 60, 100]";
  struct Case {
    const char* says;
    std::string odd, usual;
  };
  const Case cases[] = {
      {"one voice", song(1, chord, withParams(R"("voice_mode": "LEGATO")")),
       song(1, tune, withParams(R"("voice_mode": "LEGATO")"))},
      {"polyphony is 1", song(1, chord, withParams(R"("voice_mode": "POLY", "polyphony": 1)")),
       song(1, chord, withParams(R"("voice_mode": "POLY", "polyphony": 2)"))},
      {"without Notes", song(1, ""), song(1, tune)},
      {"past their length", song(1, "[0, 60, 100], [16, 60, 100]"), song(1, "[0, 60, 100], [15, 60, 100]")},
      {"level 0", song(1, tune, withParams(R"("mute": 1)")), song(2, tune, withParams(R"("mute": 1)"))},
      {"level 0", song(1, tune, withParams(R"("level": 0)")), song(1, tune, withParams(R"("level": 0.1)"))},
      {"level 0",
       song(1, tune,
            withParams(R"("level": 0)") +
                R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 0], [16, 1]]}])"),
       song(1, tune,
            withParams(R"("level": 0)") +
                R"(, "lanes": [{"track": 1, "target": "LEVEL", "points": [[0, 0], [16, 1]]}])")},
      {"MACRO_16, which the sound",
       song(1, tune, R"(, "lanes": [{"track": 1, "target": "MACRO_16", "points": [[0, 1]]}])"),
       song(1, tune,
            R"(, "tracks": [{"index": 1, "macros": [{"name": "TURN"}]}],
                 "lanes": [{"track": 1, "target": "TURN", "points": [[0, 1]]}])")},
      {"soloed", song(2, tune, withParams(R"("solo": 1)")), song(1, tune, withParams(R"("solo": 1)"))},
      {"Past track_count", song(4, tune, R"(, "project": {"track_count": 4})"),
       song(3, tune, R"(, "project": {"track_count": 4})")},
      {"OFF", song(1, tune, withParams(R"("send_1": 0.5)") + R"(, "project": {"fx1_type": "OFF"})"),
       song(1, tune, withParams(R"("send_1": 0)") + R"(, "project": {"fx1_type": "OFF"})")},
      {"no points", song(1, tune, R"(, "lanes": [{"track": 1, "target": "PAN", "points": []}])"),
       song(1, tune, R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 1]]}])")},
      {"is drawn but off",
       song(1, tune, R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 1]], "enabled": false}])"),
       song(1, tune, R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 1]], "enabled": true}])")},
      {"earlier lane",
       song(
           1, tune,
           R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 1]]}, {"track": 1, "target": "PAN", "points": [[0, 0]]}])"),
       song(
           1, tune,
           R"(, "lanes": [{"track": 1, "target": "PAN", "points": [[0, 1]]}, {"track": 2, "target": "PAN", "points": [[0, 0]]}])")},
      {"Drums", song(1, tune, R"(, "lanes": [{"track": 0, "target": "CUTOFF", "points": [[0, 1]]}])"),
       song(1, tune, R"(, "lanes": [{"track": 0, "target": "LEVEL", "points": [[0, 1]]}])")},
      {"loaded effect",
       song(1, tune, R"(, "lanes": [{"bus": "I", "target": "HALL_DECAY", "points": [[0, 1]]}])"),
       song(1, tune, R"(, "lanes": [{"bus": "II", "target": "HALL_DECAY", "points": [[0, 1]]}])")},
      {"Song's end", song(1, tune, R"(, "markers": [{"at": 16, "name": "End"}])"),
       song(1, tune, R"(, "markers": [{"at": 15, "name": "End"}])")},
      {"ducks under", song(1, tune, withParams(R"("duck_amount": 0.5, "duck_source": 0)")),
       song(1, tune, withParams(R"("duck_amount": 0, "duck_source": 0)"))},
  };
  for (const Case& c : cases) {
    EXPECT_NE(warningsIn(c.odd).find(c.says), std::string::npos) << c.says << " in " << c.odd << "\n"
                                                                 << warningsIn(c.odd);
    EXPECT_EQ(warningsIn(c.usual).find(c.says), std::string::npos) << c.says << " in " << c.usual;
  }
}

TEST(Advice, ChokeGroupsThatCutEachOtherOff) {
  const std::string pads =
      R"(, "pads": [{"index": 0, "params": {"pad_choke": "GROUP 2"}}, {"index": 1, "params": {"pad_choke": 2}}])";
  EXPECT_EQ(
      warningsIn(song(0, "[0, 0, 100], [4, 1, 100]", R"(, "tracks": [{"index": 0, "name": "KIT"}])" + pads)),
      "Track 0 (KIT): Pads 0 (KICK) and 1 (SNARE) share choke group 2 and cut each other off; set pad_choke "
      "to NONE unless that is intended\n");
  EXPECT_EQ(warningsIn(song(0, "[0, 2, 100], [4, 3, 100]")), "");
}

TEST(Advice, LongListsAreCut) {
  std::string patterns, clips;
  for (int i = 0; i < 9; i++) {
    patterns += std::string(i ? "," : "") + R"({"track": 1})";
    clips += std::string(i ? "," : "") + R"({"track": 1, "pattern": )" + std::to_string(i) + R"(, "at": )" +
             std::to_string(16 * i) + "}";
  }
  const std::string all = warningsIn(R"({"patterns": [)" + patterns + R"(], "clips": [)" + clips + "]}");
  EXPECT_NE(all.find(" (+3 more)"), std::string::npos) << all;
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1);
}

TEST(Advice, ExamplesBuildValidateAndHaveNone) {
  ASSERT_GT(spec::exampleCount(), 0);
  for (int i = 0; i < spec::exampleCount(); i++) {
    EXPECT_EQ(verdictOn(parsed(spec::exampleText(i))).message, "") << i;
    EXPECT_EQ(warningsIn(spec::exampleText(i)), "") << i;
    EXPECT_NE(spec::exampleInfo(i).name, "") << i;
    EXPECT_NE(spec::exampleInfo(i).description, "") << i;
    EXPECT_GT(spec::makeExample(i)->clipCount, 0) << i;
  }
  for (int i = 0; i < spec::fixtureCount(); i++)
    EXPECT_EQ(verdictOn(parsed(spec::fixtureText(i))).message, "") << i;
}

TEST(Advice, TheSpecOfTheStartGuideBuilds) {
  const cli::Guide* guide = cli::guideNamed("start");
  ASSERT_TRUE(guide);
  const size_t from = guide->text.find("\n    {"), to = guide->text.rfind("\n    }");
  ASSERT_NE(from, std::string::npos);
  const std::string spec = guide->text.substr(from, to + 6 - from);
  EXPECT_EQ(verdictOn(parsed(spec)).message, "");
  EXPECT_EQ(warningsIn(spec), "");
  EXPECT_GT(built(spec)->noteCount, 0);
}

}  // namespace
}  // namespace synth::test
