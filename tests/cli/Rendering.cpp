// render as a user meets it: WAV files of the right length and sound, ranges, Sections, stems, and refusals.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "support/Cli.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;

// Two quiet Tracks at 240 beats a minute, where a Step lasts 3000 frames; the kit enters at Step 8.
constexpr const char* duo = R"({
  "project": {"bpm": 240, "track_count": 4},
  "tracks": [{"index": 0, "name": "KIT", "params": {"level": 0.3, "send_1": 0, "send_2": 0}},
             {"index": 1, "name": "A/B", "params": {"level": 0.3, "send_1": 0, "send_2": 0, "release": 0.01}},
             {"index": 2, "name": "IDLE"}],
  "patterns": [{"track": 0, "notes": [[0, 0, 100], [2, 1, 100], [5, 3, 80]]},
               {"track": 1, "length": 4, "notes": [[0, 48, 100, 512], [2, 55, 80]]}, {"track": 2}],
  "clips": [{"track": 0, "at": 8, "pattern": 0, "length": 8}, {"track": 1, "at": 4, "pattern": 0, "length": 12},
            {"track": 2, "at": 0, "pattern": 0}],
  "markers": [{"at": 0, "name": "Intro"}, {"at": 8, "name": "Drop"}]})";

struct Song {
  TempFolder folder;
  std::string spec = folder / "duo.json";

  explicit Song(const std::string& text = duo) { writeAll(spec, text); }
  Reply render(Words words) const {
    words.insert(words.begin(), {"render", spec});
    return quorel(words);
  }
  std::string operator/(const std::string& name) const { return folder / name; }
};

u32 numberAt(const std::string& bytes, size_t at, size_t size) {
  u32 value = 0;
  for (size_t i = 0; i < size; i++) value |= u32(std::uint8_t(bytes[at + i])) << (8 * i);
  return value;
}

// Reads a 24-bit stereo file and checks every field of its header.
Audio wavAt(const std::string& path) {
  const std::string bytes = readAll(path);
  EXPECT_GE(bytes.size(), 44u) << path;
  if (bytes.size() < 44) return {};
  const size_t frames = (bytes.size() - 44) / 6;
  EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 8) + bytes.substr(36, 4), "RIFFWAVEfmt data");
  EXPECT_EQ(numberAt(bytes, 4, 4), u32(bytes.size() - 8));
  EXPECT_EQ(numberAt(bytes, 16, 4), 16u);
  EXPECT_EQ(numberAt(bytes, 20, 2), 1u);
  EXPECT_EQ(numberAt(bytes, 22, 2), 2u);
  EXPECT_EQ(numberAt(bytes, 24, 4), 48000u);
  EXPECT_EQ(numberAt(bytes, 28, 4), 288000u);
  EXPECT_EQ(numberAt(bytes, 32, 2), 6u);
  EXPECT_EQ(numberAt(bytes, 34, 2), 24u);
  EXPECT_EQ(numberAt(bytes, 40, 4), u32(bytes.size() - 44));
  EXPECT_EQ(frames * 6 + 44, bytes.size());
  Audio audio{std::vector<float>(frames), std::vector<float>(frames)};
  auto sample = [&](size_t at) { return float(std::int32_t(numberAt(bytes, at, 3) << 8) >> 8) / 8388608.0f; };
  for (size_t i = 0; i < frames; i++) {
    audio.left[i] = sample(44 + 6 * i);
    audio.right[i] = sample(47 + 6 * i);
  }
  return audio;
}

TEST(Rendering, WritesTheWholeSongAndItsTail) {
  Song song;
  const Reply reply = song.render({"--out", song / "a.wav", "--tail", "0.5"});
  EXPECT_EQ(reply.status, 0) << reply.text;
  const Audio audio = wavAt(song / "a.wav");
  EXPECT_EQ(audio.size(), 16u * 3000 + 24000);
  EXPECT_EQ(reply.line("data"), R"({"wrote":)" + json::compact(Json(song / "a.wav")) +
                                    R"(,"format":"WAV","seconds":1.5,"span":{"from":0,"to":16},"loops":1,)" +
                                    R"("tail_s":0.5,"peak_dbfs":)" + reply.line("data.peak_dbfs") +
                                    R"(,"lufs":)" + reply.line("data.lufs") + "}");
  EXPECT_NEAR(reply.number("data.lufs"), quorel({"analyze", song / "a.wav"}).number("data.loudness.lufs"),
              0.1);
  const float loudest = std::max(peak(audio.left), peak(audio.right));
  EXPECT_NEAR(reply.number("data.peak_dbfs"), toDb(loudest), 0.06);
  EXPECT_GT(loudest, 0.01f);
  EXPECT_EQ(rms(audio.left, 0, 12000), 0);
  EXPECT_GT(rms(audio.left, 12000, 24000), 0.001);
  EXPECT_EQ(audio.left.back(), 0);
  EXPECT_EQ(audio.right.back(), 0);
  // Without --out the name is the input's, without --tail it rings for two seconds.
  EXPECT_EQ(song.render({}).string("data.wrote"), song / "duo.wav");
  EXPECT_EQ(wavAt(song / "duo.wav").size(), 48000u + 96000);
}

TEST(Rendering, IsTheSameEachTimeAndFromEitherFile) {
  Song song;
  ASSERT_EQ(quorel({"project", "build", song.spec, song / "duo.quorel"}).status, 0);
  song.render({"--out", song / "a.wav"});
  song.render({"--out", song / "b.WAV"});
  quorel({"render", song / "duo.quorel", "--out", song / "c", "--format", "wav"});
  EXPECT_EQ(digestAt(song / "a.wav"), digestAt(song / "b.WAV"));
  EXPECT_EQ(digestAt(song / "a.wav"), digestAt(song / "c"));
}

// What another program reads out of an audio file; empty where there is no ffmpeg.
Audio decoded(const std::string& path, const std::string& raw) {
  if (std::system(
          ("ffmpeg -v error -y -i '" + path + "' -f f32le -c:a pcm_f32le '" + raw + "' </dev/null").c_str()))
    return {};
  const std::string bytes = readAll(raw);
  Audio audio;
  for (size_t at = 0; at + 8 <= bytes.size(); at += 8) {
    float pair[2];
    std::memcpy(pair, bytes.data() + at, 8);
    audio.left.push_back(pair[0]);
    audio.right.push_back(pair[1]);
  }
  return audio;
}

TEST(Rendering, EveryFormatDecodesToTheSameSound) {
  Song song;
  ASSERT_EQ(song.render({"--out", song / "a.wav"}).status, 0);
  const Audio wav = wavAt(song / "a.wav");
  if (decoded(song / "a.wav", song / "raw").size() == 0) GTEST_SKIP() << "ffmpeg is not installed";
  for (const std::string extension : {"aiff", "flac", "mp3", "m4a"}) {
    const Reply reply = song.render({"--out", song / ("a." + extension)});
    ASSERT_EQ(reply.status, 0) << reply.text;
    const Audio audio = decoded(song / ("a." + extension), song / "raw");
    if (extension == "aiff" || extension == "flac") {
      EXPECT_TRUE(sameBytes(audio, wav)) << extension;
      continue;
    }
    // AAC pads its last packet; both lose nothing in front.
    ASSERT_GE(audio.size(), wav.size()) << extension;
    EXPECT_LT(audio.size(), wav.size() + (extension == "m4a" ? 2048 : 1)) << extension;
    EXPECT_NEAR(toDb(rms(audio.left) / rms(wav.left)), 0, 1) << extension;
    double error = 0, all = 0;
    for (size_t i = 0; i < wav.size(); i++) {
      error += std::pow(double(audio.left[i]) - wav.left[i], 2);
      all += std::pow(double(wav.left[i]), 2);
    }
    EXPECT_LT(error / all, 0.05) << extension << " is in time";
    EXPECT_EQ(song.render({"--out", song / ("b." + extension)}).status, 0);
    EXPECT_EQ(digestAt(song / ("a." + extension)), digestAt(song / ("b." + extension))) << extension;
  }
}

TEST(Rendering, AFormatThatCannotBeWrittenIsRefusedBeforeAnything) {
  Song song;
  const std::string path = std::getenv("PATH");
  ::setenv("PATH", "/nowhere", 1);
  const Reply reply = song.render({"--out", song / "a.m4a"});
  ::setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(reply.code(), "render_failed");
  EXPECT_EQ(reply.message(), "Render failed: This system cannot encode AAC: ffmpeg is not installed");
  EXPECT_FALSE(fs::exists(song / "a.m4a"));
}

TEST(Rendering, RangesSectionsAndLoops) {
  Song song;
  auto frames = [&](Words words, const std::string& span) {
    words.insert(words.end(), {"--out", song / "a.wav", "--force", "--tail", "0"});
    const Reply reply = song.render(words);
    EXPECT_EQ(reply.line("data.span"), span) << reply.text;
    return wavAt(song / "a.wav");
  };
  EXPECT_EQ(frames({"--range", "0:4"}, R"({"from":0,"to":4})").size(), 12000u);
  EXPECT_EQ(peak(wavAt(song / "a.wav").left), 0);
  const Audio range = frames({"--range", "8:16"}, R"({"from":8,"to":16})");
  EXPECT_EQ(range.size(), 24000u);
  EXPECT_GT(rms(range.left, 0, 3000), 0.005);
  EXPECT_TRUE(sameBytes(frames({"--section", "Drop"}, R"({"from":8,"to":16})"), range));
  EXPECT_EQ(frames({"--section", "Intro"}, R"({"from":0,"to":8})").size(), 24000u);
  EXPECT_EQ(frames({"--range", "8:16", "--loops", "3"}, R"({"from":8,"to":16})").size(), 72000u);
  const Audio twice = frames({"--loops", "2"}, R"({"from":0,"to":16})");
  ASSERT_EQ(twice.size(), 96000u);
  const double first = rms(twice.left, 12000, 48000), second = rms(twice.left, 60000, 94000);
  EXPECT_NEAR(toDb(second), toDb(first), 1);
}

TEST(Rendering, StemsAreOfOneLengthAndAddUpToTheWhole) {
  Song song;
  const Reply reply =
      song.render({"--out", song / "mix.wav", "--stems", song / "new/stems", "--tail", "0.25"});
  EXPECT_EQ(reply.status, 0) << reply.text;
  EXPECT_EQ(reply.line("data.stems"), R"([{"track":0,"name":"KIT","wrote":)" +
                                          json::compact(Json(song / "new/stems/00-KIT.wav")) +
                                          R"(},{"track":1,"name":"A/B","wrote":)" +
                                          json::compact(Json(song / "new/stems/01-A_B.wav")) + "}]");
  const Audio mix = wavAt(song / "mix.wav"), kit = wavAt(song / "new/stems/00-KIT.wav"),
              tune = wavAt(song / "new/stems/01-A_B.wav");
  ASSERT_EQ(kit.size(), mix.size());
  ASSERT_EQ(tune.size(), mix.size());
  EXPECT_EQ(rms(kit.left, 0, 24000), 0);
  EXPECT_GT(rms(tune.left, 12000, 24000), 0.001);
  std::vector<float> rest(mix.size());
  for (size_t i = 0; i < rest.size(); i++) rest[i] = mix.left[i] - kit.left[i] - tune.left[i];
  EXPECT_LT(rms(rest), rms(mix.left) * 0.05);
  // Beside a mix in a lossy format they stay whole; a format that is asked for is theirs too.
  ASSERT_EQ(song.render({"--out", song / "mix.mp3", "--stems", song / "whole", "--tail", "0.25"}).status, 0);
  EXPECT_EQ(wavAt(song / "whole/00-KIT.wav").left, kit.left);
  ASSERT_EQ(song.render({"--stems", song / "flac", "--format", "flac"}).status, 0);
  EXPECT_TRUE(fs::exists(song / "flac/01-A_B.flac"));
  // Stems alone leave no mix.
  const Reply alone = song.render({"--stems", song / "alone", "--range", "8:16"});
  EXPECT_TRUE(alone.at("data.wrote").isNull() && alone.at("data.lufs").isNull());
  EXPECT_EQ(alone.number("data.seconds"), 2.5);
  EXPECT_FALSE(fs::exists(song / "duo.wav"));
  EXPECT_EQ(wavAt(song / "alone/00-KIT.wav").size(), 24000u + 96000);
}

TEST(Rendering, RefusalsTouchNothing) {
  Song song;
  writeAll(song / "mine.wav", "mine");
  fs::create_directory(song / "stems");
  writeAll(song / "stems/01-A_B.wav", "mine");
  const auto before = contentsOf(song.folder.path());
  const std::string out = song / "a.wav";
  expectRefusals("exists", {"render", song.spec},
                 {{{"--out", song / "mine.wav"}, song / "mine.wav exists"},
                  {{"--out", out, "--stems", song / "stems"}, song / "stems/01-A_B.wav exists"}});
  expectRefusals(
      "usage", {"render", song.spec},
      {{{"--out", out, "--range", "0:4", "--section", "Drop"}, "Choose one of --range and --section"},
       {{"--out", out, "--range", "4"}, "--range is FROM:TO in Song steps, e.g. 0:64; got 4"},
       {{"--out", out, "--range", "4:4"}, "--range is FROM:TO"},
       {{"--out", out, "--range", "8:4"}, "--range is FROM:TO"},
       {{"--out", out, "--range", "-1:4"}, "--range is FROM:TO"},
       {{"--out", out, "--range", "0:1048577"}, "--range is FROM:TO"},
       {{"--out", out, "--range", "0:4:8"}, "--range is FROM:TO"},
       {{"--out", out, "--loops", "0"}, "--loops must be an integer 1..64, got 0"},
       {{"--out", out, "--loops", "65"}, "--loops must be an integer 1..64, got 65"},
       {{"--out", out, "--tail", "12.0001"}, "--tail must be a number 0..12, got 12.0001"},
       {{"--out", out, "--tail", "-0.1"}, "--tail must be a number 0..12, got -0.1"},
       {{"--out", out, "--tail", "nan"}, "--tail must be a number 0..12, got nan"},
       {{"--out", out, "--format", "ogg"}, "--format is wav, aiff, flac, mp3 or aac"},
       {{"--out", song / "a.ogg"}, ""},
       {{"--out", song / "a.wav", "--bogus"}, "Unknown option --bogus for render"}});
  expectRefusals("unknown_section", {"render", song.spec},
                 {{{"--out", out, "--section", "Bridge"}, "No Marker named Bridge"}});
  expectRefusals("write_failed", {"render", song.spec},
                 {{{"--out", song / "no/a.wav"}, "Cannot write " + (song / "no/a.wav")},
                  {{"--out", song.folder.path(), "--format", "wav", "--force"}, "Cannot write "}});
  EXPECT_EQ(song.render({"--out", out, "--section", "Bridge"}).hint(), "Markers: Intro, Drop");
  EXPECT_EQ(contentsOf(song.folder.path()), before);
}

TEST(Rendering, ASongWithoutClipsIsRefusedInEveryForm) {
  Song song(R"({"markers": [{"at": 4, "name": "Drop"}], "project": {"loop": [0, 16]}})");
  const auto before = contentsOf(song.folder.path());
  for (const Words& words : {Words{}, Words{"--range", "0:16"}, Words{"--stems", song / "stems"},
                             Words{"--range", "0:16", "--stems", song / "stems"}}) {
    const Reply reply = song.render(words);
    EXPECT_EQ(reply.status, 3) << reply.text;
    EXPECT_EQ(reply.code(), "render_failed");
    EXPECT_EQ(reply.message(), "Render failed: Nothing to export: the Song has no Clips");
  }
  EXPECT_EQ(song.render({"--section", "Drop"}).status, 3);
  EXPECT_EQ(contentsOf(song.folder.path()), before);
}

TEST(Rendering, NeverWritesOverItsOwnInput) {
  Song song;
  ASSERT_EQ(quorel({"project", "build", song.spec, song / "song.wav"}).status, 0);
  ASSERT_EQ(quorel({"project", "build", song.spec, song / "00-KIT.wav"}).status, 0);
  fs::create_symlink("song.wav", song / "link.wav");
  fs::create_hard_link(song / "song.wav", song / "twin.wav");
  const auto before = contentsOf(song.folder.path());
  const std::string input = song / "song.wav";
  for (const Words& words :
       {Words{input}, Words{input, "--out", input}, Words{input, "--out", song / "./song.wav"},
        Words{input, "--out", song / "link.wav"}, Words{input, "--out", song / "twin.wav"},
        Words{song / "link.wav", "--out", input}, Words{song.spec, "--out", song.spec, "--format", "wav"},
        Words{song / "00-KIT.wav", "--stems", song.folder.path()}}) {
    Words line{"render", "--force", "--tail", "0"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_NE(quorel(line).status, 0) << words.back();
    EXPECT_EQ(contentsOf(song.folder.path()), before) << words.back();
  }
}

TEST(Rendering, AMixIsNotReplacedByAStem) {
  Song song;
  const Reply reply =
      song.render({"--out", song / "00-KIT.wav", "--stems", song.folder.path(), "--tail", "0"});
  EXPECT_NE(reply.status, 0) << "the mix and a stem are one file";
  EXPECT_FALSE(fs::exists(song / "00-KIT.wav"));
}

}  // namespace
}  // namespace synth::test
