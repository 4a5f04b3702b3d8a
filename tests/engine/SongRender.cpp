// Rendering to files: lengths, the fade, the WAV's bytes, refusals, and that no Song clips.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "base/Sha256.h"
#include "core/model/Clips.h"
#include "core/model/Notes.h"
#include "engine/SongRender.h"
#include "engine/sinks/WavSink.h"
#include "spec/Examples.h"
#include "support/Rendered.h"
#include "support/TempFolder.h"

namespace synth::test {
namespace {

class MemorySink : public AudioSink {
 public:
  Audio audio;
  u64 promised = 0;
  bool finished = false;

  void begin(u32, u64 frames) override { promised = frames; }
  void write(const float* l, const float* r, unsigned n) override {
    EXPECT_LE(n, 256u);
    audio.left.insert(audio.left.end(), l, l + n);
    audio.right.insert(audio.right.end(), r, r + n);
  }
  void finish() override { finished = true; }
};

ProjectPtr loudSong() {
  auto p = oneTrack(ANALOG);
  Track& t = p->tracks[0];
  t.level = 1;
  t.trim = 24;
  t.engine1 = 1;
  t.sustain = 1;
  addLoop(*p, 0, 16, 0, 0);
  for (int slot = 0; slot < 8; slot++) {
    Note n;
    n.pitch = u8(40 + slot * 5);
    n.velocity = 127;
    n.length = 4096;
    setNote(*p, 0, 0, 0, slot, n);
  }
  return p;
}

std::string refusal(const Project& p, int loops, double tail) {
  MemorySink sink;
  std::string error;
  try {
    return renderSong(p, loops, sink, error, tail) ? "" : error;
  } catch (const std::runtime_error& fault) {
    return fault.what();
  }
}

TEST(SongRender, LengthsFadeAndLoops) {
  auto p = loudSong();
  p->limiter_ceiling = 0.9f;
  for (auto [loops, tail, frames] : {std::tuple{1, 0.0, 96000}, {2, 0.0, 192000}, {1, 1.5, 168000}}) {
    MemorySink sink;
    std::string error;
    ASSERT_TRUE(renderSong(*p, loops, sink, error, tail)) << error;
    EXPECT_EQ(sink.audio.size(), size_t(frames));
    EXPECT_EQ(sink.promised, u64(frames));
    EXPECT_TRUE(sink.finished);
    EXPECT_EQ(sink.audio.left.back(), 0);
    EXPECT_LE(peak(sink.audio.left), 0.9f);
    EXPECT_GT(peak(sink.audio.left), 0.8f);
    if (loops == 2) {
      EXPECT_GT(rms(sink.audio.left, 100000, 110000), 0.1) << "the second pass sounds";
    }
  }
}

TEST(SongRender, ASpanFollowsItsOwnStepsWithSwing) {
  auto p = loudSong();
  p->swing = 0.75f;
  EXPECT_DOUBLE_EQ(spanFrames(*p, 0, 1), 9000);
  EXPECT_DOUBLE_EQ(spanFrames(*p, 1, 2), 3000);
  EXPECT_DOUBLE_EQ(spanFrames(*p, 0, 16), 96000);
  MemorySink sink;
  std::string error;
  ASSERT_TRUE(renderSpan(*p, 0, 3, 2, sink, error, 0));
  EXPECT_EQ(sink.audio.size(), 42000u);
}

TEST(SongRender, Refusals) {
  auto p = loudSong();
  EXPECT_EQ(refusal(*p, 1, 12), "");
  EXPECT_EQ(refusal(*p, 0, 0), "Export loops must be 1..64");
  EXPECT_EQ(refusal(*p, 65, 0), "Export loops must be 1..64");
  EXPECT_EQ(refusal(*p, 1, 12.0001), "Tail must be 0..12 seconds");
  EXPECT_EQ(refusal(*p, 1, std::numeric_limits<double>::quiet_NaN()), "Tail must be 0..12 seconds");
  EXPECT_EQ(refusal(*oneTrack(ANALOG), 1, 99), "Nothing to export: the Song has no Clips");
  p->bpm = 10;
  EXPECT_EQ(refusal(*p, 1, 0), "Invalid tempo or swing");
  std::fill(std::begin(p->name), std::end(p->name), 'x');
  EXPECT_EQ(refusal(*p, 1, 0), "Project name must fit in 63 bytes");
}

TEST(SongRender, WavBytes) {
  EXPECT_EQ(to24Bit(1), 8388607);
  EXPECT_EQ(to24Bit(-1), -8388608);
  EXPECT_EQ(to24Bit(0.5f), 4194303) << "truncated";
  TempFolder folder;
  const std::string path = folder / "a.wav";
  std::string error;
  ASSERT_TRUE(exportWav(*loudSong(), path, 1, error, 0)) << error;
  const std::string bytes = readAll(path);
  ASSERT_EQ(bytes.size(), 44u + 96000 * 6);
  EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 8) + bytes.substr(36, 4), "RIFFWAVEfmt data");
  auto number = [&](size_t at) {
    return u32(u8(bytes[at])) | u32(u8(bytes[at + 1])) << 8 | u32(u8(bytes[at + 2])) << 16 |
           u32(u8(bytes[at + 3])) << 24;
  };
  EXPECT_EQ(number(4), bytes.size() - 8);
  EXPECT_EQ(number(24), 48000u);
  EXPECT_EQ(number(28), 288000u);
  EXPECT_EQ(number(40), bytes.size() - 44);
}

TEST(SongRender, AFailedExportLeavesTheOldFileAndNoLitter) {
  TempFolder folder;
  writeAll(folder / "a.wav", "old");
  {
    WavSink sink(folder / "a.wav");
    sink.begin(48000, 100);
    float x[10] = {};
    sink.write(x, x, 10);
  }
  EXPECT_EQ(readAll(folder / "a.wav"), "old");
  WavSink huge(folder / "b.wav");
  EXPECT_THROW(huge.begin(48000, 4294967260u / 6 + 1), std::runtime_error);
  WavSink nowhere(folder / "none/b.wav");
  EXPECT_THROW(nowhere.begin(48000, 100), std::runtime_error);
  int files = 0;
  for (auto& entry : std::filesystem::directory_iterator(folder.path())) files += entry.is_regular_file();
  EXPECT_EQ(files, 1);
}

TEST(SongRender, TheExampleSoundsTheSameOnEveryBuild) {
  TempFolder folder;
  std::string error;
  ASSERT_TRUE(exportWav(*spec::makeExample(0), folder / "song.wav", 1, error, 2)) << error;
  // Any change to the Engine's sound changes this; change it together with the song's description.
  const std::string expected = readAll(std::string(QUOREL_SOURCE_DIR) + "/tests/engine/example.sha256");
  EXPECT_EQ(hexOf(sha256(readAll(folder / "song.wav"))) + "\n", expected);
}

}  // namespace
}  // namespace synth::test
