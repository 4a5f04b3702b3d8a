#include "engine/Resolve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "base/Math.h"
#include "core/model/Lanes.h"
#include "engine/dsp/FastMath.h"

namespace synth {
namespace {

using namespace automation;

constexpr u64 bit(int target) { return u64(1) << target; }

// Targets that act where the voices are summed, so that a Lock on them is the Track's.
constexpr u64 afterVoices =
    bit(LEVEL) | bit(PAN) | bit(SEND_1) | bit(SEND_2) | bit(WIDTH) | bit(DRIVE) | bit(MOD_MIX) |
    bit(HIGHPASS) | bit(MOD_RATE) | bit(MOD_DEPTH) | bit(MOD_FEEDBACK) | bit(LOWPASS) | bit(CRUSH_BITS) |
    bit(CRUSH_RATE) | bit(EQ_LOW) | bit(EQ_MID) | bit(EQ_MID_FREQ) | bit(EQ_HIGH) | bit(MOD_TONE) |
    bit(TRIM) | bit(MONO_BELOW) | bit(DUCK_AMOUNT) | bit(DUCK_RELEASE) | bit(ROOM_SIZE) | bit(ROOM_DECAY) |
    bit(ROOM_DAMP) | bit(ROOM_MIX) | perVoiceTargets;

// Targets that the Track chain reads sample by sample; all others are read at ticks, where segments begin.
constexpr u64 perSample = bit(LEVEL) | bit(PAN) | bit(SEND_1) | bit(SEND_2) | bit(WIDTH) | bit(DRIVE) |
                          bit(HIGHPASS) | bit(LOWPASS) | bit(CRUSH_BITS) | bit(CRUSH_RATE) | bit(TRIM) |
                          bit(MONO_BELOW) | bit(DUCK_AMOUNT) | bit(DUCK_RELEASE) | bit(MOD_RATE) |
                          bit(MOD_DEPTH) | bit(MOD_FEEDBACK) | bit(MOD_MIX) | bit(MOD_TONE) | bit(LFO_RATE) |
                          bit(LFO2_RATE);

float storedValue(const Track& track, int target) {
  if (target == PITCH) return 0;
  return targetInfo(target)->get(track);
}

LaneScale scaleOf(int target) {
  if (isMacroTarget(target) || (target >= ENGINE_1 && target <= ENGINE_4))
    return {LaneScale::Linear, 0, 1, 0};
  const param::Info* info = targetInfo(target);
  if (!info || target == PITCH || info->whole()) return {};
  if (info->curve == param::Linear) return {LaneScale::Linear, info->min, info->max, 0};
  if (info->curve != param::Logarithmic || !(info->min > 0)) return {};
  return {LaneScale::Logarithmic, info->min, info->max, float(math::log2(double(info->max) / info->min))};
}

void bind(LaneReader& reader, int row, int target) {
  reader = LaneReader{};
  reader.row = u16(row);
  reader.target = target;
  if (isTrackTarget(target) || isMacroTarget(target)) reader.scale = scaleOf(target);
}

float scaled(const LaneReader& reader, float normalized) {
  const LaneScale& s = reader.scale;
  switch (s.kind) {
    case LaneScale::Linear: return s.low + normalized * (s.high - s.low);
    case LaneScale::Logarithmic: return std::min(s.low * dsp::exp2Fast(normalized * s.octaves), s.high);
    default: return targetValue(reader.target, normalized);
  }
}

bool bound(const LaneRow& row) { return row.enabled && row.target && row.count; }

// Rows `first`..`first + rows` of one owner whose target passes `accepts`, each target once.
template <class Accepts>
u8 bindOwner(const Project& p, LaneReader* readers, int first, int rows, Accepts accepts) {
  u8 count = 0;
  for (int r = first; r < first + rows; r++) {
    const LaneRow& lane = p.lanes[r];
    const int target = lane.target - 1;
    if (!bound(lane) || !accepts(target)) continue;
    bool again = false;
    for (int k = 0; k < count; k++) again |= readers[k].target == target;
    if (!again) bind(readers[count++], r, target);
  }
  return count;
}

float readAt(LaneReader& reader, std::span<const LanePoint> points, double at) {
  const u16 count = u16(points.size());
  if (reader.segment > count) reader.segment = 0;
  // Mostly the position has moved on by a point or none; after a jump a search finds it.
  if (reader.segment > 0 && points[reader.segment - 1].position > at) {
    auto it =
        std::partition_point(points.begin(), points.end(), [&](auto& point) { return point.position <= at; });
    reader.segment = u16(it - points.begin());
  }
  while (reader.segment < count && points[reader.segment].position <= at) reader.segment++;
  return readLane(points, reader.segment, at);
}

bool same(float a, float b) { return a == b || (a != a && b != b); }

// Whether the row reads the same all through the segment.
bool standsStill(const EngineCore& core, const LaneReader& reader, std::span<const LanePoint> points) {
  const u16 after = reader.segment;
  const double end = core.clock.laneTime[core.clock.n - 1];
  if (core.clock.laneTime[0] == end || points.empty()) return true;
  if (after < points.size() && points[after].position <= end) return false;
  if (after == 0 || after == points.size()) return true;
  const LanePoint &from = points[after - 1], &to = points[after];
  return from.rest || to.rest || from.value == to.value;
}

// Reads one row over the segment; `moving` says whether its samples differ.
void readRow(EngineCore& core, LaneReader& reader, bool everySample) {
  auto points = lanePoints(*core.project, reader.row);
  const int n = core.clock.n;
  auto mapped = [&](float input) {
    if (!same(input, reader.input)) {
      reader.input = input;
      reader.value = hasValue(input) ? scaled(reader, input) : noValue;
    }
    return reader.value;
  };
  const float first = mapped(readAt(reader, points, core.clock.laneTime[0]));
  reader.moving = false;
  if (!everySample || standsStill(core, reader, points)) return;
  reader.block[0] = first;
  for (int i = 1; i < n; i++) {
    reader.block[i] = mapped(readAt(reader, points, core.clock.laneTime[i]));
    reader.moving |= !same(reader.block[i], first);
  }
  for (int i = n; i < dsp::segment; i++) reader.block[i] = reader.block[n - 1];
  if (reader.moving) return;
  reader.value = first;
}

// What a target has above its Lane, or NaN.
float above(const EngineCore& core, int t, int target) {
  const Overrides& o = core.overrides;
  if (o.macroMask[t] & bit(target)) return o.macro[t][target];
  if (hasValue(o.touch[t][target])) return o.touch[t][target];
  if ((o.lockMask[t] & bit(target)) && !(perVoiceTargets & bit(target))) return o.lock[t][target];
  return noValue;
}

}  // namespace

void bindLanes(EngineCore& core) {
  const Project& p = *core.project;
  LaneBindings& l = core.lanes;
  for (int t = 0; t < limits::tracks; t++)
    l.trackCount[t] = bindOwner(p, l.track[t], laneRow(t, 0), limits::lanesPerOwner,
                                [](int target) { return isTrackTarget(target) || isMacroTarget(target); });
  for (int bus = 0; bus < 3; bus++)
    l.busCount[bus] =
        bindOwner(p, l.bus[bus], laneRow(busOwner(bus), 0), limits::lanesPerOwner,
                  [&](int target) { return isBusTarget(target) && busHolds(p, bus, *targetInfo(target)); });
  l.moveCount = bindOwner(p, l.move, limits::firstMasterLane, limits::masterLanes,
                          [](int target) { return target < performanceEffects; });
  clearLanes(core);
}

void clearLanes(EngineCore& core) {
  LaneBindings& l = core.lanes;
  for (int t = 0; t < limits::tracks; t++) {
    for (float& v : l.macro[t]) v = noValue;
    for (LaneReader& reader : l.track[t]) {
      reader.input = reader.value = noValue;
      reader.moving = false;
    }
    core.prepared[t].dirty = true;
  }
  for (auto& bus : l.bus)
    for (LaneReader& reader : bus) reader.input = reader.value = noValue;
  for (float& v : core.overrides.busLane) v = noValue;
  for (int i = 0; i < performanceEffects; i++) {
    l.moves[i] = noValue;
    l.moveBound[i] = false;
  }
}

float targetValue(int target, float normalized) {
  if (target >= ENGINE_1 && target <= ENGINE_4) return normalized;
  if (target == PITCH) return (normalized - 0.5f) * pitchLaneRange;
  const param::Info* info = targetInfo(target);
  return info ? param::fromNormalized(*info, normalized) : noValue;
}

double lanePosition(const EngineCore& core) {
  const Transport& t = core.transport;
  return (t.ended ? t.endPosition : t.step + t.stepPhase) * 16;
}

void evaluateNow(EngineCore& core) {
  core.clock.n = 1;
  core.clock.laneTime[0] = lanePosition(core);
  readLanes(core);
  prepareTracks(core);
}

void readLanes(EngineCore& core) {
  if (!core.transport.automationPlayback) return;
  LaneBindings& l = core.lanes;
  for (int t = 0; t < limits::tracks; t++) {
    for (int k = 0; k < l.trackCount[t]; k++) {
      LaneReader& reader = l.track[t][k];
      const float before = reader.value;
      const bool moved = reader.moving;
      if (isMacroTarget(reader.target)) {
        readRow(core, reader, false);
        l.macro[t][reader.target - firstMacroTarget] = reader.value;
      } else {
        readRow(core, reader, perSample >> reader.target & 1);
      }
      if (moved || reader.moving || !same(before, reader.value)) core.prepared[t].lanesDirty = true;
    }
  }
  // Buses and Moves take a value every sixteen samples; everything there slews or ramps by itself.
  if ((core.sampleClock & 15) && !core.busDirty) return;
  for (int bus = 0; bus < 3; bus++)
    for (int k = 0; k < l.busCount[bus]; k++) {
      LaneReader& reader = l.bus[bus][k];
      const float v = readAt(reader, lanePoints(*core.project, reader.row), core.clock.laneTime[0]);
      core.overrides.busLane[reader.target - firstBusTarget] =
          hasValue(v) ? targetValue(reader.target, v) : noValue;
    }
  for (int k = 0; k < l.moveCount; k++) {
    LaneReader& reader = l.move[k];
    l.moveBound[reader.target] = true;
    l.moves[reader.target] = readAt(reader, lanePoints(*core.project, reader.row), core.clock.laneTime[0]);
  }
}

namespace {

void rebuildStanding(EngineCore& core, int t) {
  Prepared& now = core.prepared[t];
  const Track& track = core.storedTrack(t);
  now.dirty = false;
  now.lanesDirty = true;
  now.overridden = 0;
  for (int target = 0; target < trackTargets; target++) {
    const float v = above(core, t, target);
    if (hasValue(v)) now.overridden |= bit(target);
    now.standing[target] = hasValue(v) ? v : storedValue(track, target);
  }
}

void applyLanes(EngineCore& core, int t) {
  Prepared& now = core.prepared[t];
  now.version++;
  now.moving = 0;
  std::copy(std::begin(now.standing), std::end(now.standing), now.value);
  for (int k = 0; k < core.lanes.trackCount[t]; k++) {
    LaneReader& reader = core.lanes.track[t][k];
    if (!isTrackTarget(reader.target) || (now.overridden & bit(reader.target))) continue;
    if (!reader.moving) {
      if (hasValue(reader.value)) now.value[reader.target] = reader.value;
      continue;
    }
    // A Lane that rests within the segment leaves the Track's own value there.
    for (float& v : reader.block.v)
      if (!hasValue(v)) v = now.standing[reader.target];
    now.value[reader.target] = reader.block[0];
    now.moving |= bit(reader.target);
    now.lane[reader.target] = &reader.block;
  }
  now.lanesDirty = now.moving != 0;  // the next segment has other values
}

}  // namespace

void prepareTracks(EngineCore& core) {
  const bool tick = (core.sampleClock & 31) == 0;
  for (int t = 0; t < limits::tracks; t++) {
    if (core.plan(t).linkCount && (tick || core.prepared[t].dirty)) applyMacros(core, t);
    if (core.prepared[t].dirty) rebuildStanding(core, t);
    if (core.prepared[t].lanesDirty) applyLanes(core, t);
  }
}

void prepareBuses(EngineCore& core) {
  const Overrides& o = core.overrides;
  auto prepare = [&](int target) {
    const int k = target - firstBusTarget;
    const param::Info& info = *targetInfo(target);
    const float v = hasValue(o.busTouch[k])  ? o.busTouch[k]
                    : hasValue(o.busLane[k]) ? o.busLane[k]
                                             : info.get(*core.project);
    core.busValue[k] = v;
    for (int bus : {SendI, SendII}) {
      const std::size_t first = bus == SendI ? offsetof(Project, fx1) : offsetof(Project, fx2);
      if (info.offset >= first && info.offset < first + sizeof(SendFx))
        std::memcpy(reinterpret_cast<char*>(&core.sendNow[bus]) + (info.offset - first), &v, sizeof v);
    }
  };
  if (core.busDirty)
    for (int bus : {SendI, SendII}) core.sendNow[bus] = sendFx(*core.project, bus);
  if (core.busDirty)
    for (int target = firstBusTarget; target <= lastBusTarget; target++) prepare(target);
  core.busDirty = false;
  for (int bus = 0; bus < 3; bus++)
    for (int k = 0; k < core.lanes.busCount[bus]; k++) prepare(core.lanes.bus[bus][k].target);
}

float busValue(const EngineCore& core, int target) { return core.busValue[target - firstBusTarget]; }

void mergeLocks(EngineCore& core) {
  if (!core.index->locks) return;
  const Voice* newest[limits::tracks][trackTargets];
  bool any[limits::tracks] = {};
  for (const Voice& v : core.voices) {
    if (!v.sounding() || v.ghost() || v.isPad || !(v.lockMask & afterVoices)) continue;
    if (!any[v.track]) std::fill(std::begin(newest[v.track]), std::end(newest[v.track]), nullptr);
    any[v.track] = true;
    for (u64 rest = v.lockMask & afterVoices; rest; rest &= rest - 1) {
      const Voice*& holder = newest[v.track][__builtin_ctzll(rest)];
      if (!holder || v.serial > holder->serial) holder = &v;
    }
  }
  Overrides& o = core.overrides;
  for (int t = 0; t < limits::tracks; t++) {
    if (!any[t] && !o.lockMask[t]) continue;
    u64 mask = 0;
    for (int target = 0; target < trackTargets; target++) {
      const Voice* holder = any[t] ? newest[t][target] : nullptr;
      const float v = holder ? holder->lockValues[target] : noValue;
      if (holder) mask |= bit(target);
      if (!same(o.lock[t][target], v)) {
        o.lock[t][target] = v;
        core.prepared[t].dirty = true;
      }
    }
    if (o.lockMask[t] != mask) core.prepared[t].dirty = true;
    o.lockMask[t] = mask;
  }
}

}  // namespace synth
