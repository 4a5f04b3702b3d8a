// What breaks if a row of the registry loses its id, its range or its field: every file and spec reads wrong.
#include "core/params/Registry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <set>

#include "base/Crc32.h"
#include "core/model/Defaults.h"
#include "core/sounds/SendPresets.h"

namespace synth::param {
namespace {

TEST(Registry, Has264RowsWithIdsAndKeysOfTheirOwn) {
  EXPECT_EQ(count(), 264);
  std::set<int> ids;
  std::set<std::string> keys;
  for (const Info& row : all()) {
    EXPECT_TRUE(ids.insert(row.id).second) << row.key;
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
    EXPECT_EQ(find(row.id), &row) << row.key;
    EXPECT_EQ(find(row.key), &row) << row.key;

    EXPECT_LT(row.min, row.max) << row.key;
    EXPECT_EQ(row.options != nullptr, row.curve == Enumeration) << row.key;
    if (row.options) {
      EXPECT_EQ(row.max, row.optionCount - 1) << row.key;
    }
  }
}

TEST(Registry, AnswersNothingForWhatItDoesNotHold) {
  for (int id : {0, 4, 44, 321, 399, 554, 65535}) EXPECT_EQ(find(u16(id)), nullptr) << id;
  for (const char* key : {"", "BPM", "cutof", "cutoff ", "zzz", "fx3_type"})
    EXPECT_EQ(find(key), nullptr) << key;
  EXPECT_EQ(find(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_STREQ(info(-1).key, "bpm");
  EXPECT_STREQ(info(1000).key, "pad_drop_time");
  EXPECT_STREQ(masterEq(-3).key, "master_eq_31");
  EXPECT_STREQ(masterEq(5).key, "master_eq_1k");
  EXPECT_STREQ(masterEq(99).key, "master_eq_16k");
  for (const Info& row : all()) EXPECT_EQ(isSpeed(row), std::string_view(row.key) == "sample_speed");
}

TEST(Registry, IsTheTableThatFilesWereWrittenWith) {
  // The checksum of all rows as text, computed from the published list; a change here changes old files.
  std::string rows;
  for (const Info& r : all()) {
    char line[160];
    std::snprintf(line, sizeof line, "%s %d %.9g %.9g %s %s %s %s %s\n", r.key, r.id, double(r.min),
                  double(r.max), r.unit, (const char*[]){"lin", "log", "int", "enum"}[r.curve],
                  (const char*[]){"any", "drums", "melodic"}[r.applies],
                  (const char*[]){"project", "track", "pad"}[r.scope], r.group);
    rows += line;
  }
  EXPECT_EQ(crc32(rows.data(), rows.size()), 0x2fa07f20u) << rows;
}

TEST(Registry, GivesEachRowAFieldOfItsOwn) {
  for (const Info& row : all()) {
    const int track = row.scope == ScopeProject ? 0 : 11, pad = row.scope == ScopePad ? 5 : 0;
    auto p = newProject();
    const f32 value = row.get(*p, track, pad) == row.max ? row.min : row.max;
    row.set(value, *p, track, pad);
    EXPECT_EQ(row.get(*p, track, pad), value) << row.key;
    if (row.scope != ScopeProject) {
      EXPECT_EQ(row.get(p->tracks[track], pad), value) << row.key;
    }
    for (const Info& other : all())
      for (int i = 0; i < other.instances(); i += other.scope == ScopePad ? 7 : 1) {
        const int t = other.scope == ScopePad ? i / 8 : i, d = other.scope == ScopePad ? i % 8 : 0;
        if (&other == &row && t == track && d == pad) continue;
        ASSERT_EQ(other.get(*p, t, d), other.get(defaultProject(), t, d))
            << row.key << " moves " << other.key;
      }
  }
}

TEST(Registry, HoldsEveryDefaultAndStarterValueInItsRange) {
  auto fresh = makeProject();
  for (const Project* p : {&defaultProject(), static_cast<const Project*>(fresh.get())})
    for (const Info& row : all())
      for (int i = 0; i < row.instances(); i++)
        EXPECT_TRUE(inRange(row, row.scope == ScopePad ? row.get(*p, i / 8, i % 8) : row.get(*p, i)))
            << row.key;
  for (const Info& row : all())
    if (row.scope != ScopeProject) {
      EXPECT_TRUE(inRange(row, row.get(defaultTrack(DRUMS)))) << row.key;
    }
}

TEST(Registry, LeavesNineValuesToTheMix) {
  std::string mix;
  for (const Info& row : all())
    if (row.mix) mix += std::string(row.key) + " ";
  EXPECT_EQ(mix, "mute solo level pan send_1 send_2 duck_amount duck_release duck_source ");
}

TEST(Registry, StoresWholeValuesByRounding) {
  auto p = newProject();
  find("polyphony")->set(2.9999998f, *p, 3);
  EXPECT_EQ(p->tracks[3].polyphony, 3);
  find("transpose")->set(-12, *p, 3);
  EXPECT_EQ(p->tracks[3].transpose, -12);
  find("pan")->set(-0.0f, *p, 3);
  EXPECT_TRUE(std::signbit(p->tracks[3].pan));
  EXPECT_EQ(find("pad_note")->instances(), 128);
  EXPECT_EQ(find("pan")->instances(), 16);
  EXPECT_EQ(find("bpm")->instances(), 1);
}

}  // namespace
}  // namespace synth::param
