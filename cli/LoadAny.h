// Reading a project by what it is: a .quorel file or a JSON spec.
#pragma once

#include <string>

#include "base/Json.h"
#include "core/Project.h"

namespace synth::cli {

using json::Json;

inline constexpr const char* appPath = "@app";

// Whether a path stands for a project or spec, by its name or by what the file begins with; other files are
// audio to whoever takes both.
bool isProject(const std::string& path);

// Each throws CliError with the code and hint that the failure calls for.
ProjectPtr loadAny(const std::string& path);
ProjectPtr loadProjectFile(const std::string& path);
Json readSpec(const std::string& path);
// Builds and validates.
ProjectPtr buildSpec(const Json& spec);

bool isSpecPath(const std::string& path);
// What to do about a Macro that moves a value its sound does not have, as after a change of the Engine; ""
// where there is none. `editing` a project rather than building a spec.
std::string foreignTargetHint(const Project& project, bool editing);

}  // namespace synth::cli
