// Fixed bytes of the project file that its writer and its reader share.
#pragma once

#include <cstddef>

#include "core/Project.h"

namespace synth::format {

inline constexpr char magic[8] = {'S', 'Y', 'N', 'T', 'H', 'P', 'R', 'J'};
inline constexpr std::size_t headerSize = 20;
inline constexpr u8 defaultPins = 255;  // in place of a count: the owner shows its default Pins
inline constexpr u8 masterOwner = 255;  // owner byte of the master Lane rows

}  // namespace synth::format
