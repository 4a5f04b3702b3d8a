// The closed vocabularies that sort Presets: Roles with their families, Character tags and styles, each in
// the order in which a browser shows them; and how a Preset's name becomes a file's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/Project.h"

namespace synth::preset {

enum class Role : u8 { Bass, Lead, Pad, Keys, Pluck, Perc, Texture, Fx };

inline constexpr int roles = 8;
inline constexpr int mostTags = 4, mostStyles = 2;

using Words = std::vector<std::string>;

// A number above 7 reads as FX, here and in `families`.
const char* roleName(Role role);
// The Role of that name in any case, blanks around it apart. False, changing nothing, for any other word.
bool parseRole(std::string_view text, Role& role);

const Words& families(Role role);
// The place of the family in its Role's list, -1 for none of them.
int familyIndex(Role role, std::string_view word);
const Words& characterTags();
const Words& styles();

// A Preset's name as it is stored: printable ASCII in capitals, at most 20 characters, no blanks around.
std::string cleanName(std::string_view name);
// A file's stem for a name: letters and digits in lower case, one "-" for what stands between them;
// "preset" when nothing is left.
std::string slug(std::string_view name);

}  // namespace synth::preset
