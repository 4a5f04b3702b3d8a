// The preset commands as a user meets them, with a library in a temporary folder.
#include <cmath>

#include "analysis/reading/ReadAudio.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/sounds/Factory.h"
#include "support/Cli.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;

struct Desk {
  TempFolder folder;
  std::string song = folder / "song.quorel", library = folder / "mine";

  Desk() { EXPECT_EQ(quorel({"project", "new", song}).status, 0); }

  // A preset command on this library.
  Reply preset(Words words) const {
    words.insert(words.begin(), "preset");
    words.insert(words.end(), {"--library", library});
    return quorel(words);
  }
  Reply save(const std::string& name, Words more = {}) const {
    Words words = {"save", song, "--track", "BASS", "--name", name, "--role", "BASS"};
    words.insert(words.end(), more.begin(), more.end());
    return preset(words);
  }
};

TEST(PresetCommands, ListFiltersAndShowPrintsWhatTheReaderReads) {
  Desk desk;
  const Reply all = desk.preset({"list"});
  EXPECT_EQ(all.count("data.presets"), preset::factory().size());
  EXPECT_EQ(all.string("data.directory"), desk.library);
  const Reply kits = desk.preset({"list", "--engine", "drums", "--tag", "warm", "--tag", "PUNCHY", "--style",
                                  "HOUSE", "--style", "POP"});
  ASSERT_GE(kits.count("data.presets"), 1u);
  EXPECT_EQ(kits.line("data.presets[0]"),
            R"({"name":"AFRO KIT","role":"PERC","family":"KIT","tags":["WARM","PUNCHY"],"style":["HOUSE"],)"
            R"("engine":"DRUMS","factory":true,"value_count":)" +
                std::to_string(preset::findFactory("AFRO KIT")->values.size()) + "}");
  EXPECT_EQ(desk.preset({"list", "--role", "BASS", "--family", "SAW"}).count("data.presets"), 0u);
  expectRefusals("usage", {"preset", "list"},
                 {{{"--role", "BASE"}, "No role BASE", "Did you mean: BASS"},
                  {{"--tag", "NICE"}, "No tag NICE"},
                  {{"--engine", "PIANO"}, "No engine PIANO"}});

  const Reply shown = desk.preset({"show", "808 glide"});
  EXPECT_EQ(shown.line("data.factory"), "true");
  EXPECT_EQ(shown.line("data.pins"), "null");
  EXPECT_EQ(shown.line("data.macros[1].targets[1]"),
            R"({"key":"release","amount":-1.300093,"shown":"×0.4061"})");
  writeAll(desk.folder / "x.preset", shown.string("data.text"));
  const Reply file = desk.preset({"show", desk.folder / "x.preset"});
  EXPECT_EQ(file.line("data.values"), shown.line("data.values"));
  EXPECT_EQ(file.line("data.warnings"), "[]");
  EXPECT_EQ(desk.preset({"show", "FOUNDATON"}).hint(), "Did you mean: FOUNDATION?");
  EXPECT_EQ(quorel({"preset", "families"}).line("data.roles[7]"),
            R"({"role":"FX","families":["RISER","FALL","IMPACT","WHOOSH","MAGIC","GLITCH","ZAP"]})");
}

TEST(PresetCommands, ASoundGoesFromATrackIntoTheLibraryAndOntoAnother) {
  Desk desk;
  const std::string before = digestAt(desk.song);
  const Reply saved =
      desk.save("My Bass", {"--family", "sub", "--tag", "dark", "--tag", "LONG", "--style", "dnb"});
  EXPECT_EQ(
      saved.line("data.preset"),
      R"({"name":"MY BASS","role":"BASS","family":"SUB","tags":["DARK","LONG"],"style":["DNB"],"engine":"ANALOG"})");
  EXPECT_EQ(saved.string("data.wrote"), desk.library + "/my-bass.preset");
  EXPECT_EQ(digestAt(desk.song), before);
  EXPECT_EQ(desk.preset({"list", "--style", "DNB"}).line("data.presets[0].factory"), "false");

  const Reply applied = desk.preset({"apply", desk.song, "my bass", "--track", "SYNTH A", "--in-place"});
  EXPECT_EQ(applied.string("data.preset.name"), "MY BASS");
  EXPECT_NE(applied.string("data.snapshot"), "");
  EXPECT_GT(applied.count("data.changes"), 3u);
  auto p = newProject();
  std::string error;
  ASSERT_TRUE(loadProject(desk.song, *p, error)) << error;
  EXPECT_EQ(std::tuple(nameText(p->tracks[2].name), p->tracks[2].level, p->tracks[2].cutoff),
            std::tuple("SYNTH A", 0.5f, p->tracks[1].cutoff));
  const std::string after = digestAt(desk.song);
  EXPECT_EQ(desk.preset({"apply", desk.song, "AFRO KIT", "--track", "1", "--in-place", "--dry-run"}).status,
            0);
  EXPECT_EQ(digestAt(desk.song), after);

  EXPECT_EQ(desk.preset({"rename", "my bass", "Our Bass"}).line("data.renamed"), "\"MY BASS\"");
  EXPECT_EQ(desk.preset({"show", "OUR BASS"}).line("data.factory"), "false");
  EXPECT_EQ(desk.preset({"delete", "our bass"}).string("data.deleted"), "OUR BASS");
  EXPECT_EQ(desk.preset({"show", "OUR BASS"}).code(), "unknown_preset");
}

TEST(PresetCommands, ASoundWhoseMacroStandsStillIsExported) {
  Desk desk;
  const std::string file = desk.folder / "still.preset";
  writeAll(file,
           "name = STILL\nrole = KEYS\nengine = ANALOG\nmacro = TURN bi -0\n  cutoff 0\n  decay -0 -0\n");
  ASSERT_EQ(desk.preset({"import", file}).status, 0);
  ASSERT_EQ(desk.preset({"apply", desk.song, "STILL", "--track", "1", "--in-place"}).status, 0);
  const Reply exported = quorel({"project", "export", desk.song});
  EXPECT_EQ(exported.status, 0) << exported.text;
  EXPECT_NE(exported.text.find("TURN"), std::string::npos);
}

TEST(PresetCommands, ImportChecksAndRewritesAFile) {
  Desk desk;
  const std::string path = desk.folder / "given.preset";
  writeAll(path, "engine=fm\nname=given\ntags = WARM\ncutof = 3\nCUTOFF = 900\n");
  const Reply reply = desk.preset({"import", path, "--role", "PAD", "--name", "New Name"});
  EXPECT_EQ(reply.line("data.warnings"), R"(["line 4: unknown parameter cutof, skipped"])");
  EXPECT_EQ(readAll(reply.string("data.wrote")),
            "# Quorel Preset\nname = NEW NAME\nrole = PAD\ntags = WARM\nengine = FM\n\ncutoff = 900\n");
  EXPECT_EQ(desk.preset({"import", path}).string("data.preset.name"), "GIVEN");
  EXPECT_EQ(desk.preset({"import", path}).code(), "exists");
  EXPECT_EQ(desk.preset({"import", path, "--force"}).status, 0);
  writeAll(path, "name = NO ENGINE");
  EXPECT_EQ(desk.preset({"import", path}).code(), "invalid_preset");
  EXPECT_EQ(desk.preset({"show", path}).hint(),
            "The format is described in core/Preset; quorel preset show FOUNDATION prints an example");
  EXPECT_EQ(desk.preset({"import", desk.folder / "none.preset"}).code(), "not_found");
}

TEST(PresetCommands, RefuseInTheirWordsAndChangeNothing) {
  Desk desk;
  ASSERT_EQ(desk.save("ONE").status, 0);
  ASSERT_EQ(desk.save("TWO").status, 0);
  const auto before = contentsOf(desk.folder.path());
  const std::string reserved = "Factory Presets keep their names; choose another";
  const struct {
    Words words;
    std::string code, message;
  } cases[] = {
      {{"save", desk.song, "--name", "X", "--role", "BASS"}, "usage", "preset save needs --track"},
      {{"save", desk.song, "--track", "1", "--name", "X"}, "usage", "preset save needs --role"},
      {{"save", desk.song, "--track", "1", "--name", "X", "--role", "BASE"}, "usage", "No role BASE"},
      {{"save", desk.song, "--track", "1", "--name", "X", "--role", "BASS", "--family", "SAW"},
       "usage",
       "No family SAW of BASS"},
      {{"save", desk.song, "--track", "0", "--name", "X", "--role", "PERC", "--family", "KICK"},
       "usage",
       "A Drums kit's family is KIT"},
      {{"save", desk.song, "--track", "1", "--name", "X", "--role", "BASS", "--tag",
        "DARK BRIGHT WARM CLEAN DIRTY"},
       "usage",
       "--tag can be given up to 4 times"},
      {{"save", desk.song, "--track", "1", "--name", "A NAME OF TWENTY-ONE.", "--role", "BASS"},
       "usage",
       "--name is up to 20 characters"},
      {{"save", desk.song, "--track", "9", "--name", "X", "--role", "BASS"}, "unknown_track", "No track 9"},
      {{"save", desk.song, "--track", "1", "--name", "one", "--role", "BASS"},
       "exists",
       "A Preset named ONE exists"},
      {{"save", desk.song, "--track", "1", "--name", "Glass", "--role", "BASS", "--force"},
       "reserved_name",
       reserved},
      {{"apply", desk.song, "ONE", "--in-place"}, "usage", "preset apply needs --track"},
      {{"apply", desk.song, "ONCE", "--track", "1", "--in-place"}, "unknown_preset", "No Preset named ONCE"},
      {{"apply", desk.song, "ONE", "--track", "1"}, "usage", "Choose where to write"},
      {{"rename", "ONE", "two"}, "exists", "A Preset named TWO exists"},
      {{"rename", "ONE", "GLASS"}, "reserved_name", reserved},
      {{"rename", "GLASS", "X"}, "reserved_name", "GLASS is a factory Preset and cannot be renamed"},
      {{"rename", "NONE", "X"}, "unknown_preset", "No Preset named NONE"},
      {{"delete", "GLASS"}, "reserved_name", "GLASS is a factory Preset and cannot be deleted"},
      {{"delete", "NONE"}, "unknown_preset", "No Preset named NONE"},
      {{"demo", "NONE"}, "unknown_preset", "No Preset named NONE"},
      {{"demo", "ONE", "--key", "X MINOR"}, "usage", "--key is ROOT [SCALE]"},
      {{"demo", "ONE", "--key", "A BLUES"}, "usage", "--key is ROOT [SCALE]"},
      {{"demo", "ONE", "--track", "1"}, "usage", "--track is of --project"},
      {{"demo", "ONE", "--tail", "13"}, "usage", "--tail must be a number 0..12"},
      {{"demo", "ONE", "--render", desk.song}, "exists", ""},
      {{"demo", "ONE", "--render", desk.folder / "no/such.wav"}, "write_failed", "Cannot write"},
  };
  for (const auto& c : cases) {
    const Reply reply = desk.preset(c.words);
    EXPECT_EQ(reply.code(), c.code) << reply.text;
    EXPECT_EQ(reply.status, cli::exitOf(c.code));
    EXPECT_EQ(reply.message().substr(0, c.message.size()), c.message);
  }
  EXPECT_EQ(contentsOf(desk.folder.path()), before);
  const Reply folder = quorel({"preset", "list", "--library", desk.song});
  EXPECT_EQ(folder.code(), "read_failed");
  EXPECT_EQ(folder.message(),
            "Cannot read the Preset library: Cannot read " + desk.song + ": Not a directory");
}

TEST(PresetCommands, DemoPlaysInTheKeyAndTempoOfTheSong) {
  Desk desk;
  ASSERT_EQ(
      quorel({"project", "set", desk.song, "bpm=90", "key_root=D", "key_scale=DORIAN", "--in-place"}).status,
      0);
  const Reply demo = desk.preset({"demo", "foundation", "--project", desk.song});
  EXPECT_EQ(demo.line("data.key"), "\"D DORIAN\"");
  EXPECT_EQ(demo.line("data.range"), R"({"low":24,"high":48,"centre":36})");
  EXPECT_EQ(std::tuple(demo.string("data.pattern"), demo.number("data.bpm"), demo.number("data.steps")),
            std::tuple("bassline", 90.0, 32.0));
  EXPECT_NEAR(demo.number("data.seconds"), 32 * 15.0 / 90, 1e-9);
  EXPECT_EQ(demo.line("data.notes[0]"), R"({"step":0,"length":512,"pitch":38,"note":"D2","velocity":112})");
  EXPECT_EQ(desk.preset({"demo", "GLASS", "--key", "f# dorian"}).string("data.key"), "F# DORIAN");
  EXPECT_EQ(desk.preset({"demo", "GLASS", "--key", "Bb"}).string("data.key"), "A# MINOR");
  const Reply kit = desk.preset({"demo", "AFRO KIT"});
  EXPECT_EQ(kit.line("data.key"), "null");
  EXPECT_EQ(kit.line("data.notes[1]"), R"({"step":0,"length":192,"pitch":2,"pad":"SHAKER","velocity":92})");
}

TEST(PresetCommands, DemoRendersDryOrInTheMixOfATrack) {
  Desk desk;
  const std::string wav = desk.folder / "demo.wav", before = digestAt(desk.song);
  const Reply dry = desk.preset({"demo", "GLASS", "--render", wav, "--tail", "0", "--bpm", "200"});
  EXPECT_EQ(dry.string("data.wav"), wav);
  const std::string first = digestAt(wav);
  EXPECT_GT(fs::file_size(wav), size_t(32 * 15.0 / 200 * 48000 * 4));
  EXPECT_EQ(desk.preset({"demo", "GLASS", "--render", wav}).code(), "exists");
  EXPECT_EQ(digestAt(wav), first);
  EXPECT_EQ(desk.preset({"demo", "GLASS", "--render", wav, "--project", desk.song}).message(),
            "--render with --project needs --track");
  const Reply mixed = desk.preset({"demo", "GLASS", "--render", wav, "--tail", "0", "--bpm", "200", "--force",
                                   "--project", desk.song, "--track", "SYNTH B"});
  EXPECT_EQ(mixed.status, 0) << mixed.text;
  EXPECT_NE(digestAt(wav), first);
  EXPECT_EQ(digestAt(desk.song), before);
  // A SAMPLER Preset without a Sample says why nothing is heard.
  EXPECT_EQ(desk.preset({"demo", "LOOP PAD", "--render", desk.folder / "loop.wav", "--tail", "0"})
                .count("data.warnings"),
            1u);
}

TEST(PresetCommands, DemoOfAFileNeedsNoLibrary) {
  Desk desk;
  const std::string file = desk.folder / "new.preset";
  writeAll(file, "name = NEW\nrole = FX\nfamily = ZAP\nengine = FM\ncutof = 1\n");
  const Reply demo = desk.preset({"demo", file, "--render", desk.folder / "new.wav", "--tail", "0"});
  EXPECT_EQ(demo.string("data.pattern"), "bursts");
  EXPECT_EQ(demo.line("data.warnings"), R"(["line 5: unknown parameter cutof, skipped"])");
  EXPECT_GT(fs::file_size(desk.folder / "new.wav"), 100000u);
}

// All other Tracks are silent in a demo, even one that is solo in the song.
TEST(PresetCommands, DemoIsHeardWhateverIsSolo) {
  Desk desk;
  auto loudness = [&] {
    const std::string wav = desk.folder / "solo.wav";
    EXPECT_EQ(desk.preset({"demo", "GLASS", "--render", wav, "--tail", "0", "--force", "--project", desk.song,
                           "--track", "2"})
                  .status,
              0);
    return digestAt(wav);
  };
  const std::string before = loudness();
  for (const Words& set : {Words{"solo=1", "--track", "1"}, Words{"mute=1", "--track", "2"}}) {
    Words words = {"project", "set", desk.song, "--in-place"};
    words.insert(words.end(), set.begin(), set.end());
    ASSERT_EQ(quorel(words).status, 0);
  }
  EXPECT_EQ(loudness(), before);
}

// A new project's Tracks make no sound of their own.
TEST(StarterSounds, AreSilentUntilANotePlays) {
  Desk desk;
  const std::string wav = desk.folder / "silence.wav";
  ASSERT_EQ(quorel({"render", desk.song, "--out", wav}).status, 0);
  EXPECT_EQ(peak(analysis::readAudio(wav).left), 0);
}

TEST(PresetCommands, SpecsNameTheUsersOwnPresetsToo) {
  Desk desk;
  const char* home = std::getenv("HOME");
  const std::string kept = home ? home : "";
  ::setenv("HOME", desk.folder.path().c_str(), 1);
  EXPECT_EQ(quorel({"preset", "save", desk.song, "--track", "BASS", "--name", "HOME BASS", "--role", "BASS"})
                .string("data.wrote"),
            desk.folder / "Library/Application Support/Quorel/Presets/home-bass.preset");
  writeAll(desk.folder / "s.json", R"({"tracks": [{"index": 2, "preset": "home bass"}]})");
  const Reply built = quorel({"project", "build", desk.folder / "s.json", desk.folder / "s.quorel"});
  kept.empty() ? ::unsetenv("HOME") : ::setenv("HOME", kept.c_str(), 1);
  EXPECT_EQ(built.status, 0) << built.text;
  auto p = newProject();
  std::string error;
  ASSERT_TRUE(loadProject(desk.folder / "s.quorel", *p, error)) << error;
  EXPECT_EQ(nameText(p->tracks[2].preset_name), "HOME BASS");
}

TEST(PresetCommands, ListALargeLibrary) {
  Desk desk;
  fs::create_directories(desk.library);
  for (int i = 0; i < 200; i++) {
    preset::Preset p = *preset::findFactory("808 GLIDE");
    p.name = "MINE " + std::to_string(i);
    writeAll(desk.library + "/" + preset::slug(p.name) + ".preset", preset::write(p));
  }
  const Reply list = desk.preset({"list"});
  EXPECT_EQ(list.count("data.presets"), 200 + preset::factory().size());
}

}  // namespace
}  // namespace synth::test
