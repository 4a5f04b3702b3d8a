// Renders for tests, and what is measured on them.
#pragma once

#include <string>
#include <vector>

#include "core/Project.h"
#include "engine/Engine.h"

namespace synth::test {

struct Audio {
  std::vector<float> left, right;

  size_t size() const { return left.size(); }
};

// Renders `frames` in calls of at most `block` samples.
Audio renderFrames(Engine& engine, size_t frames, unsigned block = 256);
// Submits, plays and renders a Project from its start.
Audio renderProject(const Project& project, double seconds, unsigned block = 256, double rate = 48000);

bool sameBytes(const Audio& a, const Audio& b);
float peak(const std::vector<float>& x);
double rms(const std::vector<float>& x, size_t from = 0, size_t to = ~size_t(0));
double toDb(double amplitude);
bool allFinite(const Audio& audio);
// The amplitude of a sine of that frequency in x, by correlation over whole cycles (Goertzel).
double sineLevel(const std::vector<float>& x, double hz, double rate, size_t from = 0,
                 size_t to = ~size_t(0));

// A Project with one Track of a kind and no Notes, everything else silent.
ProjectPtr oneTrack(int kind);
// The same as a kit.
ProjectPtr oneKit();

}  // namespace synth::test
