// "Did you mean" hints by edit distance.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace synth {

// The up to three candidates nearest to `word`, nearest first; case does not count.
std::vector<std::string> nearest(std::string_view word, const std::vector<std::string>& candidates);

// "Did you mean: A, B, C?", or the empty string when nothing is near.
std::string suggest(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace synth
