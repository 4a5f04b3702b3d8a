// What a Preset plays to show itself: at most two bars in its Role's register and the song's key.
#pragma once

#include <vector>

#include "core/Preset.h"
#include "core/music/Scales.h"

namespace synth::preset {

enum class DemoPattern : u8 {
  Bassline,
  Acid,
  Boom,
  Slow,
  Phrase,
  Chords,
  Keys,
  Stabs,
  Bells,
  Arp,
  Kick,
  Backbeat,
  Groove,
  Hats,
  Clicks,
  Beat,
  Long,
  Hit,
  Bursts
};
inline constexpr int demoPatterns = 19;

const char* demoPatternName(DemoPattern pattern);
// By Role and family; a kit always plays a beat.
DemoPattern demoPattern(const Preset& preset);

// MIDI notes, or for a kit its Pads 0..7.
struct Range {
  int low = 0, high = 7, centre = 3;
};
Range range(const Preset& preset);

struct DemoNote {
  int step = 0;
  int length = 192;  // in 1/256 Step
  int pitch = 60;    // for a kit its Pad
  int velocity = 100;
  u8 flags = 0;  // Note's Slide and Accent bits
};

struct Demo {
  DemoPattern pattern = DemoPattern::Long;
  int steps = 16;  // whole bars, one or two
  std::vector<DemoNote> notes;
};

// The Project's key when it is set; else that of its first melodic Clip with Notes and what plays beside it;
// else C minor.
void demoKey(const Project& project, int& root, compose::Scale& scale);

// `tempo` in beats per minute decides how many Steps a long note lasts.
Demo demo(const Preset& preset, int root, compose::Scale scale, double tempo);
// In the Project's key and tempo.
Demo demo(const Preset& preset, const Project& project);

}  // namespace synth::preset
