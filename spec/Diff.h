// What differs between two Projects, in the terms of a spec.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// One record a difference, in the order of a spec: {path, from, to, shown?} for a value, {path, added} or
// {path, removed} for a row.
Json diffProjects(const Project& a, const Project& b);

}  // namespace synth::spec
