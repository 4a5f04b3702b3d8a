// The commands that write Presets: into the user's library, and onto a Track.
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/PresetLookup.h"
#include "cli/RunContext.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "cli/write/EditProject.h"
#include "core/Names.h"

namespace synth::cli::commands {
namespace {

using preset::Preset;

void require(const Args& args, const char* command, const char* name) {
  if (!args.has(name)) throw usage(std::string(command) + " needs --" + name);
}

std::string trackTitle(const Project& p, int t) {
  const std::string name(nameText(p.tracks[t].name));
  return name.empty() ? std::to_string(t) : name;
}

// Saves into the library; the answer's wrote and preset.
Json saved(preset::PresetLibrary& library, const Preset& p, bool replace) {
  preset::Entry entry;
  std::string error;
  if (!library.save(p, replace, entry, error)) libraryRefused(error, p.name);
  return std::move(Json::object().add("wrote", entry.file).add("preset", presetHeader(entry.preset)));
}

Json save(const Args& args) {
  for (const char* name : {"track", "name", "role"}) require(args, "preset save", name);
  auto project = loadAny(args.positionals[0]);
  Preset p = preset::capture(*project, trackOption(*project, args.at("track")));
  applyHeader(args, p);
  preset::PresetLibrary library = libraryOf(args);
  return saved(library, p, args.has("force"));
}

Json apply(const Args& args) {
  require(args, "preset apply", "track");
  const preset::PresetLibrary library = libraryOf(args);
  const Preset& p = presetNamed(library, args.positionals[1]);
  std::string label = "PRESET " + p.name;
  return editProject(args, label, [&](Project& project) {
    const int t = trackOption(project, args.at("track"));
    context().undoLabel = label + " ON " + trackTitle(project, t);
    preset::apply(project, t, p);
    return std::move(Json::object().add("preset", presetHeader(p)));
  });
}

Json import(const Args& args) {
  std::vector<std::string> warnings;
  Preset p = readPresetFile(args.positionals[0], warnings);
  applyHeader(args, p);
  if (args.has("role")) std::erase(warnings, preset::noRoleWarning);
  preset::PresetLibrary library = libraryOf(args);
  Json result = saved(library, p, args.has("force"));
  return std::move(result.add("warnings", textList(warnings)));
}

Json rename(const Args& args) {
  const std::string &from = args.positionals[0], &to = args.positionals[1];
  if (to.size() > size_t(limits::presetName))
    throw usage("A Preset's name is up to " + std::to_string(limits::presetName) + " characters");
  preset::PresetLibrary library = libraryOf(args);
  std::string error;
  if (!library.rename(from, to, error))
    libraryRefused(error, from, "Choose another name, or delete that one first");
  Json o = Json::object();
  return std::move(
      o.add("renamed", preset::cleanName(from)).add("preset", presetHeader(library.find(to)->preset)));
}

Json remove(const Args& args) {
  preset::PresetLibrary library = libraryOf(args);
  std::string error;
  if (!library.remove(args.positionals[0], error)) libraryRefused(error, args.positionals[0]);
  return std::move(Json::object().add("deleted", preset::cleanName(args.positionals[0])));
}

ArgSpec inputArg() { return positional("input", "path.quorel|@app", "the project").needed(); }
ArgSpec nameArg(const char* help) { return positional("name", "NAME", help).needed(); }
ArgSpec replaceFlag() { return flag("force", "replace your Preset of that name"); }

}  // namespace

Command presetSave() {
  return {"preset save",
          "Save a Track's sound as your Preset. The project is not changed.",
          arguments({{inputArg(), option("track", "index|name", "the Track (required)")},
                     headerOptions(),
                     {libraryOption(), replaceFlag()}}),
          "{wrote, preset}",
          true,
          {"quorel preset save song.quorel --track BASS --name \"MY BASS\" --role BASS --tag WARM"},
          save};
}

Command presetApply() {
  return {
      "preset apply",
      "Load a Preset onto a Track: its mix, name, Locks and Lanes stay. A kit onto a melodic Track, or the "
      "reverse, changes its kind and clears its Patterns.",
      arguments({{inputArg(), nameArg("the Preset"), option("track", "index|name", "the Track (required)"),
                  libraryOption()},
                 writeOptions()}),
      "{wrote?, preset, changes}",
      true,
      {"quorel preset apply song.quorel FOUNDATION --track BASS --in-place"},
      apply};
}

Command presetImport() {
  return {"preset import",
          "Check a .preset file and put it into your library.",
          arguments({{positional("file", "file.preset", "the file").needed()},
                     headerOptions(),
                     {libraryOption(), replaceFlag()}}),
          "{wrote, preset, warnings}",
          true,
          {"quorel preset import bass.preset --name \"MY BASS\""},
          import};
}

Command presetRename() {
  return {"preset rename",
          "Rename one of your Presets; Tracks that loaded it keep the old name.",
          {nameArg("the Preset"), positional("new_name", "NAME", "its new name").needed(), libraryOption()},
          "{renamed, preset}",
          true,
          {"quorel preset rename \"MY BASS\" \"OUR BASS\""},
          rename};
}

Command presetDelete() {
  return {"preset delete",
          "Delete one of your Presets; Tracks that loaded it keep their sound.",
          {nameArg("the Preset"), libraryOption()},
          "{deleted}",
          true,
          {"quorel preset delete \"OUR BASS\""},
          remove};
}

}  // namespace synth::cli::commands
