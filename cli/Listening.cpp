#include "cli/Listening.h"

#include <sys/stat.h>

#include <algorithm>

#include "analysis/reading/ReadAudio.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/LoadAny.h"
#include "cli/ProgressLine.h"
#include "cli/SongSpan.h"

namespace synth::cli {
namespace {

// The older words of the second half stay as users know them.
constexpr char readableFormats[] = "WAV works everywhere; MP3, AAC, AIFF and FLAC on macOS";

// "--a, --b and --c".
std::string listed(const std::vector<std::string>& options) {
  std::string out;
  for (size_t i = 0; i < options.size(); i++)
    out += (i == 0 ? "--" : i + 1 == options.size() ? " and --" : ", --") + options[i];
  return out;
}

void readSolo(const Args& args, const Project& project, analysis::Part& part) {
  if (args.has("track")) part.track = trackOption(project, args.at("track"));
  if (!args.has("pad")) return;
  if (part.track < 0 || project.tracks[part.track].track_kind != TrackKind::DRUMS)
    throw usage("--pad needs --track with a Drums track");
  part.pad = intOption(args, "pad", 0, 0, limits::pads - 1);
}

}  // namespace

std::vector<ArgSpec> partOptions(const std::vector<std::string>& names) {
  const ArgSpec all[] = {
      option("range", "FROM:TO", "projects: FROM:TO in Song steps instead of the whole Song"),
      option("section", "name", "projects: a Marker's Section instead of the whole Song"),
      option("track", "index|name", "projects: one track (index or name)"),
      option("pad", "int", "projects: one Pad of a Drums track, 0..7")};
  std::vector<ArgSpec> options;
  for (const ArgSpec& arg : all)
    if (std::find(names.begin(), names.end(), arg.name) != names.end()) options.push_back(arg);
  return options;
}

Source sourceOf(const Args& args, const std::string& path, const std::vector<std::string>& projectOptions) {
  Source source{path, nullptr, {}};
  if (!isProject(path)) {
    for (const std::string& name : projectOptions)
      if (args.has(name))
        throw usage(listed(projectOptions) + (projectOptions.size() > 1 ? " are" : " is") + " for projects");
    return source;
  }
  source.project = loadAny(path);
  const SongSpan span = songSpan(args, *source.project);
  requireSound(*source.project, span);
  source.part.from = span.from;
  source.part.to = span.to;
  source.part.whole = span.whole;
  readSolo(args, *source.project, source.part);
  return source;
}

analysis::Audio hearFile(const std::string& path) {
  struct stat info;
  if (path.empty() || ::stat(path.c_str(), &info) != 0) throw CliError("not_found", "No such file: " + path);
  return orInvalidAudio([&] { return analysis::readAudio(path); }, readableFormats);
}

analysis::Audio hear(const Source& source, double atLeast) {
  if (!source.project) return hearFile(source.path);
  ProgressLine line("Rendering " + source.path);
  try {
    return analysis::hear(*source.project, source.part, atLeast, [&](double share) { line.show(0, share); });
  } catch (const std::runtime_error& error) {
    throw CliError("render_failed", std::string("Render failed: ") + error.what());
  }
}

ListeningLine::ListeningLine(const std::string& path, double seconds) {
  constexpr double longWork = 30;
  if (seconds > longWork) line_ = std::make_unique<ProgressLine>("Listening to " + path);
}
ListeningLine::~ListeningLine() = default;

analysis::Watch ListeningLine::watch() {
  if (!line_) return {};
  return [line = line_.get()](double share) { line->show(0, share); };
}

analysis::Features measure(const analysis::Audio& audio, const std::string& path,
                           const analysis::Score& score) {
  ListeningLine line(path, audio.seconds());
  return orInvalidAudio([&] { return analysis::analyze(audio, 0, score, line.watch()); });
}

}  // namespace synth::cli
