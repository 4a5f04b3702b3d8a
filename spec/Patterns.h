// The `patterns` section: Notes in both forms, and Locks on them.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

void readPatterns(Project& project, const Json& section);

}  // namespace synth::spec
