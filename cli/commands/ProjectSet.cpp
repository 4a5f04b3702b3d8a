#include <cmath>
#include <cstring>

#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/commands/Commands.h"
#include "cli/write/EditProject.h"
#include "core/Names.h"
#include "core/edit/Workspace.h"
#include "core/sounds/Macros.h"
#include "spec/Values.h"

namespace synth::cli::commands {
namespace {

struct Place {
  int track = -1, pad = -1;
};

Place placeOf(const Args& args, const Project& p) {
  Place place;
  if (args.has("track")) place.track = trackOption(p, args.at("track"));
  if (args.has("pad")) {
    place.pad = intOption(args, "pad", 0, 0, limits::pads - 1);
    if (place.track < 0 || !isDrums(p.tracks[place.track]))
      throw usage("--pad needs --track with a Drums track");
  }
  return place;
}

// A number where the text is one, else a label.
Json jsonOf(const std::string& text) {
  double number = 0;
  return decimal(text, number) ? Json(number) : Json(text);
}

bool setMacro(Track& track, const std::string& name, const std::string& text) {
  const int slot = macros::inCapitals(name) ? macros::slotNamed(track, name) : -1;
  if (slot < 0) return false;
  setMacroValue(track.macros[slot], text);
  return true;
}

// A Macro's name without the Track that has it.
void refuseMacroAlone(const Project& p, const std::string& key) {
  for (int t = 0; macros::inCapitals(key) && t < p.track_count; t++)
    if (macros::slotNamed(p.tracks[t], key) >= 0)
      throw usage(key + " is a Macro of a track",
                  "Name the track with --track, as --track " + std::to_string(t));
}

[[noreturn]] void unknownKey(const Project& p, const Place& place, const std::string& key) {
  if (place.track < 0) refuseMacroAlone(p, key);
  std::vector<std::string> keys;
  if (place.track >= 0) keys = macros::names(p.tracks[place.track]);
  for (const param::Info& info : param::all()) keys.push_back(info.key);
  const std::string hint = suggest(key, keys);
  throw CliError("unknown_parameter", "Unknown parameter " + key,
                 hint.empty() ? "List them with: quorel params" : hint);
}

void assign(Project& p, const Place& place, const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == text.npos || equals == 0) throw usage("An assignment is KEY=VALUE, got " + text);
  const std::string key = text.substr(0, equals);
  if (place.track >= 0 && setMacro(p.tracks[place.track], key, text.substr(equals + 1))) return;
  const Json value = jsonOf(text.substr(equals + 1));
  const param::Info* info = param::find(key);
  if (!info) unknownKey(p, place, key);
  if (info->scope == param::ScopePad && place.pad < 0)
    throw usage(key + " is a pad parameter", "Name the Pad of a Drums track with --track and --pad");
  if (info->scope == param::ScopeTrack && place.track < 0)
    throw usage(key + " is a track parameter", "Name the track with --track");
  if (std::strcmp(info->key, "track_kind") == 0) {
    workspace::switchTrackKind(p, place.track, int(spec::valueOf(*info, value, p, place.track)));
    return;
  }
  spec::applyValue(p, *info, value, std::max(place.track, 0), std::max(place.pad, 0));
}

Json set(const Args& args) {
  return editProject(args, "SET " + args.positionals[1].substr(0, args.positionals[1].find('=')),
                     [&](Project& p) {
                       const Place place = placeOf(args, p);
                       try {
                         for (size_t i = 1; i < args.positionals.size(); i++)
                           assign(p, place, args.positionals[i]);
                       } catch (const spec::SpecError& error) {
                         throw CliError(error.code(), error.message(), error.hint());
                       }
                       return Json::object();
                     });
}

}  // namespace

Command projectSet() {
  return {"project set",
          "Set registry parameters: project keys alone, track keys with --track, pad keys with --track and "
          "--pad. "
          "Writes --out, or the input with --in-place.",
          arguments({{positional("input", "path.quorel|@app", "the project").needed(),
                      positional("assignments", "KEY=VALUE",
                                 "numbers in the parameter's unit, options by label, a Macro by NAME")
                          .needed()
                          .many(),
                      option("track", "index|name", "for track and pad keys and Macros"),
                      option("pad", "int", "0..7, for pad keys")},
                     writeOptions()}),
          "{wrote?, changes}",
          true,
          {"quorel project set song.quorel bpm=124 swing=0.56 --in-place",
           "quorel project set song.quorel cutoff=900 filter_type=lowpass --track BASS --in-place"},
          set};
}

}  // namespace synth::cli::commands
