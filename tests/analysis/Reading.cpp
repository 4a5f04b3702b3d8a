// Reading audio files: every WAV encoding, what stands between its chunks, other formats, and what each
// broken file is told.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "analysis/reading/ReadAudio.h"
#include "base/Process.h"
#include "engine/AudioFormats.h"
#include "support/TempFolder.h"

namespace synth::analysis {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;
using test::writeAll;

// ---- WAVs by hand.

template <class Value>
std::string raw(Value value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}
template <class Value>
std::string rawAll(std::initializer_list<Value> values) {
  std::string bytes;
  for (Value v : values) bytes += raw(v);
  return bytes;
}
std::string chunk(const std::string& id, const std::string& data) {
  return id + raw(u32(data.size())) + data + (data.size() % 2 ? std::string(1, '\0') : "");
}
std::string format(unsigned tag, unsigned channels, unsigned rate, unsigned bits) {
  const unsigned frame = channels * bits / 8;
  return raw(u16(tag)) + raw(u16(channels)) + raw(u32(rate)) + raw(u32(rate * frame)) + raw(u16(frame)) +
         raw(u16(bits));
}
std::string riff(const std::string& chunks) { return chunk("RIFF", "WAVE" + chunks); }
std::string wav(unsigned tag, unsigned channels, unsigned rate, unsigned bits, const std::string& data) {
  return riff(chunk("fmt ", format(tag, channels, rate, bits)) + chunk("data", data));
}

Audio readBytes(const std::string& bytes) {
  TempFolder folder;
  writeAll(folder / "x.wav", bytes);
  return readAudio(folder / "x.wav");
}

// The text it is refused with, without the path; "" when it is read.
std::string refusal(const std::string& path) {
  try {
    readAudio(path);
    return "";
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    return text.starts_with(path) ? text.substr(path.size()) : text;
  }
}
std::string refusalOf(const std::string& bytes, const std::string& name = "x.wav") {
  TempFolder folder;
  writeAll(folder / name, bytes);
  return refusal(folder / name);
}

using Floats = std::vector<float>;

TEST(Reading, EveryEncodingKeepsItsValues) {
  const std::tuple<unsigned, unsigned, std::string, Floats> cases[] = {
      {1, 8, std::string("\x00\x80\xC0\xFF", 4), {-1, 0, 0.5f, 127 / 128.0f}},
      {1, 16, rawAll<i16>({-32768, 0, 16384, 32767}), {-1, 0, 0.5f, 32767 / 32768.0f}},
      {1,
       24,
       std::string("\x00\x00\x80\x00\x00\x00\x00\x00\x40\xFF\xFF\x7F", 12),
       {-1, 0, 0.5f, 8388607 / 8388608.0f}},
      {1, 32, rawAll<i32>({INT32_MIN, 0, 1 << 30, 256}), {-1, 0, 0.5f, 256 / 2147483648.0f}},
      {3, 32, rawAll<float>({-1, 0, 0.5f, 3.25f}), {-1, 0, 0.5f, 3.25f}},
      {3, 64, rawAll<double>({-1, 0, 0.5, 1e-40}), {-1, 0, 0.5f, 1e-40f}},
  };
  for (const auto& [tag, bits, data, values] : cases) {
    const Audio mono = readBytes(wav(tag, 1, 48000, bits, data));
    EXPECT_EQ(mono.left, values) << tag << ", " << bits;
    EXPECT_EQ(mono.right, values) << tag << ", " << bits;
    const Audio stereo = readBytes(wav(tag, 2, 48000, bits, data + std::string(bits / 8, '\1')));
    EXPECT_EQ(stereo.left, (Floats{values[0], values[2]})) << "a partial last frame is dropped";
    EXPECT_EQ(stereo.right, (Floats{values[1], values[3]})) << tag << ", " << bits;
  }
}

TEST(Reading, ChannelsRatesAndLengths) {
  const Audio six = readBytes(wav(3, 6, 48000, 32, rawAll<float>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})));
  EXPECT_EQ(six.left, (Floats{1, 7}));
  EXPECT_EQ(six.right, (Floats{2, 8}));
  const size_t frame = 65535 * 8;
  std::string wide(3 * frame + 100, '\0');
  const double value = 0.25;
  std::memcpy(wide.data() + 2 * frame + 8, &value, 8);
  const Audio many = readBytes(wav(3, 65535, 48000, 64, wide));
  EXPECT_EQ(many.left, (Floats{0, 0, 0}));
  EXPECT_EQ(many.right, (Floats{0, 0, 0.25f}));

  for (const unsigned rate : {1000u, 8000u, 22050u, 44100u, 96000u, 4294967295u}) {
    const size_t n = 20001;
    const Audio audio = readBytes(wav(1, 1, rate, 8, std::string(n, '\xC0')));
    EXPECT_EQ(audio.size(), size_t(n * 48000.0 / rate)) << rate;
    for (const float x : audio.left) ASSERT_NEAR(x, 0.5, 1e-6) << rate;
  }
  EXPECT_EQ(readBytes(wav(1, 2, 44100, 16, "")).size(), 0u);
}

TEST(Reading, ChunksAreWalked) {
  const std::string fmt = chunk("fmt ", format(1, 1, 48000, 16)), samples = rawAll<i16>({16384, -16384});
  const Floats halves = {0.5f, -0.5f};
  const std::string other = chunk("fmt ", format(3, 2, 8000, 32)),
                    small = chunk("fmt ", std::string(15, '\1'));
  std::string many;
  for (int i = 0; i < 9000; i++) many += chunk("tiny", std::string(size_t(i % 3), 'x'));
  const std::string good[] = {
      chunk("LIST", "odd") + fmt + chunk("data", samples) + chunk("LIST", "x"),
      chunk("data", samples) + fmt,
      fmt + chunk("data", "1234567890") + chunk("data", samples),
      other + fmt + small + chunk("data", samples),
      many + fmt + chunk("JUNK", std::string(70001, 'j')) + many + chunk("data", samples) + many,
      fmt + "data" + raw(u32(0xFFFFFFFF)) + samples,
      fmt + chunk("data", samples) + "LIST" + raw(u32(1000)) + "cut",
      fmt + chunk("data", samples) + "half",
      // An extensible format tells its tag later, when it is long enough.
      chunk("fmt ", format(0xFFFE, 1, 48000, 16) + raw(u16(22)) + raw(u16(16)) + raw(u32(4)) + raw(u16(1)) +
                        std::string(14, '\x77')) +
          chunk("data", samples),
      chunk("fmt ", format(0xFFFE, 1, 48000, 16) + std::string(8, '\x77') + raw(u16(1))) +
          chunk("data", samples),
  };
  for (const std::string& chunks : good) EXPECT_EQ(readBytes(riff(chunks)).left, halves) << &chunks - good;
  // A file that was cut while its header promised more.
  const std::string whole = wav(1, 1, 48000, 16, rawAll<i16>({16384, -16384, 1, 2, 3}));
  EXPECT_EQ(readBytes(whole.substr(0, whole.size() - 5)).left, halves);
}

TEST(Reading, BrokenWavsAreTold) {
  const std::string data = chunk("data", std::string(64, '\0'));
  const std::string none = ": WAV without fmt or data";
  EXPECT_EQ(refusalOf(riff("")), none);
  EXPECT_EQ(refusalOf(riff(data)), none);
  EXPECT_EQ(refusalOf(riff(chunk("fmt ", format(1, 2, 48000, 16)))), none);
  EXPECT_EQ(refusalOf(riff(chunk("fmt ", format(1, 2, 48000, 16).substr(0, 15)) + data)), none);
  EXPECT_EQ(refusalOf(wav(1, 0, 48000, 16, "1234")), none);
  EXPECT_EQ(refusalOf(wav(1, 2, 999, 16, "1234")), none);
  EXPECT_EQ(refusalOf(wav(1, 2, 0, 0, "1234")), none);
  for (const unsigned bits : {0u, 4u, 7u})
    EXPECT_EQ(refusalOf(wav(1, 2, 48000, bits, "")), ": bad WAV sample size");
  const std::array<unsigned, 2> unsupported[] = {{1, 12}, {1, 20}, {1, 64}, {3, 16},     {3, 33},
                                                 {2, 8},  {7, 8},  {0, 16}, {65534, 16}, {1, 65535}};
  for (const auto& [tag, bits] : unsupported)
    EXPECT_EQ(
        refusalOf(wav(tag, 65535, 48000, bits, "1234")),
        ": unsupported WAV encoding (format " + std::to_string(tag) + ", " + std::to_string(bits) + " bit)");
}

TEST(Reading, WhatIsNoAudioIsTold) {
  TempFolder folder;
  EXPECT_EQ(refusal(folder / "absent.wav"), "Cannot read " + (folder / "absent.wav"));
  EXPECT_EQ(refusal(folder.path()), "Cannot read " + folder.path());
  EXPECT_EQ(refusal(""), "Cannot read ");
  const std::string no = ": not an audio file this system can decode";
  const std::string texts[] = {"",
                               "RIFF",
                               "RIFF\1\1\1\1WAVX",
                               "#EXTM3U\nother.m4a\n",
                               std::string(5000, '\0'),
                               "ffconcat version 1.0\nfile '/etc/passwd'\n"};
  for (const std::string& text : texts)
    for (const char* name : {"x.mp3", "x.m3u8"}) EXPECT_EQ(refusalOf(text, name), no) << name << ": " << text;
}

TEST(Reading, LongerThanAnHourIsRefusedUnread) {
  TempFolder folder;
  const std::string path = folder / "long.wav";
  auto sparse = [&](const std::string& start, std::uintmax_t size) {
    writeAll(path, start);
    fs::resize_file(path, size);
    return refusal(path);
  };
  const std::string head = "RIFF" + raw(u32(0)) + "WAVE";
  const std::string open = "data" + raw(u32(0xFFFFFFFF));
  const std::string slow = head + chunk("fmt ", format(1, 1, 8000, 8)) + open;
  EXPECT_EQ(sparse(slow, slow.size() + 3600 * 8000 + 1), ": longer than an hour");
  const std::string big = head + chunk("fmt ", format(3, 2, 48000, 32)) + open;
  EXPECT_EQ(sparse(big, 6ull << 30), ": longer than an hour");
  // A small piece in a huge file is still the piece.
  const std::string piece =
      head + chunk("fmt ", format(1, 1, 48000, 16)) + chunk("data", "1234") + "junk" + raw(u32(0xFFFFFFFF));
  EXPECT_EQ(sparse(piece, 6ull << 30), "");
}

// ---- Other formats.

constexpr size_t tonesLength = 24000;

// A half-loud tone to the left, a quieter one to the right.
Audio tones(int rate) {
  Audio audio;
  for (size_t i = 0; i < tonesLength; i++) {
    const double t = 6.283185307179586 * double(i) / rate;
    audio.left.push_back(float(0.5 * std::sin(440 * t)));
    audio.right.push_back(float(0.2 * std::sin(1300 * t)));
  }
  return audio;
}

void write(AudioFormat kind, const std::string& path, const Audio& audio, int rate) {
  const auto sink = makeFileSink(kind, path);
  sink->begin(u32(rate), audio.size());
  for (size_t at = 0; at < audio.size(); at += 256)
    sink->write(&audio.left[at], &audio.right[at], unsigned(std::min<size_t>(256, audio.size() - at)));
  sink->finish();
}

double rms(const Floats& x) {
  double sum = 0;
  for (size_t i = 4000; i < 20000; i++) sum += double(x[i]) * double(x[i]);
  return std::sqrt(sum / 16000);
}

// A coder may add a little silence at either end, and changes levels little.
void expectTones(const Audio& audio, size_t most, double tolerance, const std::string& what) {
  ASSERT_EQ(audio.left.size(), audio.right.size()) << what;
  ASSERT_GE(audio.size(), tonesLength) << what;
  ASSERT_LE(audio.size(), tonesLength + most) << what;
  EXPECT_NEAR(rms(audio.left), 0.5 / std::sqrt(2), tolerance) << what;
  EXPECT_NEAR(rms(audio.right), 0.2 / std::sqrt(2), tolerance) << what;
}

bool encode(const std::vector<std::string>& arguments) {
  std::vector<std::string> all{programPath("ffmpeg"), "-nostdin", "-v", "quiet", "-y"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  Process program;
  return !all[0].empty() && program.start(all) && program.finish() == 0;
}

TEST(Reading, EverySinkIsReadBack) {
  TempFolder folder;
  for (const int rate : {48000, 44100}) {
    const Audio audio = tones(rate);
    write(AudioFormat::Wav, folder / "x.wav", audio, rate);
    const Audio reference = readAudio(folder / "x.wav");
    for (const AudioFormatInfo& info : audioFormats()) {
      if (missingFor(info.format)) continue;
      const std::string path = folder / "x." + info.extension, what = info.label + std::to_string(rate);
      write(info.format, path, audio, rate);
      const Audio back = readAudio(path);
      if (info.format == AudioFormat::Mp3 || info.format == AudioFormat::Aac) {
        if (rate == 48000) expectTones(back, 2200, 0.003, what);
      } else {
        EXPECT_EQ(back.left, reference.left) << what;
        EXPECT_EQ(back.right, reference.right) << what;
      }
    }
  }
}

TEST(Reading, OtherCodersAndManyChannels) {
  TempFolder folder;
  write(AudioFormat::Wav, folder / "x.wav", tones(48000), 48000);
  // Six channels, of which the loud third must stay unheard.
  const std::string surround = "[0:a]pan=5.1|c0=c0|c1=c1|c2=3*c0|c4=c1|c5=c0";
  int decoded = 0;
  for (const char* name : {"x.ogg", "x.opus", "x.caf", "a:b %20d.m4a", "-x.m4a"}) {
    if (!encode({"-i", folder / "x.wav", "file:" + (folder / name)})) continue;
    expectTones(readAudio(folder / name), 2200, 0.01, name);
    decoded++;
  }
  for (const char* name : {"six.flac", "six.m4a", "six.wav"}) {
    if (!encode({"-i", folder / "x.wav", "-filter_complex", surround, folder / name})) continue;
    expectTones(readAudio(folder / name), 2200, 0.01, name);
    decoded++;
  }
  if (fs::exists(folder / "-x.m4a")) {
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    expectTones(readAudio("-x.m4a"), 2200, 0.01, "a name like an option");
    fs::current_path(before);
  }
  if (decoded == 0) GTEST_SKIP() << "nothing here writes these formats";
}

TEST(Reading, DamageIsTold) {
  TempFolder folder;
  const std::string no = ": not an audio file this system can decode", failed = ": decoding failed";
  if (!missingFor(AudioFormat::Flac)) {
    write(AudioFormat::Flac, folder / "x.flac", tones(48000), 48000);
    const std::string flac = test::readAll(folder / "x.flac");
    EXPECT_EQ(refusalOf(flac.substr(0, flac.size() / 2), "x.flac"), failed);
    std::string liar = flac;
    for (size_t i = 21; i < 26; i++) liar[i] = char(liar[i] | 0x0F);
    EXPECT_EQ(refusalOf(liar, "x.flac"), ": longer than an hour");
  }
  if (!missingFor(AudioFormat::Aac)) {
    write(AudioFormat::Aac, folder / "x.m4a", tones(48000), 48000);
    ASSERT_TRUE(
        encode({"-i", folder / "x.m4a", "-movflags", "+faststart", "-c", "copy", folder / "fast.m4a"}));
    const std::string slow = test::readAll(folder / "x.m4a"), fast = test::readAll(folder / "fast.m4a");
    EXPECT_EQ(refusalOf(slow.substr(0, slow.size() / 2), "x.m4a"), no) << "its index stood at the end";
    EXPECT_EQ(refusalOf(fast.substr(0, fast.size() / 2), "x.m4a"), failed);
  }
}

}  // namespace
}  // namespace synth::analysis
