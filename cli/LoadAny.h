// Reading a project by what it is: a .quorel file or a JSON spec.
#pragma once

#include <string>

#include "base/Json.h"
#include "core/Project.h"

namespace synth::cli {

using json::Json;

inline constexpr const char* appPath = "@app";

// Each throws CliError with the code and hint that the failure calls for.
ProjectPtr loadAny(const std::string& path);
ProjectPtr loadProjectFile(const std::string& path);
Json readSpec(const std::string& path);
// Builds and validates.
ProjectPtr buildSpec(const Json& spec);

}  // namespace synth::cli
