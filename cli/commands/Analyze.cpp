#include "analysis/Measure.h"
#include "cli/Args.h"
#include "cli/Listening.h"
#include "cli/commands/Commands.h"
#include "core/sounds/Solo.h"

namespace synth::cli::commands {
namespace {

const std::vector<std::string> projectOptions = {"range", "section", "track", "pad", "wet"};

// Seconds separated by commas.
std::vector<double> secondsList(const Args& args, const std::string& name) {
  std::vector<double> list;
  if (!args.has(name)) return list;
  const std::string& text = args.at(name);
  for (size_t from = 0; from <= text.size();) {
    const size_t comma = std::min(text.find(',', from), text.size());
    double seconds = 0;
    if (!decimal(text.substr(from, comma - from), seconds))
      throw usage("--" + name + " takes seconds separated by commas, e.g. 0,2.5");
    list.push_back(seconds);
    from = comma + 1;
  }
  return list;
}

double wetShare(const Source& source, const analysis::Audio& wet) {
  Source dry{source.path, copyOf(*source.project), source.part};
  silenceSends(*dry.project);
  return analysis::wetShareDb(wet, hear(dry));
}

Json describe(const Args& args) {
  const double bpm = numberOption(args, "bpm", 0, 0, 400);
  const analysis::Score score{secondsList(args, "note-on"), secondsList(args, "note-off")};
  const Source source = sourceOf(args, args.positionals[0], projectOptions);
  const analysis::Audio audio = hear(source);
  const analysis::Features features = measure(audio, source.path, score);
  Json report = featuresJson(features, bpm > 0 ? bpm : source.bpm(), args.has("detail"));
  if (args.has("wet"))
    for (Json::Member& member : report.members())
      if (member.key == "space")
        member.value.add("wet_share_db", analysis::rounded(wetShare(source, audio), 1));
  return report;
}

}  // namespace

Command analyze() {
  return {
      "analyze",
      "Describe how audio or a project sounds in numbers: loudness, band balance, timbre, stereo, rhythm, "
      "attacks, key, timeline.",
      arguments(
          {{positional("input", "audio|path.quorel|spec.json|@app", "audio file, project or @app").needed(),
            option("bpm", "number", "tempo for the bar timeline (projects: their own)")},
           partOptions(projectOptions),
           {flag("detail", "add 1/3-octave levels and onset times"),
            option("note-on", "s,s,...",
                   "known note-on times in seconds: attacks, decays and held movement are measured there "
                   "instead of at detected onsets"),
            option("note-off", "s,s,...",
                   "known note-off times in seconds: adds envelope.tail_40_ms / tail_60_ms"),
            flag("wet",
                 "projects: render again with the Send effects silent and report space.wet_share_db")}}),
      "{seconds, loudness, bands_db, timbre, motion, stereo, space, rhythm, envelope, pitch, timeline}",
      false,
      {"quorel analyze stems/bass.wav --detail", "quorel analyze song.quorel --track BASS --wet"},
      describe};
}

}  // namespace synth::cli::commands
