// A Preset as text.
#include <cmath>

#include "base/Sha256.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/PresetRules.h"

namespace synth::preset {
namespace {

std::string shortNumber(f32 value) { return text::number(value, true, 1e7); }

std::string valueText(const param::Info& info, f32 value) {
  if (info.curve == param::Enumeration && value == std::trunc(value) && value >= 0 &&
      value < info.optionCount)
    return info.options[int(value)];
  return shortNumber(value);
}

std::string line(std::string_view key, std::string_view value) {
  return std::string(key) + " = " + std::string(value) + "\n";
}

std::string targetLine(const MacroRec& macro, const MacroTarget& target) {
  const param::Info* info = param::find(target.param);
  if (!info) return "";
  const bool ofPad = info->scope == param::ScopePad;
  std::string out =
      "  " + keyText(info->key, ofPad ? target.pad : -1) + " " + macros::amountText(*info, target.amount);
  if (macro.polarity && target.amount_down != -target.amount)
    out += " " + macros::amountText(*info, target.amount_down);
  if (target.window_from != 0 || target.window_to != 1)
    out += " " + shortNumber(target.window_from) + ".." + shortNumber(target.window_to);
  return out + "\n";
}

std::string macroLines(const MacroRec& macro) {
  std::string out = line("macro", std::string(nameText(macro.name)) + (macro.polarity ? " bi " : " uni ") +
                                      shortNumber(macro.value));
  for (int i = 0; i < macro.targetCount; i++) out += targetLine(macro, macro.targets[i]);
  return out;
}

std::string header(const Preset& p) {
  std::string out = "# Quorel Preset\n" + line("name", p.name) + line("role", roleName(p.role));
  if (!p.family.empty()) out += line("family", p.family);
  if (!p.tags.empty()) out += line("tags", text::joined(p.tags, " "));
  if (!p.styles.empty()) out += line("style", text::joined(p.styles, " "));
  out += line("engine", engineName(p));
  if (isZero(p.sampleHash)) return out;
  std::array<u8, 32> hash;
  std::copy(std::begin(p.sampleHash), std::end(p.sampleHash), hash.begin());
  out += line("sample", hexOf(hash));
  if (!p.sampleName.empty()) out += line("sample_name", p.sampleName);
  return out;
}

std::string values(const Preset& p) {
  std::string out = p.values.empty() ? "" : "\n";
  int pad = -1;
  for (const Value& value : p.values) {
    const param::Info* info = param::find(value.key);
    if (!info) continue;
    if (value.pad != pad && value.pad >= 0) out += "\n# Pad " + std::to_string(value.pad) + "\n";
    pad = value.pad;
    out += line(keyText(value.key, value.pad), valueText(*info, value.value));
  }
  return out;
}

}  // namespace

std::string write(const Preset& preset) {
  Preset p = preset;
  normalize(p);
  std::string out = header(p);
  if (p.pinsSet) {
    out += "pins =";
    for (const std::string& pin : p.pins) out += " " + pin;
    out += "\n";
  }
  for (const MacroRec& macro : p.macros) out += macroLines(macro);
  return out + values(p);
}

}  // namespace synth::preset
