// Units in which equal steps sound alike, and moving a value by them with a soft landing at the ends.
#pragma once

#include "core/params/Registry.h"

namespace synth::perceptual {

enum Unit : u8 { Own, Octave, Decibel, Level, Time };

Unit unitOf(const param::Info& info);
// A value in its perceptual unit: octaves are log2 of Hz, levels dB over -24..0, times log2 of seconds.
double toPerc(Unit unit, double value);
// The value moved by `amount` units, bending from 15 % before the end of the range on; 0 moves nothing.
f32 offset(const param::Info& info, f32 value, double amount);

}  // namespace synth::perceptual
