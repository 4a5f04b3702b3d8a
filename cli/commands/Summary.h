// What commands say of a project they wrote.
#pragma once

#include "cli/Command.h"
#include "core/Project.h"

namespace synth::cli {

// {name, bpm, track_count, song_steps, tracks, patterns, clips, notes}, the last three as counts.
Json projectSummary(const Project& project);
Json textList(const std::vector<std::string>& texts);
// Appends the members of another object.
void addAll(Json& object, Json members);

}  // namespace synth::cli
