// The part of audio that a listening command looks at, in seconds or in bars of its beat grid.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "analysis/grid/Grid.h"
#include "cli/Command.h"
#include "cli/Error.h"

namespace synth::cli {

struct TimeSpan {
  double fromS = 0, toS = 0;
};

// --time, --from, --bars, --bpm, --downbeat.
std::vector<ArgSpec> timeSpanOptions();
// The two that fix the grid.
std::vector<ArgSpec> gridOptions();

// The tempo and the downbeat that the options fix: 0 and -1 where they do not.
struct KnownGrid {
  double bpm = 0, downbeatS = -1;
};
KnownGrid knownGrid(const Args& args);

// Whether the span needs a beat grid.
bool spansBars(const Args& args);
// What is said of a span behind the end.
CliError emptySpan(double seconds);
// All of the audio without options. `grid` is asked only when bars are meant; null says that none was found.
TimeSpan timeSpan(const Args& args, double seconds,
                  const std::function<std::optional<analysis::Grid>()>& grid);

}  // namespace synth::cli
