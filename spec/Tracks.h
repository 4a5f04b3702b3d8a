// The `tracks` and `pads` sections.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

void readTracks(Project& project, const Json& section);
void readPads(Project& project, const Json& section);

}  // namespace synth::spec
