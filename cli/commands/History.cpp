// project history and project restore.
#include <filesystem>

#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/Snapshots.h"
#include "cli/write/WritePath.h"
#include "core/ProjectFile.h"
#include "spec/Diff.h"

namespace synth::cli::commands {
namespace {

void refuseApp(const std::string& path) {
  if (path == appPath) throw usage("The app keeps its own history", "quorel app undo (or Cmd-Z in Quorel)");
}

// The project at a path, or null when nothing there loads.
ProjectPtr loadQuietly(const std::string& path) {
  auto project = newProject();
  std::string error;
  return loadProject(path, *project, error) ? std::move(project) : nullptr;
}

Json history(const Args& args) {
  const std::string& path = args.positionals[0];
  refuseApp(path);
  auto current = loadQuietly(path);
  Json rows = Json::array();
  const auto snapshots = snapshotsOf(path);
  std::error_code none;
  if (snapshots.empty() && !std::filesystem::is_regular_file(path, none))
    throw CliError("not_found", "No such file: " + path,
                   "Check the path; projects are .quorel files, specs .json");
  for (const std::string& snapshot : snapshots) {
    auto old = loadQuietly(snapshot);
    Json changes;
    if (old && current) changes = spec::diffProjects(*old, *current).items().size();
    rows.push(std::move(Json::object().add("path", snapshot).add("changes", std::move(changes))));
  }
  Json o = Json::object();
  o.add("changes_since", "the current file").add("snapshots", std::move(rows));
  return o;
}

std::string chosenSnapshot(const Args& args, const std::string& path) {
  const auto all = snapshotsOf(path);
  if (args.has("snapshot")) {
    const std::string& wanted = args.at("snapshot");
    for (const std::string& snapshot : all)
      if (snapshot == wanted || std::filesystem::path(snapshot).filename() == wanted) return snapshot;
    return wanted;
  }
  // The word in the hint is older than the program's name and stays as users know it.
  if (all.empty())
    throw CliError("not_found", "No snapshots of " + path,
                   "Snapshots are kept in .quorel-history/ when synth replaces a project");
  return all.front();
}

ProjectPtr loadSnapshot(const std::string& snapshot) {
  try {
    return loadProjectFile(snapshot);
  } catch (CliError& error) {
    if (error.hint.empty()) error.hint = "Name another with --snapshot (quorel project history lists them)";
    throw;
  }
}

Json restore(const Args& args) {
  const std::string& path = args.positionals[0];
  refuseApp(path);
  refuseSpecPath(path);
  if (!args.has("dry-run")) holdFolderOf(path);
  const std::string snapshot = chosenSnapshot(args, path);
  auto restored = loadSnapshot(snapshot);
  auto current = loadQuietly(path);
  Json changes = current ? spec::diffProjects(*current, *restored) : Json::array();
  Json result = writeProject(*restored, {path, true, args.has("dry-run")});
  result.add("restored", snapshot).add("changes", std::move(changes));
  return result;
}

}  // namespace

Command projectHistory() {
  return {"project history",
          "List the snapshots kept before each write of a project (newest first).",
          {positional("input", "path.quorel|@app", "the project").needed()},
          "{snapshots: [{path, changes}]}",
          false,
          {"quorel project history song.quorel"},
          history};
}

Command projectRestore() {
  return {"project restore",
          "Put a snapshot back (default: the newest). The current file is kept as a snapshot first, so a "
          "restore can be undone too.",
          {positional("input", "path.quorel", "the project to restore").needed(),
           option("snapshot", "path", "which snapshot (quorel project history lists them)"),
           flag("dry-run", "list the changes, write nothing")},
          "{wrote?, restored, changes}",
          true,
          {"quorel project restore song.quorel"},
          restore};
}

}  // namespace synth::cli::commands
