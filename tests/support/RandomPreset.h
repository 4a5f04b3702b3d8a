// Random Presets; the same seed gives the same one.
#pragma once

#include "core/Preset.h"
#include "support/RandomProject.h"

namespace synth::test {

// One whose every part obeys its rules but stands in no canonical form.
preset::Preset randomPreset(Random& random);
// One of random words and numbers, most of which break some rule.
preset::Preset brokenPreset(Random& random);

}  // namespace synth::test
