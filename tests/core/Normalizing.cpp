// What breaks if a knob's position and its value disagree, or a Macro throws a value past its range.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/params/Perceptual.h"
#include "core/params/Registry.h"
#include "support/RandomProject.h"

namespace synth::param {
namespace {

constexpr f32 infinity = std::numeric_limits<f32>::infinity();

TEST(Normalizing, MeetsTheEndsAndNeverFalls) {
  for (const Info& row : all()) {
    EXPECT_EQ(fromNormalized(row, 0), row.min) << row.key;
    EXPECT_EQ(fromNormalized(row, 1), row.max) << row.key;
    EXPECT_EQ(toNormalized(row, row.min), 0) << row.key;
    EXPECT_NEAR(toNormalized(row, row.max), 1, 1e-6) << row.key;
    for (f32 wild : {-1.0f, NAN, infinity, -infinity})
      EXPECT_EQ(fromNormalized(row, wild), row.min) << row.key;
    EXPECT_EQ(fromNormalized(row, 7), row.max) << row.key;
    EXPECT_EQ(toNormalized(row, NAN), 0) << row.key;
    EXPECT_EQ(toNormalized(row, infinity), 0) << row.key;
    EXPECT_NEAR(toNormalized(row, 1e30f), 1, 1e-6) << row.key;
    f32 last = row.min;
    for (int i = 0; i <= 500; i++) {
      const f32 v = fromNormalized(row, f32(i) / 500);
      ASSERT_GE(v, last) << row.key << " at " << i;
      ASSERT_TRUE(inRange(row, v)) << row.key << " at " << i;
      last = v;
    }
  }
}

TEST(Normalizing, GivesAValueBackWithinFloatRounding) {
  test::Random r(1);
  for (const Info& row : all())
    for (int i = 0; i < 100; i++) {
      const f32 v = fromNormalized(row, r.unit());
      const f32 back = fromNormalized(row, toNormalized(row, v));
      // A position near 0 carries a whole range's rounding, but a logarithmic one scales with the value.
      const f32 slack = row.curve == Logarithmic ? std::fabs(v) * 2e-6f : (row.max - row.min) * 2e-7f;
      ASSERT_NEAR(back, v, row.whole() || isSpeed(row) ? 0 : slack) << row.key;
    }
}

TEST(Normalizing, FollowsTheCurves) {
  auto at = [](const char* key, f32 p) { return fromNormalized(*find(key), p); };
  EXPECT_NEAR(at("cutoff", 0.5f), 632.4555f, 1e-3);
  EXPECT_NEAR(at("fx1_tape_rate", 0.5f), 1, 1e-6);
  EXPECT_NEAR(at("duck_release", 0.5f), std::sqrt(0.02 * 1.5), 1e-6);
  EXPECT_EQ(at("bpm", 0.5f), 140);
  EXPECT_EQ(at("transpose", 0.5f), 0);
  EXPECT_EQ(at("fx1_type", 0.5f), 3);
  EXPECT_EQ(at("sample_speed", 0.5f), 1);
  EXPECT_EQ(at("sample_speed", 0.6f), 1.32f);
  EXPECT_EQ(toNormalized(*find("sample_speed"), 2), 0.75f);
  EXPECT_EQ(toNormalized(*find("sample_speed"), 0.1f), 0);
}

TEST(Normalizing, KnowsWhatIsInRange) {
  auto holds = [](const char* key, f32 v) { return inRange(*find(key), v); };
  EXPECT_FALSE(holds("polyphony", 2.5f));
  EXPECT_FALSE(holds("filter_type", 0.5f));
  EXPECT_FALSE(holds("filter_type", 5));
  EXPECT_TRUE(holds("transpose", -48));
  EXPECT_FALSE(holds("bpm", f32(1e39)));
  EXPECT_FALSE(holds("bpm", -infinity));
  EXPECT_FALSE(holds("bpm", NAN));
  EXPECT_FALSE(holds("polyphony", NAN));
  EXPECT_FALSE(holds("bpm", 39.99f));
  // Bounds that no float meets are met by the nearest one.
  EXPECT_TRUE(holds("fx1_plate_diffusion", 0.3f));
  EXPECT_TRUE(holds("fx1_delay_feedback", 0.95f));
  EXPECT_TRUE(holds("attack", 0.001f));
  EXPECT_FALSE(holds("attack", 0.00099f));
}

TEST(Perceptual, MeasuresEachRowInItsUnit) {
  auto unit = [](const char* key) { return perceptual::unitOf(*find(key)); };
  EXPECT_EQ(unit("lfo_depth"), perceptual::Level);
  EXPECT_EQ(unit("pad_level"), perceptual::Level);
  EXPECT_EQ(unit("level"), perceptual::Own);
  EXPECT_EQ(unit("attack"), perceptual::Time);
  EXPECT_EQ(unit("glide"), perceptual::Time);
  EXPECT_EQ(unit("cutoff"), perceptual::Octave);
  EXPECT_EQ(unit("trim"), perceptual::Decibel);
  EXPECT_EQ(unit("fx1_tape_rate"), perceptual::Own);
  EXPECT_EQ(unit("sample_speed"), perceptual::Own);
  auto moved = [](const char* key, f32 v, double amount) {
    return perceptual::offset(*find(key), v, amount);
  };
  EXPECT_NEAR(moved("cutoff", 1000, 1), 2000, 1e-3);
  EXPECT_NEAR(moved("attack", 0.1f, 1), 0.205, 1e-6);
  EXPECT_NEAR(moved("trim", 0, 6), 6, 1e-6);
  EXPECT_NEAR(moved("pad_level", 0.5f, -6), 0.21700112, 1e-6);
  EXPECT_NEAR(moved("resonance", 0.25f, 0.5), 0.75, 1e-6);
}

TEST(Perceptual, MovesSmoothlyAndStaysInsideTheRange) {
  const double amounts[] = {-1000, -60, -12, -3, -1, -0.3, -0.01, 0, 0.01, 0.3, 1, 3, 12, 60, 1000};
  for (const Info& row : all()) {
    if (row.whole()) continue;
    for (f32 p : {0.0f, 0.01f, 0.3f, 0.5f, 0.9f, 0.999f, 1.0f}) {
      const f32 v = fromNormalized(row, p);
      f32 last = row.min;
      for (double amount : amounts) {
        const f32 moved = perceptual::offset(row, v, amount);
        ASSERT_GE(moved, last) << row.key << " " << v << " by " << amount;
        ASSERT_LE(moved, row.max) << row.key;
        if (amount == 0) {
          ASSERT_EQ(std::memcmp(&moved, &v, sizeof v), 0) << row.key;
        }
        if (amount < 0) {
          ASSERT_LE(moved, v) << row.key << " by " << amount;
        }
        if (amount > 0) {
          ASSERT_GE(moved, v) << row.key << " by " << amount;
        }
        last = moved;
      }
      EXPECT_NEAR(toNormalized(row, last), 1, 1e-3) << row.key;
    }
  }
  const f32 minusZero = -0.0f;
  EXPECT_TRUE(std::signbit(perceptual::offset(*find("pan"), minusZero, 0)));
}

}  // namespace
}  // namespace synth::param
