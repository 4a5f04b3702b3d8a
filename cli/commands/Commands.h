// One function a command, each giving its row of the table.
#pragma once

#include "cli/Command.h"

namespace synth::cli::commands {

Command help();
Command guide();
Command commandList();
Command version();
Command params();
Command targets();
Command schema();
Command docs();
Command examples();
Command engines();
Command projectNew();
Command projectBuild();
Command projectSet();
Command projectInspect();
Command projectExport();
Command projectDiff();
Command projectGrid();
Command projectValidate();
Command projectHistory();
Command projectRestore();
Command macroList();
Command macroAdd();
Command macroRename();
Command macroRemove();
Command macroMap();
Command macroUnmap();
Command macroSet();
Command analyze();
Command gridFit();
Command spectrogram();
Command compare();
Command render();
Command presetList();
Command presetFamilies();
Command presetDemo();
Command presetShow();
Command presetSave();
Command presetApply();
Command presetImport();
Command presetRename();
Command presetDelete();

}  // namespace synth::cli::commands
