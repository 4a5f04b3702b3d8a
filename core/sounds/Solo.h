// Projects in which only a part is left to hear.
#pragma once

#include "core/Project.h"

namespace synth {

// One Track is heard and no other, whatever was muted or solo before.
void soloTrack(Project& project, int track);
// Of a kit, one Pad. The others still choke it.
void soloPad(Project& project, int track, int pad);
// The Send effects are silent: no return, and nothing that would raise one.
void silenceSends(Project& project);

}  // namespace synth
