#include "spec/Tracks.h"

#include <cmath>

#include "base/Suggest.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/sounds/Macros.h"
#include "spec/OldBase.h"
#include "spec/Parked.h"
#include "spec/Presets.h"
#include "spec/Sounds.h"
#include "spec/Values.h"

namespace synth::spec {
namespace {

const param::Info& row(const char* key) { return *param::find(key); }

void readTrackName(Track& track, const Json& name, const std::string& where) {
  if (!name.isString()) throw SpecError(whatOf("name", where) + " is a string");
  if (name.string().size() > size_t(limits::shortName) || !isPlainText(name.string()))
    throw SpecError("A track name is up to 12 characters, letters without accents, digits and signs: " +
                    name.string());
  setName(track.name, name.string());
}

void readPresetName(Track& track, const Json& name, const std::string& where) {
  if (!name.isString() || name.string().size() > size_t(limits::presetName) || !isPlainText(name.string()))
    throw SpecError(whatOf("preset_name", where) + " is a string of up to 20 characters");
  setName(track.preset_name, name.string());
}

[[noreturn]] void refuseMacro(const Track& track, const std::string& name) {
  std::vector<std::string> known = macros::names(track);
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeTrack) known.emplace_back(info.key);
  const std::string near = suggest(name, known);
  throw SpecError(
      Fault::UnknownParameter, "Unknown track parameter " + name,
      near.empty() ? "A name in capitals is a Macro of the sound: give the track \"macros\"" : near);
}

// A Macro is set by its name in capitals beside the registry's keys.
void readParams(Project& p, int t, const Json& params, const std::string& where) {
  requireObject(params, where + ".params");
  inPlace(where + ".params", [&] {
    for (const Json::Member& member : params.members()) {
      if (readMacroValue(p.tracks[t], member.key, member.value)) continue;
      if (macros::inCapitals(member.key)) refuseMacro(p.tracks[t], member.key);
      applyValue(p, parameterOf(member.key, param::ScopeTrack), member.value, t, 0);
    }
  });
}

void readPresetKey(Project& p, int t, const Json& name, const std::string& where) {
  if (!name.isString()) throw SpecError(whatOf("preset", where) + " is a Preset's name");
  readPreset(p, t, name.string());
}

void readOldSlot(Track& track, const Json& slot, bool oldBase, const std::string& where) {
  if (!oldBase) throw SpecError("\"v5_slot\" needs \"base\": \"v5\"");
  track = oldTrack(integer(slot, whatOf("v5_slot", where), 0, limits::tracks - 1));
}

void readTrack(Project& p, const Json& object, bool oldBase, const std::string& where) {
  checkKeys(object, where,
            {"index", "kind", "name", "origin", "engine_defaults", "preset", "params", "sample",
             "preset_name", "pins", "macros", "v5_slot", "parked"});
  const int t = requiredInteger(object, "index", where, 0, limits::tracks - 1);
  Track& track = p.tracks[t];
  auto key = [&](const char* name, auto read) {
    if (const Json* value = object.find(name)) read(*value);
  };
  key("v5_slot", [&](const Json& v) { readOldSlot(track, v, oldBase, where); });
  // The kind's default sound; the Track keeps its name, so that none is left without one.
  key("kind", [&](const Json& v) {
    const std::string name(nameText(track.name));
    track = defaultTrack(TrackKind(int(valueOf(row("track_kind"), v, p, t))));
    setName(track.name, name);
  });
  key("name", [&](const Json& v) { readTrackName(track, v, where); });
  key("engine_defaults", [&](const Json& v) { setSynthKind(track, int(valueOf(row("engine"), v, p, t))); });
  key("preset", [&](const Json& v) { readPresetKey(p, t, v, where); });
  // A Preset of another kind begins anew; what the spec says of the origin stands.
  key("origin", [&](const Json& v) { track.origin = u8(integer(v, whatOf("origin", where), 0, 255)); });
  key("macros", [&](const Json& v) { readMacros(p, t, v); });
  key("params", [&](const Json& v) { readParams(p, t, v, where); });
  key("sample", [&](const Json& v) { readSample(track, v, where + ".sample"); });
  key("preset_name", [&](const Json& v) { readPresetName(track, v, where); });
  key("pins", [&](const Json& v) { readPins(track, v); });
  key("parked", [&](const Json& v) { readParked(track, v, where + ".parked"); });
}

int firstDrums(const Project& p) {
  for (int t = 0; t < limits::tracks; t++)
    if (isDrums(p.tracks[t])) return t;
  return -1;
}

void readPad(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"index", "track", "params"});
  const int pad = requiredInteger(object, "index", where, 0, limits::pads - 1);
  const int t = integerAt(object, "track", where, 0, limits::tracks - 1, firstDrums(p));
  if (t < 0 || !isDrums(p.tracks[t]))
    throw SpecError("Pads need a Drums track",
                    "Give the pad a \"track\", or make one {\"index\": n, \"kind\": \"DRUMS\"}");
  if (const Json* params = object.find("params"))
    applyValues(p, *params, param::ScopePad, t, pad, where + ".params");
}

}  // namespace

void readTracks(Project& p, const Json& section, bool oldBase) {
  const Json::Items& items = list(section, "\"tracks\" is an array of tracks");
  for (size_t i = 0; i < items.size(); i++)
    inPlace(placeOf("tracks", i), [&] { readTrack(p, items[i], oldBase, placeOf("tracks", i)); });
}

void readPads(Project& p, const Json& section) {
  const Json::Items& items = list(section, "\"pads\" is an array of pads");
  for (size_t i = 0; i < items.size(); i++)
    inPlace(placeOf("pads", i), [&] { readPad(p, items[i], placeOf("pads", i)); });
}

}  // namespace synth::spec
