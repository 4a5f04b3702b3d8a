// What a Project and a Track are before anyone has touched them.
#pragma once

#include <string>
#include <string_view>

#include "core/Project.h"

namespace synth {

// A new document: four Tracks with empty loops of 16 Steps, twelve more ready to use.
ProjectPtr makeProject();
// The same without the loops and with all sixteen Tracks active: what a spec builds on.
ProjectPtr makeBlank();

// The Track of starter slot 0..15, clamped: the plain kit, and on the others a factory Preset each.
const Track& starterTrack(int slot);
Track defaultTrack(TrackKind kind);
// What the Track's sound was born from: its starter slot, or its kind's default.
Track originTrack(const Track& track);

// Switches the Engine (0..10, others are ignored) with its default parameters; Preset name, Pins and
// Macros go, other sound values stay.
void setSynthKind(Track& track, int kind);
void assignSample(Track& track, const u8 (&hash)[32], std::string_view name, int root, f32 tune);
void clearSample(Track& track);
// Sets LFO 1 or 2 (0 or 1) to a ready-made movement.
void applyLfoQuick(Track& track, int lfo, LfoQuick quick);

// The first name like `wanted` that no active Track has: itself, "NAME 2", "NAME 3" ...
std::string freeTrackName(const Project& project, std::string_view wanted);
// How many Tracks hold content or differ from their starter sound, at least 1.
int inferTrackCount(const Project& project);

// "SEND I · DELAY" and the like; a Pad's name is its model's.
std::string sendName(const Project& project, int bus);
const char* padName(const Track& track, int pad);

}  // namespace synth
