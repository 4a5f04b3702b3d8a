// The names of the twelve pitch classes, with sharps and with flats, and of MIDI notes.
#pragma once

#include <string>

namespace synth {

inline constexpr const char* pitchClassNames[12] = {"C",  "C#", "D",  "D#", "E",  "F",
                                                    "F#", "G",  "G#", "A",  "A#", "B"};

inline constexpr const char* flatPitchClassNames[12] = {"C",  "Db", "D",  "Eb", "E",  "F",
                                                        "Gb", "G",  "Ab", "A",  "Bb", "B"};

// As "C4" for 60.
inline std::string noteName(int note) {
  const int octave = (note + 120) / 12 - 11;
  return pitchClassNames[((note % 12) + 12) % 12] + std::to_string(octave);
}

}  // namespace synth
