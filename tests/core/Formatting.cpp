// What breaks if a value is shown in other words than the screen, the guides and the commands promise.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>

#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/model/Defaults.h"
#include "core/params/Registry.h"

namespace synth::param {
namespace {

TEST(Formatting, WritesEachKindOfValue) {
  const struct {
    const char* key;
    f32 value;
    const char* text;
  } cases[] = {
      {"osc_b_shape", -0.01f, "MIRROR A"},
      {"osc_b_shape", 0.25f, "25 %"},
      {"master_eq_1k", 0, "0.0 dB"},
      {"master_eq_1k", -0.04f, "0.0 dB"},
      {"master_eq_1k", 3.26f, "+3.3 dB"},
      {"master_eq_31", -12, "-12.0 dB"},
      {"filter_type", 1.4f, "LOWPASS"},
      {"filter_type", 9, "NOTCH"},
      {"filter_type", -3, "LADDER"},
      {"duck_source", 3, "DRUMS PAD 3"},
      {"attack", 0.999f, "999 ms"},
      {"attack", 1, "1.00 s"},
      {"attack", 0.001f, "1 ms"},
      {"sample_speed", 1, "1×"},
      {"sample_speed", 0.5f, "0.50×"},
      {"sample_speed", 9, "4.00×"},
      {"level", 0.64f, "64 %"},
      {"width", 2, "200 %"},
      {"cutoff", 999, "999 Hz"},
      {"cutoff", 1000, "1.00 kHz"},
      {"cutoff", 12345, "12.35 kHz"},
      {"sample_root", 60, "C4"},
      {"sample_root", 61, "C#4"},
      {"sample_root", 0, "C-1"},
      {"sample_root", 200, "G9"},
      {"transpose", -12, "-12 st"},
      {"polyphony", 8, "8"},
      {"pad_note", -1, "-1"},
      {"bpm", 120.5f, "120.50"},
      {"fine", -3.5f, "-3.50 ct"},
      {"fx1_delay_time", 0.75f, "0.75 beat"},
      {"trim", -6, "-6.00 dB"},
      {"fx1_tape_rate", 1, "1.00"},
      {"pan", -1, "-1.00"},
  };
  for (auto& c : cases) EXPECT_EQ(formatted(*find(c.key), c.value), c.text) << c.key << " " << c.value;
}

TEST(Formatting, StaysInsideTheBuffer) {
  char buffer[6] = "....5";
  format(*find("attack"), 0.999f, buffer, 4);
  EXPECT_EQ(std::memcmp(buffer, "999\0005", 6), 0);
  format(*find("attack"), 1, buffer, 0);
  EXPECT_STREQ(buffer, "999");
  format(*find("attack"), 1, nullptr, 10);
  for (const Info& row : all())
    for (f32 v : {row.min, row.max, NAN, INFINITY, -1e30f, 1e30f})
      EXPECT_FALSE(formatted(row, v).empty()) << row.key;
}

TEST(Formatting, CallsEngineControlsByTheEnginesWord) {
  auto p = makeProject();
  setSynthKind(p->tracks[2], ORGAN);
  const Info &lfo = *find("lfo_target"), &timbre = *find("timbre_target");
  EXPECT_EQ(optionLabel(lfo, 4, p.get(), 1), engineParamName(ANALOG, 0));
  EXPECT_EQ(optionLabel(*find("lfo2_target"), 6, p.get(), 2), "ROTOR");
  EXPECT_EQ(optionLabel(timbre, 0, p.get(), 2), "TYPE");
  EXPECT_EQ(formatted(timbre, 3, p.get(), 2), "CLICK");
  EXPECT_EQ(optionLabel(lfo, 3, p.get(), 2), "PAN");
  EXPECT_EQ(optionLabel(lfo, 4), "ENGINE 1");
  EXPECT_EQ(optionLabel(lfo, 4, p.get(), 16), "ENGINE 1");
  // Track 0 is a kit.
  EXPECT_EQ(optionLabel(lfo, 4, p.get(), 0), "ENGINE 1");
  EXPECT_EQ(optionLabel(lfo, 9, p.get(), 1), "");
  EXPECT_EQ(optionLabel(lfo, -1, p.get(), 1), "");
  EXPECT_EQ(optionLabel(*find("cutoff"), 0), "");
}

TEST(Formatting, LabelsEveryOption) {
  auto labels = [](const char* key) {
    std::string all;
    for (int i = 0; i < find(key)->optionCount; i++) all += optionLabel(*find(key), i) + ",";
    return all;
  };
  EXPECT_EQ(labels("mod_sync"),
            "FREE,4 BARS,2 BARS,1 BAR,1/2,1/4,1/4T,1/8,1/8T,1/16,1/16T,1/32,1/2D,1/4D,1/8D,1/16D,");
  EXPECT_EQ(labels("key_root"), "AUTO,OFF,C,C#,D,D#,E,F,F#,G,G#,A,A#,B,");
  EXPECT_EQ(labels("pad_model"),
            "KICK,SNARE,CLAP,CLOSED HAT,OPEN HAT,TOM,RIM,COWBELL,SHAKER,CYMBAL,ZAP,CONGA,NOISE,");
  EXPECT_EQ(labels("fx2_shimmer_pitch"), "+12,+7,+19,+24,-12,");
  EXPECT_EQ(labels("engine"), "ANALOG,FM,TINE,ORGAN,WAVETABLE,SWARM,VOICE,MACHINE,RIFT,PERC,SAMPLER,");
  for (const Info& row : all()) {
    std::set<std::string> seen;
    for (int i = 0; i < row.optionCount; i++) {
      EXPECT_FALSE(optionLabel(row, i).empty()) << row.key;
      EXPECT_LE(optionLabel(row, i).size(), 20u) << row.key;
      EXPECT_TRUE(seen.insert(optionLabel(row, i)).second) << row.key << " " << i;
    }
  }
}

TEST(Formatting, NamesDuckSourcesAfterTheTracks) {
  const Info& row = *find("duck_source");
  EXPECT_EQ(optionLabel(row, 0), "DRUMS");
  EXPECT_EQ(optionLabel(row, 17), "BASS PAD 8");
  EXPECT_EQ(optionLabel(row, 143), "SYNTH N PAD 8");
  auto p = makeProject();
  setName(p->tracks[1].name, "low");
  EXPECT_EQ(formatted(row, 9, p.get(), 0), "LOW");
  EXPECT_EQ(formatted(row, 2, p.get(), 0), "DRUMS PAD 2");
  EXPECT_TRUE(duckSourceValid(*p, 8));
  EXPECT_TRUE(duckSourceValid(*p, 9));
  for (int source : {-1, 10, 4 * 9, 144}) EXPECT_FALSE(duckSourceValid(*p, source)) << source;
  EXPECT_EQ(stepDuckSource(*p, 8, 1), 9);
  EXPECT_EQ(stepDuckSource(*p, 9, 1), 18);
  EXPECT_EQ(stepDuckSource(*p, 27, 1), 27);
  EXPECT_EQ(stepDuckSource(*p, 9, -1), 8);
}

TEST(Formatting, ExplainsEveryRowInOneSentence) {
  for (const Info& row : all()) {
    const bool engine = std::strncmp(row.key, "engine", 6) == 0 && row.key[6];
    EXPECT_EQ(meaning(row) == nullptr, engine) << row.key;
    if (!engine) {
      EXPECT_EQ(std::string(meaning(row)).back(), '.') << row.key;
    }
  }
  EXPECT_STREQ(meaning(*find("bpm")), "The tempo, in beats per minute.");
  EXPECT_STREQ(meaning(*find("swing")), "Delays every second sixteenth for a shuffle.");
  EXPECT_STREQ(meaning(*find("fx2_type")), "The effect in this Send slot.");
  EXPECT_STREQ(meaning(*find("fx1_return")), "How loud the effect comes back into the mix.");
  EXPECT_STREQ(meaning(*find("master_eq_63")), "Boosts or cuts the whole mix around this band.");
  for (int kind = 0; kind < synthKinds; kind++)
    for (int i = 0; i < 4; i++) EXPECT_TRUE(engineMeaning(kind, i) && engineParamName(kind, i)[0]);
  for (auto [kind, i] : {std::pair(-1, 0), {11, 0}, {0, -1}, {0, 4}})
    EXPECT_EQ(engineMeaning(kind, i), nullptr);
  EXPECT_STREQ(engineMeaning(ANALOG, 1), "Where the second oscillator sits against the first.");
  EXPECT_STREQ(synthKindName(99), "SAMPLER");
  EXPECT_STREQ(synthKindConcept(-1), "RECORDED SOUND");
}

}  // namespace
}  // namespace synth::param
