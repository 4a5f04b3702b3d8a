// How the registry gets its rows.
#pragma once

#include <vector>

#include "core/params/Registry.h"

namespace synth::param {

std::vector<Info> tableRows();

}  // namespace synth::param
