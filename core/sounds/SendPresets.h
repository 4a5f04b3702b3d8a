// The named presets of the Send effects, their loading and comparing.
#pragma once

#include <string>
#include <vector>

#include "core/Project.h"

namespace synth::sendfx {

// "DELAY" .. "OFF"; a number outside reads as OFF.
const char* typeName(int type);
int presetCount(int type);
// The name of a preset, clamped; "" for OFF.
const char* preset(int type, int index);
// The names as the registry's option table of that type's preset row.
const char* const* presetNames(int type);

int typeOf(const Project& project, int bus);
// Writes the preset's values, makes its type the one heard and stores its number. False, changing
// nothing, for a bus, type or index that does not exist.
bool load(Project& project, int bus, int type, int index);
// The number of the heard type's preset; -1 for OFF.
int presetOf(const Project& project, int bus);
// Whether any value of the heard type differs from its preset.
bool changed(const Project& project, int bus);
// The registry key of a Send's value: "fx1_" or "fx2_" and the suffix.
std::string key(int bus, std::string_view suffix);

}  // namespace synth::sendfx
