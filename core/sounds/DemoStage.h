// Projects in which a Preset's demo, and nothing else, plays.
#pragma once

#include "core/sounds/Demo.h"

namespace synth::preset {

// Makes the demo the only music of the Project, on that Track and alone. False when it does not fit, which
// leaves the Project without music.
bool placeDemo(Project& project, int track, const Demo& demo);

// The demo on a dry Track of a new Project: no Sends, the level of a new Track.
ProjectPtr dryStage(const Preset& preset, const Demo& demo);

}  // namespace synth::preset
