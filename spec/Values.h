// Values of registry keys: numbers in the row's unit, options by label.
#pragma once

#include "core/params/Registry.h"
#include "spec/Keys.h"

namespace synth::spec {

// "Range 20..20000 Hz", with ", integer" for whole rows.
std::string rangeHint(const param::Info& info);

// The row of a key of that scope, or the message about what the key is instead.
const param::Info& parameterOf(const std::string& key, param::Scope scope);
// The value that the JSON states for the row, checked; labels match in any case.
f32 valueOf(const param::Info& info, const Json& value, const Project& project, int track);
// Reads a value and stores it. A label for a Send's preset loads that preset.
void applyValue(Project& project, const param::Info& info, const Json& value, int track, int pad);
// All members of a `params` object in their order but `except`; in the project's, types and presets of the
// Sends first.
void applyValues(Project& project, const Json& object, param::Scope scope, int track, int pad,
                 const std::string& where, std::string_view except = {});

}  // namespace synth::spec
