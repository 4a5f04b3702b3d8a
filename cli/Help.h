// Help texts, all from the command table.
#pragma once

#include "cli/Command.h"

namespace synth::cli {

inline constexpr const char* cliVersion = "0.1.0";

std::string generalHelp();
std::string commandHelp(const Command& command);
// "quorel project new OUT [--example INT] ...", the first line of a command's help.
std::string usageLine(const Command& command);

}  // namespace synth::cli
