// What breaks if a comparison finds differences where there are none, or points at the wrong ones.
#include "analysis/compare/Compare.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "analysis/Hear.h"
#include "analysis/compare/PerBar.h"
#include "analysis/reading/Resample.h"
#include "core/params/Registry.h"
#include "support/Cli.h"
#include "support/Signals.h"

namespace synth::analysis {
namespace {

using test::parsed;

// Four parts over two bars, with something to hear in every band. They stand on the plain sounds, so that no
// Preset decides what a change of one value is heard as.
const char* const song = R"({
  "project": {"bpm": 112, "fx1_type": "DELAY", "fx2_type": "HALL"},
  "tracks": [
    {"index": 0, "kind": "DRUMS", "name": "DRUMS"},
    {"index": 1, "kind": "MELODIC", "name": "BASS", "params": {"engine": "ANALOG", "cutoff": 700, "level": 0.5,
      "send_1": 0.12, "send_2": 0.03}},
    {"index": 2, "kind": "MELODIC", "name": "CHORDS", "params": {"engine": "WAVETABLE", "cutoff": 3000,
      "attack": 0.02, "release": 0.4, "level": 0.5, "pan": -0.1, "send_1": 0.08, "send_2": 0.2,
      "mod_type": "CHORUS", "mod_mix": 0.4}},
    {"index": 3, "kind": "MELODIC", "name": "LEAD", "params": {"engine": "FM", "level": 0.45, "pan": 0.12,
      "send_1": 0.1, "send_2": 0.1}}],
  "patterns": [
    {"track": 0, "id": 0, "length": 32, "notes": [[0, 0, 110], [10, 0, 110], [16, 0, 110], [26, 0, 110],
      [4, 1, 105], [12, 1, 105], [20, 1, 105], [28, 1, 105], [0, 2, 100], [2, 2, 80], [4, 2, 100], [6, 2, 80],
      [8, 2, 100], [10, 2, 80], [12, 2, 100], [14, 2, 80], [16, 2, 100], [18, 2, 80], [20, 2, 100],
      [22, 2, 80], [24, 2, 100], [26, 2, 80], [28, 2, 100], [30, 2, 80]]},
    {"track": 1, "id": 0, "length": 32, "notes": [[0, 33, 100, 384], [4, 33, 100, 384], [8, 33, 100, 384],
      [12, 45, 100, 384], [16, 29, 100, 384], [20, 29, 100, 384], [24, 31, 100, 384], [28, 43, 100, 384]]},
    {"track": 2, "id": 0, "length": 32, "notes": [[0, 57, 85, 1792], [0, 60, 85, 1792], [0, 64, 85, 1792],
      [8, 57, 85, 1792], [8, 60, 85, 1792], [8, 65, 85, 1792], [16, 53, 85, 3584], [16, 57, 85, 3584],
      [16, 60, 85, 3584]]},
    {"track": 3, "id": 0, "length": 32, "notes": [[2, 69, 95, 512], [6, 72, 90, 512], [10, 76, 100, 512],
      [14, 74, 95, 512], [18, 72, 90, 512], [22, 69, 100, 512], [26, 67, 95, 512], [30, 69, 90, 512]]}],
  "clips": [{"track": 0, "at": 0, "pattern": 0}, {"track": 1, "at": 0, "pattern": 0},
    {"track": 2, "at": 0, "pattern": 0}, {"track": 3, "at": 0, "pattern": 0}]})";

Audio played(const Project& project, int track = -1) {
  Part part;
  part.track = track;
  return hear(project, part);
}

// Delayed by so many samples.
Audio later(const Audio& audio, int samples) {
  return shifted(audio, double(samples) / sampleRate, audio.size());
}

double scoreNamed(const json::Json& report, const char* name) {
  return report.find("scores")->find(name)->number();
}

TEST(Compare, AnythingAgainstItselfIsPerfect) {
  const Audio audio = played(*test::built(song));
  for (double bpm : {0.0, 112.0}) {
    CompareOptions options;
    options.bpm = bpm;
    options.perBar = options.detail = true;
    const json::Json report = compare(audio, audio, options);
    for (const json::Json::Member& score : report.find("scores")->members())
      EXPECT_EQ(score.value.number(), 100) << score.key;
    EXPECT_EQ(report.find("alignment")->find("offset_s")->number(), 0);
    EXPECT_TRUE(report.find("top_issues")->items().empty()) << json::pretty(*report.find("top_issues"));
    std::string keys;
    for (const json::Json::Member& member : report.members()) keys += member.key + " ";
    EXPECT_EQ(keys,
              "alignment scores differences top_issues note per_bar reference render third_octave_diff_db ");
  }
}

// Hits at irregular times fit in one place only.
test::Signal irregularHits() {
  test::Signal x;
  uint32_t seed = 1;
  for (double at : {0.3, 1.02, 1.37, 2.51, 2.66, 3.9, 4.43, 5.8, 6.19, 7.43})
    test::addAt(x, at, test::shaped(test::noise(0.5, 0.3, ++seed), 0.2));
  return x;
}

TEST(Compare, FindsTheOffsetToTheMillisecond) {
  const Audio hits = test::stereo(irregularHits()), music = played(*test::built(song));
  auto expectFound = [](const Audio& audio, int milliseconds) {
    const Alignment found = align(analyze(audio, 0, {}), analyze(later(audio, milliseconds * 48), 0, {}));
    EXPECT_NEAR(found.offsetS, -milliseconds / 1000.0, 0.0011) << milliseconds;
    EXPECT_TRUE(found.automatic);
  };
  for (int milliseconds : {-988, -950, -497, -203, 1, 64, 333, 871, 1000}) expectFound(hits, milliseconds);
  for (int milliseconds : {-117, -11, 7, 83}) expectFound(music, milliseconds);
}

TEST(Compare, IsSureOfAnOffsetOnlyWhereTheMusicDoesNotRepeat) {
  test::Signal regular;
  for (int i = 0; i < 16; i++) test::addAt(regular, i * 0.5, test::shaped(test::noise(0.5, 0.3, 7), 0.2));
  const Features a = analyze(test::stereo(irregularHits()), 0, {}), b = analyze(test::stereo(regular), 0, {});
  EXPECT_GT(align(a, a).confidence, 0.5);
  EXPECT_LT(align(b, b).confidence, 0.1);
  EXPECT_EQ(align(b, b).offsetS, 0);
  const Features quiet = analyze(test::stereo(test::silence(2)), 0, {});
  EXPECT_EQ(align(quiet, a).offsetS, 0);
  EXPECT_EQ(align(quiet, a).confidence, 0);
}

TEST(Compare, ASilentOrForeignRenderIsJudgedAndNothingBreaks) {
  const Audio audio = played(*test::built(song));
  const Audio nothing = test::stereo(test::silence(3));
  const Comparison silent = measureAgainst(audio, nothing, {});
  EXPECT_NEAR(silent.differences.loudnessLu, -70 - silent.reference.lufs, 1e-9);
  EXPECT_EQ(silent.differences.onsetF1, 0);
  EXPECT_LT(silent.scores.overall, 30);
  const Comparison reversed = measureAgainst(nothing, audio, {});
  EXPECT_LT(reversed.scores.overall, 40);
  for (const Issue& issue : reversed.issues) EXPECT_FALSE(std::isnan(issue.severity)) << issue.text;
  EXPECT_THROW(compare(test::stereo(test::noise(0.1, 0.49)), audio, {}), std::runtime_error);
  CompareOptions placed;
  placed.offset = 0;
  for (const CompareOptions& options : {CompareOptions{}, placed})
    EXPECT_THROW(compare(audio, test::stereo(test::noise(0.1, 0.02)), options), std::runtime_error);
  EXPECT_LE(compare(audio, test::stereo(test::noise(0.3, 4)), {}).find("top_issues")->items().size(), 5u);
}

TEST(Compare, TempiAnOctaveApartAgree) {
  test::Signal fast, slow;
  for (int i = 0; i < 24; i++)
    test::addAt(fast, i * 0.5, test::shaped(test::noise(i % 2 ? 0.2 : 0.5, 0.3, 3), 0.1));
  for (int i = 0; i < 12; i++) test::addAt(slow, i * 1.0, test::shaped(test::noise(0.5, 0.3, 3), 0.1));
  CompareOptions options;
  options.bpm = 60;
  const Comparison c = measureAgainst(test::stereo(fast), test::stereo(slow), options);
  EXPECT_NEAR(c.differences.referenceTempoBpm, 60, 0.3);
  EXPECT_NEAR(c.differences.tempoPct, 0, 0.5);
}

TEST(Compare, ALossyReferenceIsNotHeldAgainstTheTop) {
  // Noise, and the same without what is above 15 kHz.
  const Audio full = test::stereo(test::noise(0.3, 3));
  const Audio cut = test::stereo(resample(test::noise(0.3, 2), 32000, 48000));
  const json::Json report = compare(cut, cut, {});
  ASSERT_NE(report.find("lossy_reference"), nullptr);
  EXPECT_EQ(scoreNamed(report, "spectral_balance"), 100);
  EXPECT_EQ(compare(full, full, {}).find("lossy_reference"), nullptr);
}

TEST(Compare, BarsSayWhereAPartIsMissing) {
  test::Signal whole, gap;
  for (int bar = 0; bar < 4; bar++) {
    test::addAt(whole, bar * 2.0, test::sine(100, 0.2, 2));
    test::addAt(whole, bar * 2.0, test::sine(3000, 0.05, 2));
    test::addAt(gap, bar * 2.0, test::sine(100, 0.2, 2));
    if (bar != 2) test::addAt(gap, bar * 2.0, test::sine(3000, 0.05, 2));
  }
  const json::Json table =
      bandsPerBar(analyze(test::stereo(whole), 0, {}), analyze(test::stereo(gap), 0, {}), 120, 0);
  const auto& rows = table.find("rows")->items();
  ASSERT_GE(rows.size(), 4u);
  EXPECT_NEAR(rows[1].find("high_mid")->number(), 0, 0.1);
  EXPECT_LT(rows[2].find("high_mid")->number(), -20);
  EXPECT_NEAR(rows[2].find("bass")->number(), 0, 0.1);
  EXPECT_TRUE(rows[1].find("air")->isNull());
  EXPECT_EQ(table.find("largest")->items()[0].string().substr(0, 16), "bar 3 high_mid -");
}

// One parameter is changed, and what is said first names it: the whole song, or a Track of it alone.
TEST(Compare, TheFirstIssueNamesTheChange) {
  const struct {
    int track, pad;
    bool alone;
    const char* key;
    double value;
    const char *says, *advises;
  } changes[] = {
      {0, 0, false, "bpm", 141, "Tempo differs", "check bpm"},
      {0, 0, false, "master", 0.5, "quieter", "raise master"},
      {0, 0, false, "master_eq_63", 12, "more sub", "eq_low"},
      {0, 0, false, "master_eq_8k", 12, "brighter", "cut eq_high"},
      {0, 0, true, "pad_level", 0, "less sub", "kick"},
      {1, 0, true, "cutoff", 3000, "brighter", "lower cutoff"},
      {1, 0, true, "cutoff", 150, "less mid", "eq_mid"},
      {1, 0, true, "level", 0.25, "quieter", "track levels"},
      {1, 0, true, "attack", 0.08, "slower", "shorter attack"},
      {1, 0, true, "transpose", 2, "Pitch content", "transpose"},
      {1, 0, false, "level", 0, "less sub", "bass level"},
      {2, 0, true, "noise_mix", 0.6, "noisier", "noise_mix"},
      {2, 0, true, "attack", 0.3, "slower", "shorter attack"},
      {2, 0, true, "cutoff", 500, "less high_mid", "cutoff"},
      {2, 0, true, "eq_low", 12, "more sub", "eq_low"},
      {2, 0, true, "width", 0, "narrower", "raise width"},
      {2, 0, true, "fine", 50, "Pitch content", "fine"},
      {3, 0, true, "transpose", 3, "Pitch content", "transpose"},
      {3, 0, true, "send_2", 1, "wider", "reverb sends"},
      {3, 0, true, "level", 1, "louder", "track levels"},
  };
  const ProjectPtr reference = test::built(song);
  for (const auto& change : changes) {
    auto project = copyOf(*reference);
    const param::Info& info = *param::find(change.key);
    info.set(f32(change.value), *project, change.track, change.pad);
    const int alone = change.alone ? change.track : -1;
    CompareOptions options;
    options.bpm = project->bpm;
    if (change.alone) options.offset = 0;
    const Comparison c = measureAgainst(played(*reference, alone), played(*project, alone), options);
    ASSERT_FALSE(c.issues.empty()) << change.key;
    const std::string& first = c.issues[0].text;
    EXPECT_TRUE(first.find(change.says) != first.npos && first.find(change.advises) != first.npos)
        << change.key << " of Track " << change.track << ": " << first;
  }
}

}  // namespace
}  // namespace synth::analysis
