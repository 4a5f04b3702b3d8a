#include "analysis/compare/Compare.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "analysis/Measure.h"
#include "analysis/grid/Grid.h"
#include "analysis/picture/Spectrogram.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Listening.h"
#include "cli/commands/Commands.h"
#include "cli/write/WritePath.h"

namespace synth::cli::commands {
namespace {

using analysis::Audio;
using analysis::Comparison;

const std::vector<std::string> projectOptions = {"range", "section"};

// A part of the music compared for itself: NAME=REF=RENDER.
struct Stem {
  std::string name;
  std::string reference;
  std::vector<std::string> files;
  std::vector<int> tracks;  // of the project, when there are no files
};

bool isFile(const std::string& path) {
  std::error_code none;
  return std::filesystem::is_regular_file(path, none);
}

std::vector<std::string> splitAtPlus(const std::string& text) {
  std::vector<std::string> pieces;
  for (size_t from = 0; from <= text.size();) {
    const size_t plus = std::min(text.find('+', from), text.size());
    pieces.push_back(text.substr(from, plus - from));
    from = plus + 1;
  }
  return pieces;
}

Stem stemOf(const std::string& text, const Source& render) {
  const size_t first = text.find('='), second = first == text.npos ? first : text.find('=', first + 1);
  if (second == text.npos || first == 0 || second == first + 1 || second + 1 == text.size())
    throw usage("--stem is NAME=REF=RENDER, got " + text,
                "e.g. --stem bass=stems/bass.wav=1 (track 1 of the project)");
  Stem stem{text.substr(0, first), text.substr(first + 1, second - first - 1), {}, {}};
  // Before the whole is compared, which takes a while.
  if (!isFile(stem.reference)) throw CliError("not_found", "No such file: " + stem.reference);
  const std::string played = text.substr(second + 1);
  // A file may bear a plus in its name.
  stem.files = isFile(played) ? std::vector<std::string>{played} : splitAtPlus(played);
  if (std::all_of(stem.files.begin(), stem.files.end(), isFile)) return stem;
  for (const std::string& piece : stem.files) {
    if (!render.project)
      throw usage("Track numbers or names in --stem need a project to render; " + piece + " is not a file");
    stem.tracks.push_back(trackOption(*render.project, piece));
  }
  stem.files.clear();
  return stem;
}

Audio hearStem(const Stem& stem, const Source& render, double atLeast) {
  std::vector<Audio> parts;
  for (const std::string& path : stem.files) parts.push_back(hearFile(path));
  for (int track : stem.tracks) {
    Source solo{render.path, copyOf(*render.project), render.part};
    solo.part.track = track;
    parts.push_back(hear(solo, atLeast));
  }
  return analysis::mixed(parts);
}

Comparison measured(const Audio& reference, const Audio& render, const analysis::CompareOptions& options,
                    const std::string& path) {
  ListeningLine line(path, reference.seconds());
  return orInvalidAudio([&] { return analysis::measureAgainst(reference, render, options, line.watch()); });
}

// Each stem lies where the whole lies.
Json stemsJson(const std::vector<Stem>& stems, const Source& render, analysis::CompareOptions options,
               double offsetS) {
  options.offset = offsetS;
  Json rows = Json::array();
  for (const Stem& stem : stems) {
    const Audio reference = hearFile(stem.reference);
    const Comparison c =
        measured(reference, hearStem(stem, render, reference.seconds()), options, stem.reference);
    Json differences = Json::object();
    differences.add("bands_db", bandDifferencesJson(c.differences))
        .add("loudness_lu", analysis::rounded(c.differences.loudnessLu, 1))
        .add("onset_f1", analysis::rounded(c.differences.onsetF1, 2))
        .add("attack_ms", analysis::rounded(c.differences.attackMs, 1));
    Json row = Json::object();
    row.add("name", stem.name)
        .add("scores", scoresJson(c.scores))
        .add("top_issues", topIssuesJson(c.issues))
        .add("differences", std::move(differences));
    rows.push(std::move(row));
  }
  return rows;
}

void draw(const std::string& path, const Audio& reference, const Comparison& c,
          const analysis::CompareOptions& options) {
  analysis::PictureSettings settings;
  settings.toS = reference.seconds();
  try {
    const analysis::Grid grid = analysis::fitGrid(c.reference, options.bpm, options.downbeat);
    settings.bars = analysis::BarLines{grid.bpm, grid.downbeatS};
  } catch (const std::runtime_error&) {
    // Without a grid the picture has seconds.
  }
  try {
    analysis::differenceImage(path, reference, c.matched, settings);
  } catch (const std::runtime_error& error) {
    throw CliError("write_failed", error.what(), whyUnwritable(path));
  }
}

Json compareBoth(const Args& args) {
  analysis::CompareOptions options;
  if (args.has("offset")) options.offset = numberOption(args, "offset", 0, -60, 60);
  options.bpm = numberOption(args, "bpm", 0, 0, 400);
  options.downbeat = numberOption(args, "downbeat", -1, 0, 3600);
  options.detail = args.has("detail");
  options.perBar = args.has("per-bar");
  if (args.has("png")) refuseExisting(args.at("png"), args.has("force"));
  const Source render = sourceOf(args, args.positionals[1], projectOptions);
  if (!(options.bpm > 0)) options.bpm = render.bpm();
  std::vector<Stem> stems;
  if (const auto list = args.lists.find("stem"); list != args.lists.end())
    for (const std::string& text : list->second) stems.push_back(stemOf(text, render));

  const Audio reference = hearFile(args.positionals[0]);
  const Comparison c = measured(reference, hear(render, reference.seconds()), options, render.path);
  Json report =
      orInvalidAudio([&] { return comparisonJson(c, options); }, "Fix the bars with --bpm and --downbeat");
  Json result = Json::object();
  for (Json::Member& member : report.members()) {
    result.add(member.key, std::move(member.value));
    if (member.key == "note" && !stems.empty())
      result.add("stems", stemsJson(stems, render, options, c.alignment.offsetS));
  }
  if (args.has("png")) {
    draw(args.at("png"), reference, c, options);
    result.add("png", args.at("png"));
  }
  return result;
}

}  // namespace

Command compare() {
  return {
      "compare",
      "Compare a render with a reference: sub-scores, signed differences and the top issues as edits; per "
      "stem with --stem.",
      arguments(
          {{positional("reference", "audio", "what it should sound like").needed(),
            positional("render", "audio|path.quorel|spec.json|@app", "audio, project or @app").needed(),
            option("offset", "seconds", "shift the render (positive delays it); default: found from onsets"),
            option("bpm", "number", "the render's tempo (projects: their own)")},
           partOptions(projectOptions),
           {option(
                "stem", "NAME=REF=RENDER",
                "compare a stem too: an audio file with audio files or, for a project, tracks, joined by +")
                .many(),
            option("png", "path.png", "draw reference, render and difference"),
            flag("detail", "add both reports and 1/3-octave differences"),
            flag("per-bar", "add the differences bar by bar"),
            option("downbeat", "seconds", "where bar 1 starts in the reference (default: fitted)"),
            flag("force", "replace an existing --png file")}}),
      "{alignment, scores, differences, top_issues, lossy_reference?, note, stems?, per_bar?, reference?, "
      "render?, third_octave_diff_db?, png?}",
      false,
      {"quorel compare ref.wav song.quorel --stem bass=stems/bass.wav=BASS",
       "quorel compare ref.wav render.wav --png difference.png --per-bar"},
      compareBoth};
}

}  // namespace synth::cli::commands
