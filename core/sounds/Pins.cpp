#include "core/sounds/Pins.h"

#include <algorithm>

#include "base/Text.h"
#include "core/Preset.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"
#include "core/sounds/SendPresets.h"

namespace synth {

bool paramlist::listed(const param::Info* info, int kind, int engine) {
  if (!info || info->scope == param::ScopeProject) return false;
  const std::string_view key = info->key;
  if (key == "mute" || key == "solo" || key == "engine" || key == "track_kind") return false;
  if (!info->mix) return preset::holds(*info, kind, engine);
  return info->applies != (kind == DRUMS ? param::MelodicOnly : param::DrumsOnly);
}

namespace pins {
namespace {

bool contains(const Keys& keys, std::string_view key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// The code of a key on a Track: a row's id, or a Macro's slot behind the first Macro Pin; -1 for none.
int codeOf(const Track& track, std::string_view key) {
  const int slot = macros::find(track, key);
  if (slot >= 0) return limits::firstMacroPin + slot;
  const param::Info* info = param::find(key);
  return paramlist::listed(info, track.track_kind, track.engine) ? info->id : -1;
}

int busCodeOf(const Project& p, int bus, std::string_view key) {
  return validBus(p, bus, key) ? param::find(key)->id : -1;
}

// A key as Pins spell it: a Macro by its name, whatever the case it was asked for in.
std::string spelled(const Track& track, std::string_view key) {
  const int slot = macros::find(track, key);
  return slot >= 0 ? macros::name(track, slot) : std::string(key);
}

// The keys behind the codes of a list; `macroName` gives those of Macros.
template <class MacroName>
Keys keysOf(const PinList& list, MacroName macroName) {
  Keys keys;
  for (int i = 0; i < list.count; i++) {
    if (const param::Info* info = param::find(list.ids[i]))
      keys.emplace_back(info->key);
    else if (std::string name = macroName(list.ids[i] - limits::firstMacroPin); !name.empty())
      keys.push_back(std::move(name));
  }
  return keys;
}

template <class Code>
void store(PinList& list, const Keys& keys, Code code) {
  list = PinList{};
  list.custom = 1;
  for (const std::string& key : keys) {
    if (list.count >= limits::pins) break;
    const int id = code(key);
    if (id < 0 || std::find(list.ids, list.ids + list.count, u16(id)) != list.ids + list.count) continue;
    list.ids[list.count++] = u16(id);
  }
}

bool moved(Keys& keys, int from, int to) {
  const int count = int(keys.size());
  if (from == to || from < 0 || to < 0 || from >= count || to >= count) return false;
  std::string key = std::move(keys[size_t(from)]);
  keys.erase(keys.begin() + from);
  keys.insert(keys.begin() + to, std::move(key));
  return true;
}

bool aBus(int bus) { return bus == SendI || bus == SendII || bus == MasterBus; }

}  // namespace

const Keys& defaultKeys(int kind) {
  static const Keys kit = {"pad_pitch", "pad_decay", "pad_tone", "pad_level", "pad_snap", "pad_sweep"};
  static const Keys melodic = {"engine1",   "engine2",    "engine3", "engine4", "cutoff",
                               "resonance", "filter_env", "attack",  "decay",   "release"};
  return kind == DRUMS ? kit : melodic;
}

bool valid(int kind, int engine, std::string_view key) {
  return paramlist::listed(param::find(key), kind, engine);
}
bool valid(const Track& track, std::string_view key) { return codeOf(track, key) >= 0; }

Keys keys(const Track& track) {
  if (!track.pins.custom) return defaultKeys(track.track_kind);
  return keysOf(track.pins, [&](int slot) { return macros::name(track, slot); });
}

void setKeys(Track& track, const Keys& keys) {
  store(track.pins, keys, [&](const std::string& key) { return codeOf(track, key); });
}

void clear(Track& track) { track.pins = PinList{}; }
bool pinned(const Track& track, std::string_view key) { return contains(keys(track), spelled(track, key)); }

bool pin(Track& track, std::string_view key) {
  Keys now = keys(track);
  if (contains(now, spelled(track, key)) || !valid(track, key) || int(now.size()) >= limits::pins)
    return false;
  now.emplace_back(key);
  setKeys(track, now);
  return true;
}

bool unpin(Track& track, std::string_view key) {
  Keys now = keys(track);
  auto it = std::find(now.begin(), now.end(), spelled(track, key));
  if (it == now.end()) return false;
  now.erase(it);
  setKeys(track, now);
  return true;
}

bool move(Track& track, int from, int to) {
  Keys now = keys(track);
  if (!moved(now, from, to)) return false;
  setKeys(track, now);
  return true;
}

// ---- Sends and the Master.

Keys busDefaultKeys(const Project& p, int bus) {
  if (bus == MasterBus) return {"master", "comp_amount", "comp_release", "saturation", "limiter_ceiling"};
  Keys keys;
  if (!aBus(bus)) return keys;
  keys.push_back(sendfx::key(bus, "return"));
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeProject && !info.whole() && keys[0] != info.key &&
        automation::busHolds(p, bus, info))
      keys.emplace_back(info.key);
  return keys;
}

bool validBus(const Project& p, int bus, std::string_view key) {
  const param::Info* info = param::find(key);
  return aBus(bus) && info && info->scope == param::ScopeProject && automation::busHolds(p, bus, *info);
}

Keys busKeys(const Project& p, int bus) {
  if (!aBus(bus)) return {};
  if (!p.busPins[bus].custom) return busDefaultKeys(p, bus);
  return keysOf(p.busPins[bus], [](int) { return std::string(); });
}

void setBusKeys(Project& p, int bus, const Keys& keys) {
  if (aBus(bus)) store(p.busPins[bus], keys, [&](const std::string& key) { return busCodeOf(p, bus, key); });
}

void clearBus(Project& p, int bus) {
  if (aBus(bus)) p.busPins[bus] = PinList{};
}

bool pinnedBus(const Project& p, int bus, std::string_view key) { return contains(busKeys(p, bus), key); }

bool pinBus(Project& p, int bus, std::string_view key) {
  Keys now = busKeys(p, bus);
  if (contains(now, key) || !validBus(p, bus, key) || int(now.size()) >= limits::pins) return false;
  now.emplace_back(key);
  setBusKeys(p, bus, now);
  return true;
}

bool unpinBus(Project& p, int bus, std::string_view key) {
  Keys now = busKeys(p, bus);
  auto it = std::find(now.begin(), now.end(), key);
  if (it == now.end()) return false;
  now.erase(it);
  setBusKeys(p, bus, now);
  return true;
}

bool moveBus(Project& p, int bus, int from, int to) {
  Keys now = busKeys(p, bus);
  if (!moved(now, from, to)) return false;
  setBusKeys(p, bus, now);
  return true;
}

bool setBusType(Project& p, int bus, int type) {
  if ((bus != SendI && bus != SendII) || type < 0 || type > FX_OFF || sendFx(p, bus).type == type)
    return false;
  sendFx(p, bus).type = u8(type);
  if (p.busPins[bus].custom) setBusKeys(p, bus, busKeys(p, bus));
  return true;
}

bool loadBusPreset(Project& p, int bus, int type, int preset) {
  if (!sendfx::load(p, bus, type, preset)) return false;
  if (p.busPins[bus].custom) setBusKeys(p, bus, busKeys(p, bus));
  return true;
}

}  // namespace pins
}  // namespace synth
