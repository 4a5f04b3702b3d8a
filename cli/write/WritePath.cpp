#include "cli/write/WritePath.h"

#include <sys/stat.h>

#include <filesystem>

#include "base/AtomicFile.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/RunContext.h"
#include "cli/write/Snapshots.h"
#include "core/ProjectFile.h"

namespace synth::cli {

std::vector<ArgSpec> writeOptions() {
  return {option("out", "path.quorel", "write the result here"),
          flag("in-place", "change the input itself (a snapshot, or one Undo step in @app, is kept)"),
          flag("force", "replace an existing --out file"),
          flag("dry-run", "list the changes, write nothing")};
}

Destination destinationOf(const Args& args, const std::string& input) {
  const bool out = args.has("out"), inPlace = args.has("in-place"), dryRun = args.has("dry-run");
  if (out && inPlace) throw usage("Choose one of --out and --in-place");
  if (!out && !inPlace && !dryRun)
    throw usage(
        "Choose where to write: --out FILE, or --in-place to change the project (in @app: one Undo step)",
        "--dry-run shows the change without writing");
  return {out ? args.at("out") : input, inPlace || args.has("force"), dryRun};
}

bool fileExists(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

void refuseExisting(const std::string& path, bool force) {
  if (!force && fileExists(path))
    throw CliError("exists", path + " exists", "Pass --force to replace it (or write to another path)");
}

void refuseSpecPath(const std::string& path) {
  if (isSpecPath(path))
    throw usage("The result is a project, not a spec: " + path, "Write it to a .quorel file");
}

void holdFolderOf(const std::string& path) {
  std::error_code failed;
  const std::filesystem::path target = std::filesystem::weakly_canonical(path, failed);
  const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
  if (!context().writing.take(folder))
    throw CliError("write_failed", "Another command has been writing in " + folder + " for a while",
                   "Try again when it has ended");
}

void checkExists(const Destination& d) {
  if (d.path == appPath) {
    if (!d.force && !d.dryRun)
      throw CliError("exists", "@app is the project open in Quorel",
                     "Pass --force to apply the spec to it (one Undo step in the app)");
    throw CliError("app_not_running", "Quorel is not running (this version does not reach the app yet)",
                   "Work on .quorel files directly");
  }
  if (d.dryRun) return;
  holdFolderOf(d.path);
  refuseExisting(d.path, d.force);
}

std::string whyUnwritable(const std::string& path) {
  AtomicFile file;
  std::string why;
  file.open(path, why);
  return why;
}

std::string restoreCommand(const std::string& path) {
  const bool plain =
      path.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/+:,@%=") ==
      path.npos;
  if (plain && path[0] != '-') return "quorel project restore " + path;
  std::string quoted = "'";
  for (const char c : path) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return "quorel project restore " + quoted + "'";
}

Json writeProject(const Project& project, const Destination& d) {
  Json result = Json::object();
  if (d.dryRun) return result;
  std::string snapshot;
  if (fileExists(d.path)) snapshot = keepSnapshot(d.path);
  std::string error;
  if (!saveProject(project, d.path, error))
    throw CliError("write_failed", "Cannot save " + d.path + ": " + error);
  result.add("wrote", d.path);
  if (!snapshot.empty()) result.add("snapshot", snapshot).add("undo", restoreCommand(d.path));
  return result;
}

}  // namespace synth::cli
