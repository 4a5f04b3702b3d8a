// What the commands tell of a project: its spec, what changed, a summary, its Patterns as text; and what the
// program tells of itself.
#include <cstdlib>

#include "cli/Pages.h"
#include "spec/Examples.h"
#include "support/Cli.h"

namespace synth::cli {
namespace {

using test::expectRefusals;
using test::quorel;
using test::readAll;
using test::Reply;
using test::TempFolder;
using test::writeAll;

class Inspecting : public ::testing::Test {
 protected:
  void SetUp() override {
    writeAll(spec, R"({"name": "TWO PARTS", "project": {"bpm": 96, "track_count": 3},
      "tracks": [{"index": 1, "name": "LOW", "preset": "FOUNDATION", "params": {"cutoff": 500}},
        {"index": 2, "engine_defaults": "FM", "macros": [{"name": "BITE", "value": 0.25}]}],
      "patterns": [{"track": 0, "notes": [[0, 0, 110], [4, 1, 70], [6, 2, 60, 192, 0, 2], [8, 0, 76]]},
        {"track": 1, "length": 20, "notes": [[0, 36, 100], [0, 43, 90], [18, 60, 80]]},
        {"track": 1, "id": 7, "notes": [[2, 48, 100]]}],
      "clips": [{"track": 0, "at": 0, "pattern": 0, "length": 32}, {"track": 1, "at": 0, "pattern": 0},
        {"track": 1, "at": 32, "pattern": 7, "offset": 4}],
      "lanes": [{"track": 1, "target": "CUTOFF", "points": [[0, 0.5], [3.5, 1]]}],
      "markers": [{"at": 0, "name": "A"}, {"at": 32, "name": "B"}]})");
    ASSERT_EQ(quorel({"project", "build", spec, project}).status, 0);
  }
  TempFolder folder;
  const std::string spec = folder / "song.json", project = folder / "song.quorel", out = folder / "out.json";
};

TEST_F(Inspecting, ExportsBuildBackToTheSameFile) {
  const Reply shown = quorel({"project", "export", project});
  EXPECT_EQ(shown.line("data.spec.tracks[0]"),
            R"({"index":1,"preset":"FOUNDATION","name":"LOW","params":{"cutoff":500}})");
  EXPECT_EQ(shown.line("data.spec.patterns[0].notes[2]"), "[6,2,60,192,0,2]");
  for (const char* full : {"", "--full"}) {
    test::Words words = {"project", "export", project, "--out", out, "--force"};
    if (*full) words.push_back(full);
    EXPECT_EQ(quorel(words).line("data"), "{\"wrote\":\"" + out + "\"}");
    EXPECT_EQ(readAll(out).back(), '\n');
    ASSERT_EQ(quorel({"project", "build", out, folder / "again.quorel", "--force"}).status, 0);
    EXPECT_EQ(test::digestAt(folder / "again.quorel"), test::digestAt(project)) << full;
  }
  EXPECT_EQ(quorel({"project", "export", project, "--out", out}).code(), "exists");
  EXPECT_EQ(quorel({"project", "export", spec}).line("data"), shown.line("data"));
  expectRefusals("write_failed", {"project", "export", project},
                 {{{"--out", folder / "no/such.json"}, "Cannot write " + (folder / "no/such.json")}});
  expectRefusals("not_found", {"project", "export"}, {{{folder / "none.quorel"}, "No such file: "}});
}

TEST_F(Inspecting, DiffSaysWhatChangedInTheWordsOfSpecs) {
  EXPECT_EQ(quorel({"project", "diff", project, spec}).line("data"), R"({"count":0,"changes":[]})");
  ASSERT_EQ(quorel({"project", "set", project, "cutoff=900", "--track", "LOW", "--out", folder / "b.quorel"})
                .status,
            0);
  const Reply diff = quorel({"project", "diff", project, folder / "b.quorel"});
  EXPECT_EQ(diff.line("data"),
            R"({"count":1,"changes":[{"path":"tracks[1].cutoff","from":500,"to":900,"shown":"900 Hz"}]})");
}

TEST_F(Inspecting, InspectSummarizes) {
  const Reply seen = quorel({"project", "inspect", project});
  std::string keys;
  for (const json::Json::Member& member : seen.at("data").members()) keys += member.key + " ";
  EXPECT_EQ(keys,
            "name bpm track_count song_steps song_seconds tracks patterns clips markers lanes warnings ");
  EXPECT_EQ(seen.number("data.song_steps"), 44);
  EXPECT_NEAR(seen.number("data.song_seconds"), 44 * 60 / (96.0 * 4), 1e-9);
  EXPECT_EQ(seen.count("data.tracks"), 3u);
  EXPECT_EQ(seen.string("data.tracks[0].kind"), "DRUMS");
  EXPECT_EQ(seen.string("data.tracks[1].preset"), "FOUNDATION");
  EXPECT_TRUE(seen.at("data.tracks[1].preset_changed").boolean());
  EXPECT_EQ(seen.line("data.tracks[2].macros"), R"([{"name":"BITE","polarity":"uni","value":0.25}])");
  EXPECT_EQ(seen.line("data.patterns[1]"),
            R"({"track":1,"id":0,"length":20,"notes":3,"clips":1,"lowest":36,"highest":60})");
  EXPECT_EQ(seen.line("data.clips[2]"),
            R"({"track":1,"at":32,"length":12,"pattern":7,"offset":4,"repeats":false})");
  EXPECT_EQ(seen.line("data.markers"), R"([{"at":0,"name":"A","end":32},{"at":32,"name":"B","end":44}])");
  EXPECT_EQ(seen.line("data.lanes"), R"([{"row":1,"lane":0,"target":"CUTOFF","points":2,"enabled":true}])");
  EXPECT_EQ(seen.string("data.warnings[0]").find("Track 2 ("), 0u) << seen.text;
  ASSERT_EQ(quorel({"project", "set", project, "cutoff=650", "--track", "LOW", "--in-place"}).status, 0);
  EXPECT_TRUE(quorel({"project", "inspect", project}).at("data.tracks[1].preset_changed").isNull());
}

TEST_F(Inspecting, GridShowsPatternsAsText) {
  const Reply grid = quorel({"project", "grid", project});
  ASSERT_EQ(grid.count("data.tracks"), 2u);
  EXPECT_EQ(grid.string("data.tracks[0].rows[0]"), "KICK         X... .... x... ....");
  EXPECT_EQ(grid.string("data.tracks[0].rows[1]"), "SNARE        .... x... .... ....");
  EXPECT_EQ(grid.string("data.tracks[0].rows[2]"), "CLOSED HAT   .... ..X. .... ....") << "an Accent is loud";
  EXPECT_EQ(grid.count("data.tracks[1].rows"), 20u);
  EXPECT_EQ(grid.string("data.tracks[1].rows[0]"), "  0 C2 G2");
  EXPECT_EQ(grid.string("data.tracks[1].rows[1]"), "  1 .");
  const Reply other = quorel({"project", "grid", project, "--track", "LOW", "--pattern", "7"});
  EXPECT_EQ(other.string("data.tracks[0].rows[2]"), "  2 C3");
  expectRefusals("usage", {"project", "grid", project},
                 {{{"--pattern", "7"}, "--pattern needs --track"},
                  {{"--pattern", "9", "--track", "1"}, "Track 1 has no pattern 9", "Patterns: 0, 7"}});
}

TEST(SelfDescription, TheReferenceThatIsKeptIsTheOneThatIsGenerated) {
  for (const Page& page : referencePages())
    EXPECT_EQ(test::digest(readAll(QUOREL_SOURCE_DIR "/docs/reference/" + page.file)),
              test::digest(page.text))
        << "run: quorel docs --out docs/reference --force";
  TempFolder folder;
  const Reply docs = quorel({"docs", "--out", folder / "docs"});
  EXPECT_EQ(docs.count("data.files"), 4u);
  EXPECT_EQ(test::digestAt(folder / "docs/commands.md"),
            test::digestAt(QUOREL_SOURCE_DIR "/docs/reference/commands.md"));
  EXPECT_EQ(quorel({"docs", "--out", folder / "docs"}).code(), "exists");
  EXPECT_EQ(quorel({"schema"}).string("data.$schema"), "https://json-schema.org/draft/2020-12/schema");
}

TEST(SelfDescription, TheShellKnowsTheCommands) {
  TempFolder folder;
  writeAll(folder / "quorel.bash", bashCompletion());
  // What bash would offer behind a line of words.
  auto offered = [&](const std::string& line, int word) {
    const std::string script = "source '" + (folder / "quorel.bash") + "'; COMP_WORDS=(" + line +
                               "); COMP_CWORD=" + std::to_string(word) +
                               "; _quorel; echo \"${COMPREPLY[*]}\" > '" + (folder / "out") + "'";
    EXPECT_EQ(std::system(("bash -c \"" +
                           [&] {
                             std::string quoted;
                             for (char c : script)
                               quoted += c == '"' || c == '$' ? std::string("\\") + c : std::string(1, c);
                             return quoted;
                           }() +
                           "\"")
                              .c_str()),
              0);
    return readAll(folder / "out");
  };
  EXPECT_EQ(offered("quorel ren", 1), "render\n");
  EXPECT_EQ(offered("quorel project ex", 2), "export\n");
  EXPECT_EQ(offered("quorel project export x --f", 4), "--full --force\n");
  EXPECT_EQ(offered("quorel render x --st", 3), "--stems\n");
  EXPECT_EQ(offered("quorel help rend", 2), "render\n");
  EXPECT_EQ(offered("quorel guide st", 2), "start\n");
  EXPECT_EQ(offered("quorel project export my", 3), "\n") << "files are left to the shell";
  EXPECT_NE(zshCompletion().find("'export:Export a project as a JSON spec that rebuilds it exactly.'"),
            std::string::npos);
  EXPECT_NE(manPage().find(".SS quorel project export INPUT"), std::string::npos);
}

}  // namespace
}  // namespace synth::cli
