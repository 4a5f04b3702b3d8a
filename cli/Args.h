// Parsing a command's tokens, and reading typed options.
#pragma once

#include "cli/Command.h"
#include "core/Project.h"

namespace synth::cli {

// Throws a usage error for anything the command did not declare.
Args parseArgs(const Command& command, const std::vector<std::string>& tokens);

// An option as a whole or decimal number within bounds, or `fallback` when it was not given.
int intOption(const Args& args, const std::string& name, int fallback, int lo, int hi);
double numberOption(const Args& args, const std::string& name, double fallback, double lo, double hi);
// A Track by its index or its name among the active ones.
int trackOption(const Project& project, const std::string& text);

// Whether a text is wholly a number; `value` receives it.
bool wholeNumber(const std::string& text, int& value);
bool decimal(const std::string& text, double& value);

}  // namespace synth::cli
