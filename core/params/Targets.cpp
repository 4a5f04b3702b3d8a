#include "core/params/Targets.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "base/Text.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/sounds/SendPresets.h"

namespace synth::automation {
namespace {

// Keys of the Track targets in order; PITCH alone has no row.
constexpr const char* trackKeys[trackTargets] = {
    "engine1",     "engine2",    "engine3",   "engine4",      "cutoff",     "resonance",      "level",
    "pan",         "send_1",     "send_2",    "filter_env",   nullptr,      "insert_drive",   "mod_mix",
    "lfo_depth",   "lfo2_depth", "highpass",  "decay",        "width",      "glide",          "lfo_rate",
    "lfo2_rate",   "mod_rate",   "mod_depth", "mod_feedback", "pitch_env",  "pitch_env_time", "attack",
    "release",     "lowpass",    "noise_mix", "crush_bits",   "crush_rate", "eq_low",         "eq_mid",
    "eq_mid_freq", "eq_high",    "mod_tone",  "trim",         "mono_below", "duck_amount",    "duck_release",
    "room_size",   "room_decay", "room_damp", "room_mix"};

// Continuous values of a Send, in table order; plate_diffusion is a structural constant and never moves.
constexpr const char* sendKeys[] = {
    "return",        "delay_time",   "delay_feedback", "delay_ping_pong", "delay_low_cut",  "delay_high_cut",
    "delay_wow",     "delay_duck",   "hall_decay",     "hall_size",       "hall_predelay",  "hall_damping",
    "hall_mod",      "hall_width",   "hall_low_cut",   "hall_high_cut",   "chorus_rate",    "chorus_depth",
    "chorus_width",  "chorus_tone",  "chorus_low_cut", "tape_rate",       "tape_intensity", "tape_tone",
    "tape_wow",      "tape_age",     "tape_spring",    "plate_decay",     "plate_predelay", "plate_damping",
    "plate_mod",     "plate_width",  "plate_low_cut",  "plate_gate",      "shimmer_decay",  "shimmer_amount",
    "shimmer_bloom", "shimmer_tone", "shimmer_mod",    "shimmer_low_cut", "shimmer_freeze"};

constexpr const char* masterKeys[] = {"master", "comp_amount", "comp_release", "limiter_ceiling",
                                      "saturation"};

struct Row {
  const param::Info* info = nullptr;
  int bus = -1;
};

// The one table behind names, rows and buses: indexed by target number up to the last bus target.
struct Table {
  Row rows[lastBusTarget + 1];

  Table() {
    for (int t = 0; t < trackTargets; t++)
      if (trackKeys[t]) rows[t].info = param::find(trackKeys[t]);
    int next = firstBusTarget;
    auto add = [&](const param::Info* info, int bus) { rows[next++] = {info, bus}; };
    for (const char* key : masterKeys) add(param::find(key), MasterBus);
    for (int band = 0; band < 10; band++) add(&param::masterEq(band), MasterBus);
    add(param::find("fx_chain"), SendI);
    for (int bus : {SendI, SendII})
      for (const char* suffix : sendKeys) add(param::find(sendfx::key(bus, suffix)), bus);
  }
};

const Row& row(int target) {
  static const Table* const table = new Table;
  static const Row none;
  return target >= 0 && target <= lastBusTarget ? table->rows[target] : none;
}

struct Effect {
  const char* name;
  float neutral;
  const char* meaning;
};

constexpr Effect effects[performanceEffects] = {
    {"LOWPASS", 1, "Closes a low-pass filter over the whole mix; 1 is open."},
    {"HIGHPASS", 0, "Closes a high-pass filter over the whole mix; 0 is open."},
    {"REPEAT", 0, "Repeats the last moment, from half a bar down to a thirty-second."},
    {"TAPE_STOP", 0, "Slows the tape down until it stands still."},
    {"SPIN_BACK", 0, "Spins the mix backward."},
    {"GATE", 0, "Chops the mix in time with the Song."},
    {"GAIN", 0.5f, "Changes the mix's level; 0.5 leaves it, 0 is silence."},
    {"BOOST_I", 0, "Adds to every Track's Send I."},
    {"BOOST_II", 0, "Adds to every Track's Send II."},
    {"WASHOUT", 0, "Lets the mix flow into the effects while the dry sound thins."},
    {"NOISE", 0, "A rising noise."},
    {"CRUSH", 0, "Destroys the mix: fewer bits, a lower rate."},
};

}  // namespace

const param::Info* targetInfo(int target) { return row(target).info; }

std::string targetName(int target) {
  if (isMacroTarget(target)) return "MACRO_" + std::to_string(target - firstMacroTarget + 1);
  if (target == PITCH) return "PITCH";
  if (target == DRIVE) return "DRIVE";
  if (target >= ENGINE_1 && target <= ENGINE_4) return "ENGINE_" + std::to_string(target + 1);
  return row(target).info ? text::upper(row(target).info->key) : "";
}

int targetOf(const param::Info& info) {
  static const std::vector<i16>* const byId = [] {
    auto index = new std::vector<i16>;
    for (int t = 0; t <= lastBusTarget; t++) {
      if (!targetInfo(t)) continue;
      const size_t id = targetInfo(t)->id;
      if (index->size() <= id) index->resize(id + 1, -1);
      (*index)[id] = i16(t);
    }
    return index;
  }();
  return info.id < byId->size() ? (*byId)[info.id] : -1;
}

int trackTargetNamed(std::string_view name) {
  for (int t = 0; t < trackTargets; t++)
    if (text::sameIgnoringCase(name, targetName(t)) ||
        (trackKeys[t] && text::sameIgnoringCase(name, trackKeys[t])))
      return t;
  for (int t = firstMacroTarget; t <= lastMacroTarget; t++)
    if (text::sameIgnoringCase(name, targetName(t))) return t;
  return -1;
}

int busTargetNamed(int bus, std::string_view name) {
  for (int t = firstBusTarget; t <= lastBusTarget; t++) {
    if (row(t).bus != bus) continue;
    std::string_view key = row(t).info->key;
    if (text::sameIgnoringCase(name, key)) return t;
    if (bus != MasterBus && key.substr(0, 2) == "fx" && key[3] == '_' &&
        text::sameIgnoringCase(name, key.substr(4)))
      return t;
  }
  return -1;
}

int busOf(int target) { return row(target).bus; }

bool lockable(int target, bool drums) {
  if (drums) return target == PITCH || target == DECAY;
  return isMacroTarget(target) || (isTrackTarget(target) && target != LFO_RATE && target != LFO2_RATE);
}

bool laneable(int target, bool drums) {
  if (isMacroTarget(target)) return true;
  if (!isTrackTarget(target)) return false;
  return !drums || (targetInfo(target) && targetInfo(target)->applies != param::MelodicOnly);
}

std::string targetLabel(const Project& project, int track, int target) {
  const bool known = track >= 0 && track < limits::tracks;
  if (isMacroTarget(target)) {
    const int slot = target - firstMacroTarget;
    if (known && slot < project.tracks[track].macroCount)
      return std::string(nameText(project.tracks[track].macros[slot].name));
    return "MACRO " + std::to_string(slot + 1);
  }
  if (target >= ENGINE_1 && target <= ENGINE_4) {
    if (known && !isDrums(project.tracks[track]))
      return engineParamName(project.tracks[track].engine, target);
    return "ENGINE " + std::to_string(target + 1);
  }
  if (target == PITCH) return "PITCH";
  return targetInfo(target) ? targetInfo(target)->label : "";
}

std::string busLabel(const param::Info& info) {
  std::string_view key = info.key;
  for (std::string_view prefix : {"master_eq_", "fx1_", "fx2_"})
    if (key.substr(0, prefix.size()) == prefix) key.remove_prefix(prefix.size());
  for (std::string_view prefix : {"hall_", "chorus_", "delay_", "plate_", "tape_", "shimmer_"})
    if (key.substr(0, prefix.size()) == prefix) key.remove_prefix(prefix.size());
  std::string label = text::upper(key);
  std::replace(label.begin(), label.end(), '_', ' ');
  return label;
}

bool busHolds(const Project& project, int bus, const param::Info& info) {
  const std::string_view key = info.key;
  auto begins = [&](std::string_view prefix) { return key.substr(0, prefix.size()) == prefix; };
  if (bus == MasterBus) {
    for (const char* own : masterKeys)
      if (key == own) return true;
    return begins("master_eq_");
  }
  if (bus != SendI && bus != SendII) return false;
  if (key == "fx_chain") return bus == SendI;
  if (!begins(bus == SendI ? "fx1_" : "fx2_")) return false;
  const std::string_view rest = key.substr(4);
  if (rest == "type" || rest == "return") return true;
  constexpr std::string_view prefixes[] = {"delay_", "tape_", "hall_", "plate_", "shimmer_", "chorus_"};
  const int type = sendFx(project, bus).type;
  return type < FX_OFF && rest.substr(0, prefixes[type].size()) == prefixes[type];
}

int busTarget(const Project& project, int bus, const param::Info& info) {
  return busHolds(project, bus, info) ? targetOf(info) : -1;
}

std::string busName(const Project& project, int bus) {
  if (bus == MasterBus) return "MASTER";
  return std::string(bus == SendI ? "SEND I" : "SEND II") + " · " +
         sendfx::typeName(sendfx::typeOf(project, bus));
}

const char* performanceEffectName(int index) {
  return index >= 0 && index < performanceEffects ? effects[index].name : "";
}

int performanceEffectNamed(std::string_view name) {
  for (int i = 0; i < performanceEffects; i++)
    if (text::sameIgnoringCase(name, effects[i].name)) return i;
  return -1;
}

const char* performanceEffectMeaning(int index) {
  return index >= 0 && index < performanceEffects ? effects[index].meaning : "";
}

float masterBaseline(int index) {
  return index >= 0 && index < performanceEffects ? effects[index].neutral : 0;
}

float targetBaseline(const Project& project, int track, int target) {
  if (isBusTarget(target)) return param::toNormalized(*targetInfo(target), targetInfo(target)->get(project));
  if (track < 0 || track >= limits::tracks) return 0;
  const Track& t = project.tracks[track];
  if (target >= ENGINE_1 && target <= ENGINE_4) return baseline(t, target);
  if (target == PITCH) return 0.5f;
  if (isMacroTarget(target)) {
    const MacroRec& macro = t.macros[target - firstMacroTarget];
    const float v = std::isfinite(macro.value) ? macro.value : 0;
    return std::clamp(macro.polarity ? (v + 1) / 2 : v, 0.0f, 1.0f);
  }
  const param::Info* info = targetInfo(target);
  return info ? std::clamp(param::toNormalized(*info, info->get(t)), 0.0f, 1.0f) : 0;
}

float baseline(const Track& track, int index) {
  if (index < 0 || index > 3) return 0;
  const float values[] = {track.engine1, track.engine2, track.engine3, track.engine4};
  const float v = values[index];
  return std::isfinite(v) ? v : 0;
}

}  // namespace synth::automation
