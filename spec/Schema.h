// The form of a spec as JSON Schema (draft 2020-12), from the tables that read it.
#pragma once

#include "base/Json.h"

namespace synth::spec {

json::Json schema();

}  // namespace synth::spec
