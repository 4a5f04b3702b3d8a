// The option labels of enumerated parameters that more than one place needs.
#pragma once

#include <iterator>

namespace synth::param::options {

inline constexpr const char* fxType[] = {"DELAY", "TAPE ECHO", "HALL", "PLATE", "SHIMMER", "CHORUS", "OFF"};
inline constexpr const char* sync[] = {"FREE", "4 BARS", "2 BARS", "1 BAR", "1/2",  "1/4",  "1/4T", "1/8",
                                       "1/8T", "1/16",   "1/16T",  "1/32",  "1/2D", "1/4D", "1/8D", "1/16D"};
inline constexpr const char* drumModel[] = {"KICK", "SNARE", "CLAP",    "CLOSED HAT", "OPEN HAT",
                                            "TOM",  "RIM",   "COWBELL", "SHAKER",     "CYMBAL",
                                            "ZAP",  "CONGA", "NOISE"};
inline constexpr const char* keyRoot[] = {"AUTO", "OFF", "C", "C#", "D", "D#", "E",
                                          "F",    "F#",  "G", "G#", "A", "A#", "B"};
inline constexpr const char* keyScale[] = {
    "MAJOR",      "MINOR",   "DORIAN",         "MINOR PENTATONIC", "PHRYGIAN",        "LYDIAN",
    "MIXOLYDIAN", "LOCRIAN", "HARMONIC MINOR", "MELODIC MINOR",    "MAJOR PENTATONIC"};
inline constexpr const char* trackKind[] = {"MELODIC", "DRUMS"};
inline constexpr int drumModels = std::size(drumModel);

}  // namespace synth::param::options
