// Presets and Tracks: taking a sound from one to the other, and comparing them.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/Names.h"
#include "core/edit/Workspace.h"
#include "core/model/Tracks.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "core/sounds/PresetRules.h"

namespace synth::preset {
namespace {

void captureValues(Preset& preset, const Track& track) {
  const Track plain = plainTrack(preset.kind, preset.engine);
  auto add = [&](const param::Info& info, int pad) {
    const f32 value = info.get(track, std::max(pad, 0));
    if (!sameBits(value, info.get(plain, std::max(pad, 0)))) preset.values.push_back({info.key, pad, value});
  };
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeTrack && holds(info, preset.kind, preset.engine)) add(info, -1);
  for (int pad = 0; preset.kind == DRUMS && pad < limits::pads; pad++)
    for (const param::Info& info : param::all())
      if (info.scope == param::ScopePad) add(info, pad);
}

void copyMix(Track& to, const Track& from) {
  for (const param::Info& info : param::all())
    if (info.mix && info.scope == param::ScopeTrack) info.set(info.get(from), to);
}

void applyValues(Track& track, const Preset& preset) {
  for (const Value& value : preset.values) {
    const param::Info* info = param::find(value.key);
    if (!info || !holds(*info, preset.kind, preset.engine) || !std::isfinite(value.value)) continue;
    const bool ofPad = info->scope == param::ScopePad;
    if (ofPad ? value.pad < 0 || value.pad >= limits::pads : value.pad >= 0) continue;
    info->set(storable(*info, value.value), track, std::max(value.pad, 0));
  }
}

void applyMacros(Track& track, const Preset& preset) {
  std::string error;
  for (const MacroRec& macro : preset.macros) {
    if (track.macroCount >= limits::macros) return;
    track.macros[track.macroCount++] = macro;
    if (!macros::valid(track, error)) track.macros[--track.macroCount] = MacroRec{};
  }
}

}  // namespace

Preset capture(const Project& project, int track) {
  Preset preset;
  if (!isTrack(track)) return preset;
  const Track& t = project.tracks[track];
  preset.name = nameText(t.name);
  preset.kind = isDrums(t) ? DRUMS : MELODIC;
  preset.engine = isDrums(t) ? ANALOG : SynthKind(t.engine);
  if (!isDrums(t) && t.engine == SAMPLER && !isZero(t.sample_hash)) {
    std::copy(std::begin(t.sample_hash), std::end(t.sample_hash), preset.sampleHash);
    preset.sampleName = nameText(t.sample_name);
  }
  preset.pinsSet = t.pins.custom;
  if (preset.pinsSet) preset.pins = pins::keys(t);
  preset.macros.assign(t.macros, t.macros + std::min<int>(t.macroCount, limits::macros));
  captureValues(preset, t);
  return preset;
}

void applyTo(Track& track, const Preset& preset) {
  const Track old = track;
  track = plainTrack(preset.kind, preset.engine);
  copyMix(track, old);
  applyValues(track, preset);
  track.track_kind = old.track_kind;
  track.origin = old.origin;
  std::memcpy(track.name, old.name, sizeof track.name);
  setName(track.preset_name, preset.name);
  applyMacros(track, preset);
  if (preset.pinsSet) pins::setKeys(track, preset.pins);
  if (!settingsOnly(preset)) {
    std::memcpy(track.sample_hash, preset.sampleHash, sizeof track.sample_hash);
    if (!isZero(preset.sampleHash)) setName(track.sample_name, preset.sampleName);
    return;
  }
  std::memcpy(track.sample_hash, old.sample_hash, sizeof track.sample_hash);
  std::memcpy(track.sample_name, old.sample_name, sizeof track.sample_name);
  track.sample_root = old.sample_root;
  track.sample_tune = old.sample_tune;
}

bool apply(Project& project, int track, const Preset& preset) {
  if (!isTrack(track)) return false;
  Track& t = project.tracks[track];
  const Track old = t;
  // The new kind comes with a mix of its own, and the Track's is to stay.
  if (workspace::switchTrackKind(project, track, preset.kind)) copyMix(t, old);
  applyTo(t, preset);
  macros::follow(project, track, old);
  return true;
}

bool matches(const Project& project, int track, const Preset& preset) {
  if (!isTrack(track)) return false;
  Preset a = capture(project, track), b = preset;
  normalize(a);
  normalize(b);
  auto sameMacro = [](const MacroRec& x, const MacroRec& y) { return sameBytes(x, y); };
  return a.kind == b.kind && a.engine == b.engine &&
         std::memcmp(a.sampleHash, b.sampleHash, sizeof a.sampleHash) == 0 &&
         std::equal(a.macros.begin(), a.macros.end(), b.macros.begin(), b.macros.end(), sameMacro) &&
         a.values == b.values;
}

bool loadable(const Project& project, int track, const Preset& preset) {
  return isTrack(track) &&
         (isDrums(project.tracks[track]) == (preset.kind == DRUMS) || !trackHasContent(project, track));
}

}  // namespace synth::preset
