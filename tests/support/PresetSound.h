// What a Preset sounds like, measured on its demo and on single notes; and what of that breaks the promises
// of its name, family and tags.
#pragma once

#include <string>
#include <vector>

#include "analysis/Features.h"
#include "core/Preset.h"

namespace synth::test {

struct NoteSound {
  int pitch = 60, velocity = 100;
  double rmsDb = -200, peakDb = -200, centroidHz = 0;
};

struct PresetSound {
  analysis::Features demo;
  bool finite = true;
  // Of a melodic sound low, centre and high of its register, of a kit each Pad: all at velocity 40, then all
  // at 120.
  std::vector<NoteSound> notes;
  // Of a melodic sound, at its centre: seconds from the start of a note of a quarter second until it stays
  // 40 dB below its peak (3 at most), and by when its release and its room have to have let it, ...
  double ringS = 0, endsS = 3;
  // ... milliseconds that a held note takes to rise, ...
  double riseMs = 0;
  // ... and its level after four seconds below its peak, in dB.
  double heldDb = 0;
};

PresetSound soundOf(const preset::Preset& preset);

// A Macro at full travel, or for a bipolar one also the other way, against the Preset as it is.
struct MacroSound {
  std::string name;
  double score = 100;  // the lowest of compare's spectral balance, timbre and envelope
  double levelLu = 0;  // louder by
  double peakDb = -200;
};
std::vector<MacroSound> macrosOf(const preset::Preset& preset);

// The distance of two sounds: about 1 where they are told apart easily.
double distance(const PresetSound& a, const PresetSound& b);

// What the demos of a Role's sounds come near to.
double usualLufs(preset::Role role);

// What is wrong with a sound that can be said without looking at others, a line each.
std::vector<std::string> complaints(const preset::Preset& preset, const PresetSound& sound);
std::vector<std::string> complaints(const preset::Preset& preset, const std::vector<MacroSound>& macros);

}  // namespace synth::test
