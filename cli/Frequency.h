// Options that are a frequency: in Hz, or as a note.
#pragma once

#include "cli/Command.h"

namespace synth::cli {

// In Hz: 440, C#3 or Db3 (sixty is C4). Throws for anything else and for what is no frequency above 0.
double frequencyOption(const Args& args, const std::string& name, double fallback);

}  // namespace synth::cli
