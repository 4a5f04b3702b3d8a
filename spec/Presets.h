// Where specs get Presets from: this floor knows no library folder.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "core/Preset.h"

namespace synth::spec {

using PresetResolver = std::function<std::optional<preset::Preset>(const std::string& name)>;

// What finds a Preset by its name, settable; the factory Presets where nothing was set.
PresetResolver& presetResolver();

// Loads the Preset that a Track's "preset" names. The Track keeps its mix and its name.
void readPreset(Project& project, int track, const std::string& name);

}  // namespace synth::spec
