// What a render's differences mean, as edits of a project: the words of `compare`.
#pragma once

#include <string>
#include <vector>

#include "analysis/compare/Differences.h"

namespace synth::analysis {

struct Issue {
  double severity;
  std::string text;
};

// The worst first. `bpm` places missing onsets at bars and beats, 0 leaves that out.
std::vector<Issue> issuesOf(const Features& reference, const Features& render, const Differences& differences,
                            double bpm);

}  // namespace synth::analysis
