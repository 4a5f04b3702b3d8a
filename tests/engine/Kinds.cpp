// The Synth kinds: pitch, level, bounds, aliases, and what each of their knobs promises.
#include <gtest/gtest.h>

#include <cmath>

#include "core/model/Notes.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr double rate = 48000;

double hzOf(int note) { return 440 * std::exp2((note - 69) / 12.0); }

// One Track of a kind with its four values, held.
ProjectPtr patch(int kind, float e1, float e2, float e3, float e4) {
  auto p = oneTrack(kind);
  Track& t = p->tracks[0];
  t.engine1 = e1;
  t.engine2 = e2;
  t.engine3 = e3;
  t.engine4 = e4;
  t.sustain = 1;
  t.attack = 0.001f;
  return p;
}

Audio held(const Project& p, int note, double seconds, double settle = 0.3, int velocity = 127) {
  Engine engine(rate);
  EXPECT_TRUE(engine.submitProject(p));
  engine.noteOn(0, note, velocity);
  renderFrames(engine, size_t(settle * rate));
  return renderFrames(engine, size_t(seconds * rate));
}

double mean(const std::vector<float>& x) {
  double sum = 0;
  for (float v : x) sum += v;
  return sum / double(x.size());
}

std::vector<float> sideOf(const Audio& a) {
  std::vector<float> s(a.size());
  for (size_t i = 0; i < s.size(); i++) s[i] = (a.left[i] - a.right[i]) / 2;
  return s;
}

// Energy that lies on no harmonic of the note, against all of it.
double inharmonicDb(const std::vector<float>& x, double f0) {
  double harmonic = 0;
  for (double f = f0; f < rate / 2; f += f0) {
    const double level = sineLevel(x, f, rate);
    harmonic += level * level / 2;
  }
  // Seen through the same Hann window as the harmonics.
  double all = 0, weight = 0;
  for (size_t i = 0; i < x.size(); i++) {
    const double w = 0.5 - 0.5 * std::cos(2 * M_PI * double(i) / double(x.size()));
    all += w * w * x[i] * x[i];
    weight += w * w;
  }
  all /= weight;
  return 10 * std::log10(std::max(all - harmonic, 1e-12) / all);
}

// How much lies above `hz`: the energy of a first difference grows with frequency.
double brightness(const std::vector<float>& x) {
  double all = 0, steps = 0;
  for (size_t i = 1; i < x.size(); i++) {
    all += double(x[i]) * x[i];
    steps += double(x[i] - x[i - 1]) * (x[i] - x[i - 1]);
  }
  return std::sqrt(steps / all);
}

TEST(Kinds, PitchedKindsAreInTune) {
  for (int kind : {ANALOG, FM, TINE, ORGAN, WAVETABLE, SWARM, VOICE, RIFT})
    for (int note : {36, 60, 84}) {
      auto p = patch(kind, kind == RIFT || kind == SWARM || kind == VOICE ? 0 : 0.5f, 0, 0, 0);
      const Audio a = held(*p, note, 1);
      const double at = sineLevel(a.left, hzOf(note), rate);
      for (double off : {0.94, 1.06})
        EXPECT_GT(at, 5 * sineLevel(a.left, hzOf(note) * off, rate)) << kind << " " << note;
    }
}

TEST(Kinds, LevelsAtInitStayInTheirWindow) {
  // RMS of note 60 in dB, before amp and Track; struck and torn ones vary more.
  const double expected[] = {-18.5, -11.4, -13.2, -12.9, -10.9, -13.1, -14.4, -22, -13.5};
  for (int kind : {ANALOG, FM, TINE, ORGAN, WAVETABLE, SWARM, VOICE, MACHINE, RIFT}) {
    auto p = oneTrack(kind);
    p->tracks[0].sustain = 1;
    const Audio a = held(*p, 60, 1);
    // The voice alone, before level 0.64, the pan's 0.7071, the Master's 0.85 * 1.25 and the amp's 0.43.
    const double voice = rms(a.left) / (0.64 * 0.70710678 * 0.85 * 1.25 * 0.43);
    EXPECT_NEAR(toDb(voice), expected[kind], kind == MACHINE ? 5 : 3) << kind;
  }
}

TEST(Kinds, CornersOfTheFourValuesAreBounded) {
  for (int kind = ANALOG; kind <= PERC; kind++)
    for (int corner = 0; corner < 16; corner++) {
      auto p = patch(kind, float(corner & 1), float(corner >> 1 & 1), float(corner >> 2 & 1),
                     float(corner >> 3 & 1));
      Track& t = p->tracks[0];
      t.osc_b_level = 1;
      t.level = 0.5f;
      for (int mode = 0; mode < (kind == ANALOG ? 2 : 1); mode++) {
        t.analog_mode = u8(mode);
        for (int note : {12, 60, 127}) {
          const Audio a = held(*p, note, 0.1, 0);
          EXPECT_TRUE(allFinite(a));
          EXPECT_LT(peak(a.left), 0.8f) << kind << " corner " << corner << " note " << note;
          EXPECT_LT(std::fabs(mean(a.left)), 0.05) << kind << " corner " << corner << " note " << note;
        }
      }
    }
}

TEST(Kinds, AliasesStayWithinTheirBudget) {
  struct Case {
    int kind, note;
    float e1, e2, e3, e4;
    double most;
  };
  for (const Case& c : {
           Case{ANALOG, 72, 2 / 3.0f, 0.2f, 0, 0, -35},
           Case{ANALOG, 96, 2 / 3.0f, 0.2f, 0, 0, -20},
           Case{ANALOG, 115, 1, 0.2f, 0, 0, -28},
           Case{FM, 72, 1, 0.25f, 0, 0, -60},
           Case{FM, 96, 1, 0.25f, 0, 0, -40},
           Case{ORGAN, 72, 1, 1, 0, 0, -60},
           Case{ORGAN, 96, 1, 1, 0, 0, -40},
           Case{WAVETABLE, 72, 0.3f, 1, 0, 0, -58},
           Case{WAVETABLE, 96, 0.3f, 1, 0, 0, -40},
       }) {
    auto p = patch(c.kind, c.e1, c.e2, c.e3, c.e4);
    // A whole number of samples a second keeps the harmonics on their places.
    const Audio a = held(*p, c.note, 1, 0.5);
    EXPECT_LT(inharmonicDb(a.left, hzOf(c.note) / (c.kind == ORGAN ? 2 : 1)), c.most)
        << c.kind << " note " << c.note;
  }
}

TEST(Kinds, HighNotesBecomeSines) {
  for (int mode : {0, 1}) {
    auto p = patch(ANALOG, 1, 0.5f, 0.5f, 0);
    p->tracks[0].analog_mode = u8(mode);
    p->tracks[0].transpose = 24;
    const Audio a = held(*p, 120, 0.5);
    const double f = std::min(hzOf(144), 0.45 * 48000);
    EXPECT_NEAR(toDb(sineLevel(a.left, f, 48000) / std::sqrt(2.0) / rms(a.left)), 0, 0.1) << mode;
  }
}

TEST(Kinds, AnOrgansBarsAreItsPartials) {
  const double partials[8] = {0.5, 1, 1.5, 2, 3, 4, 5, 6};
  for (int bar = 0; bar < 8; bar++) {
    auto p = patch(ORGAN, 0, 0, 0, 0);
    Track& t = p->tracks[0];
    t.drawbar_custom = 1;
    float* const bars[8] = {&t.drawbar_1, &t.drawbar_2, &t.drawbar_3, &t.drawbar_4,
                            &t.drawbar_5, &t.drawbar_6, &t.drawbar_7, &t.drawbar_8};
    for (int k = 0; k < 8; k++) *bars[k] = k == bar;
    const Audio a = held(*p, 60, 0.5);
    EXPECT_NEAR(toDb(sineLevel(a.left, hzOf(60) * partials[bar], rate) / std::sqrt(2.0) / rms(a.left)), 0,
                0.05)
        << bar;
  }
}

TEST(Kinds, AnOrgansRotorStandsStillAtZeroAndTurnsAboveIt) {
  for (float rotor : {0.0f, 0.009f, 0.3f, 1.0f}) {
    const Audio a = held(*patch(ORGAN, 0.5f, 0.5f, rotor, 0), 60, 2);
    const double side = rms(sideOf(a)) / rms(a.left);
    if (rotor < 0.01f)
      EXPECT_EQ(side, 0) << rotor;
    else
      EXPECT_GT(side, 0.03) << rotor;
  }
  // Two notes of different age share one rotor: their stereo images move together.
  auto p = patch(ORGAN, 0.5f, 0.5f, 0.6f, 0);
  auto turn = [&](double later) {
    Engine engine(rate);
    engine.submitProject(*p);
    renderFrames(engine, size_t(later * rate));
    engine.noteOn(0, 60, 100);
    renderFrames(engine, size_t((2 - later) * rate));
    return sideOf(renderFrames(engine, 4800));
  };
  const auto early = turn(0), late = turn(1);
  double same = 0, all = 0;
  for (size_t i = 0; i < early.size(); i += 480) {
    const double x = rms(early, i, i + 480), y = rms(late, i, i + 480);
    same += std::fabs(x - y);
    all += x;
  }
  EXPECT_LT(same / all, 0.2);
}

TEST(Kinds, AWavetableReadsItsWholeGrid) {
  for (float table : {0.0f, 0.34f, 0.99f, 1.0f})
    for (float position : {0.0f, 0.5f, 1.0f}) {
      const Audio a = held(*patch(WAVETABLE, table, position, 0, 0), 48, 0.5);
      EXPECT_GT(toDb(rms(a.left)), -40) << table << " " << position;
      EXPECT_LT(inharmonicDb(a.left, hzOf(48)), -55) << table << " " << position;
    }
  // The first table opens from a near sine; warp and drift make it inharmonic.
  EXPECT_GT(brightness(held(*patch(WAVETABLE, 0, 1, 0, 0), 48, 0.3).left),
            1.5 * brightness(held(*patch(WAVETABLE, 0, 0, 0, 0), 48, 0.3).left));
  EXPECT_GT(inharmonicDb(held(*patch(WAVETABLE, 0.5f, 0.5f, 1, 0.35f), 48, 0.5).left, hzOf(48)), -20);
}

TEST(Kinds, AVoicesVowelsStandAtTheirFormants) {
  // A low note, so that harmonics lie close under the formants: "o" has its second one at 900 Hz, "i" at
  // 2250.
  auto level = [](float vowel, double from, double to) {
    const Audio a = held(*patch(VOICE, 0, vowel, 0, 0), 36, 1);
    double sum = 0;
    for (double f = hzOf(36); f < to; f += hzOf(36))
      if (f > from) sum += std::pow(sineLevel(a.left, f, rate), 2);
    return std::sqrt(sum);
  };
  EXPECT_GT(level(0.5f, 700, 1300), 2 * level(0.5f, 1800, 2400));
  EXPECT_GT(level(1, 1800, 2500), 1.2 * level(1, 700, 1300));
  EXPECT_GT(brightness(held(*patch(VOICE, 1, 0.5f, 0, 0), 48, 0.5).left),
            brightness(held(*patch(VOICE, 0, 0.5f, 0, 0), 48, 0.5).left));
}

TEST(Kinds, MetalRingsLongerAndScrapeGoesOn) {
  auto decay = [](float metal, float scrape) {
    const Audio a = held(*patch(MACHINE, metal, scrape, 0.5f, 0), 60, 1, 0);
    return toDb(rms(a.left, 36000, 48000) / rms(a.left, 0, 4800));
  };
  EXPECT_LT(decay(0.1f, 0), -60);
  EXPECT_GT(decay(1, 0), decay(0.1f, 0) + 10);
  EXPECT_GT(decay(0.3f, 1), -25);
  EXPECT_EQ(rms(sideOf(held(*patch(MACHINE, 0.5f, 1, 0.5f, 0), 60, 0.5))), 0);
  EXPECT_GT(rms(sideOf(held(*patch(MACHINE, 0.5f, 1, 0.5f, 1), 60, 0.5))), 1e-4);
}

TEST(Kinds, MatterDissolvesPitchAndShardsRepeatIt) {
  const Audio pitch = held(*patch(RIFT, 0, 0, 0, 0), 60, 1);
  EXPECT_GT(toDb(sineLevel(pitch.left, hzOf(60), rate) / std::sqrt(2.0) / rms(pitch.left)), -1);
  const Audio noise = held(*patch(RIFT, 1, 0, 0, 0), 60, 1);
  EXPECT_LT(toDb(sineLevel(noise.left, hzOf(60), rate) / std::sqrt(2.0) / rms(noise.left)), -1.5);
  EXPECT_GT(brightness(noise.left), brightness(pitch.left));
  EXPECT_GT(rms(sideOf(held(*patch(RIFT, 0.5f, 0.5f, 1, 1), 60, 1))), 1e-3);
}

TEST(Kinds, PercPlaysItsDrumInTune) {
  for (int note : {36, 43, 60}) {
    auto p = patch(PERC, 0, 0, 0, 0);
    p->tracks[0].perc_model = 0;
    p->tracks[0].decay = 4;
    p->tracks[0].fine = 30;
    const Audio a = held(*p, note, 0.5, 0.05);
    const double at = sineLevel(a.left, hzOf(note) * std::exp2(0.3 / 12), rate);
    EXPECT_GT(at, 3 * sineLevel(a.left, hzOf(note) * 1.09, rate)) << note;
    EXPECT_GT(at, 3 * sineLevel(a.left, hzOf(note) * 0.94, rate)) << note;
  }
  // A transposed drum moves once, not twice.
  auto p = patch(PERC, 0, 0, 0, 0);
  p->tracks[0].decay = 4;
  p->tracks[0].transpose = 12;
  const Audio a = held(*p, 48, 0.5, 0.05);
  EXPECT_GT(sineLevel(a.left, hzOf(60), rate), 5 * sineLevel(a.left, hzOf(72), rate));
  // It dies away by itself under a held key.
  p->tracks[0].decay = 0.1f;
  EXPECT_LT(rms(held(*p, 48, 0.2, 1.5).left), 1e-5);
}

TEST(Kinds, SoftNotesLoseTheirHarmonics) {
  for (int kind : {ANALOG, FM, TINE, WAVETABLE, SWARM}) {
    auto p = patch(kind, 0.7f, 0.5f, 0.5f, 0);
    p->tracks[0].cutoff = 20000;
    p->tracks[0].velocity_brightness = 0;
    const double plain = brightness(held(*p, 60, 0.5, 0.2, 20).left);
    p->tracks[0].velocity_brightness = 1;
    EXPECT_LT(brightness(held(*p, 60, 0.5, 0.2, 20).left), plain) << kind;
  }
}

TEST(Kinds, AChangeOfKindGoesOnWithoutAClick) {
  for (int from = ANALOG; from <= RIFT; from++) {
    auto p = patch(from, 0.4f, 0.3f, 0.2f, 0.2f);
    p->tracks[0].cutoff = 600;
    Engine engine(rate);
    engine.submitProject(*p);
    engine.noteOn(0, 45, 90);
    renderFrames(engine, 9600);
    p->tracks[0].engine = u8((from + 1) % (RIFT + 1));
    engine.submitProject(*p);
    const Audio a = renderFrames(engine, 24000);
    EXPECT_TRUE(allFinite(a)) << from;
    EXPECT_GT(rms(a.left, 12000), 1e-4) << from << ": the voice goes on";
    EXPECT_LT(peak(a.left), 0.5f) << from;
  }
}

}  // namespace
}  // namespace synth::test
