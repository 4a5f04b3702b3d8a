// A new project whose sounds have no Macros and no Pins of their own yet, for tests that give them some.
#pragma once

#include "core/model/Defaults.h"

namespace synth::test {

inline void makePlain(Project& project) {
  for (Track& track : project.tracks) {
    for (MacroRec& macro : track.macros) macro = MacroRec{};
    track.macroCount = 0;
    track.pins = PinList{};
  }
}

inline ProjectPtr plainProject() {
  auto project = makeProject();
  makePlain(*project);
  return project;
}

}  // namespace synth::test
