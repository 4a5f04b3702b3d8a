#include "core/sounds/PresetRules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "base/Text.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/model/Defaults.h"

namespace synth::preset {

bool holds(const param::Info& info, int kind, int engine) {
  const std::string_view key = info.key;
  const bool kit = kind == DRUMS;
  if (info.scope == param::ScopeProject || info.mix) return false;
  if (key == "engine" || key == "track_kind") return false;
  if (info.scope == param::ScopePad) return kit;
  if (info.applies == (kit ? param::MelodicOnly : param::DrumsOnly)) return false;
  if (kit) return true;
  if (key == "osc_b_level" || key == "osc_b_shape" || key == "analog_mode") return engine == ANALOG;
  if (key == "perc_model") return engine == PERC;
  if (key.starts_with("drawbar_")) return engine == ORGAN;
  if (key.starts_with("sample_")) return engine == SAMPLER;
  return true;
}

std::string engineName(const Preset& preset) {
  return preset.kind == DRUMS ? "DRUMS" : synthKindName(preset.engine);
}

bool settingsOnly(const Preset& preset) {
  return preset.kind != DRUMS && preset.engine == SAMPLER && isZero(preset.sampleHash);
}

std::string searchText(const Preset& preset) {
  std::string text = preset.name + " " + roleName(preset.role);
  if (!preset.family.empty()) text += " " + preset.family;
  for (const std::string& tag : preset.tags) text += " " + tag;
  for (const std::string& style : preset.styles) text += " " + style;
  return text + " " + engineName(preset);
}

bool validFamily(Role role, std::string_view family, int kind) {
  return familyIndex(role, family) >= 0 && (family == "KIT") == (kind == DRUMS);
}

Track plainTrack(int kind, int engine) {
  Track track = defaultTrack(kind == DRUMS ? DRUMS : MELODIC);
  if (kind != DRUMS) setSynthKind(track, engine);
  return track;
}

f32 storable(const param::Info& info, f32 value) {
  const f32 v = std::clamp(value, info.min, info.max);
  return info.whole() ? std::round(v) + 0.0f : v;
}

bool sameBits(f32 a, f32 b) { return std::memcmp(&a, &b, sizeof a) == 0; }

bool isZero(const u8 (&hash)[32]) {
  return std::all_of(hash, hash + sizeof hash, [](u8 b) { return b == 0; });
}

const MacroRec* macroNamed(const Preset& preset, std::string_view word) {
  for (const MacroRec& macro : preset.macros)
    if (text::sameIgnoringCase(nameText(macro.name), word)) return &macro;
  return nullptr;
}

KeyText keyOf(std::string_view text) {
  const size_t bracket = text.find('[');
  KeyText out;
  out.key = text::lower(text::trimmed(text.substr(0, bracket)));
  if (bracket == text.npos) return out;
  out.indexed = true;
  const std::string_view index = text.substr(bracket + 1);
  const auto [end, code] = std::from_chars(index.data(), index.data() + index.size(), out.pad);
  out.readable = code == std::errc{} && std::string_view(end, size_t(index.end() - end)) == "]";
  return out;
}

std::string keyText(std::string_view key, int pad) {
  return pad < 0 ? std::string(key) : std::string(key) + "[" + std::to_string(pad) + "]";
}

bool Value::operator==(const Value& other) const {
  return key == other.key && pad == other.pad && sameBits(value, other.value);
}

bool Preset::operator==(const Preset& o) const {
  auto sameMacro = [](const MacroRec& a, const MacroRec& b) { return sameBytes(a, b); };
  return name == o.name && role == o.role && family == o.family && tags == o.tags && styles == o.styles &&
         kind == o.kind && engine == o.engine &&
         std::memcmp(sampleHash, o.sampleHash, sizeof sampleHash) == 0 && sampleName == o.sampleName &&
         values == o.values && pinsSet == o.pinsSet && pins == o.pins &&
         std::equal(macros.begin(), macros.end(), o.macros.begin(), o.macros.end(), sameMacro);
}

}  // namespace synth::preset
