// preset demo: what a Preset plays to show itself, as Notes and as sound.
#include <algorithm>
#include <filesystem>

#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/PresetLookup.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/WritePath.h"
#include "core/model/Defaults.h"
#include "core/sounds/DemoStage.h"
#include "engine/AudioFormats.h"
#include "engine/SongRender.h"

namespace synth::cli::commands {
namespace {

using compose::Scale;
using preset::Preset;

struct Key {
  int root = 0;
  Scale scale = Scale::Minor;
};

Key keyOption(const std::string& given) {
  const std::string text(text::trimmed(given));
  const size_t blank = std::min(text.find(' '), text.size());
  Key key;
  key.root = compose::rootNamed(text.substr(0, blank));
  const std::string rest(text::trimmed(text.substr(blank)));
  const auto scale = rest.empty() ? Scale::Minor : compose::scaleNamed(rest);
  if (key.root >= 0 && scale) {
    key.scale = *scale;
    return key;
  }
  std::vector<std::string> scales;
  for (int s = int(Scale::Major); s < compose::scales; s++) scales.emplace_back(scaleName(Scale(s)));
  throw usage("--key is ROOT [SCALE], e.g. A MINOR or F# DORIAN, got " + given,
              "Scales: " + text::joined(scales, ", "));
}

Json noteRows(const Preset& p, const preset::Demo& demo) {
  const param::Info& root = *param::find("sample_root");
  const Track kit = [&] {
    Track track = defaultTrack(DRUMS);
    if (p.kind == DRUMS) preset::applyTo(track, p);
    return track;
  }();
  Json rows = Json::array();
  for (const preset::DemoNote& note : demo.notes) {
    Json row = Json::object();
    row.add("step", note.step).add("length", note.length).add("pitch", note.pitch);
    if (p.kind == DRUMS)
      row.add("pad", padName(kit, note.pitch));
    else
      row.add("note", param::formatted(root, f32(note.pitch)));
    row.add("velocity", note.velocity);
    if (note.flags & Note::slideBit) row.add("slide", true);
    if (note.flags & Note::accentBit) row.add("accent", true);
    rows.push(std::move(row));
  }
  return rows;
}

// A dry Track of a new project, or the Track of the user's with its mix and the project's effects.
ProjectPtr stage(const Preset& p, const preset::Demo& demo, const Project* song, int track) {
  if (!song) return preset::dryStage(p, demo);
  auto out = copyOf(*song);
  preset::apply(*out, track, p);
  if (!preset::placeDemo(*out, track, demo)) throw CliError("internal", "The demo does not fit the project");
  return out;
}

// A WAV under another format's name would be taken for one.
void refuseOtherFormats(const std::string& path) {
  const std::string extension = text::lower(std::filesystem::path(path).extension().string());
  for (const AudioFormatInfo& row : audioFormats())
    if (row.format != AudioFormat::Wav && extension == std::string(".") + row.extension)
      throw usage("--render writes a WAV, got " + path,
                  "Name it .wav, or put the Preset into a song and render that");
}

void renderWav(const Project& p, const std::string& path, double tail) {
  std::string error;
  bool ok = false;
  try {
    ok = exportWav(p, path, 1, error, tail);
  } catch (const std::runtime_error& fault) {
    throw CliError("write_failed", "Cannot write " + path + ": " + fault.what());
  }
  if (!ok) throw CliError("render_failed", "Render failed: " + error);
}

Json run(const Args& args) {
  const GivenPreset given = givenPreset(args, args.positionals[0]);
  const Preset& p = given.preset;
  const double tail = numberOption(args, "tail", 2, 0, longestTail);
  ProjectPtr song = args.has("project") ? loadAny(args.at("project")) : nullptr;
  if (args.has("track") && !song) throw usage("--track is of --project");
  if (args.has("render") && song && !args.has("track"))
    throw usage("--render with --project needs --track", "The Track whose mix the Preset is heard in");
  const int track = song && args.has("track") ? trackOption(*song, args.at("track")) : 0;
  ProjectPtr scene = song ? copyOf(*song) : makeBlank();
  scene->bpm = f32(numberOption(args, "bpm", scene->bpm, 40, 240));
  Key key;
  if (args.has("key"))
    key = keyOption(args.at("key"));
  else
    preset::demoKey(*scene, key.root, key.scale);

  const preset::Demo demo = preset::demo(p, key.root, key.scale, scene->bpm);
  const preset::Range range = preset::range(p);
  Json o = Json::object();
  o.add("preset", p.name).add("role", preset::roleName(p.role)).add("family", p.family);
  o.add("engine", preset::engineName(p)).add("pattern", preset::demoPatternName(demo.pattern));
  if (p.kind == DRUMS)
    o.add("key", Json());
  else
    o.add("key", std::string(compose::rootName(key.root)) + " " + scaleName(key.scale));
  o.add("bpm", scene->bpm).add("steps", demo.steps).add("seconds", demo.steps * 15.0 / scene->bpm);
  o.add("range", Json::object().add("low", range.low).add("high", range.high).add("centre", range.centre));
  o.add("notes", noteRows(p, demo));
  std::vector<std::string> warnings = given.warnings;
  if (args.has("render")) {
    const std::string& path = args.at("render");
    refuseOtherFormats(path);
    refuseExisting(path, args.has("force"));
    auto staged = stage(p, demo, song ? scene.get() : nullptr, track);
    staged->bpm = scene->bpm;
    renderWav(*staged, path, tail);
    o.add("wav", path);
    const Track& t = staged->tracks[track];
    if (preset::settingsOnly(p) && std::all_of(t.sample_hash, t.sample_hash + 32, [](u8 b) { return !b; }))
      warnings.push_back("This Preset carries settings and no Sample: without one it is silent");
  }
  if (!warnings.empty()) o.add("warnings", textList(warnings));
  return o;
}

}  // namespace

Command presetDemo() {
  return {"preset demo",
          "Show, and with --render play, the pattern that demonstrates a Preset.",
          {positional("name", "NAME|file.preset", "the Preset, or a file").needed(),
           option("project", "path.quorel|spec.json|@app", "take key and tempo from this project"),
           option("track", "index|name", "--render: on this Track, with its mix and the project's effects"),
           option("key", "ROOT [SCALE]",
                  "e.g. \"A MINOR\" or \"F# DORIAN\" (default: the project's, else C MINOR)"),
           option("bpm", "number", "the tempo (default: the project's, else 120)"),
           option("render", "path.wav", "write what it sounds like"),
           option("tail", "0..12", "seconds to ring out (default 2)"), libraryOption(),
           flag("force", "replace an existing WAV")},
          "{preset, role, family, engine, pattern, key, bpm, steps, seconds, range: {low, high, centre}, "
          "notes: [{step, length, pitch, note|pad, velocity, slide?, accent?}], wav?, warnings?}",
          true,
          {"quorel preset demo FOUNDATION --key \"A MINOR\" --render foundation.wav",
           "quorel preset demo GLASS --project song.quorel --track KEYS --render glass.wav"},
          run};
}

}  // namespace synth::cli::commands
