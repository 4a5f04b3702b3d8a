// The command table: every row that works, in the table's order.
#include "cli/commands/Commands.h"

namespace synth::cli {

const std::vector<Command>& registerCommands() {
  static const std::vector<Command> table = {
      commands::help(),
      commands::guide(),
      commands::commandList(),
      commands::version(),
      commands::params(),
      commands::targets(),
      commands::schema(),
      commands::examples(),
      commands::projectNew(),
      commands::engines(),
      commands::docs(),
      commands::projectHistory(),
      commands::projectRestore(),
      commands::projectInspect(),
      commands::projectExport(),
      commands::projectBuild(),
      commands::projectSet(),
      commands::projectDiff(),
      commands::projectValidate(),
      commands::macroList(),
      commands::macroAdd(),
      commands::macroRename(),
      commands::macroRemove(),
      commands::macroMap(),
      commands::macroUnmap(),
      commands::macroSet(),
      commands::analyze(),
      commands::gridFit(),
      commands::spectrogram(),
      commands::projectGrid(),
      commands::compare(),
      commands::render(),
      commands::presetList(),
      commands::presetFamilies(),
      commands::presetDemo(),
      commands::presetShow(),
      commands::presetSave(),
      commands::presetApply(),
      commands::presetImport(),
      commands::presetRename(),
      commands::presetDelete(),
  };
  return table;
}

const Command* commandByName(const std::string& name) {
  for (const Command& command : registerCommands())
    if (command.name == name) return &command;
  return nullptr;
}

}  // namespace synth::cli
