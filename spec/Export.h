// From a Project to the spec that builds it back, byte for byte.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// Only what differs from a new Project; with `full` every value.
Json toSpec(const Project& project, bool full);

// Whether the spec builds a Project of the same bytes; `error` says what stands against it.
bool rebuilds(const Project& project, const Json& spec, std::string& error);

}  // namespace synth::spec
