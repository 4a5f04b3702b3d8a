// Presets by name for the commands, and what their answers say of one.
#pragma once

#include "cli/Command.h"
#include "core/sounds/PresetLibrary.h"

namespace synth::cli {

// The library in `--library`, or the user's own, read. Throws when it cannot be.
preset::PresetLibrary libraryOf(const Args& args);
// The `--library` option, to splice into a command's row.
ArgSpec libraryOption();

// Lets specs name the user's own Presets beside the factory's. The library is read when a name asks for it.
void resolvePresetsOfSpecs();

// The factory's or the user's Preset of that name, or an error that names those near.
const preset::Preset& presetNamed(const preset::PresetLibrary& library, const std::string& name);
// A .preset file, read; throws when it is none.
preset::Preset readPresetFile(const std::string& path, std::vector<std::string>& warnings);

// What NAME|file.preset on a command line stands for: the file, when it ends so; else the Preset of that
// name.
struct GivenPreset {
  preset::Preset preset;
  bool file = false;
  std::vector<std::string> warnings;  // of the file
};
GivenPreset givenPreset(const Args& args, const std::string& wanted);

// The header options of the commands that write a Preset: name, role, family, tags and styles. Those given
// replace the Preset's.
std::vector<ArgSpec> headerOptions();
void applyHeader(const Args& args, preset::Preset& preset);

// {name, role, family, tags, style, engine}
Json presetHeader(const preset::Preset& preset);
// Throws what the library said, with the code that it calls for; `wayOn` is the hint where a name is taken.
[[noreturn]] void libraryRefused(const std::string& error, const std::string& name,
                                 const char* wayOn = "--force replaces it; or choose another name");

}  // namespace synth::cli
