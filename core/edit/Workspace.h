// Changes to a Track as a whole.
#pragma once

#include "core/Project.h"

namespace synth {

// Makes a Track of another kind: its sound becomes that kind's default, keeping the name unless it is a
// default one. Its Patterns go, and Lanes that no longer apply. False, changing nothing, when the Track
// has that kind already or there is no such Track or kind.
bool switchTrackKind(Project& project, int track, int kind);

}  // namespace synth
