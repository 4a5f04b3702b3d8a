// grid
#include "analysis/grid/Grid.h"
#include "cli/Args.h"
#include "cli/Listening.h"
#include "cli/TimeSpan.h"
#include "cli/commands/Commands.h"

namespace synth::cli::commands {
namespace {

const std::vector<std::string> projectOptions = {"range", "section", "track"};

Json gridOf(const Args& args) {
  const KnownGrid known = knownGrid(args);
  const int from = intOption(args, "from", 1, 1, 100000), bars = intOption(args, "bars", 4, 1, 100000);
  const Source source = sourceOf(args, args.positionals[0], projectOptions);
  const analysis::Features features = measure(hear(source), source.path);
  return orInvalidAudio([&] {
    const analysis::Grid grid = analysis::fitGrid(features, known.bpm, known.downbeatS);
    const analysis::StepHits hits = analysis::stepHits(features, grid);
    if (from > hits.bars) throw emptySpan(features.seconds);
    Json result = Json::object();
    result.add("grid", analysis::gridJson(grid)).add("steps", analysis::stepGridJson(hits, from, bars));
    return result;
  });
}

}  // namespace

Command gridFit() {
  return {
      "grid",
      "Fit the beat grid of audio: tempo, bar 1, loop length, and the onsets per sixteenth.",
      arguments(
          {{positional("input", "audio|path.quorel|spec.json|@app", "audio file, project or @app").needed()},
           gridOptions(),
           {option("from", "bar", "first bar of the steps (1)"), option("bars", "int", "how many bars (4)")},
           partOptions(projectOptions)}),
      "{grid, steps}",
      false,
      {"quorel grid ref.wav --bars 8"},
      gridOf};
}

}  // namespace synth::cli::commands
