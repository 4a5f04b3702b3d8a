// The part of a Song that a command is about: --range, --section, or all of it.
#pragma once

#include "cli/Command.h"
#include "core/Project.h"

namespace synth::cli {

struct SongSpan {
  u32 from = 0, to = 0;
  bool whole = true;
};

ArgSpec rangeOption();
ArgSpec sectionOption();
// Throws for both at once, for what is no range, and for no or an empty Section.
SongSpan songSpan(const Args& args, const Project& project);
// Throws where nothing would sound: a Song without Clips, or a span behind its end.
void requireSound(const Project& project, const SongSpan& span);

}  // namespace synth::cli
