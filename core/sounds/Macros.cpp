#include "core/sounds/Macros.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "base/Text.h"
#include "core/Names.h"
#include "core/Preset.h"
#include "core/params/Targets.h"

namespace synth::macros {
namespace {

bool letter(char c) { return (c >= 'A' && c <= 'Z'); }
bool digit(char c) { return c >= '0' && c <= '9'; }

// A zero without a sign: an equal sound has equal bytes, so the other is in no Macro.
bool plainZero(f32 value) { return value != 0 || !std::signbit(value); }

bool validTarget(const MacroTarget& target, const Track& track) {
  const param::Info* info = param::find(target.param);
  if (!info || !targetable(*info, track.track_kind, track.engine) || target.reserved) return false;
  if (target.pad >= limits::pads || (info->scope != param::ScopePad && target.pad != 0)) return false;
  auto fits = [](f32 amount) { return std::fabs(amount) <= largestAmount && plainZero(amount); };
  if (!fits(target.amount) || !fits(target.amount_down)) return false;
  return plainZero(target.window_from) && target.window_from >= 0 && target.window_from < target.window_to &&
         target.window_to <= 1;
}

bool validTargets(const MacroRec& macro, const Track& track, std::string& error) {
  const std::string name(nameText(macro.name));
  for (int i = 0; i < macro.targetCount; i++) {
    const MacroTarget& target = macro.targets[i];
    const bool mirrors = macro.polarity || std::bit_cast<u32>(target.amount_down) == 0;
    if (!validTarget(target, track) || !mirrors) {
      error = "Invalid Macro target of " + name;
      return false;
    }
    for (int k = 0; k < i; k++)
      if (macro.targets[k].param == target.param && macro.targets[k].pad == target.pad) {
        error = "Macro " + name + " moves " + param::find(target.param)->key + " twice";
        return false;
      }
  }
  for (int i = macro.targetCount; i < limits::macroTargets; i++)
    if (!sameBytes(macro.targets[i], MacroTarget{})) {
      error = "Macro arena tail not zero";
      return false;
    }
  return true;
}

bool validMacro(const MacroRec& macro, std::string& error) {
  const std::string_view name = nameText(macro.name);
  MacroRec clean;
  setName(clean.name, name);
  if (name.empty() || cleanName(name) != name ||
      std::memcmp(clean.name, macro.name, sizeof clean.name) != 0) {
    error = "Invalid Macro name";
    return false;
  }
  if (macro.polarity > 1 || macro.targetCount > limits::macroTargets || macro.reserved[0] ||
      macro.reserved[1] || !plainZero(macro.value) ||
      !(macro.value >= (macro.polarity ? -1 : 0) && macro.value <= 1)) {
    error = "Invalid Macro " + std::string(name);
    return false;
  }
  return true;
}

}  // namespace

bool targetable(const param::Info& info, int kind, int engine) {
  const std::string_view key = info.key;
  if (info.scope == param::ScopeProject || info.whole()) return false;
  if (key == "osc_b_shape" || key == "pad_sweep_time") return false;
  if (info.mix) return key == "send_1" || key == "send_2";
  return preset::holds(info, kind, engine);
}

std::string cleanName(std::string_view name) {
  const std::string word = text::upper(text::trimmed(name));
  if (word.empty() || word.size() > limits::shortName || !letter(word[0])) return "";
  for (char c : word)
    if (!letter(c) && !digit(c) && c != '_' && c != '-') return "";
  if (param::find(text::lower(word)) || automation::trackTargetNamed(word) >= 0) return "";
  return word;
}

int find(const Track& track, std::string_view name) {
  const std::string wanted = text::upper(name);
  for (int i = 0; i < std::min<int>(track.macroCount, limits::macros); i++)
    if (nameText(track.macros[i].name) == wanted) return i;
  return -1;
}

std::string name(const Track& track, int slot) {
  const bool there = slot >= 0 && slot < std::min<int>(track.macroCount, limits::macros);
  return there ? std::string(nameText(track.macros[slot].name)) : "";
}

std::vector<std::string> names(const Track& track) {
  std::vector<std::string> all;
  for (int slot = 0; slot < std::min<int>(track.macroCount, limits::macros); slot++)
    all.push_back(name(track, slot));
  return all;
}

int slotNamed(const Track& track, std::string_view name) {
  const int slot = find(track, name);
  if (slot >= 0) return slot;
  const int target = automation::trackTargetNamed(name);
  const int place = automation::isMacroTarget(target) ? target - automation::firstMacroTarget : -1;
  return place < track.macroCount ? place : -1;
}

f32 fromNormalized(bool bipolar, f32 x) {
  x = clampValue(false, x);
  if (!bipolar) return x;
  const f32 v = 2 * x - 1;
  return std::fabs(v) <= 1.5259022e-5f ? 0 : v;
}

f32 toNormalized(bool bipolar, f32 value) {
  if (!std::isfinite(value)) return bipolar ? 0.5f : 0;
  value = clampValue(bipolar, value);
  return bipolar ? (value + 1) / 2 : value;
}

f32 clampValue(bool bipolar, f32 value) {
  // Never -0: an equal sound has equal bytes.
  return std::isfinite(value) ? std::clamp(value, bipolar ? -1.0f : 0.0f, 1.0f) + 0.0f : 0;
}

bool valid(const Track& track, std::string& error) {
  if (track.macroCount > limits::macros) {
    error = "Invalid Macros";
    return false;
  }
  for (int i = 0; i < track.macroCount; i++) {
    if (!validMacro(track.macros[i], error)) return false;
    for (int k = 0; k < i; k++)
      if (nameText(track.macros[k].name) == nameText(track.macros[i].name)) {
        error = "Two Macros named " + std::string(nameText(track.macros[i].name));
        return false;
      }
    if (!validTargets(track.macros[i], track, error)) return false;
  }
  for (int i = track.macroCount; i < limits::macros; i++)
    if (!sameBytes(track.macros[i], MacroRec{})) {
      error = "Macro arena tail not zero";
      return false;
    }
  return true;
}

bool foreignTarget(const Track& track, int& slot, int& target) {
  for (slot = 0; slot < std::min<int>(track.macroCount, limits::macros); slot++)
    for (target = 0; target < std::min<int>(track.macros[slot].targetCount, limits::macroTargets); target++) {
      const param::Info* info = param::find(track.macros[slot].targets[target].param);
      if (info && !targetable(*info, track.track_kind, track.engine)) return true;
    }
  return false;
}

}  // namespace synth::macros
