// The `.quorel` file: a small little-endian binary with a checksum. The writer is deterministic, so bytes
// compare projects; the reader trusts nothing, and what it loads also passes validateProject.
// docs/format-quorel.md describes the bytes.
#pragma once

#include <string>
#include <string_view>

#include "core/Project.h"

namespace synth {

inline constexpr u32 projectFormatVersion = 30;
inline constexpr std::size_t projectFileLimit = 16777216;

// The payload of the file, without its header: equal content gives equal bytes.
std::string projectBytes(const Project& project);
// Header and payload, as a file holds them.
std::string projectImage(const Project& project);

// Each returns false with `error` set; the destination, or `project`, then stays as it was. Any thread.
bool saveProject(const Project& project, const std::string& path, std::string& error);
bool loadProject(const std::string& path, Project& project, std::string& error);
// The reading of a whole file image from memory.
bool readProjectImage(std::string_view image, Project& project, std::string& error);

}  // namespace synth
