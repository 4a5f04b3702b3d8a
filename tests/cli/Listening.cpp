// The commands that listen: what they take for audio and what for a project, their refusals, their reports.
#include <sys/stat.h>

#include <cmath>

#include "base/Text.h"
#include "support/Cli.h"
#include "support/PngReader.h"

namespace synth::cli {
namespace {

using test::expectRefusals;
using test::quorel;
using test::Reply;
using test::TempFolder;
using test::Words;
using test::writeAll;

// A kit and a bass over two bars, marked, as a project and as its render.
class Listening : public ::testing::Test {
 protected:
  void SetUp() override {
    writeAll(spec, R"({"project": {"bpm": 126},
      "tracks": [{"index": 0, "kind": "DRUMS", "name": "DRUMS"}, {"index": 1, "name": "BASS",
        "params": {"engine": "ANALOG", "level": 0.6, "send_2": 0.3}}],
      "patterns": [{"track": 0, "id": 0, "length": 16, "notes": [[0, 0, 110], [4, 1, 100], [8, 0, 110],
          [12, 1, 100], [0, 2, 90], [2, 2, 60], [4, 2, 90], [6, 2, 60], [8, 2, 90], [10, 2, 60], [12, 2, 90],
          [14, 2, 60]]},
        {"track": 1, "id": 0, "length": 32, "notes": [[0, 33, 110, 512], [6, 45, 90, 256], [10, 33, 100, 512],
          [16, 36, 100, 512], [22, 48, 90, 256], [26, 31, 100, 512]]}],
      "clips": [{"track": 0, "at": 0, "pattern": 0}, {"track": 0, "at": 16, "pattern": 0},
        {"track": 1, "at": 0, "pattern": 0}],
      "markers": [{"at": 0, "name": "IN"}, {"at": 16, "name": "OUT"}]})");
    ASSERT_EQ(quorel({"project", "build", spec, project}).status, 0);
    ASSERT_EQ(quorel({"render", project, "--out", wav, "--loops", "4"}).status, 0);
    writeAll(noise, std::string(30000, 'x'));
  }
  TempFolder folder;
  const std::string spec = folder / "song.json", project = folder / "song.quorel", wav = folder / "song.wav",
                    noise = folder / "noise.mp3", png = folder / "picture.png";
};

TEST_F(Listening, AnalyzeReportsFilesProjectsAndTheirParts) {
  const Reply file = quorel({"analyze", wav, "--detail"});
  std::string keys;
  for (const json::Json::Member& member : file.at("data").members()) keys += member.key + " ";
  EXPECT_EQ(keys,
            "seconds loudness bands_db timbre motion stereo space rhythm envelope pitch timeline "
            "third_octave_db onset_times_s ");
  EXPECT_EQ(file.number("data.timeline.window_s"), 2);
  EXPECT_EQ(quorel({"analyze", wav, "--bpm", "120"}).number("data.timeline.window_s"), 2);
  EXPECT_EQ(quorel({"analyze", wav, "--bpm", "60"}).number("data.timeline.window_s"), 4);

  const Reply song = quorel({"analyze", project});
  EXPECT_NEAR(song.number("data.seconds"), 2 * 240 / 126.0, 0.01);
  EXPECT_NEAR(song.number("data.timeline.window_s"), 240 / 126.0, 1e-3);
  EXPECT_EQ(quorel({"analyze", spec}).line("data"), song.line("data"));
  EXPECT_NEAR(quorel({"analyze", project, "--range", "0:8"}).number("data.seconds"), 120 / 126.0, 0.01);
  EXPECT_NEAR(quorel({"analyze", project, "--section", "OUT"}).number("data.seconds"), 240 / 126.0, 0.01);
  const double bass = quorel({"analyze", project, "--track", "BASS"}).number("data.timbre.centroid_hz");
  const double hat =
      quorel({"analyze", project, "--track", "0", "--pad", "2"}).number("data.timbre.centroid_hz");
  EXPECT_GT(hat, 4 * bass);

  const Reply wet = quorel({"analyze", project, "--track", "BASS", "--wet"});
  EXPECT_LT(wet.number("data.space.wet_share_db"), -3);
  EXPECT_GT(wet.number("data.space.wet_share_db"), -60);
  EXPECT_LT(
      quorel({"analyze", project, "--track", "0", "--pad", "0", "--wet"}).number("data.space.wet_share_db"),
      wet.number("data.space.wet_share_db"));
  const Reply known =
      quorel({"analyze", project, "--track", "0", "--pad", "0", "--note-on", "0", "--note-off", "0.2"});
  EXPECT_EQ(known.number("data.envelope.measured_hits"), 1);
  EXPECT_EQ(known.number("data.envelope.measured_tails"), 1) << known.text;
}

TEST_F(Listening, GridFindsTheSongsTempoAndItsSteps) {
  const Reply grid = quorel({"grid", wav, "--bars", "2"});
  EXPECT_NEAR(grid.number("data.grid.bpm"), 126, 0.05);
  EXPECT_NEAR(grid.number("data.grid.downbeat_s"), 0, 0.011);
  ASSERT_EQ(grid.count("data.steps.bars"), 2u);
  EXPECT_EQ(grid.string("data.steps.bars[1].low").size(), 19u);
  EXPECT_EQ(quorel({"grid", wav}).count("data.steps.bars"), 4u);
  EXPECT_EQ(quorel({"grid", wav, "--from", "3"}).number("data.steps.bars[0].bar"), 3);
  EXPECT_NEAR(quorel({"grid", wav, "--bpm", "125.5"}).number("data.grid.bpm"), 126, 0.05);
  EXPECT_NEAR(quorel({"grid", wav, "--downbeat", "0.5"}).number("data.grid.downbeat_s"), 0.5, 1e-9);
}

TEST_F(Listening, SpectrogramsAreWrittenOnceAndSayHowToBeRead) {
  const Reply drawn =
      quorel({"spectrogram", wav, "--out", png, "--from", "2", "--bars", "2", "--fmin", "C2"});
  ASSERT_EQ(drawn.status, 0) << drawn.text;
  EXPECT_NEAR(drawn.number("data.span_s[0]"), 240 / 126.0, 0.02);
  EXPECT_NEAR(drawn.number("data.span_s[1]"), 3 * 240 / 126.0, 0.02);
  EXPECT_EQ(drawn.number("data.panels"), 1);
  EXPECT_EQ(drawn.string("data.read").find("Open the PNG with your image reader. "), 0u);
  const test::Pixels one = test::PngReader::read(test::readAll(png));
  EXPECT_EQ(one.width, 600u);

  EXPECT_EQ(quorel({"spectrogram", wav, "--out", png}).code(), "exists");
  const Reply two = quorel(
      {"spectrogram", wav, "--vs", project, "--out", png, "--force", "--width", "900", "--time", "0..4"});
  EXPECT_EQ(two.number("data.panels"), 2);
  EXPECT_EQ(two.number("data.vs_offset_s"), 0);
  EXPECT_TRUE(two.at("data.alignment.automatic").boolean());
  const test::Pixels both = test::PngReader::read(test::readAll(png));
  EXPECT_EQ(both.width, 900u);
  EXPECT_GT(both.height, one.height);
  EXPECT_TRUE(quorel({"spectrogram", wav, "--out", png, "--force", "--no-grid"}).at("data.grid").isNull());
  // A project's bars are its own, also where a span begins between two of them.
  const Reply own = quorel({"spectrogram", project, "--out", png, "--force", "--range", "8:32"});
  EXPECT_EQ(own.number("data.grid.bpm"), 126);
  EXPECT_NEAR(own.number("data.grid.downbeat_s"), 120 / 126.0, 1e-3);
  const Reply fixed =
      quorel({"spectrogram", project, "--out", png, "--force", "--bpm", "1e-310", "--downbeat", "250"});
  EXPECT_EQ(fixed.number("data.grid.bpm"), 1);
  EXPECT_EQ(fixed.number("data.grid.downbeat_s"), 10);
}

TEST_F(Listening, CompareJudgesARenderAndItsStems) {
  const Reply same = quorel({"compare", wav, project});
  EXPECT_EQ(same.number("data.scores.overall"), 100) << same.text;
  EXPECT_EQ(same.count("data.top_issues"), 0u);
  ASSERT_EQ(quorel({"render", project, "--stems", folder / "stems"}).status, 0);
  ASSERT_EQ(quorel({"project", "set", project, "level=0.1", "--track", "BASS", "--in-place"}).status, 0);
  const std::string bass = folder / "stems/01-BASS.wav", drums = folder / "stems/00-DRUMS.wav";
  const Reply stems = quorel({"compare", wav, project, "--stem", "bass=" + bass + "=BASS", "--stem",
                              "both=" + wav + "=" + bass + "+" + drums, "--png", png, "--per-bar"});
  ASSERT_EQ(stems.status, 0) << stems.text;
  EXPECT_NEAR(stems.number("data.stems[0].differences.loudness_lu"), -15.6, 1);
  EXPECT_NE(stems.string("data.stems[0].top_issues[0]").find("quieter"), std::string::npos);
  EXPECT_EQ(stems.string("data.stems[1].name"), "both");
  std::string keys;
  for (const json::Json::Member& member : stems.at("data").members()) keys += member.key + " ";
  EXPECT_EQ(keys.substr(keys.find("note")), "note stems per_bar png ");
  EXPECT_GT(test::PngReader::read(test::readAll(png)).height, 300u);
  EXPECT_EQ(quorel({"compare", wav, project, "--png", png}).code(), "exists");
  EXPECT_EQ(quorel({"compare", wav, wav, "--offset", "-0.25"}).number("data.alignment.offset_s"), -0.25);
}

TEST_F(Listening, RefusalsSayWhatToDo) {
  const std::string missing = folder / "none.wav", tiny = folder / "tiny.wav";
  ASSERT_EQ(quorel({"render", project, "--out", tiny, "--range", "0:1", "--tail", "0"}).status, 0);
  const std::string formats = "WAV works everywhere; MP3, AAC, AIFF and FLAC on macOS";
  for (const char* command : {"analyze", "grid"}) {
    expectRefusals("not_found", {command}, {{{missing}, "No such file: " + missing}});
    expectRefusals("invalid_audio", {command},
                   {{{noise}, noise + ": not an audio file this system can decode", formats}});
  }
  // A pipe without a writer must not be waited for.
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  expectRefusals("invalid_audio", {},
                 {{{"analyze", pipe}, "Cannot read " + pipe, formats},
                  {{"spectrogram", wav, "--vs", pipe, "--out", png}, "Cannot read " + pipe, formats},
                  {{"compare", wav, pipe}, "Cannot read " + pipe, formats}});
  expectRefusals("usage", {"analyze", wav},
                 {{{"--track", "1"}, "--range, --section, --track, --pad and --wet are for projects"},
                  {{"--wet"}, "--range, --section, --track, --pad and --wet are for projects"},
                  {{"--note-on", "0,a"}, "--note-on takes seconds separated by commas, e.g. 0,2.5"},
                  {{"--note-off", ""}, "--note-off takes seconds separated by commas, e.g. 0,2.5"},
                  {{"--bpm", "401"}, "--bpm must be a number 0..400, got 401"}});
  expectRefusals("usage", {"analyze", project},
                 {{{"--pad", "2"}, "--pad needs --track with a Drums track"},
                  {{"--pad", "2", "--track", "1"}, "--pad needs --track with a Drums track"},
                  {{"--range", "4:2"}, "--range is FROM:TO"},
                  {{"--range", "0:8", "--section", "IN"}, "Choose one of --range and --section"}});
  expectRefusals("unknown_track", {"analyze", project}, {{{"--track", "LEAD"}, "No track named LEAD"}});
  expectRefusals("out_of_range", {"analyze", project}, {{{"--range", "64:80"}, "The range begins past"}});
  expectRefusals("render_failed", {"analyze", project},
                 {{{"--range", "0:60000"}, "Render failed: A pass lasts longer than an hour"}});
  expectRefusals("unknown_section", {"analyze", project}, {{{"--section", "X"}, "No Marker named X"}});
  expectRefusals("invalid_audio", {"grid"},
                 {{{tiny}, "Audio too short to fit a grid (under 2 s)"},
                  {{wav, "--from", "99"}, "The span is empty: it starts after the end of the audio ("}});
  expectRefusals("usage", {"spectrogram", wav},
                 {{{}, "spectrogram needs --out"},
                  {{"--out", png, "--time", "3"}, "--time is A..B, got 3"},
                  {{"--out", png, "--time", "3..2"}, "--time: B must be greater than A"},
                  {{"--out", png, "--time", "0..2", "--from", "1"}, "Choose one of --time and --from/--bars"},
                  {{"--out", png, "--fmin", "H2"}, "--fmin is Hz or a note like C#3, got H2"},
                  {{"--out", png, "--fmax", "C#"}, "--fmax needs an octave, e.g. C#3, got C#"},
                  {{"--out", png, "--fmin", "A4", "--fmax", "A4"}, "--fmax must be above --fmin"},
                  {{"--out", wav, "--force"}, "--out " + wav + " is the input itself"},
                  {{"--out", png, "--width", "100"}, "--width must be an integer 200..4000"}});
  const std::string empty = folder / "empty.wav";
  writeAll(empty, test::readAll(wav).substr(0, 36) + std::string("data\0\0\0\0", 8));
  expectRefusals("invalid_audio", {"spectrogram"},
                 {{{empty, "--out", png}, "Nothing to draw"},
                  {{empty, "--out", png, "--time", "0..1"}, "Nothing to draw"},
                  {{wav, "--out", png, "--time", "90..95"}, "The span is empty"},
                  {{wav, "--out", png, "--time", "1..1.01"}, "The time span is shorter than 50 ms"},
                  {{tiny, "--out", png, "--from", "1"},
                   "No beat grid found for --from/--bars",
                   "Use --time A..B in seconds, or fix the grid with --bpm and --downbeat"}});
  EXPECT_EQ(
      quorel({"spectrogram", tiny, "--out", png, "--from", "1", "--bpm", "60", "--downbeat", "0"}).status, 0);
  expectRefusals("write_failed", {"spectrogram", wav},
                 {{{"--out", folder / "no/such.png"},
                   "Cannot write " + (folder / "no/such.png"),
                   "Cannot create temporary output: No such file or directory"}});
  expectRefusals("usage", {"compare", wav, wav},
                 {{{"--section", "IN"}, "--range and --section are for projects"},
                  {{"--stem", "bass=x"},
                   "--stem is NAME=REF=RENDER, got bass=x",
                   "e.g. --stem bass=stems/bass.wav=1 (track 1 of the project)"},
                  {{"--stem", "bass=" + wav + "=1"},
                   "Track numbers or names in --stem need a project to render; 1 is not a file"}});
  expectRefusals("invalid_audio", {"compare"}, {{{tiny, wav}, "The reference is shorter than 0.5 s"}});
  expectRefusals("not_found", {"compare"},
                 {{{missing, wav}, "No such file: " + missing},
                  {{wav, wav, "--stem", "x=" + missing + "=" + wav}, "No such file: " + missing}});
}

}  // namespace
}  // namespace synth::cli
