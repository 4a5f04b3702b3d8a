#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/RunContext.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/WritePath.h"
#include "core/Names.h"
#include "core/model/Defaults.h"
#include "spec/Examples.h"

namespace synth::cli::commands {
namespace {

Json writeNew(const Args& args) {
  const Destination destination{args.positionals[0], args.has("force"), false};
  refuseSpecPath(destination.path);
  checkExists(destination);
  const bool example = args.has("example");
  context().undoLabel = example ? "NEW FROM EXAMPLE" : "NEW PROJECT";
  auto project =
      example ? spec::makeExample(intOption(args, "example", 0, 0, spec::exampleCount() - 1)) : makeProject();
  if (args.has("name") && !setProjectName(*project, args.at("name"))) throw usage("--name is up to 63 bytes");
  Json result = writeProject(*project, destination);
  result.add("project", projectSummary(*project));
  return result;
}

}  // namespace

Command projectNew() {
  return {"project new",
          "Write a new project: blank (four tracks) or a built-in example.",
          {positional("out", "path.quorel|@app", "where to write").needed(),
           option("example", "int", "built-in example by its number (quorel examples)"),
           option("name", "string", "the project's name, up to 63 bytes"),
           flag("force", "replace an existing file (a snapshot is kept)")},
          "{wrote, project}",
          true,
          {"quorel project new song.quorel --name \"NIGHT RUN\""},
          writeNew};
}

}  // namespace synth::cli::commands
