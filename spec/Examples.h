// The built-in example songs, kept as JSON specs.
#pragma once

#include <string>

#include "core/Project.h"

namespace synth::spec {

struct ExampleInfo {
  std::string name, description;
};

int exampleCount();
// Clamped to the examples there are.
ExampleInfo exampleInfo(int i);
ProjectPtr makeExample(int i);
// The spec's own text.
std::string exampleText(int i);

// Small projects for tests and demonstrations: ION GARDEN, PAPER WINDOWS, NIGHT TRANSIT.
int fixtureCount();
// Clamped to the fixtures there are.
ProjectPtr makeFixture(int i);
std::string fixtureText(int i);

}  // namespace synth::spec
