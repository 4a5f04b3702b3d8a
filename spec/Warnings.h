// What is legal but not what the editor makes, or not what was likely meant: advice, never a refusal.
#pragma once

#include <string>
#include <vector>

#include "core/Project.h"

namespace synth::spec {

std::vector<std::string> warningsOf(const Project& project);

}  // namespace synth::spec
