#include "spec/ExportTrack.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/Names.h"
#include "core/params/Options.h"
#include "core/params/Registry.h"
#include "core/sounds/Factory.h"
#include "core/sounds/Macros.h"
#include "spec/Parked.h"
#include "spec/Rows.h"
#include "spec/SpecError.h"
#include "spec/Tracks.h"

namespace synth::spec {
namespace {

bool differ(f32 a, f32 b) { return std::bit_cast<u32>(a) != std::bit_cast<u32>(b); }

const char* labelOf(const char* key, int value) { return param::find(key)->options[size_t(value)]; }

bool sameSample(const Track& a, const Track& b) {
  return std::memcmp(a.sample_hash, b.sample_hash, sizeof a.sample_hash) == 0 &&
         std::memcmp(a.sample_name, b.sample_name, sizeof a.sample_name) == 0;
}

// Whether two Macros differ in nothing but where they stand.
bool sameMacro(MacroRec a, const MacroRec& b) {
  a.value = b.value;
  return sameBytes(a, b);
}
bool sameMacros(const Track& a, const Track& b) {
  if (a.macroCount != b.macroCount) return false;
  return std::equal(a.macros, a.macros + a.macroCount, b.macros, sameMacro);
}

// Values of Macros beside the rows, where the Macros themselves are there already.
void addMacroValues(Json& params, const Track& wanted, const Track& had) {
  for (int m = 0; m < wanted.macroCount; m++)
    if (differ(wanted.macros[m].value, had.macros[m].value))
      params.add(std::string(nameText(wanted.macros[m].name)), wanted.macros[m].value);
}

}  // namespace

TrackExport::TrackExport(const Project& project, const Project& blank, bool full)
    : p_(project), blank_(blank), full_(full), scratch_(copyOf(blank)) {}

std::vector<TrackExport::Recipe> TrackExport::recipes(const Track& track) const {
  std::vector<Recipe> list = {{false, false, false}};
  if (isDrums(track)) {
    list.push_back({true, false, false});
  } else {
    list.push_back({false, true, false});
    list.push_back({true, true, false});
  }
  if (!track.preset_name[0] || !preset::findFactory(nameText(track.preset_name))) return list;
  for (size_t i = 0, plain = list.size(); i < plain; i++)
    list.push_back({list[i].kind, list[i].engine, true});
  return list;
}

Json TrackExport::begin(int t, const Recipe& recipe) const {
  const Track& track = p_.tracks[t];
  Json o = Json::object();
  o.add("index", t);
  if (recipe.kind) o.add("kind", labelOf("track_kind", track.track_kind));
  if (recipe.engine) o.add("engine_defaults", labelOf("engine", track.engine));
  if (recipe.preset) o.add("preset", nameText(track.preset_name));
  return o;
}

Track TrackExport::built(int t, const Json& object) {
  scratch_->tracks[t] = blank_.tracks[t];
  readTracks(*scratch_, Json::array().push(object), false);
  return scratch_->tracks[t];
}

int TrackExport::cost(const Track& wanted, const Track& had) const {
  int differences = 0;
  for (const param::Info& info : param::all()) {
    if (info.scope == param::ScopeTrack) differences += differ(info.get(wanted), info.get(had));
    for (int pad = 0; pad < limits::pads && info.scope == param::ScopePad; pad++)
      differences += differ(info.get(wanted, pad), info.get(had, pad));
  }
  differences += std::memcmp(wanted.name, had.name, sizeof wanted.name) != 0;
  differences += std::memcmp(wanted.preset_name, had.preset_name, sizeof wanted.preset_name) != 0;
  differences += !sameSample(wanted, had);
  differences += !sameBytes(wanted.pins, had.pins);
  if (!sameMacros(wanted, had)) differences += 1 + wanted.macroCount;
  return differences;
}

Json TrackExport::describe(int t, const Recipe& recipe, const Track& had) const {
  const Track& track = p_.tracks[t];
  Json o = begin(t, recipe);
  const bool macrosAreThere = sameMacros(track, had);
  if (full_ || std::memcmp(track.name, had.name, sizeof track.name) != 0) o.add("name", nameText(track.name));
  if (full_ || track.origin != had.origin) o.add("origin", int(track.origin));
  if (full_ || !macrosAreThere) o.add("macros", macrosSpec(track));
  Json params = Json::object();
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeTrack && (full_ || differ(info.get(track), info.get(had))))
      params.add(info.key, info.get(track));
  if (!full_ && macrosAreThere) addMacroValues(params, track, had);
  if (!params.members().empty()) o.add("params", std::move(params));
  if (!sameSample(track, had)) o.add("sample", sampleSpec(track));
  if (full_ || std::memcmp(track.preset_name, had.preset_name, sizeof track.preset_name) != 0)
    o.add("preset_name", nameText(track.preset_name));
  if (full_ || !sameBytes(track.pins, had.pins)) o.add("pins", pinsSpec(track.pins, &track));
  if (Json parked = parkedSpec(track, had); !parked.members().empty()) {
    // What is parked as a whole is not said twice.
    std::erase_if(o.members(), [&](const Json::Member& m) { return parked.find(m.key) != nullptr; });
    o.add("parked", std::move(parked));
  }
  return o;
}

bool TrackExport::leadsTo(int t, const Json& object) {
  try {
    Track track = built(t, object);
    for (const param::Info& info : param::all())
      for (int pad = 0; pad < limits::pads && info.scope == param::ScopePad && isDrums(track); pad++)
        info.set(info.get(p_.tracks[t], pad), track, pad);
    return sameBytes(track, p_.tracks[t]);
  } catch (const SpecError&) {
    return false;
  }
}

void TrackExport::addPads(int t, const Track& had, Json& pads) const {
  const Track& track = p_.tracks[t];
  if (!isDrums(track)) return;
  for (int pad = 0; pad < limits::pads; pad++) {
    Json params = Json::object();
    for (const param::Info& info : param::all())
      if (info.scope == param::ScopePad && (full_ || differ(info.get(track, pad), info.get(had, pad))))
        params.add(info.key, info.get(track, pad));
    if (params.members().empty()) continue;
    Json row = Json::object();
    row.add("index", pad).add("track", t).add("params", std::move(params));
    pads.push(std::move(row));
  }
}

void TrackExport::add(int t, Json& tracks, Json& pads) {
  const Track& track = p_.tracks[t];
  if (!full_ && sameBytes(track, blank_.tracks[t])) return;
  struct Way {
    Recipe recipe;
    Track had;
    int cost;
  };
  std::vector<Way> ways;
  for (const Recipe& recipe : recipes(track)) {
    const Track had = built(t, begin(t, recipe));
    ways.push_back({recipe, had, full_ ? 0 : cost(track, had)});
  }
  std::stable_sort(ways.begin(), ways.end(), [](const Way& a, const Way& b) { return a.cost < b.cost; });
  // A Macro may need the Engine that only another way sets before the Macros are read.
  const Way* chosen = &ways[0];
  for (const Way& way : ways) {
    if (!leadsTo(t, describe(t, way.recipe, way.had))) continue;
    chosen = &way;
    break;
  }
  Json object = describe(t, chosen->recipe, chosen->had);
  if (object.members().size() > 1) tracks.push(std::move(object));
  addPads(t, chosen->had, pads);
}

}  // namespace synth::spec
