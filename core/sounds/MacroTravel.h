// From a Macro's value to what its targets play.
#pragma once

#include <string>

#include "core/params/Registry.h"

namespace synth::macros {

// What a target receives of a Macro at `value`, in the target's perceptual unit: nothing up to |value| =
// `from`, all of it from `to` on; amountDown below the centre.
double travel(f32 amount, f32 amountDown, f32 from, f32 to, f32 value);
// The sum over all Macros of a sound, given the value of each.
double offsetOf(const Track& track, u16 param, int pad, const f32 (&values)[limits::macros]);
// The same for the values that the sound holds.
double offsetOf(const Track& track, u16 param, int pad);

// What the target plays now: its own value moved by all Macros of the Track; no Macro moves a Project's
// value.
f32 resulting(const Project& project, int track, const param::Info& info, int pad);

// How much an amount must grow so that `base`, moved by `current` so far, arrives at `wanted`; 0 where it is
// there, for numbers that are not finite and for a value without a range.
double amountFor(const param::Info& info, f32 base, double current, f32 wanted);

// An amount as it is read and printed: "+1.5", "-0.3", a ratio of times as "×2".
std::string amountText(const param::Info& info, f32 amount);
// "oct", "dB", "×" or the value's own unit; "" for a percentage.
std::string unitName(const param::Info& info);

}  // namespace synth::macros
