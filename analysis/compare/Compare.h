// Measuring a render against its reference: alignment, scores, differences, and what to change.
#pragma once

#include <optional>

#include "analysis/compare/Align.h"
#include "analysis/compare/Differences.h"
#include "analysis/compare/Issues.h"

namespace synth::analysis {

struct CompareOptions {
  std::optional<double> offset;  // seconds by which the render is delayed; found when it is not given
  bool automatic() const { return !offset; }
  double bpm = 0;        // the render's, 0 unknown
  bool detail = false;   // both reports and third octaves
  bool perBar = false;   // the bands bar by bar
  double downbeat = -1;  // seconds of bar 1; fitted when negative
};

// All that was measured; timbre, stereo and `matched` at the reference's length, place and loudness.
struct Comparison {
  Alignment alignment;
  Features reference, render;
  Audio matched;
  Differences differences;
  Scores scores;
  std::vector<Issue> issues;
};

// Throws std::runtime_error: "The reference is shorter than 0.5 s", and what analyze() throws.
Comparison measureAgainst(const Audio& reference, const Audio& render, const CompareOptions& options,
                          const Watch& watch = {});

// The same where the reference has been listened to already.
Comparison measureAgainst(const Audio& reference, const Features& measured, const Audio& render,
                          const CompareOptions& options, const Watch& watch = {});

// The whole report. Throws std::runtime_error where no bars can be found for `perBar`.
json::Json comparisonJson(const Comparison& comparison, const CompareOptions& options);
// Its parts, for shorter reports.
json::Json alignmentJson(const Alignment& alignment, double secondsCompared);
json::Json scoresJson(const Scores& scores);
json::Json bandDifferencesJson(const Differences& differences);
// At most five.
json::Json topIssuesJson(const std::vector<Issue>& issues);

// Both in one.
json::Json compare(const Audio& reference, const Audio& render, const CompareOptions& options);

}  // namespace synth::analysis
