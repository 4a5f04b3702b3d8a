// What one run of a command carries besides its arguments; cleared before each run, so that many can
// follow each other in one process.
#pragma once

#include <string>

#include "base/FolderLock.h"

namespace synth::cli {

struct RunContext {
  std::string undoLabel;  // of the app's Undo step, for writes into @app
  FolderLock writing;     // where the run changes a project, until it ends
};

RunContext& context();

}  // namespace synth::cli
