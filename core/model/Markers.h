// Markers, and the Sections of the Song between them.
#pragma once

#include <string_view>

#include "core/Project.h"

namespace synth {

// False, changing nothing, for a Step outside the Song, a Step already marked, or 64 Markers. A name that
// is empty after cleaning becomes "MARKER n".
bool addMarker(Project& project, u32 step, std::string_view name);
// The row of the Marker of exactly that name, or -1.
int markerNamed(const Project& project, std::string_view name);
// The Section around `step`: from the last Marker at or before it (or 0) to the next Marker or the Song's
// end. False for an empty one.
bool sectionAt(const Project& project, u32 step, u32& start, u32& end);

}  // namespace synth
