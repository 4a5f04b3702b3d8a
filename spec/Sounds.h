// What belongs to a sound beside its values: Macros, Pins, the Sample it names.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// A Track's "macros": they replace those it has.
void readMacros(Project& project, int track, const Json& value);
// A Macro's value by its name in capitals; false when the Track has no such Macro.
bool readMacroValue(Track& track, const std::string& name, const Json& value);
// A Track's "pins", null for the defaults.
void readPins(Track& track, const Json& value);
// A Track's "sample": {"hash", "name"}, null for none.
void readSample(Track& track, const Json& value, const std::string& where);
// The "buses" section.
void readBuses(Project& project, const Json& section);

}  // namespace synth::spec
