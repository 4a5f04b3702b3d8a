// What reading, writing and normalizing a Preset have in common.
#pragma once

#include <optional>

#include "core/Preset.h"

namespace synth::preset {

// Whether the family may stand on such a sound: one of its Role's, KIT on kits and only there.
bool validFamily(Role role, std::string_view family, int kind);
// The plain sound of a kind and Engine, which a Preset's values differ from.
Track plainTrack(int kind, int engine);
// A finite value as the parameter keeps it: within its range, whole where it must be.
f32 storable(const param::Info& info, f32 value);
// Whether two floats have the same bits; -0 is not 0.
bool sameBits(f32 a, f32 b);
bool isZero(const u8 (&hash)[32]);
// The Macro's name of those of the Preset that the word names in any case, or null.
const MacroRec* macroNamed(const Preset& preset, std::string_view word);

// "pad_decay" or "pad_decay[3]".
struct KeyText {
  std::string key;  // in lower case
  bool indexed = false, readable = true;
  int pad = -1;
};
KeyText keyOf(std::string_view text);
std::string keyText(std::string_view key, int pad);

}  // namespace synth::preset
