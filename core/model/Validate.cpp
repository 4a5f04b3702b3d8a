#include "core/model/Validate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

#include "core/params/Registry.h"
#include "core/sounds/Macros.h"

namespace synth {
namespace {

// What is said of a Track or Pad value that is out of its row, in the order in which they are checked.
enum class Concern { Identity, Engine, Pad, Track, Articulation, None };

Concern concernOf(const param::Info& info) {
  if (info.scope == param::ScopeProject) return Concern::None;
  if (info.scope == param::ScopePad) return Concern::Pad;
  const std::string_view group = info.group, key = info.key;
  if (key == "engine" || key == "track_kind" || key == "visual") return Concern::Identity;
  // A Sample's root and tune belong to its reference.
  if (key == "sample_root" || key == "sample_tune") return Concern::None;
  if (group == "ENGINE") return Concern::Engine;
  if (group == "VOICE" || group == "TIMBRE") return Concern::Articulation;
  return Concern::Track;
}

struct TrackRules {
  std::vector<const param::Info*> rows[int(Concern::None)];
  TrackRules() {
    for (const param::Info& info : param::all())
      if (concernOf(info) != Concern::None) rows[int(concernOf(info))].push_back(&info);
  }
};

bool rowsHold(Concern concern, const Track& track) {
  static const TrackRules* const rules = new TrackRules;
  for (const param::Info* info : rules->rows[int(concern)]) {
    const int pads = info->scope == param::ScopePad ? limits::pads : 1;
    for (int pad = 0; pad < pads; pad++)
      if (!param::inRange(*info, info->get(track, pad))) return false;
  }
  return true;
}

bool printable(char c) { return c >= 32 && c <= 126; }

// Terminated within `most` characters, printable, and zero behind.
template <size_t N>
bool cleanText(const char (&text)[N], size_t most) {
  const size_t length = strnlen(text, N);
  if (length > most || !std::all_of(text, text + length, printable)) return false;
  return std::all_of(text + length, text + N, [](char c) { return c == 0; });
}

bool pinsHold(const PinList& list, bool ofTrack) {
  if (list.count > limits::pins || list.custom > 1 || (!list.custom && list.count)) return false;
  for (int i = 0; i < limits::pins; i++) {
    const u16 id = list.ids[i];
    if (i >= list.count) {
      if (id) return false;
      continue;
    }
    const bool macro = ofTrack && id >= limits::firstMacroPin && id < limits::firstMacroPin + limits::macros;
    if (!macro && !param::find(id)) return false;
  }
  return true;
}

bool sampleHolds(const Track& t) {
  if (!cleanText(t.sample_name, limits::shortName)) return false;
  const bool none =
      std::all_of(std::begin(t.sample_hash), std::end(t.sample_hash), [](u8 b) { return b == 0; });
  if (none && t.sample_name[0]) return false;
  return t.sample_root <= 127 && std::fabs(t.sample_tune) <= 100;
}

bool projectRowsHold(const Project& p, bool sends) {
  for (const param::Info& info : param::all()) {
    if (info.scope != param::ScopeProject) break;
    const bool ofSend = std::strncmp(info.key, "fx1_", 4) == 0 || std::strncmp(info.key, "fx2_", 4) == 0;
    const bool checkedElsewhere = std::strncmp(info.key, "key_", 4) == 0;
    if (ofSend == sends && !checkedElsewhere && !param::inRange(info, info.get(p))) return false;
  }
  return true;
}

// Bytes that no field names: they would make Projects differ that mean the same.
template <size_t N>
bool zero(const u8 (&bytes)[N]) {
  return std::all_of(bytes, bytes + N, [](u8 b) { return b == 0; });
}

// A text that ends, and nothing behind its end.
template <size_t N>
bool terminated(const char (&text)[N]) {
  const char* end = std::find(text, text + N, char(0));
  return end != text + N && std::all_of(end, text + N, [](char c) { return c == 0; });
}

bool reservedHolds(const SendFx& fx) {
  return zero(fx.reserved0) && zero(fx.reserved1) && zero(fx.reserved2) && zero(fx.reserved3) &&
         zero(fx.reserved4) && zero(fx.reserved5) && zero(fx.reserved6);
}

bool reservedHolds(const Track& t) {
  return zero(t.reserved0) && zero(t.reserved1) && zero(t.reserved2) && zero(t.reserved3) &&
         zero(t.reserved4) && zero(t.reserved5) && zero(t.reserved6) && zero(t.reserved7) &&
         zero(t.reserved8) && zero(t.reserved9);
}

const char* projectFault(const Project& p) {
  auto within = [](f32 v, f32 lo, f32 hi) { return v >= lo && v <= hi; };
  if (!within(p.bpm, 40, 240) || !within(p.swing, 0.5f, 0.75f) || p.reserved0 || p.track_count < 1 ||
      p.track_count > limits::tracks)
    return "Invalid tempo or swing";
  if (!projectRowsHold(p, false) || !zero(p.reserved1) || !zero(p.reserved2))
    return "Invalid master or effects parameter";
  if (!projectRowsHold(p, true) || !reservedHolds(p.fx1) || !reservedHolds(p.fx2))
    return "Invalid Send effect";
  if (!terminated(p.name)) return "Project name must be terminated";
  if (!param::inRange(*param::find("key_root"), p.key_root) ||
      !param::inRange(*param::find("key_scale"), p.key_scale))
    return "Invalid key";
  for (const PinList& list : p.busPins)
    if (!pinsHold(list, false)) return "Invalid Pins";
  for (const Track& track : p.tracks)
    if (!pinsHold(track.pins, true)) return "Invalid Pins";
  return nullptr;
}

const char* trackFault(const Track& t) {
  if (!rowsHold(Concern::Identity, t)) return "Invalid synth engine, track kind or scene";
  if (!rowsHold(Concern::Engine, t)) return "Invalid Engine parameter";
  if (!cleanText(t.preset_name, limits::presetName)) return "Invalid Preset name";
  if (!rowsHold(Concern::Pad, t)) return "Invalid drum parameter";
  if (!rowsHold(Concern::Track, t) || !reservedHolds(t)) return "Invalid track parameter";
  if (!rowsHold(Concern::Articulation, t)) return "Invalid articulation or timbre envelope";
  if (strnlen(t.name, sizeof t.name) > limits::shortName) return "Track name too long";
  if (!cleanText(t.name, limits::shortName)) return "Invalid character in a name";
  if (!sampleHolds(t)) return "Invalid sample reference";
  return nullptr;
}

}  // namespace

bool validateProject(const Project& p, std::string& error) {
  const char* fault = projectFault(p);
  for (int t = 0; t < limits::tracks && !fault; t++) {
    fault = trackFault(p.tracks[t]);
    if (!fault && !macros::valid(p.tracks[t], error)) return false;
  }
  if (fault) {
    error = fault;
    return false;
  }
  return validateArenas(p, error);
}

}  // namespace synth
