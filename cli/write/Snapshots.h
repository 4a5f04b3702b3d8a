// The copies kept of replaced projects, in .quorel-history beside each.
#pragma once

#include <string>
#include <vector>

namespace synth::cli {

// Copies the file as it is, valid or not, and returns where to. Throws write_failed: then nothing may be
// replaced.
std::string keepSnapshot(const std::string& path);

// The snapshots of that project, newest first.
std::vector<std::string> snapshotsOf(const std::string& path);

}  // namespace synth::cli
