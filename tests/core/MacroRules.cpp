// Macros: what they give their targets, and that everything which names one follows when they change.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "core/params/Perceptual.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/MacroPlan.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "support/PlainProject.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

constexpr f32 mirror = std::numeric_limits<f32>::quiet_NaN();

const param::Info& row(const char* key) { return *param::find(key); }

std::string errorOf(const Project& p) {
  std::string error;
  validateProject(p, error);
  return error;
}

TEST(MacroRules, TravelRunsOverItsWindow) {
  using macros::travel;
  EXPECT_EQ(travel(2, -1, 0, 1, 0), 0);
  EXPECT_EQ(travel(2, -1, 0, 1, 1), 2);
  EXPECT_EQ(travel(2, -1, 0, 1, -1), -1);
  EXPECT_EQ(travel(2, -1, 0.4f, 1, 0.4f), 0);
  EXPECT_NEAR(travel(-1.5f, 1.5f, 0.4f, 1, 0.7f), -0.75, 1e-6);
  EXPECT_NEAR(travel(-1.5f, 1.5f, 0.4f, 1, -0.7f), 0.75, 1e-6);
  EXPECT_EQ(travel(1, 1, 0, 0.5f, 0.5f), 1);
}

TEST(MacroRules, OffsetsAreMonotoneSoftAndUndoneByTheirAmount) {
  Random r(3);
  for (const param::Info& info : param::all()) {
    if (info.scope == param::ScopeProject || info.whole()) continue;
    const double span = perceptual::toPerc(perceptual::unitOf(info), info.max) -
                        perceptual::toPerc(perceptual::unitOf(info), info.min);
    for (int n = 0; n < 20; n++) {
      const f32 base = param::fromNormalized(info, r.unit());
      EXPECT_EQ(perceptual::offset(info, base, 0), base) << info.key;
      f32 last = info.min;
      for (double a = -1.5; a <= 1.5; a += 0.05) {
        const f32 value = perceptual::offset(info, base, a * span);
        EXPECT_GE(value, last) << info.key << " at " << a;
        EXPECT_GE(value, info.min);
        EXPECT_LE(value, info.max);
        last = value;
      }
      // The amount that leads somewhere does lead there, as far as the soft ends let it.
      const f32 wanted = param::fromNormalized(info, 0.1f + 0.8f * r.unit());
      const double current = (r.unit() - 0.5) * 0.2 * span;
      const double amount = macros::amountFor(info, base, current, wanted);
      EXPECT_NEAR(param::toNormalized(info, perceptual::offset(info, base, current + amount)),
                  param::toNormalized(info, wanted), 2e-3)
          << info.key << " from " << base << " to " << wanted;
    }
    EXPECT_EQ(macros::amountFor(info, info.min, 0, NAN), 0);
  }
}

TEST(MacroRules, AddNamesAndRefuses) {
  auto p = plainProject();
  std::string error;
  for (int i = 0; i < limits::macros; i++)
    ASSERT_EQ(macros::add(*p, 2, "M" + std::to_string(i), false, 2, error), i);
  EXPECT_EQ(p->tracks[2].macros[0].value, 1);
  EXPECT_EQ(macros::add(*p, 2, "MORE", false, 0, error), -1);
  EXPECT_EQ(error, "A sound holds at most 16 Macros");
  const std::string
      taken = "The sound already has a Macro named M3",
      unfit =
          "A Macro's name is one word of up to 12 letters, digits, _ or -, starting with a letter, "
          "and not a parameter's key: ";
  const std::pair<const char*, std::string> refused[] = {
      {"M3", taken}, {"m3 ", taken}, {"3M", unfit + "3M"}, {"CUTOFF", unfit + "CUTOFF"}};
  for (const auto& [name, words] : refused) {
    EXPECT_EQ(macros::add(*p, 2, name, false, 0, error), -1);
    EXPECT_EQ(error, words);
    EXPECT_FALSE(macros::rename(*p, 2, 5, name, error));
    EXPECT_EQ(error, words);
  }
  EXPECT_EQ(macros::add(*p, 16, "A", false, 0, error), -1);
  EXPECT_EQ(error, "No track 16");
  EXPECT_TRUE(macros::rename(*p, 2, 5, "m5", error)) << "its own name is not taken";
  EXPECT_FALSE(macros::rename(*p, 2, 16, "X", error));
  EXPECT_EQ(error, "No such Macro");
  EXPECT_EQ(errorOf(*p), "");
}

TEST(MacroRules, MapChecksEverythingAndKeepsPlaces) {
  auto p = plainProject();
  std::string error;
  const int uni = macros::add(*p, 1, "UNI", false, 0, error), bi = macros::add(*p, 1, "BI", true, 0, error);
  auto map = [&](int slot, const char* key, int pad, f32 amount, f32 down, f32 from, f32 to) {
    error.clear();
    const auto before = copyOf(*p);
    const bool ok = macros::map(*p, 1, slot, row(key), pad, amount, down, from, to, error);
    if (!ok) {
      EXPECT_EQ(std::memcmp(before.get(), p.get(), sizeof(Project)), 0) << "a refusal changes nothing";
    }
    return ok ? std::string() : error;
  };
  EXPECT_EQ(map(5, "cutoff", -1, 1, mirror, 0, 1), "No such Macro");
  EXPECT_EQ(
      map(uni, "filter_type", -1, 1, mirror, 0, 1),
      "A Macro cannot move filter_type on this track: its targets are the sound's continuous values and the "
      "Sends");
  EXPECT_EQ(map(uni, "cutoff", 2, 1, mirror, 0, 1), "cutoff takes no Pad");
  EXPECT_EQ(map(uni, "cutoff", -1, 1001, mirror, 0, 1), "The amount must be a number");
  EXPECT_EQ(map(uni, "cutoff", -1, NAN, mirror, 0, 1), "The amount must be a number");
  EXPECT_EQ(map(bi, "cutoff", -1, 1, INFINITY, 0, 1), "The amount at -100 % must be a number");
  for (auto [from, to] : {std::pair{0.5f, 0.5f}, {-0.1f, 1.0f}, {0.0f, 1.1f}, {NAN, 1.0f}})
    EXPECT_EQ(map(uni, "cutoff", -1, 1, mirror, from, to), "A window is FROM..TO with 0 <= FROM < TO <= 1");
  EXPECT_EQ(map(bi, "insert_drive", -1, 0, mirror, 0, 1), "");
  EXPECT_FALSE(std::signbit(p->tracks[1].macros[bi].targets[0].amount_down)) << "nothing, mirrored, is 0";
  EXPECT_TRUE(macros::unmap(*p, 1, bi, row("insert_drive"), -1));
  EXPECT_EQ(map(uni, "cutoff", -1, 1, 3, 0, 1), "");
  EXPECT_EQ(map(bi, "cutoff", -1, 1, mirror, 0, 1), "");
  EXPECT_EQ(map(bi, "room_mix", -1, 0.5f, 0.5f, 0.2f, 0.9f), "");
  EXPECT_EQ(map(bi, "cutoff", -1, 2, mirror, 0, 1), "");
  const MacroRec* m = p->tracks[1].macros;
  EXPECT_EQ(m[uni].targets[0].amount_down, 0);
  EXPECT_EQ(m[bi].targetCount, 2);
  EXPECT_EQ(m[bi].targets[0].amount, 2);
  EXPECT_EQ(m[bi].targets[0].amount_down, -2);
  EXPECT_EQ(errorOf(*p), "");

  EXPECT_TRUE(macros::unmap(*p, 1, bi, row("cutoff"), -1));
  EXPECT_FALSE(macros::unmap(*p, 1, bi, row("cutoff"), -1));
  EXPECT_EQ(m[bi].targets[0].param, row("room_mix").id);
  int mapped = 0;
  for (const param::Info& info : param::all())
    if (macros::targetable(info, MELODIC, ANALOG) && mapped < limits::macroTargets)
      mapped += map(uni, info.key, -1, 0.1f, mirror, 0, 1).empty();
  EXPECT_EQ(map(uni, "room_decay", -1, 1, mirror, 0, 1), "A Macro moves at most 16 parameters");
  EXPECT_EQ(errorOf(*p), "");
}

// A Track with four Macros, each driven by a Lane, a Lock and a Pin.
ProjectPtr driven() {
  auto p = plainProject();
  clearArrangement(*p);
  std::string error;
  Note note;
  note.velocity = 100;
  pins::Keys keys = {"cutoff"};
  for (int m = 0; m < 4; m++) {
    const std::string name(1, char('A' + m));
    macros::add(*p, 1, name, m % 2, 0.5f, error);
    const int lane = laneRow(1, m);
    p->lanes[lane].enabled = 1;
    p->lanes[lane].target = u8(automation::firstMacroTarget + m + 1);
    const LanePoint points[] = {{0, 0, 0, 0}, {16, 0, 1, 0}, {32, u16(10000 * m + 5000), 0, 0}};
    setLanePoints(*p, lane, points, 3);
    note.locks[m] = {u8(automation::firstMacroTarget + m + 1), 0, u16(20000 + m)};
    keys.push_back(name);
  }
  addLoop(*p, 1, 16, 0, 0);
  setNote(*p, 1, 0, 3, 0, note);
  pins::setKeys(p->tracks[1], keys);
  EXPECT_EQ(errorOf(*p), "");
  return p;
}

TEST(MacroRules, RemovingOneMovesWhatNamesTheOthers) {
  auto p = driven();
  ASSERT_TRUE(macros::remove(*p, 1, 1));
  EXPECT_EQ(errorOf(*p), "");
  EXPECT_EQ(p->lanes[laneRow(1, 0)].target, automation::firstMacroTarget + 1);
  EXPECT_FALSE(laneInUse(p->lanes[laneRow(1, 1)]));
  EXPECT_EQ(p->lanes[laneRow(1, 2)].target, automation::firstMacroTarget + 2);
  EXPECT_EQ(p->lanes[laneRow(1, 3)].target, automation::firstMacroTarget + 3);
  const Note note = stepAt(*p, 1, 0, 3).notes[0];
  EXPECT_EQ(note.locks[1].target, automation::firstMacroTarget + 2);
  EXPECT_EQ(note.locks[1].value, 20002);
  EXPECT_EQ(note.locks[3].target, 0);
  EXPECT_EQ(pins::keys(p->tracks[1]), (pins::Keys{"cutoff", "A", "C", "D"}));
  std::string error;
  EXPECT_TRUE(macros::rename(*p, 1, 1, "NEW", error));
  EXPECT_EQ(pins::keys(p->tracks[1])[2], "NEW") << "a Pin survives a new name";
  EXPECT_FALSE(macros::remove(*p, 1, 3));
}

TEST(MacroRules, AChangedPolarityKeepsWhatPointsAndLocksStoodFor) {
  auto p = driven();
  const LanePoint* points = lanePoints(*p, laneRow(1, 0)).data();
  const f32 before = macros::fromNormalized(false, f32(points[2].value) / 65535);
  ASSERT_TRUE(macros::setBipolar(*p, 1, 0, true));
  EXPECT_FALSE(macros::setBipolar(*p, 1, 0, true));
  EXPECT_NEAR(macros::fromNormalized(true, f32(points[2].value) / 65535), before, 2e-5);
  EXPECT_EQ(points[1].value, 0) << "a rest keeps no value";
  EXPECT_NEAR(macros::fromNormalized(true, f32(stepAt(*p, 1, 0, 3).notes[0].locks[0].value) / 65535),
              20000 / 65535.0, 2e-5);
  EXPECT_EQ(errorOf(*p), "");
  // Below the centre nothing is left of a Macro that has no such side any more.
  ASSERT_TRUE(macros::setBipolar(*p, 1, 1, false));
  EXPECT_EQ(lanePoints(*p, laneRow(1, 1))[0].value, 0);
  EXPECT_EQ(errorOf(*p), "");
}

TEST(MacroRules, ANewSoundKeepsTheLanesOfMacrosThatItHasToo) {
  auto p = driven();
  const Track old = p->tracks[1];
  std::string error;
  Track& now = p->tracks[1];
  for (MacroRec& m : now.macros) m = MacroRec{};
  now.macroCount = 0;
  macros::add(*p, 1, "D", true, 0, error);
  macros::add(*p, 1, "X", false, 0, error);
  macros::follow(*p, 1, old);
  pins::clear(now);
  EXPECT_EQ(errorOf(*p), "");
  EXPECT_EQ(p->lanes[laneRow(1, 3)].target, automation::firstMacroTarget + 1);
  for (int lane : {0, 1, 2}) EXPECT_FALSE(laneInUse(p->lanes[laneRow(1, lane)]));
  const Note note = stepAt(*p, 1, 0, 3).notes[0];
  EXPECT_EQ(note.locks[0].target, automation::firstMacroTarget + 1);
  EXPECT_EQ(note.locks[0].value, 20003);
  EXPECT_EQ(note.locks[1].target, 0);
}

TEST(MacroRules, RandomEditsKeepTheProjectValid) {
  Random r(11);
  auto p = randomProject(5);
  std::string error;
  for (int n = 0; n < 3000; n++) {
    const int t = r.below(17), slot = r.below(5), pad = r.between(-1, 8);
    const param::Info& info = param::info(r.below(param::count()));
    const f32 amount = r.chance(10) ? NAN : r.unit() * 4 - 2;
    const auto before = copyOf(*p);
    bool changed = true;
    switch (r.below(7)) {
      case 0:
        changed = macros::add(*p, t, "M" + std::to_string(r.below(9)), r.chance(50), r.unit(), error) >= 0;
        break;
      case 1:
        changed =
            macros::rename(*p, t, slot, r.chance(20) ? "cutoff" : "N" + std::to_string(r.below(30)), error);
        break;
      case 2: changed = r.chance(30) && macros::remove(*p, t, slot); break;
      case 3: changed = macros::setBipolar(*p, t, slot, r.chance(50)); break;
      case 4: changed = macros::setValue(*p, t, slot, r.unit() * 3 - 1); break;
      case 5: changed = macros::unmap(*p, t, slot, info, pad); break;
      default:
        changed = macros::map(*p, t, slot, info, pad, amount, r.chance(50) ? mirror : amount, r.unit() * 0.6f,
                              0.3f + r.unit(), error);
    }
    if (!changed) {
      ASSERT_TRUE(projectBytes(*p) == projectBytes(*before)) << n;
    }
    ASSERT_EQ(errorOf(*p), "") << n;
  }
}

TEST(MacroRules, APlanHoldsEachTargetOnce) {
  auto p = plainProject();
  std::string error;
  for (const char* name : {"A", "B"}) {
    const int slot = macros::add(*p, 1, name, false, 0.5f, error);
    macros::map(*p, 1, slot, row("cutoff"), -1, 1, mirror, 0, 1, error);
  }
  macros::map(*p, 1, 1, row("sub_level"), -1, 0.2f, mirror, 0, 1, error);
  auto plan = std::make_unique<macros::Plan>();
  macros::buildPlan(*p, 1, *plan);
  EXPECT_EQ(plan->macroCount, 2);
  EXPECT_EQ(plan->entryCount, 2);
  EXPECT_EQ(plan->linkCount, 3);
  EXPECT_EQ(plan->entries[0].target, automation::CUTOFF);
  EXPECT_EQ(plan->entries[0].macros, 3);
  EXPECT_EQ(plan->targetMacros[automation::CUTOFF], 3);
  EXPECT_EQ(plan->targetMacros[automation::PAN], 0);
  EXPECT_EQ(plan->entries[1].target, -1);
  macros::buildPlan(*p, 99, *plan);
  EXPECT_EQ(plan->linkCount, 0);
  EXPECT_EQ(macros::resulting(*p, 1, row("bpm"), -1), p->bpm) << "no Macro moves a value of the Project";
}

TEST(Pins, DefaultsBecomeOnesOwnWithTheFirstChange) {
  auto p = plainProject();
  Track& t = p->tracks[1];
  EXPECT_EQ(pins::keys(t), pins::defaultKeys(MELODIC));
  EXPECT_TRUE(pins::unpin(t, "cutoff"));
  EXPECT_TRUE(t.pins.custom);
  EXPECT_EQ(pins::keys(t).size(), pins::defaultKeys(MELODIC).size() - 1);
  EXPECT_FALSE(pins::pin(t, "pad_tone"));
  EXPECT_TRUE(pins::pin(t, "cutoff"));
  EXPECT_FALSE(pins::pin(t, "cutoff"));
  std::string error;
  macros::add(*p, 1, "WARM", false, 0, error);
  EXPECT_TRUE(pins::pin(t, "warm"));
  EXPECT_TRUE(pins::pinned(t, "Warm"));
  EXPECT_FALSE(pins::pin(t, "warm")) << "a Macro is one Pin however it is spelled";
  EXPECT_TRUE(pins::unpin(t, "warm"));
  EXPECT_TRUE(pins::move(t, 0, 3));
  EXPECT_EQ(pins::keys(t)[3], "engine1");
  EXPECT_FALSE(pins::move(t, 0, 99));
  pins::Keys many;
  for (const param::Info& info : param::all())
    if (pins::valid(t, info.key)) many.emplace_back(info.key);
  pins::setKeys(t, many);
  EXPECT_EQ(pins::keys(t).size(), size_t(limits::pins)) << "a 33rd is left out";
  EXPECT_EQ(errorOf(*p), "");
  pins::clear(t);
  EXPECT_EQ(pins::keys(t), pins::defaultKeys(MELODIC));
}

TEST(Pins, ASendsPinsGoWithItsEffect) {
  auto p = plainProject();
  p->fx1.type = FX_DELAY;
  EXPECT_EQ(pins::busKeys(*p, SendI)[0], "fx1_return");
  EXPECT_TRUE(pins::pinnedBus(*p, SendI, "fx1_delay_time"));
  EXPECT_TRUE(pins::unpinBus(*p, SendI, "fx1_delay_wow"));
  EXPECT_TRUE(pins::setBusType(*p, SendI, FX_HALL));
  for (const std::string& key : pins::busKeys(*p, SendI)) EXPECT_TRUE(pins::validBus(*p, SendI, key)) << key;
  EXPECT_FALSE(pins::pinBus(*p, SendI, "fx1_delay_time"));
  EXPECT_TRUE(pins::pinBus(*p, SendI, "fx1_hall_decay"));
  EXPECT_TRUE(pins::validBus(*p, MasterBus, "master_eq_1k"));
  EXPECT_FALSE(pins::validBus(*p, SendII, "fx_chain"));
  EXPECT_EQ(errorOf(*p), "");
}

}  // namespace
}  // namespace synth::test
