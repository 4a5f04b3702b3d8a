#include "spec/Presets.h"

#include <cstring>

#include "base/Suggest.h"
#include "core/sounds/Factory.h"
#include "spec/SpecError.h"

namespace synth::spec {
namespace {

std::optional<preset::Preset> factoryPreset(const std::string& name) {
  const preset::Preset* found = preset::findFactory(name);
  return found ? std::optional(*found) : std::nullopt;
}

std::string nearPresets(const std::string& name) {
  std::vector<std::string> names;
  for (const preset::Preset& p : preset::factory()) names.push_back(p.name);
  const std::string near = suggest(name, names);
  return near.empty() ? "List them with: quorel preset list" : near;
}

}  // namespace

PresetResolver& presetResolver() {
  static PresetResolver resolver = factoryPreset;
  return resolver;
}

void readPreset(Project& p, int t, const std::string& name) {
  const auto found = presetResolver() ? presetResolver()(name) : factoryPreset(name);
  if (!found) throw SpecError(Fault::UnknownPreset, "No Preset named " + name, nearPresets(name));
  Track& track = p.tracks[t];
  char itsName[sizeof track.name];
  std::memcpy(itsName, track.name, sizeof itsName);
  preset::apply(p, t, *found);
  // A change of kind would rename a Track that bears a default name; the spec has named it already.
  std::memcpy(track.name, itsName, sizeof itsName);
}

}  // namespace synth::spec
