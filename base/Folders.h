// The user's folders.
#pragma once

#include <string>

namespace synth {

// HOME, or the home directory that the system's user database names.
std::string homeFolder();
// Where the user's own sounds live, below the home folder.
std::string supportFolder();

}  // namespace synth
