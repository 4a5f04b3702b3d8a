// project set: values by key on the command line, where they go, and what is refused.
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
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
  }
  Reply set(Words words) const {
    words.insert(words.begin(), {"project", "set", path});
    return quorel(words);
  }
  ProjectPtr project(const std::string& file) const {
    auto p = newProject();
    std::string error;
    EXPECT_TRUE(loadProject(file, *p, error)) << error;
    return p;
  }
};

TEST(ProjectSet, ChangesTheInputItself) {
  Song song;
  const Reply reply = song.set({"bpm=124.5", "swing=0.56", "fx1_type=hall", "--in-place", "--compact"});
  EXPECT_EQ(reply.line("data.changes"), R"([{"path":"project.bpm","from":120,"to":124.5,"shown":"124.50"},)"
                                        R"({"path":"project.swing","from":0.5,"to":0.56,"shown":"56 %"},)"
                                        R"({"path":"project.fx1_type","from":0,"to":2,"shown":"HALL"}])");
  EXPECT_EQ(reply.string("data.wrote"), song.path);
  auto p = song.project(song.path);
  EXPECT_EQ(p->bpm, 124.5f);
  EXPECT_EQ(p->fx1.type, FX_HALL);
  // The shortest text of a float reads back to the same float.
  EXPECT_EQ(song.set({"swing=0.56", "--in-place"}).line("data.changes"), "[]");
}

TEST(ProjectSet, TracksByIndexOrNameAndPadsOfKits) {
  Song song;
  const std::string name(nameText(song.project(song.path)->tracks[2].name));
  EXPECT_EQ(song.set({"pan=-0.5", "--track", "2", "--in-place"}).line("data.changes[0].path"),
            R"("tracks[2].pan")");
  EXPECT_EQ(song.set({"cutoff=900", "--track", name, "--in-place"}).line("data.changes[0].path"),
            R"("tracks[2].cutoff")");
  std::string lower = name;
  for (char& c : lower) c = char(std::tolower(c));
  EXPECT_EQ(song.set({"filter_type=highpass", "--track", lower, "--in-place"}).line("data.changes[0].to"),
            "2");
  EXPECT_EQ(song.set({"pad_tone=0.25", "bpm=90", "level=1", "--track", "0", "--pad", "3", "--in-place"})
                .count("data.changes"),
            3u);
  auto p = song.project(song.path);
  EXPECT_EQ(p->tracks[2].pan, -0.5f);
  EXPECT_EQ(p->tracks[2].cutoff, 900);
  EXPECT_EQ(p->tracks[2].filter_type, 2);
  EXPECT_EQ(p->tracks[0].pad_tone[3], 0.25f);
  EXPECT_EQ(p->tracks[0].level, 1);
}

TEST(ProjectSet, MacrosByTheirNames) {
  Song song;
  auto p = song.project(song.path);
  for (int slot : {0, 1}) {
    MacroRec& macro = p->tracks[1].macros[slot];
    setName(macro.name, slot ? "TILT" : "SWELL");
    macro.polarity = u8(slot);
    p->tracks[1].macroCount++;
  }
  std::string error;
  ASSERT_TRUE(saveProject(*p, song.path, error)) << error;
  EXPECT_EQ(
      song.set({"SWELL=0.25", "TILT=-0.5", "pan=1", "--track", "1", "--in-place"}).count("data.changes"), 2u);
  p = song.project(song.path);
  EXPECT_EQ(p->tracks[1].macros[0].value, 0.25f);
  EXPECT_EQ(p->tracks[1].macros[1].value, -0.5f);
  const Words command{"project", "set", song.path, "--in-place", "--track"};
  expectRefusals("out_of_range", command,
                 {{{"1", "SWELL=-0.5"}, "A Macro's value is 0..1"},
                  {{"1", "TILT=1.5"}, "A Macro's value is -1..1 (bipolar)"}});
  expectRefusals("usage", command, {{{"1", "TILT=up"}, "A Macro's value is a number, got up"}});
  expectRefusals("unknown_parameter", command,
                 {{{"1", "SWEL=1"}, "Unknown parameter SWEL", "Did you mean: SWELL"},
                  {{"2", "SWELL=1"}, "Unknown parameter SWELL"}});
}

TEST(ProjectSet, AnotherKindStartsFromItsSoundWithoutTheOldPatterns) {
  Song song;
  ASSERT_EQ(song.set({"track_kind=drums", "--track", "1", "--in-place"}).status, 0);
  auto p = song.project(song.path);
  EXPECT_EQ(p->tracks[1].track_kind, DRUMS);
  EXPECT_EQ(p->patternCount, 3);
  EXPECT_EQ(song.set({"pad_tone=0.25", "--track", "1", "--pad", "0", "--in-place"}).status, 0);
}

TEST(ProjectSet, WritesElsewhereOrOnlyTells) {
  Song song;
  const std::string before = digestAt(song.path), out = song.folder / "out.quorel";
  ASSERT_EQ(song.set({"bpm=90", "--out", out}).status, 0);
  EXPECT_EQ(song.project(out)->bpm, 90);
  EXPECT_EQ(digestAt(song.path), before);
  const auto files = contentsOf(song.folder.path());
  EXPECT_EQ(song.set({"bpm=91", "--dry-run"}).line("data"),
            R"({"changes":[{"path":"project.bpm","from":120,"to":91,"shown":"91.00"}]})");
  EXPECT_EQ(song.set({"bpm=91", "--dry-run", "--in-place"}).number("data.changes[0].from"), 120);
  EXPECT_EQ(song.set({"bpm=91", "--dry-run", "--out", out}).number("data.changes[0].from"), 90);
  EXPECT_EQ(contentsOf(song.folder.path()), files);
  EXPECT_EQ(song.set({"bpm=91", "--out", out, "--force"}).status, 0);
  EXPECT_EQ(song.set({"bpm=92", "--out", song.path}).code(), "exists");
  EXPECT_EQ(song.project(out)->bpm, 91);
}

TEST(ProjectSet, RefusalsTouchNothing) {
  Song song;
  writeAll(song.folder / "out.quorel", "mine");
  std::filesystem::create_directory(song.folder / "dir");
  const auto before = contentsOf(song.folder.path());
  expectRefusals(
      "usage", {"project", "set", song.path},
      {{{"bpm=90"},
        "Choose where to write: --out FILE, or --in-place to ",
        "--dry-run shows the change without writing"},
       {{"bpm=90", "--out", song.folder / "a", "--in-place"}, ""},
       {{"bpm", "--in-place"}, "An assignment is KEY=VALUE, got bpm"},
       {{"=90", "--in-place"}, "An assignment is KEY=VALUE, got =90"},
       {{"cutoff=900", "--in-place"}, "cutoff is a track parameter", "--track"},
       {{"pad_tone=1", "--track", "0", "--in-place"}, "pad_tone is a pad parameter", "--pad"},
       {{"pad_tone=1", "--in-place"}, "pad_tone is a pad parameter", "--pad"},
       {{"pad_tone=1", "--track", "1", "--pad", "0", "--in-place"}, "--pad needs --track with a Drums track"},
       {{"bpm=90", "--pad", "0", "--in-place"}, "--pad needs --track with a Drums track"},
       {{"pad_tone=1", "--track", "0", "--pad", "8", "--in-place"}, "--pad must be an integer 0..7, got 8"}});
  expectRefusals("exists", {"project", "set", song.path},
                 {{{"bpm=90", "--out", song.folder / "out.quorel"}, "", "Pass --force"}});
  expectRefusals("unknown_parameter", {"project", "set", song.path},
                 {{{"bmp=90", "--in-place"}, "Unknown parameter bmp", "Did you mean: bpm"},
                  {{"xyzzyxyzzy=90", "--in-place"}, "Unknown parameter xyzzyxyzzy"},
                  {{"SWELL=1", "--track", "1", "--in-place"}, "Unknown parameter SWELL"}});
  expectRefusals("invalid_spec", {"project", "set", song.path},
                 {{{"bpm=fast", "--in-place"}, "bpm takes a number, not \"fast\"", "Range 40..240"},
                  {{"bpm=", "--in-place"}, "bpm takes a number, not \"\"", "Range 40..240"},
                  {{"bpm=nan", "--in-place"}, "bpm takes a number, not \"nan\""}});
  expectRefusals(
      "out_of_range", {"project", "set", song.path},
      {{{"bpm=300", "--in-place"}, "Out of range: bpm=300", "Range 40..240"},
       {{"track_count=2.5", "--in-place"}, "Out of range: track_count=2.5", "Range 1..16, integer"},
       {{"bpm=90", "swing=0.9", "--in-place"}, "Out of range: swing=0.9"}});
  expectRefusals("unknown_track", {"project", "set", song.path},
                 {{{"pan=0", "--track", "4", "--in-place"}, "No track", "Tracks: "},
                  {{"pan=0", "--track", "NOBODY", "--in-place"}, "No track named NOBODY", "Tracks: "},
                  {{"pan=0", "--track", "", "--in-place"}, "No track", "Tracks: "}});
  expectRefusals("unknown_option", {"project", "set", song.path},
                 {{{"filter_type=lopass", "--track", "1", "--in-place"},
                   "Unknown option 'lopass' for filter_type",
                   "Options: LOWPASS"}});
  expectRefusals("write_failed", {"project", "set", song.path},
                 {{{"bpm=90", "--out", song.folder / "no/a.quorel"}, "Cannot save "}});
  const Reply folder = quorel({"project", "set", song.folder / "dir", "bpm=90", "--in-place"});
  EXPECT_EQ(folder.code(), "not_found");
  EXPECT_EQ(folder.status, 4);
  EXPECT_EQ(folder.message(), "Cannot read " + (song.folder / "dir"));
  EXPECT_EQ(quorel({"project", "set", song.folder / "none.quorel", "bpm=90", "--in-place"}).code(),
            "not_found");
  EXPECT_EQ(quorel({"project", "set", song.folder / "out.quorel", "bpm=90", "--in-place"}).code(),
            "invalid_project");
  EXPECT_EQ(contentsOf(song.folder.path()), before);
}

}  // namespace
}  // namespace synth::test
