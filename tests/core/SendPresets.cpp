// What breaks if loading an effect's preset touches other values, or a new Project shows one as changed.
#include "core/sounds/SendPresets.h"

#include <gtest/gtest.h>

#include <string_view>

#include "core/params/Registry.h"

namespace synth::sendfx {
namespace {

constexpr const char* prefixes[] = {"delay_", "tape_", "hall_", "plate_", "shimmer_", "chorus_"};

TEST(SendPresets, BeginWithTheBlockOfANewProject) {
  for (int bus : {SendI, SendII}) {
    EXPECT_FALSE(changed(defaultProject(), bus));
    for (int type = 0; type < FX_OFF; type++) {
      auto p = newProject();
      const u8 own = sendFx(*p, bus).type;
      EXPECT_TRUE(load(*p, bus, type, 0));
      EXPECT_EQ(typeOf(*p, bus), type);
      EXPECT_FALSE(changed(*p, bus)) << typeName(type);
      sendFx(*p, bus).type = own;
      EXPECT_TRUE(sameBytes(*p, defaultProject())) << typeName(type);
    }
  }
}

TEST(SendPresets, StandInTheRegistry) {
  EXPECT_EQ(presetCount(FX_CHORUS), 5);
  EXPECT_EQ(presetCount(FX_OFF), 0);
  EXPECT_EQ(key(SendII, "hall_decay"), "fx2_hall_decay");
  for (int type = 0; type < FX_OFF; type++)
    for (int bus : {SendI, SendII}) {
      const param::Info* row = param::find(key(bus, prefixes[type] + std::string("preset")));
      ASSERT_TRUE(row);
      ASSERT_EQ(row->optionCount, presetCount(type));
      for (int i = 0; i < presetCount(type); i++) EXPECT_EQ(param::optionLabel(*row, i), preset(type, i));
    }
  EXPECT_STREQ(typeName(1), "TAPE ECHO");
  EXPECT_STREQ(typeName(-1), "OFF");
  EXPECT_STREQ(typeName(7), "OFF");
}

TEST(SendPresets, WriteTheirOwnKindAndNothingElse) {
  for (int bus : {SendI, SendII})
    for (int type = 0; type < FX_OFF; type++)
      for (int i = 0; i < presetCount(type); i++) {
        auto p = newProject();
        ASSERT_TRUE(load(*p, bus, type, i));
        EXPECT_EQ(presetOf(*p, bus), i);
        EXPECT_FALSE(changed(*p, bus));
        int moved = 0;
        for (const param::Info& row : param::all()) {
          if (row.scope != param::ScopeProject) break;
          EXPECT_TRUE(param::inRange(row, row.get(*p))) << row.key << " of " << preset(type, i);
          const bool own = std::string_view(row.key).starts_with(key(bus, prefixes[type]));
          if (row.get(*p) == row.get(defaultProject())) continue;
          moved++;
          EXPECT_TRUE(own || row.key == key(bus, "type")) << row.key << " of " << preset(type, i);
        }
        if (i) {
          EXPECT_GT(moved, 1) << preset(type, i);
        }
      }
}

TEST(SendPresets, RefuseWhatDoesNotExist) {
  auto p = newProject();
  for (auto [bus, type, i] : {std::tuple(2, 0, 0),
                              {-1, 0, 0},
                              {0, FX_OFF, 0},
                              {0, -1, 0},
                              {0, 0, -1},
                              {0, FX_CHORUS, 5},
                              {1, 7, 0}})
    EXPECT_FALSE(load(*p, bus, type, i));
  EXPECT_TRUE(sameBytes(*p, defaultProject()));
}

TEST(SendPresets, ShowAnyValueThatWasChanged) {
  for (int type = 0; type < FX_OFF; type++)
    for (const param::Info& row : param::all()) {
      const std::string_view name = row.key;
      if (!name.starts_with(key(SendI, prefixes[type])) || name.ends_with("_preset")) continue;
      auto p = newProject();
      load(*p, SendI, type, 1);
      row.set(row.get(*p) == row.max ? row.min : row.max, *p);
      EXPECT_TRUE(changed(*p, SendI)) << row.key;
      EXPECT_FALSE(changed(*p, SendII));
    }
  auto p = newProject();
  p->fx1.returnLevel = 0.2f;
  p->fx1.hall_size = 0;
  EXPECT_FALSE(changed(*p, SendI));
  p->fx1.type = FX_OFF;
  EXPECT_EQ(presetOf(*p, SendI), -1);
  EXPECT_FALSE(changed(*p, SendI));
}

}  // namespace
}  // namespace synth::sendfx
