// Fixed text fields: reading them, and the cleaning that every stored name goes through.
#pragma once

#include <string>
#include <string_view>

#include "core/Project.h"

namespace synth {

// The text up to the first zero.
std::string_view nameText(const char (&name)[16]);
std::string_view nameText(const char (&name)[24]);

// Stores `text`: printable ASCII only, upper-cased, at most 12 (20) characters, no trailing blanks; the
// rest of the field becomes zero.
void setName(char (&name)[16], std::string_view text);
void setName(char (&name)[24], std::string_view text);
// The same, but keeping the case: for Markers.
void setMarkerName(char (&name)[16], std::string_view text);

std::string_view projectName(const Project& project);
// False, changing nothing, when `text` is longer than 63 bytes or holds a zero byte.
bool setProjectName(Project& project, std::string_view text);

}  // namespace synth
