// The one rule book: a Project that breaks a rule is never written, never loaded and never played.
#pragma once

#include <string>

#include "core/Project.h"

namespace synth {

// True, or false with `error` set to the text of the first rule that fails. Linear in the content.
bool validateProject(const Project& project, std::string& error);
// The second half of it: the stores of Patterns, Clips, Notes, Lanes and Markers and the Song loop.
bool validateArenas(const Project& project, std::string& error);

}  // namespace synth
