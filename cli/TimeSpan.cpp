#include "cli/TimeSpan.h"

#include <algorithm>

#include "base/Text.h"
#include "cli/Args.h"

namespace synth::cli {
namespace {

TimeSpan timesOf(const std::string& text) {
  const size_t dots = text.find("..");
  TimeSpan span;
  if (dots == text.npos || !decimal(text.substr(0, dots), span.fromS) ||
      !decimal(text.substr(dots + 2), span.toS) || span.fromS < 0)
    throw usage("--time is A..B, got " + text, "Seconds, e.g. --time 4..8.5");
  if (!(span.toS > span.fromS)) throw usage("--time: B must be greater than A");
  return span;
}

TimeSpan barsOf(const Args& args, const analysis::Grid& grid) {
  const int from = intOption(args, "from", 1, 1, 100000), bars = intOption(args, "bars", 1, 1, 100000);
  const double start = grid.downbeatS + (from - 1) * grid.barS();
  return {start, start + bars * grid.barS()};
}

}  // namespace

std::vector<ArgSpec> gridOptions() {
  return {option("bpm", "number", "fix the tempo (refined within 1%)"),
          option("downbeat", "seconds", "fix where bar 1 starts")};
}

std::vector<ArgSpec> timeSpanOptions() {
  std::vector<ArgSpec> options = {option("time", "A..B", "seconds of the audio"),
                                  option("from", "bar", "first bar on the fitted grid (1)"),
                                  option("bars", "int", "how many bars (1)")};
  for (ArgSpec& arg : gridOptions()) options.push_back(std::move(arg));
  return options;
}

KnownGrid knownGrid(const Args& args) {
  const double bpm = numberOption(args, "bpm", 0, 0, 400);
  return {bpm > 0 ? std::max(bpm, analysis::slowestBpm) : 0, numberOption(args, "downbeat", -1, 0, 3600)};
}

CliError emptySpan(double seconds) {
  return CliError("invalid_audio",
                  text::print("The span is empty: it starts after the end of the audio (%.2f s)", seconds));
}

bool spansBars(const Args& args) { return args.has("from") || args.has("bars"); }

TimeSpan timeSpan(const Args& args, double seconds,
                  const std::function<std::optional<analysis::Grid>()>& grid) {
  TimeSpan span{0, seconds};
  if (args.has("time") && spansBars(args)) throw usage("Choose one of --time and --from/--bars");
  if (args.has("time")) span = timesOf(args.at("time"));
  if (spansBars(args)) {
    const auto found = grid();
    if (!found)
      throw CliError("invalid_audio", "No beat grid found for --from/--bars",
                     "Use --time A..B in seconds, or fix the grid with --bpm and --downbeat");
    span = barsOf(args, *found);
  }
  // Of no audio at all there is something else to say.
  if (seconds > 0 && span.fromS >= seconds) throw emptySpan(seconds);
  span.toS = std::min(span.toS, seconds);
  return span;
}

}  // namespace synth::cli
