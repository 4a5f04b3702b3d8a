// The rules of Macros: which values one may move, its names, its polarity, and when a sound's Macros are
// well formed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/params/Registry.h"

namespace synth::macros {

inline constexpr f32 largestAmount = 1000;

// Whether a Macro of such a sound may move the value: continuous sound values and the Sends.
bool targetable(const param::Info& info, int kind, int engine);
// Trimmed and upper-cased, or "" when it is not one word that may name a Macro.
std::string cleanName(std::string_view name);
// The name of the Macro in a slot; "" outside the count.
std::string name(const Track& track, int slot);
// Whether a key may name a Macro among registry keys: those begin with a small letter.
inline bool inCapitals(std::string_view key) { return !key.empty() && key[0] >= 'A' && key[0] <= 'Z'; }
// The slot of the Macro of that name, or -1.
int find(const Track& track, std::string_view name);
// The same, also by its place: MACRO_1 .. MACRO_16.
int slotNamed(const Track& track, std::string_view name);
// The names of all Macros of the sound.
std::vector<std::string> names(const Track& track);
// A Macro's value from the 0..1 of Lanes and Locks; the centre of a bipolar one is exactly 0.
f32 fromNormalized(bool bipolar, f32 x);
f32 toNormalized(bool bipolar, f32 value);
f32 clampValue(bool bipolar, f32 value);
// Whether the Track's Macros are well formed; false sets `error`.
bool valid(const Track& track, std::string& error);
// Finds the first target that this sound does not have, as after a change of its Engine.
bool foreignTarget(const Track& track, int& slot, int& target);

}  // namespace synth::macros
