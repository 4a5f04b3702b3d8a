// The Macros of a Track as the Engine takes them: flat, without searching, made on the control side.
#pragma once

#include "core/params/Targets.h"

namespace synth::macros {

struct Plan {
  static constexpr int most = limits::macros * limits::macroTargets;

  // One value that some Macro moves.
  struct Entry {
    const param::Info* info = nullptr;
    u8 pad = 0;
    i16 target = -1;  // its Track target, or -1
    u16 macros = 0;   // the Macros that move it
  };
  struct Link {
    u8 macro = 0;
    u8 entry = 0;
    const MacroTarget* target = nullptr;
  };

  u8 macroCount = 0;
  u16 entryCount = 0, linkCount = 0;
  f32 value[limits::macros] = {};
  bool bipolar[limits::macros] = {};
  Entry entries[most];
  Link links[most];
  u16 targetMacros[automation::trackTargets] = {};  // for each Track target, the Macros that move it
};

// Its links point into the Project.
void buildPlan(const Project& project, int track, Plan& plan);

}  // namespace synth::macros
