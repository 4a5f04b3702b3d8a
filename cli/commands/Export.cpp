// project export and project diff.
#include "spec/Export.h"
#include "base/AtomicFile.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/commands/Commands.h"
#include "cli/write/WritePath.h"
#include "spec/Diff.h"

namespace synth::cli::commands {
namespace {

Json exportSpec(const Args& args) {
  if (args.has("out")) refuseExisting(args.at("out"), args.has("force"));
  auto project = loadAny(args.positionals[0]);
  Json spec = spec::toSpec(*project, args.has("full"));
  std::string error;
  // Better no spec than one that would change the song without a word.
  if (!spec::rebuilds(*project, spec, error))
    throw CliError("internal", "Export does not rebuild the project: " + error, "Please report this project");
  Json result = Json::object();
  if (!args.has("out")) return result.add("spec", std::move(spec)), result;
  if (!writeAtomically(args.at("out"), json::pretty(spec) + "\n", error))
    throw CliError("write_failed", "Cannot write " + args.at("out"), error);
  result.add("wrote", args.at("out"));
  return result;
}

Json diff(const Args& args) {
  auto a = loadAny(args.positionals[0]), b = loadAny(args.positionals[1]);
  Json changes = spec::diffProjects(*a, *b);
  Json o = Json::object();
  o.add("count", changes.items().size()).add("changes", std::move(changes));
  return o;
}

}  // namespace

Command projectExport() {
  return {"project export",
          "Export a project as a JSON spec that rebuilds it exactly.",
          {positional("input", "path.quorel or @app", "the project").needed(),
           flag("full", "every value, not only what differs from a new project"),
           option("out", "spec.json", "write the spec to a file"), flag("force", "replace an existing file")},
          "{spec} or {wrote}",
          false,
          {"quorel project export song.quorel --out song.json"},
          exportSpec};
}

Command projectDiff() {
  return {"project diff",
          "List what differs between two projects, in spec terms.",
          {positional("a", "path.quorel|spec.json|@app", "before").needed(),
           positional("b", "path.quorel|spec.json|@app", "after").needed()},
          "{count, changes}",
          false,
          {"quorel project diff before.quorel after.quorel"},
          diff};
}

}  // namespace synth::cli::commands
