// The factory Presets: the .preset files of data/presets, compiled into the program. Each is named after its
// Preset, so that a name leads to one file.
#pragma once

#include <string_view>
#include <vector>

#include "core/Preset.h"

namespace synth::preset {

// All of them, in the order of their file names. Read on the first call; they live for the whole run.
const std::vector<Preset>& factory();
// The one of that name in any case, or null. Reads no other.
const Preset* findFactory(std::string_view name);
// Loads one onto a Track of its kind; false when there is none of that name.
bool applyFactory(Track& track, std::string_view name);
// Gives the Track the Pins of the factory Preset that it names, when it still has that Preset's Engine.
bool pinsFromName(Track& track);

}  // namespace synth::preset
