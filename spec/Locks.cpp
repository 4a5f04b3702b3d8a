#include "spec/Locks.h"

#include <cmath>

#include "base/Suggest.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"

namespace synth::spec {
namespace {

using namespace automation;

constexpr double kitPitchRange = 24;

u16 bits(double normalized) { return u16(std::lround(std::min(std::max(normalized, 0.0), 1.0) * 65535)); }

std::vector<std::string> targetNames(const Track& track) {
  std::vector<std::string> names;
  for (int t = 0; t < trackTargets; t++) names.push_back(targetName(t));
  for (int m = 0; m < track.macroCount; m++) names.emplace_back(nameText(track.macros[m].name));
  return names;
}

double number(const Json& value, const std::string& name) {
  if (!value.isNumber()) throw SpecError("A lock's value is a number: " + name);
  return value.number();
}

[[noreturn]] void outOfRange(const std::string& name, double value, double lo, double hi) {
  throw SpecError(Fault::OutOfRange, "Out of range: " + name + "=" + text::number(value, false),
                  "Range " + text::number(lo, true) + ".." + text::number(hi, true));
}

u16 macroValue(const Track& track, int slot, double v) {
  const bool bipolar = slot < track.macroCount && track.macros[slot].polarity;
  if (!(v >= (bipolar ? -1 : 0) && v <= 1))
    throw SpecError(Fault::OutOfRange,
                    std::string("A Macro's value is ") + (bipolar ? "-1..1 (bipolar)" : "0..1"));
  return bits(double(macros::toNormalized(bipolar, f32(v))));
}

}  // namespace

int trackTarget(const Track& track, const std::string& name) {
  const int macro = macros::find(track, name);
  if (macro >= 0) return firstMacroTarget + macro;
  const int target = trackTargetNamed(name);
  if (target >= 0) return target;
  std::string hint = suggest(name, targetNames(track));
  if (hint.empty()) hint = "List them with: quorel targets";
  throw SpecError(Fault::UnknownTarget, "Unknown lane/lock target " + name, hint);
}

u16 fromValue01(const Json& value) {
  if (!value.isNumber() || !(value.number() >= 0 && value.number() <= 1))
    throw SpecError(Fault::OutOfRange, "value01 is 0..1");
  return bits(value.number());
}

u16 lockValue(const Track& track, int target, const std::string& name, const Json& lock) {
  const Json *value = lock.find("value"), *value01 = lock.find("value01");
  if (!value == !value01) throw SpecError("A lock has \"value\" (in the target's unit) or \"value01\"");
  if (value01) return fromValue01(*value01);
  const double v = number(*value, name);
  if (isMacroTarget(target)) return macroValue(track, target - firstMacroTarget, v);
  if (isDrums(track) && target == DECAY) {
    if (!(v >= 0 && v <= 1))
      throw SpecError(Fault::OutOfRange, "A hit's DECAY lock is 0..1 (its Pad's decay)");
    return bits(v);
  }
  if (target == PITCH) {
    if (!(std::fabs(v) <= kitPitchRange)) {
      if (isDrums(track)) throw SpecError(Fault::OutOfRange, "PITCH lock is -24..24 semitones");
      outOfRange(name, v, -kitPitchRange, kitPitchRange);
    }
    return bits((v + kitPitchRange) / 48);
  }
  if (target >= ENGINE_1 && target <= ENGINE_4) throw SpecError("This target takes value01");
  const param::Info& info = *targetInfo(target);
  if (!(std::fabs(v) < 1e30) || !param::inRange(info, f32(v)))
    outOfRange(name, v, double(info.min), double(info.max));
  return bits(double(param::toNormalized(info, f32(v))));
}

void addLock(Note& note, const Track& track, int target, const std::string& name, u16 value,
             const std::string& place) {
  if (isDrums(track) && !lockable(target, true))
    throw SpecError("A hit locks PITCH and DECAY (its Pad's)", "A Lane moves other values of a kit");
  if (!lockable(target, isDrums(track)))
    throw SpecError("A Note cannot lock " + name, "The LFO rates run per Track: use a Lane");
  for (LockRec& lock : note.locks) {
    if (lock.target == target + 1) throw SpecError(place + ": " + name + " is locked twice on one Note");
    if (lock.target) continue;
    lock.target = u8(target + 1);
    lock.value = value;
    return;
  }
  throw SpecError("At most eight Locks per Note");
}

}  // namespace synth::spec
