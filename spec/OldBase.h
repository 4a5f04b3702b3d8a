// "base": "v5": the defaults of an earlier set of songs, so that their specs keep sounding the same.
#pragma once

#include "core/Project.h"

namespace synth::spec {

// Gives a new Project the older Master and Send values, and Track 1 its older sound.
void applyOldBase(Project& project);
// The Track of that slot as the older project had it.
Track oldTrack(int slot);

}  // namespace synth::spec
