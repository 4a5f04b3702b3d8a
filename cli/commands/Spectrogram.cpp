#include "analysis/picture/Spectrogram.h"

#include <cmath>
#include <filesystem>

#include "analysis/Measure.h"
#include "analysis/compare/Compare.h"
#include "analysis/grid/Grid.h"
#include "cli/Args.h"
#include "cli/Frequency.h"
#include "cli/Listening.h"
#include "cli/LoadAny.h"
#include "cli/TimeSpan.h"
#include "cli/commands/Commands.h"
#include "cli/write/WritePath.h"

namespace synth::cli::commands {
namespace {

using analysis::Features;
using analysis::Grid;
using analysis::rounded;

const std::vector<std::string> projectOptions = {"range", "section", "track", "pad"};

constexpr char reading[] =
    "Open the PNG with your image reader. Pitch rises upwards on a log scale with a line at every C, time "
    "runs to the right; brighter is louder.";
constexpr char readingBars[] =
    " Lines downwards are Steps (faint), beats and bars (strong, numbered on top).";
constexpr char readingTwo[] =
    " Both panels share one colour scale, and the lower one is moved to lie on the upper one.";

// A project's own bars, which need no fitting.
Grid gridOfProject(const Source& source, const KnownGrid& known) {
  Grid grid;
  grid.bpm = known.bpm > 0 ? known.bpm : source.bpm();
  const u32 before = source.part.whole ? 0 : (16 - source.part.from % 16) % 16;
  grid.downbeatS = known.downbeatS >= 0 ? std::fmod(known.downbeatS, grid.barS()) : before * grid.stepS();
  grid.bar1Confidence = grid.tempoConfidence = 1;
  return grid;
}

// Nothing where no grid fits, unless it is wholly known.
std::optional<Grid> gridOf(const Source& source, const KnownGrid& known,
                           const std::function<const Features&()>& heard) {
  if (source.project) return gridOfProject(source, known);
  try {
    return analysis::fitGrid(heard(), known.bpm, known.downbeatS);
  } catch (const std::runtime_error&) {
    if (!(known.bpm > 0) || known.downbeatS < 0) return {};
    Grid grid;
    grid.bpm = known.bpm;
    grid.downbeatS = std::fmod(known.downbeatS, grid.barS());
    grid.bar1Confidence = grid.tempoConfidence = 1;
    return grid;
  }
}

// What is drawn below the input, moved to lie on it.
struct Versus {
  analysis::Audio audio;
  analysis::Alignment alignment;
  std::string label;
};

Versus versus(const Source& source, const analysis::Audio& input, const Features& features) {
  Versus vs;
  vs.audio = hear(source, input.seconds());
  vs.alignment = analysis::align(features, measure(vs.audio, source.path));
  vs.audio = analysis::shifted(vs.audio, vs.alignment.offsetS, input.size());
  vs.label = std::filesystem::path(source.path).filename().string();
  return vs;
}

void draw(const std::string& path, const std::vector<const analysis::Audio*>& audios,
          const std::vector<std::string>& labels, const analysis::PictureSettings& settings) {
  try {
    analysis::spectrogramImage(path, audios, labels, settings);
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    if (text.starts_with("Cannot write")) throw CliError("write_failed", text, whyUnwritable(path));
    if (text.starts_with("--")) throw usage(text);
    throw CliError("invalid_audio", text);
  }
}

// What is listened to is never drawn over, not even with --force.
void refuseOver(const std::string& out, const std::string& input) {
  std::error_code none;
  if (std::filesystem::equivalent(out, input, none)) throw usage("--out " + out + " is the input itself");
}

Json drawInput(const Args& args) {
  if (!args.has("out")) throw usage("spectrogram needs --out", "--out path.png");
  const std::string& out = args.at("out");
  refuseExisting(out, args.has("force"));
  refuseOver(out, args.positionals[0]);
  if (args.has("vs")) refuseOver(out, args.at("vs"));
  analysis::PictureSettings settings;
  settings.fminHz = frequencyOption(args, "fmin", settings.fminHz);
  settings.fmaxHz = frequencyOption(args, "fmax", settings.fmaxHz);
  settings.width = intOption(args, "width", 0, 200, 4000);
  settings.dbRange = numberOption(args, "db-range", settings.dbRange, 20, 120);
  const KnownGrid known = knownGrid(args);
  // The part of a project is that of any that is one.
  const bool projectBelow = args.has("vs") && isProject(args.at("vs"));
  const Source source =
      sourceOf(args, args.positionals[0], projectBelow ? std::vector<std::string>{} : projectOptions);
  std::optional<Source> below;
  if (args.has("vs")) below = sourceOf(args, args.at("vs"), {});
  const analysis::Audio audio = hear(source);

  // Listening takes longer than drawing, so it waits for a need of it.
  std::optional<Features> features;
  auto heard = [&]() -> const Features& {
    if (!features) features = measure(audio, source.path);
    return *features;
  };
  std::optional<Grid> grid;
  if (!args.has("no-grid") || spansBars(args)) grid = gridOf(source, known, heard);
  const TimeSpan span = timeSpan(args, audio.seconds(), [&] { return grid; });
  settings.fromS = span.fromS;
  settings.toS = span.toS;
  if (grid && !args.has("no-grid")) settings.bars = analysis::BarLines{grid->bpm, grid->downbeatS};

  std::optional<Versus> vs;
  if (below) vs = versus(*below, audio, heard());
  std::vector<const analysis::Audio*> audios = {&audio};
  std::vector<std::string> labels = {""};
  if (vs) {
    audios.push_back(&vs->audio);
    labels = {"REFERENCE", vs->label};
  }
  draw(out, audios, labels, settings);

  Json result = Json::object();
  result.add("png", out).add("span_s", Json::array().push(rounded(span.fromS, 3)).push(rounded(span.toS, 3)));
  if (settings.bars) result.add("grid", analysis::gridJson(*grid));
  result.add("panels", audios.size());
  if (vs)
    result.add("vs_offset_s", rounded(vs->alignment.offsetS, 3))
        .add("alignment", analysis::alignmentJson(vs->alignment, audio.seconds()));
  result.add("read", std::string(reading) + (settings.bars ? readingBars : "") + (vs ? readingTwo : ""));
  return result;
}

}  // namespace

Command spectrogram() {
  return {
      "spectrogram",
      "Draw a log-frequency spectrogram as a PNG with notes and bars; --vs adds a second panel.",
      arguments(
          {{positional("input", "audio|path.quorel|spec.json|@app", "audio file, project or @app").needed(),
            option("out", "path.png", "the picture (required)"),
            option("vs", "audio|path.quorel", "a second panel, aligned like compare, on one colour scale"),
            option("fmin", "Hz|note", "lowest frequency (30)"),
            option("fmax", "Hz|note", "highest frequency (8000)"),
            option("width", "px", "200..4000 (80 a second, 600..1800)"),
            option("db-range", "dB", "colour range under the loudest cell, 20..120 (80)"),
            flag("no-grid", "seconds instead of bars"), flag("force", "replace an existing --out file")},
           timeSpanOptions(),
           partOptions(projectOptions)}),
      "{png, span_s, grid?, panels, vs_offset_s?, alignment?, read}",
      true,
      {"quorel spectrogram ref.wav --out ref.png --from 1 --bars 4",
       "quorel spectrogram ref.wav --vs song.quorel --out both.png"},
      drawInput};
}

}  // namespace synth::cli::commands
