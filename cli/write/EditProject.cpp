#include "cli/write/EditProject.h"

#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/RunContext.h"
#include "cli/commands/Summary.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Validate.h"
#include "core/sounds/Macros.h"
#include "spec/Diff.h"

namespace synth::cli {
namespace {

// What a dry run compares with: the destination as it stands, or the input.
ProjectPtr standing(const Destination& destination, const Project& input) {
  auto there = newProject();
  std::string error;
  if (destination.dryRun && loadProject(destination.path, *there, error)) return there;
  return copyOf(input);
}

}  // namespace

Json editProject(const Args& args, const std::string& undoLabel, const std::function<Json(Project&)>& edit) {
  const std::string& input = args.positionals[0];
  const Destination destination = destinationOf(args, input);
  if (args.has("out")) refuseSpecPath(destination.path);
  checkExists(destination);
  auto before = loadProjectFile(input);
  auto project = copyOf(*before);
  context().undoLabel = undoLabel;
  Json told = edit(*project);
  std::string error;
  if (!validateProject(*project, error))
    throw CliError("invalid_project", "The change makes an invalid project: " + error,
                   foreignTargetHint(*project, true));
  Json result = writeProject(*project, destination);
  addAll(result, std::move(told));
  result.add("changes", spec::diffProjects(*standing(destination, *before), *project));
  return result;
}

void setMacroValue(MacroRec& macro, const std::string& text) {
  double value = 0;
  if (!decimal(text, value)) throw usage("A Macro's value is a number, got " + text);
  if (!(value >= (macro.polarity ? -1 : 0) && value <= 1))
    throw CliError("out_of_range",
                   std::string("A Macro's value is ") + (macro.polarity ? "-1..1 (bipolar)" : "0..1"),
                   std::string(nameText(macro.name)) + " cannot be " + text);
  macro.value = macros::clampValue(macro.polarity, f32(value));
}

}  // namespace synth::cli
