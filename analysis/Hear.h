// Rendering a Project to listen to it.
#pragma once

#include "analysis/Audio.h"
#include "core/Project.h"
#include "engine/SongRender.h"

namespace synth::analysis {

struct Part {
  u32 from = 0, to = 0;
  bool whole = true;         // the Song, else the Steps from..to
  int track = -1, pad = -1;  // alone, or -1
};

// Renders the part as often as it takes to last `atLeast` seconds, once at least and at most 64 times or an
// hour, with no more of a tail than they leave room for, through a file of 24 bits as an export would leave
// it. Throws std::runtime_error with the render's words, and for a part that lasts longer than an hour.
Audio hear(const Project& project, const Part& part, double atLeast = 0, const Progress& progress = {});

}  // namespace synth::analysis
