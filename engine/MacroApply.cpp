#include "engine/MacroApply.h"

#include <algorithm>

#include "core/params/Perceptual.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/Macros.h"
#include "engine/Resolve.h"

namespace synth {
namespace {

using namespace automation;
using macros::Plan;

constexpr u64 bit(int target) { return u64(1) << target; }

double travelOf(const Plan::Link& link, float value) {
  const MacroTarget& t = *link.target;
  return macros::travel(t.amount, t.amount_down, t.window_from, t.window_to, value);
}

// The Macro Locks of the newest sounding Note that holds one, over what the Macros read without them.
void lockMacros(const EngineCore& core, int t, TrackMacros& now) {
  std::copy(std::begin(now.open), std::end(now.open), now.current);
  if (!core.index->locks) return;
  const Voice* newest[limits::macros] = {};
  for (const Voice& v : core.voices) {
    if (!v.sounding() || v.ghost() || v.isPad || v.track != t) continue;
    for (u16 rest = v.macroLockMask; rest; rest = u16(rest & (rest - 1))) {
      const Voice*& holder = newest[__builtin_ctz(rest)];
      if (!holder || v.serial > holder->serial) holder = &v;
    }
  }
  for (int m = 0; m < limits::macros; m++)
    if (newest[m]) now.current[m] = newest[m]->macroLocks[m];
}

// False when they stand where they stood.
bool readMacros(const EngineCore& core, int t, const Plan& plan, TrackMacros& now) {
  float current[limits::macros], open[limits::macros];
  std::copy(std::begin(now.current), std::end(now.current), current);
  std::copy(std::begin(now.open), std::end(now.open), open);
  for (int m = 0; m < plan.macroCount; m++) {
    const float touch = core.overrides.macroTouch[t][m], lane = core.lanes.macro[t][m];
    now.open[m] = hasValue(touch)  ? touch
                  : hasValue(lane) ? macros::fromNormalized(plan.bipolar[m], lane)
                                   : plan.value[m];
  }
  lockMacros(core, t, now);
  return !std::equal(current, current + plan.macroCount, now.current) ||
         !std::equal(open, open + plan.macroCount, now.open);
}

// What a target plays before any Macro, for the Track or for voices that do not lock it themselves. The
// Engine's four have no Track Locks.
enum class For { Track, Voices };
float baseOf(const EngineCore& core, int t, const Plan::Entry& entry, For reader) {
  const Track& track = core.storedTrack(t);
  if (entry.target < 0) return entry.info->get(track, entry.pad);
  const Overrides& o = core.overrides;
  if (hasValue(o.touch[t][entry.target])) return o.touch[t][entry.target];
  const bool locks =
      entry.target > ENGINE_4 && (reader == For::Track || !(perVoiceTargets & bit(entry.target)));
  if (locks && hasValue(o.lock[t][entry.target])) return o.lock[t][entry.target];
  for (int k = 0; k < core.lanes.trackCount[t]; k++) {
    const LaneReader& lanes = core.lanes.track[t][k];
    if (lanes.target != entry.target) continue;
    const float lane = lanes.moving ? lanes.block[0] : lanes.value;
    if (hasValue(lane)) return lane;
  }
  return entry.info->get(track, entry.pad);
}

void sumTravels(const Plan& plan, const float (&values)[limits::macros], float (&sums)[Plan::most]) {
  std::fill_n(sums, plan.entryCount, 0.0f);
  for (int i = 0; i < plan.linkCount; i++)
    sums[plan.links[i].entry] += float(travelOf(plan.links[i], values[plan.links[i].macro]));
}

// Brings the sums up to date; true when a Macro moves something.
bool sumMacros(const EngineCore& core, int t, const Plan& plan, TrackMacros& now) {
  const bool moved = readMacros(core, t, plan, now);
  if (now.summed && !moved) return now.live;
  sumTravels(plan, now.current, now.currentSums);
  sumTravels(plan, now.open, now.openSums);
  now.summed = true;
  auto moves = [&](const float* sums) {
    return std::any_of(sums, sums + plan.entryCount, [](float s) { return s != 0; });
  };
  return moves(now.currentSums) || moves(now.openSums);
}

void leave(EngineCore& core, int t) {
  TrackMacros& now = core.macros[t];
  if (now.live || core.overrides.macroMask[t]) core.prepared[t].dirty = true;
  now.live = false;
  now.mask = 0;
  now.version++;
  core.overrides.macroMask[t] = 0;
}

// Moves one entry; true when it plays something new.
bool moveEntry(EngineCore& core, int t, const Plan::Entry& entry, TrackMacros::Seen& seen, float current,
               float open) {
  const float base = baseOf(core, t, entry, For::Track), openBase = baseOf(core, t, entry, For::Voices);
  if (seen.known && seen.base == base && seen.openBase == openBase && seen.current == current &&
      seen.open == open)
    return false;
  seen = {base, openBase, current, open, true};
  TrackMacros& now = core.macros[t];
  const float value = perceptual::offset(*entry.info, base, double(current));
  entry.info->set(value, core.liveTracks[t], entry.pad);
  if (entry.target < 0) return true;
  core.overrides.macro[t][entry.target] = value;
  now.unlocked[entry.target] =
      open == current && openBase == base ? value : perceptual::offset(*entry.info, openBase, double(open));
  now.mask |= bit(entry.target);
  core.overrides.macroMask[t] |= bit(entry.target);
  return true;
}

}  // namespace

void applyMacros(EngineCore& core, int t) {
  const Plan& plan = core.plan(t);
  TrackMacros& now = core.macros[t];
  if (plan.linkCount == 0) {
    if (now.live) leave(core, t);
    return;
  }
  if (!sumMacros(core, t, plan, now)) {
    if (now.live) leave(core, t);
    return;
  }
  if (!now.live) {
    now.live = true;
    core.liveTracks[t] = core.storedTrack(t);
    for (int e = 0; e < plan.entryCount; e++) now.seen[e].known = false;
  }
  bool changed = false;
  for (int e = 0; e < plan.entryCount; e++)
    changed |= moveEntry(core, t, plan.entries[e], now.seen[e], now.currentSums[e], now.openSums[e]);
  if (!changed) return;
  now.version++;
  core.prepared[t].dirty = true;
}

void resetMacros(EngineCore& core) {
  for (int t = 0; t < limits::tracks; t++) {
    TrackMacros& now = core.macros[t];
    now.live = now.summed = false;
    now.mask = 0;
    now.version++;
    core.overrides.macroMask[t] = 0;
    for (int m = core.plan(t).macroCount; m < limits::macros; m++) core.overrides.macroTouch[t][m] = noValue;
  }
}

void applyVoiceMacros(EngineCore& core, Voice& v) {
  const int t = v.track;
  const TrackMacros& now = core.macros[t];
  const Plan& plan = core.plan(t);
  if (plan.linkCount == 0 || (!v.macroLockMask && !(v.lockMask & now.mask))) {
    v.macroMask = 0;
    return;
  }
  // Changes under a target are counted only while the Track follows its Macros.
  if (now.live && v.macroVersion == now.version && v.macroSerial == v.lockCounter) return;
  v.macroVersion = now.version;
  v.macroSerial = v.lockCounter;
  v.macroMask = 0;
  float values[limits::macros], sums[Plan::most];
  for (int m = 0; m < limits::macros; m++)
    values[m] = v.macroLockMask >> m & 1 ? v.macroLocks[m] : now.open[m];
  sumTravels(plan, values, sums);
  for (int e = 0; e < plan.entryCount; e++) {
    const Plan::Entry& entry = plan.entries[e];
    if (entry.target < 0) continue;
    const bool moved = plan.targetMacros[entry.target] & v.macroLockMask;
    const bool locked = v.lockMask & bit(entry.target);
    if (!moved && !(locked && now.mask & bit(entry.target))) continue;
    const bool own = locked && !hasValue(core.overrides.touch[t][entry.target]);
    const float base = own ? v.lockValues[entry.target] : baseOf(core, t, entry, For::Voices);
    v.macroMask |= bit(entry.target);
    v.macroValues[entry.target] = perceptual::offset(*entry.info, base, double(sums[e]));
  }
}

}  // namespace synth
