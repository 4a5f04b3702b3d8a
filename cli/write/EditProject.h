// What every command does that changes a project: read it, change a copy, check it, write it, and say what
// changed.
#pragma once

#include <functional>

#include "cli/write/WritePath.h"

namespace synth::cli {

// `edit` changes the Project and answers the members that stand between `wrote` and `changes`; it may set a
// label of the app's Undo step that says more.
Json editProject(const Args& args, const std::string& undoLabel, const std::function<Json(Project&)>& edit);

// Turns a Macro to the number in a text; refuses what lies outside its range.
void setMacroValue(MacroRec& macro, const std::string& text);

}  // namespace synth::cli
