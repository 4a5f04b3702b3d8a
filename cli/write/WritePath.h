// The one road by which commands change a project: where the result goes, the refusal to replace, the
// snapshot of what is replaced, and the write itself.
#pragma once

#include <string>

#include "cli/Command.h"
#include "core/Project.h"

namespace synth::cli {

struct Destination {
  std::string path;
  bool force = false, dryRun = false;
};

// `--out`, or the input itself with `--in-place`, which needs no --force.
Destination destinationOf(const Args& args, const std::string& input);
// The options behind destinationOf, to splice into a command's row.
std::vector<ArgSpec> writeOptions();

bool fileExists(const std::string& path);
// Refuses a path that every command would read as a spec.
void refuseSpecPath(const std::string& path);
// Keeps other commands from writing where the path leads until this run has ended: what is read from now on
// is what will be replaced.
void holdFolderOf(const std::string& path);
// Holds the destination's folder and refuses an existing path without --force; a dry run does neither.
void checkExists(const Destination& destination);
void refuseExisting(const std::string& path, bool force);

// Why a file cannot be written at a path; empty where it can be now.
std::string whyUnwritable(const std::string& path);

// The way back from a write, as a command line.
std::string restoreCommand(const std::string& path);

// Keeps a snapshot of what stands there and saves. The result's first members: wrote, and when a file was
// replaced snapshot and undo; nothing on a dry run.
Json writeProject(const Project& project, const Destination& destination);

}  // namespace synth::cli
