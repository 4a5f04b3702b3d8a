// The music of the demo patterns, free of key and register.
#pragma once

#include <span>

#include "core/sounds/Demo.h"

namespace synth::preset {

struct DemoRow {
  u8 step;
  f32 length;  // in Steps
  i8 degree;   // of a seven-note scale, 0 for the key note; for a kit the Pad
  u8 velocity;
  enum Kind : u8 { Tone, Slide, Accent, AccentedSlide, Chord } kind = Tone;  // Chord: the triad on the degree
};

// Empty for Long, which depends on the tempo.
std::span<const DemoRow> demoRows(DemoPattern pattern);

}  // namespace synth::preset
