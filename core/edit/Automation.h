// Editing Lanes.
#pragma once

#include "core/Project.h"

namespace synth::automation {

// Replaces a row's points by a list given in Steps and 0..1; times round to 1/16 Step, a NaN value is a
// rest. False, changing nothing, for times that fall, three on one place, or too many points.
bool setBreakpoints(Project& project, int lane, const double* times, const float* values, int count);

}  // namespace synth::automation
