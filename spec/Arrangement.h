// The `clips`, `lanes`, `master` and `markers` sections.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

void readClips(Project& project, const Json& section);
void requireClips(const Project& project);
void readLanes(Project& project, const Json& section);
void readMasterLanes(Project& project, const Json& section);
void readMarkers(Project& project, const Json& section);

// "I", "II" or "MASTER", and back: -1 for anything else.
const char* busKey(int bus);
int readBus(const std::string& key);

}  // namespace synth::spec
