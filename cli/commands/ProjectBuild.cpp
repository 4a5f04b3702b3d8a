// project build and project validate.
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/RunContext.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/WritePath.h"
#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
#include "spec/Diff.h"
#include "spec/Warnings.h"

namespace synth::cli::commands {
namespace {

// What the destination holds now, or what every spec builds on where it holds nothing that loads.
ProjectPtr standingAt(const std::string& path) {
  auto project = newProject();
  std::string error;
  return loadProject(path, *project, error) ? std::move(project) : makeBlank();
}

Json build(const Args& args) {
  const Destination destination{args.positionals[1], args.has("force"), args.has("dry-run")};
  if (args.has("if-revision")) {
    intOption(args, "if-revision", 0, 0, 2147483647);
    if (destination.path != appPath) throw usage("--if-revision is for @app");
  }
  refuseSpecPath(destination.path);
  checkExists(destination);
  context().undoLabel = "BUILD SPEC";
  auto project = buildSpec(readSpec(args.positionals[0]));
  Json changes = spec::diffProjects(*standingAt(destination.path), *project);
  Json result = writeProject(*project, destination);
  result.add("changes", std::move(changes)).add("warnings", textList(spec::warningsOf(*project)));
  return result;
}

Json validate(const Args& args) {
  auto project = loadAny(args.positionals[0]);
  Json o = Json::object();
  o.add("valid", true).add("warnings", textList(spec::warningsOf(*project)));
  return o;
}

}  // namespace

Command projectBuild() {
  return {"project build",
          "Build a JSON spec into a project file or @app.",
          {positional("spec", "spec.json", "the spec").needed(),
           positional("out", "path.quorel|@app", "where to write").needed(),
           flag("force", "replace an existing project (a snapshot is kept) or apply to @app (one Undo step)"),
           flag("dry-run", "list the changes against what is there, write nothing"),
           option("if-revision", "int", "@app: only if its revision is still this")},
          "{wrote?, changes, warnings}",
          true,
          {"quorel project build song.json song.quorel --force",
           "quorel project build song.json @app --force --if-revision 12"},
          build};
}

Command projectValidate() {
  return {"project validate",
          "Check that a project loads, or a spec builds, and list what the editor would not have made.",
          {positional("input", "path.quorel|spec.json|@app", "the project").needed()},
          "{valid, warnings}",
          false,
          {"quorel project validate song.json"},
          validate};
}

}  // namespace synth::cli::commands
