// From a JSON spec to a Project. Everything is optional; a spec builds on a new project with all sixteen
// Tracks addressable and no Patterns or Clips.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// Builds the Project or throws SpecError at the first mistake. The result is canonical; the caller
// validates it.
ProjectPtr build(const Json& spec);

}  // namespace synth::spec
