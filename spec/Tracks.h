// The `tracks` and `pads` sections.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// `oldBase` lets a Track ask for one of the older project's.
void readTracks(Project& project, const Json& section, bool oldBase);
void readPads(Project& project, const Json& section);

}  // namespace synth::spec
