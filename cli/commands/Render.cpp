#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>

#include "analysis/Loudness.h"
#include "analysis/Measure.h"
#include "base/Math.h"
#include "base/Parallel.h"
#include "base/Scraps.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/ProgressLine.h"
#include "cli/SongSpan.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/WritePath.h"
#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/sounds/Solo.h"
#include "engine/SongRender.h"

namespace synth::cli::commands {
namespace {

namespace fs = std::filesystem;

AudioFormat formatOf(const Args& args, const std::string& path) {
  std::string wanted;
  if (args.has("format")) {
    wanted = text::lower(args.at("format"));
    if (wanted == "aac") return AudioFormat::Aac;
    for (const AudioFormatInfo& row : audioFormats())
      if (wanted == text::lower(row.label)) return row.format;
    throw usage("--format is wav, aiff, flac, mp3 or aac");
  }
  const std::string extension = text::lower(fs::path(path).extension().string());
  for (const AudioFormatInfo& row : audioFormats())
    if (extension == std::string(".") + row.extension) return row.format;
  if (extension == ".aif") return AudioFormat::Aiff;
  if (extension.empty()) return AudioFormat::Wav;
  throw usage("No audio format is named " + extension.substr(1),
              "Use .wav .aiff .flac .mp3 .m4a, or --format");
}

std::string defaultOut(const std::string& input, const Args& args) {
  fs::path path(input);
  const AudioFormat format = args.has("format") ? formatOf(args, "") : AudioFormat::Wav;
  path.replace_extension(audioFormatInfo(format).extension);
  return path.string();
}

// Passes a render on and notes its peak and its loudness.
class MeteredSink : public AudioSink {
 public:
  // What has come to be at the path since the render began is refused like what was there before.
  MeteredSink(AudioSink& into, std::string path, bool force)
      : into_(into), path_(std::move(path)), force_(force) {}
  void begin(u32 rate, u64 frames) override {
    frames_ = frames;
    into_.begin(rate, frames);
  }
  void write(const float* left, const float* right, unsigned frames) override {
    for (unsigned i = 0; i < frames; i++) peak_ = std::max({peak_, std::fabs(left[i]), std::fabs(right[i])});
    loudness_.add(left, right, frames);
    into_.write(left, right, frames);
  }
  void finish() override {
    refuseExisting(path_, force_);
    into_.finish();
  }
  double seconds() const { return double(frames_) / renderRate; }
  Json lufs() const { return analysis::rounded(loudness_.lufs(), 1); }
  Json peakDb() const { return peak_ > 0 ? Json(std::round(200 * math::log10(double(peak_))) / 10) : Json(); }

 private:
  AudioSink& into_;
  std::string path_;
  bool force_;
  u64 frames_ = 0;
  float peak_ = 0;
  analysis::LoudnessMeter loudness_;
};

struct Job {
  SongSpan span;
  int loops;
  double tail;
  AudioFormat format;
  bool force;
};

bool isFileFault(const std::string& text) {
  for (const char* begin :
       {"Cannot create", "Cannot open", "Cannot replace", "Output ", "Directory flush", "Invalid dest"})
    if (text.compare(0, std::string(begin).size(), begin) == 0) return true;
  return false;
}

struct Rendered {
  double seconds = 0;
  Json peakDb, lufs;
};

// Renders into a file.
Rendered renderTo(const Project& p, const std::string& path, const Job& job, const Progress& show) {
  auto file = makeFileSink(job.format, path);
  MeteredSink sink(*file, path, job.force);
  std::string error;
  try {
    const bool ok = job.span.whole
                        ? renderSong(p, job.loops, sink, error, job.tail, show)
                        : renderSpan(p, job.span.from, job.span.to, job.loops, sink, error, job.tail, show);
    if (!ok) throw CliError("render_failed", "Render failed: " + error);
  } catch (const CliError&) {
    throw;
  } catch (const std::runtime_error& fault) {
    const std::string text = fault.what();
    if (isFileFault(text)) throw CliError("write_failed", "Cannot write " + path + ": " + text);
    throw CliError("render_failed", "Render failed: " + text);
  }
  return {sink.seconds(), sink.peakDb(), sink.lufs()};
}

struct Stem {
  int track;
  std::string path;
};

std::vector<Stem> stemsOf(const Project& p, const std::string& folder, AudioFormat format) {
  std::vector<Stem> stems;
  for (int t = 0; t < p.track_count; t++) {
    bool plays = false;
    for (int i = 0; i < p.noteCount && !plays; i++) plays = p.notes[i].track == t;
    if (!plays) continue;
    std::string name(nameText(p.tracks[t].name));
    for (char& c : name)
      if (c == '/' || c == '\\') c = '_';
    char number[8];
    std::snprintf(number, sizeof number, "%02d-", t);
    stems.push_back(
        {t, (fs::path(folder) / (number + name + "." + audioFormatInfo(format).extension)).string()});
  }
  return stems;
}

ProjectPtr soloOf(const Project& p, int track) {
  auto solo = copyOf(p);
  soloTrack(*solo, track);
  return solo;
}

void makeFolder(const std::string& folder) {
  std::error_code failed;
  fs::create_directories(folder, failed);
  if (failed) throw CliError("write_failed", "Cannot create " + folder + ": " + failed.message());
}

void requireEncoder(AudioFormat format) {
  if (const char* missing = missingFor(format))
    throw CliError("render_failed",
                   std::string("Render failed: This system cannot encode ") + audioFormatInfo(format).label +
                       ": " + missing + " is not installed",
                   "Install it, or write a .wav file");
}

// The project itself is never written over, nor the mix by one of its stems, not even with --force.
void refuseCollisions(const std::string& input, const std::string* mix, const std::vector<Stem>& stems) {
  std::error_code none;
  auto same = [&](const std::string& a, const std::string& b) {
    return fs::equivalent(a, b, none) || fs::weakly_canonical(a, none) == fs::weakly_canonical(b, none);
  };
  if (mix && same(input, *mix)) throw usage("--out " + *mix + " is the project itself");
  for (const Stem& stem : stems) {
    if (same(input, stem.path)) throw usage("The stem " + stem.path + " is the project itself");
    if (mix && same(*mix, stem.path)) throw usage("The stem " + stem.path + " is the mix itself");
  }
}

Json renderProject(const Args& args) {
  const std::string& input = args.positionals[0];
  auto project = loadAny(input);
  const bool force = args.has("force"), onlyStems = args.has("stems") && !args.has("out");
  const std::string out = args.has("out") ? args.at("out") : defaultOut(input, args);
  Job job{songSpan(args, *project), intOption(args, "loops", 1, 1, 64),
          numberOption(args, "tail", 2, 0, longestTail), formatOf(args, out), force};
  // Stems are for going on with: a mix in a lossy format leaves them whole.
  Job stemJob = job;
  if (!args.has("format")) stemJob.format = AudioFormat::Wav;
  std::vector<Stem> stems;
  if (args.has("stems")) stems = stemsOf(*project, args.at("stems"), stemJob.format);
  // What can be known to fail is refused before anything is written.
  requireEncoder(job.format);
  requireSound(*project, job.span);
  refuseCollisions(input, onlyStems ? nullptr : &out, stems);
  if (!onlyStems) refuseExisting(out, force);
  for (const Stem& stem : stems) refuseExisting(stem.path, force);
  if (args.has("stems")) makeFolder(args.at("stems"));

  // The mix and the stems are renders of their own, side by side.
  std::vector<std::function<void()>> tasks;
  std::vector<Rendered> done(stems.size() + (onlyStems ? 0 : 1));
  ProgressLine progress("Rendering " + (onlyStems ? args.at("stems") : out), done.size());
  auto addTask = [&](const Project& p, const std::string& path, const Job& how) {
    tasks.push_back([&, path, n = tasks.size()] {
      done[n] = renderTo(p, path, how, [&](double share) { progress.show(n, share); });
    });
  };
  if (!onlyStems) addTask(*project, out, job);
  std::vector<ProjectPtr> solos;
  for (const Stem& stem : stems) solos.push_back(soloOf(*project, stem.track));
  for (size_t i = 0; i < stems.size(); i++) addTask(*solos[i], stems[i].path, stemJob);
  runAll(tasks, Scrap::most);

  Json result = Json::object();
  if (!onlyStems) result.add("wrote", out);
  result.add("format", audioFormatInfo(job.format).label);
  result.add("seconds", done.empty() ? 0 : done[0].seconds);
  result.add("span", Json::object().add("from", double(job.span.from)).add("to", double(job.span.to)));
  result.add("loops", job.loops).add("tail_s", job.tail);
  if (!onlyStems) result.add("peak_dbfs", done[0].peakDb).add("lufs", done[0].lufs);
  if (!args.has("stems")) return result;
  Json rows = Json::array();
  for (const Stem& stem : stems)
    rows.push(std::move(Json::object()
                            .add("track", stem.track)
                            .add("name", nameText(project->tracks[stem.track].name))
                            .add("wrote", stem.path)));
  result.add("stems", std::move(rows));
  return result;
}

}  // namespace

Command render() {
  return {
      "render",
      "Render a project to a 48 kHz WAV: the whole Song, or a range or Marker's Section of it looped "
      "(optionally one WAV per track).",
      {positional("input", "path.quorel|spec.json|@app", "the project").needed(),
       option(
           "out", "path.wav",
           "audio file; .wav .aiff .flac .mp3 .m4a choose the format (default: the input's name with .wav)"),
       rangeOption(), sectionOption(), option("stems", "dir", "directory for one WAV per track"),
       option("loops", "int", "passes, 1..64 (1)"),
       option("tail", "seconds", "after the end, for the effects to ring out, 0..12 (2)"),
       option("format", "wav|aiff|flac|mp3|aac", "instead of the file's extension; of stems too"),
       flag("force", "replace existing files")},
      "{wrote?, format, seconds, span: {from, to}, loops, tail_s, peak_dbfs?, lufs?, stems?: [{track, name, "
      "wrote}]}",
      true,
      {"quorel render song.quorel --out song.wav",
       "quorel render song.quorel --section CHORUS --out chorus.wav --stems stems"},
      renderProject};
}

}  // namespace synth::cli::commands
