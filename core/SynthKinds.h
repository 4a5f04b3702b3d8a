// The eleven Synth kinds in words: names, concepts, descriptions and their four parameters.
#pragma once

#include "core/Project.h"

namespace synth {

inline constexpr int synthKinds = 11;

// A number outside the table reads as the last kind.
const char* synthKindName(int kind);
const char* synthKindConcept(int kind);
const char* synthKindDescription(int kind);
// The kind's own word for engine1..engine4; the index is clamped to 0..3.
const char* engineParamName(int kind, int index);
// The kind of that name in any case, or -1.
int synthKindNamed(std::string_view name);

const char* lfoQuickName(LfoQuick quick);

namespace param {
// One sentence on what engine1..engine4 does in that kind; null outside 0..10 and 0..3.
const char* engineMeaning(int kind, int index);
}  // namespace param

}  // namespace synth
