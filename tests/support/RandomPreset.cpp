#include "support/RandomPreset.h"

#include <cmath>
#include <limits>

#include "core/Names.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"

namespace synth::test {
namespace {

using namespace preset;

const std::string& oneOf(Random& r, const Words& words) { return words[size_t(r.below(int(words.size())))]; }

f32 amount(Random& r) { return r.chance(10) ? 0 : (r.unit() - 0.5f) * f32(r.chance(20) ? 1e-9 : 8); }

MacroRec randomMacro(Random& r, const Preset& p, int number) {
  MacroRec macro;
  setName(macro.name, "M" + std::to_string(number));
  macro.polarity = u8(r.below(2));
  macro.value = macro.polarity ? r.unit() * 2 - 1 : r.unit();
  for (const param::Info& info : param::all()) {
    if (macro.targetCount >= limits::macroTargets || !r.chance(12)) continue;
    if (!macros::targetable(info, p.kind, p.engine)) continue;
    MacroTarget& t = macro.targets[macro.targetCount++];
    t.param = info.id;
    t.pad = info.scope == param::ScopePad ? u8(r.below(limits::pads)) : 0;
    t.amount = amount(r);
    if (macro.polarity) t.amount_down = r.chance(50) ? -t.amount : amount(r);
    if (r.chance(30)) {
      t.window_from = r.chance(30) ? 0 : r.unit() * 0.5f;
      t.window_to = t.window_from + 0.25f;
    }
  }
  return macro;
}

}  // namespace

Preset randomPreset(Random& r) {
  Preset p;
  p.name = "sound " + std::to_string(r.below(1000));
  p.role = Role(r.below(roles));
  p.kind = r.chance(30) ? DRUMS : MELODIC;
  p.engine = p.kind == DRUMS ? ANALOG : SynthKind(r.below(SAMPLER + 1));
  p.family = p.kind == DRUMS ? "KIT" : oneOf(r, families(p.role));
  for (int n = r.below(4); n > 0; n--) p.tags.push_back(oneOf(r, characterTags()));
  for (int n = r.below(3); n > 0; n--) p.styles.push_back(oneOf(r, styles()));
  if (p.engine == SAMPLER && r.chance(60)) {
    for (u8& byte : p.sampleHash) byte = u8(r.below(256));
    p.sampleName = r.chance(70) ? "take " + std::to_string(r.below(99)) : "";
  }
  for (const param::Info& info : param::all()) {
    if (!holds(info, p.kind, p.engine)) continue;
    for (int pad = 0; pad < (info.scope == param::ScopePad ? limits::pads : 1); pad++)
      if (r.chance(25))
        p.values.push_back({info.key, info.scope == param::ScopePad ? pad : -1,
                            r.chance(5) && info.min < 0 ? -0.0f : param::fromNormalized(info, r.unit())});
  }
  for (int n = r.below(5), i = 0; i < n; i++) p.macros.push_back(randomMacro(r, p, i));
  p.pinsSet = r.chance(50);
  for (const param::Info& info : param::all())
    if (p.pinsSet && r.chance(8) && pins::valid(p.kind, p.engine, info.key)) p.pins.push_back(info.key);
  if (p.pinsSet && !p.macros.empty()) p.pins.push_back("m0");
  return p;
}

Preset brokenPreset(Random& r) {
  Preset p = randomPreset(r);
  p.name = r.chance(50) ? "  a very long name \x01\xC3\xA9 that goes on and on" : p.name;
  p.role = Role(r.below(12));
  p.engine = SynthKind(r.below(14));
  p.kind = TrackKind(r.below(3));
  p.family = r.chance(50) ? " saw " : p.family;
  p.tags.insert(p.tags.end(), {"dark", " LONG ", "NOPE", "DARK", "SOFT", "WIDE", "METAL"});
  p.styles.insert(p.styles.end(), {"HOUSE", "house", "POP", "JAZZ", "IDM"});
  p.sampleName = "  some sample name";
  constexpr f32 inf = std::numeric_limits<f32>::infinity();
  for (Value& value : p.values) {
    if (r.chance(20)) value.value = r.chance(30) ? f32(NAN) : r.chance(30) ? -inf : r.unit() * 1e6f;
    if (r.chance(15)) value.pad = r.below(12) - 2;
  }
  const size_t values = p.values.size();
  for (size_t i = 0; i < values; i++)
    if (r.chance(20)) p.values.push_back({p.values[i].key, p.values[i].pad, p.values[i].value / 2});
  p.values.push_back({"no_such_key", -1, 1});
  p.values.push_back({"level", -1, 1});
  for (MacroRec& macro : p.macros) {
    if (r.chance(20)) setName(macro.name, r.chance(50) ? "CUTOFF" : "M0");
    macro.reserved[0] = u8(r.below(2));
    macro.value *= f32(r.below(3));
    macro.targetCount = u8(r.below(40));
    for (MacroTarget& t : macro.targets) {
      if (r.chance(20)) t.window_from = r.unit() * 2 - 0.5f;
      if (r.chance(10)) t.amount = r.chance(50) ? f32(NAN) : 4e7f;
      if (r.chance(20)) t.pad = u8(r.below(20));
      t.reserved = u8(r.below(2));
    }
  }
  p.pins.insert(p.pins.end(), {"nope", "level", "cutoff", "cutoff", "M0", "pad_tone", "bpm"});
  return p;
}

}  // namespace synth::test
