// The canonical form of a Preset.
#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "core/Names.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "core/sounds/PresetRules.h"

namespace synth::preset {
namespace {

std::string upperWord(std::string_view s) { return text::upper(text::trimmed(s)); }

// The words that the vocabulary has, each once, as many as there is room for.
void filter(Words& words, const Words& vocabulary, int most) {
  Words kept;
  for (const std::string& given : words) {
    std::string word = upperWord(given);
    const bool known = std::find(vocabulary.begin(), vocabulary.end(), word) != vocabulary.end();
    if (known && int(kept.size()) < most && std::find(kept.begin(), kept.end(), word) == kept.end())
      kept.push_back(std::move(word));
  }
  words = std::move(kept);
}

void normalizeHeader(Preset& p) {
  p.name = cleanName(p.name);
  char stored[16];
  setName(stored, text::trimmed(p.sampleName));
  p.sampleName = text::trimmed(nameText(stored));
  p.role = std::min(p.role, Role::Fx);
  p.kind = p.kind == DRUMS ? DRUMS : MELODIC;
  p.engine = p.kind == DRUMS ? ANALOG : std::min(p.engine, SAMPLER);
  p.family = upperWord(p.family);
  if (!validFamily(p.role, p.family, p.kind)) p.family.clear();
  filter(p.tags, characterTags(), mostTags);
  filter(p.styles, styles(), mostStyles);
  if (p.engine != SAMPLER) std::fill(std::begin(p.sampleHash), std::end(p.sampleHash), u8(0));
  if (isZero(p.sampleHash)) p.sampleName.clear();  // a name alone is not written
}

size_t rowOf(const std::string& key) {
  const param::Info* info = param::find(key);
  return info ? size_t(info - param::all().data()) : param::all().size();
}

bool padFits(const param::Info& info, int pad) {
  return info.scope == param::ScopePad ? pad >= 0 && pad < limits::pads : pad < 0;
}

void normalizeValues(Preset& p) {
  const Track plain = plainTrack(p.kind, p.engine);
  std::vector<Value> kept;
  for (size_t i = p.values.size(); i-- > 0;) {
    Value& value = p.values[i];
    const param::Info* info = param::find(value.key);
    if (!info || !holds(*info, p.kind, p.engine) || !padFits(*info, value.pad)) continue;
    value.pad = std::max(value.pad, -1);
    const bool later = std::any_of(kept.begin(), kept.end(),
                                   [&](const Value& v) { return v.key == value.key && v.pad == value.pad; });
    if (later || !std::isfinite(value.value)) continue;
    value.value = storable(*info, value.value);
    kept.push_back(value);
  }
  std::erase_if(kept, [&](const Value& v) {
    return sameBits(v.value, param::find(v.key)->get(plain, std::max(v.pad, 0)));
  });
  std::stable_sort(kept.begin(), kept.end(), [](const Value& a, const Value& b) {
    return a.pad != b.pad ? a.pad < b.pad : rowOf(a.key) < rowOf(b.key);
  });
  p.values = std::move(kept);
}

bool keepsTarget(const Preset& p, const MacroTarget& t) {
  const param::Info* info = param::find(t.param);
  if (!info || !macros::targetable(*info, p.kind, p.engine)) return false;
  if (info->scope == param::ScopePad ? t.pad >= limits::pads : t.pad != 0) return false;
  return std::isfinite(t.amount) && std::isfinite(t.amount_down) && std::isfinite(t.window_from) &&
         std::isfinite(t.window_to);
}

// Written anew, so that no byte of the record is left to chance.
MacroRec normalized(const Preset& p, const MacroRec& macro, std::string_view name) {
  MacroRec out;
  setName(out.name, name);
  out.polarity = macro.polarity != 0;
  out.value = macros::clampValue(out.polarity, macro.value);
  for (int i = 0; i < std::min<int>(macro.targetCount, limits::macroTargets); i++) {
    MacroTarget t = macro.targets[i];
    const bool twice = std::any_of(out.targets, out.targets + out.targetCount, [&](const MacroTarget& other) {
      return other.param == t.param && other.pad == t.pad;
    });
    if (twice || !keepsTarget(p, t)) continue;
    t.reserved = 0;
    if (!out.polarity) t.amount_down = 0;
    if (!(t.window_from >= 0 && t.window_from < t.window_to && t.window_to <= 1)) {
      t.window_from = 0;
      t.window_to = 1;
    }
    for (f32* number : {&t.amount, &t.amount_down, &t.window_from}) *number += 0.0f;
    out.targets[out.targetCount++] = t;
  }
  return out;
}

void normalizeMacros(Preset& p) {
  std::vector<MacroRec> given = std::move(p.macros);
  p.macros.clear();
  for (const MacroRec& macro : given) {
    const std::string name = macros::cleanName(nameText(macro.name));
    if (name.empty() || macroNamed(p, name) || int(p.macros.size()) >= limits::macros) continue;
    p.macros.push_back(normalized(p, macro, name));
  }
}

void normalizePins(Preset& p) {
  std::vector<std::string> kept;
  for (const std::string& pin : p.pins) {
    const MacroRec* macro = macroNamed(p, pin);
    std::string word = macro ? std::string(nameText(macro->name)) : text::lower(pin);
    if (!macro && !pins::valid(p.kind, p.engine, word)) continue;
    if (int(kept.size()) < limits::pins && std::find(kept.begin(), kept.end(), word) == kept.end())
      kept.push_back(std::move(word));
  }
  p.pins = std::move(kept);
  if (!p.pinsSet) p.pins.clear();
}

}  // namespace

void normalize(Preset& preset) {
  normalizeHeader(preset);
  normalizeValues(preset);
  normalizeMacros(preset);
  normalizePins(preset);
}

}  // namespace synth::preset
