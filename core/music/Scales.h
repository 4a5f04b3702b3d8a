// Keys and scales: which notes belong to one, and the triads that stand on them.
#pragma once

#include <optional>

#include "core/Project.h"

namespace synth::compose {

enum class Scale : u8 {
  Auto,  // reads as Minor
  Major,
  Minor,
  Dorian,
  MinorPentatonic,
  Phrygian,
  Lydian,
  Mixolydian,
  Locrian,
  HarmonicMinor,
  MelodicMinor,
  MajorPentatonic
};
inline constexpr int scales = 12;

// A key note is a pitch class, 0 for C.
const char* rootName(int root);
// The root of that name, flats and any case included, or -1.
int rootNamed(std::string_view name);

// "UNKNOWN" for a number above 11.
const char* scaleName(Scale scale);
// The scale of that name in any case; AUTO is none.
std::optional<Scale> scaleNamed(std::string_view name);
// 5 for the pentatonics, else 7.
int scaleSize(Scale scale);
// The semitones from the root to a degree; degrees go on in both directions, an octave a turn.
int scaleInterval(Scale scale, int degree);
// Bit n is set when pitch class n is in the key.
u16 scaleMask(int root, Scale scale);
inline bool inKey(int pitch, int root, Scale scale) { return scaleMask(root, scale) >> (pitch % 12) & 1; }

// Three notes from the lowest up, as MIDI notes.
struct Triad {
  int notes[3];
};
// The key's own triad on a MIDI note, none on a note that is not in the key.
std::optional<Triad> triadOn(int pitch, int root, Scale scale);

}  // namespace synth::compose
