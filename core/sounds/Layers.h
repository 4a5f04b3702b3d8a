// The pages of a sound: its parameter list, a page for each title, for panels that show one at a time.
#pragma once

#include "core/sounds/ParamList.h"

namespace synth::layers {

// The titles in the list's order: "MACROS", "OSC", "FILTER" ...; empty for a Track outside 0..15.
std::vector<std::string> pages(const Project& project, int track);
// How many rows a page has; 0 for a page that the sound does not have.
int count(const Project& project, std::string_view page, int track);
// Its row at `index`; false outside.
bool layer(const Project& project, std::string_view page, int track, int index, paramlist::Row& row);
// Where a key, or a Macro's name in any case, stands on its page; -1 where it does not.
int find(const Project& project, std::string_view page, int track, std::string_view key);

// A parameter's value in the plain sound of the Track's kind and Engine.
f32 defaultValue(const Project& project, int track, std::string_view key, int pad);

}  // namespace synth::layers
